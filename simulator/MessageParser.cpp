#include "simulator/MessageParser.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <string>

#include "simulator/ErrorCode.h"
#include "simulator/Mnemonic.h"

namespace cvn73100::sim {
namespace {

// Caps that keep a hostile message from growing the unit's vectors without bound.
constexpr std::size_t kMaxNodes = 16;
constexpr std::size_t kMaxArgs = 64;
constexpr std::size_t kMaxMnemonic = 12;
constexpr std::size_t kMaxDigits = 255;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsAlpha(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool IsWordChar(char c) { return IsAlpha(c) || IsDigit(c) || c == '_'; }
// IEEE 488.2 white space: every control character and space except the LF that ends a message.
bool IsSpace(char c) { return static_cast<unsigned char>(c) <= 0x20 && c != '\n'; }

struct UnitSuffix {
  std::string_view name;
  int exponent;  // the power of ten the unit stands for
};
// Units a host may append to a number; SCPI reads a leading M as milli, except in MHZ.
constexpr UnitSuffix kUnits[] = {
    {"V", 0},   {"MV", -3}, {"UV", -6},  {"KV", 3}, {"S", 0},   {"MS", -3},
    {"US", -6}, {"NS", -9}, {"PS", -12}, {"HZ", 0}, {"KHZ", 3}, {"MHZ", 6},
};

bool EqualsUpper(std::string_view word, std::string_view upper) {
  if (word.size() != upper.size()) return false;
  for (std::size_t i = 0; i < word.size(); ++i) {
    char c = word[i];
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    if (c != upper[i]) return false;
  }
  return true;
}

}  // namespace

bool MessageParser::Fail(int code) {
  error_ = code;
  return false;
}

void MessageParser::SkipSpace() {
  while (!AtEnd() && IsSpace(Peek())) ++pos_;
}

bool MessageParser::Next(ProgramUnit& unit) {
  if (done_ || error_ != 0) return false;
  unit.common = unit.query = unit.rooted = false;
  unit.commonName = {};
  unit.nodes.clear();
  unit.args.clear();
  SkipSpace();
  if (AtEnd()) {
    done_ = true;
    return false;
  }
  if (!ParseHeader(unit)) return false;
  if (!AtEnd() && !IsSpace(Peek()) && Peek() != ';') return Fail(kHeaderSeparatorError);
  SkipSpace();
  if (!AtEnd() && Peek() != ';') {
    for (;;) {
      if (unit.args.size() == kMaxArgs) return Fail(kParameterNotAllowed);
      unit.args.emplace_back();
      if (!ParseArgument(unit.args.back())) return false;
      SkipSpace();
      if (AtEnd() || Peek() != ',') break;
      ++pos_;
      SkipSpace();
    }
  }
  SkipSpace();
  if (AtEnd()) {
    done_ = true;
  } else if (Peek() == ';') {
    ++pos_;
  } else {
    return Fail(kInvalidSeparator);
  }
  return true;
}

bool MessageParser::ParseHeader(ProgramUnit& unit) {
  if (Peek() == '*') {
    ++pos_;
    const std::size_t start = pos_;
    while (!AtEnd() && IsAlpha(Peek())) ++pos_;
    if (pos_ == start) return Fail(kSyntaxError);
    if (pos_ - start > kMaxMnemonic) return Fail(kProgramMnemonicTooLong);
    unit.common = true;
    unit.commonName = text_.substr(start, pos_ - start);
  } else {
    if (Peek() == ':') {
      unit.rooted = true;
      ++pos_;
    }
    for (;;) {
      if (AtEnd() || !IsAlpha(Peek())) return Fail(kSyntaxError);
      const std::size_t start = pos_;
      while (!AtEnd() && IsWordChar(Peek())) ++pos_;
      const SuffixedWord word = SplitSuffix(text_.substr(start, pos_ - start));
      if (word.stem.size() > kMaxMnemonic) return Fail(kProgramMnemonicTooLong);
      if (unit.nodes.size() == kMaxNodes) return Fail(kUndefinedHeader);
      unit.nodes.push_back({word.stem, word.suffix});
      if (AtEnd() || Peek() != ':') break;
      ++pos_;
    }
  }
  if (!AtEnd() && Peek() == '?') {
    unit.query = true;
    ++pos_;
  }
  return true;
}

bool MessageParser::ParseArgument(Argument& arg) {
  if (AtEnd()) return Fail(kMissingParameter);  // an argument list ending in a comma
  const char c = Peek();
  if (c == '"' || c == '\'') return ParseString(arg);
  if (c == '#') {
    const char kind = pos_ + 1 < text_.size() ? text_[pos_ + 1] : '\0';
    if (kind == 'H' || kind == 'h' || kind == 'Q' || kind == 'q' || kind == 'B' || kind == 'b') {
      return ParseNonDecimal(arg);
    }
    return ParseBlock(arg);
  }
  if (IsDigit(c) || c == '+' || c == '-' || c == '.') return ParseNumber(arg);
  if (IsAlpha(c)) {
    const std::size_t start = pos_;
    while (!AtEnd() && IsWordChar(Peek())) ++pos_;
    if (pos_ - start > kMaxMnemonic) return Fail(kCharacterDataTooLong);
    arg.kind = Argument::Kind::Characters;
    arg.text = text_.substr(start, pos_ - start);
    return true;
  }
  if (c == ',') return Fail(kMissingParameter);
  return Fail(kInvalidCharacter);
}

bool MessageParser::ParseNumber(Argument& arg) {
  const std::size_t start = pos_;
  if (Peek() == '+' || Peek() == '-') ++pos_;
  std::size_t digits = 0;
  while (!AtEnd() && IsDigit(Peek())) ++pos_, ++digits;
  if (!AtEnd() && Peek() == '.') {
    ++pos_;
    while (!AtEnd() && IsDigit(Peek())) ++pos_, ++digits;
  }
  if (digits == 0) return Fail(kNumericDataError);
  if (digits > kMaxDigits) return Fail(kTooManyDigits);
  if (!AtEnd() && (Peek() == 'e' || Peek() == 'E')) {
    ++pos_;
    if (!AtEnd() && (Peek() == '+' || Peek() == '-')) ++pos_;
    std::size_t expDigits = 0;
    while (!AtEnd() && IsDigit(Peek())) ++pos_, ++expDigits;
    if (expDigits == 0) return Fail(kNumericDataError);
    if (expDigits > 6) return Fail(kExponentTooLarge);
  }
  arg.kind = Argument::Kind::Number;
  arg.text = text_.substr(start, pos_ - start);
  std::string_view digitsText = arg.text;
  if (digitsText.front() == '+') digitsText.remove_prefix(1);
  const auto [end, ec] = std::from_chars(digitsText.data(), digitsText.data() + digitsText.size(), arg.number);
  if (ec == std::errc::result_out_of_range) return Fail(kExponentTooLarge);
  if (ec != std::errc() || end != digitsText.data() + digitsText.size()) return Fail(kNumericDataError);

  // An optional unit, possibly after white space ("100 mV").
  const std::size_t afterNumber = pos_;
  SkipSpace();
  if (!AtEnd() && IsAlpha(Peek())) {
    const std::size_t unitStart = pos_;
    while (!AtEnd() && IsAlpha(Peek())) ++pos_;
    const std::string_view unit = text_.substr(unitStart, pos_ - unitStart);
    const UnitSuffix* found = nullptr;
    for (const UnitSuffix& u : kUnits) {
      if (EqualsUpper(unit, u.name)) found = &u;
    }
    if (found == nullptr) return Fail(kInvalidSuffix);
    // Dividing by an exact power of ten keeps "20us" at the double nearest 2E-05; multiplying by 1e-6 would not.
    const double scale = std::pow(10.0, std::abs(found->exponent));
    arg.number = found->exponent < 0 ? arg.number / scale : arg.number * scale;
    if (!std::isfinite(arg.number)) return Fail(kExponentTooLarge);
  } else {
    pos_ = afterNumber;
  }
  if (!AtEnd() && !IsSpace(Peek()) && Peek() != ',' && Peek() != ';') return Fail(kInvalidCharacterInNumber);
  return true;
}

bool MessageParser::ParseNonDecimal(Argument& arg) {
  const std::size_t start = pos_;
  const char kind = static_cast<char>(text_[pos_ + 1] | 0x20);
  const unsigned base = kind == 'h' ? 16 : kind == 'q' ? 8 : 2;
  pos_ += 2;
  std::uint64_t value = 0;
  std::size_t digits = 0;
  for (; !AtEnd(); ++pos_, ++digits) {
    const char c = static_cast<char>(Peek() | 0x20);
    unsigned d = 0;
    if (IsDigit(c)) {
      d = static_cast<unsigned>(c - '0');
    } else if (c >= 'a' && c <= 'f') {
      d = static_cast<unsigned>(c - 'a' + 10);
    } else {
      break;
    }
    if (d >= base) return Fail(kInvalidCharacterInNumber);
    if (value > (UINT64_MAX - d) / base) return Fail(kTooManyDigits);
    value = value * base + d;
  }
  if (digits == 0) return Fail(kInvalidCharacterInNumber);
  if (!AtEnd() && !IsSpace(Peek()) && Peek() != ',' && Peek() != ';') return Fail(kInvalidCharacterInNumber);
  arg.kind = Argument::Kind::Number;
  arg.number = static_cast<double>(value);
  arg.text = text_.substr(start, pos_ - start);
  return true;
}

bool MessageParser::ParseBlock(Argument& arg) {
  ++pos_;  // '#'
  if (AtEnd() || !IsDigit(Peek())) return Fail(kInvalidBlockData);
  const std::size_t lengthDigits = static_cast<std::size_t>(Peek() - '0');
  ++pos_;
  arg.kind = Argument::Kind::Block;
  if (lengthDigits == 0) {  // indefinite length: the data runs to the end of the message
    arg.text = text_.substr(pos_);
    pos_ = text_.size();
    return true;
  }
  if (text_.size() - pos_ < lengthDigits) return Fail(kInvalidBlockData);
  std::uint64_t length = 0;
  for (std::size_t i = 0; i < lengthDigits; ++i, ++pos_) {
    if (!IsDigit(Peek())) return Fail(kInvalidBlockData);
    length = length * 10 + static_cast<std::uint64_t>(Peek() - '0');
  }
  // The header may claim more than arrived; the data is only ever viewed, never allocated from the claim.
  if (length > text_.size() - pos_) return Fail(kInvalidBlockData);
  arg.text = text_.substr(pos_, static_cast<std::size_t>(length));
  pos_ += static_cast<std::size_t>(length);
  return true;
}

bool MessageParser::ParseString(Argument& arg) {
  const char quote = Peek();
  const std::size_t start = ++pos_;
  for (;;) {
    const std::size_t close = text_.find(quote, pos_);
    if (close == std::string_view::npos) return Fail(kInvalidStringData);
    if (close + 1 < text_.size() && text_[close + 1] == quote) {  // a doubled quote stands for one quote
      pos_ = close + 2;
      continue;
    }
    arg.kind = Argument::Kind::String;
    arg.text = text_.substr(start, close - start);
    pos_ = close + 1;
    return true;
  }
}

}  // namespace cvn73100::sim
