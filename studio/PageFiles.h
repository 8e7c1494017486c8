#pragma once

/// The files of the page, which the program carries.

#include <span>
#include <string_view>

namespace marovine::studio {

struct PageFile {
    std::string_view path;  ///< "/index.html"
    std::string_view content;
};

/// All files of studio/page/ as they were when the program was built.
std::span<const PageFile> pageFiles();

/// The file at a path, "/" being "/index.html"; null when there is none.
const PageFile* findPageFile(std::string_view path);

/// What a file's name says about its kind: "text/javascript; charset=utf-8".
const char* contentTypeOf(std::string_view path);

}  // namespace marovine::studio
