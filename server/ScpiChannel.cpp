#include "server/ScpiChannel.h"

#include <charconv>
#include <cmath>

#include "platform/Components.h"
#include "server/BlockReader.h"
#include "server/ServerAddress.h"
#include "server/ServerError.h"

namespace cvn73100::server {
namespace {

constexpr std::int16_t DATA_BITS = 8;
constexpr std::int16_t STOP_BITS = 1;

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
    io->SetTimeout(DEFAULT_TIMEOUT_MS);
  } catch (...) {
    try {
      io->Port().Close();
    } catch (const ScopeError&) {
    }
    throw;
  }
  m_io = std::move(io);
  m_address = address;
}

void ScpiChannel::Close() {
  std::shared_ptr<IInstrumentIO> io = std::move(m_io);
  m_io.reset();
  m_address.clear();
  if (io) io->Port().Close();
}

std::shared_ptr<IInstrumentIO> ScpiChannel::Shared() const {
  if (!m_io) throw ServerError(SERVERERR_NOT_CONNECTED);
  return m_io;
}

void ScpiChannel::Write(const std::string& command) { IO().Output(command); }

std::string ScpiChannel::Query(const std::string& query) {
  IInstrumentIO& io = IO();
  io.Output(query);
  std::string reply;
  io.Enter(reply, "K");
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
  IInstrumentIO& io = IO();
  io.Output(query);
  try {
    return BlockReader(io, cap, BlockReader::AllowancePerByte(io)).Read();
  } catch (const ScopeError&) {
    // The rest of a refused, broken or late reply must not be taken for the answer to the next query.
    try {
      io.Clear();
    } catch (const ScopeError&) {
    }
    throw;
  }
}

void ScpiChannel::WriteBlock(const std::string& header, const Bytes& data) {
  std::string message = header + " " + BlockReader::Header(data.size());
  message.append(data.begin(), data.end());
  IO().Output(message);
}

}  // namespace cvn73100::server
