#include "command/LoadReport.h"

namespace marovine::host {

LoadReport::LoadReport(const Applet& before, const std::filesystem::path& file)
    : file_(ConfigFile::read(file)), skipped_(skippedValues(before, file_)) {
    for (const auto* line : linesWithMissingFiles(file_))
        missing_.push_back({line->number, missingFileText(*line)});
}

void LoadReport::print(const Console& console) const {
    if (hasSkipped()) console.heading("Skipped: setters refuse these, so the design does not have them");
    for (const auto& value : skipped_) {
        console.paragraph("line " + std::to_string(value.line->number) + ": " + value.sentence(), 0,
                          Style::Bad, 4);
        for (const auto& advice : value.advice()) console.paragraph(advice, 4);
    }
    for (const auto& [line, text] : missing_)
        console.paragraph("line " + std::to_string(line) + ": " + text, 0, Style::Plain, 4);
}

void LoadReport::addTo(Json& document) const {
    document["skipped"] = Json::array();
    for (const auto& value : skipped_)
        document["skipped"].push_back(
            {{"line", value.line->number}, {"sentence", value.sentence()}, {"advice", value.advice()}});
    document["missingFiles"] = Json::array();
    for (const auto& [line, text] : missing_)
        document["missingFiles"].push_back({{"line", line}, {"sentence", text}});
}

}  // namespace marovine::host
