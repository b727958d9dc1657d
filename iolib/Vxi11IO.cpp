#include "iolib/Vxi11IO.h"

namespace cvn73100::io {

Vxi11IO::Vxi11IO(std::string resourceName, Connector connect)
    : MessageIO(std::move(resourceName)), m_connect(std::move(connect)) {
  TryConnect();
}

Vxi11IO::~Vxi11IO() { Close(); }

bool Vxi11IO::TryConnect() {
  try {
    m_link = m_connect();
    return true;
  } catch (const ScopeError& error) {
    if (IOErrorCondition(error) != IOERR_NO_LISTENER) throw;
    m_refusal = error;
    return false;
  }
}

Vxi11Link& Vxi11IO::Link() {
  if (!m_link && !TryConnect()) throw *m_refusal;
  return *m_link;
}

std::uint8_t Vxi11IO::ReadStatusByte() {
  CheckOpen();
  return Link().ReadStatusByte(CallDeadline());
}

void Vxi11IO::DoWrite(const std::uint8_t* data, std::size_t size, bool end, const Deadline& deadline) {
  Link().Write(data, size, end, deadline);
}

std::size_t Vxi11IO::DoRead(std::uint8_t* buffer, std::size_t max, ReadKind kind, const Deadline& deadline, bool& end) {
  return Link().Read(buffer, max, kind == ReadKind::Message ? '\n' : -1, deadline, end);
}

void Vxi11IO::DoClear(const Deadline& deadline) {
  if (m_link || TryConnect()) m_link->Clear(deadline);
}

void Vxi11IO::DoDropInput() {
  if (m_link) m_link->DropAhead();
}

void Vxi11IO::AfterReadTimeout(bool) {
  if (m_link) m_link->Clear(CallDeadline());
}

void Vxi11IO::DoClose() noexcept {
  if (m_link) m_link->Close();
}

}  // namespace cvn73100::io
