#pragma once
#include <optional>
#include <string>

namespace cvn73100::io {

// A resource name the manager understands: "COM1".."COM4" (anything after "::" is the caller's keywords),
// "GPIBn::INTFC" and "GPIBn::ADDR::INSTR" (or "GPIBn::ADDR"), ADDR 0..30. Names are matched without regard to case.
class ResourceAddress {
 public:
  enum class Kind { Serial, GpibInterface, GpibInstrument };
  static constexpr int kMaxGpibAddress = 30;

  static std::optional<ResourceAddress> Parse(const std::string& text);
  static ResourceAddress Serial(int port) { return ResourceAddress(Kind::Serial, port, -1); }
  static ResourceAddress GpibInterface(int board) { return ResourceAddress(Kind::GpibInterface, board, -1); }
  static ResourceAddress GpibInstrument(int board, int address) {
    return ResourceAddress(Kind::GpibInstrument, board, address);
  }

  // Whether `resourceName` is listed for `pattern`. A pattern with "::" is a wildcard pattern ('*' any run,
  // '?' one character) over the whole name; one without "::" ("COM*", "COM3", "GPIB*", "GPIB0") is matched
  // against the port part, so "GPIB0" lists "GPIB0::INTFC" and "GPIB0::7::INSTR".
  static bool Matches(const std::string& pattern, const std::string& resourceName);
  // Wildcard match of a whole text, ignoring case.
  static bool Glob(const std::string& pattern, const std::string& text);

  Kind GetKind() const { return m_kind; }
  int Port() const { return m_port; }        // COM number or GPIB board
  int Address() const { return m_address; }  // GPIB primary address, -1 otherwise
  std::string PortName() const;              // "COM1", "GPIB0"
  std::string Name() const;                  // "COM1", "GPIB0::INTFC", "GPIB0::7::INSTR"

 private:
  ResourceAddress(Kind kind, int port, int address) : m_kind(kind), m_port(port), m_address(address) {}

  Kind m_kind;
  int m_port;
  int m_address;
};

}  // namespace cvn73100::io
