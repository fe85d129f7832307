// The variant value of every property and attribute: a type, a unit and a name in one flags
// word beside one payload word.
#pragma once

#include "common/ZQExport.h"

namespace ZQCommonNS {

/// What the payload of a ZQValue holds; the numbers are stored in bits 0 to 2 of its flags.
enum ZQValueType : int {
  ZQVALUE_NULL = 0,
  ZQVALUE_INTEGER = 1,
  ZQVALUE_REAL = 2,
  ZQVALUE_NAME = 3,
  ZQVALUE_STRING = 4,
  ZQVALUE_OBJECT = 5,
  ZQVALUE_ARRAY = 6,
  ZQVALUE_COMPOUND = 7,
};

/// The 6-bit unit of a value; the numbers are stored in bits 3 to 8 of its flags.
enum ZQUnitType : int {
  ZQUNIT_NONE = 0,       ///< no unit; for a string, a string of unknown kind
  ZQUNIT_NUMBER = 1,     ///< plain number
  ZQUNIT_PERCENT = 2,    ///< "%"
  ZQUNIT_EM = 3,         ///< "em"
  ZQUNIT_EX = 4,         ///< "ex"
  ZQUNIT_PX = 5,         ///< "px", relative: it depends on a resolution
  ZQUNIT_CM = 6,         ///< "cm"
  ZQUNIT_MM = 7,         ///< "mm"
  ZQUNIT_IN = 8,         ///< "in"
  ZQUNIT_PT = 9,         ///< "pt", the internal unit of lengths
  ZQUNIT_PC = 10,        ///< "pc"
  ZQUNIT_JPT = 11,       ///< "jpt"
  ZQUNIT_Q = 12,         ///< "q"
  ZQUNIT_DEG = 13,       ///< "deg"
  ZQUNIT_RAD = 14,       ///< "rad"
  ZQUNIT_GRAD = 15,      ///< "grad"
  ZQUNIT_MS = 16,        ///< "ms"
  ZQUNIT_S = 17,         ///< "s"
  ZQUNIT_HZ = 18,        ///< "Hz"
  ZQUNIT_KHZ = 19,       ///< "kHz"
  ZQUNIT_CHAR = 20,      ///< an integer holding a code point
  ZQUNIT_LITERAL = 21,   ///< a quoted (literal) string
  ZQUNIT_URI = 22,       ///< a URI string
  ZQUNIT_NAME = 23,      ///< a name value
  ZQUNIT_COLOR = 24,     ///< a colour
  ZQUNIT_DD = 26,        ///< "dd"
  ZQUNIT_CC = 27,        ///< "cc"
  ZQUNIT_DPI = 28,       ///< "dpi"
  ZQUNIT_TWIP = 29,      ///< "twip"
  ZQUNIT_PT2 = 30,       ///< square points, a product of two lengths; no text
  ZQUNIT_PT3 = 31,       ///< cubic points; no text
  ZQUNIT_REM = 32,       ///< "rem"
  ZQUNIT_VW = 33,        ///< "vw"
  ZQUNIT_VH = 34,        ///< "vh"
  ZQUNIT_VMIN = 35,      ///< "vmin"
  ZQUNIT_VMAX = 36,      ///< "vmax"
  ZQUNIT_PVW = 37,       ///< "pvw"
  ZQUNIT_PVH = 38,       ///< "pvh"
  ZQUNIT_PVMIN = 39,     ///< "pvmin"
  ZQUNIT_PVMAX = 40,     ///< "pvmax"
  ZQUNIT_CH = 41,        ///< "ch"
  ZQUNIT_WCH = 42,       ///< "wch"
  ZQUNIT_FR = 43,        ///< "fr"
  ZQUNIT_GR = 44,        ///< "gr"
  ZQUNIT_LH = 45,        ///< "lh"
  ZQUNIT_RLH = 46,       ///< "rlh"
  ZQUNIT_LINES = 47,     ///< "lines"
  ZQUNIT_EMU = 50,       ///< "emu"
  ZQUNIT_PI = 51,        ///< "pi"
  ZQUNIT_DCEM = 52,      ///< "dcem"
  ZQUNIT_CAP = 53,       ///< "cap"
  ZQUNIT_IC = 54,        ///< "ic"
  ZQUNIT_FORMAT = 62,    ///< a string: the argument of a format() function
  ZQUNIT_LOCAL = 63,     ///< a string: the argument of a local() function
};

}  // namespace ZQCommonNS
