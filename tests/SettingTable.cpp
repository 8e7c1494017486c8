#include "tests/SettingTable.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace marovine::test {

Words split(const std::string& text, char separator) {
    Words parts;
    std::istringstream in(separator == ' ' ? text : text + separator);
    for (std::string part; std::getline(in, part, separator);) {
        const auto first = part.find_first_not_of(' ');
        if (first != std::string::npos)
            parts.push_back(part.substr(first, part.find_last_not_of(' ') + 1 - first));
        else if (separator != ' ')
            parts.emplace_back();
    }
    return parts;
}

std::string withVariables(std::string text, const Variables& variables) {
    // Longer names come first.
    for (auto v = variables.rbegin(); v != variables.rend(); ++v)
        for (std::size_t at; (at = text.find("$" + v->first)) != std::string::npos;)
            text.replace(at, v->first.size() + 1, v->second);
    return text;
}

Words alternatives(const std::string& line) {
    Words lines;
    for (std::size_t n = 0; n == 0 || n < lines.size(); ++n) {
        std::string one;
        std::size_t at = 0;
        for (std::size_t open; (open = line.find('{', at)) != std::string::npos;) {
            const auto close = line.find('}', open);
            const Words choices = split(line.substr(open + 1, close - open - 1), '|');
            if (lines.empty()) lines.resize(choices.size());
            if (choices.size() != lines.size()) throw std::runtime_error("braces of two lengths: " + line);
            one += line.substr(at, open - at) + choices[n];
            at = close + 1;
        }
        if (lines.empty()) lines.resize(1);
        lines[n] = one + line.substr(at);
    }
    return lines;
}

std::vector<Section> readTable(const std::filesystem::path& path) {
    std::vector<std::pair<int, std::string>> lines;
    std::ifstream file(path);
    int number = 0;
    for (std::string line; std::getline(file, line);) {
        ++number;
        line.erase(std::min(line.find('#'), line.size()));
        line.erase(line.find_last_not_of(' ') + 1);
        if (line.empty()) continue;
        if (line.front() == ' ')
            lines.back().second += " " + line.substr(line.find_first_not_of(' '));
        else
            lines.emplace_back(number, line);
    }
    std::vector<Section> sections;
    std::map<std::string, Macro> macros;
    Variables common;
    for (const auto& [at, text] : lines) {
        const std::string line = withVariables(text, common);
        if (line.starts_with("def ")) {
            const std::string head = line.substr(4, line.find(" = ") - 4);
            const auto open = std::min(head.find('('), head.size());
            Words parameters;
            if (open < head.size()) parameters = split(head.substr(open + 1, head.size() - open - 2), ',');
            macros[head.substr(0, open)] = {parameters, line.substr(line.find(" = ") + 3)};
        } else if (line.starts_with("== ")) {
            sections.push_back({line.substr(3), path.string(), {}, {}, {}});
        } else if (line.starts_with("with ") || line.starts_with("each ")) {
            for (const auto& one : line.front() == 'e' ? alternatives(line) : Words{line}) {
                Variables variables;
                for (const auto& pair : split(one.substr(5), ' '))
                    variables[pair.substr(0, pair.find('='))] = pair.substr(pair.find('=') + 1);
                sections.empty() ? void(common = variables) : sections.back().instances.push_back(variables);
            }
        } else {
            sections.back().lines.emplace_back(at, line);
        }
    }
    for (auto& section : sections) {
        section.macros = macros;
        if (section.instances.empty()) section.instances.emplace_back();
    }
    return sections;
}

Value valueOf(ValueType type, const std::string& text) {
    const auto whole = [&] {
        const auto* named = findConstant(text);
        return named != nullptr      ? static_cast<std::uint64_t>(named->value)
               : text.front() == '-' ? static_cast<std::uint64_t>(std::stoll(text, nullptr, 0))
                                     : std::stoull(text, nullptr, 0);
    };
    switch (type) {
        case ValueType::Double:
            return std::strtod(text.c_str(), nullptr);
        case ValueType::Text: {
            const auto end = text.rfind('\'');
            std::string content = text.substr(1, end - 1);
            std::ranges::replace(content, '~', ' ');
            if (end + 1 < text.size())
                content = std::string(static_cast<std::size_t>(std::stoi(text.substr(end + 2))), content[0]);
            return content;
        }
        case ValueType::UInt32:
            return static_cast<std::uint32_t>(whole());
        case ValueType::Int64:
            return static_cast<std::int64_t>(whole());
        case ValueType::UInt64:
            return whole();
        default:
            return static_cast<std::int32_t>(whole());
    }
}

Writes writesOf(const Section& section, std::string text) {
    for (std::size_t at; (at = text.find('@')) != std::string::npos;) {
        auto end =
            text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_", at + 1);
        end = std::min(end, text.size());
        const auto& macro = section.macros.at(text.substr(at + 1, end - at - 1));
        Variables arguments;
        if (end < text.size() && text[end] == '(') {
            const auto close = text.find(')', end);
            const Words given = split(text.substr(end + 1, close - end - 1), ',');
            for (std::size_t i = 0; i < given.size(); ++i) arguments[macro.parameters.at(i)] = given[i];
            end = close + 1;
        }
        if (arguments.size() != macro.parameters.size()) throw std::runtime_error("arguments: " + text);
        text.replace(at, end - at, withVariables(macro.body, arguments));
    }
    Writes writes;
    for (const auto& write : split(text, ';')) {
        const auto end = write.find_first_of(" =");
        if (!write.empty()) writes.push_back({write.substr(0, end), write.substr(end + 1)});
    }
    return writes;
}

}  // namespace marovine::test
