#pragma once

#include <array>
#include <cstdio>
#include <cstring>
#include <ostream>
#include <string>

/// The lookups of a configuration file in their plainest form: the file is read again for every key. What the
/// parser answers must not differ from this by a byte.
namespace plain {

struct Answer {
    int code = -8000;
    std::string text = "Error";
    bool operator==(const Answer&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Answer& answer) {
        return out << answer.code << " '" << answer.text << '\'';
    }
};

inline Answer keyInSection(const char* fileName, const char* section, const char* key) {
    std::FILE* file = std::fopen(fileName, "r");
    if (file == nullptr) return {};
    Answer answer;
    std::array<char, 256> line;
    bool inSection = false;
    while (std::fgets(line.data(), line.size(), file) != nullptr) {
        if (!inSection) {
            inSection = std::strstr(line.data(), section) != nullptr;
        } else if (std::strncmp(line.data(), key, std::strlen(key)) == 0 && line[std::strlen(key)] == '=') {
            char* state = nullptr;
            strtok_r(line.data(), "=;", &state);
            const char* value = strtok_r(nullptr, "=;'", &state);
            if (value == nullptr || *value == '\r' || *value == '\n') value = "";
            answer = {0, value};
            break;
        }
    }
    std::fclose(file);
    return answer;
}

inline Answer firstLineWith(const char* fileName, const char* needle) {
    std::FILE* file = std::fopen(fileName, "r");
    if (file == nullptr) return {};
    Answer answer;
    std::array<char, 256> line;
    while (std::fgets(line.data(), line.size(), file) != nullptr) {
        char* state = nullptr;
        if (std::strstr(line.data(), needle) == nullptr) continue;
        if (strtok_r(line.data(), "='", &state) == nullptr) continue;
        const char* value = strtok_r(nullptr, "='", &state);
        answer = {0, value == nullptr ? "" : value};
        break;
    }
    std::fclose(file);
    return answer;
}

}  // namespace plain
