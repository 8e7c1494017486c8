#pragma once

/// Walks through the GenTL producer as a consumer does.

#include <filesystem>
#include <string>
#include <vector>

namespace marovine::host {

/// One thing that was tried.
struct GentlFinding {
    std::string what;    ///< "virtual board: remote device"
    std::string result;  ///< what it gave, or what is wrong with it
    bool good = true;
};

/// Opens every interface and device of a producer, reads every register that their documents name and takes
/// pictures. Throws `Failure` when the producer cannot be loaded; what is wrong with it is told as findings.
std::vector<GentlFinding> checkProducer(const std::filesystem::path& producer);

}  // namespace marovine::host
