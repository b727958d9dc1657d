#include "iolib/PrologixIO.h"

#include "iolib/PrologixConnection.h"

namespace cvn73100::io {
namespace {

// How much longer than the adapter's own read timeout to wait before deciding that its read has ended.
constexpr auto kReadEndMargin = std::chrono::milliseconds(200);
// How long the adapter may take to finish a read still running and answer ++ver after it.
constexpr auto kResyncMargin = std::chrono::milliseconds(1000);

}  // namespace

PrologixIO::PrologixIO(std::string resourceName, std::shared_ptr<PrologixConnection> connection, int address)
    : MessageIO(std::move(resourceName)), m_connection(std::move(connection)), m_address(address) {}

PrologixIO::~PrologixIO() { Close(); }

void PrologixIO::DoWrite(const std::uint8_t* data, std::size_t size, bool, const Deadline& deadline) {
  auto lock = m_connection->Lock();
  m_connection->Select(m_address, deadline);
  m_connection->SendData(data, size, deadline);
}

std::size_t PrologixIO::DoRead(std::uint8_t* buffer, std::size_t max, ReadKind, const Deadline& deadline, bool& end) {
  end = false;
  if (m_noListener) return 0;
  auto lock = m_connection->Lock();
  if (m_connection->ReadOwner() != this) {
    if (m_connection->ReadOwner() != nullptr) Resync();
    m_connection->Select(m_address, deadline);
    m_connection->RequestRead(this, Timeout(), deadline);
    m_lastHeard = std::chrono::steady_clock::now();
  }
  // One read request per reply: asking again would address the instrument to talk a second time for one query,
  // which it reports as an unterminated query. When the adapter's read ends in silence, the reply is late or
  // will not come.
  const auto adapterGivesUp = m_lastHeard + std::chrono::milliseconds(m_connection->ReadTimeoutMs()) + kReadEndMargin;
  const std::size_t n = m_connection->Receive(buffer, max, Deadline(std::min(deadline.End(), adapterGivesUp)));
  if (n > 0) m_lastHeard = std::chrono::steady_clock::now();
  return n;
}

void PrologixIO::DoClear(const Deadline& deadline) {
  auto lock = m_connection->Lock();
  if (m_connection->ReadOwner() != nullptr) Resync();
  m_connection->Select(m_address, deadline);
  // The adapter reports no error for an address nobody listens at; a serial poll that goes unanswered finds
  // it at once, and reads then end at once rather than after the whole reply timeout.
  m_noListener = m_connection->SerialPoll(deadline) < 0;
  if (m_noListener) return;
  m_connection->Command("clr", deadline);
  Resync();
}

void PrologixIO::DoDropInput() {
  auto lock = m_connection->Lock();
  if (m_connection->ReadOwner() != nullptr)
    Resync();
  else
    m_connection->DropInput();
}

void PrologixIO::Resync() {
  // Before any read was asked for, the adapter's read timeout is whatever it was set to: assume the longest.
  const int adapterWaits =
      m_connection->ReadTimeoutMs() < 0 ? PrologixConnection::kMaxReadTimeoutMs : m_connection->ReadTimeoutMs();
  m_connection->Resync(Deadline(std::chrono::milliseconds(adapterWaits) + kResyncMargin));
}

void PrologixIO::AfterReadTimeout(bool) {
  if (!m_noListener) DoClear(CallDeadline());
}

void PrologixIO::MessageEnded() {
  auto lock = m_connection->Lock();
  if (m_connection->ReadOwner() == this) m_connection->EndRead();
}

void PrologixIO::DoClose() noexcept {
  try {
    auto lock = m_connection->Lock();
    if (m_connection->ReadOwner() == this) m_connection->OrphanRead();
    if (!m_connection->Broken()) {
      const Deadline deadline(std::chrono::milliseconds(500));
      m_connection->Select(m_address, deadline);
      m_connection->Command("loc", deadline);
    }
  } catch (...) {
    // Closing never fails; a dead adapter is found again on the next open.
  }
  m_connection.reset();
}

}  // namespace cvn73100::io
