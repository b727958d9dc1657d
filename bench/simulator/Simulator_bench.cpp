// Throughput of the simulator's parsing and encoding per byte, each next to a lower bound that only touches
// the same bytes (memchr / memcpy), and the cost of one query answered in-process.
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>

#include "simulator/Block.h"
#include "simulator/Instrument.h"
#include "simulator/MessageFramer.h"
#include "simulator/MessageParser.h"
#include "simulator/ScopeState.h"
#include "simulator/Waveform.h"

namespace {

using namespace cvn73100::sim;

const std::string kMessage =
    ":CHANnel2:RANGe 2.5;OFFSet -0.125;:TIMebase:RANGe 100us;DELay 1e-4;:TRIGger:SOURce CHANnel1;"
    "LEVel 0.25 V;:WAVeform:SOURce CHAN2;FORMat WORD;POINts 1000;*OPC?";

void BM_ParseMessage(benchmark::State& state) {
  ProgramUnit unit;
  for (auto _ : state) {
    MessageParser parser(kMessage);
    while (parser.Next(unit)) benchmark::DoNotOptimize(unit.nodes.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kMessage.size()));
}
BENCHMARK(BM_ParseMessage);

// Lower bound for the parser: finding the unit separators and nothing else.
void BM_ParseLowerBound_Memchr(benchmark::State& state) {
  for (auto _ : state) {
    const char* p = kMessage.data();
    benchmark::DoNotOptimize(p);  // keep the compiler from counting the constant message in advance
    const char* end = p + kMessage.size();
    int units = 0;
    while ((p = static_cast<const char*>(std::memchr(p, ';', static_cast<std::size_t>(end - p)))) != nullptr) {
      ++p;
      ++units;
    }
    benchmark::DoNotOptimize(units);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kMessage.size()));
}
BENCHMARK(BM_ParseLowerBound_Memchr);

std::string BlockMessage(std::size_t size) {
  std::string data(size, '\n');  // worst case for the framer: every data byte looks like a terminator
  std::string message = ":SYSTem:SETup ";
  Block::Append(message, data);
  return message + "\n";
}

void BM_FrameBlockMessage(benchmark::State& state) {
  const std::string message = BlockMessage(static_cast<std::size_t>(state.range(0)));
  MessageFramer framer;
  for (auto _ : state) {
    framer.Feed(reinterpret_cast<const std::uint8_t*>(message.data()), message.size(), false);
    benchmark::DoNotOptimize(framer.Message().data());
    framer.Take();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * message.size()));
}
BENCHMARK(BM_FrameBlockMessage)->Arg(4096)->Arg(1 << 20);

void BM_BlockEncode(benchmark::State& state) {
  const std::string data(static_cast<std::size_t>(state.range(0)), 'x');
  std::string out;
  for (auto _ : state) {
    out.clear();
    Block::Append(out, data);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * data.size()));
}
BENCHMARK(BM_BlockEncode)->Arg(4096)->Arg(1 << 20);

// Lower bound for both: copying the bytes once.
void BM_CopyLowerBound_Memcpy(benchmark::State& state) {
  const std::string data(static_cast<std::size_t>(state.range(0)), 'x');
  std::string out;
  for (auto _ : state) {
    out.assign(data);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * data.size()));
}
BENCHMARK(BM_CopyLowerBound_Memcpy)->Arg(4096)->Arg(1 << 20);

// The waveform encoder: formula, scaling and byte layout per output byte.
void BM_WaveformEncode(benchmark::State& state) {
  ScopeState scope;
  scope.waveformPoints = 0;  // the whole record
  scope.waveformFormat = static_cast<int>(state.range(0));
  std::string out;
  for (auto _ : state) {
    out.clear();
    Waveform::AppendData(scope, out);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * out.size()));
}
BENCHMARK(BM_WaveformEncode)->Arg(0)->Arg(1)->Arg(4);

// One query written and its reply read back through the in-process transport.
void BM_InProcessQuery(benchmark::State& state, const std::string& query) {
  Instrument scope;
  std::uint8_t reply[256];
  for (auto _ : state) {
    scope.Write(reinterpret_cast<const std::uint8_t*>(query.data()), query.size(), true);
    bool end = false;
    while (!end) benchmark::DoNotOptimize(scope.Read(reply, sizeof reply, std::chrono::milliseconds(100), end));
  }
}
BENCHMARK_CAPTURE(BM_InProcessQuery, Idn, std::string("*IDN?\n"));
BENCHMARK_CAPTURE(BM_InProcessQuery, ChannelRange, std::string(":CHANnel3:RANGe?\n"));
BENCHMARK_CAPTURE(BM_InProcessQuery, Preamble, std::string(":WAVeform:PREamble?\n"));

}  // namespace
