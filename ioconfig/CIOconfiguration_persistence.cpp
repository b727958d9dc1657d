#include <algorithm>
#include <string>

#include "ioconfig/CIOconfiguration.h"
#include "ioconfig/ConfigurationChecks.h"
#include "platform/ScopeError.h"

namespace cvn73100 {

using ioconfig_checks::Reject;
using ioconfig_checks::Verify;

namespace {

constexpr const char* KEY_INSTRUMENT_ID = "ActiveAddressInstrumentID";
constexpr const char* KEY_DTR_ONLY = "DTROnly";
constexpr const char* KEY_SEARCH_CRITERIA = "SearchCriteria";

constexpr std::size_t BAUD = SEARCH_CRITERIA::BAUD_RATE_INDEX;
constexpr std::size_t PARITY = SEARCH_CRITERIA::PARITY_INDEX;
constexpr std::size_t HANDSHAKE = SEARCH_CRITERIA::HANDSHAKE_INDEX;

// Installed and included flags of both port kinds, the include mask, and per serial port a 4-byte
// baud rate with one byte each of parity and handshake.
constexpr std::size_t iSize = 4 + 4 + 124 + 4 + 4 + 12 + 12;
static_assert(iSize == 164);

constexpr std::uint8_t BYTE_TRUE = 255;
constexpr std::uint8_t BYTE_FALSE = 0;

// Writes bytes in order and counts them; a count beyond the image is caught by the final check.
class ImageWriter {
 public:
  explicit ImageWriter(Bytes& image) : m_image(image) {}
  void Put(std::uint8_t value) {
    if (m_count < m_image.size()) m_image[m_count] = value;
    ++m_count;
  }
  void PutBool(bool value) { Put(value ? BYTE_TRUE : BYTE_FALSE); }
  // Least significant byte first; a negative rate keeps its two's-complement bytes.
  void PutLong(std::int32_t value) {
    auto bits = static_cast<std::uint32_t>(value);
    for (int i = 0; i < 4; ++i, bits /= 256) Put(static_cast<std::uint8_t>(bits % 256));
  }
  std::size_t Count() const { return m_count; }

 private:
  Bytes& m_image;
  std::size_t m_count = 0;
};

class ImageReader {
 public:
  explicit ImageReader(const Bytes& image) : m_image(image) {}
  std::uint8_t Get() {
    const std::uint8_t value = m_count < m_image.size() ? m_image[m_count] : 0;
    ++m_count;
    return value;
  }
  bool GetBool() { return Get() != 0; }
  std::int32_t GetLong() {
    std::uint32_t bits = 0;
    for (int i = 0; i < 4; ++i) bits |= static_cast<std::uint32_t>(Get()) << (8 * i);
    return static_cast<std::int32_t>(bits);
  }
  std::size_t Count() const { return m_count; }

 private:
  const Bytes& m_image;
  std::size_t m_count = 0;
};

template <class Table>
Variant BoolArray(const Table& table) {
  Variant::Array array;
  for (bool value : table) array.emplace_back(value);
  return Variant(std::move(array));
}

// One entry of the six-entry list: an array of exactly `count` elements.
const Variant::Array& Entry(const Variant& value, std::size_t count) {
  const Variant::Array& array = value.AsArray();
  if (array.size() != count) throw RuntimeError(ERR_SUBSCRIPT_OUT_OF_RANGE);
  return array;
}

template <class Table>
void ReadBools(const Variant& value, Table& table) {
  const Variant::Array& array = Entry(value, table.size());
  for (std::size_t i = 0; i < table.size(); ++i) table[i] = array[i].AsBool();
}

}  // namespace

void CIOconfiguration::WriteProperties(PropertyBag& bag) const {
  Bytes abyte(iSize);
  ImageWriter writer(abyte);
  for (bool value : m_abGPIBPortInstalled) writer.PutBool(value);
  for (bool value : m_abGPIBPortIncluded) writer.PutBool(value);
  for (const auto& row : m_abGPIBPortIncludes)
    for (bool value : row) writer.PutBool(value);
  for (bool value : m_abRS232PortInstalled) writer.PutBool(value);
  for (bool value : m_abRS232PortIncluded) writer.PutBool(value);
  // Parity and handshake are one byte each; only their low byte is kept.
  for (const auto& row : m_aiRS232Configuration) {
    writer.PutLong(row[BAUD]);
    writer.Put(static_cast<std::uint8_t>(row[PARITY]));
    writer.Put(static_cast<std::uint8_t>(row[HANDSHAKE]));
  }
  Verify(writer.Count() == iSize, "(iCount = iSize)", "WriteProperties");

  bag.WriteProperty(KEY_INSTRUMENT_ID, Variant(m_strActiveAddressInstrumentID), Variant(std::string()));
  bag.WriteProperty(KEY_DTR_ONLY, Variant(m_bDTROnly), Variant(false));
  bag.WriteProperty(KEY_SEARCH_CRITERIA, Variant(std::move(abyte)), Variant());
}

// Everything is read and checked before anything changes. DTROnly goes through its setter so that a
// configuration saved without an image still gets DTR/DSR on every port; an image then sets the
// handshakes it holds. A bag without "SearchCriteria" (a new control) keeps the current tables.
void CIOconfiguration::ReadProperties(const PropertyBag& bag) {
  const std::string instrumentID = bag.ReadString(KEY_INSTRUMENT_ID, std::string());
  const bool dtrOnly = bag.ReadBoolean(KEY_DTR_ONLY, false);
  const Variant image = bag.ReadProperty(KEY_SEARCH_CRITERIA, Variant());
  const Bytes* abyte = nullptr;
  if (!image.IsEmpty()) {
    abyte = &image.AsBytes();
    if (!Verify(abyte->size() == iSize, "((UBound(abyte) - LBound(abyte) + 1) = iSize)", "ReadProperties"))
      throw InvalidPropertyValue();
  }

  CIOconfiguration next(*this);
  next.SetActiveAddressInstrumentID(instrumentID);
  next.SetDTROnly(dtrOnly);
  if (abyte) {
    ImageReader reader(*abyte);
    for (bool& value : next.m_abGPIBPortInstalled) value = reader.GetBool();
    for (bool& value : next.m_abGPIBPortIncluded) value = reader.GetBool();
    for (auto& row : next.m_abGPIBPortIncludes)
      for (bool& value : row) value = reader.GetBool();
    for (bool& value : next.m_abRS232PortInstalled) value = reader.GetBool();
    for (bool& value : next.m_abRS232PortIncluded) value = reader.GetBool();
    for (auto& row : next.m_aiRS232Configuration) {
      row[BAUD] = reader.GetLong();
      row[PARITY] = reader.Get();
      row[HANDSHAKE] = reader.Get();
    }
    Verify(reader.Count() == iSize, "(iCount = iSize)", "ReadProperties");
    // The active serial port's row may have changed; its address follows, and a row the address
    // cannot express (a handshake of neither kind) refuses the whole read.
    next.ReformAddress();
  }
  *this = std::move(next);
}

Variant CIOconfiguration::DataAsVariant() const {
  Variant::Array list;
  list.push_back(BoolArray(m_abGPIBPortInstalled));
  list.push_back(BoolArray(m_abGPIBPortIncluded));
  Variant::Array mask;
  for (const auto& row : m_abGPIBPortIncludes) mask.push_back(BoolArray(row));
  list.emplace_back(std::move(mask));
  list.push_back(BoolArray(m_abRS232PortInstalled));
  list.push_back(BoolArray(m_abRS232PortIncluded));
  Variant::Array configuration;
  for (const auto& row : m_aiRS232Configuration) {
    Variant::Array settings;
    for (std::int32_t value : row) settings.emplace_back(value);
    configuration.emplace_back(std::move(settings));
  }
  list.emplace_back(std::move(configuration));
  return Variant(std::move(list));
}

void CIOconfiguration::SetDataAsVariant(const Variant& value) {
  static constexpr const char* PROCEDURE = "Let DataAsVariant";
  const Variant::Array& list = Entry(value, 6);

  CIOconfiguration next(*this);
  ReadBools(list[0], next.m_abGPIBPortInstalled);
  ReadBools(list[1], next.m_abGPIBPortIncluded);
  const Variant::Array& mask = Entry(list[2], next.m_abGPIBPortIncludes.size());
  for (std::size_t port = 0; port < mask.size(); ++port) ReadBools(mask[port], next.m_abGPIBPortIncludes[port]);
  ReadBools(list[3], next.m_abRS232PortInstalled);
  ReadBools(list[4], next.m_abRS232PortIncluded);

  const Variant::Array& configuration = Entry(list[5], next.m_aiRS232Configuration.size());
  for (std::size_t port = 0; port < configuration.size(); ++port) {
    const Variant::Array& settings = Entry(configuration[port], RS232_SETTING_COUNT);
    const std::int32_t lBaudRate = settings[BAUD].AsLong();
    if (std::find(std::begin(RS232_BAUD_RATES), std::end(RS232_BAUD_RATES), lBaudRate) == std::end(RS232_BAUD_RATES))
      Reject("false", PROCEDURE, "Select Case Baud Rate");
    const std::int32_t lParity = settings[PARITY].AsLong();
    if (lParity != DEFAULT_PARITY) Reject("false", PROCEDURE, "Select Case Parity");
    const std::int32_t lHandshake = settings[HANDSHAKE].AsLong();
    if (lHandshake != RS232_HandShake_XON_XOFF && lHandshake != RS232_HandShake_DTR_DSR)
      Reject("false", PROCEDURE, "Select Case Handshake");
    next.m_aiRS232Configuration[port] = {lBaudRate, lParity, lHandshake};
  }
  next.ReformAddress();
  *this = std::move(next);
}

}  // namespace cvn73100
