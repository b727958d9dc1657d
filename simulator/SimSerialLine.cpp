#include "simulator/SimSerialLine.h"

#include "platform/InstrumentIO.h"
#include "platform/Interrupt.h"
#include "simulator/Instrument.h"

namespace cvn73100::sim {

SimSerialLine::SimSerialLine(std::shared_ptr<Instrument> instrument) : m_instrument(std::move(instrument)) {
  Report();
  DropInput();
}

void SimSerialLine::Report() { m_instrument->SetHostLineSettings(m_baud, m_handshake); }

void SimSerialLine::Write(const std::uint8_t* data, std::size_t size, const io::Deadline&) {
  if (!m_instrument) throw IOError(IOERR_CLOSED);
  m_instrument->Write(data, size, false);
}

std::size_t SimSerialLine::Read(std::uint8_t* buffer, std::size_t max, const io::Deadline& deadline) {
  if (!m_instrument) throw IOError(IOERR_CLOSED);
  for (;;) {
    Interrupt::Check();
    bool end = false;
    const auto slice = Interrupt::Slice(std::chrono::milliseconds(deadline.RemainingMs()));
    const std::size_t n = m_instrument->Read(buffer, max, slice, end);
    if (n > 0 || deadline.Expired()) return n;
  }
}

void SimSerialLine::DropInput() {
  if (!m_instrument) return;
  std::uint8_t sink[4096];
  bool end = false;
  while (m_instrument->Read(sink, sizeof sink, std::chrono::milliseconds(0), end) > 0) {
  }
}

void SimSerialLine::Flush(const io::Deadline&) { DropInput(); }

void SimSerialLine::Close() noexcept { m_instrument.reset(); }

void SimSerialLine::SetBaudRate(std::int32_t baud) {
  if (baud <= 0) throw IOError(IOERR_BAD_ARGUMENT, "baud rate " + std::to_string(baud));
  m_baud = baud;
  Report();
}

void SimSerialLine::SetDataBits(int bits) {
  if (bits < 5 || bits > 8) throw IOError(IOERR_BAD_ARGUMENT, "data bits " + std::to_string(bits));
}

void SimSerialLine::SetStopBits(int bits) {
  if (bits != 1 && bits != 2) throw IOError(IOERR_BAD_ARGUMENT, "stop bits " + std::to_string(bits));
}

void SimSerialLine::SetHandshake(std::int16_t handshake) {
  m_handshake = handshake;
  Report();
}

}  // namespace cvn73100::sim
