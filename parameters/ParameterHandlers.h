#pragma once

/// What serves each SDK parameter: its setter, where a read comes from, and its field in the cache.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>

#include "parameters/FgGxWrapperImpl.h"
#include "parameters/ParameterCache.h"
#include "tables/SdkParameterTable.h"

namespace marovine {

// ---- how a parameter is set ----

struct ReadOnly {};
/// A table of values is set by the element or by the block.
struct FieldSetters {
    void (FgGxWrapperImpl::*element)(const FieldParameterInt_s*, OnError);
    void (FgGxWrapperImpl::*block)(const FieldParameterAccess*, OnError);
};
template <class T>
using Setter = void (FgGxWrapperImpl::*)(T, OnError);
using SetHandler = std::variant<ReadOnly, Setter<int>, Setter<unsigned int>, Setter<double>,
                                Setter<unsigned long>, Setter<const char*>, FieldSetters>;

// ---- where its value is kept ----

template <class T>
using CacheField = T& (*)(ParameterCache&);
/// The cache field that a setter stores to and a configuration load fills; none for what is only read.
using CacheSlot =
    std::variant<std::monostate, CacheField<std::int32_t>, CacheField<std::uint32_t>, CacheField<double>,
                 CacheField<std::uint64_t>, CacheField<std::string>, CacheField<LookupTable>>;

// ---- how it is read ----

struct FromCache {};  ///< the parameter's cache field: a number (below), a text, or elements of a table
struct Constant {
    std::int32_t value;
};
struct Forwarded {};    ///< the inner handle answers, with the caller's own arguments
struct InnerHandle {};  ///< the inner handle answers on DMA channel 0 as unsigned 32-bit
template <class T>
using Getter = void (FgGxWrapperImpl::*)(T*);
using GetHandler =
    std::variant<FromCache, Constant, Forwarded, InnerHandle, Getter<std::int32_t>, Getter<std::uint32_t>,
                 Getter<std::int64_t>, Getter<std::uint64_t>, Getter<double>, Getter<char>>;

/// What serves one SDK parameter.
struct ParameterHandlers {
    const char* name;
    SetHandler set;
    GetHandler get;
    CacheSlot slot;
};

/// In list order.
extern const std::array<ParameterHandlers, sdkParameterCount> parameterHandlers;

/// A number in the cache that a read gives as it stands. It is most of what hosts read, so that it is known
/// by its place alone.
struct CachedNumber {
    std::uint16_t offset = 0;  ///< in bytes from the start of the cache
    std::uint16_t size = 0;    ///< 4 or 8 bytes; 0 where the read is something else
};
/// In list order.
extern const std::array<CachedNumber, sdkParameterCount> cachedNumbers;

}  // namespace marovine
