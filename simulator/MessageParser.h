#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace cvn73100::sim {

// One node of a command header: "CHANnel2" arrives as stem "CHANnel" and suffix 2 (-1 when none was given).
struct HeaderNode {
  std::string_view stem;
  int suffix = -1;
};

// One program data element. Views point into the message being parsed.
struct Argument {
  enum class Kind { Number, Characters, String, Block };
  Kind kind = Kind::Number;
  double number = 0.0;    // Number: the value with any unit multiplier applied ("2mV" -> 0.002)
  std::string_view text;  // Characters: the word; String: the contents with doubled quotes still doubled;
                          // Block: the data bytes; Number: the text as sent
};

// One program message unit: a header with its arguments.
struct ProgramUnit {
  bool common = false;  // "*IDN?" and friends; `commonName` holds "IDN"
  bool query = false;
  bool rooted = false;  // the header started with ':'
  std::string_view commonName;
  std::vector<HeaderNode> nodes;
  std::vector<Argument> args;
};

// Parses an IEEE 488.2 program message (its terminator already removed) unit by unit. Parsing stops at the
// first syntax error; the units before it are valid and may already have been executed by the caller.
class MessageParser {
 public:
  explicit MessageParser(std::string_view message) : text_(message) {}

  // Fills `unit` with the next unit. Returns false at the end of the message or on an error (see Error()).
  bool Next(ProgramUnit& unit);
  // The negative error number of the syntax error that stopped parsing, or 0.
  int Error() const { return error_; }

 private:
  bool ParseHeader(ProgramUnit& unit);
  bool ParseArgument(Argument& arg);
  bool ParseNumber(Argument& arg);
  bool ParseNonDecimal(Argument& arg);
  bool ParseBlock(Argument& arg);
  bool ParseString(Argument& arg);
  bool Fail(int code);
  void SkipSpace();
  bool AtEnd() const { return pos_ >= text_.size(); }
  char Peek() const { return text_[pos_]; }

  std::string_view text_;
  std::size_t pos_ = 0;
  int error_ = 0;
  bool done_ = false;
};

}  // namespace cvn73100::sim
