#pragma once

/// What a change of settings did: the values now, everything else that moved, and the design writes.

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "client/Client.h"
#include "client/Snapshot.h"
#include "command/CommandLine.h"
#include "command/Console.h"
#include "command/Json.h"
#include "command/Session.h"
#include "command/Trace.h"

namespace marovine::host {

/// --trace, --trace FILE.json or --trace FILE.csv.
struct TraceOption {
    std::string text;  ///< empty without the option, "-" without a file

    bool wanted() const { return !text.empty(); }
    /// The file to keep the writes in; empty without one. Throws `UsageError` for another ending.
    std::filesystem::path file() const;
};

/// One thing that moved.
Json jsonOf(const Change& change);

void addTraceOption(CommandLine command, TraceOption& option);

/// Watches an applet while settings are changed. On a board whose clock runs, counters would be taken for
/// changes: there only settings are told.
class ChangeReport {
 public:
    ChangeReport(Applet& applet, TraceOption trace, ChangeScope scope);

    /// A setting was made; `value` as the user wrote it.
    void done(const std::string& parameter, const std::string& value);
    /// A setting was refused, or something without a name of its own happened.
    void failed(const std::string& parameter, const std::string& value);
    /// Takes in writes that belong to no setting, under a cause such as "loading x.mcf".
    void note(const std::string& cause);
    /// Ends the watch and writes the trace's file, if one was asked for.
    void finish();

    void print(const Console& console) const;
    Json json() const;

 private:
    struct Setting {
        std::string parameter;
        std::string requested;
    };

    bool isRequested(const Change& change) const;
    void printSettings(const Console& console) const;
    void printMoved(const Console& console) const;

    Applet& applet_;
    TraceOption option_;
    Snapshot before_;
    std::optional<Snapshot> after_;
    std::optional<Trace> trace_;
    std::vector<Setting> settings_;
    ChangeScope scope_;
    std::vector<Change> changes_;
    bool failed_ = false;
    std::optional<Snapshot> beforeFailure_;  ///< after the last setting that was taken
    std::vector<Change> leftByRefusal_;
};

}  // namespace marovine::host
