#pragma once

namespace virtualboard {

/// How a board's time passes.
enum class ClockMode {
    RealTime,          ///< with the machine's time
    Manual,            ///< only when the control interface says so
    AsFastAsPossible,  ///< an acquisition moves it on from picture to picture as the host asks for them
};

}  // namespace virtualboard
