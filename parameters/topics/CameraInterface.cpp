/// The camera interface: what the camera sends, and how long the host waits for it.

#include "parameters/FgGxWrapperImpl.h"

using marovine::applySetting;
using marovine::constant;
using marovine::designParameter;
using marovine::entriesOf;
using marovine::inside;
using marovine::limits;
using marovine::oneOf;

namespace {

/// What the design's decoder is set to for a camera format.
constexpr std::uint32_t fullModeOf(std::int32_t format) {
    switch (format) {
        case constant("FG_CL_FULL_10_TAP_8_BIT"):
            return 1;
        case constant("FG_CL_FULL_8_TAP_10_BIT"):
            return 3;
        default:
            return 0;
    }
}

}  // namespace

void FgGxWrapperImpl::set_sdk_param_FG_TIMEOUT_P0(unsigned int value, marovine::OnError onError) {
    const auto verdict = inside(value, limits<std::uint32_t>("FG_TIMEOUT"));
    applySetting(cache_.FG_TIMEOUT, value, verdict, onError, [&] {
        // The host runtime waits, not the design: its own parameter of the same id.
        const int code =
            setUnwrappedParameterWithType(marovine::sdkId("FG_TIMEOUT"), &value, 0, FG_TYPE_UINT32);
        if (code != 0) throw code;
    });
}

void FgGxWrapperImpl::set_sdk_param_FG_CAMERA_LINK_CAMTYPE_P0(int value, marovine::OnError onError) {
    applySetting(cache_.FG_CAMERA_LINK_CAMTYPE, value, oneOf(value, entriesOf("FG_CAMERA_LINK_CAMTYPE")),
                 onError, [&] {
                     design().write(designParameter("Camera_FullMode"), fullModeOf(value));
                     update_dynamic_range_FG_SENSORWIDTH_P0();
                 });
}
