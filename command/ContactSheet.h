#pragma once

/// One picture that shows what settings do to pictures.

#include <memory>

#include "client/Library.h"
#include "marovine/Image.h"

namespace marovine::host {

/// The belt's scene, taken once with the defaults and then with one setting at a time changed, side by side
/// with captions. Every view comes from an applet of its own.
virtualboard::imaging::Image contactSheet(const std::shared_ptr<const Library>& library);

}  // namespace marovine::host
