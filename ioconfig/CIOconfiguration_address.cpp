#include <string>

#include "ioconfig/AddressText.h"
#include "ioconfig/CIOconfiguration.h"
#include "ioconfig/ConfigurationChecks.h"
#include "platform/ScopeError.h"

namespace cvn73100 {

using ioconfig_checks::Reject;
using ioconfig_checks::Verify;
namespace text = address_text;

namespace {

constexpr std::size_t BAUD = SEARCH_CRITERIA::BAUD_RATE_INDEX;
constexpr std::size_t HANDSHAKE = SEARCH_CRITERIA::HANDSHAKE_INDEX;
constexpr std::size_t GPIB_PORT_LENGTH = 5;   // "GPIB" and one digit
constexpr std::size_t RS232_PORT_LENGTH = 4;  // "COM" and one digit

bool EndsWith(const std::string& s, const std::string& tail) {
  return s.size() >= tail.size() && s.compare(s.size() - tail.size(), tail.size(), tail) == 0;
}

// The digit after a port prefix as a number, or -1 when it is missing or not a digit.
std::int32_t PortDigit(const std::string& s, std::size_t position) {
  return position < s.size() ? text::DigitsOnly(s.substr(position, 1)) : -1;
}

}  // namespace

void CIOconfiguration::SetActiveAddressString(const std::string& strAddress) {
  const CIOconfiguration saved(*this);
  bool accepted = false;
  try {
    accepted = IsStringGPIB(strAddress) ? ParseGPIBAddress(strAddress) : ParseRS232Address(strAddress);
  } catch (const ScopeError&) {
    accepted = false;
  } catch (...) {
    *this = saved;
    throw;
  }
  if (!accepted) {
    *this = saved;
    Reject("false", "Let ActiveAddressString", "ErrorHandler");
  }
}

bool CIOconfiguration::ParseGPIBAddress(const std::string& strAddress) {
  StorePort(strAddress.substr(0, GPIB_PORT_LENGTH));
  // The two characters after the port name are skipped unread; the address number starts after them.
  const std::string remainder = strAddress.size() > GPIB_PORT_LENGTH + 2 ? strAddress.substr(GPIB_PORT_LENGTH + 2) : "";
  std::int32_t lAddress = -1;
  if (!remainder.empty()) {
    if (!text::IsDigit(remainder[0])) return false;
    lAddress = text::LeadingDigits(remainder, 0);
  }
  CheckGPIBAddress(lAddress);
  m_lActiveGPIBAddress = lAddress;
  ReformAddress();
  return true;
}

// The normalised text is what the address would read with its keywords in canonical order and
// spelling; the given text, once the ignored keywords and trailing separators are dropped, must be
// exactly as long. That one comparison refuses unknown keywords, leading zeros and doubled separators.
bool CIOconfiguration::ParseRS232Address(const std::string& strAddress) {
  std::string strText;
  for (char c : strAddress)
    if (c != ' ') strText += c;

  StorePort(strText.substr(0, RS232_PORT_LENGTH));
  std::string strNormal = m_strActivePort;

  const std::size_t separator = strText.find(ADDRESS_SEPARATOR, RS232_PORT_LENGTH);
  if (separator == text::npos) {
    // A bare port name means XON/XOFF, which DTR-only operation forbids.
    if (m_bDTROnly) return false;
    if (strText.size() > m_strActivePort.size()) return false;
    ActiveRow()[BAUD] = DEFAULT_BAUD_RATE;
    ActiveRow()[HANDSHAKE] = RS232_HandShake_XON_XOFF;
    m_strActiveAddress = strText;
    ReformAddress();
    return true;
  }

  const std::string strUpper = text::ToUpper(strText);
  const std::size_t keywords = separator + 2;

  std::int32_t lBaudRate = DEFAULT_BAUD_RATE;
  bool bBaudWritten = false;
  const std::string baudKeyword = text::ToUpper(BAUD_ADDRESS_KEYWORD);
  const std::size_t baud = strUpper.find(baudKeyword, keywords);
  if (baud != text::npos) {
    lBaudRate = text::LeadingDigits(strText, baud + baudKeyword.size());
    CheckBaudRate(lBaudRate);
    strNormal += std::string(ADDRESS_SEPARATOR) + BAUD_ADDRESS_KEYWORD + std::to_string(lBaudRate);
    bBaudWritten = true;
  }

  std::int32_t lHandshake = RS232_HandShake_XON_XOFF;
  const std::string handshakeKeyword = text::ToUpper(HANDSHAKE_ADDRESS_KEYWORD);
  const std::size_t handshake = strUpper.find(handshakeKeyword, keywords);
  if (handshake != text::npos) {
    const std::size_t valueStart = handshake + handshakeKeyword.size();
    const std::size_t valueEnd = strUpper.find(KEYWORD_SEPARATOR, valueStart);
    const std::string strValue =
        strUpper.substr(valueStart, valueEnd == text::npos ? text::npos : valueEnd - valueStart);
    strNormal += bBaudWritten ? KEYWORD_SEPARATOR : ADDRESS_SEPARATOR;
    if (strValue == HANDSHAKE_XON_XOFF && !m_bDTROnly)
      lHandshake = RS232_HandShake_XON_XOFF;
    else if (strValue == HANDSHAKE_DTR_DSR)
      lHandshake = RS232_HandShake_DTR_DSR;
    else
      return false;
    strNormal += HANDSHAKE_ADDRESS_KEYWORD + strValue;
  } else if (m_bDTROnly) {
    return false;
  }

  strText = StripRS232KeyWord(strText, SIZE_ADDRESS_KEYWORD);
  strText = StripRS232KeyWord(strText, PARITY_ADDRESS_KEYWORD);
  strText = StripRS232KeyWord(strText, STOP_ADDRESS_KEYWORD);
  if (EndsWith(strText, ADDRESS_SEPARATOR)) strText.resize(strText.size() - 2);
  if (EndsWith(strText, KEYWORD_SEPARATOR)) strText.resize(strText.size() - 1);
  if (strText.size() != strNormal.size()) return false;

  ActiveRow()[BAUD] = lBaudRate;
  ActiveRow()[HANDSHAKE] = lHandshake;
  m_strActiveAddress = strText;
  ReformAddress();
  return true;
}

std::string CIOconfiguration::StripRS232KeyWord(const std::string& strAddress, const std::string& strKeyWord) const {
  const std::size_t separator = strAddress.find(ADDRESS_SEPARATOR, RS232_PORT_LENGTH);
  Verify(separator != text::npos, "(lIndexSeparator > 0)", "StripRS232KeyWord");
  if (separator == text::npos) return strAddress;
  const std::size_t keyword = text::FindNoCase(strAddress, strKeyWord, separator);
  if (keyword == text::npos) return strAddress;
  // The separator in front of the keyword stays with the head.
  const std::string head = strAddress.substr(0, keyword);
  const std::size_t comma = strAddress.find(KEYWORD_SEPARATOR, keyword);
  return comma == text::npos ? head : head + strAddress.substr(comma + 1);
}

void CIOconfiguration::ReformAddress() {
  if (m_bIsGPIB) {
    m_strActiveAddress =
        m_strActivePort + ADDRESS_SEPARATOR + std::to_string(m_lActiveGPIBAddress) + ADDRESS_SEPARATOR + RESOURCE_CLASS;
    return;
  }
  const std::int32_t lBaudRate = ActiveRow()[BAUD];
  const std::int32_t lHandshake = ActiveRow()[HANDSHAKE];
  if (lHandshake != RS232_HandShake_XON_XOFF && lHandshake != RS232_HandShake_DTR_DSR)
    Reject("false", "ReformAddress", "Case Else");
  const bool bDTR = lHandshake == RS232_HandShake_DTR_DSR;
  std::string strAddress = m_strActivePort;
  if (bDTR || lBaudRate != DEFAULT_BAUD_RATE) strAddress += ADDRESS_SEPARATOR;
  if (lBaudRate != DEFAULT_BAUD_RATE) {
    strAddress += BAUD_ADDRESS_KEYWORD + std::to_string(lBaudRate);
    if (bDTR) strAddress += KEYWORD_SEPARATOR;
  }
  if (bDTR) strAddress += std::string(HANDSHAKE_ADDRESS_KEYWORD) + HANDSHAKE_DTR_DSR;
  m_strActiveAddress = strAddress;
}

std::string CIOconfiguration::ActiveAutomationServerAddress() const {
  if (m_bIsGPIB || text::FindNoCase(m_strActiveAddress, HANDSHAKE_ADDRESS_KEYWORD) != text::npos)
    return m_strActiveAddress;
  const bool hasSeparator = m_strActiveAddress.find(ADDRESS_SEPARATOR) != std::string::npos;
  return m_strActiveAddress + (hasSeparator ? KEYWORD_SEPARATOR : ADDRESS_SEPARATOR) + HANDSHAKE_ADDRESS_KEYWORD +
         HANDSHAKE_XON_XOFF;
}

bool CIOconfiguration::IsStringGPIB(const std::string& strAddress) const {
  if (text::StartsWithNoCase(strAddress, GPIB_PREFIX)) return true;
  if (text::StartsWithNoCase(strAddress, RS232_PREFIX)) return false;
  Reject(
      "(InStr(1, strAddress, GPIB_PREFIX, vbTextCompare) = 1 Or InStr(1, strAddress, RS232_PREFIX, vbTextCompare) = "
      "1)",
      "IsStringGPIB");
}

bool CIOconfiguration::IsValidGPIBPortString(const std::string& strPort) const {
  if (strPort.size() != GPIB_PORT_LENGTH || !text::StartsWithNoCase(strPort, GPIB_PREFIX)) return false;
  const std::int32_t lPort = PortDigit(strPort, GPIB_PORT_LENGTH - 1);
  if (lPort < 0) throw RuntimeError(ERR_TYPE_MISMATCH);
  return lPort >= GPIB_PORT::First && lPort <= GPIB_PORT::Last;
}

bool CIOconfiguration::IsValidRS232PortString(const std::string& strPort) const {
  if (strPort.size() != RS232_PORT_LENGTH || !text::StartsWithNoCase(strPort, RS232_PREFIX)) return false;
  const std::int32_t lPort = PortDigit(strPort, RS232_PORT_LENGTH - 1);
  if (lPort < 0) throw RuntimeError(ERR_TYPE_MISMATCH);
  return lPort >= RS232_PORT::First && lPort <= RS232_PORT::Last;
}

std::string CIOconfiguration::GPIBPortString(std::int32_t index) const {
  if (index < GPIB_PORT::First || index > GPIB_PORT::Last) Reject("false", "Get GPIBPortString");
  return GPIB_PREFIX + std::to_string(index);
}

std::string CIOconfiguration::RS232PortString(std::int32_t index) const {
  if (index < RS232_PORT::First || index > RS232_PORT::Last) Reject("false", "Get RS232PortString");
  return RS232_PREFIX + std::to_string(index);
}

std::int32_t CIOconfiguration::GPIBPortIndex(const std::string& strAddress) const {
  const std::int32_t lPort = PortDigit(text::ToUpper(strAddress), GPIB_PORT_LENGTH - 1);
  if (lPort < GPIB_PORT::First || lPort > GPIB_PORT::Last) Reject("false", "Get GPIBPortIndex");
  return lPort;
}

std::int32_t CIOconfiguration::RS232PortIndex(const std::string& strAddress) const {
  const std::int32_t lPort = PortDigit(text::ToUpper(strAddress), RS232_PORT_LENGTH - 1);
  if (lPort < RS232_PORT::First || lPort > RS232_PORT::Last) Reject("false", "Get RS232PortIndex");
  return lPort;
}

std::int32_t CIOconfiguration::GPIBInstrumentAddress(const std::string& strAddress) const {
  static constexpr const char* PROCEDURE = "Get GPIBInstrumentAddress";
  const auto address =
      text::ReadInstrumentAddress(strAddress, SEARCH_CRITERIA::FIRST_GPIB_INCLUDE, SEARCH_CRITERIA::LAST_GPIB_INCLUDE);
  switch (address.fault) {
    case text::InstrumentAddressFault::None:
      return address.value;
    case text::InstrumentAddressFault::NoSeparator:
      Reject("(lIndexSeparator > 0)", PROCEDURE);
    case text::InstrumentAddressFault::BadSeparator:
      Reject("(lIndexSeparator2 - lIndexSeparator = 3 Or lIndexSeparator2 - lIndexSeparator = 4)", PROCEDURE);
    case text::InstrumentAddressFault::OutOfRange:
      Reject("(lAddress >= SEARCH_CRITERIA.FIRST_GPIB_INCLUDE And lAddress <= SEARCH_CRITERIA.LAST_GPIB_INCLUDE)",
             PROCEDURE);
  }
  Reject("false", PROCEDURE, "Case Else");
}

}  // namespace cvn73100
