#include "server/BlockReader.h"

#include <algorithm>
#include <limits>

#include "server/ServerError.h"

namespace cvn73100::server {
namespace {

constexpr std::size_t FIRST_CHUNK = 4096;
constexpr std::size_t LARGEST_CHUNK = std::size_t{1} << 20;
// How long to wait for the line feed that ends the message after the block: an instrument that ends
// the message with EOI on the last data byte sends none.
constexpr std::int32_t MESSAGE_END_WAIT_MS = 100;
constexpr double GPIB_FLOOR_MS_PER_BYTE = 0.01;

bool IsTimeout(const ScopeError& error) { return IOErrorCondition(error) == IOERR_TIMEOUT; }

// Puts the channel's Timeout back however the read ends; a channel that has gone away keeps its error.
class TimeoutRestorer {
 public:
  explicit TimeoutRestorer(IInstrumentIO& io) : m_io(io), m_timeout(io.Timeout()) {}
  ~TimeoutRestorer() {
    try {
      m_io.SetTimeout(m_timeout);
    } catch (const ScopeError&) {
    }
  }
  TimeoutRestorer(const TimeoutRestorer&) = delete;
  TimeoutRestorer& operator=(const TimeoutRestorer&) = delete;
  std::int32_t Original() const { return m_timeout; }

 private:
  IInstrumentIO& m_io;
  std::int32_t m_timeout;
};

}  // namespace

BlockReader::BlockReader(IInstrumentIO& io, std::size_t cap, double msPerByte)
    : m_io(io), m_cap(cap), m_msPerByte(std::max(0.0, msPerByte)) {}

double BlockReader::AllowancePerByte(IInstrumentIO& io) {
  if (ISerialIO* serial = io.Serial()) {
    const std::int32_t baud = serial->BaudRate();
    if (baud > 0) return 2.0 * 10.0 * 1000.0 / baud;
  }
  return GPIB_FLOOR_MS_PER_BYTE;
}

std::string BlockReader::Header(std::size_t length) {
  const std::string digits = std::to_string(length);
  return "#" + std::to_string(digits.size()) + digits;
}

std::size_t BlockReader::ReadSome(std::size_t count, Bytes& out) {
  const auto remaining = std::chrono::duration_cast<std::chrono::milliseconds>(m_deadline - Clock::now()).count();
  if (remaining <= 0) throw IOError(IOERR_TIMEOUT, "transfer deadline passed");
  const auto timeout = static_cast<std::int32_t>(std::min<long long>(remaining, m_silenceMs));
  if (timeout != m_timeoutSet) {
    m_io.SetTimeout(timeout);
    m_timeoutSet = timeout;
  }
  Bytes chunk;
  const std::int32_t got = m_io.ReadBytes(static_cast<std::int32_t>(count), chunk);
  const std::size_t n = std::min({static_cast<std::size_t>(std::max(got, 0)), chunk.size(), count});
  out.insert(out.end(), chunk.begin(), chunk.begin() + static_cast<std::ptrdiff_t>(n));
  return n;
}

std::uint8_t BlockReader::ReadHeaderByte(const char* what) {
  Bytes byte;
  try {
    if (ReadSome(1, byte) == 1) return byte[0];
  } catch (const ScopeError& e) {
    if (!IsTimeout(e)) throw;
    throw ServerError(SERVERERR_BLOCK_SHORT, std::string("the reply stopped before the ") + what);
  }
  throw ServerError(SERVERERR_BLOCK_HEADER, std::string("the reply ended before the ") + what);
}

Bytes BlockReader::Read() {
  TimeoutRestorer restorer(m_io);
  m_start = Clock::now();
  m_silenceMs = std::max(restorer.Original(), 1);
  m_deadline = m_start + std::chrono::milliseconds(m_silenceMs);
  m_timeoutSet = -1;
  // Each read asks for no more than the line carries in one Timeout at its slowest allowed rate, so that
  // a read's own limit is the silence limit.
  m_silenceChunk =
      std::max<std::size_t>(64, static_cast<std::size_t>(m_msPerByte > 0 ? m_silenceMs / m_msPerByte : LARGEST_CHUNK));

  // No reply at all is the I/O library's timeout, passed on as it is.
  Bytes first;
  if (ReadSome(1, first) != 1) throw ServerError(SERVERERR_BLOCK_HEADER, "empty reply");
  if (first[0] != '#') throw ServerError(SERVERERR_BLOCK_HEADER, "the reply does not begin with '#'");

  const std::uint8_t digitCount = ReadHeaderByte("length digit count");
  if (digitCount == '0') throw ServerError(SERVERERR_BLOCK_INDEFINITE);
  if (digitCount < '1' || digitCount > '9') throw ServerError(SERVERERR_BLOCK_HEADER, "no length digit count");

  std::uint64_t length = 0;
  for (int i = 0; i < digitCount - '0'; ++i) {
    const std::uint8_t c = ReadHeaderByte("end of the length");
    if (c < '0' || c > '9') throw ServerError(SERVERERR_BLOCK_HEADER, "a length that is not a number");
    length = length * 10 + static_cast<std::uint64_t>(c - '0');
  }
  if (length > m_cap) {
    throw ServerError(SERVERERR_BLOCK_TOO_LARGE,
                      std::to_string(length) + " bytes declared, at most " + std::to_string(m_cap) + " accepted");
  }
  if (m_expected && length != *m_expected) {
    throw ServerError(SERVERERR_BLOCK_HEADER, std::to_string(length) + " bytes declared, " +
                                                  std::to_string(*m_expected) + " announced by the preamble");
  }

  // One deadline for the whole transfer, fixed now that its length is known.
  m_deadline +=
      std::chrono::microseconds(static_cast<std::int64_t>(static_cast<double>(length) * m_msPerByte * 1000.0));

  Bytes data;
  const auto declared = static_cast<std::size_t>(length);
  while (data.size() < declared) {
    const std::size_t chunk =
        std::min({declared - data.size(), std::clamp(data.size(), FIRST_CHUNK, LARGEST_CHUNK), m_silenceChunk});
    std::size_t got = 0;
    try {
      got = ReadSome(chunk, data);
    } catch (const ScopeError& e) {
      if (!IsTimeout(e)) throw;
      const bool late = Clock::now() >= m_deadline;
      throw ServerError(
          SERVERERR_BLOCK_SHORT,
          std::to_string(data.size()) + " of " + std::to_string(declared) + " declared bytes received, then " +
              (late ? "the transfer's time ran out" : "silence for " + std::to_string(m_silenceMs) + " ms"));
    }
    if (got < chunk) {
      throw ServerError(SERVERERR_BLOCK_SHORT, "the reply ended after " + std::to_string(data.size()) + " of " +
                                                   std::to_string(declared) + " bytes");
    }
  }
  ConsumeMessageEnd();
  return data;
}

void BlockReader::ConsumeMessageEnd() {
  // The terminator is short and follows the data at once; do not stretch the wait to the whole deadline.
  const auto cap = Clock::now() + std::chrono::milliseconds(MESSAGE_END_WAIT_MS);
  if (cap < m_deadline) m_deadline = cap;
  Bytes end;
  try {
    if (ReadSome(1, end) == 1 && end[0] == '\r') ReadSome(1, end);
  } catch (const ScopeError& e) {
    if (!IsTimeout(e)) throw;
    return;
  }
  if (!end.empty() && end.back() != '\n') {
    throw ServerError(SERVERERR_BAD_REPLY, "data after the end of the block");
  }
}

}  // namespace cvn73100::server
