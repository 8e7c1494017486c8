#include "studio/Folder.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <system_error>

#include "client/Failure.h"

namespace marovine::studio {

namespace fs = std::filesystem;

Folder::Folder() {
    std::string name = (fs::temp_directory_path() / "marovine-studio-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr)
        throw host::Failure("no folder can be made in " + fs::temp_directory_path().string());
    path_ = fs::canonical(name);
}

Folder::~Folder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

fs::path Folder::makeRoom() {
    fs::path room = path_ / std::to_string(++rooms_);
    std::error_code error;
    if (!fs::create_directory(room, error))
        throw host::Failure("no folder for files can be made: " + error.message());
    return room;
}

fs::path Folder::keep(std::string_view name, std::string_view content) {
    fs::path file = makeRoom() / plainName(name, "file");
    std::ofstream out(file, std::ios::binary);
    out << content;
    out.close();
    if (!out) throw host::Failure("the studio has no room for " + file.filename().string());
    return file;
}

std::string Folder::take(const fs::path& file) const {
    std::ifstream in(file, std::ios::binary);
    std::string content{std::istreambuf_iterator<char>(in), {}};
    if (!in.is_open()) throw host::Failure("nothing was written");
    std::error_code ignored;
    fs::remove_all(file.parent_path(), ignored);
    return content;
}

bool Folder::holds(const fs::path& file) const {
    std::error_code error;
    const fs::path whole = fs::weakly_canonical(file, error);
    if (error || whole.is_relative()) return false;
    return std::mismatch(path_.begin(), path_.end(), whole.begin(), whole.end()).first == path_.end();
}

void Folder::removeAllBut(const std::vector<std::string>& files) const {
    std::error_code ignored;
    for (const auto& room : fs::directory_iterator(path_, ignored)) {
        const bool used = std::ranges::any_of(
            files, [&](const std::string& file) { return fs::path(file).parent_path() == room.path(); });
        if (!used) fs::remove_all(room.path(), ignored);
    }
}

std::string Folder::withoutPaths(std::string text) const {
    const std::string prefix = path_.string() + '/';
    for (auto at = text.find(prefix); at != text.npos; at = text.find(prefix, at)) {
        auto end = at + prefix.size();
        while (end < text.size() && std::isdigit(static_cast<unsigned char>(text[end])) != 0) ++end;
        if (end < text.size() && text[end] == '/') ++end;
        text.erase(at, end - at);
    }
    return text;
}

std::string plainName(std::string_view name, const std::string& otherwise) {
    constexpr std::size_t kLongest = 100;
    name = name.substr(name.find_last_of('/') + 1);
    const bool plain = !name.empty() && name.size() <= kLongest && !name.starts_with('.') &&
                       !name.starts_with('-') && std::ranges::all_of(name, [](char c) {
                           return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '.' || c == '-' ||
                                  c == '_' || c == ' ' || c == '+';
                       });
    return plain ? std::string(name) : otherwise;
}

}  // namespace marovine::studio
