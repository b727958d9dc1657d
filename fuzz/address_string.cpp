// Address strings as a host, a form file or a script hands them to the I/O configuration.
// Input: one flag byte (bit 0: DTR-only operation, bit 1: start from a serial address), then the text.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/FuzzInput.h"
#include "ioconfig/CIOconfiguration.h"

namespace {

using cvn73100::CIOconfiguration;
using cvn73100::ScopeError;
using cvn73100::fuzz::Require;

template <class F>
void Try(F&& f) {
  try {
    f();
  } catch (const ScopeError&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  cvn73100::fuzz::FuzzInput in(data, size);
  const std::uint8_t flags = in.Byte();
  const std::string text = in.Rest();

  CIOconfiguration c;
  if (flags & 2) c.SetActiveAddressString("COM2::Baud=19200,Handshake=DTR_DSR");
  c.SetDTROnly((flags & 1) != 0);
  const CIOconfiguration before = c;
  bool accepted = true;
  try {
    c.SetActiveAddressString(text);
  } catch (const ScopeError&) {
    Require(c == before, "a refused address changed the configuration");
    accepted = false;
  }
  if (accepted) {
    // An accepted address yields a canonical form that reads back to the same state.
    CIOconfiguration again = c;
    again.SetActiveAddressString(c.ActiveAddressString());
    Require(again == c, "the canonical address is not a fixed point");
    if (!c.ActivePortIsGPIB())
      Require(c.ActiveAutomationServerAddress().find("Handshake=") != std::string::npos,
              "a serial server address without its handshake");
  }

  // The smaller parsers of address text, each on its own.
  Try([&] { c.IsStringGPIB(text); });
  Try([&] { c.IsValidGPIBPortString(text); });
  Try([&] { c.IsValidRS232PortString(text); });
  Try([&] { c.GPIBPortIndex(text); });
  Try([&] { c.RS232PortIndex(text); });
  Try([&] { c.GPIBInstrumentAddress(text); });
  const CIOconfiguration beforePort = c;
  try {
    c.SetActiveIOPort(text);
  } catch (const ScopeError&) {
    Require(c == beforePort, "a refused port name changed the configuration");
  }
  return 0;
}
