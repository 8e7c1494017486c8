#include "board/world/TruthJson.h"

#include <nlohmann/json.hpp>

namespace virtualboard::world {
namespace {

using Json = nlohmann::ordered_json;

void addBox(Json& object, const TruthBox& box, bool complete) {
    object["box"] = {{"left", box.left}, {"top", box.top}, {"width", box.width}, {"height", box.height}};
    object["centre"] = {{"x", box.centreX()}, {"y", box.centreY()}};
    object["complete"] = complete;
}

Json jsonOf(const TruthPart& part) {
    Json result{{"name", part.name}, {"stream", part.stream}, {"number", part.number}};
    addBox(result, part.box, part.complete);
    result["defects"] = Json::array();
    for (const TruthDefect& defect : part.defects) {
        Json& entry =
            result["defects"].emplace_back(Json{{"kind", defect.kind}, {"severity", defect.severity}});
        addBox(entry, defect.box, defect.complete);
    }
    return result;
}

}  // namespace

std::string truthJson(const PictureTruth& truth) {
    Json result{{"picture", truth.number}, {"width", truth.width}, {"height", truth.height}};
    result["parts"] = Json::array();
    for (const TruthPart& part : truth.parts) result["parts"].push_back(jsonOf(part));
    return result.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace virtualboard::world
