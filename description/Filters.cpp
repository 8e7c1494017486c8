#include "description/Filters.h"

#include <algorithm>

std::string xmlStringFilter(std::string_view text) {
    const auto isPlain = [](char c) { return c != '"' && c != '&' && c != '\'' && c != '<' && c != '>'; };
    if (std::ranges::all_of(text, isPlain)) return std::string(text);
    std::string filtered;
    filtered.reserve(text.size());
    for (const char c : text) {
        switch (c) {
            case '"':
                filtered += "&quot;";
                break;
            case '&':
                filtered += "&amp;";
                break;
            case '\'':
                filtered += "&apos;";
                break;
            case '<':
                filtered += "&lt;";
                break;
            case '>':
                filtered += "&gt;";
                break;
            default:
                filtered += c;
        }
    }
    return filtered;
}

std::string xmlNameFilter(std::string_view text) {
    std::string filtered;
    filtered.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const bool isLetter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
        const bool isInner = (c >= '0' && c <= '9') || c == '_';
        if (isLetter || (isInner && i > 0)) filtered += c;
    }
    return filtered;
}
