#pragma once

/// The catalogue: how a host sees the parameters. One row per described parameter, in display order.
///
/// The description registry and the description texts are loops over this table. The seven parameters that
/// are forwarded to the host runtime have no row.

#include <array>
#include <cstdint>
#include <limits>
#include <string_view>
#include <variant>

#include "tables/EnumerationTables.h"
#include "tables/SdkParameterTable.h"

namespace marovine {

/// Range and step of a number.
template <class T>
struct Limits {
    T minimum;
    T maximum;
    T increment;
};

/// A table of 32-bit values: number of elements, and the range of each.
struct FieldLimits {
    std::uint32_t elements;
    std::uint32_t minimum;
    std::uint32_t maximum;
    std::uint32_t increment;
};

/// A text parameter; the attribute is a file name pattern, or empty.
struct TextAttribute {
    const char* attribute;
};

/// What values a parameter takes; the alternative decides the kind of its registry node.
using ValueDescription =
    std::variant<Limits<std::uint32_t>, Limits<std::int32_t>, Limits<std::uint64_t>, Limits<std::int64_t>,
                 Limits<double>, EntryList, TextAttribute, FieldLimits>;

/// Access flags that parameters are given at run time.
inline constexpr std::int32_t kAccessReadOnly = 1;
inline constexpr std::int32_t kAccessReadWrite = 7;

/// The three small numbers that the host reads with a node.
struct NodeFlags {
    std::int32_t access;   ///< 1 read-only, 3 and 7 read and write
    std::int32_t second;   ///< 2 for values whose range depends on others, else 1
    std::int32_t publish;  ///< 0 keeps the parameter out of the XML description
};

/// One described parameter.
struct CatalogueRow {
    const char* group;  ///< path of groups, separated by " > "
    const char* displayName;
    const char* name;  ///< SDK name
    ValueDescription value;
    NodeFlags flags;
    const char* unit;  ///< ISO-8859-1; null when the value has no unit
    const char* description;
};

namespace catalogue_rows {

inline constexpr double kEpsilon = std::numeric_limits<double>::epsilon();

constexpr ValueDescription uint32(std::uint32_t minimum, std::uint32_t maximum, std::uint32_t increment) {
    return Limits<std::uint32_t>{minimum, maximum, increment};
}
constexpr ValueDescription int32(std::int32_t minimum, std::int32_t maximum, std::int32_t increment) {
    return Limits<std::int32_t>{minimum, maximum, increment};
}
constexpr ValueDescription uint64(std::uint64_t minimum, std::uint64_t maximum, std::uint64_t increment) {
    return Limits<std::uint64_t>{minimum, maximum, increment};
}
constexpr ValueDescription int64(std::int64_t minimum, std::int64_t maximum, std::int64_t increment) {
    return Limits<std::int64_t>{minimum, maximum, increment};
}
constexpr ValueDescription real(double minimum, double maximum, double increment) {
    return Limits<double>{minimum, maximum, increment};
}
constexpr ValueDescription entries(EntryList list) {
    return list;
}
constexpr ValueDescription text(const char* attribute) {
    return TextAttribute{attribute};
}
constexpr ValueDescription uint32Field(std::uint32_t elements, std::uint32_t minimum, std::uint32_t maximum,
                                       std::uint32_t increment) {
    return FieldLimits{elements, minimum, maximum, increment};
}

// clang-format off
inline constexpr auto catalogueRows = std::to_array<CatalogueRow>({
    // Camera Link
    {"Camera Link", "Input Format", "FG_CAMERA_LINK_CAMTYPE", entries(CameraFormatGrayAreaFull8_10BitAcq), {7, 1, 1}, nullptr,
     "Select the Camera Link Mode."},
    {"Camera Link", "Use DVAL", "FG_USEDVAL", entries(YesNo), {7, 1, 1}, nullptr,
     "Use the Camera Link DVAL signal or ignore it."},
    {"Camera Link", "Camera Link Core Reset", "FG_CAMERA_LINK_CORE_RESET", uint32(0, 1, 1), {7, 1, 1}, nullptr,
     "Reset Camera Core."},
    {"Camera Link", "Pixel Clock X", "FG_CAMERA_LINK_PIXEL_CLOCK_X", uint32(0, 85, 1), {1, 1, 1}, "MHz",
     "Returns the currently measured pixel clock for Camera Link chip X."},
    {"Camera Link", "Pixel Clock Y", "FG_CAMERA_LINK_PIXEL_CLOCK_Y", uint32(0, 85, 1), {1, 1, 1}, "MHz",
     "Returns the currently measured pixel clock for Camera Link chip Y."},
    {"Camera Link", "Pixel Clock Z", "FG_CAMERA_LINK_PIXEL_CLOCK_Z", uint32(0, 85, 1), {1, 1, 1}, "MHz",
     "Returns the currently measured pixel clock for Camera Link chip Z."},
    // Tap Geometry
    {"Tap Geometry", "Tap Geometry", "FG_TAPGEOMETRY", entries(Geometry_8_10TapHorizontalEx), {3, 1, 1}, nullptr,
     "Select the tap geometry according to the GenICam SFNC."},
    {"Tap Geometry", "Sensor Width", "FG_SENSORWIDTH", uint32(8, 16384, 1), {3, 2, 1}, "pixel",
     "Sensor width in selected tap geometry. Value is ignored if only one X-zone and vantage pont = Top-Left"},
    {"Tap Geometry", "Vantage Point", "FG_VANTAGEPOINT", entries(VantagPointsTopLeftTopRight), {3, 1, 1}, nullptr,
     "Vantage point. Use for mirroring."},
    // ROI
    {"ROI", "Width", "FG_WIDTH", uint32(8, 16384, 8), {3, 2, 1}, "pixel",
     "Image width of the acquisition ROI."},
    {"ROI", "Height", "FG_HEIGHT", uint32(4, 16777214, 2), {3, 2, 1}, "pixel",
     "Image height of the acquisition ROI."},
    {"ROI", "XOffset", "FG_XOFFSET", uint32(0, 16376, 8), {3, 2, 1}, "pixel",
     "X-offset of the acquisition ROI."},
    {"ROI", "YOffset", "FG_YOFFSET", uint32(0, 16777210, 2), {3, 2, 1}, "pixel",
     "Y-offset of the acquisition ROI."},
    // Digital I/O > GPO
    {"Digital I/O > GPO", "GPO 0 Source", "FG_TRIGGEROUT_GPO_0_SOURCE", entries(SignalMappingLine_1Cam), {7, 1, 1}, nullptr,
     "Select the signal source for GPO 0 output"},
    {"Digital I/O > GPO", "GPO 0 Polarity", "FG_TRIGGEROUT_GPO_0_POLARITY", entries(LowOnZero), {7, 1, 1}, nullptr,
     "GPO 0 signal polarity. Ignored if source is VCC or GND."},
    {"Digital I/O > GPO", "GPO 1 Source", "FG_TRIGGEROUT_GPO_1_SOURCE", entries(SignalMappingLine_1Cam), {7, 1, 1}, nullptr,
     "Select the signal source for GPO 1 output"},
    {"Digital I/O > GPO", "GPO 1 Polarity", "FG_TRIGGEROUT_GPO_1_POLARITY", entries(LowOnZero), {7, 1, 1}, nullptr,
     "GPO 1 signal polarity. Ignored if source is VCC or GND."},
    {"Digital I/O > GPO", "GPO 2 Source", "FG_TRIGGEROUT_GPO_2_SOURCE", entries(SignalMappingLine_1Cam), {7, 1, 1}, nullptr,
     "Select the signal source for GPO 2 output"},
    {"Digital I/O > GPO", "GPO 2 Polarity", "FG_TRIGGEROUT_GPO_2_POLARITY", entries(LowOnZero), {7, 1, 1}, nullptr,
     "GPO 2 signal polarity. Ignored if source is VCC or GND."},
    {"Digital I/O > GPO", "GPO 3 Source", "FG_TRIGGEROUT_GPO_3_SOURCE", entries(SignalMappingLine_1Cam), {7, 1, 1}, nullptr,
     "Select the signal source for GPO 3 output"},
    {"Digital I/O > GPO", "GPO 3 Polarity", "FG_TRIGGEROUT_GPO_3_POLARITY", entries(LowOnZero), {7, 1, 1}, nullptr,
     "GPO 3 signal polarity. Ignored if source is VCC or GND."},
    {"Digital I/O > GPO", "GPO 4 Source", "FG_TRIGGEROUT_GPO_4_SOURCE", entries(SignalMappingLine_1Cam), {7, 1, 1}, nullptr,
     "Select the signal source for GPO 4 output"},
    {"Digital I/O > GPO", "GPO 4 Polarity", "FG_TRIGGEROUT_GPO_4_POLARITY", entries(LowOnZero), {7, 1, 1}, nullptr,
     "GPO 4 signal polarity. Ignored if source is VCC or GND."},
    {"Digital I/O > GPO", "GPO 5 Source", "FG_TRIGGEROUT_GPO_5_SOURCE", entries(SignalMappingLine_1Cam), {7, 1, 1}, nullptr,
     "Select the signal source for GPO 5 output"},
    {"Digital I/O > GPO", "GPO 5 Polarity", "FG_TRIGGEROUT_GPO_5_POLARITY", entries(LowOnZero), {7, 1, 1}, nullptr,
     "GPO 5 signal polarity. Ignored if source is VCC or GND."},
    {"Digital I/O > GPO", "GPO 6 Source", "FG_TRIGGEROUT_GPO_6_SOURCE", entries(SignalMappingLine_1Cam), {7, 1, 1}, nullptr,
     "Select the signal source for GPO 6 output"},
    {"Digital I/O > GPO", "GPO 6 Polarity", "FG_TRIGGEROUT_GPO_6_POLARITY", entries(LowOnZero), {7, 1, 1}, nullptr,
     "GPO 6 signal polarity. Ignored if source is VCC or GND."},
    {"Digital I/O > GPO", "GPO 7 Source", "FG_TRIGGEROUT_GPO_7_SOURCE", entries(SignalMappingLine_1Cam), {7, 1, 1}, nullptr,
     "Select the signal source for GPO 7 output"},
    {"Digital I/O > GPO", "GPO 7 Polarity", "FG_TRIGGEROUT_GPO_7_POLARITY", entries(LowOnZero), {7, 1, 1}, nullptr,
     "GPO 7 signal polarity. Ignored if source is VCC or GND."},
    {"Digital I/O > GPO", "Front GPO 0 Source", "FG_TRIGGEROUT_FRONT_GPO_0_SOURCE", entries(SignalMappingLine_1Cam), {7, 1, 1}, nullptr,
     "Select the signal source for front GPO 0 output"},
    {"Digital I/O > GPO", "Front GPO 0 Polarity", "FG_TRIGGEROUT_FRONT_GPO_0_POLARITY", entries(LowOnZero), {7, 1, 1}, nullptr,
     "Front GPO 0 signal polarity. Ignored if source is VCC or GND."},
    {"Digital I/O > GPO", "Front GPO 1 Source", "FG_TRIGGEROUT_FRONT_GPO_1_SOURCE", entries(SignalMappingLine_1Cam), {7, 1, 1}, nullptr,
     "Select the signal source for front GPO 1 output"},
    {"Digital I/O > GPO", "Front GPO 1 Polarity", "FG_TRIGGEROUT_FRONT_GPO_1_POLARITY", entries(LowOnZero), {7, 1, 1}, nullptr,
     "Front GPO 1 signal polarity. Ignored if source is VCC or GND."},
    {"Digital I/O > GPO", "Legacy Digital Output", "FG_DIGIO_OUTPUT", int32(-1, 3, 1), {7, 1, 1}, nullptr,
     "Set the output values on output number 3 and 7. This is a 2 bit value. One bit for each output. Bit 0 of the parameter refers to the value at output 3, while bit 1 refers to output 7. The parameter will overwrite parameters FG_TRIGGEROUT_GPO_0_SOURCE and FG_TRIGGEROUT_GPO_7_SOURCE. If these parameters are not set to VCC or GND this parameter will return value -1 as it cannot represent the value as a bitmask."},
    // Digital I/O > GPI
    {"Digital I/O > GPI", "Digital Input", "FG_DIGIO_INPUT", uint32(0, 4095, 1), {1, 1, 1}, nullptr,
     "Read the current state of all digital inputs. You can read the current state of these inputs using this parameter. LSB Bit 0 of the read value represents input 0, bit 1 represents input 1 and so on. Bits 0 to 7 use GPI 0 to 7. Front GPI 0 to 3 are represented by bits 8 to 11."},
    // Digital I/O > Event Source
    {"Digital I/O > Event Source", "Custom Signal Event 0 Source", "FG_CUSTOM_SIGNAL_EVENT_0_SOURCE", entries(SignalMappingAnalyzer_1Cam), {7, 1, 1}, nullptr,
     "Select the signal source for the custom signal event 0"},
    {"Digital I/O > Event Source", "Custom Signal Event 0 Polarity", "FG_CUSTOM_SIGNAL_EVENT_0_POLARITY", entries(LowOnZero), {7, 1, 1}, nullptr,
     "Select the signal polarity for the custom signal event 0"},
    {"Digital I/O > Event Source", "Custom Signal Event 1 Source", "FG_CUSTOM_SIGNAL_EVENT_1_SOURCE", entries(SignalMappingAnalyzer_1Cam), {7, 1, 1}, nullptr,
     "Select the signal source for the custom signal event 1"},
    {"Digital I/O > Event Source", "Custom Signal Event 1 Polarity", "FG_CUSTOM_SIGNAL_EVENT_1_POLARITY", entries(LowOnZero), {7, 1, 1}, nullptr,
     "Select the signal polarity for the custom signal event 1"},
    // CC Signal Mapping
    {"CC Signal Mapping", "CC 1", "FG_CC1_SOURCE", entries(SignalMappingLine_1Cam), {7, 1, 1}, nullptr,
     "CC 1 signal mapping, in most cameras used for exposure control."},
    {"CC Signal Mapping", "CC 1 Polarity", "FG_CC1_POLARITY", entries(LowOnZero), {7, 1, 1}, nullptr,
     "CC 1 signal mapping polarity"},
    {"CC Signal Mapping", "CC 2", "FG_CC2_SOURCE", entries(SignalMappingLine_1Cam), {7, 1, 1}, nullptr,
     "CC 2 signal mapping"},
    {"CC Signal Mapping", "CC 2 Polarity", "FG_CC2_POLARITY", entries(LowOnZero), {7, 1, 1}, nullptr,
     "CC 2 signal mapping polarity"},
    {"CC Signal Mapping", "CC 3", "FG_CC3_SOURCE", entries(SignalMappingLine_1Cam), {7, 1, 1}, nullptr,
     "CC 3 signal mapping, in most cameras used as direction related input."},
    {"CC Signal Mapping", "CC 3 Polarity", "FG_CC3_POLARITY", entries(LowOnZero), {7, 1, 1}, nullptr,
     "CC 3 signal mapping polarity"},
    {"CC Signal Mapping", "CC 4", "FG_CC4_SOURCE", entries(SignalMappingLine_1Cam), {7, 1, 1}, nullptr,
     "CC 4 signal mapping"},
    {"CC Signal Mapping", "CC 4 Polarity", "FG_CC4_POLARITY", entries(LowOnZero), {7, 1, 1}, nullptr,
     "CC 4 signal mapping polarity"},
    // Line Trigger / ExSync > Line Trigger Input > Downscale
    {"Line Trigger / ExSync > Line Trigger Input > Downscale", "Downscale", "FG_LINE_DOWNSCALE", uint32(1, 255, 1), {3, 1, 1}, "pulses",
     "Downscale factor of the trigger input signal. Specifies the number of external input trigger signals, which are needed to generate a single Exsync. This is only relevant if the TriggerMode is set to an external ASync_trigger mode."},
    {"Line Trigger / ExSync > Line Trigger Input > Downscale", "Phase", "FG_LINE_DOWNSCALEINIT", uint32(1, 255, 1), {3, 1, 1}, "pulses",
     "Phase of the downscaling with respect to the image gate. Specifies the number of external input trigger signals, which are needed to generate the first Exsync of a frame. This is only relevant if the TriggerMode is set to ASync_Trigger_Gated."},
    // Line Trigger / ExSync > Line Trigger Input
    {"Line Trigger / ExSync > Line Trigger Input", "Source A", "FG_LINETRIGGERINSRC", entries(TriggerInSource8Plus4), {7, 1, 1}, nullptr,
     "Trigger input signal source for the ExSync generation. This signal is also interpreted as source A when using a shaft encoder. This is only relevant if the TriggerMode is set to ASync_Trigger."},
    {"Line Trigger / ExSync > Line Trigger Input", "Input Polarity", "FG_LINETRIGGERINPOLARITY", entries(HighOnZero), {7, 1, 1}, nullptr,
     "The parameter defines the polarity of the external input trigger signal encoder source A and source B. When set to LowActive, the Exsync generator starts on a falling edge of the signal specified by the parameter FG_IMGTRIGGERINSRC. Otherwise, the Exsync generation starts on a rising edge. This is only relevant if the TriggerMode is set to Extern_Trigger."},
    {"Line Trigger / ExSync > Line Trigger Input", "Debouncing Time", "FG_LINETRIGGERDEBOUNCING", real(0.008, 30.0, 0.008), {7, 1, 1}, "\xB5" "s",
     "This parameter specifies the debouncing time of the input line trigger, events, IO forwarwards and analyzers. Signals must keep the same state during the debounce time to be detected as such. Fast signal changes within the debounce time will be filtered out."},
    // Line Trigger / ExSync > Shaft Encoder A/B Filter
    {"Line Trigger / ExSync > Shaft Encoder A/B Filter", "Enable", "FG_SHAFTENCODERON", entries(OnOff), {7, 1, 1}, nullptr,
     "Switch shaft encoder filter enable switch. Specifies whether a single trigger input (off = A only) is used for the Exsync generation, or the signals A and B (on)."},
    {"Line Trigger / ExSync > Shaft Encoder A/B Filter", "Shaft Encoder Mode", "FG_SHAFTENCODERMODE", entries(ShaftEncoderMode), {7, 1, 1}, nullptr,
     "Select the shaft encoder mode. Filter_x1: Exsync is generated for a forward rotation of the shaft encoder in single resolution, i.e., a trigger pulse for a rising edge of LineTrgInSourceA. Filter_x2: Exsync is generated for a forward rotation of the shaft encoder in double resolution, i.e., a trigger pulse for a rising edge of LineTrgInSourceA and a rising edge of LineTrgInSourceB. Filter_x4: Exsync is generated for a forward rotation of the shaft encoder in quad resolution, i.e., a trigger pulse for a rising and a falling edge of LineTrgInSourceA and a rising and a falling edge of LineTrgInSourceB."},
    {"Line Trigger / ExSync > Shaft Encoder A/B Filter", "Source B", "FG_SHAFTENCODERINSRC", entries(TriggerInSource8Plus4), {7, 1, 1}, nullptr,
     "Trigger input signal source for the ExSync generation. This signal is also interpreted as source B when using a shaft encoder. This is only relevant if the TriggerMode is set to ASync_Trigger."},
    {"Line Trigger / ExSync > Shaft Encoder A/B Filter", "Leading Signal", "FG_SHAFTENCODERLEADING", entries(ShaftEncoderLeadSource), {7, 1, 1}, nullptr,
     "Defines the leading signal / direction for the shadt encoder. A foreward movement is defined by a rising edge of signal A before signal B if the parameter is set to Signal_AB. Source_A: Forward is defined by A before B. Source_B: Forward is defined by B before A."},
    {"Line Trigger / ExSync > Shaft Encoder A/B Filter", "Compensation Enable", "FG_SHAFTENCODER_COMPENSATION_ENABLE", entries(OnOff), {7, 1, 1}, nullptr,
     "Enables or disables the shaft encoder rollback compensation. Is relevant in case of a shaft encoder AB configuration. If switched to ON, in case of shaft encoder backward movement the operator counts how many shaft encoder steps the shaft encoder moves backwards. When the shaft encoder moves forwards again, this number of shaft encoder steps (now forward direction) is not transmitted as external trigger signals. Only after the transportation belt is back to the place where the backward movement started, the shaft encoder steps (forward direction) are transmitted as external trigger signals again. If switched to OFF, the operator simply doesn't transmit any trigger signals as long as the transportation belt moves backwards. As soon as the transport belt starts to move forwards again, the operator transmits the shaft encoder steps (forward direction) as trigger signals."},
    {"Line Trigger / ExSync > Shaft Encoder A/B Filter", "Compensation Count", "FG_SHAFTENCODER_COMPENSATION_COUNT", uint32(0, 1048575, 1), {7, 1, 1}, "pulses",
     "Read or write the current compensation count. Value 0 refers to no compensation. You can reset the compensator by writing 0 to the parameter. Is based on a 20bit counter enabling a backward movement of up to 1048576 steps."},
    // Line Trigger / ExSync > ExSync Output
    {"Line Trigger / ExSync > ExSync Output", "Period", "FG_LINEPERIODE", real(0.512, 2097.144, 0.008), {7, 1, 1}, "\xB5" "s",
     "Length of the ExSync period. It defines the line frequency when using the grabber controlled mode to send a trigger signal to the connected camera. Note that the value of the line period needs to be greater than the line delay."},
    {"Line Trigger / ExSync > ExSync Output", "Exposure Time", "FG_LINEEXPOSURE", real(0.512, 1048.0, 0.008), {7, 2, 1}, "\xB5" "s",
     "Length of the ExSync signal pulse. This parameter specifies the pulse width of the Exsync signal, which can be used by many cameras as externaly defined exposure time. By this it is possible to adjust the exposure time during runtime via software, even while grabbing."},
    {"Line Trigger / ExSync > ExSync Output", "Polarity", "FG_EXSYNCPOLARITY", entries(LowOnZero), {7, 1, 1}, nullptr,
     "Polarity of the ExSync output signal. Adjusts the polarity of the Exsync signal genarator to the polarity accepted by the connected camera. Use LowActive, if the camera starts exposure on a falling edge, otherwise use HighActive."},
    {"Line Trigger / ExSync > ExSync Output", "Delay->Exsync", "FG_LINETRIGGERDELAY", real(0.0, 1048.568, 0.008), {7, 2, 1}, "\xB5" "s",
     "Delay of the ExSync signal with respect to the trigger input signal. Specifies the delay of the generated Exsync signal, with respect to an external trigger input. The resulting Exsync2 signal is a delayed clone of the Exsync. Polarity, period, etc. are the same as for Exsync. Note that the line delay needs to be less than the line period even for external trigger modes where the internal line period is not used."},
    // Line Trigger / ExSync
    {"Line Trigger / ExSync", "Line Trigger Mode", "FG_LINETRIGGERMODE", entries(LineTriggerModes), {3, 1, 1}, nullptr,
     "This parameter selects the operation mode for the Exsync signal generation. The source for the external trigger input can be selected via the parameters SourceA and SourceB. Grabber_Controlled: Exsync is generated periodically by the internal signal generator. ASync_Trigger: Each external trigger signal from a peripheral device is used to generate an ExSync based on the defined exposure time. Grabber_Controlled_Gated: Exsync is generated periodically by the internal signal generator during the acquisition of a frame. Extern_Trigger_Gated: An external trigger signal from a peripheral device is used to generate the ExSync during the acquisition of a frame only."},
    {"Line Trigger / ExSync", "Exsync Enable", "FG_EXSYNCON", entries(OnOff), {7, 1, 1}, nullptr,
     "Enables or disables the ExSync output to the camera. Please make sure that the camera is expecting this signal and interprets it in the expected way. The polarity of this signal is relevant for proper functionality."},
    // Image Trigger / Flash > Image Trigger Input > Flash
    {"Image Trigger / Flash > Image Trigger Input > Flash", "Flash Polarity", "FG_FLASH_POLARITY", entries(LowOnZero), {7, 1, 1}, nullptr,
     "Defines the generated Flash signal polarity."},
    // Image Trigger / Flash > Image Trigger Input > Software Trigger
    {"Image Trigger / Flash > Image Trigger Input > Software Trigger", "Software Trigger Pulse", "FG_SENDSOFTWARETRIGGER", entries(Apply), {7, 1, 1}, nullptr,
     "Generates a software trigger pulse when applied (=1). Setting this parameter to 1 will generate a software trigger. This is only relevant if the TriggerMode is set to an external trigger mode and Image Trigger Source is set to SoftwareTrigger."},
    {"Image Trigger / Flash > Image Trigger Input > Software Trigger", "Software Trigger State", "FG_SETSOFTWARETRIGGER", entries(LowOnZero), {7, 1, 1}, nullptr,
     "Turn software trigger signal on or off. With this parameter a software gate can be produced in case of an extern gated image trigger mode."},
    // Image Trigger / Flash > Image Trigger Input
    {"Image Trigger / Flash > Image Trigger Input", "Source", "FG_IMGTRIGGERINSRC", entries(TriggerInSource8Plus4Software), {7, 1, 1}, nullptr,
     "Image trigger input signal source. Specifies the signal source which is used to trigger the image acquisition. This is only relevant if the Image Trigger Mode is set to Extern/Gate."},
    {"Image Trigger / Flash > Image Trigger Input", "Polarity", "FG_IMGTRIGGERINPOLARITY", entries(HighOnZero), {7, 1, 1}, nullptr,
     "Polarity of the image trigger input."},
    {"Image Trigger / Flash > Image Trigger Input", "Gate Delay", "FG_IMGTRIGGERGATEDELAY", uint32(0, 65535, 1), {3, 1, 1}, "lines",
     "Delay of the image gate in lines with respect to ExSync. The image trigger will be delayed by a defined number of lines."},
    {"Image Trigger / Flash > Image Trigger Input", "Debouncing Time", "FG_IMGTRIGGERDEBOUNCING", real(0.008, 30.0, 0.008), {7, 1, 1}, "\xB5" "s",
     "This parameter specifies the debouncing time of the input image trigger. Signals must keep the same state during the debounce time to be detected as such. Fast signal changes within the debounce time will be filtered out."},
    {"Image Trigger / Flash > Image Trigger Input", "Flash Delay->Image Trigger", "FG_STROBEPULSEDELAY", uint32(0, 65535, 1), {3, 1, 1}, "lines",
     "Delay of the flash signal in lines with respect to the image trigger input signal with respect to ExSync."},
    // Image Trigger / Flash
    {"Image Trigger / Flash", "Mode", "FG_IMGTRIGGERMODE", entries(ImageTriggerModesWithMultiBufferAndFVAL), {3, 1, 1}, nullptr,
     "Trigger mode to the image generation. An image trigger can define the start and length of an image. FreeRun: All incoming lines received from camera are accepted. Image size is defined by ROI. ASync_External_Trigger: At the rising edge of an accepted image trigger input signal, a new frame is started and incoming lines are appended to an image up to ROI-Height. A new rising edge of the image trigger is only accepted after the current frame is finished. Gated_External_Trigger: In gated mode, the input signal active state defines the height of the resulting frame. ROI-Height is the maximum height. _Multibuffer modes can handle a certain number of lines for multiple frames of ROI size."},
    {"Image Trigger / Flash", "Image Trigger Enable", "FG_IMGTRIGGERON", entries(OnOff), {7, 1, 1}, nullptr,
     "Enable or disable the image trigger module. The off state corresponds to FreeRun."},
    {"Image Trigger / Flash", "Flash Enable", "FG_FLASHON", entries(OnOff), {7, 1, 1}, nullptr,
     "Switch the flash signal on or off. The pulse width of the flash signal is equal to one line period. This will give a signal between the first Exsync rising edge and the following. A single Trigger is fired for a full frame. Flash Delay->Image Trigger will delay this by a given number of Exsync's."},
    {"Image Trigger / Flash", "Async Image Trigger Height", "FG_IMGTRIGGER_ASYNC_HEIGHT", uint32(4, 16777216, 1), {3, 1, 1}, "lines",
     "Total image height in lines in case of multi buffer mode. Only relevant if a Multibuffer image trigger mode is used."},
    {"Image Trigger / Flash", "Image Trigger is Busy", "FG_IMGTRIGGER_IS_BUSY", entries(BusyFlag), {1, 1, 1}, nullptr,
     "Using this readonly value it is possible to check if the image trigger is busy. This means that a image is currently acquired. During this time an additional image trigger will be ignored."},
    // Signal Analyzer
    {"Signal Analyzer", "Signal Analyzer 0 Source", "FG_SIGNAL_ANALYZER_0_SOURCE", entries(SignalMappingAnalyzer_1Cam), {7, 1, 1}, nullptr,
     "Select the signal source analyzer module 0"},
    {"Signal Analyzer", "Signal Analyzer 0 Polarity", "FG_SIGNAL_ANALYZER_0_POLARITY", entries(LowOnZero), {7, 1, 1}, nullptr,
     "Select the signal analyzer module 0 polarity"},
    {"Signal Analyzer", "Signal Analyzer 0 Current Period", "FG_SIGNAL_ANALYZER_0_PERIOD_CURRENT", real(0.008, 34359738.36, 0.008), {1, 1, 1}, "\xB5" "s",
     "Will return the last meassured period of the selected souce and polarity."},
    {"Signal Analyzer", "Signal Analyzer 0 Max Period", "FG_SIGNAL_ANALYZER_0_PERIOD_MAX", real(0.008, 34359738.36, 0.008), {1, 1, 1}, "\xB5" "s",
     "Will return the maximum meassured period of the selected souce and polarity after reset."},
    {"Signal Analyzer", "Signal Analyzer 0 Min Period", "FG_SIGNAL_ANALYZER_0_PERIOD_MIN", real(0.008, 34359738.36, 0.008), {1, 1, 1}, "\xB5" "s",
     "Will return the minimum meassured period of the selected souce and polarity after reset."},
    {"Signal Analyzer", "Signal Analyzer 0 Pulse Count", "FG_SIGNAL_ANALYZER_0_PULSE_COUNT", uint32(0, 4294967295, 1), {1, 1, 1}, "\xB5" "s",
     "Returns the number of rising edges e.g. pulses of the selected source and polarity after reset."},
    {"Signal Analyzer", "Signal Analyzer 1 Source", "FG_SIGNAL_ANALYZER_1_SOURCE", entries(SignalMappingAnalyzer_1Cam), {7, 1, 1}, nullptr,
     "Select the signal source analyzer module 0"},
    {"Signal Analyzer", "Signal Analyzer 1 Polarity", "FG_SIGNAL_ANALYZER_1_POLARITY", entries(LowOnZero), {7, 1, 1}, nullptr,
     "Select the signal analyzer module 0 polarity"},
    {"Signal Analyzer", "Signal Analyzer 1 Current Period", "FG_SIGNAL_ANALYZER_1_PERIOD_CURRENT", real(0.008, 34359738.36, 0.008), {1, 1, 1}, "\xB5" "s",
     "Will return the last meassured period of the selected souce and polarity."},
    {"Signal Analyzer", "Signal Analyzer 1 Max Period", "FG_SIGNAL_ANALYZER_1_PERIOD_MAX", real(0.008, 34359738.36, 0.008), {1, 1, 1}, "\xB5" "s",
     "Will return the maximum meassured period of the selected souce and polarity after reset."},
    {"Signal Analyzer", "Signal Analyzer 1 Min Period", "FG_SIGNAL_ANALYZER_1_PERIOD_MIN", real(0.008, 34359738.36, 0.008), {1, 1, 1}, "\xB5" "s",
     "Will return the minimum meassured period of the selected souce and polarity after reset."},
    {"Signal Analyzer", "Signal Analyzer 1 Pulse Count", "FG_SIGNAL_ANALYZER_1_PULSE_COUNT", uint32(0, 4294967295, 1), {1, 1, 1}, "\xB5" "s",
     "Returns the number of rising edges e.g. pulses of the selected source and polarity after reset."},
    {"Signal Analyzer", "Signal Analyzer Pulse Count Difference", "FG_SIGNAL_ANALYZER_PULSE_COUNT_DIFFERENCE", int64(-4294967296LL, 4294967295, 1), {1, 1, 1}, "\xB5" "s",
     "Use this read only parameter to check the difference of the signal analyzer 0 and 1 pulse counter values (Analyzer 0 - Analyzer 1 value). This can be used to check for trigger lost signals if analyzer 0 will count the exsyc pulses and analyzer 1 the returned camera lines. In this case the difference is between 0 and 1 for sinle line cameras with no extra delay."},
    {"Signal Analyzer", "Signal Analyzer Clear", "FG_SIGNAL_ANALYZER_CLEAR", entries(Apply), {7, 1, 1}, nullptr,
     "Clear all measurement results. "},
    // Overflow
    {"Overflow", "Buffer fill level", "FG_FILLLEVEL", uint32(0, 100, 1), {1, 1, 1}, "%",
     "Fill level of the buffers."},
    {"Overflow", "Buffer overflow", "FG_OVERFLOW", uint32(0, 1, 1), {1, 1, 1}, nullptr,
     "Signals if the image buffer is in overflow state."},
    // Image Selector
    {"Image Selector", "Image select period", "FG_IMG_SELECT_PERIOD", uint32(1, 256, 1), {7, 1, 1}, "image",
     "Select the length of an image sequence. Only a single image of the sequence is grabbed."},
    {"Image Selector", "Image select", "FG_IMG_SELECT", uint32(0, 255, 1), {7, 1, 1}, "image",
     "Defines which image in a sequence is grabbed."},
    // White Balance
    {"White Balance", "Red Gain", "FG_SCALINGFACTOR_RED", real(0.0, 3.9990234375, 0.0009765625), {7, 1, 1}, nullptr,
     "Red gain of the Rgb white balancing."},
    {"White Balance", "Blue Gain", "FG_SCALINGFACTOR_BLUE", real(0.0, 3.9990234375, 0.0009765625), {7, 1, 1}, nullptr,
     "Blue gain of the Rgb white balancing."},
    {"White Balance", "Green Gain", "FG_SCALINGFACTOR_GREEN", real(0.0, 3.9990234375, 0.0009765625), {7, 1, 1}, nullptr,
     "Green gain of the Rgb white balancing."},
    // Color Interpolation
    {"Color Interpolation", "Bayer Init Value", "FG_BAYERINIT", entries(BayerInitValues), {7, 1, 1}, nullptr,
     "Select the Bayer pattern starting at the top left corner."},
    {"Color Interpolation", "Line Sampling Rate", "FG_SAMPLING_RATE", entries(ColorInterpolationMethods), {3, 1, 1}, nullptr,
     "Define the sampling rate of the object. Select 'Single' if the object is sampled once by the camera or 'Double' if the object is sampled twice. In 'Single' mode, the line feed speed is twice than in 'Double' mode. Note that this parameter influences the range of parameter FG_HEIGHT."},
    // Lookup Table > Applet Properties
    {"Lookup Table > Applet Properties", "LUT Implementation Type", "FG_LUT_IMPLEMENTATION_TYPE", entries(LookupTableImplementations), {1, 1, 1}, nullptr,
     "Type of LUT implementation."},
    {"Lookup Table > Applet Properties", "LUT In Bits", "FG_LUT_IN_BITS", uint32(0, 0, 0), {1, 1, 1}, "bit",
     "Pixel bit depth at LUT input."},
    {"Lookup Table > Applet Properties", "LUT Out Bits", "FG_LUT_OUT_BITS", uint32(0, 0, 0), {1, 1, 1}, "bit",
     "Pixel bit depth at LUT output."},
    // Lookup Table
    {"Lookup Table", "Type", "FG_LUT_TYPE", entries(AcqLutTypes), {7, 1, 1}, nullptr,
     "Enables the LUT to be load with custom values or use the applet's processor."},
    {"Lookup Table", "Red LUT Values", "FG_LUT_VALUE_RED", uint32Field(256, 0, 255, 1), {7, 1, 1}, nullptr,
     "Field with red LUT Values."},
    {"Lookup Table", "Green LUT Values", "FG_LUT_VALUE_GREEN", uint32Field(256, 0, 255, 1), {7, 1, 1}, nullptr,
     "Field with green LUT Values."},
    {"Lookup Table", "Blue LUT Values", "FG_LUT_VALUE_BLUE", uint32Field(256, 0, 255, 1), {7, 1, 1}, nullptr,
     "Field with blue LUT Values."},
    {"Lookup Table", "Load File", "FG_LUT_CUSTOM_FILE", text("*.lut"), {7, 1, 1}, nullptr,
     "Filename with custom lookup table values."},
    {"Lookup Table", "Save File", "FG_LUT_SAVE_FILE", text("*.lut"), {7, 1, 1}, nullptr,
     "Save current LUT configuration."},
    // Processing
    {"Processing", "Offset", "FG_PROCESSING_OFFSET", real(-1.0, 1.0, kEpsilon), {7, 1, 1}, nullptr,
     "Offset correction value. Available when LUT functionality is enabled."},
    {"Processing", "Gain", "FG_PROCESSING_GAIN", real(0.0, 256.0, kEpsilon), {7, 1, 1}, nullptr,
     "Gain correction value. Available when LUT functionality is enabled."},
    {"Processing", "Gamma", "FG_PROCESSING_GAMMA", real(-1000.0, 1000.0, kEpsilon), {7, 1, 1}, nullptr,
     "Gamma correction value. Available when LUT functionality is enabled."},
    {"Processing", "Invert", "FG_PROCESSING_INVERT", entries(OnOff), {7, 1, 1}, nullptr,
     "Invert output. Available when LUT functionality is enabled."},
    // Output Format
    {"Output Format", "Output Format", "FG_FORMAT", entries(FormatColor24Only), {3, 1, 1}, nullptr,
     "Pixel format of the output image."},
    {"Output Format", "Pixel Depth", "FG_PIXELDEPTH", uint32(0, 128, 1), {1, 1, 1}, "bit",
     "Internal processing bit depth of the applet."},
    // Camera Simulator
    {"Camera Simulator", "Image Source", "FG_CAMERASIMULATOR_ENABLE", entries(CameraSimulatorSource), {7, 1, 1}, nullptr,
     "Use internal frame generator or Camera input."},
    {"Camera Simulator", "Width", "FG_CAMERASIMULATOR_WIDTH", uint32(1, 65536, 1), {7, 2, 1}, "pixel",
     "Image width of camera simulator. Width is automatically rounded up to internal processing granularity. Reading the parameter will return the rounded value."},
    {"Camera Simulator", "Line Gap", "FG_CAMERASIMULATOR_LINE_GAP", uint32(0, 65536, 1), {7, 2, 1}, "pixel",
     "Gap between lines of camera simulator. Value is automatically rounded up to internal processing granularity. Reading the parameter will return the rounded value."},
    {"Camera Simulator", "Height", "FG_CAMERASIMULATOR_HEIGHT", uint32(1, 65536, 1), {7, 2, 1}, "pixel",
     "Image height of camera simulator."},
    {"Camera Simulator", "Frame Gap", "FG_CAMERASIMULATOR_FRAME_GAP", uint32(0, 65536, 1), {7, 2, 1}, "pixel",
     "Line Gap between frames of camera simulator."},
    {"Camera Simulator", "Pattern", "FG_CAMERASIMULATOR_PATTERN", entries(CameraSimulatorPattern), {7, 1, 1}, nullptr,
     "Camera simulator pattern selector."},
    {"Camera Simulator", "Pattern Offset", "FG_CAMERASIMULATOR_PATTERN_OFFSET", uint32(0, 255, 1), {7, 2, 1}, "pixel value",
     "Adds the defined value as an offset to the generated patterns."},
    {"Camera Simulator", "Roll", "FG_CAMERASIMULATOR_ROLL", entries(OnOff), {7, 1, 1}, nullptr,
     "Select rolling or static pattern."},
    {"Camera Simulator", "Speed Mode", "FG_CAMERASIMULATOR_SELECT_MODE", entries(CameraSimulatorMode), {7, 1, 1}, nullptr,
     "Select input parameter for speed control."},
    {"Camera Simulator", "Pixel Frequency", "FG_CAMERASIMULATOR_PIXEL_FREQUENCY", real(0.0, 4000.0, kEpsilon), {7, 2, 1}, "MHz",
     "Defines the pixel frequency of the camera simulator."},
    {"Camera Simulator", "Line Rate", "FG_CAMERASIMULATOR_LINERATE", real(0.1, 10000000.0, kEpsilon), {7, 2, 1}, "Hz",
     "Defines the line rate of the camera simulator."},
    {"Camera Simulator", "Framerate", "FG_CAMERASIMULATOR_FRAMERATE", real(0.1, 10000000.0, kEpsilon), {7, 2, 1}, "Hz",
     "Camera simulator framerate."},
    {"Camera Simulator", "Trigger Mode", "FG_CAMERASIMULATOR_TRIGGER_MODE", entries(CameraSimulatorTriggerMode), {7, 1, 1}, nullptr,
     "Select the trigger module to trigger the camera simulator."},
    {"Camera Simulator", "Active Parts", "FG_CAMERASIMULATOR_ACTIVE", uint32(4, 2000, 1), {1, 1, 1}, "pixel",
     "Active parts for frequency generation."},
    {"Camera Simulator", "Passive Parts", "FG_CAMERASIMULATOR_PASSIVE", uint32(4, 2000, 1), {1, 1, 1}, "pixel",
     "Passive part for frequency generation."},
    // Miscellaneous > Debug > Input
    {"Miscellaneous > Debug > Input", "Debug Input Mode", "FG_DEBUGINENABLE", entries(OnOff), {7, 1, 1}, nullptr,
     "Debug-Interface, Internal Use ONLY."},
    {"Miscellaneous > Debug > Input", "Debug File", "FG_DEBUGFILE", text(""), {7, 1, 1}, nullptr,
     "Debug-Interface, Internal Use ONLY."},
    {"Miscellaneous > Debug > Input", "Debug Insert Image", "FG_DEBUGINSERT", entries(Apply), {7, 1, 1}, nullptr,
     "Debug-Interface, Internal Use ONLY."},
    {"Miscellaneous > Debug > Input", "Debug Write Pixel", "FG_DEBUGWRITEPIXEL", uint64(0, 144115188075855871, 1), {7, 2, 1}, nullptr,
     "Debug-Interface, Internal Use ONLY."},
    {"Miscellaneous > Debug > Input", "Debug Write Flag", "FG_DEBUGWRITEFLAG", entries(EnumWriteFlag), {7, 1, 1}, nullptr,
     "Debug-Interface, Internal Use ONLY."},
    {"Miscellaneous > Debug > Input", "Debug Write Ready", "FG_DEBUGREADY", entries(YesNo), {1, 1, 1}, nullptr,
     "Debug-Interface, Internal Use ONLY."},
    // Miscellaneous > Debug > Output
    {"Miscellaneous > Debug > Output", "Debug Output Mode", "FG_DEBUGOUTENABLE", entries(OnOff), {7, 1, 1}, nullptr,
     "Debug-Interface, Internal Use ONLY."},
    {"Miscellaneous > Debug > Output", "Debug Output XPosition", "FG_DEBUGOUTXPOS", uint32(8, 16384, 1), {1, 1, 1}, "pixel",
     "Debug-Interface, Internal Use ONLY."},
    {"Miscellaneous > Debug > Output", "Debug Output YPosition", "FG_DEBUGOUTYPOS", uint32(4, 16777214, 1), {1, 1, 1}, "pixel",
     "Debug-Interface, Internal Use ONLY."},
    {"Miscellaneous > Debug > Output", "Debug Output Pixel", "FG_DEBUGOUTPIXEL", uint32(0, 4294967295, 1), {1, 2, 1}, "pixel",
     "Debug-Interface, Internal Use ONLY."},
    // Miscellaneous > Debug
    {"Miscellaneous > Debug", "Debug Source", "FG_DEBUGSOURCE", uint32(0, 10, 1), {7, 2, 1}, nullptr,
     "Debug-Interface, Internal Use ONLY."},
    {"Miscellaneous > Debug", "Debug Source Name", "FG_DEBUGSOURCENAME", text(""), {1, 1, 1}, nullptr,
     "Debug-Interface, Internal Use ONLY."},
    {"Miscellaneous > Debug", "Debug Save Config", "FG_DEBUGSAVECONFIG", text("*.mcf"), {7, 1, 1}, nullptr,
     "Debug-Interface, Internal Use ONLY."},
    // Miscellaneous
    {"Miscellaneous", "Timeout", "FG_TIMEOUT", uint32(2, 2147483646, 1), {7, 1, 1}, "seconds",
     "Internal framegrabber image timeout. This is independend of the runtime timeout value."},
    {"Miscellaneous", "Applet version", "FG_APPLET_VERSION", uint32(0, 0, 0), {1, 1, 1}, nullptr,
     "Returns the applet version."},
    {"Miscellaneous", "Applet revision", "FG_APPLET_REVISION", uint32(0, 0, 0), {1, 1, 1}, nullptr,
     "Returns the applet revision."},
    {"Miscellaneous", "Applet Id", "FG_APPLET_ID", text(""), {1, 1, 1}, nullptr,
     "Returns the applet id."},
    {"Miscellaneous", "Build Time", "FG_APPLET_BUILD_TIME", text(""), {1, 1, 1}, nullptr,
     "Returns the timestamp, the hardware applet file has been generated."},
    {"Miscellaneous", "HAP file", "FG_HAP_FILE", text("*.hap"), {1, 1, 1}, nullptr,
     "The name of the Hardware-Applet (HAP) file on which this CaptureKits is based."},
    {"Miscellaneous", "DMA Status", "FG_DMASTATUS", uint32(0, 0, 0), {1, 1, 1}, nullptr,
     "Returns the status of the DMA transmission."},
    {"Miscellaneous", "Camera Status", "FG_CAMSTATUS", uint32(0, 1, 1), {1, 1, 1}, nullptr,
     "Returns the status of a connected CameraLink camera. For CoaXPress this is not of interest."},
    {"Miscellaneous", "Camera Status Extended", "FG_CAMSTATUS_EXTENDED", uint32(0, 255, 1), {1, 1, 1}, nullptr,
     "Returns the extended status of the camera. Bit = meaning: 0 = CameraPixelClk, 1 = CameraLval, 2 = CameraFval, 3 = Camera CC1 Signal, 4 = ExTrg / external trigger, 5 = BufferOverflow, 6 = BufferStatus-LSB, 7 = BufferStatus-MSB"},
    {"Miscellaneous", "FGPA Temperature", "FG_SYSTEMMONITOR_FPGA_TEMPERATURE", real(0.0, 1000.0, 0.0), {1, 1, 1}, "Celsius",
     "Returns the current FPGA die temperature."},
    {"Miscellaneous", "FGPA Vcc Int", "FG_SYSTEMMONITOR_FPGA_VCC_INT", real(-1000.0, 1000.0, 0.0), {1, 1, 1}, "V",
     "Returns the current FPGA internal Vcc."},
    {"Miscellaneous", "FGPA Vcc Aux", "FG_SYSTEMMONITOR_FPGA_VCC_AUX", real(-1000.0, 1000.0, 0.0), {1, 1, 1}, "V",
     "Returns the current FPGA auxiliary Vcc."},
    {"Miscellaneous", "FGPA Vcc BRAM", "FG_SYSTEMMONITOR_FPGA_VCC_BRAM", real(-1000.0, 1000.0, 0.0), {1, 1, 1}, "V",
     "Returns the current FPGA BRAM Vcc."},
    {"Miscellaneous", "Current Link Width", "FG_SYSTEMMONITOR_CURRENT_LINK_WIDTH", uint32(0, 15, 0), {1, 1, 1}, "lanes",
     "Returns the current PCIe link width."},
    {"Miscellaneous", "Current Link Speed", "FG_SYSTEMMONITOR_CURRENT_LINK_SPEED", real(0.0, 1000.0, 0.0), {1, 1, 1}, "GB/s",
     "Returns the current PCIe link speed in Gibibyte (2^30 byte)."},
    {"Miscellaneous", "PCIe Link Gen 2 Capable", "FG_SYSTEMMONITOR_PCIE_LINK_GEN2_CAPABLE", entries(YesNo), {1, 1, 1}, nullptr,
     "Information if the PCIe link is generation 2 capable."},
    {"Miscellaneous", "PCIe Link Partner Gen 2 Capable", "FG_SYSTEMMONITOR_PCIE_LINK_PARTNER_GEN2_CAPABLE", entries(YesNo), {1, 1, 1}, nullptr,
     "Information if the PCIe link partner is generation 2 capable."},
    {"Miscellaneous", "PCIe Trained Payload Size", "FG_SYSTEMMONITOR_PCIE_TRAINED_PAYLOAD_SIZE", uint32(0, 15, 0), {1, 1, 1}, "byte",
     "Returns the PCIe trained payload size."},
    {"Miscellaneous", "Extension Connector Present", "FG_SYSTEMMONITOR_EXTENSION_CONNECTOR_PRESENT", entries(YesNo), {1, 1, 1}, nullptr,
     "Information if the extension connector is present."},
    {"Miscellaneous", "Alternative Board Detection", "FG_ALTERNATIVE_BOARD_DETECTION", entries(OnOff), {1, 1, 1}, nullptr,
     "Indicates if the grabber is configured for an alternative PCIe board detection algorithm."},
    {"Miscellaneous", "PoCL State Port A", "FG_SYSTEMMONITOR_POCL_STATE_PORT_A", entries(PoCLState), {1, 1, 1}, nullptr,
     "Power over Camera Link state for port A."},
    {"Miscellaneous", "PoCL State Port B", "FG_SYSTEMMONITOR_POCL_STATE_PORT_B", entries(PoCLState), {1, 1, 1}, nullptr,
     "Power over Camera Link state for port B."},
    {"Miscellaneous", "FPGA DNA", "FG_SYSTEMMONITOR_FPGA_DNA", uint64(0, 144115188075855871, 0), {1, 1, 1}, nullptr,
     "Returns the FPGA DNA."},
    // Legacy Parameter
    {"Legacy Parameter", "CC 1", "FG_CCSEL0", entries(CcSignalMappingLineExtended), {7, 1, 1}, nullptr,
     "CC 1 signal mapping, in most cameras used for exposure control. Note that this is a legacy parameter. If the value is set to FG_OTHER, the value cannot be represented by this parameter."},
    {"Legacy Parameter", "CC 2", "FG_CCSEL1", entries(CcSignalMappingLineExtended), {7, 1, 1}, nullptr,
     "CC 2 signal mapping. Note that this is a legacy parameter. If the value is set to FG_OTHER, the value cannot be represented by this parameter."},
    {"Legacy Parameter", "CC 3", "FG_CCSEL2", entries(CcSignalMappingLineExtended), {7, 1, 1}, nullptr,
     "CC 3 signal mapping, in most cameras used as direction related input. Note that this is a legacy parameter. If the value is set to FG_OTHER, the value cannot be represented by this parameter."},
    {"Legacy Parameter", "CC 4", "FG_CCSEL3", entries(CcSignalMappingLineExtended), {7, 1, 1}, nullptr,
     "CC 4 signal mapping. Note that this is a legacy parameter. If the value is set to FG_OTHER, the value cannot be represented by this parameter."},
});
// clang-format on

}  // namespace catalogue_rows

/// All described parameters in display order.
inline constexpr auto& catalogue = catalogue_rows::catalogueRows;
static_assert(catalogue.size() == 170);

/// The catalogue row of a parameter named in the code; an unknown name does not compile.
consteval const CatalogueRow& catalogueRow(std::string_view name) {
    for (const auto& row : catalogue)
        if (row.name == name) return row;
    throw "the catalogue has no parameter of this name";
}

/// The registered range of a parameter, as its setter checks it:
/// `limits<std::uint32_t>("FG_LINE_DOWNSCALE")`.
template <class T>
consteval Limits<T> limits(std::string_view name) {
    return std::get<Limits<T>>(catalogueRow(name).value);
}

/// The entries that a parameter accepts: `entriesOf("FG_EXSYNCON")`.
consteval EntryList entriesOf(std::string_view name) {
    return std::get<EntryList>(catalogueRow(name).value);
}

}  // namespace marovine
