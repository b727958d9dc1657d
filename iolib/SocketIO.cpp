#include "iolib/SocketIO.h"

namespace cvn73100::io {
namespace {

constexpr std::chrono::milliseconds kConnectWait{3000};
constexpr std::chrono::milliseconds kQuietTime{50};
constexpr std::chrono::milliseconds kMaxQuietWait{1000};

}  // namespace

SocketIO::SocketIO(std::string resourceName, const std::string& host, int port)
    : MessageIO(std::move(resourceName)), m_stream(host, port, Deadline(kConnectWait)) {}

SocketIO::~SocketIO() { Close(); }

void SocketIO::DoWrite(const std::uint8_t* data, std::size_t size, bool, const Deadline& deadline) {
  m_stream.Write(data, size, deadline);
}

std::size_t SocketIO::DoRead(std::uint8_t* buffer, std::size_t max, ReadKind, const Deadline& deadline, bool& end) {
  end = false;
  return m_stream.Read(buffer, max, deadline);
}

void SocketIO::DoClear(const Deadline&) { m_stream.DropInput(); }
void SocketIO::DoDropInput() { m_stream.DropInput(); }

void SocketIO::AfterReadTimeout(bool partial) {
  if (!partial) return;
  const Deadline limit(kMaxQuietWait);
  std::uint8_t sink[4096];
  while (!limit.Expired() && m_stream.Read(sink, sizeof sink, limit.Within(kQuietTime)) > 0) {
  }
}

void SocketIO::DoClose() noexcept { m_stream.Close(); }

}  // namespace cvn73100::io
