#pragma once

/// The applet as a host uses it: opened on a device, its parameters set and read by name.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>
#include <vector>

#include "client/Device.h"
#include "client/Failure.h"
#include "client/Library.h"
#include "client/Parameter.h"
#include "client/Value.h"
#include "marovine/marovine.h"

namespace marovine::host {

/// An event of the design and the mask under which a host waits for it.
struct Event {
    std::string name;
    std::uint64_t mask = 0;
};

/// How an instance is opened and what it remembers.
struct OpenOptions {
    bool writeDefaults = true;   ///< false attaches to the design as it is (flag 1 of the entry point)
    bool rememberSteps = false;  ///< keeps every accepted set and load, so that `twin` can repeat them
};

/// An applet instance on a device of its own; both end with the object. Codes of the applet arrive as
/// `Refused`, names that it does not know as `UnknownName`. Several threads may use one instance.
class Applet {
 public:
    Applet(std::shared_ptr<const Library> library, std::unique_ptr<Device> device, OpenOptions options = {});
    Applet(const Applet&) = delete;
    Applet& operator=(const Applet&) = delete;

    /// Another instance on another device in the same state: opened alike, then given every remembered step.
    std::unique_ptr<Applet> twin() const;

    const Library& library() const { return *library_; }
    const std::shared_ptr<const Library>& sharedLibrary() const { return library_; }
    Fg_Struct* record() { return &instance_.record; }
    Device& device() const { return *device_; }

    // ---- what there is ----

    /// Names of all parameters in list order; direct access parameters stand behind the SDK's.
    const std::vector<std::string>& names() const { return names_; }
    /// The parameter that a text names without regard to case. Throws `UnknownName`.
    const std::string& nameOf(std::string_view text) const;
    /// The parameters whose name or title matches a pattern (`matchesPattern`), in list order. Throws
    /// `Failure` when there is none.
    std::vector<std::string> matching(std::string_view pattern) const;
    /// All matches of a pattern with * or ?, else the parameter of this name.
    std::vector<std::string> namedBy(std::string_view text) const;
    /// A parameter with its range and access as they are now.
    Parameter parameter(std::string_view name) const;
    /// The described parameters in display order.
    std::vector<Parameter> tree() const;
    /// The text that describes a parameter; empty when there is none.
    std::string description(std::string_view name);
    std::vector<Event> events();

    /// Has `check` asked before the applet is given the name of a file, which every text that is set is, also
    /// by a load; it throws what says why not. Twins made later ask as well.
    void guardFiles(std::function<void(const std::string& file)> check) { checkFile_ = std::move(check); }

    // ---- values ----

    /// What decides over later sets, without the texts around it: quick to take and to compare.
    struct Standing {
        std::optional<Value> value;  ///< nothing when it cannot be read
        std::optional<Range> range;
        bool writable = false;

        bool operator==(const Standing&) const = default;
    };
    Standing standing(std::string_view name);
    /// The range as it is now; nothing for parameters without one.
    std::optional<Range> range(std::string_view name) const;
    /// Whether the parameter is reported as writable now.
    bool writable(std::string_view name) const;

    Value get(std::string_view name);
    /// Elements `first` to `first + count - 1` of a field.
    Field getElements(std::string_view name, std::uint32_t first, std::uint32_t count);
    /// Sets a parameter. A number of another type is converted if it keeps its value; `UnreadableValue` else.
    void set(std::string_view name, const Value& value);
    /// The same, but gives the code of a refusal in place of throwing it; 0 when the value was taken.
    [[nodiscard]] int trySet(std::string_view name, const Value& value);
    /// The value given to a whole parameter by the last remembered set of it, which it may not read back as;
    /// nothing when there was none or a load came later.
    std::optional<Value> lastSet(std::string_view name) const;
    /// Forgets remembered sets that a later one of the same parameter took the place of, when a twin made
    /// without them is in the same state. Happens by itself after some thousand sets.
    void shortenSteps();
    /// The files that remembered steps name.
    std::vector<std::string> filesInSteps() const;
    /// The fields that remembered steps have set, in list order.
    std::vector<std::string> tablesSet() const;
    /// Sets a run of a field's elements.
    void setElements(std::string_view name, std::uint32_t first, const Field& elements);

    // ---- files ----

    void save(const std::filesystem::path& file);
    void load(const std::filesystem::path& file);
    /// The XML description of all parameters.
    std::string xml();

 private:
    struct SetStep {
        std::string_view name;  ///< the one in `known_`
        Value value;
        std::uint32_t firstElement;
    };
    struct LoadStep {
        std::filesystem::path file;
    };
    using Step = std::variant<SetStep, LoadStep>;
    /// From so many new steps on it is tried whether fewer lead to the same state.
    static constexpr std::size_t kManySteps = 16384;

    struct Known {
        std::string_view name;  ///< its key
        std::int32_t id;
        const RegisterInfo* node;  ///< null for the runtime's own parameters
        std::string group;

        std::uint32_t kind() const { return node != nullptr ? node->kind : std::uint32_t{FG_KIND_UINT32}; }
    };
    /// Finds names without making a string of them.
    struct NameHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view name) const { return std::hash<std::string_view>()(name); }
    };

    /// The open instance.
    struct Instance {
        explicit Instance(const Library& opened) : library(opened) {}
        Instance(const Instance&) = delete;
        Instance& operator=(const Instance&) = delete;
        ~Instance() {
            if (record.instance != nullptr) library.freeGrabber(&record);
        }
        const Library& library;
        Fg_Struct record{};
    };

    void readTree();
    void remember(Step step);
    static std::vector<Step> lastOnes(const std::vector<Step>& steps);
    std::vector<Step> steps() const;
    const Known& known(std::string_view name) const;
    std::unique_ptr<Applet> twinOf(const std::vector<Step>& steps) const;
    int trySetElements(std::string_view name, std::uint32_t first, const Field& elements);

    std::shared_ptr<const Library> library_;
    OpenOptions options_;
    std::unique_ptr<Device> device_;
    Instance instance_;
    std::vector<std::string> names_;
    std::vector<std::string> displayOrder_;
    std::unordered_map<std::string, Known, NameHash, std::equal_to<>> known_;
    mutable std::mutex stepsMutex_;
    std::vector<Step> steps_;
    std::function<void(const std::string& file)> checkFile_;
    std::size_t shortenAt_ = kManySteps;
    std::mutex shorteningMutex_;
};

}  // namespace marovine::host
