#include "server/ScpiChannel.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>

#include "platform/Components.h"
#include "server/BlockReader.h"
#include "server/ServerAddress.h"
#include "server/ServerError.h"

namespace cvn73100::server {
namespace {

constexpr std::int16_t DATA_BITS = 8;
constexpr std::int16_t STOP_BITS = 1;
// Two queries in one message: their joint answer is not one a stale reply to a single "*OPC?" could be.
constexpr const char* SYNC_QUERY = "*OPC?;*OPC?";
constexpr const char* SYNC_ANSWER = "1;1";
constexpr std::int32_t RESYNC_QUIET_MS = 50;

std::string Trim(const std::string& text) {
  const auto begin = text.find_first_not_of(" \t\r\n");
  if (begin == std::string::npos) return {};
  return text.substr(begin, text.find_last_not_of(" \t\r\n") - begin + 1);
}

}  // namespace

void ScpiChannel::Open(const std::string& address) {
  Close();
  const ServerAddress parsed = ServerAddress::Parse(address);
  if (!m_ioManager && Components::HasIOManager()) m_ioManager = Components::CreateIOManager();
  if (!m_ioManager) throw ServerError(SERVERERR_NOT_CONNECTED, "no I/O manager");

  std::shared_ptr<IInstrumentIO> io = m_ioManager->Open(parsed.resource);
  try {
    if (parsed.serial) {
      ISerialIO* serial = io->Serial();
      if (serial == nullptr) throw ServerError(SERVERERR_BAD_ADDRESS, "\"" + address + "\" is not a serial port");
      serial->SetBaudRate(parsed.baud);
      serial->SetDataBits(DATA_BITS);
      serial->SetStopBits(STOP_BITS);
      serial->SetHandshake(parsed.handshake);
      // Host ready: an instrument that waits for DTR starts talking.
      serial->SetDTRState(true);
      serial->SetRTSState(true);
    }
    io->SetTimeout(m_timeoutMs);
  } catch (...) {
    try {
      io->Port().Close();
    } catch (const ScopeError&) {
    }
    throw;
  }
  m_io = std::move(io);
  m_address = address;
  m_replyOwed = false;
}

void ScpiChannel::Close() {
  std::shared_ptr<IInstrumentIO> io = std::move(m_io);
  m_io.reset();
  m_address.clear();
  m_replyOwed = false;
  if (io) io->Port().Close();
}

void ScpiChannel::SetTimeout(std::int32_t milliseconds) {
  if (milliseconds < 0) throw ServerError(SERVERERR_BAD_ARGUMENT, "timeout " + std::to_string(milliseconds) + " ms");
  if (m_io) m_io->SetTimeout(milliseconds);
  m_timeoutMs = milliseconds;
}

std::shared_ptr<IInstrumentIO> ScpiChannel::Shared() const {
  if (!m_io) throw ServerError(SERVERERR_NOT_CONNECTED);
  return m_io;
}

template <class Read>
auto ScpiChannel::Reading(Read&& read) {
  IInstrumentIO& io = IO();
  try {
    return read(io);
  } catch (const ScopeError& error) {
    if (io.Serial() && IOErrorCondition(error) == IOERR_TIMEOUT) m_replyOwed = true;
    throw;
  }
}

IInstrumentIO& ScpiChannel::ForWriting() {
  IInstrumentIO& io = IO();
  if (m_replyOwed) Resynchronise(io);
  return io;
}

void ScpiChannel::Resynchronise(IInstrumentIO& io) {
  using Clock = std::chrono::steady_clock;
  const std::int32_t timeout = io.Timeout();
  // Long enough for the answer and its line feed at the line's rate after the instrument has turned round.
  const auto quiet = std::chrono::milliseconds(RESYNC_QUIET_MS) +
                     std::chrono::duration_cast<Clock::duration>(
                         std::chrono::duration<double, std::milli>(5 * BlockReader::AllowancePerByte(io)));
  const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeout);
  const auto notInStep = [&] {
    return IOError(IOERR_TIMEOUT, m_address + ": no answer to " + SYNC_QUERY + " within " + std::to_string(timeout) +
                                      " ms, after a reply that did not come in time");
  };
  io.Clear();
  io.Output(SYNC_QUERY);
  bool answered = false;
  try {
    for (;;) {
      const Clock::time_point until = answered ? std::min(deadline, Clock::now() + quiet) : deadline;
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now()).count();
      if (left <= 0) {
        if (answered) break;
        throw notInStep();
      }
      io.SetTimeout(static_cast<std::int32_t>(left));
      std::string line;
      try {
        io.Enter(line, "K");
      } catch (const ScopeError& error) {
        if (IOErrorCondition(error) == IOERR_TIMEOUT) {
          if (answered) break;
          throw notInStep();
        }
        throw;
      }
      answered = Trim(line) == SYNC_ANSWER;
    }
  } catch (...) {
    io.SetTimeout(timeout);
    throw;
  }
  io.SetTimeout(timeout);
  m_replyOwed = false;
}

void ScpiChannel::Enter(std::string& reply, const std::string& image) {
  Reading([&](IInstrumentIO& io) {
    io.Enter(reply, image);
    return 0;
  });
}

std::int32_t ScpiChannel::ReadBytes(std::int32_t count, Bytes& buffer) {
  return Reading([&](IInstrumentIO& io) { return io.ReadBytes(count, buffer); });
}

Bytes ScpiChannel::ReadBlock(std::size_t cap) {
  IInstrumentIO& io = IO();
  try {
    return BlockReader(io, cap, BlockReader::AllowancePerByte(io)).Read();
  } catch (const ScopeError&) {
    // The rest of a refused, broken or late reply must not be taken for the answer to the next query; on a
    // serial line more of it may still be on its way.
    if (io.Serial()) m_replyOwed = true;
    try {
      io.Clear();
    } catch (const ScopeError&) {
    }
    throw;
  }
}

void ScpiChannel::Write(const std::string& command) { ForWriting().Output(command); }

std::string ScpiChannel::Query(const std::string& query) {
  ForWriting().Output(query);
  std::string reply;
  Enter(reply, "K");
  return reply;
}

double ScpiChannel::ParseReal(const std::string& text) {
  const std::string trimmed = Trim(text);
  // from_chars does not take a leading '+', which SCPI numbers may carry.
  const char* first = trimmed.data() + (!trimmed.empty() && trimmed[0] == '+' ? 1 : 0);
  const char* last = trimmed.data() + trimmed.size();
  double value = 0;
  const auto [end, ec] = std::from_chars(first, last, value);
  if (trimmed.empty() || ec != std::errc() || end != last || !std::isfinite(value)) {
    throw ServerError(SERVERERR_BAD_REPLY, "\"" + text.substr(0, 40) + "\" is not a number");
  }
  return value;
}

double ScpiChannel::QueryReal(const std::string& query) { return ParseReal(Query(query)); }

std::int32_t ScpiChannel::QueryInteger(const std::string& query) {
  const std::string reply = Query(query);
  const double value = ParseReal(reply);
  if (std::nearbyint(value) != value || std::abs(value) > 2147483647.0) {
    throw ServerError(SERVERERR_BAD_REPLY, "\"" + reply.substr(0, 40) + "\" is not a whole number");
  }
  return static_cast<std::int32_t>(value);
}

Bytes ScpiChannel::QueryBlock(const std::string& query, std::size_t cap) {
  ForWriting().Output(query);
  return ReadBlock(cap);
}

void ScpiChannel::WriteBlock(const std::string& header, const Bytes& data) {
  std::string message = header + " " + BlockReader::Header(data.size());
  message.append(data.begin(), data.end());
  ForWriting().Output(message);
}

}  // namespace cvn73100::server
