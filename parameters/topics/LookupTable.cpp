/// The three lookup tables: computed from the processing parameters, loaded from a file, or set one by one.

#include <algorithm>
#include <array>

#include "files/Fg_LutFileParser.h"
#include "parameters/FgGxWrapperImpl.h"

namespace error = marovine::error;
using marovine::applySetting;
using marovine::constant;
using marovine::DesignParameter;
using marovine::designParameter;
using marovine::entriesOf;
using marovine::kAccessReadOnly;
using marovine::kAccessReadWrite;
using marovine::kLutEntries;
using marovine::leavingErrors;
using marovine::limits;
using marovine::LookupTable;
using marovine::LutChannel;
using marovine::ParameterCache;
using marovine::sdkId;

namespace {

/// A table in the cache and in the design.
struct Channel {
    LookupTable ParameterCache::*table;
    DesignParameter parameter;
};
/// In the order of `LutChannel`.
constexpr std::array<Channel, 3> kChannels{{
    {&ParameterCache::FG_LUT_VALUE_RED, designParameter("LookupTable_R_LUTcontent")},
    {&ParameterCache::FG_LUT_VALUE_GREEN, designParameter("LookupTable_G_LUTcontent")},
    {&ParameterCache::FG_LUT_VALUE_BLUE, designParameter("LookupTable_B_LUTcontent")},
}};

constexpr const Channel& channelOf(LutChannel channel) {
    return kChannels[static_cast<std::size_t>(channel)];
}

/// Largest entry of 8 bits.
constexpr std::uint32_t kMaximum = 255;

/// The record in which the design takes a whole table.
FieldParameterAccess wholeTable(LookupTable& table) {
    return {.type = FG_TYPE_UINT32, .start = 0, .count = kLutEntries, .values = table.data()};
}

/// The record in which a file takes or gives a channel.
LookupTable_s fileRecord(LutChannel channel, std::int32_t* values) {
    return {.values = values,
            .id = static_cast<std::int32_t>(channel),
            .nrOfElements = kLutEntries,
            .format = 0,
            .number = false};
}
LookupTable_s fileRecord(LutChannel channel, LookupTable& table) {
    return fileRecord(channel, reinterpret_cast<std::int32_t*>(table.data()));
}

}  // namespace

// ---- whole tables ----

/// Fills the cached tables and writes them all; the old ones return to the cache when a step fails.
template <class Fill>
void FgGxWrapperImpl::replaceTables(Fill&& fill) {
    marovine::Restore red(cache_.FG_LUT_VALUE_RED);
    marovine::Restore green(cache_.FG_LUT_VALUE_GREEN);
    marovine::Restore blue(cache_.FG_LUT_VALUE_BLUE);
    fill();
    for (const auto& [table, parameter] : kChannels) design().write(parameter, wholeTable(cache_.*table));
    red.confirm();
    green.confirm();
    blue.confirm();
}

void FgGxWrapperImpl::updateLutProcessing_P0() {
    if (cache_.FG_LUT_TYPE != constant("LUT_TYPE_PROCESSING")) return;
    replaceTables([&] {
        cache_.FG_LUT_VALUE_RED = cache_.FG_LUT_VALUE_GREEN = cache_.FG_LUT_VALUE_BLUE =
            processedTables_.of(cache_);
    });
}

void FgGxWrapperImpl::loadCustomTables() {
    if (cache_.FG_LUT_CUSTOM_FILE.empty()) return;
    Fg_LutFileParser parser;
    if (!parser.checkFileExist(cache_.FG_LUT_CUSTOM_FILE.c_str())) throw error::fileNotFound;
    using Record = marovine::OwnedTable<LookupTable_s>;
    Record red(fileRecord(LutChannel::Red, nullptr));
    Record green(fileRecord(LutChannel::Green, nullptr));
    Record blue(fileRecord(LutChannel::Blue, nullptr));
    if (parser.getLutFromFile(cache_.FG_LUT_CUSTOM_FILE.c_str(), red, green, blue) != 0)
        throw error::fileNotAccessible;
    // A short table changes the first entries only. The values are the design's to judge.
    const auto take = [](LookupTable& table, const LookupTable_s& record) {
        std::copy_n(record.values, std::min<std::size_t>(record.nrOfElements, kLutEntries), table.begin());
    };
    replaceTables([&] {
        take(cache_.FG_LUT_VALUE_RED, red);
        take(cache_.FG_LUT_VALUE_GREEN, green);
        take(cache_.FG_LUT_VALUE_BLUE, blue);
    });
}

// ---- type and files ----

void FgGxWrapperImpl::set_sdk_param_FG_LUT_TYPE_P0(int value, marovine::OnError onError) {
    const auto verdict = marovine::oneOf(value, entriesOf("FG_LUT_TYPE"));
    applySetting(cache_.FG_LUT_TYPE, value, verdict, onError, [&] {
        const bool custom = value == constant("LUT_TYPE_CUSTOM");
        if (custom)
            loadCustomTables();
        else
            updateLutProcessing_P0();
        setAccessFlags(sdkId("FG_LUT_CUSTOM_FILE"), custom ? kAccessReadWrite : kAccessReadOnly);
        for (const int id : {sdkId("FG_PROCESSING_GAIN"), sdkId("FG_PROCESSING_GAMMA"),
                             sdkId("FG_PROCESSING_OFFSET"), sdkId("FG_PROCESSING_INVERT")})
            setAccessFlags(id, custom ? kAccessReadOnly : kAccessReadWrite);
    });
}

void FgGxWrapperImpl::set_sdk_param_FG_LUT_CUSTOM_FILE_P0(const char* value, marovine::OnError onError) {
    applySetting(cache_.FG_LUT_CUSTOM_FILE, value, marovine::accepted(value != nullptr), onError, [&] {
        if (cache_.FG_LUT_TYPE == constant("LUT_TYPE_CUSTOM")) loadCustomTables();
    });
}

void FgGxWrapperImpl::set_sdk_param_FG_LUT_SAVE_FILE_P0(const char* value, marovine::OnError onError) {
    applySetting(cache_.FG_LUT_SAVE_FILE, value, marovine::accepted(value != nullptr), onError, [&] {
        if (cache_.FG_LUT_SAVE_FILE.empty()) return;
        const int code =
            Fg_LutFileParser().saveLutToFile(value, fileRecord(LutChannel::Red, cache_.FG_LUT_VALUE_RED),
                                             fileRecord(LutChannel::Green, cache_.FG_LUT_VALUE_GREEN),
                                             fileRecord(LutChannel::Blue, cache_.FG_LUT_VALUE_BLUE));
        if (code != 0) throw error::fileNotAccessible;
    });
}

// ---- single entries and blocks ----

void FgGxWrapperImpl::setLutElement(LutChannel channel, const FieldParameterInt_s* element,
                                    marovine::OnError onError) {
    const Channel& target = channelOf(channel);
    if (element == nullptr || element->index >= kLutEntries || element->value > kMaximum)
        return onError.fail(error::outOfRange);
    applySetting((cache_.*target.table)[element->index], element->value, error::success, onError,
                 [&] { design().write(target.parameter, *element); });
}

void FgGxWrapperImpl::setLutBlock(LutChannel channel, const FieldParameterAccess* block,
                                  marovine::OnError onError) {
    const Channel& target = channelOf(channel);
    if (block == nullptr || block->start >= kLutEntries || block->count > kLutEntries ||
        block->start > kLutEntries - block->count)
        return onError.fail(error::outOfRange);
    if (!marovine::isLookupTableType(block->type)) return onError.fail(error::invalidArgument);
    // The first value alone is checked: the design judges the others.
    if (block->count != 0 &&
        (block->values == nullptr || *static_cast<const std::uint32_t*>(block->values) > kMaximum))
        return onError.fail(error::outOfRange);
    leavingErrors(onError, [&] {
        LookupTable& cached = cache_.*target.table;
        marovine::Restore old(cached);
        setFieldCache(cached.data(), block);  // copies values of the types 1 and 2 only
        design().write(target.parameter, *block);
        old.confirm();
    });
}

void FgGxWrapperImpl::set_sdk_param_FG_LUT_VALUE_RED_P0(const FieldParameterInt_s* element,
                                                        marovine::OnError onError) {
    setLutElement(LutChannel::Red, element, onError);
}
void FgGxWrapperImpl::set_sdk_param_FG_LUT_VALUE_RED_P0(const FieldParameterAccess* block,
                                                        marovine::OnError onError) {
    setLutBlock(LutChannel::Red, block, onError);
}
void FgGxWrapperImpl::set_sdk_param_FG_LUT_VALUE_GREEN_P0(const FieldParameterInt_s* element,
                                                          marovine::OnError onError) {
    setLutElement(LutChannel::Green, element, onError);
}
void FgGxWrapperImpl::set_sdk_param_FG_LUT_VALUE_GREEN_P0(const FieldParameterAccess* block,
                                                          marovine::OnError onError) {
    setLutBlock(LutChannel::Green, block, onError);
}
void FgGxWrapperImpl::set_sdk_param_FG_LUT_VALUE_BLUE_P0(const FieldParameterInt_s* element,
                                                         marovine::OnError onError) {
    setLutElement(LutChannel::Blue, element, onError);
}
void FgGxWrapperImpl::set_sdk_param_FG_LUT_VALUE_BLUE_P0(const FieldParameterAccess* block,
                                                         marovine::OnError onError) {
    setLutBlock(LutChannel::Blue, block, onError);
}

// ---- processing parameters ----

void FgGxWrapperImpl::set_sdk_param_FG_PROCESSING_OFFSET_P0(double value, marovine::OnError onError) {
    applySetting(cache_.FG_PROCESSING_OFFSET, value,
                 marovine::notOutside(value, limits<double>("FG_PROCESSING_OFFSET")), onError,
                 [&] { updateLutProcessing_P0(); });
}

void FgGxWrapperImpl::set_sdk_param_FG_PROCESSING_GAIN_P0(double value, marovine::OnError onError) {
    applySetting(cache_.FG_PROCESSING_GAIN, value,
                 marovine::notOutside(value, limits<double>("FG_PROCESSING_GAIN")), onError,
                 [&] { updateLutProcessing_P0(); });
}

void FgGxWrapperImpl::set_sdk_param_FG_PROCESSING_GAMMA_P0(double value, marovine::OnError onError) {
    applySetting(cache_.FG_PROCESSING_GAMMA, value,
                 marovine::notOutside(value, limits<double>("FG_PROCESSING_GAMMA")), onError,
                 [&] { updateLutProcessing_P0(); });
}

void FgGxWrapperImpl::set_sdk_param_FG_PROCESSING_INVERT_P0(int value, marovine::OnError onError) {
    applySetting(cache_.FG_PROCESSING_INVERT, value,
                 marovine::oneOf(value, entriesOf("FG_PROCESSING_INVERT")), onError,
                 [&] { updateLutProcessing_P0(); });
}
