#pragma once

/// Calls that a board refuses because the control interface says so.

#include <functional>
#include <map>
#include <string>

#include "marovine/BoardCodes.h"

namespace virtualboard {

/// Lets one call, counted from now, fail once.
class CountedFault {
 public:
    /// The n-th call from now fails with `code`; n = 0 takes the fault back.
    void arm(unsigned n, int code) {
        remaining_ = n;
        code_ = code;
    }

    bool armed() const { return remaining_ != 0; }

    /// Counts one call; its code when it is the one that fails, else 0.
    int count() {
        if (remaining_ == 0 || --remaining_ != 0) return kOk;
        return code_;
    }

 private:
    unsigned remaining_ = 0;
    int code_ = kOk;
};

/// All faults of a board. Named ones outlive a change of design.
struct Faults {
    CountedFault nthWrite;
    CountedFault nthRead;
    std::map<std::string, int, std::less<>> writes;  ///< code per full name
    std::map<std::string, int, std::less<>> reads;
    bool any() const { return nthWrite.armed() || nthRead.armed() || !writes.empty() || !reads.empty(); }
};

}  // namespace virtualboard
