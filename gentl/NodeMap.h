#pragma once

/// The features of a module: the XML document that describes them and the registers behind it, from one
/// description of each.

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "gentl/Registers.h"

namespace marovine::gentl {

enum class Visibility { Beginner, Expert, Guru, Invisible };

/// How a consumer shows a feature.
struct Feature {
    std::string name;
    std::string category;  ///< names from the top down, separated by " > "
    std::string toolTip{};
    std::string displayName{};
    std::string unit{};
    Visibility visibility = Visibility::Beginner;
    std::vector<std::string> movedBy{};  ///< features whose change changes this one or its range
    std::vector<std::string> selects{};  ///< features that show another value when this one changes
    bool readOut = false;                ///< changes by itself: consumers look again every second
    std::function<bool()> locked{};      ///< whether it cannot be written now: writes answer ACCESS_DENIED
    std::function<std::string()> whyLocked{};  ///< what a refused write is told, where more is known
    std::function<bool()> available{};         ///< whether it means something now; else it is not written
    bool streamable = false;                   ///< whether a consumer saves it with its settings
    bool custom = false;                       ///< the producer's own, of no standard naming
};

/// How the value of a number is reached. What is missing is not there: without `write` it is read-only.
template <class T>
struct Access {
    std::function<T()> read;
    std::function<void(T)> write{};
    std::function<T()> minimum{};
    std::function<T()> maximum{};
    std::function<T()> increment{};
};

struct TextAccess {
    std::function<std::string()> read;
    std::function<void(const std::string&)> write{};
};

/// A table of 32-bit elements.
struct TableAccess {
    std::uint32_t elements;
    std::function<std::vector<std::uint32_t>(std::uint32_t first, std::uint32_t count)> read;
    std::function<void(std::uint32_t first, const std::vector<std::uint32_t>&)> write{};
};

/// Bytes of an integer's register.
struct Width {
    std::size_t bytes = 8;
    bool isSigned = true;
};

struct EntryNode {
    std::string name;
    std::int64_t value;
    std::string displayName{};
    std::function<bool()> available{};  ///< whether it can be chosen now
};

class NodeMap {
 public:
    /// `port` is the name under which a consumer connects the port; `model` names the document.
    NodeMap(std::string port, std::string_view model, std::string_view toolTip);

    void integer(const Feature& feature, const Access<std::int64_t>& access, Width width = {});
    void real(const Feature& feature, const Access<double>& access);
    void boolean(const Feature& feature, const Access<std::int64_t>& access);
    void text(const Feature& feature, const TextAccess& access);
    void enumeration(const Feature& feature, const std::vector<EntryNode>& entries,
                     const Access<std::int64_t>& access);
    /// An enumeration of one entry, which it always has.
    void onlyChoice(const Feature& feature, const EntryNode& entry);
    /// A selector whose one index is 0; `refusal` says so to who writes another.
    void onlyIndex(const Feature& feature, const std::string& refusal);
    /// `run` is called when 1 is written, all else is refused; `isDone` is asked until it is, where given.
    void command(const Feature& feature, const std::function<void()>& run,
                 const std::function<bool()>& isDone = {});
    void table(const Feature& feature, const TableAccess& access);

    /// A feature that is another one under a second name, with its registers.
    void alias(const Feature& feature, const std::string& target);
    /// A real feature computed from another. The formula "to" makes the target's value of FROM, the formula
    /// "from" the feature's value of TO.
    void converted(const Feature& feature, const std::string& target, std::string_view to,
                   std::string_view from);
    /// An integer feature computed from others, by their names in the formula.
    void computed(const Feature& feature, const std::vector<std::string>& from, std::string_view formula);

    /// Data of an event: a feature that reads what came with the event of this number.
    void eventData(const Feature& feature, std::uint64_t event, std::size_t offset);

    bool has(const std::string& name) const { return parts_.contains(name); }
    const Registers& registers() const { return registers_; }
    /// The whole document.
    std::string document() const;

 private:
    enum class Kind { Integer, Real, Enumeration, Other };
    /// Elements that a feature and its aliases have in common.
    struct Parts {
        Kind kind = Kind::Other;
        std::string access{};  ///< pIsAvailable and pIsLocked
        std::string range{};   ///< pMin, pMax, pInc
        std::string entries{};
        std::string unit{};
    };

    std::string flag(const std::string& name, const std::function<bool()>& ask);
    std::string guards(const Feature& feature);
    void begin(std::string_view node, const Feature& feature, std::string_view access);
    void end(std::string_view node);
    /// Ends the node of a feature and puts it into its category.
    void end(std::string_view node, const Feature& feature, Parts parts);
    void element(std::string_view name, std::string_view value);
    void list(std::string_view name, const std::vector<std::string>& values);
    template <class T>
    std::string number(const std::string& name, const Access<T>& access, Width width, bool readOut);
    template <class T>
    std::string rangeOf(const std::string& name, const Access<T>& access, Width width);
    void registerNode(std::string_view node, const std::string& name, Register content, bool readOut,
                      std::string_view more = {});

    std::string port_;
    std::string head_;
    std::string nodes_;
    std::map<std::string, std::vector<std::string>> categories_;  ///< path and its features
    std::vector<std::string> categoryOrder_;
    std::map<std::string, Parts> parts_;
    std::set<std::uint64_t> eventPorts_;
    Registers registers_;
};

}  // namespace marovine::gentl
