#include "client/About.h"

#include <array>
#include <cstddef>

namespace marovine::host {

namespace {

struct Question {
    int selector;
    const char* name;
};
/// Selectors that answer with a text.
constexpr std::array kTexts{Question{MAROVINE_INFO_NAME, "name"},
                            Question{MAROVINE_INFO_VERSION, "version"},
                            Question{MAROVINE_INFO_BUILD, "build"},
                            Question{MAROVINE_INFO_CATEGORY, "category"},
                            Question{MAROVINE_INFO_TAGS, "tags"},
                            Question{MAROVINE_INFO_DESIGN_UID, "design identifier"},
                            Question{MAROVINE_INFO_BITSTREAM_UID, "bitstream identifier"}};
/// Other selectors that answer with a number. What they ask for is known to the host's runtime alone.
constexpr std::array kNumbers{848,  1040, 1045, 1792, 1872, 1888, 2048, 2160, 2192, 2560,
                              2816, 3072, 3328, 4608, 4624, 4640, 4656, 4672, 4688, 4704};

std::string answerText(const Library& library, int selector) {
    void* text = nullptr;
    if (library.info(selector, 0, 0, nullptr, &text) != 0 || text == nullptr) return {};
    return static_cast<const char*>(text);
}

/// A block of bytes inside the library.
std::string_view answerBytes(const Library& library, int selector) {
    std::size_t size = 0;
    void* bytes = nullptr;
    if (library.info(selector, 0, 0, &size, &bytes) != 0 || bytes == nullptr) return {};
    return {static_cast<const char*>(bytes), size};
}

}  // namespace

About aboutLibrary(const Library& library) {
    const auto number = [&](int selector) { return library.info(selector, 0, 0, nullptr, nullptr); };
    About about;
    for (const auto& question : kTexts)
        about.texts.emplace_back(question.name, answerText(library, question.selector));
    about.designType = number(MAROVINE_INFO_DESIGN_TYPE);
    for (const int selector : kNumbers) about.capabilities.emplace_back(selector, number(selector));
    about.icon = answerBytes(library, MAROVINE_INFO_ICON);
    about.designImage = answerBytes(library, MAROVINE_INFO_DESIGN_IMAGE);
    return about;
}

}  // namespace marovine::host
