#pragma once
#include <cstdint>
#include <string>

namespace cvn73100::server {

// An instrument address as the server opens it: a GPIB address ("GPIB0::7::INSTR") as it stands, or a
// COM port with its line keywords ("COM2::Baud=19200,Handshake=DTR_DSR"). Keywords and values are
// compared without regard to case; "Size=", "Parity=" and "Stop=" are accepted and ignored (the line
// always runs 8 data bits, 1 stop bit).
struct ServerAddress {
  static constexpr std::int32_t DEFAULT_BAUD = 9600;

  std::string resource;  // what the I/O manager opens: the GPIB address, or the port name "COM2"
  bool serial = false;
  std::int32_t baud = DEFAULT_BAUD;
  std::int16_t handshake = 2;  // RS232_HandShake_XON_XOFF

  // Raises SERVERERR_BAD_ADDRESS for anything else (another prefix, an unknown keyword or value).
  static ServerAddress Parse(const std::string& address);
};

}  // namespace cvn73100::server
