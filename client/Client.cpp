#include "client/Client.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <set>
#include <utility>

#include "client/Names.h"

namespace marovine::host {

namespace {

/// A get of this id answers the description of the parameter whose name is passed in.
constexpr int kDescriptionId = 24114;
/// What the applet answers for a parameter without description.
constexpr std::string_view kNoDescription = "-";
constexpr int kEventBits = 64;
constexpr int kFlagAttach = 1;

/// Parameters whose set writes a file: repeating it on another instance would write the file again.
const std::set<std::string, std::less<>> writesFile{"FG_LUT_SAVE_FILE", "FG_DEBUGSAVECONFIG"};

/// Calls `visit` for each parameter node below `node` and its siblings, with the path of its groups.
void walk(const RegisterInfo& node, const std::string& path,
          const std::function<void(const RegisterInfo&, const std::string&)>& visit) {
    if (node.kind != FG_KIND_GROUP) return visit(node, path);
    const std::string name = node.displayName != nullptr ? utf8FromLatin1(node.displayName) : "";
    const std::string below = path.empty() ? name : path + " > " + name;
    for (int i = 0; i < node.value.group.childCount; ++i) walk(*node.value.group.children[i], below, visit);
}

/// A value of another numeric type, as the parameter's own.
Value inOwnType(const Parameter& parameter, const Value& value) {
    const Value own = parameter.emptyValue();
    if (own.index() == value.index()) return value;
    if (const auto number = numberOf(value))
        if (auto converted = valueLike(own, *number)) return *converted;
    throw UnreadableValue(parameter.name + ": " + textOf(value) + " does not fit the parameter's type");
}

}  // namespace

Applet::Applet(std::shared_ptr<const Library> library, OpenOptions options)
    : library_(std::move(library)), options_(options), board_(slot_.device), instance_(*library_) {
    board_.setClockManual();  // in real time the read-outs would depend on how long the opening takes
    board_.recordWrites(options_.recordWrites);
    int error = 0;
    record()->instance = library_->stdEntry(device(), &error, options_.writeDefaults ? 0 : kFlagAttach);
    if (record()->instance == nullptr) throw Refused(error, "opening the applet");
    readTree();
}

std::unique_ptr<Applet> Applet::twin() const {
    auto other = std::make_unique<Applet>(library_, options_);
    for (const Step& step : steps_) {
        if (const auto* load = std::get_if<LoadStep>(&step)) {
            other->load(load->file);
            continue;
        }
        const auto& set = std::get<SetStep>(step);
        if (const auto* field = std::get_if<Field>(&set.value)) {
            other->setElements(set.name, set.firstElement, *field);
        } else if (!writesFile.contains(set.name)) {
            other->set(set.name, set.value);
        }
    }
    return other;
}

void Applet::readTree() {
    const int count = library_->parameterCount(record());
    for (int i = 0; i < count; ++i) {
        const char* name = library_->parameterName(record(), i);
        if (name == nullptr) continue;
        names_.emplace_back(name);
        known_[name] = {.id = library_->parameterId(record(), i), .node = nullptr, .group = {}};
    }
    // The host's list of top-level groups begins with the newest: display order is the reverse.
    std::vector<const RegisterInfo*> groups;
    for (const auto* node = library_->parameterInfo(record(), 0); node != nullptr; node = node->next)
        groups.insert(groups.begin(), node);
    for (const auto* group : groups)
        walk(*group, {}, [this](const RegisterInfo& node, const std::string& path) {
            if (node.name == nullptr) return;
            known_[node.name] = {.id = node.address, .node = &node, .group = path};
            displayOrder_.emplace_back(node.name);
        });
}

const Applet::Known& Applet::known(std::string_view name) const {
    const std::string key(name);
    const auto found = known_.find(key);
    if (found != known_.end()) return found->second;
    throw UnknownName(key, nearestNames(key, names_));
}

Parameter Applet::parameter(std::string_view name) const {
    const Known& entry = known(name);
    if (entry.node != nullptr) return readNode(*entry.node, entry.group);
    Parameter parameter;
    parameter.name = name;
    parameter.id = entry.id;
    parameter.kind = FG_KIND_UINT32;
    parameter.group = "Host Runtime";
    return parameter;
}

std::vector<Parameter> Applet::tree() const {
    std::vector<Parameter> result;
    for (const auto& name : displayOrder_) result.push_back(parameter(name));
    return result;
}

std::string Applet::description(std::string_view name) {
    // One buffer carries the name in and the address of the text out.
    std::vector<char> buffer(std::max(name.size() + 1, sizeof(char*)));
    std::copy(name.begin(), name.end(), buffer.begin());
    if (library_->get(record(), kDescriptionId, buffer.data(), 0, FG_TYPE_TEXT_POINTER) != 0) return {};
    char* text = nullptr;
    std::memcpy(&text, buffer.data(), sizeof text);
    std::string result = utf8FromLatin1(text);
    library_->freeText(record(), kDescriptionId, text, 0, FG_TYPE_TEXT_POINTER);
    return result == kNoDescription ? std::string() : result;
}

std::vector<Event> Applet::events() {
    std::vector<Event> result;
    for (int bit = 0; bit < kEventBits; ++bit) {
        const std::uint64_t mask = std::uint64_t{1} << bit;
        if (const char* name = library_->eventName(record(), mask)) result.push_back({name, mask});
    }
    return result;
}

Value Applet::get(std::string_view name) {
    const Parameter wanted = parameter(name);
    if (wanted.kind == FG_KIND_UINT32_FIELD) return getElements(name, 0, wanted.elements);
    int result = 0;
    Value value = wanted.emptyValue();
    std::visit(
        [&]<class T>(T& v) {
            if constexpr (std::is_same_v<T, std::string>) {
                char* text = nullptr;
                result = library_->get(record(), wanted.id, &text, 0, FG_TYPE_TEXT_POINTER);
                if (result != 0) return;
                v = text;
                library_->freeText(record(), wanted.id, text, 0, FG_TYPE_TEXT_POINTER);
            } else if constexpr (std::is_arithmetic_v<T>) {
                result = library_->get(record(), wanted.id, &v, 0, wanted.typeCode());
            }
        },
        value);
    if (result != 0) throw Refused(result, wanted.name, "");
    return value;
}

Field Applet::getElements(std::string_view name, std::uint32_t first, std::uint32_t count) {
    const Parameter wanted = parameter(name);
    Field elements(count);
    FieldParameterAccess access{
        .type = FG_TYPE_UINT32, .start = first, .count = count, .values = elements.data()};
    const int result = library_->get(record(), wanted.id, &access, 0, FG_TYPE_FIELD_ACCESS);
    if (result != 0) throw Refused(result, wanted.name, "");
    return elements;
}

void Applet::set(std::string_view name, const Value& value) {
    const Parameter wanted = parameter(name);
    const Value own = inOwnType(wanted, value);
    if (const auto* elements = std::get_if<Field>(&own)) return setElements(name, 0, *elements);
    const void* data = std::visit(
        []<class T>(const T& v) -> const void* {
            if constexpr (std::is_same_v<T, std::string>) {
                return v.c_str();
            } else {
                return &v;
            }
        },
        own);
    const int result = library_->set(record(), wanted.id, data, 0, wanted.typeCode());
    if (result != 0) throw Refused(result, wanted.name, wanted.textOf(own));
    remember(SetStep{.name = wanted.name, .value = own, .firstElement = 0});
}

void Applet::setElements(std::string_view name, std::uint32_t first, const Field& elements) {
    const Parameter wanted = parameter(name);
    Field copy = elements;
    FieldParameterAccess access{.type = FG_TYPE_UINT32,
                                .start = first,
                                .count = static_cast<std::uint32_t>(copy.size()),
                                .values = copy.data()};
    const int result = library_->set(record(), wanted.id, &access, 0, FG_TYPE_FIELD_ACCESS);
    if (result != 0) throw Refused(result, wanted.name, textOf(elements));
    remember(SetStep{.name = wanted.name, .value = std::move(copy), .firstElement = first});
}

void Applet::save(const std::filesystem::path& file) {
    const int result = library_->saveConfig(record(), file.c_str());
    if (result != 0) throw Refused(result, "saving the configuration to " + file.string());
}

void Applet::load(const std::filesystem::path& file) {
    const int result = library_->loadConfig(record(), file.c_str());
    if (result != 0) throw Refused(result, "loading the configuration " + file.string());
    remember(LoadStep{.file = file});
}

std::string Applet::xml() {
    std::size_t size = 0;
    library_->parameterInfoXml(record(), 0, nullptr, &size);
    std::string text(size, '\0');
    const int result = library_->parameterInfoXml(record(), 0, text.data(), &size);
    if (result != 0) throw Refused(result, "the XML description");
    text.resize(std::strlen(text.c_str()));
    return text;
}

void Applet::remember(Step step) {
    if (options_.rememberSteps) steps_.push_back(std::move(step));
}

}  // namespace marovine::host
