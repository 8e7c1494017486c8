#pragma once

/// Keys in the header of a configuration file without which a load fails.
namespace marovine::config_header {

inline constexpr char manufacturer[] = "Hersteller";
inline constexpr char type[] = "Typ";
inline constexpr char activePort[] = "AktivePort";

}  // namespace marovine::config_header
