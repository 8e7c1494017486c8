#include "family/TempFile.h"

#include <fcntl.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

namespace marovine {

int mkstemps(char* nameTemplate, int suffixLength) {
    static constexpr std::string_view kPlaceholder = "XXXXXX";
    static constexpr std::string_view kDigits =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    static constexpr int kAttempts = 62 * 62 * 62;
    static constexpr std::uint64_t kStride = 7777;
    // The next name of any thread; the uptime keeps processes apart that start alike.
    static std::atomic<std::uint64_t> counter = 0;

    if (nameTemplate == nullptr) {
        return -1;
    }
    const std::string_view text(nameTemplate);
    if (suffixLength < 0 || text.size() < kPlaceholder.size() + static_cast<std::size_t>(suffixLength)) {
        return -1;
    }
    const std::size_t position = text.size() - static_cast<std::size_t>(suffixLength) - kPlaceholder.size();
    if (text.substr(position, kPlaceholder.size()) != kPlaceholder) {
        return -1;
    }
    struct sysinfo system {};
    sysinfo(&system);
    const auto uptime = static_cast<std::uint64_t>(system.uptime);
    std::uint64_t value = counter.fetch_add(uptime) + uptime;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        std::uint64_t rest = value;
        for (std::size_t i = 0; i < kPlaceholder.size(); ++i, rest /= kDigits.size()) {
            nameTemplate[position + i] = kDigits[rest % kDigits.size()];
        }
        const int descriptor = open(nameTemplate, O_RDWR | O_CREAT | O_EXCL, 0600);
        if (descriptor >= 0) {
            return descriptor;
        }
        value = counter.fetch_add(kStride) + kStride;
    }
    nameTemplate[0] = '\0';
    return -1;
}

char* createTempFile() {
    static constexpr char kTemplate[] = "/tmp/coef-XXXXXX.tiff";
    static constexpr int kSuffixLength = 5;

    auto name = std::make_unique<char[]>(sizeof kTemplate);
    std::memcpy(name.get(), kTemplate, sizeof kTemplate);
    const int descriptor = mkstemps(name.get(), kSuffixLength);
    if (descriptor < 0) {
        return nullptr;
    }
    close(descriptor);
    return name.release();
}

void deleteTempFile(char* name) {
    const std::unique_ptr<char[]> owned(name);
    if (owned) {
        unlink(owned.get());
    }
}

}  // namespace marovine
