#pragma once
#include <array>
#include <cstdint>
#include <string>
#include <utility>

#include "ioconfig/IOConfigurationConstants.h"
#include "platform/InstrumentIO.h"
#include "platform/PropertyBag.h"
#include "platform/Variant.h"

namespace cvn73100 {

// The instrument ports of this computer and the port in use: which GPIB interfaces (GPIB0..GPIB3)
// and serial ports (COM1..COM4) exist and may be searched, the GPIB addresses the search visits,
// the serial settings of every serial port, and the active port with its canonical address string.
//
// Every rejected assignment reports its broken invariant to CDebug (class "CIOConfiguration"),
// raises the invalid-property-value error (380) and leaves the object exactly as it was.
// Indexed accessors raise the subscript-out-of-range error (9) for an index outside their table.
class CIOconfiguration {
 public:
  // A configuration at "GPIB0::7::INSTR": nothing installed, everything included, every serial
  // port at 9600 baud, parity 1, XON/XOFF.
  CIOconfiguration();

  // --- Per-port tables. GPIB ports are 0..3, serial ports 1..4, GPIB addresses 0..30. ---

  // The GPIB interface exists on this computer (set by FindAll).
  bool GPIBPortInstalled(std::int32_t port) const;
  void SetGPIBPortInstalled(std::int32_t port, bool value);
  // The instrument search visits the GPIB interface.
  bool GPIBPortIncluded(std::int32_t port) const;
  void SetGPIBPortIncluded(std::int32_t port, bool value);
  // The serial port exists on this computer (set by FindAll).
  bool RS232PortInstalled(std::int32_t port) const;
  void SetRS232PortInstalled(std::int32_t port, bool value);
  // The instrument search visits the serial port.
  bool RS232PortIncluded(std::int32_t port) const;
  void SetRS232PortIncluded(std::int32_t port, bool value);
  // The instrument search visits `address` on GPIB interface `port`.
  bool GPIBPortIncludes(std::int32_t port, std::int32_t address) const;
  void SetGPIBPortIncludes(std::int32_t port, std::int32_t address, bool value);
  // The last port detection listed a resource at `address` on GPIB interface `port`.
  bool GPIBInstrumentFound(std::int32_t port, std::int32_t address) const;

  // Serial settings of any port, stored without validation. Each Set rebuilds the active address;
  // a handshake other than XON/XOFF or DTR/DSR on the active serial port is rejected there.
  std::int32_t BaudRate(std::int32_t port) const;
  void SetBaudRate(std::int32_t port, std::int32_t value);
  std::int32_t Parity(std::int32_t port) const;
  void SetParity(std::int32_t port, std::int32_t value);
  std::int32_t Handshake(std::int32_t port) const;
  void SetHandshake(std::int32_t port, std::int32_t value);

  // True when a GPIB interface is installed or, failing that, a serial port.
  bool HasInstalledPorts() const;

  // --- The active port. ---

  // "GPIB0".."GPIB3" or "COM1".."COM4", upper case. Set takes any case and keeps the new port's
  // GPIB address or serial settings, rebuilding the address from them.
  const std::string& ActiveIOPort() const { return m_strActivePort; }
  void SetActiveIOPort(const std::string& strPort);
  bool ActivePortIsGPIB() const { return m_bIsGPIB; }
  // Instrument address 0..30 on the active GPIB port (reading it for a serial port is reported).
  std::int32_t ActivePortGPIBAddress() const;
  void SetActivePortGPIBAddress(std::int32_t lAddress);
  // Baud rate of the active serial port: 1200, 2400, 9600, 19200, 38400 or 57600. With a GPIB port
  // active the get returns 0 and the set changes nothing; both report the broken invariant.
  std::int32_t ActivePortBaudRate() const;
  void SetActivePortBaudRate(std::int32_t lBaudRate);
  // Handshake of the active serial port: RS232_HandShake_XON_XOFF or RS232_HandShake_DTR_DSR;
  // with a GPIB port active it behaves as ActivePortBaudRate does.
  std::int32_t ActivePortHandshake() const;
  void SetActivePortHandshake(std::int32_t lHandshake);
  // Serial ports may use DTR/DSR handshaking only. Turning it on sets every serial port's handshake
  // to DTR/DSR; turning it off changes nothing else.
  bool DTROnly() const { return m_bDTROnly; }
  void SetDTROnly(bool value);

  // --- Address strings. ---

  // The canonical active address, e.g. "GPIB0::7::INSTR", "COM1", "COM2::Baud=19200,Handshake=DTR_DSR".
  const std::string& ActiveAddressString() const { return m_strActiveAddress; }
  // Parses `strAddress` (any case; spaces ignored in a serial address) and adopts it.
  void SetActiveAddressString(const std::string& strAddress);
  // The active address as the automation server takes it: a serial address always names its handshake.
  std::string ActiveAutomationServerAddress() const;
  // Identification of the instrument last found at the active address; not part of the address.
  const std::string& ActiveAddressInstrumentID() const { return m_strActiveAddressInstrumentID; }
  void SetActiveAddressInstrumentID(const std::string& value);

  // True for a text beginning with "GPIB", false for one beginning with "COM"; anything else is rejected.
  bool IsStringGPIB(const std::string& strAddress) const;
  // "GPIB0".."GPIB3" in any case. A fifth character that is not a digit raises the type-mismatch error (13).
  bool IsValidGPIBPortString(const std::string& strPort) const;
  // "COM1".."COM4" in any case. A fourth character that is not a digit raises the type-mismatch error (13).
  bool IsValidRS232PortString(const std::string& strPort) const;
  // "GPIB" + index for 0..3; "COM" + index for 1..4; other indices are rejected.
  std::string GPIBPortString(std::int32_t index) const;
  std::string RS232PortString(std::int32_t index) const;
  // The port number in a port name or address ("GPIB2::5::INSTR" gives 2, "COM3::Baud=2400" gives 3).
  std::int32_t GPIBPortIndex(const std::string& strAddress) const;
  std::int32_t RS232PortIndex(const std::string& strAddress) const;
  // The one- or two-digit instrument address 0..30 between the first two "::" of a GPIB address.
  std::int32_t GPIBInstrumentAddress(const std::string& strAddress) const;

  // --- Port detection through the I/O library's manager. Listing failures propagate. ---

  // Refreshes the installed flags of every port and the whole found table.
  void FindAll(const IIOManagerSource& io);
  // Whether the manager lists any resource of GPIB interface `port`; refreshes that interface's found table.
  bool FindGPIBPort(std::int32_t port, const IIOManagerSource& io);
  // Whether the manager lists serial port `port`; any failure answers false.
  bool FindRS232Port(std::int32_t port, const IIOManagerSource& io) const;

  // --- Whole object. ---

  // Takes over every table and the active state of `ioconfiguration`; a null pointer is rejected.
  void Copy(const CIOconfiguration* ioconfiguration);
  void Copy(const CIOconfiguration& ioconfiguration) { Copy(&ioconfiguration); }

  // Writes "ActiveAddressInstrumentID", "DTROnly" and the 164-byte "SearchCriteria" image.
  void WriteProperties(PropertyBag& bag) const;
  // Reads the three keys back; without a "SearchCriteria" entry the tables keep their values.
  // An image of another length is rejected; a value of an unusable type raises type mismatch (13).
  // Nothing changes unless everything is accepted.
  void ReadProperties(const PropertyBag& bag);

  // The tables as six arrays: GPIB installed (4 Booleans), GPIB included (4), include mask
  // (4 arrays of 31), serial installed (4), serial included (4), serial settings (4 arrays of
  // 3 Longs: baud rate, parity, handshake), ports in ascending order.
  Variant DataAsVariant() const;
  // Replaces the tables from that shape. A value that is not an array raises type mismatch (13), one of
  // the wrong shape subscript out of range (9); a serial setting outside its values is rejected (380).
  void SetDataAsVariant(const Variant& value);

  bool operator==(const CIOconfiguration& other) const = default;

 private:
  using GPIBAddressRow = std::array<bool, GPIB_ADDRESS_COUNT>;
  using RS232Settings = std::array<std::int32_t, RS232_SETTING_COUNT>;

  // Validates and stores a port name without rebuilding the address.
  void StorePort(const std::string& text);
  static void CheckGPIBAddress(std::int32_t lAddress);
  static void CheckBaudRate(std::int32_t lBaudRate);
  static void CheckHandshake(std::int32_t lHandshake);
  // The address-string parsers behind SetActiveAddressString; false means the text is refused.
  bool ParseGPIBAddress(const std::string& strAddress);
  bool ParseRS232Address(const std::string& strAddress);
  // Removes one keyword and its value from a serial address.
  std::string StripRS232KeyWord(const std::string& strAddress, const std::string& strKeyWord) const;
  // Rebuilds the canonical address from the active port and its GPIB address or serial settings.
  void ReformAddress();
  RS232Settings& ActiveRow() { return m_aiRS232Configuration[static_cast<std::size_t>(m_lActivePortIndex - 1)]; }
  const RS232Settings& ActiveRow() const {
    return m_aiRS232Configuration[static_cast<std::size_t>(m_lActivePortIndex - 1)];
  }
  // Runs `change`; if it throws, every field is put back before the error goes on.
  template <class Change>
  void Transaction(Change&& change) {
    CIOconfiguration saved(*this);
    try {
      change();
    } catch (...) {
      *this = std::move(saved);
      throw;
    }
  }

  bool m_bDTROnly = false;
  std::string m_strActiveAddressInstrumentID;
  std::string m_strActiveAddress = DEFAULT_ADDRESS;
  std::int32_t m_lActiveGPIBAddress = 7;
  std::string m_strActivePort = "GPIB0";
  std::int32_t m_lActivePortIndex = GPIB_PORT::First;
  bool m_bIsGPIB = true;
  std::array<bool, GPIB_PORT_COUNT> m_abGPIBPortInstalled{};
  std::array<bool, RS232_PORT_COUNT> m_abRS232PortInstalled{};
  std::array<bool, GPIB_PORT_COUNT> m_abGPIBPortIncluded{};
  std::array<bool, RS232_PORT_COUNT> m_abRS232PortIncluded{};
  std::array<GPIBAddressRow, GPIB_PORT_COUNT> m_abGPIBInstrumentFound{};
  std::array<GPIBAddressRow, GPIB_PORT_COUNT> m_abGPIBPortIncludes{};
  std::array<RS232Settings, RS232_PORT_COUNT> m_aiRS232Configuration{};
};

}  // namespace cvn73100
