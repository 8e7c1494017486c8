#include "host/SafeFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <string>
#include <system_error>
#include <utility>

#include "host/Failure.h"

namespace marovine::host {

namespace fs = std::filesystem;

namespace {

Failure cannotWrite(const fs::path& file, int reason) {
    return Failure(file.string() + " cannot be written: " + std::generic_category().message(reason));
}

}  // namespace

SafeFile::SafeFile(fs::path target)
    : target_(std::move(target)), temporary_(target_.string() + ".new" + std::to_string(getpid())) {}

SafeFile::~SafeFile() {
    std::error_code ignored;
    if (!committed_) fs::remove(temporary_, ignored);
}

void SafeFile::commit() {
    const int descriptor = open(temporary_.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) throw cannotWrite(target_, errno);
    const int failed = fsync(descriptor) == 0 ? 0 : errno;
    close(descriptor);
    if (failed != 0) throw cannotWrite(target_, failed);
    std::error_code renamed;
    fs::rename(temporary_, target_, renamed);
    if (renamed) throw cannotWrite(target_, renamed.value());
    committed_ = true;
}

void writeSafely(const fs::path& target, std::string_view content) {
    SafeFile file(target);
    errno = 0;
    std::ofstream out(file.temporary(), std::ios::binary);
    out.write(content.data(), static_cast<std::streamsize>(content.size()));
    out.close();
    if (!out) throw cannotWrite(target, errno != 0 ? errno : EIO);
    file.commit();
}

}  // namespace marovine::host
