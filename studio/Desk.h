#pragma once

/// The studio's board and everything that is kept about it. One thread owns it and calls its functions, one
/// request after the other; what comes from elsewhere goes through that thread.

#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "client/Client.h"
#include "client/Snapshot.h"
#include "command/CommandLine.h"
#include "command/Json.h"
#include "command/Trace.h"
#include "studio/Camera.h"
#include "studio/Folder.h"
#include "studio/Signals.h"
#include "studio/World.h"

namespace marovine::studio {

/// A file that a program sent, or is to get.
struct SentFile {
    std::string name;
    std::string content;
};

/// A command line from elsewhere.
struct CommandRequest {
    std::vector<std::string> arguments;
    std::vector<SentFile> files;
    std::size_t width = 0;
    bool coloured = false;
};

struct CommandOutcome {
    int status = 0;
    std::string output;
    std::string errors;
    std::vector<SentFile> files;
};

/// Tells all pages something: a message's type and what it has besides.
using Announce = std::function<void(const char* type, host::Json message)>;

class Desk {
 public:
    /// `world` is the world file around the board, empty without one; `pictureArrived` as in `Camera`. From
    /// now on the applet may be given no file's name but those it has.
    Desk(host::Applet& applet, const std::filesystem::path& world, Announce announce,
         std::function<void()> pictureArrived);
    Desk(const Desk&) = delete;
    Desk& operator=(const Desk&) = delete;
    ~Desk();

    host::Applet& applet() { return applet_; }
    const Camera& camera() const { return camera_; }
    World& world() { return world_; }
    Folder& folder() { return folder_; }
    std::uint64_t revision() const { return revision_; }
    const host::Trace& trace() const { return trace_; }

    // ---- what a command prints ----

    /// The output of a command, which may name files of the folder only. Throws what the command throws.
    std::string output(std::vector<std::string> arguments);
    /// The document of a failure, with the reasons for a refused value.
    std::string failureText(const std::exception& error);
    /// Carries out a command from elsewhere.
    CommandOutcome command(const CommandRequest& request);

    // ---- changes ----

    /// Does something that may move parameters, and tells all pages what it moved, also when it throws. The
    /// result is its document, or one of what moved, with the numbers of revision and change.
    host::Json change(const std::string& title, const std::string& page,
                      const std::function<host::Json()>& act);
    /// Takes the last change back. Throws `NotFound`, and `Conflict` when the last one is not `wanted`.
    host::Json undo(const std::string& page, std::optional<std::uint64_t> wanted);
    host::Json history() const;
    /// A configuration from elsewhere as a file of the folder: it names tables in the folder only.
    std::filesystem::path keepConfiguration(const std::string& name, std::string_view content);

    // ---- the acquisition and the world ----

    host::Json acquisition();
    void acquire(Camera::State state);
    /// Changes the world by `act` and tells all pages.
    host::Json changeWorld(const std::function<void()>& act);
    /// What the signals did over the last milliseconds.
    host::Json signals(double ms);
    /// To be called twice a second: tells the pages how the acquisition goes.
    void tick();
    /// Removes files that nothing needs any more, and shortens what is remembered.
    void tidy();

 private:
    struct Moved {
        std::string parameter;
        host::Value before;
        host::Value after;
    };
    struct Entry {
        std::uint64_t number;
        std::string title;
        std::vector<Moved> values;
    };

    host::Json settled(const host::Snapshot& before, std::size_t firstWrite, const std::string& title,
                       const std::string& page, std::optional<host::Json> document);
    void restore(const Entry& entry, host::Json& document);
    void tellAcquisition();
    void resize();
    void checkFile(const std::string& file) const;
    bool inFolder(const std::vector<host::NamedFile>& files) const;

    host::Applet& applet_;
    Announce announce_;
    Folder folder_;
    std::vector<std::string> givenFiles_;  ///< named before the studio began
    host::Trace trace_;
    std::string cause_;
    World world_;
    Camera camera_;
    Signals signals_;
    bool endTold_ = true;      ///< whether the pages know that the acquisition has ended
    std::uint32_t width_ = 0;  ///< of the pictures being taken
    std::uint32_t height_ = 0;
    std::uint64_t revision_ = 0;
    std::uint64_t changes_ = 0;
    std::deque<Entry> history_;
    bool undoing_ = false;
    std::size_t jobs_ = 0;
};

}  // namespace marovine::studio
