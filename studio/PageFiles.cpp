#include "studio/PageFiles.h"

#include <algorithm>
#include <array>

namespace marovine::studio {

const PageFile* findPageFile(std::string_view path) {
    const auto files = pageFiles();
    const auto found = std::ranges::find(files, path == "/" ? "/index.html" : path, &PageFile::path);
    return found != files.end() ? &*found : nullptr;
}

const char* contentTypeOf(std::string_view path) {
    struct Kind {
        std::string_view ending;
        const char* type;
    };
    static constexpr std::array kinds{Kind{".html", "text/html; charset=utf-8"},
                                      Kind{".js", "text/javascript; charset=utf-8"},
                                      Kind{".mjs", "text/javascript; charset=utf-8"},
                                      Kind{".css", "text/css; charset=utf-8"},
                                      Kind{".json", "application/json"},
                                      Kind{".svg", "image/svg+xml"},
                                      Kind{".png", "image/png"},
                                      Kind{".woff2", "font/woff2"}};
    const auto* found =
        std::ranges::find_if(kinds, [&](const Kind& kind) { return path.ends_with(kind.ending); });
    return found != kinds.end() ? found->type : "application/octet-stream";
}

}  // namespace marovine::studio
