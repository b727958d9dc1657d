#pragma once
#include <cstdint>

#include "platform/InstrumentIO.h"

// The words and numbers of instrument address strings and of the I/O configuration tables.
// Comparisons of the words ignore case.
namespace cvn73100 {

inline constexpr const char* GPIB_PREFIX = "GPIB";
inline constexpr const char* RS232_PREFIX = "COM";
inline constexpr const char* ADDRESS_SEPARATOR = "::";
inline constexpr const char* KEYWORD_SEPARATOR = ",";
inline constexpr const char* RESOURCE_CLASS = "INSTR";
inline constexpr const char* HANDSHAKE_ADDRESS_KEYWORD = "Handshake=";
inline constexpr const char* BAUD_ADDRESS_KEYWORD = "Baud=";
inline constexpr const char* SIZE_ADDRESS_KEYWORD = "Size=";
inline constexpr const char* PARITY_ADDRESS_KEYWORD = "Parity=";
inline constexpr const char* STOP_ADDRESS_KEYWORD = "Stop=";
inline constexpr const char* HANDSHAKE_XON_XOFF = "XON_XOFF";
inline constexpr const char* HANDSHAKE_DTR_DSR = "DTR_DSR";
inline constexpr const char* DEFAULT_ADDRESS = "GPIB0::7::INSTR";

inline constexpr std::int32_t DEFAULT_BAUD_RATE = 9600;
// The one parity value a serial port may carry; the I/O library interprets it.
inline constexpr std::int32_t DEFAULT_PARITY = 1;
inline constexpr std::int32_t DEFAULT_HANDSHAKE = RS232_HandShake_XON_XOFF;
inline constexpr std::int32_t RS232_BAUD_RATES[] = {1200, 2400, 9600, 19200, 38400, 57600};

// GPIB interface numbers: "GPIB0".."GPIB3".
struct GPIB_PORT {
  static constexpr std::int32_t First = 0;
  static constexpr std::int32_t Last = 3;
};

// Serial port numbers: "COM1".."COM4".
struct RS232_PORT {
  static constexpr std::int32_t First = 1;
  static constexpr std::int32_t Last = 4;
};

// GPIB instrument addresses, and the indices of one serial port's settings.
struct SEARCH_CRITERIA {
  static constexpr std::int32_t FIRST_GPIB_INCLUDE = 0;
  static constexpr std::int32_t LAST_GPIB_INCLUDE = 30;
  static constexpr std::int32_t BAUD_RATE_INDEX = 0;
  static constexpr std::int32_t PARITY_INDEX = 1;
  static constexpr std::int32_t HANDSHAKE_INDEX = 2;
};

inline constexpr std::int32_t GPIB_PORT_COUNT = GPIB_PORT::Last - GPIB_PORT::First + 1;
inline constexpr std::int32_t RS232_PORT_COUNT = RS232_PORT::Last - RS232_PORT::First + 1;
inline constexpr std::int32_t GPIB_ADDRESS_COUNT =
    SEARCH_CRITERIA::LAST_GPIB_INCLUDE - SEARCH_CRITERIA::FIRST_GPIB_INCLUDE + 1;
inline constexpr std::int32_t RS232_SETTING_COUNT = SEARCH_CRITERIA::HANDSHAKE_INDEX + 1;

}  // namespace cvn73100
