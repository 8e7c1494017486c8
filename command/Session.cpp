#include "command/Session.h"

#include <charconv>
#include <iostream>

#include "client/ConfigCheck.h"
#include "client/VirtualBoard.h"
#include "command/LoadReport.h"

namespace marovine::host {

SettingText parseName(std::string_view text) {
    SettingText result{.name = std::string(text), .firstElement = {}, .value = {}};
    const auto bracket = text.find('[');
    if (bracket == std::string_view::npos) return result;
    std::uint32_t index = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data() + bracket + 1, end, index);
    if (error != std::errc{} || stop + 1 != end || *stop != ']')
        throw UsageError(std::string(text) + ": write NAME[INDEX] with a whole number as index");
    result.firstElement = index;
    result.name.erase(bracket);
    return result;
}

SettingText parseSetting(std::string_view text) {
    const auto split = text.find('=');
    if (split == std::string_view::npos || split == 0)
        throw UsageError(std::string(text) + " is no setting; write NAME=VALUE");
    SettingText setting = parseName(text.substr(0, split));
    setting.value = text.substr(split + 1);
    return setting;
}

Session::Session(const Seat& seat)
    : seat_(&seat),
      console_(Console(seat.out, seat.width, seat.coloured)),
      errors_(Console(seat.errors, seat.width)) {}

const Console& Session::console() {
    if (!console_)
        console_.emplace(options.colour == "always"  ? Colour::Always
                         : options.colour == "never" ? Colour::Never
                                                     : Colour::Auto);
    return *console_;
}

std::ostream& Session::out() const {
    return seat_ != nullptr ? seat_->out : std::cout;
}

const Console& Session::errors() {
    if (!errors_) errors_ = Console::forErrors();
    return *errors_;
}

void Session::refuseShared(const char* command) const {
    if (isShared())
        throw UsageError(std::string(command) +
                         " opens applets of its own and touches no other; leave out --at");
}

std::shared_ptr<const Library> Session::library() {
    if (seat_ != nullptr) return seat_->applet.sharedLibrary();
    if (!library_) {
        if (options.logLevel) switchLogOn(*options.logLevel, options.library);
        library_ = Library::load(options.library);
    }
    return library_;
}

Applet& Session::applet() {
    if (applet_ != nullptr) return *applet_;
    if (seat_ != nullptr && (options.attach || !options.library.empty() || options.logLevel))
        throw UsageError("--attach, --applet and --log decide how an applet is opened; with --at it is open");
    if (seat_ != nullptr && !options.world.empty())
        throw UsageError(
            "a world is put around a studio's board when it starts: marovine studio --world FILE.json");
    applet_ = seat_ != nullptr ? &seat_->applet : &open();
    if (!options.world.empty()) loadWorld();
    if (!options.config.empty()) loadConfig();
    for (const auto& text : options.settings) apply(parseSetting(text));
    return *applet_;
}

Applet& Session::open() {
    own_ = std::make_unique<Applet>(library(), std::make_unique<VirtualBoard>(),
                                    OpenOptions{.writeDefaults = !options.attach, .rememberSteps = true});
    return *own_;
}

void Session::loadWorld() {
    try {
        boardOf(*applet_).loadWorld(options.world);
    } catch (const virtualboard::WorldError& error) {
        throw Failure(options.world.string() + " is no world:\n" + error.what());
    }
}

void Session::loadConfig() {
    const auto before = applet_->twin();
    loadConfiguration(*applet_, options.config);
    const LoadReport left(*before, options.config);
    if (left.empty()) return;
    errors().paragraph("marovine: --config " + options.config.string() + " does not do all that it says");
    left.print(errors());
    if (left.hasSkipped()) status = kFailed;
}

Parameter Session::apply(const SettingText& setting) {
    Applet& open = applet();
    const Parameter parameter = open.parameter(open.nameOf(setting.name));
    const Value value = parameter.parse(setting.value);
    if (!setting.firstElement) {
        open.set(parameter.name, value);
    } else if (const auto* elements = std::get_if<Field>(&value)) {
        open.setElements(parameter.name, *setting.firstElement, *elements);
    } else {
        throw UsageError(parameter.name + " has no elements; write " + parameter.name + "=VALUE");
    }
    return open.parameter(parameter.name);
}

std::optional<Explanation> explained(Session& session, const Refused& refusal) {
    if (!session.isOpen() || refusal.parameter.empty() || refusal.value.empty()) return std::nullopt;
    try {
        Applet& applet = session.applet();
        const Value value = applet.parameter(refusal.parameter).parse(refusal.value);
        return explain(applet, {refusal.parameter, value}, refusal.code);
    } catch (const Failure&) {
        return std::nullopt;  // the refusal itself stays to be told
    }
}

}  // namespace marovine::host
