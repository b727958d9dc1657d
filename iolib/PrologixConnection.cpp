#include "iolib/PrologixConnection.h"

#include <algorithm>
#include <map>

#include "iolib/SerialLine.h"
#include "iolib/TcpStream.h"
#include "platform/InstrumentIO.h"

namespace cvn73100::io {
namespace {

constexpr std::uint8_t kEsc = 27;
constexpr auto kConnectTime = std::chrono::seconds(2);
constexpr std::int32_t kUsbBaud = 115200;
constexpr std::size_t kMaxVersionBytes = 256;
// Time the adapter may take to pass on an answer after its own read timeout.
constexpr int kAnswerMarginMs = 100;

std::string KeyOf(const BoardMap::GpibTarget& target) {
  if (target.kind == BoardMap::GpibKind::PrologixTcp) return "tcp:" + target.host + ":" + std::to_string(target.port);
  return "serial:" + target.node;
}

std::unique_ptr<ByteStream> OpenStream(const BoardMap::GpibTarget& target) {
  if (target.kind == BoardMap::GpibKind::PrologixTcp)
    return std::make_unique<TcpStream>(target.host, target.port, Deadline(kConnectTime));
  auto line = SerialLine::OpenNode(target.node);
  line->SetBaudRate(kUsbBaud);
  return line;
}

}  // namespace

std::shared_ptr<PrologixConnection> PrologixConnection::Open(const BoardMap::GpibTarget& target) {
  static std::mutex mutex;
  static std::map<std::string, std::weak_ptr<PrologixConnection>> connections;
  const std::string key = KeyOf(target);
  std::lock_guard lock(mutex);
  if (auto existing = connections[key].lock(); existing && !existing->Broken()) return existing;
  const std::string name = BoardMap::DescribeGpib(target);
  std::shared_ptr<PrologixConnection> connection;
  try {
    connection = std::make_shared<PrologixConnection>(OpenStream(target), name);
  } catch (const ScopeError& error) {
    if (IOErrorCondition(error) == IOERR_OPEN_FAILED) throw;
    throw IOError(IOERR_OPEN_FAILED, name + ": " + error.Description());
  }
  connections[key] = connection;
  // Forget links that died with their last holder.
  std::erase_if(connections, [](const auto& entry) { return entry.second.expired(); });
  return connection;
}

PrologixConnection::PrologixConnection(std::unique_ptr<ByteStream> stream, std::string name)
    : m_stream(std::move(stream)), m_name(std::move(name)) {
  const Deadline deadline(kConnectTime);
  m_stream->DropInput();
  for (const char* setup : {"savecfg 0", "mode 1", "ifc", "auto 0", "eoi 1", "eos 3", "eot_enable 0", "ver"})
    Command(setup, deadline);
  std::string reply;
  std::uint8_t buffer[64];
  while (reply.find('\n') == std::string::npos) {
    const std::size_t n = m_stream->Read(buffer, sizeof buffer, deadline);
    if (n == 0 || reply.size() > kMaxVersionBytes)
      throw IOError(IOERR_OPEN_FAILED, m_name + ": no adapter answered ++ver");
    reply.append(reinterpret_cast<const char*>(buffer), n);
  }
  reply.erase(reply.find('\n'));
  if (!reply.empty() && reply.back() == '\r') reply.pop_back();
  if (reply.empty()) throw IOError(IOERR_OPEN_FAILED, m_name + ": empty answer to ++ver");
  m_version = reply;
}

PrologixConnection::~PrologixConnection() { m_stream->Close(); }

Bytes PrologixConnection::Escape(const std::uint8_t* data, std::size_t size) {
  Bytes escaped;
  escaped.reserve(size + size / 8 + 1);
  for (std::size_t i = 0; i < size; ++i) {
    const std::uint8_t b = data[i];
    if (b == '\r' || b == '\n' || b == kEsc || b == '+') escaped.push_back(kEsc);
    escaped.push_back(b);
  }
  return escaped;
}

template <typename Call>
auto PrologixConnection::Guard(Call call) -> decltype(call()) {
  try {
    return call();
  } catch (const ScopeError& error) {
    if (IOErrorCondition(error) == IOERR_DEVICE_VANISHED) m_broken = true;
    throw;
  }
}

void PrologixConnection::Send(const std::uint8_t* data, std::size_t size, const Deadline& deadline) {
  Guard([&] { m_stream->Write(data, size, deadline); });
}

void PrologixConnection::Command(const std::string& command, const Deadline& deadline) {
  const std::string line = "++" + command + "\n";
  Send(reinterpret_cast<const std::uint8_t*>(line.data()), line.size(), deadline);
}

void PrologixConnection::Select(int address, const Deadline& deadline) {
  if (address == m_address) return;
  m_readOwner = nullptr;
  Command("addr " + std::to_string(address), deadline);
  m_address = address;
}

void PrologixConnection::SendData(const std::uint8_t* data, std::size_t size, const Deadline& deadline) {
  m_readOwner = nullptr;
  Bytes line = Escape(data, size);
  line.push_back('\n');
  Send(line.data(), line.size(), deadline);
}

void PrologixConnection::RequestRead(const void* owner, int readTimeoutMs, const Deadline& deadline) {
  const int timeout = std::clamp(readTimeoutMs, 1, kMaxReadTimeoutMs);
  if (timeout != m_readTimeoutMs) {
    Command("read_tmo_ms " + std::to_string(timeout), deadline);
    m_readTimeoutMs = timeout;
  }
  Command("read eoi", deadline);
  m_readOwner = owner;
}

int PrologixConnection::SerialPoll(const Deadline& deadline) {
  // Long enough for any device to take its turn on the bus; an absent one leaves the adapter silent.
  constexpr int kPollTimeoutMs = 50;
  if (m_readTimeoutMs != kPollTimeoutMs) {
    Command("read_tmo_ms " + std::to_string(kPollTimeoutMs), deadline);
    m_readTimeoutMs = kPollTimeoutMs;
  }
  Command("spoll", deadline);
  const Deadline answer(std::min(
      deadline.End(), std::chrono::steady_clock::now() + std::chrono::milliseconds(kPollTimeoutMs + kAnswerMarginMs)));
  std::string line;
  std::uint8_t byte = 0;
  while (Receive(&byte, 1, answer) == 1) {
    if (byte == '\n') {
      try {
        return std::stoi(line);
      } catch (const std::exception&) {
        return -1;
      }
    }
    line += static_cast<char>(byte);
  }
  return -1;
}

std::size_t PrologixConnection::Receive(std::uint8_t* buffer, std::size_t max, const Deadline& deadline) {
  return Guard([&] { return m_stream->Read(buffer, max, deadline); });
}

void PrologixConnection::DropInput() {
  m_readOwner = nullptr;
  Guard([&] { m_stream->DropInput(); });
}

void PrologixConnection::CheckAlive() {
  auto lock = Lock();
  if (m_broken || m_readOwner != nullptr) return;
  try {
    Resync(Deadline(kConnectTime));
  } catch (const ScopeError&) {
    m_broken = true;
  }
}

void PrologixConnection::Resync(const Deadline& deadline) {
  m_readOwner = nullptr;
  Command("ver", deadline);
  // Everything up to the version line is what the adapter sent before it took the command.
  std::string seen;
  std::uint8_t buffer[4096];
  for (;;) {
    const std::size_t n = Receive(buffer, sizeof buffer, deadline);
    if (n == 0) throw IOError(IOERR_TIMEOUT, m_name + ": the adapter did not answer ++ver");
    seen.append(reinterpret_cast<const char*>(buffer), n);
    const auto at = seen.rfind(m_version);
    if (at != std::string::npos && seen.find('\n', at) != std::string::npos) {
      // Bytes after the version line cannot exist yet: nothing was sent after ++ver.
      return;
    }
    if (seen.size() > 2 * sizeof buffer) seen.erase(0, seen.size() - m_version.size() - 2);
  }
}

}  // namespace cvn73100::io
