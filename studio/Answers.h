#pragma once

/// What answers the requests, by topic; Routes.cpp says which path leads to which.

#include <cstdint>
#include <string>

#include "command/Json.h"
#include "studio/Http.h"
#include "studio/Routes.h"

namespace marovine::studio {

/// An answer throws `BadRequest`, `NotFound` or what the command behind it throws.
using Answer = Response(Studio& studio, const Request& request);

// Of SettingAnswers.cpp: parameters, and the files that hold their values.
Answer parameters, parameter, values, signals, xml;
Answer set, undo, history, trace;
Answer lut, lutFile, putLut;
Answer configuration, putConfiguration, checkConfiguration, diffConfiguration;

// Of PictureAnswers.cpp: the acquisition, its pictures, and the world that they show.
Answer acquisition, postAcquisition, picture, histogram;
Answer world, patchWorld, putWorld, putScene, deleteScene;

// ---- for all of them ----

inline constexpr int kConflict = 409;  ///< status of what the applet refuses

Response documentOf(std::string text);
Response documentOf(const host::Json& document);
/// The page that asks; empty when it does not say so.
std::string pageOf(const Request& request);
/// The name that a file in the body goes by.
std::string nameOf(const Request& request, const char* otherwise);
/// A whole number in the query. Throws `BadRequest`.
std::uint32_t wholeIn(const Request& request, const char* name, std::uint32_t otherwise);

}  // namespace marovine::studio
