#pragma once

/// The applet's constants about itself.

namespace marovine::identity {

inline constexpr const char* name = "Marovine";
inline constexpr const char* version = "2.1.0.5";
inline constexpr const char* build = "2.1.0.5.20180719.105408";
inline constexpr const char* category = "CaptureKits:Line";
inline constexpr const char* tags =
    "class=standard,family=acquisition,type=single,sensortype=line,color=bayer,interface=cl-full";
inline constexpr const char* designUid = "b41e9d07-2c6a-0f13-8e5d-a9c3f2e71d60";
inline constexpr const char* bitstreamUid = "3f7a2c10-58e4-4b9d-9c21-7d0e5a6b1c42";
inline constexpr const char* manufacturer = "Tavrion GmbH";
inline constexpr const char* cameraVersion = "0.5";

}  // namespace marovine::identity
