#pragma once

/// Names, ids and list positions of the parameters that a host can enumerate: the SDK parameters, then the
/// pseudo-parameters of direct access when they are switched on. Built once, only read afterwards.

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace marovine {

/// Ids above this one reach registers of the board, where that is switched on.
inline constexpr int kRegisterIdBase = 1000000;
/// Ids above this one reach parameters of the design directly.
inline constexpr int kDesignIdBase = 2000000;

class ParameterNames {
 public:
    /// A pseudo-parameter that can be found by name; it takes the next list position.
    void addRegister(std::string name, int id);
    /// A pseudo-parameter that is listed but not found by name; it takes the next list position.
    void addDesignParameter(std::string name, int id);

    int count() const;
    /// Name at a list position; null when there is none. Valid as long as the object.
    const char* nameAt(int index) const;
    /// Id of a name, exactly as written.
    std::optional<int> idOf(std::string_view name) const;
    /// The design pseudo-parameters by name.
    const std::map<std::string, int, std::less<>>& designParameters() const { return designParameters_; }

 private:
    std::map<std::string, int, std::less<>> registers_;
    std::map<std::string, int, std::less<>> designParameters_;
    std::vector<const char*> listed_;  ///< positions after the SDK parameters; the texts are the maps' keys
};

/// The description text of a parameter, or null.
const char* descriptionOf(std::string_view name);

}  // namespace marovine
