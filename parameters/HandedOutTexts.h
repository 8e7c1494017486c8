#pragma once

/// The texts that the applet has handed out by pointer and not yet got back.

#include <memory>
#include <mutex>
#include <set>
#include <string_view>

namespace marovine {

/// Owns the texts. Has a lock of its own, since a text is given back without the instance lock.
class HandedOutTexts {
 public:
    HandedOutTexts() = default;
    HandedOutTexts(const HandedOutTexts&) = delete;
    HandedOutTexts& operator=(const HandedOutTexts&) = delete;
    /// Frees what was never given back.
    ~HandedOutTexts();

    /// A copy of the text, owned here until it is given back.
    char* handOut(std::string_view text);
    /// Frees a text; false when it was not handed out here or was given back before.
    bool giveBack(void* text);

 private:
    std::mutex mutex_;
    std::set<char*> texts_;
};

}  // namespace marovine
