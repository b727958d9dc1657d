#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/Instrument.h"

namespace cvn73100::sim {

// What cvn73100-sim is asked to serve, read from its command line and config files.
struct ProgramOptions {
  std::vector<InstrumentConfig> instruments;     // at least one after Parse
  bool pty = false;                              // one RS-232 pseudo-terminal per instrument
  std::optional<std::uint16_t> tcpPort;          // raw SCPI sockets from this port on (0: any free ports)
  std::optional<std::uint16_t> prologixTcpPort;  // a GPIB-ETHERNET adapter with every instrument behind it
  bool prologixPty = false;                      // a GPIB-USB adapter on a pseudo-terminal
  std::optional<std::uint16_t> vxi11Port;        // a VXI-11 LAN/GPIB gateway on this port (0: any free port)
  bool help = false;

  // Parses the arguments after the program name. Instrument options apply to the latest --instrument (the
  // first instrument needs none); `--config FILE` reads options from a file at that point. Throws
  // std::invalid_argument with a message for the user.
  static ProgramOptions Parse(const std::vector<std::string>& args);
  // The command-line words a config file stands for: "[instrument]" starts an instrument, "key = value" is
  // "--key value", and a flag key takes true or false; lines starting with '#' or ';' are comments.
  static std::vector<std::string> ConfigWords(std::string_view text);
  static std::string Help();
};

}  // namespace cvn73100::sim
