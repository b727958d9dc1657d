#pragma once
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <span>
#include <string>

#include "platform/Enumerations.h"
#include "platform/ScpiMnemonics.h"
#include "server/ServerError.h"

namespace cvn73100::server::scpi {

// The keyword tables and their lookups are shared with everything else that speaks to the instrument.
using namespace ::cvn73100::scpi;

// Program-data text for the instrument, and the checks that keep values inside their enumerations.

inline std::string Integer(std::int64_t value) { return std::to_string(value); }

// The shortest text that reads back as `value`; refuses infinities and NaN.
inline std::string Real(double value) {
  if (!std::isfinite(value)) throw ServerError(SERVERERR_BAD_ARGUMENT, "a number that is not finite");
  char buffer[32];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  return std::string(buffer, result.ptr);
}

template <class E>
bool IsMember(std::int64_t value, std::span<const E> members) {
  return std::any_of(members.begin(), members.end(), [value](E m) { return static_cast<std::int64_t>(m) == value; });
}

template <class E>
std::string Argument(E value, std::span<const E> members, const char* what) {
  if (!IsMember(static_cast<std::int64_t>(value), members)) {
    throw ServerError(SERVERERR_BAD_ARGUMENT, std::string(what) + " " + Integer(static_cast<std::int64_t>(value)));
  }
  return Integer(static_cast<std::int64_t>(value));
}

template <class E>
E Reply(std::int32_t value, std::span<const E> members, const char* what) {
  if (!IsMember(value, members)) {
    throw ServerError(SERVERERR_BAD_REPLY, std::string("the instrument's ") + what + " " + Integer(value));
  }
  return static_cast<E>(value);
}

// The long form of `value`'s keyword, the form sent to the instrument.
inline std::string Keyword(std::int64_t value, std::span<const Mnemonic> table, const char* what) {
  const Mnemonic* found = FindValue(table, value);
  if (found == nullptr) throw ServerError(SERVERERR_BAD_ARGUMENT, std::string(what) + " " + Integer(value));
  return std::string(found->keyword);
}

// The value a reply names in long or short form, any case.
template <class E>
E KeywordReply(const std::string& reply, std::span<const Mnemonic> table, const char* what) {
  const auto begin = reply.find_first_not_of(" \t\r\n");
  const auto end = reply.find_last_not_of(" \t\r\n");
  const std::string word = begin == std::string::npos ? std::string() : reply.substr(begin, end - begin + 1);
  const Mnemonic* found = FindKeyword(table, word);
  if (found == nullptr) {
    throw ServerError(SERVERERR_BAD_REPLY, std::string("the instrument's ") + what + " \"" + word.substr(0, 40) + "\"");
  }
  return static_cast<E>(found->value);
}

// ":CHANnel<n>" for analog channel 1..4.
inline std::string ChannelNode(std::int32_t channel) {
  if (channel < Cvn73100_Channel_1 || channel > Cvn73100_Channel_4) {
    throw ServerError(SERVERERR_BAD_ARGUMENT, "analog channel " + Integer(channel));
  }
  return ":CHANnel" + Integer(channel);
}

// ":DIGital<n>" for logic bit 0..15.
inline std::string DigitalNode(std::int32_t bit) {
  if (bit < Cvn73100_Logic_D0 || bit > Cvn73100_Logic_D15) {
    throw ServerError(SERVERERR_BAD_ARGUMENT, "logic bit " + Integer(bit));
  }
  return ":DIGital" + Integer(bit);
}

}  // namespace cvn73100::server::scpi
