#pragma once

/// One run of the command: the options that every command takes, and the applet they lead to.

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "client/Client.h"
#include "client/Explain.h"
#include "command/Console.h"

namespace marovine::host {

/// Exit status of the command.
inline constexpr int kSuccess = 0;
inline constexpr int kFailed = 1;  ///< refused by the applet, or failed
inline constexpr int kUsage = 2;   ///< the command line makes no sense

/// A command line that parses but makes no sense; ends with `kUsage`.
class UsageError : public Failure {
    using Failure::Failure;
};

/// "NAME=VALUE" or, for elements of a field from an index on, "NAME[INDEX]=VALUE,VALUE".
struct SettingText {
    std::string name;
    std::optional<std::uint32_t> firstElement;
    std::string value;
};

/// Takes a setting apart; throws `UsageError` when it has no "=" or a bad index.
SettingText parseSetting(std::string_view text);

/// "NAME" or "NAME[INDEX]"; the value stays empty. Throws `UsageError` for a bad index.
SettingText parseName(std::string_view text);

/// Which parameters a report of changes may tell to have moved.
enum class ChangeScope { All, Settings };

/// The options that stand before or after any command.
struct GlobalOptions {
    std::string address;                ///< --at: the studio whose board to work on
    std::filesystem::path library;      ///< --applet
    std::filesystem::path config;       ///< --config, loaded first
    std::vector<std::string> settings;  ///< --set, applied after the configuration
    std::filesystem::path world;        ///< --world, around the board before all of them
    bool attach = false;                ///< --attach: no defaults
    std::optional<int> logLevel;        ///< --log
    std::string colour = "auto";        ///< --color: auto, always or never
};

/// What `marovine studio` is asked for.
struct StudioOptions {
    int port = 0;        ///< 0: the usual one, or the next that is free
    std::string listen;  ///< an address of the machine; empty: the loopback
    bool withoutBrowser = false;
};

/// An applet that outlives the run, and where the run's words go.
struct Seat {
    Applet& applet;
    std::ostream& out;
    std::ostream& errors;
    std::size_t width = 0;  ///< columns; 0 when lines may be of any length
    bool coloured = false;
};

class Session {
 public:
    Session() = default;
    /// A run on somebody else's applet, which may take pictures meanwhile. `seat` must outlive it.
    explicit Session(const Seat& seat);

    GlobalOptions options;
    /// What the process ends with when nothing is thrown.
    int status = kSuccess;
    /// Serves the board until it is told to end; empty in a program that has no studio.
    std::function<void(const StudioOptions&)> serveStudio;

    /// Where results go, in the style that the options ask for.
    const Console& console();
    /// Leaves standard output to something else: results go to standard error, too.
    void keepOutputFree() { console_.emplace(Console::forErrors()); }
    /// The stream behind it, which needs no options.
    std::ostream& out() const;
    /// Where failures go.
    const Console& errors();
    /// Whether the applet outlives the run: nobody sits at this process's terminal then.
    bool isShared() const { return seat_ != nullptr; }
    /// Throws `UsageError` on a shared applet, for a command that opens its own.
    void refuseShared(const char* command) const;
    std::shared_ptr<const Library> library();
    /// The applet, opened at the first call; then the configuration and the settings of the options are
    /// applied. Throws what refuses them; values that a load skips make the status `kFailed`.
    Applet& applet();
    bool isOpen() const { return applet_ != nullptr; }
    /// What a report of changes may name: of a board that runs only settings, as its read-outs move by
    /// themselves.
    ChangeScope changeScope() const { return isShared() ? ChangeScope::Settings : ChangeScope::All; }

    /// Reads a setting's value for its parameter and applies it. Returns the parameter.
    Parameter apply(const SettingText& setting);

 private:
    void loadWorld();
    /// Loads the configuration of the options and tells on standard error what the load left out.
    void loadConfig();

    /// Opens an applet of this run's own.
    Applet& open();

    const Seat* seat_ = nullptr;
    std::optional<Console> console_;
    std::optional<Console> errors_;
    std::shared_ptr<const Library> library_;
    std::unique_ptr<Applet> own_;
    Applet* applet_ = nullptr;
};

/// Why the applet of the session refused, when it was a value; nothing for other refusals.
std::optional<Explanation> explained(Session& session, const Refused& refusal);

}  // namespace marovine::host
