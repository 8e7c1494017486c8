#pragma once

/// The command line as data: what the help, the manual pages and the completion of shells are made from.

#include <string>
#include <vector>

namespace marovine::host {

/// An option or an argument.
struct OptionText {
    std::vector<std::string> names{};  ///< "-o", "--output"; of an argument its name in capitals
    std::string type{};                ///< "FILE.png"; empty for a switch
    std::string help{};
    std::vector<std::string> choices{};  ///< the only texts allowed, where there are such
    bool isArgument = false;
    bool required = false;
};

/// A command with everything below it. The first one is the program itself.
struct CommandText {
    std::string name{};
    std::string summary{};
    std::string footer{};
    std::vector<OptionText> options{};  ///< arguments in their order, then options
    std::vector<CommandText> commands{};
};

}  // namespace marovine::host
