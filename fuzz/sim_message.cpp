// Program messages into the simulated instrument, as a host on any of its lines may send them: the parser on
// its own (every view it hands out lies inside the message), then the whole instrument (framing, parsing,
// execution, replies), which must still answer afterwards.
// Input: the bytes the host writes, with END after the last one.
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/FuzzInput.h"
#include "simulator/Instrument.h"
#include "simulator/MessageParser.h"

using namespace cvn73100::sim;
using cvn73100::fuzz::Require;

namespace {

bool Inside(std::string_view view, std::string_view message) {
  if (view.empty()) return true;
  return view.data() >= message.data() && view.data() + view.size() <= message.data() + message.size();
}

void Drain(Instrument& scope) {
  std::uint8_t sink[4096];
  bool end = false;
  while (scope.Read(sink, sizeof sink, std::chrono::milliseconds(0), end) > 0) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view message(reinterpret_cast<const char*>(data), size);
  MessageParser parser(message);
  ProgramUnit unit;
  while (parser.Next(unit)) {
    Require(Inside(unit.commonName, message), "a common name outside the message");
    for (const HeaderNode& node : unit.nodes) Require(Inside(node.stem, message), "a header outside the message");
    for (const Argument& arg : unit.args) Require(Inside(arg.text, message), "an argument outside the message");
  }
  Require(parser.Error() <= 0, "a positive parser error");

  Instrument scope;
  scope.Write(data, size, true);
  Drain(scope);
  const std::string idn = scope.Query("*IDN?", std::chrono::seconds(1));
  Require(!idn.empty(), "the instrument stopped answering");
  return 0;
}
