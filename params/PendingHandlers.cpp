// Setters and getters that have not been written yet answer -2130.
#include "params/FgGxWrapperImpl.h"

void FgGxWrapperImpl::set_sdk_param_FG_DIGIO_OUTPUT_P0(int /*value*/, bool /*throwOnError*/) {
    throw marovine::error::notSupported;
}
void FgGxWrapperImpl::get_sdk_param_FG_DIGIO_OUTPUT_P0(std::int32_t* /*destination*/) {
    throw marovine::error::notSupported;
}
void FgGxWrapperImpl::set_sdk_param_FG_SIGNAL_ANALYZER_CLEAR_P0(int /*value*/, bool /*throwOnError*/) {
    throw marovine::error::notSupported;
}
void FgGxWrapperImpl::get_sdk_param_FG_SIGNAL_ANALYZER_PULSE_COUNT_DIFFERENCE_P0(
    std::int64_t* /*destination*/) {
    throw marovine::error::notSupported;
}

void FgGxWrapperImpl::setRouteSource(marovine::Route /*route*/, std::int32_t /*source*/,
                                     bool /*throwOnError*/) {
    throw marovine::error::notSupported;
}
void FgGxWrapperImpl::setRoutePolarity(marovine::Route /*route*/, std::int32_t /*polarity*/,
                                       bool /*throwOnError*/) {
    throw marovine::error::notSupported;
}
void FgGxWrapperImpl::setLegacyCc(std::size_t /*line*/, std::int32_t /*value*/, bool /*throwOnError*/) {
    throw marovine::error::notSupported;
}
void FgGxWrapperImpl::getLegacyCc(std::size_t /*line*/, std::int32_t* /*destination*/) const {
    throw marovine::error::notSupported;
}
