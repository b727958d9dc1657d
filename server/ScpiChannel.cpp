#include "server/ScpiChannel.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <limits>

#include "platform/Components.h"
#include "server/BlockReader.h"
#include "server/ScpiText.h"
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
constexpr const char* ERROR_QUERY = ":SYSTem:ERRor?";
// A queue longer than this is not being emptied (an instrument that never answers "no error").
constexpr std::size_t MAX_DRAINED_ERRORS = 64;
// The instrument's "no value" / overrange: 9.9E+37, 9.91E+37 for not-a-number.
constexpr double NO_VALUE = 9.9e37;

bool IsTimeout(const ScopeError& error) { return IOErrorCondition(error) == IOERR_TIMEOUT; }

std::string Joined(const std::vector<std::string>& entries) {
  std::string text;
  for (const std::string& entry : entries) text += (text.empty() ? "" : "; ") + entry;
  return text;
}

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

Bytes ScpiChannel::ReadBlock(std::size_t cap, std::optional<std::size_t> expected) {
  IInstrumentIO& io = IO();
  try {
    BlockReader reader(io, cap, BlockReader::AllowancePerByte(io));
    if (expected) reader.Expect(*expected);
    return reader.Read();
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

template <class Read>
auto ScpiChannel::Asking(const std::string& query, Read&& read) {
  ForWriting().Output(query);
  try {
    return read();
  } catch (const ScopeError& error) {
    if (!IsTimeout(error)) throw;
    const std::vector<std::string> entries = DrainErrors();
    if (entries.empty()) throw;
    throw ServerError(SERVERERR_INSTRUMENT, Joined(entries) + " after " + query + "; no reply within " +
                                                std::to_string(IO().Timeout()) + " ms");
  }
}

std::string ScpiChannel::Query(const std::string& query) {
  return Asking(query, [&] {
    std::string reply;
    Enter(reply, "K");
    return reply;
  });
}

void ScpiChannel::Set(const std::string& command) {
  ForWriting().Output(command + ";" + ERROR_QUERY);
  std::string reply;
  std::vector<std::string> entries;
  try {
    Enter(reply, "K");
    if (ErrorNumber(reply) == 0) return;
    entries.push_back(Trim(reply));
  } catch (const ScopeError& error) {
    // A command the instrument could not parse ends its message before the error query.
    if (!IsTimeout(error)) throw;
    entries = DrainErrors();
    if (entries.empty()) throw;
  }
  const std::vector<std::string> more = DrainErrors();
  entries.insert(entries.end(), more.begin(), more.end());
  throw ServerError(SERVERERR_INSTRUMENT, Joined(entries) + " after " + command);
}

std::vector<std::string> ScpiChannel::DrainErrors() {
  std::vector<std::string> entries;
  for (;;) {
    ForWriting().Output(ERROR_QUERY);
    std::string reply;
    Enter(reply, "K");
    if (ErrorNumber(reply) == 0) return entries;
    entries.push_back(Trim(reply));
    if (entries.size() == MAX_DRAINED_ERRORS) {
      throw ServerError(SERVERERR_BAD_REPLY, "the error queue does not empty: " + Joined(entries).substr(0, 200));
    }
  }
}

std::int32_t ScpiChannel::ErrorNumber(const std::string& entry) {
  const std::string text = Trim(entry);
  const std::size_t comma = text.find(',');
  std::int32_t number = 0;
  const char* first = text.data() + (!text.empty() && text[0] == '+' ? 1 : 0);
  const char* last = text.data() + std::min(comma, text.size());
  const auto [end, ec] = std::from_chars(first, last, number);
  if (comma == std::string::npos || ec != std::errc() || end != last) {
    throw ServerError(SERVERERR_BAD_REPLY, "error queue reply \"" + text.substr(0, 40) + "\"");
  }
  return number;
}

bool ScpiChannel::UsesSoftwareFlowControl() const {
  ISerialIO* serial = IO().Serial();
  return serial != nullptr && serial->Handshake() == RS232_HandShake_XON_XOFF;
}

void ScpiChannel::RequireBinarySafeLine(const char* what) const {
  if (!UsesSoftwareFlowControl()) return;
  throw ServerError(SERVERERR_UNSUPPORTED,
                    std::string(what) + " are binary and XON/XOFF flow control on " + m_address +
                        " would take their bytes 0x11 and 0x13 for flow control; use hardware handshake: "
                        "Handshake=DTR_DSR in the address, or `cvnscope config serial`");
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
  return std::abs(value) >= NO_VALUE ? std::numeric_limits<double>::quiet_NaN() : value;
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

std::int32_t ScpiChannel::QueryKeyword(const std::string& query, std::span<const ::cvn73100::scpi::Mnemonic> table,
                                       const char* what) {
  return scpi::KeywordReply<std::int32_t>(Query(query), table, what);
}

bool ScpiChannel::QueryBoolean(const std::string& query) {
  const std::string reply = Trim(Query(query));
  if (reply == "0" || reply == "1") return reply == "1";
  return scpi::KeywordReply<std::int32_t>(reply, scpi::ON_OFF, "on/off state") != 0;
}

Bytes ScpiChannel::QueryBlock(const std::string& query, std::size_t cap, std::optional<std::size_t> expected) {
  return Asking(query, [&] { return ReadBlock(cap, expected); });
}

void ScpiChannel::WriteBlock(const std::string& header, const Bytes& data) {
  std::string message = header + " " + BlockReader::Header(data.size());
  message.append(data.begin(), data.end());
  ForWriting().Output(message);
}

}  // namespace cvn73100::server
