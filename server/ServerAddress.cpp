#include "server/ServerAddress.h"

#include <algorithm>
#include <cctype>
#include <charconv>

#include "platform/InstrumentIO.h"
#include "server/ServerError.h"

namespace cvn73100::server {
namespace {

std::string Upper(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::toupper(c); });
  return text;
}

std::string Trim(const std::string& text) {
  const auto begin = text.find_first_not_of(" \t");
  if (begin == std::string::npos) return {};
  return text.substr(begin, text.find_last_not_of(" \t") - begin + 1);
}

[[noreturn]] void Reject(const std::string& address, const std::string& why) {
  throw ServerError(SERVERERR_BAD_ADDRESS, "\"" + address + "\": " + why);
}

}  // namespace

ServerAddress ServerAddress::Parse(const std::string& address) {
  const std::string upper = Upper(Trim(address));
  ServerAddress result;
  if (upper.rfind("GPIB", 0) == 0) {
    result.resource = upper;
    return result;
  }
  if (upper.rfind("COM", 0) != 0) Reject(address, "neither a GPIB nor a COM address");

  const auto separator = upper.find("::");
  result.serial = true;
  result.resource = Trim(upper.substr(0, separator));
  if (result.resource.size() < 4 || !std::all_of(result.resource.begin() + 3, result.resource.end(),
                                                 [](unsigned char c) { return std::isdigit(c); })) {
    Reject(address, "no port number");
  }
  if (separator == std::string::npos) return result;

  std::string keywords = upper.substr(separator + 2);
  std::size_t start = 0;
  while (start <= keywords.size()) {
    const auto comma = std::min(keywords.find(',', start), keywords.size());
    const std::string item = Trim(keywords.substr(start, comma - start));
    start = comma + 1;
    if (item.empty()) continue;
    const auto equals = item.find('=');
    if (equals == std::string::npos) Reject(address, "keyword without a value: " + item);
    const std::string key = Trim(item.substr(0, equals));
    const std::string value = Trim(item.substr(equals + 1));
    if (key == "BAUD") {
      std::int32_t baud = 0;
      const auto [end, ec] = std::from_chars(value.data(), value.data() + value.size(), baud);
      if (ec != std::errc() || end != value.data() + value.size() || baud <= 0) Reject(address, "baud rate " + value);
      result.baud = baud;
    } else if (key == "HANDSHAKE") {
      if (value == "XON_XOFF") {
        result.handshake = RS232_HandShake_XON_XOFF;
      } else if (value == "DTR_DSR") {
        result.handshake = RS232_HandShake_DTR_DSR;
      } else if (value == "NONE") {
        result.handshake = RS232_HandShake_None;
      } else {
        Reject(address, "handshake " + value);
      }
    } else if (key != "SIZE" && key != "PARITY" && key != "STOP") {
      Reject(address, "unknown keyword " + key);
    }
  }
  return result;
}

}  // namespace cvn73100::server
