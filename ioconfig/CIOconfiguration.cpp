#include "ioconfig/CIOconfiguration.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "ioconfig/AddressText.h"
#include "ioconfig/ConfigurationChecks.h"
#include "platform/ScopeError.h"

namespace cvn73100 {

using ioconfig_checks::Reject;
using ioconfig_checks::Verify;

namespace {

constexpr std::size_t BAUD = SEARCH_CRITERIA::BAUD_RATE_INDEX;
constexpr std::size_t PARITY = SEARCH_CRITERIA::PARITY_INDEX;
constexpr std::size_t HANDSHAKE = SEARCH_CRITERIA::HANDSHAKE_INDEX;

std::size_t GPIBSlot(std::int32_t port) {
  if (port < GPIB_PORT::First || port > GPIB_PORT::Last) throw RuntimeError(ERR_SUBSCRIPT_OUT_OF_RANGE);
  return static_cast<std::size_t>(port - GPIB_PORT::First);
}

std::size_t RS232Slot(std::int32_t port) {
  if (port < RS232_PORT::First || port > RS232_PORT::Last) throw RuntimeError(ERR_SUBSCRIPT_OUT_OF_RANGE);
  return static_cast<std::size_t>(port - RS232_PORT::First);
}

std::size_t AddressSlot(std::int32_t address) {
  if (address < SEARCH_CRITERIA::FIRST_GPIB_INCLUDE || address > SEARCH_CRITERIA::LAST_GPIB_INCLUDE)
    throw RuntimeError(ERR_SUBSCRIPT_OUT_OF_RANGE);
  return static_cast<std::size_t>(address - SEARCH_CRITERIA::FIRST_GPIB_INCLUDE);
}

std::shared_ptr<IIOManager> Manager(const IIOManagerSource& io) {
  auto manager = io.IOManager();
  if (!manager) throw RuntimeError(ERR_INVALID_PROCEDURE_CALL);
  return manager;
}

bool Contains(const std::string& name, const std::string& portName) {
  return address_text::FindNoCase(name, portName) != address_text::npos;
}

// Marks in `found` the instrument address a resource name holds; interface resources hold none.
template <class Row>
void MarkFound(const std::string& name, Row& found) {
  const auto address = address_text::ReadInstrumentAddress(name, SEARCH_CRITERIA::FIRST_GPIB_INCLUDE,
                                                           SEARCH_CRITERIA::LAST_GPIB_INCLUDE);
  if (address.fault == address_text::InstrumentAddressFault::None) found[AddressSlot(address.value)] = true;
}

}  // namespace

CIOconfiguration::CIOconfiguration() {
  m_abGPIBPortIncluded.fill(true);
  m_abRS232PortIncluded.fill(true);
  for (auto& row : m_abGPIBPortIncludes) row.fill(true);
  for (auto& row : m_aiRS232Configuration) row = {DEFAULT_BAUD_RATE, DEFAULT_PARITY, DEFAULT_HANDSHAKE};
}

// --- Per-port tables ---

bool CIOconfiguration::GPIBPortInstalled(std::int32_t port) const { return m_abGPIBPortInstalled[GPIBSlot(port)]; }
void CIOconfiguration::SetGPIBPortInstalled(std::int32_t port, bool value) {
  m_abGPIBPortInstalled[GPIBSlot(port)] = value;
}
bool CIOconfiguration::GPIBPortIncluded(std::int32_t port) const { return m_abGPIBPortIncluded[GPIBSlot(port)]; }
void CIOconfiguration::SetGPIBPortIncluded(std::int32_t port, bool value) {
  m_abGPIBPortIncluded[GPIBSlot(port)] = value;
}
bool CIOconfiguration::RS232PortInstalled(std::int32_t port) const { return m_abRS232PortInstalled[RS232Slot(port)]; }
void CIOconfiguration::SetRS232PortInstalled(std::int32_t port, bool value) {
  m_abRS232PortInstalled[RS232Slot(port)] = value;
}
bool CIOconfiguration::RS232PortIncluded(std::int32_t port) const { return m_abRS232PortIncluded[RS232Slot(port)]; }
void CIOconfiguration::SetRS232PortIncluded(std::int32_t port, bool value) {
  m_abRS232PortIncluded[RS232Slot(port)] = value;
}
bool CIOconfiguration::GPIBPortIncludes(std::int32_t port, std::int32_t address) const {
  return m_abGPIBPortIncludes[GPIBSlot(port)][AddressSlot(address)];
}
void CIOconfiguration::SetGPIBPortIncludes(std::int32_t port, std::int32_t address, bool value) {
  m_abGPIBPortIncludes[GPIBSlot(port)][AddressSlot(address)] = value;
}
bool CIOconfiguration::GPIBInstrumentFound(std::int32_t port, std::int32_t address) const {
  return m_abGPIBInstrumentFound[GPIBSlot(port)][AddressSlot(address)];
}

std::int32_t CIOconfiguration::BaudRate(std::int32_t port) const {
  return m_aiRS232Configuration[RS232Slot(port)][BAUD];
}
void CIOconfiguration::SetBaudRate(std::int32_t port, std::int32_t value) {
  const std::size_t slot = RS232Slot(port);
  Transaction([&] {
    m_aiRS232Configuration[slot][BAUD] = value;
    ReformAddress();
  });
}
std::int32_t CIOconfiguration::Parity(std::int32_t port) const {
  return m_aiRS232Configuration[RS232Slot(port)][PARITY];
}
void CIOconfiguration::SetParity(std::int32_t port, std::int32_t value) {
  const std::size_t slot = RS232Slot(port);
  Transaction([&] {
    m_aiRS232Configuration[slot][PARITY] = value;
    ReformAddress();
  });
}
std::int32_t CIOconfiguration::Handshake(std::int32_t port) const {
  return m_aiRS232Configuration[RS232Slot(port)][HANDSHAKE];
}
void CIOconfiguration::SetHandshake(std::int32_t port, std::int32_t value) {
  const std::size_t slot = RS232Slot(port);
  Transaction([&] {
    m_aiRS232Configuration[slot][HANDSHAKE] = value;
    ReformAddress();
  });
}

bool CIOconfiguration::HasInstalledPorts() const {
  const auto installed = [](bool b) { return b; };
  if (std::any_of(m_abGPIBPortInstalled.begin(), m_abGPIBPortInstalled.end(), installed)) return true;
  return std::any_of(m_abRS232PortInstalled.begin(), m_abRS232PortInstalled.end(), installed);
}

// --- Active port ---

void CIOconfiguration::SetActiveIOPort(const std::string& strPort) {
  Transaction([&] {
    StorePort(strPort);
    ReformAddress();
  });
}

void CIOconfiguration::StorePort(const std::string& text) {
  static constexpr const char* PROCEDURE = "Let ActiveIOPort";
  const std::string strPort = address_text::ToUpper(text);
  if (IsStringGPIB(strPort)) {
    if (!Verify(strPort.size() == 5, "(Len(strPort) = Len(GPIB_PREFIX) + 1)", PROCEDURE)) throw InvalidPropertyValue();
    const std::int32_t lPort = address_text::DigitsOnly(strPort.substr(4, 1));
    if (!Verify(lPort >= GPIB_PORT::First && lPort <= GPIB_PORT::Last,
                "(lPort >= GPIB_PORT.First And lPort <= GPIB_PORT.Last)", PROCEDURE))
      throw InvalidPropertyValue();
    m_lActivePortIndex = lPort;
    m_strActivePort = strPort;
    m_bIsGPIB = true;
  } else {
    if (!Verify(strPort.size() == 4, "(Len(strPort) = Len(RS232_PREFIX) + 1)", PROCEDURE)) throw InvalidPropertyValue();
    // A non-digit reads as 0, which is no serial port.
    const std::int32_t lPort = std::max(address_text::DigitsOnly(strPort.substr(3, 1)), 0);
    if (!Verify(lPort >= RS232_PORT::First && lPort <= RS232_PORT::Last,
                "(lPort >= RS232_PORT.First And lPort <= RS232_PORT.Last)", PROCEDURE))
      throw InvalidPropertyValue();
    m_lActivePortIndex = lPort;
    m_strActivePort = strPort;
    m_bIsGPIB = false;
  }
}

void CIOconfiguration::CheckGPIBAddress(std::int32_t lAddress) {
  if (lAddress < SEARCH_CRITERIA::FIRST_GPIB_INCLUDE || lAddress > SEARCH_CRITERIA::LAST_GPIB_INCLUDE)
    Reject("(lAddress >= SEARCH_CRITERIA.FIRST_GPIB_INCLUDE And lAddress <= SEARCH_CRITERIA.LAST_GPIB_INCLUDE)",
           "ActivePortGPIBAddress");
}

void CIOconfiguration::CheckBaudRate(std::int32_t lBaudRate) {
  if (std::find(std::begin(RS232_BAUD_RATES), std::end(RS232_BAUD_RATES), lBaudRate) == std::end(RS232_BAUD_RATES))
    Reject(
        "(lBaudRate = 1200 Or lBaudRate = 2400 Or lBaudRate = 9600 Or lBaudRate = 19200 Or lBaudRate = 38400 Or "
        "lBaudRate = 57600)",
        "ActivePortBaudRate");
}

void CIOconfiguration::CheckHandshake(std::int32_t lHandshake) {
  if (lHandshake != RS232_HandShake_DTR_DSR && lHandshake != RS232_HandShake_XON_XOFF)
    Reject(
        "(lHandshake = CorvaneIOUtilsLib.RS232_HandShake_DTR_DSR Or lHandshake = "
        "CorvaneIOUtilsLib.RS232_HandShake_XON_XOFF)",
        "ActivePortHandshake");
}

std::int32_t CIOconfiguration::ActivePortGPIBAddress() const {
  Verify(m_bIsGPIB, "(m_bIsGPIB = True)", "ActivePortGPIBAddress");
  return m_lActiveGPIBAddress;
}

void CIOconfiguration::SetActivePortGPIBAddress(std::int32_t lAddress) {
  CheckGPIBAddress(lAddress);
  Transaction([&] {
    m_lActiveGPIBAddress = lAddress;
    ReformAddress();
  });
}

// With a GPIB port active there is no serial row to read or write: the broken invariant is reported
// and nothing else happens, so no other port's settings are touched by mistake.
std::int32_t CIOconfiguration::ActivePortBaudRate() const {
  if (!Verify(!m_bIsGPIB, "(m_bIsGPIB = False)", "ActivePortBaudRate")) return 0;
  return ActiveRow()[BAUD];
}

void CIOconfiguration::SetActivePortBaudRate(std::int32_t lBaudRate) {
  CheckBaudRate(lBaudRate);
  if (!Verify(!m_bIsGPIB, "(m_bIsGPIB = False)", "ActivePortBaudRate")) return;
  Transaction([&] {
    ActiveRow()[BAUD] = lBaudRate;
    ReformAddress();
  });
}

std::int32_t CIOconfiguration::ActivePortHandshake() const {
  if (!Verify(!m_bIsGPIB, "(m_bIsGPIB = False)", "ActivePortHandshake")) return 0;
  return ActiveRow()[HANDSHAKE];
}

void CIOconfiguration::SetActivePortHandshake(std::int32_t lHandshake) {
  CheckHandshake(lHandshake);
  if (!Verify(!m_bIsGPIB, "(m_bIsGPIB = False)", "ActivePortHandshake")) return;
  Transaction([&] {
    ActiveRow()[HANDSHAKE] = lHandshake;
    ReformAddress();
  });
}

void CIOconfiguration::SetDTROnly(bool value) {
  if (value == m_bDTROnly) return;
  Transaction([&] {
    m_bDTROnly = value;
    if (value)
      for (std::int32_t port = RS232_PORT::First; port <= RS232_PORT::Last; ++port)
        SetHandshake(port, RS232_HandShake_DTR_DSR);
  });
}

void CIOconfiguration::SetActiveAddressInstrumentID(const std::string& value) {
  if (value != m_strActiveAddressInstrumentID) m_strActiveAddressInstrumentID = value;
}

// --- Port detection ---

void CIOconfiguration::FindAll(const IIOManagerSource& io) {
  const auto manager = Manager(io);

  decltype(m_abRS232PortInstalled) serialInstalled{};
  for (const std::string& name : manager->FindResources("COM*"))
    for (std::int32_t port = RS232_PORT::First; port <= RS232_PORT::Last; ++port)
      if (Contains(name, RS232PortString(port))) serialInstalled[RS232Slot(port)] = true;

  decltype(m_abGPIBPortInstalled) gpibInstalled{};
  decltype(m_abGPIBInstrumentFound) found{};
  for (const std::string& name : manager->FindResources("GPIB*")) {
    for (std::int32_t port = GPIB_PORT::First; port <= GPIB_PORT::Last; ++port) {
      if (!Contains(name, GPIBPortString(port))) continue;
      gpibInstalled[GPIBSlot(port)] = true;
      MarkFound(name, found[GPIBSlot(port)]);
    }
  }

  m_abRS232PortInstalled = serialInstalled;
  m_abGPIBPortInstalled = gpibInstalled;
  m_abGPIBInstrumentFound = found;
}

bool CIOconfiguration::FindGPIBPort(std::int32_t port, const IIOManagerSource& io) {
  Verify(port >= GPIB_PORT::First && port <= GPIB_PORT::Last,
         "(gpib_portFind >= GPIB_PORT.First And gpib_portFind <= GPIB_PORT.Last)", "FindGPIBPort");
  const std::size_t slot = GPIBSlot(port);
  const std::string portName = GPIBPortString(port);
  const auto manager = Manager(io);

  bool listed = false;
  GPIBAddressRow found{};
  for (const std::string& name : manager->FindResources(portName)) {
    if (!Contains(name, portName)) continue;
    listed = true;
    MarkFound(name, found);
  }
  m_abGPIBInstrumentFound[slot] = found;
  return listed;
}

bool CIOconfiguration::FindRS232Port(std::int32_t port, const IIOManagerSource& io) const {
  Verify(port >= RS232_PORT::First && port <= RS232_PORT::Last,
         "(rs232_portFind >= RS232_PORT.First And rs232_portFind <= RS232_PORT.Last)", "FindRS232Port");
  const std::string portName = RS232_PREFIX + std::to_string(port);
  try {
    const auto manager = Manager(io);
    const std::vector<std::string> names = manager->FindResources(portName);
    return std::any_of(names.begin(), names.end(), [&](const std::string& name) { return Contains(name, portName); });
  } catch (const std::exception&) {
    return false;
  }
}

// --- Whole object ---

// The other configuration's address is always its own canonical form, so its fields are taken over
// as they stand. Parsing its address again would judge it under this object's DTR-only rule and
// refuse states the other object holds legitimately (a serial port set to a rate by BaudRate).
void CIOconfiguration::Copy(const CIOconfiguration* ioconfiguration) {
  if (!Verify(ioconfiguration != nullptr, "(Not (ioconfiguration Is Nothing))", "Copy")) throw InvalidPropertyValue();
  if (ioconfiguration != this) *this = *ioconfiguration;
}

}  // namespace cvn73100
