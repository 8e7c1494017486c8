// Setters and getters that have not been written yet answer -2130.
#include "params/FgGxWrapperImpl.h"

void FgGxWrapperImpl::set_sdk_param_FG_IMGTRIGGERMODE_P0(int /*value*/, bool /*throwOnError*/) {
    throw marovine::error::notSupported;
}
void FgGxWrapperImpl::set_sdk_param_FG_IMGTRIGGERON_P0(int /*value*/, bool /*throwOnError*/) {
    throw marovine::error::notSupported;
}
void FgGxWrapperImpl::set_sdk_param_FG_FLASHON_P0(int /*value*/, bool /*throwOnError*/) {
    throw marovine::error::notSupported;
}
void FgGxWrapperImpl::set_sdk_param_FG_IMGTRIGGER_ASYNC_HEIGHT_P0(unsigned int /*value*/,
                                                                  bool /*throwOnError*/) {
    throw marovine::error::notSupported;
}
void FgGxWrapperImpl::set_sdk_param_FG_IMGTRIGGERINSRC_P0(int /*value*/, bool /*throwOnError*/) {
    throw marovine::error::notSupported;
}
void FgGxWrapperImpl::set_sdk_param_FG_IMGTRIGGERINPOLARITY_P0(int /*value*/, bool /*throwOnError*/) {
    throw marovine::error::notSupported;
}
void FgGxWrapperImpl::set_sdk_param_FG_IMGTRIGGERGATEDELAY_P0(unsigned int /*value*/, bool /*throwOnError*/) {
    throw marovine::error::notSupported;
}
void FgGxWrapperImpl::set_sdk_param_FG_IMGTRIGGERDEBOUNCING_P0(double /*value*/, bool /*throwOnError*/) {
    throw marovine::error::notSupported;
}
void FgGxWrapperImpl::set_sdk_param_FG_FLASH_POLARITY_P0(int /*value*/, bool /*throwOnError*/) {
    throw marovine::error::notSupported;
}
void FgGxWrapperImpl::set_sdk_param_FG_STROBEPULSEDELAY_P0(unsigned int /*value*/, bool /*throwOnError*/) {
    throw marovine::error::notSupported;
}
void FgGxWrapperImpl::set_sdk_param_FG_SENDSOFTWARETRIGGER_P0(int /*value*/, bool /*throwOnError*/) {
    throw marovine::error::notSupported;
}
void FgGxWrapperImpl::set_sdk_param_FG_SETSOFTWARETRIGGER_P0(int /*value*/, bool /*throwOnError*/) {
    throw marovine::error::notSupported;
}
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
