/// When a frame begins and how many lines it takes: image trigger, flash and software trigger. Delays and
/// heights are in lines, times in microseconds.

#include <algorithm>
#include <array>

#include "parameters/FgGxWrapperImpl.h"
#include "tables/TriggerSources.h"

using marovine::applySetting;
using marovine::constant;
using marovine::designParameter;
using marovine::entriesOf;
using marovine::inside;
using marovine::kAccessReadOnly;
using marovine::kAccessReadWrite;
using marovine::limits;
using marovine::oneOf;
using marovine::sdkId;

namespace {

/// What an image trigger mode means for the design's trigger, and whether its input has a use in it.
struct ImageMode {
    std::int32_t mode;
    std::uint32_t designMode;
    std::int32_t inputAccess;
};
constexpr auto imageModes = std::to_array<ImageMode>({
    {constant("FREE_RUN"), 0, kAccessReadOnly},
    {constant("ASYNC_TRIGGER"), 1, kAccessReadWrite},
    {constant("ASYNC_TRIGGER_MULTIFRAME"), 1, kAccessReadWrite},
    {constant("ASYNC_GATED"), 2, kAccessReadWrite},
    {constant("ASYNC_GATED_MULTIFRAME"), 2, kAccessReadWrite},
    {constant("CAMERA_FVAL_MULTIFRAME"), 0, kAccessReadOnly},
});

/// The parameters of the trigger input that have a use in the external modes only.
constexpr std::array inputParameters{
    sdkId("FG_IMGTRIGGERINSRC"),
    sdkId("FG_IMGTRIGGERINPOLARITY"),
    sdkId("FG_IMGTRIGGERGATEDELAY"),
    sdkId("FG_IMGTRIGGERDEBOUNCING"),
};

// What the design's trigger takes its input from.
constexpr std::uint32_t kFromInput = 2;
constexpr std::uint32_t kFromSoftware = 4;

}  // namespace

// ---- mode ----

void FgGxWrapperImpl::set_sdk_param_FG_IMGTRIGGERMODE_P0(int value, marovine::OnError onError) {
    applySetting(cache_.FG_IMGTRIGGERMODE, value, oneOf(value, entriesOf("FG_IMGTRIGGERMODE")), onError, [&] {
        const ImageMode& row = *std::ranges::find(imageModes, value, &ImageMode::mode);
        for (const int id : inputParameters) setAccessFlags(id, row.inputAccess);
        setAccessFlags(sdkId("FG_IMGTRIGGER_ASYNC_HEIGHT"),
                       value == constant("ASYNC_TRIGGER_MULTIFRAME") ? kAccessReadWrite : kAccessReadOnly);

        design().write(designParameter("Camera_FvalMode"), 0U);
        design().write(designParameter("Trigger_CameraFVALMode_SelectSource"),
                       value == constant("CAMERA_FVAL_MULTIFRAME") ? 1U : 0U);
        design().write(designParameter("Trigger_Trigger_ImgTriggerMode"), row.designMode);
        design().write(designParameter("Trigger_Trigger_MaxGatedHeight"),
                       value == constant("ASYNC_GATED_MULTIFRAME") ? 1U : 0U);
        setTriggerHeightAndOffset_P0(cache_.FG_HEIGHT, cache_.FG_YOFFSET, value);
    });
}

void FgGxWrapperImpl::set_sdk_param_FG_IMGTRIGGER_ASYNC_HEIGHT_P0(unsigned int value,
                                                                  marovine::OnError onError) {
    applySetting(cache_.FG_IMGTRIGGER_ASYNC_HEIGHT, value,
                 inside(value, limits<std::uint32_t>("FG_IMGTRIGGER_ASYNC_HEIGHT")), onError, [&] {
                     // Other modes take their length from elsewhere; this one waits for its mode.
                     if (cache_.FG_IMGTRIGGERMODE != constant("ASYNC_TRIGGER_MULTIFRAME")) return;
                     design().write(designParameter("Trigger_Trigger_YOffset"), 0U);
                     design().write(designParameter("Trigger_Trigger_YLength"), value);
                     design().write(designParameter("Trigger_Trigger_YOffset"), cache_.FG_YOFFSET);
                 });
}

// ---- trigger input ----

void FgGxWrapperImpl::set_sdk_param_FG_IMGTRIGGERINSRC_P0(int value, marovine::OnError onError) {
    applySetting(cache_.FG_IMGTRIGGERINSRC, value, oneOf(value, entriesOf("FG_IMGTRIGGERINSRC")), onError,
                 [&] {
                     const bool software = value == constant("TRGINSOFTWARE");
                     design().write(designParameter("Trigger_Trigger_ImgTrgInSource"),
                                    software ? kFromSoftware : kFromInput);
                     design().write(designParameter("Trigger_InputSignal_ImgTrgInSource_Input_Select"),
                                    software ? 0U : marovine::inputSelectOf(value));
                 });
}

// ---- flash ----

void FgGxWrapperImpl::set_sdk_param_FG_FLASH_POLARITY_P0(int value, marovine::OnError onError) {
    applySetting(cache_.FG_FLASH_POLARITY, value, oneOf(value, entriesOf("FG_FLASH_POLARITY")), onError, [&] {
        design().write(designParameter("Trigger_Trigger_FlashPolarity"),
                       value == constant("FG_LOW") ? 1U : 0U);
    });
}
