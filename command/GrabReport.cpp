#include "command/GrabReport.h"

#include <array>

namespace marovine::host {

namespace {

using virtualboard::imaging::ImageView;

/// By `FramePictureTrigger`.
constexpr std::array kTriggers{"none", "camera", "input", "gate", "software", "before"};

std::string sizeText(std::uint32_t width, std::uint32_t height) {
    return std::to_string(width) + " x " + std::to_string(height) + " pixels";
}

}  // namespace

Json jsonOf(const std::string& file, const ImageView& picture, const FrameMemoryPictureInfo& info) {
    return {{"file", file.empty() ? Json() : Json(file)},
            {"width", picture.width},
            {"height", picture.height},
            {"number", info.number},
            {"frame", info.frame},
            {"trigger", info.trigger < kTriggers.size() ? Json(kTriggers[info.trigger]) : Json(info.trigger)},
            {"triggerTime", info.triggerTime},
            {"firstLineTime", info.firstLineTime},
            {"lastLineTime", info.lastLineTime},
            {"firstLine", info.firstLine},
            {"encoderPosition", info.encoderPosition},
            {"lostBefore", info.lostBefore}};
}

void GrabReport::add(const std::string& file, const ImageView& picture, const FrameMemoryPictureInfo& info) {
    ++taken_;
    if (runs_.empty() || runs_.back().width != picture.width || runs_.back().height != picture.height)
        runs_.push_back({picture.width, picture.height, 0, file, file});
    ++runs_.back().pictures;
    runs_.back().last = file;
    if (!everything_) return;
    if (!file.empty() && (files_.empty() || files_.back() != file)) files_.push_back(file);
    told_.push_back(jsonOf(file, picture, info));
}

void GrabReport::print(const Console& console) const {
    auto& out = console.out();
    std::int64_t number = 1;
    for (const Run& run : runs_) {
        const std::string size = sizeText(run.width, run.height);
        const bool oneFile = run.first == run.last;
        const auto named = [&](const std::string& file, std::int64_t at) {
            return file.empty() ? "picture " + std::to_string(at) : file;
        };
        if (runs_.size() == 1 && taken_ == 1) {
            out << (run.first.empty() ? "" : run.first + ": ") << size << '\n';
        } else if (runs_.size() == 1) {
            out << taken_ << " pictures of " << size;
            if (!run.first.empty()) out << " in " << run.first << (oneFile ? "" : " to " + run.last);
            out << '\n';
        } else {
            const bool several = run.pictures > 1;
            const bool inOneFile = oneFile && !run.first.empty();
            out << named(run.first, number);
            if (several && !inOneFile) out << " to " << named(run.last, number + run.pictures - 1);
            out << ": " << (several && inOneFile ? std::to_string(run.pictures) + " of " : "") << size
                << '\n';
        }
        number += run.pictures;
    }
    if (lost_ > 0)
        out << lost_ << " pictures were lost: this host was slower than the camera; leave out --real-time\n";
}

Json GrabReport::json() const {
    const bool same = runs_.size() == 1;
    Json sizes = Json::array();
    for (const Run& run : runs_) {
        for (std::int64_t i = 0; everything_ && i < run.pictures; ++i)
            sizes.push_back({{"width", run.width}, {"height", run.height}});
    }
    return {{"files", files_},
            {"pictures", taken_},
            {"width", same ? Json(runs_.front().width) : Json()},
            {"height", same ? Json(runs_.front().height) : Json()},
            {"sizes", std::move(sizes)},
            {"taken", told_},
            {"lost", lost_}};
}

}  // namespace marovine::host
