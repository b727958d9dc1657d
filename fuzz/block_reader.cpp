// IEEE 488.2 definite-length blocks as an instrument (or something pretending to be one) sends them: learn
// strings, waveforms and screen images all arrive through this reader.
//
// Input: a behaviour byte, for a serial line four bytes of baud rate, for piecemeal delivery one byte of piece
// size, then the bytes the channel delivers:
//   bits 0-1  when the bytes run out: time out, return short, vanish, or claim a full read with a short buffer
//   bit 2     the channel is a serial line (the baud rate sets the time allowed per byte)
//   bits 3-4  the cap: a learn string's, a waveform's, 16 bytes, nothing
//   bits 5-6  the channel's timeout: 2 s, 100 ms, 60 s, the largest there is
//   bit 7     the channel hands out at most a piece at a time (short reads in the middle of a block)
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>

#include "fuzz/FuzzInput.h"
#include "server/BlockReader.h"

namespace {

using namespace cvn73100;
using fuzz::Require;

class FuzzChannel : public IInstrumentIO, public IPort, public ISerialIO {
 public:
  enum class End { Timeout, Short, Vanish, LyingCount };

  FuzzChannel(std::string bytes, End end, bool serial, std::int32_t baud, std::size_t piece, std::int32_t timeout)
      : m_bytes(std::move(bytes)), m_end(end), m_serial(serial), m_baud(baud), m_piece(piece), m_timeout(timeout) {}

  std::string IOType() const override { return m_serial ? "ASRL" : "GPIB"; }
  std::string ResourceName() const override { return m_serial ? "COM1" : "GPIB0::7::INSTR"; }
  std::int32_t Timeout() const override { return m_timeout; }
  void SetTimeout(std::int32_t milliseconds) override { m_timeout = milliseconds; }
  void Clear() override {}
  void Output(const std::string&) override {}
  void Enter(std::string&, const std::string&) override { throw IOError(IOERR_UNSUPPORTED); }
  std::int16_t OutputTermination() const override { return 10; }
  void SetOutputTermination(std::int16_t) override {}
  std::int32_t ReadBytes(std::int32_t count, Bytes& buffer) override {
    if (count < 0) throw IOError(IOERR_BAD_ARGUMENT);
    const std::size_t left = m_bytes.size() - m_pos;
    std::size_t n = std::min<std::size_t>(static_cast<std::size_t>(count), left);
    if (m_piece > 0) n = std::min(n, m_piece);
    if (n == static_cast<std::size_t>(count) || (m_piece > 0 && n > 0)) return Deliver(n, buffer, n);
    switch (m_end) {
      case End::Timeout:
        m_pos = m_bytes.size();
        throw IOError(IOERR_TIMEOUT, "no more bytes");
      case End::Vanish:
        m_pos = m_bytes.size();
        throw IOError(IOERR_DEVICE_VANISHED, "gone");
      case End::Short:
        return Deliver(n, buffer, n);
      case End::LyingCount:
        return Deliver(n, buffer, static_cast<std::size_t>(count));
    }
    return 0;
  }
  void WriteBytes(std::int32_t, const Bytes&) override {}
  IPort& Port() override { return *this; }
  ISerialIO* Serial() override { return m_serial ? this : nullptr; }
  void Close() override {}

  std::int32_t BaudRate() const override { return m_baud; }
  void SetBaudRate(std::int32_t baud) override { m_baud = baud; }
  std::int16_t DataBits() const override { return 8; }
  void SetDataBits(std::int16_t) override {}
  std::int16_t StopBits() const override { return 1; }
  void SetStopBits(std::int16_t) override {}
  std::int16_t Handshake() const override { return RS232_HandShake_DTR_DSR; }
  void SetHandshake(std::int16_t) override {}
  bool DTRState() const override { return true; }
  void SetDTRState(bool) override {}
  bool RTSState() const override { return true; }
  void SetRTSState(bool) override {}

 private:
  std::int32_t Deliver(std::size_t n, Bytes& buffer, std::size_t claimed) {
    buffer.assign(m_bytes.begin() + static_cast<std::ptrdiff_t>(m_pos),
                  m_bytes.begin() + static_cast<std::ptrdiff_t>(m_pos + n));
    m_pos += n;
    return static_cast<std::int32_t>(claimed);
  }

  std::string m_bytes;
  std::size_t m_pos = 0;
  End m_end;
  bool m_serial;
  std::int32_t m_baud;
  std::size_t m_piece;
  std::int32_t m_timeout;
};

constexpr std::size_t CAPS[] = {server::BlockReader::SETUP_CAP, server::BlockReader::WAVEFORM_CAP, 16, 0};
constexpr std::int32_t TIMEOUTS[] = {2000, 100, 60000, std::numeric_limits<std::int32_t>::max()};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::FuzzInput in(data, size);
  const std::uint8_t flags = in.Byte();
  const bool serial = (flags & 4) != 0;
  const auto baud = serial ? static_cast<std::int32_t>(in.Number(4)) : 0;
  const std::size_t piece = (flags & 128) ? std::size_t{in.Byte()} + 1 : 0;
  const std::size_t cap = CAPS[(flags >> 3) & 3];
  const std::int32_t timeout = TIMEOUTS[(flags >> 5) & 3];
  const std::string reply = in.Rest();

  FuzzChannel io(reply, static_cast<FuzzChannel::End>(flags & 3), serial, baud, piece, timeout);
  server::BlockReader reader(io, cap, server::BlockReader::AllowancePerByte(io));
  Bytes block;
  try {
    block = reader.Read();
  } catch (const ScopeError&) {
    Require(io.Timeout() == timeout, "the channel's timeout was not restored");
    return 0;
  }
  Require(io.Timeout() == timeout, "the channel's timeout was not restored");
  // A block read is exactly the data its header announced, no more than the cap.
  Require(block.size() <= cap, "a block over the cap");
  Require(reply.size() >= 2 && reply[0] == '#' && reply[1] >= '1' && reply[1] <= '9', "a block without a header");
  const std::size_t digits = static_cast<std::size_t>(reply[1] - '0');
  Require(reply.size() >= 2 + digits + block.size(), "a block longer than the reply");
  Require(std::stoull(reply.substr(2, digits)) == block.size(), "a block of another length than declared");
  Require(reply.compare(2 + digits, block.size(), std::string(block.begin(), block.end())) == 0,
          "a block holding other bytes than were sent");
  return 0;
}
