#pragma once
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "platform/InstrumentIO.h"
#include "platform/Variant.h"

namespace cvn73100::server {

// Reads one IEEE 488.2 definite-length block ("#<n><length><data>") and the end of its message from
// an instrument channel. Every transfer of instrument data goes through it:
// - the declared length is checked against a cap before anything is allocated, and the buffer grows
//   only as bytes arrive, so a lying header costs nothing;
// - a block that ends early, stops arriving, or has a malformed header is an error of its own;
// - "#0" (indefinite length) is refused;
// - a declared length other than the one the caller expects (from a preamble) is refused at once;
// - silence longer than the channel's Timeout ends the read, wherever it falls;
// - the whole transfer also has one deadline: the channel's Timeout plus the time the declared length
//   needs on the line, counted from the start of the read, so a slow drip cannot hold it forever.
class BlockReader {
 public:
  static constexpr std::size_t SETUP_CAP = LEARN_STRING_CAP;          // learn strings
  static constexpr std::size_t WAVEFORM_CAP = std::size_t{16} << 20;  // waveform and logic data
  static constexpr std::size_t IMAGE_CAP = std::size_t{16} << 20;     // screen images

  // `cap`: the largest declared length accepted. `msPerByte`: time allowed per declared byte on top
  // of the channel's Timeout (see AllowancePerByte).
  BlockReader(IInstrumentIO& io, std::size_t cap, double msPerByte);

  // The length the block must declare; another is refused before any data is read.
  void Expect(std::size_t length) { m_expected = length; }

  // Reads the block; the channel's Timeout is restored afterwards. Raises SERVERERR_BLOCK_* for a bad
  // or incomplete block, and the I/O library's error (e.g. a timeout before the first byte) otherwise.
  Bytes Read();

  // Time a byte may take on `io`'s line: twice its time at the serial baud rate (10 bits a byte), or a
  // floor of 100 kB/s on any other kind of line.
  static double AllowancePerByte(IInstrumentIO& io);

  // "#<n><length>" for a block of `length` bytes.
  static std::string Header(std::size_t length);

 private:
  using Clock = std::chrono::steady_clock;

  // Reads up to `count` bytes into `out`; fewer means the message ended. Raises the I/O library's
  // timeout when the deadline passes.
  std::size_t ReadSome(std::size_t count, Bytes& out);
  std::uint8_t ReadHeaderByte(const char* what);
  void ConsumeMessageEnd();

  IInstrumentIO& m_io;
  std::size_t m_cap;
  double m_msPerByte;
  Clock::time_point m_start;
  Clock::time_point m_deadline;
  std::int32_t m_timeoutSet = -1;
  std::int32_t m_silenceMs = 0;
  std::size_t m_silenceChunk = 0;
  std::optional<std::size_t> m_expected;
};

}  // namespace cvn73100::server
