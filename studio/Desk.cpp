#include "studio/Desk.h"

#include <algorithm>
#include <array>
#include <exception>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <utility>

#include "client/ConfigFile.h"
#include "client/VirtualBoard.h"
#include "command/ChangeReport.h"
#include "command/Run.h"
#include "command/Session.h"
#include "studio/Members.h"

namespace marovine::studio {

namespace fs = std::filesystem;
using host::Change;
using host::Json;
using host::Snapshot;
using host::Value;

namespace {

constexpr std::size_t kMostChanges = 100;
constexpr std::size_t kMostWrites = 100'000;
constexpr std::size_t kJobsBetweenTidying = 50;

/// Parameters whose set does something besides holding a value: setting them back would do it again.
bool actsWhenSet(const std::string& name) {
    return name == "FG_LUT_SAVE_FILE" || name == "FG_DEBUGSAVECONFIG";
}

std::string contentOf(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

const char* nameOf(Camera::State state) {
    switch (state) {
        case Camera::State::Running:
            return "running";
        case Camera::State::Single:
            return "single";
        case Camera::State::Stopped:
            break;
    }
    return "stopped";
}

}  // namespace

Desk::Desk(host::Applet& applet, const fs::path& world, Announce announce,
           std::function<void()> pictureArrived)
    : applet_(applet),
      announce_(std::move(announce)),
      givenFiles_(applet.filesInSteps()),
      trace_(applet),
      world_(applet, world),
      camera_(applet, std::move(pictureArrived)),
      signals_(applet, [this](Json event) { announce_("event", std::move(event)); }) {
    for (const char* name : {"FG_LUT_CUSTOM_FILE", "FG_DEBUGFILE"})
        givenFiles_.push_back(std::get<std::string>(applet_.get(name)));
    applet_.guardFiles([this](const std::string& file) { checkFile(file); });
    auto& board = host::boardOf(applet_);
    board.recordWrites(false);
    board.watchWrites([this](const virtualboard::Write& write) { trace_.add(write, cause_); });
    board.setClockMode(virtualboard::ClockMode::RealTime);
}

Desk::~Desk() {
    signals_.end();
    camera_.stop();
    host::boardOf(applet_).watchWrites({});
    applet_.guardFiles({});
}

void Desk::checkFile(const std::string& file) const {
    if (folder_.holds(file) || std::ranges::find(givenFiles_, file) != givenFiles_.end()) return;
    throw host::Failure("the studio touches no file of its disk but those that it was started with, so not " +
                        file + "; send the file itself");
}

// ---- what a command prints ----

bool Desk::inFolder(const std::vector<host::NamedFile>& files) const {
    for (const auto& file : files)
        if (!folder_.holds(file.name())) throw BadRequest("no file may be named here, so not " + file.name());
    return true;
}

std::string Desk::output(std::vector<std::string> arguments) {
    std::ostringstream out;
    std::ostringstream errors;
    const host::Seat seat{.applet = applet_, .out = out, .errors = errors};
    host::Session session(seat);
    host::runOrThrow(session, std::move(arguments), [this](const auto& files) { return inFolder(files); });
    return folder_.withoutPaths(out.str());
}

std::string Desk::failureText(const std::exception& error) {
    std::ostringstream nowhere;
    const host::Seat seat{.applet = applet_, .out = nowhere, .errors = nowhere};
    host::Session session(seat);
    session.applet();
    return folder_.withoutPaths(host::errorDocument(session, error));
}

CommandOutcome Desk::command(const CommandRequest& request) {
    std::ostringstream out;
    std::ostringstream errors;
    const host::Seat seat{.applet = applet_,
                          .out = out,
                          .errors = errors,
                          .width = request.width,
                          .coloured = request.coloured};
    host::Session session(seat);
    std::vector<std::pair<fs::path, fs::path>> written;  // the room, and the folder that was named
    const auto place = [&](const std::vector<host::NamedFile>& files) {
        for (const auto& file : files) {
            const fs::path name = file.name();
            if (file.role() == host::FileRole::Written) {
                const fs::path room = folder_.makeRoom();
                written.emplace_back(room, name.parent_path());
                file.rename(room / name.filename());
                continue;
            }
            const auto sent = std::ranges::find(request.files, name.string(), &SentFile::name);
            if (file.role() != host::FileRole::Read || sent == request.files.end())
                throw host::UsageError(name.string() +
                                       " was not sent along; the studio reads no file of its disk");
            file.rename(name.extension() == ".mcf" ? keepConfiguration(sent->name, sent->content)
                                                   : folder_.keep(sent->name, sent->content));
        }
        return true;
    };

    CommandOutcome outcome;
    std::string title = "marovine";
    for (const auto& argument : request.arguments) title += ' ' + argument;
    constexpr std::size_t kLongestTitle = 200;
    if (title.size() > kLongestTitle) title.resize(kLongestTitle);
    // A command may take pictures of its own, one acquisition at a time.
    const bool grabs = std::ranges::find(request.arguments, "grab") != request.arguments.end();
    const auto state = camera_.standing().state;
    if (grabs) camera_.stop();
    change(title, "", [&] {
        outcome.status = host::run(session, request.arguments, place);
        return Json();
    });
    host::boardOf(applet_).setClockMode(virtualboard::ClockMode::RealTime);
    if (grabs) {
        const auto names = [&](const char* option) {
            return std::ranges::any_of(request.arguments,
                                       [&](const auto& text) { return text.starts_with(option); });
        };
        if (names("--speed")) world_.layBelt();
        if (names("--scene")) changeWorld([&] { world_.changedElsewhere(); });
        if (state == Camera::State::Running) acquire(state);
    }
    for (const auto& [room, folder] : written)
        for (const auto& file : fs::directory_iterator(room))
            outcome.files.push_back({(folder / file.path().filename()).string(), contentOf(file.path())});
    outcome.output = folder_.withoutPaths(out.str());
    outcome.errors = folder_.withoutPaths(errors.str());
    tidy();
    return outcome;
}

// ---- changes ----

Json Desk::change(const std::string& title, const std::string& page, const std::function<Json()>& act) {
    const Snapshot before(applet_);
    const std::size_t firstWrite = trace_.count();
    cause_ = title;
    std::optional<Json> document;
    std::exception_ptr failure;
    try {
        document = act();
        if (document->as<std::nullptr_t>() != nullptr) document.reset();
    } catch (...) {
        failure = std::current_exception();
    }
    Json result = settled(before, firstWrite, title, page, std::move(document));
    if (failure) std::rethrow_exception(failure);
    return result;
}

Json Desk::settled(const Snapshot& before, std::size_t firstWrite, const std::string& title,
                   const std::string& page, std::optional<Json> document) {
    auto& board = host::boardOf(applet_);
    board.recordWrites(false);
    board.takeWrites();

    const Snapshot after(applet_);
    std::vector<Change> moved = host::changesBetween(before, after);
    std::erase_if(moved, [](const Change& change) { return host::isReadOut(change.parameter); });
    Entry entry{.number = 0, .title = title, .values = {}};
    for (const auto& change : moved)
        if (change.aspect == Change::Aspect::HeldValue && !actsWhenSet(change.parameter))
            entry.values.push_back({change.parameter, *before.find(change.parameter)->value,
                                    *after.find(change.parameter)->value});
    if (!entry.values.empty() && !undoing_) {
        entry.number = ++changes_;
        history_.push_back(entry);
        if (history_.size() > kMostChanges) history_.pop_front();
    }
    const bool changed = !moved.empty() || trace_.count() > firstWrite;
    if (changed) ++revision_;
    Json result;
    if (document) {
        result = std::move(*document);
    } else {
        result["set"] = Json::array();
        result["moved"] = Json::array();
        for (const auto& change : moved) result["moved"].push_back(host::jsonOf(change));
        result["writes"] = trace_.json(firstWrite);
    }
    trace_.keepNewest(kMostWrites);
    result["revision"] = revision_;
    result["change"] = entry.number != 0 ? Json(entry.number) : Json();
    if (changed)
        announce_("change",
                  {{"by", page.empty() ? Json() : Json(page)}, {"revision", revision_}, {"change", result}});
    resize();
    return result;
}

Json Desk::history() const {
    Json list = Json::array();
    for (const auto& [number, title, values] : history_) {
        Json moved = Json::array();
        for (const auto& [name, was, is] : values) {
            const host::Parameter parameter = applet_.parameter(name);
            moved.push_back(
                {{"parameter", name}, {"before", jsonOf(parameter, was)}, {"after", jsonOf(parameter, is)}});
        }
        list.push_back({{"change", number}, {"title", title}, {"values", std::move(moved)}});
    }
    return {{"changes", std::move(list)}};
}

void Desk::restore(const Entry& entry, Json& document) {
    host::ChangeReport report(applet_, {.text = "-"}, host::ChangeScope::Settings);
    // Fields last: many are computed from numbers. What another value still stands in the way of comes again.
    std::vector<const Moved*> left;
    for (const bool fields : {false, true})
        for (auto moved = entry.values.rbegin(); moved != entry.values.rend(); ++moved)
            if (std::holds_alternative<host::Field>(moved->before) == fields) left.push_back(&*moved);
    constexpr int kPasses = 4;
    std::vector<std::pair<const Moved*, std::string>> refused;
    for (int pass = 0; pass < kPasses; ++pass) {
        refused.clear();
        for (const auto* moved : left) {
            try {
                if (applet_.get(moved->parameter) == moved->before) continue;
                applet_.set(moved->parameter, moved->before);
                report.done(moved->parameter, applet_.parameter(moved->parameter).textOf(moved->before));
            } catch (const host::Failure& failure) {
                refused.emplace_back(moved, failure.what());
            }
        }
        if (std::ranges::all_of(
                left, [&](const auto* moved) { return applet_.get(moved->parameter) == moved->before; }))
            break;
    }
    report.finish();
    document = report.json();
    document["notRestored"] = Json::array();
    for (const auto* moved : left) {
        if (applet_.get(moved->parameter) == moved->before) continue;
        const auto why = std::ranges::find(refused, moved, &std::pair<const Moved*, std::string>::first);
        document["notRestored"].push_back(
            {{"parameter", moved->parameter},
             {"value", jsonOf(applet_.parameter(moved->parameter), moved->before)},
             {"sentence", why != refused.end() ? why->second : "another value moved it"}});
    }
}

Json Desk::undo(const std::string& page, std::optional<std::uint64_t> wanted) {
    if (history_.empty()) throw NotFound("there is no change to take back");
    const Entry entry = history_.back();
    if (wanted && *wanted != entry.number)
        throw Conflict("change " + std::to_string(*wanted) + " is not the last one; the last is " +
                       std::to_string(entry.number) + ", " + entry.title);
    history_.pop_back();
    undoing_ = true;
    const auto done = [this](Desk*) { undoing_ = false; };
    const std::unique_ptr<Desk, decltype(done)> guard(this, done);
    return change("undo of " + entry.title, page, [&] {
        Json document;
        restore(entry, document);
        document["undone"] = entry.number;
        return document;
    });
}

fs::path Desk::keepConfiguration(const std::string& name, std::string_view content) {
    fs::path file = folder_.keep(plainName(name, "configuration.mcf"), content);
    const auto read = host::ConfigFile::read(file);
    const auto named = host::filesNamedIn(read);
    std::string inside;
    bool foreign = false;
    for (const auto& line : read.lines()) {
        std::string text = line.text;
        const bool names = std::ranges::find(named, &line) != named.end();
        if (names && std::ranges::find(givenFiles_, line.value) == givenFiles_.end() &&
            !folder_.holds(line.value)) {
            const std::string own = (file.parent_path() / plainName(line.value, "table.lut")).string();
            text.replace(text.find(line.value), line.value.size(), own);
            foreign = true;
        }
        inside += text;
    }
    if (foreign) std::ofstream(file, std::ios::binary) << inside;
    return file;
}

void Desk::tidy() {
    if (++jobs_ % kJobsBetweenTidying == 0) applet_.shortenSteps();
    auto used = applet_.filesInSteps();
    for (const char* name : {"FG_LUT_CUSTOM_FILE", "FG_DEBUGFILE"})
        used.push_back(std::get<std::string>(applet_.get(name)));
    folder_.removeAllBut(used);
}

// ---- the acquisition and the world ----

Json Desk::acquisition() {
    const auto standing = camera_.standing();
    constexpr double kLongSilence = 2;  // s
    Json waits;
    if (!standing.failure.empty()) waits = standing.failure;
    if (standing.state != Camera::State::Stopped && standing.silence > kLongSilence) {
        try {
            waits = host::whyNoPicture(applet_, {.seconds = standing.silence, .realTime = true});
        } catch (const host::Failure& failure) {
            waits = std::string(failure.what());
        }
    }
    const auto number = [this](const char* name) { return host::jsonOf(applet_.get(name)); };
    return {{"state", nameOf(standing.state)}, {"pictures", standing.pictures}, {"lost", standing.lost},
            {"width", number("FG_WIDTH")},     {"height", number("FG_HEIGHT")}, {"rate", standing.rate},
            {"waitsFor", std::move(waits)}};
}

void Desk::acquire(Camera::State state) {
    if (state == Camera::State::Stopped) {
        camera_.stop();
    } else {
        camera_.start(state);
        width_ = static_cast<std::uint32_t>(*host::numberOf(applet_.get("FG_WIDTH")));
        height_ = static_cast<std::uint32_t>(*host::numberOf(applet_.get("FG_HEIGHT")));
    }
    ++revision_;
    tellAcquisition();
}

void Desk::resize() {
    const auto state = camera_.standing().state;
    if (state == Camera::State::Stopped) return;
    const auto width = static_cast<std::uint32_t>(*host::numberOf(applet_.get("FG_WIDTH")));
    const auto height = static_cast<std::uint32_t>(*host::numberOf(applet_.get("FG_HEIGHT")));
    if (width == width_ && height == height_) return;
    try {
        acquire(state);
    } catch (const host::Failure&) {
        acquire(Camera::State::Stopped);  // the pictures have become too large for the memory
    }
}

void Desk::tellAcquisition() {
    announce_("acquisition", {{"revision", revision_}, {"acquisition", acquisition()}});
}

void Desk::tick() {
    const bool runs = camera_.standing().state != Camera::State::Stopped;
    if (runs || !endTold_) tellAcquisition();
    endTold_ = !runs;
    signals_.tick();
}

Json Desk::signals(double ms) {
    return signals_.json(ms, host::parsedJson(output({"wiring", "--json"})));
}

Json Desk::changeWorld(const std::function<void()>& act) {
    act();
    ++revision_;
    Json world = world_.json();
    announce_("world", {{"revision", revision_}, {"world", world}});
    return world;
}

}  // namespace marovine::studio
