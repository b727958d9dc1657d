#include "iolib/SerialIO.h"

#include <algorithm>
#include <thread>

namespace cvn73100::io {
namespace {

constexpr std::size_t kDsrChunk = 64;
constexpr auto kQuietTime = std::chrono::milliseconds(50);
constexpr auto kMaxQuietWait = std::chrono::milliseconds(1000);

}  // namespace

SerialIO::SerialIO(std::string resourceName, std::unique_ptr<SerialLine> line)
    : MessageIO(std::move(resourceName)), m_line(std::move(line)) {}

SerialIO::~SerialIO() { Close(); }

void SerialIO::SetBaudRate(std::int32_t baud) {
  CheckOpen();
  m_line->SetBaudRate(baud);
  m_baudRate = baud;
}

void SerialIO::SetDataBits(std::int16_t bits) {
  CheckOpen();
  if (bits < 5 || bits > 8) throw IOError(IOERR_BAD_ARGUMENT, "data bits " + std::to_string(bits));
  m_line->SetDataBits(bits);
  m_dataBits = bits;
}

void SerialIO::SetStopBits(std::int16_t bits) {
  CheckOpen();
  if (bits != 1 && bits != 2) throw IOError(IOERR_BAD_ARGUMENT, "stop bits " + std::to_string(bits));
  m_line->SetStopBits(bits);
  m_stopBits = bits;
}

void SerialIO::SetHandshake(std::int16_t handshake) {
  CheckOpen();
  if (handshake != RS232_HandShake_None && handshake != RS232_HandShake_XON_XOFF &&
      handshake != RS232_HandShake_DTR_DSR)
    throw IOError(IOERR_BAD_ARGUMENT, "handshake " + std::to_string(handshake));
  m_line->SetHandshake(handshake);
  if (handshake == RS232_HandShake_DTR_DSR) {
    m_line->SetDTR(true);
    m_dtr = true;
  }
  m_handshake = handshake;
}

void SerialIO::SetDTRState(bool asserted) {
  CheckOpen();
  m_line->SetDTR(asserted);
  m_dtr = asserted;
}

void SerialIO::SetRTSState(bool asserted) {
  CheckOpen();
  m_line->SetRTS(asserted);
  m_rts = asserted;
}

void SerialIO::WaitForDsr(const Deadline& deadline) {
  while (!m_line->DSR()) {
    if (deadline.Expired()) throw IOError(IOERR_TIMEOUT, ResourceName() + ": DSR not asserted");
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

void SerialIO::DoWrite(const std::uint8_t* data, std::size_t size, bool, const Deadline& deadline) {
  if (m_handshake != RS232_HandShake_DTR_DSR) {
    m_line->Write(data, size, deadline);
    return;
  }
  for (std::size_t done = 0; done < size; done += kDsrChunk) {
    WaitForDsr(deadline);
    m_line->Write(data + done, std::min(kDsrChunk, size - done), deadline);
  }
}

std::size_t SerialIO::DoRead(std::uint8_t* buffer, std::size_t max, ReadKind, const Deadline& deadline, bool& end) {
  end = false;
  return m_line->Read(buffer, max, deadline);
}

void SerialIO::DoClear(const Deadline& deadline) { m_line->Flush(deadline); }

void SerialIO::AfterReadTimeout(bool partial) {
  if (!partial) return;
  const auto quiet = std::max(kQuietTime, std::chrono::milliseconds(20 * 10 * 1000 / std::max(m_baudRate, 1)));
  const Deadline limit(kMaxQuietWait);
  std::uint8_t sink[256];
  while (!limit.Expired() && m_line->Read(sink, sizeof sink, limit.Within(quiet)) > 0) {
  }
}
void SerialIO::DoDropInput() { m_line->DropInput(); }
void SerialIO::DoClose() noexcept { m_line->Close(); }

}  // namespace cvn73100::io
