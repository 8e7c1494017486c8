#pragma once

/// The one way out to the hardware design: typed reads and writes of design parameters through the inner
/// handle. A refused access throws the runtime's code; no access goes to another DMA channel than 0.

#include <array>
#include <cstdint>

#include "base/ErrorCodes.h"
#include "runtime/FgGxWrapper.h"
#include "tables/DesignParameters.h"

namespace marovine {

class DesignAccess {
 public:
    /// Both arguments must outlive the object.
    DesignAccess(const FgGxWrapper& wrapper, const std::array<int, designParameterCount>& ids)
        : wrapper_(wrapper), ids_(ids) {}

    // The type code follows from the value's C++ type.
    void write(DesignParameter parameter, std::uint32_t value) const {
        set(idOf(parameter), &value, FG_TYPE_UINT32);
    }
    void write(DesignParameter parameter, double value) const {
        set(idOf(parameter), &value, FG_TYPE_DOUBLE);
    }
    void write(DesignParameter parameter, const FieldParameterInt_s& element) const {
        set(idOf(parameter), &element, FG_TYPE_FIELD_INT);
    }
    void write(DesignParameter parameter, const FieldParameterAccess& block) const {
        set(idOf(parameter), &block, FG_TYPE_FIELD_ACCESS);
    }

    void read(DesignParameter parameter, std::uint32_t* value) const {
        get(idOf(parameter), value, FG_TYPE_UINT32);
    }
    void read(DesignParameter parameter, std::int32_t* value) const {
        get(idOf(parameter), value, FG_TYPE_UINT32);
    }
    void read(DesignParameter parameter, std::int64_t* value) const {
        get(idOf(parameter), value, FG_TYPE_INT64);
    }
    void read(DesignParameter parameter, std::uint64_t* value) const {
        get(idOf(parameter), value, FG_TYPE_UINT64);
    }
    void read(DesignParameter parameter, double* value) const { get(idOf(parameter), value, FG_TYPE_DOUBLE); }
    /// Reads a text into a buffer that the caller made large enough.
    void read(DesignParameter parameter, char* text) const { get(idOf(parameter), text, FG_TYPE_TEXT); }

    [[nodiscard]] std::uint32_t readUInt32(DesignParameter parameter) const {
        std::uint32_t value = 0;
        read(parameter, &value);
        return value;
    }

    /// The same by the runtime's id, for parameters that are looked up by name when they are used.
    void set(int id, const void* value, FgParamTypes type) const {
        const auto function = wrapper_.wrapperFg().get<RuntimeSlot::SetParameterWithType>();
        const int code =
            function != nullptr ? function(wrapper_.fglibFg(), id, value, 0, type) : error::notAllowed;
        if (code != 0) throw code;
    }
    void get(int id, void* value, FgParamTypes type) const {
        const auto function = wrapper_.wrapperFg().get<RuntimeSlot::GetParameterWithType>();
        const int code =
            function != nullptr ? function(wrapper_.fglibFg(), id, value, 0, type) : error::notAllowed;
        if (code != 0) throw code;
    }

 private:
    int idOf(DesignParameter parameter) const { return ids_[static_cast<std::size_t>(parameter)]; }

    const FgGxWrapper& wrapper_;
    const std::array<int, designParameterCount>& ids_;
};

}  // namespace marovine
