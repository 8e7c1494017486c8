/**
 * Named constants of libMarovine.so: error codes, selectors of `Info`, and the values of enumeration
 * parameters.
 *
 * Part of marovine.h, which includes it. A host whose other headers name the same values already defines
 * MAROVINE_NO_CONSTANTS before it includes marovine.h.
 */
#ifndef MAROVINE_CONSTANTS_H
#define MAROVINE_CONSTANTS_H

/** What calls answer and `Fg_getLastErrorNumber` gives. A host runtime has codes of its own besides. */
enum {
    MAROVINE_SUCCESS = 0,        /**< success */
    MAROVINE_OUT_OF_MEMORY = -1, /**< no shading memory */
    MAROVINE_NOT_ALLOWED = -12,  /**< the parameter is read-only, or the host runtime lacks the function */
    MAROVINE_DESIGN_NOT_LOADED = -100, /**< the hardware design cannot be loaded or opened */
    MAROVINE_BUFFER_TOO_SMALL = -500,  /**< the result does not fit the buffer */
    MAROVINE_INVALID_HANDLE = -2001,   /**< the record holds no open applet */
    MAROVINE_INTERNAL_FAILURE = -2031, /**< runtime or design do not answer as they must, or memory ran out */
    MAROVINE_INVALID_ARGUMENT = -2070, /**< unknown parameter, index, DMA channel or text, or a null value */
    MAROVINE_NO_DEFINITION = -2075,    /**< the requested item has no definition */
    MAROVINE_FILE_NOT_FOUND = -2076,   /**< the file does not exist */
    MAROVINE_WRONG_TYPE_CODE = -2078,  /**< only texts handed out by pointer can be given back */
    MAROVINE_NOT_SUPPORTED = -2130,    /**< this applet does not support the operation */
    MAROVINE_CONFIGURATION_REJECTED =
        -5000, /**< the configuration is none of this applet's, or its content is rejected */
    MAROVINE_FILE_NOT_ACCESSIBLE =
        -5001,                     /**< the file could not be written, or not read in the expected format */
    MAROVINE_OUT_OF_RANGE = -6000, /**< the value is out of range or not one of the entries */
    MAROVINE_WRONG_STEP = -7080,   /**< the value is not a multiple of the step */
    MAROVINE_KEY_MISSING = -8000   /**< a key is missing in a configuration file; inside the applet only */
};

/** Selectors of `Info`. Other selectors that it knows give a number each, as its result. */
enum {
    MAROVINE_INFO_ICON = 1041,          /**< `*p`: size_t, bytes of the PNG image at `*q` */
    MAROVINE_INFO_DESIGN_IMAGE = 1042,  /**< `*p`: size_t, bytes of the image at `*q` */
    MAROVINE_INFO_DESIGN_UID = 1043,    /**< `*q`: text */
    MAROVINE_INFO_BITSTREAM_UID = 1044, /**< `*q`: text */
    MAROVINE_INFO_DESIGN_TYPE = 2176,   /**< result: the design's type code */
    MAROVINE_INFO_PATH = 4096,          /**< `*q`: text "." */
    MAROVINE_INFO_CATEGORY = 4112,      /**< `*q`: text */
    MAROVINE_INFO_TAGS = 4128,          /**< `*q`: text */
    MAROVINE_INFO_DEVICE = 4144,  /**< `*p`: GXdevice*, the board opened last in this process, or null */
    MAROVINE_INFO_DESIGN = 4160,  /**< `*p`: fpga_design*, the design opened last, or null */
    MAROVINE_INFO_NAME = 4176,    /**< `*q`: text */
    MAROVINE_INFO_VERSION = 4192, /**< `*q`: text */
    MAROVINE_INFO_BUILD = 4208,   /**< `*q`: text */
    MAROVINE_INFO_CONSTANT =
        4352 /**< result: the value of the enumeration constant whose name `p` points to; -2070 for none */
};

/* ---- values of enumeration parameters, each under the parameters that take them ---- */

/* clang-format off */
/** FG_USEDVAL, FG_DEBUGREADY and others */
enum {
    FG_YES = 1,
    FG_NO = 0
};

/** FG_SHAFTENCODERON, FG_SHAFTENCODER_COMPENSATION_ENABLE and others */
enum {
    FG_ON = 1,
    FG_OFF = 0
};

/** FG_TRIGGEROUT_GPO_0_POLARITY, FG_TRIGGEROUT_GPO_1_POLARITY and others */
enum {
    FG_LOW = 0,
    FG_HIGH = 1
};

/** FG_LINETRIGGERINPOLARITY and FG_IMGTRIGGERINPOLARITY */
enum {
    HIGH_ON_ZERO_LOW = 1,
    HIGH_ON_ZERO_HIGH = 0
};

/** FG_SENDSOFTWARETRIGGER, FG_SIGNAL_ANALYZER_CLEAR and others */
enum {
    FG_APPLY = 1
};

/** FG_IMGTRIGGER_IS_BUSY */
enum {
    IS_BUSY = 1,
    IS_NOT_BUSY = 0
};

/** FG_DEBUGWRITEFLAG */
enum {
    FG_ENDOFLINE = 0,
    FG_ENDOFFRAME = 1
};

/** FG_CAMERA_LINK_CAMTYPE */
enum {
    FG_CL_FULL_8_TAP_8_BIT = 308,
    FG_CL_FULL_10_TAP_8_BIT = 310,
    FG_CL_FULL_8_TAP_10_BIT = 311
};

/** FG_TAPGEOMETRY */
enum {
    FG_GEOMETRY_1X8 = 25165824,
    FG_GEOMETRY_1X10 = 27262976,
    FG_GEOMETRY_4X2 = 69206016,
    FG_GEOMETRY_4X2E = 69271552,
    FG_GEOMETRY_5X2 = 85983232,
    FG_GEOMETRY_8X = 135266304,
    FG_GEOMETRY_10X = 168820736
};

/** FG_VANTAGEPOINT */
enum {
    FG_VANTAGEPOINT_TOP_LEFT = 0,
    FG_VANTAGEPOINT_TOP_RIGHT = 1
};

/** FG_FORMAT */
enum {
    FG_COL24 = 2
};

/** FG_CAMERASIMULATOR_ENABLE */
enum {
    FG_CAMPORT = 0,
    FG_CAMERASIMULATOR = 1
};

/** FG_CAMERASIMULATOR_PATTERN */
enum {
    FG_HORIZONTAL = 1,
    FG_VERTICAL = 2,
    FG_DIAGONAL = 3
};

/** FG_CAMERASIMULATOR_SELECT_MODE */
enum {
    FG_PIXEL_FREQUENCY = 0,
    FG_LINERATE = 1,
    FG_FRAMERATE = 2
};

/** FG_CAMERASIMULATOR_TRIGGER_MODE */
enum {
    SIMULATION_FREE_RUN = 0,
    RISING_EDGE_TRIGGERS_LINE = 8,
    RISING_EDGE_TRIGGERS_FRAME = 9
};

/** FG_BAYERINIT */
enum {
    GreenFollowedByRed = 3,
    GreenFollowedByBlue = 0,
    RedFollowedByGreen = 2,
    BlueFollowedByGreen = 1
};

/** FG_SAMPLING_RATE */
enum {
    FG_SINGLE = 1,
    FG_DOUBLE = 2
};

/** FG_LUT_TYPE */
enum {
    LUT_TYPE_PROCESSING = 3,
    LUT_TYPE_CUSTOM = 0
};

/** FG_LUT_IMPLEMENTATION_TYPE */
enum {
    LUT_IMPLEMENTATION_FULL_LUT = 0,
    LUT_IMPLEMENTATION_KNEELUT = 1
};

/** FG_LINETRIGGERMODE */
enum {
    GRABBER_CONTROLLED = 1,
    ASYNC_TRIGGER = 2,
    GRABBER_CONTROLLED_GATED = 6,
    ASYNC_GATED = 5
};

/** FG_LINETRIGGERINSRC and FG_SHAFTENCODERINSRC */
enum {
    TRGINSRC_GPI_0 = 0,
    TRGINSRC_GPI_1 = 1,
    TRGINSRC_GPI_2 = 2,
    TRGINSRC_GPI_3 = 3,
    TRGINSRC_GPI_4 = 4,
    TRGINSRC_GPI_5 = 5,
    TRGINSRC_GPI_6 = 6,
    TRGINSRC_GPI_7 = 7,
    TRGINSRC_FRONT_GPI_0 = 16,
    TRGINSRC_FRONT_GPI_1 = 17,
    TRGINSRC_FRONT_GPI_2 = 18,
    TRGINSRC_FRONT_GPI_3 = 19
};

/** FG_IMGTRIGGERINSRC: further entries */
enum {
    TRGINSOFTWARE = -1
};

/** FG_SHAFTENCODERMODE */
enum {
    FILTER_X1 = 1,
    FILTER_X2 = 2,
    FILTER_X4 = 3
};

/** FG_SHAFTENCODERLEADING */
enum {
    SOURCE_A = 0,
    SOURCE_B = 1
};

/** FG_IMGTRIGGERMODE: further entries */
enum {
    FREE_RUN = 0,
    ASYNC_TRIGGER_MULTIFRAME = 8,
    ASYNC_GATED_MULTIFRAME = 6,
    CAMERA_FVAL_MULTIFRAME = 9
};

/** FG_TRIGGEROUT_GPO_0_SOURCE, FG_TRIGGEROUT_GPO_1_SOURCE and others */
enum {
    GND = 4,
    VCC = 5,
    FG_SIGNAL_CAM0_EXSYNC = 2000,
    FG_SIGNAL_CAM0_EXSYNC2 = 2001,
    FG_SIGNAL_CAM0_FLASH = 2002,
    FG_SIGNAL_CAM0_LVAL = 2007,
    FG_SIGNAL_CAM0_FVAL = 2008,
    FG_SIGNAL_GPI_0 = 1001,
    FG_SIGNAL_GPI_1 = 1011,
    FG_SIGNAL_GPI_2 = 1021,
    FG_SIGNAL_GPI_3 = 1031,
    FG_SIGNAL_GPI_4 = 1041,
    FG_SIGNAL_GPI_5 = 1051,
    FG_SIGNAL_GPI_6 = 1061,
    FG_SIGNAL_GPI_7 = 1071,
    FG_SIGNAL_FRONT_GPI_0 = 1081,
    FG_SIGNAL_FRONT_GPI_1 = 1091,
    FG_SIGNAL_FRONT_GPI_2 = 1101,
    FG_SIGNAL_FRONT_GPI_3 = 1111
};

/** FG_CUSTOM_SIGNAL_EVENT_0_SOURCE, FG_CUSTOM_SIGNAL_EVENT_1_SOURCE and others: further entries */
enum {
    FG_SIGNAL_CAM0_LINE_START = 2100,
    FG_SIGNAL_CAM0_LINE_END = 2101,
    FG_SIGNAL_CAM0_FRAME_START = 2102,
    FG_SIGNAL_CAM0_FRAME_END = 2103
};

/** FG_CCSEL0, FG_CCSEL1 and others */
enum {
    CC_EXSYNC = 0,
    CC_NOT_EXSYNC = 6,
    CC_PRESCALER = 1,
    CC_NOT_PRESCALER = 7,
    CC_STROBEPULSE = 2,
    CC_NOT_STROBEPULSE = 8,
    CC_GND = 4,
    CC_VCC = 5,
    CC_GPI_0 = 1001,
    CC_NOT_GPI_0 = 1000,
    CC_GPI_1 = 1011,
    CC_NOT_GPI_1 = 1010,
    CC_GPI_2 = 1021,
    CC_NOT_GPI_2 = 1020,
    CC_GPI_3 = 1031,
    CC_NOT_GPI_3 = 1030,
    CC_GPI_4 = 1041,
    CC_NOT_GPI_4 = 1040,
    CC_GPI_5 = 1051,
    CC_NOT_GPI_5 = 1050,
    CC_GPI_6 = 1061,
    CC_NOT_GPI_6 = 1060,
    CC_GPI_7 = 1071,
    CC_NOT_GPI_7 = 1070,
    CC_FRONT_GPI_0 = 1081,
    CC_NOT_FRONT_GPI_0 = 1080,
    CC_FRONT_GPI_1 = 1091,
    CC_NOT_FRONT_GPI_1 = 1090,
    CC_FRONT_GPI_2 = 1101,
    CC_NOT_FRONT_GPI_2 = 1100,
    CC_FRONT_GPI_3 = 1111,
    CC_NOT_FRONT_GPI_3 = 1110,
    FG_OTHER = -1
};

/** FG_SYSTEMMONITOR_POCL_STATE_PORT_A and FG_SYSTEMMONITOR_POCL_STATE_PORT_B */
enum {
    FG_INITIALIZE = 0,
    FG_POCL_CONNECTION_SENSE = 1,
    FG_POCL_WAIT_FOR_CONNECTION = 6,
    FG_POCL_CAMERA_DETECTED = 2,
    FG_POCL_CAMERA_CLOCK_DETECTED = 3,
    FG_CL_WAIT_FOR_CONNECTION = 7,
    FG_CL_CAMERA_DETECTED = 4,
    FG_CL_CAMERA_CLOCK_DETECTED = 5,
    FG_POCL_DISABLED = 8
};
/* clang-format on */

#endif
