#include "parameters/HandedOutTexts.h"

#include <cstring>

namespace marovine {

HandedOutTexts::~HandedOutTexts() {
    for (char* text : texts_) delete[] text;
}

char* HandedOutTexts::handOut(std::string_view text) {
    auto copy = std::make_unique<char[]>(text.size() + 1);
    std::memcpy(copy.get(), text.data(), text.size());
    const std::lock_guard lock(mutex_);
    texts_.insert(copy.get());
    return copy.release();
}

bool HandedOutTexts::giveBack(void* text) {
    std::unique_ptr<char[]> owned;
    const std::lock_guard lock(mutex_);
    const auto found = texts_.find(static_cast<char*>(text));
    if (found == texts_.end()) return false;
    owned.reset(*found);
    texts_.erase(found);
    return true;
}

}  // namespace marovine
