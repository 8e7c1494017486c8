#pragma once

/// The host runtime's functions, bound by name when an instance is opened.
///
/// The applet does not link against the host runtime: it opens the library by name and keeps the functions
/// in a table of fixed slots. A function that the runtime lacks leaves its slot empty.

#include <array>
#include <cstddef>
#include <cstdint>

#include "marovine/marovine.h"

namespace marovine {

/// Slots of the runtime function table; the numbers are the table's fixed order.
enum class RuntimeSlot : std::uint8_t {
    GetAppletId = 4,
    SetParameter = 5,
    SetParameterWithType = 6,
    GetParameter = 7,
    GetParameterWithType = 8,
    FreeParameterStringWithType = 9,
    SaveConfig = 11,
    GetLastPicNumberEx = 15,
    GetLastPicNumberBlockingEx = 16,
    FreeGrabber = 19,
    GetLastErrorNumber = 20,
    GetStatusEx = 29,
    AcquireEx = 30,
    StopAcquireEx = 31,
    GetParameterInfo = 32,
};

/// The runtime's name of the function in a slot.
struct RuntimeSlotName {
    std::uint8_t slot;
    const char* name;
};

/// Every slot that is resolved, those that nobody calls yet included.
inline constexpr auto runtimeSlotNames = std::to_array<RuntimeSlotName>({
    {4, "Fg_getAppletId"},        {5, "Fg_setParameter"},         {6, "Fg_setParameterWithType"},
    {7, "Fg_getParameter"},       {8, "Fg_getParameterWithType"}, {9, "Fg_freeParameterStringWithType"},
    {11, "Fg_saveConfig"},        {12, "Fg_loadConfig"},          {13, "Fg_Acquire"},
    {14, "Fg_stopAcquire"},       {15, "Fg_getLastPicNumberEx"},  {16, "Fg_getLastPicNumberBlockingEx"},
    {19, "Fg_FreeGrabber"},       {20, "Fg_getLastErrorNumber"},  {29, "Fg_getStatusEx"},
    {30, "Fg_AcquireEx"},         {31, "Fg_stopAcquireEx"},       {32, "Fg_getParameterInfo"},
    {33, "Fg_AllocShading"},      {34, "Fg_FreeShading"},         {35, "Shad_GetMaxLine"},
    {36, "Shad_SetSubValueLine"}, {37, "Shad_SetMultValueLine"},  {38, "Shad_SetFixedPatternNoiseLine"},
    {39, "Shad_GetAccess"},       {40, "Shad_FreeAccess"},        {41, "Shad_WriteActLine"},
});
inline constexpr std::size_t runtimeSlotCount = 42;

/// The signature of the function in a slot.
template <RuntimeSlot>
struct RuntimeSignature;
template <>
struct RuntimeSignature<RuntimeSlot::GetAppletId> {
    using Type = int (*)(Fg_Struct*, void*);
};
template <>
struct RuntimeSignature<RuntimeSlot::SetParameter> {
    using Type = int (*)(Fg_Struct*, int, const void*, unsigned);
};
template <>
struct RuntimeSignature<RuntimeSlot::SetParameterWithType> {
    using Type = int (*)(Fg_Struct*, int, const void*, unsigned, FgParamTypes);
};
template <>
struct RuntimeSignature<RuntimeSlot::GetParameter> {
    using Type = int (*)(Fg_Struct*, int, void*, unsigned);
};
template <>
struct RuntimeSignature<RuntimeSlot::GetParameterWithType> {
    using Type = int (*)(Fg_Struct*, int, void*, unsigned, FgParamTypes);
};
template <>
struct RuntimeSignature<RuntimeSlot::FreeParameterStringWithType> {
    using Type = int (*)(Fg_Struct*, int, void*, unsigned, FgParamTypes);
};
template <>
struct RuntimeSignature<RuntimeSlot::SaveConfig> {
    using Type = int (*)(Fg_Struct*, const char*);
};
template <>
struct RuntimeSignature<RuntimeSlot::GetLastPicNumberEx> {
    using Type = std::int64_t (*)(Fg_Struct*, unsigned, dma_mem*);
};
template <>
struct RuntimeSignature<RuntimeSlot::GetLastPicNumberBlockingEx> {
    using Type = std::int64_t (*)(Fg_Struct*, std::int64_t, unsigned, int, dma_mem*);
};
template <>
struct RuntimeSignature<RuntimeSlot::FreeGrabber> {
    using Type = int (*)(Fg_Struct*);
};
template <>
struct RuntimeSignature<RuntimeSlot::GetLastErrorNumber> {
    using Type = int (*)(Fg_Struct*);
};
template <>
struct RuntimeSignature<RuntimeSlot::GetStatusEx> {
    using Type = std::int64_t (*)(Fg_Struct*, int, std::int64_t, unsigned, dma_mem*);
};
template <>
struct RuntimeSignature<RuntimeSlot::AcquireEx> {
    using Type = int (*)(Fg_Struct*, unsigned, std::int64_t, int, dma_mem*);
};
template <>
struct RuntimeSignature<RuntimeSlot::StopAcquireEx> {
    using Type = int (*)(Fg_Struct*, unsigned, dma_mem*, int);
};
template <>
struct RuntimeSignature<RuntimeSlot::GetParameterInfo> {
    using Type = RegisterInfo* (*)(Fg_Struct*, int);
};

/// The function table. Filled once, before the instance is visible to anybody; only read afterwards.
class RuntimeFunctions {
 public:
    /// The function in a slot, null when the runtime lacks it.
    template <RuntimeSlot slot>
    auto get() const {
        return reinterpret_cast<typename RuntimeSignature<slot>::Type>(
            slots_[static_cast<std::size_t>(slot)]);
    }

    /// Resolves every slot in an open runtime library.
    void bind(void* library);

 private:
    std::array<void*, runtimeSlotCount> slots_{};
};

}  // namespace marovine
