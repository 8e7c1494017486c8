#pragma once

/// What a client opens an applet on.

#include <memory>

#include "marovine/marovine.h"

namespace marovine::host {

/// A device of the machine, at hand for as long as the object lives.
class Device {
 public:
    Device() = default;
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;
    virtual ~Device() = default;

    /// What the applet's entry point is given; never null.
    virtual GXdevice* handle() const = 0;
    /// A fresh device of the same kind, to try settings out without touching this one. Throws `Failure` when
    /// there is none.
    virtual std::unique_ptr<Device> another() const = 0;
};

}  // namespace marovine::host
