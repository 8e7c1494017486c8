#pragma once

/// One run of the command: the options that every command takes, and the applet they lead to.

#include <filesystem>
#include <memory>
#include <optional>
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

/// The options that stand before or after any command.
struct GlobalOptions {
    std::filesystem::path library;      ///< --applet
    std::filesystem::path config;       ///< --config, loaded first
    std::vector<std::string> settings;  ///< --set, applied after the configuration
    bool attach = false;                ///< --attach: no defaults
    std::optional<int> logLevel;        ///< --log
    std::string colour = "auto";        ///< --color: auto, always or never
};

class Session {
 public:
    GlobalOptions options;
    /// What the process ends with when nothing is thrown.
    int status = kSuccess;

    /// Where results go. Failures go to standard error.
    const Console& console();
    std::shared_ptr<const Library> library();
    /// The applet, opened at the first call; then the configuration and the settings of the options are
    /// applied. Throws what refuses them; values that a load skips make the status `kFailed`.
    Applet& applet();
    bool isOpen() const { return applet_ != nullptr; }

    /// Reads a setting's value for its parameter and applies it. Returns the parameter.
    Parameter apply(const SettingText& setting);

 private:
    /// Loads the configuration of the options and tells on standard error what the load left out.
    void loadConfig();

    std::optional<Console> console_;
    std::shared_ptr<const Library> library_;
    std::unique_ptr<Applet> applet_;
};

/// Why the applet of the session refused, when it was a value; nothing for other refusals.
std::optional<Explanation> explained(Session& session, const Refused& refusal);

}  // namespace marovine::host
