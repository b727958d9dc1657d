#pragma once
#include <memory>

#include "iolib/SerialLine.h"

namespace cvn73100::sim {

// A serial line whose far end is an in-process simulated instrument (a COM port mapped to "sim").
// Line settings reach the instrument as the host's settings (its wrong-parameter fault compares them);
// there are no modem-control lines: DTR and RTS succeed without effect and DSR reads asserted.
class Instrument;

class SimSerialLine : public io::SerialLine {
 public:
  explicit SimSerialLine(std::shared_ptr<Instrument> instrument);
  ~SimSerialLine() override = default;

  void Write(const std::uint8_t* data, std::size_t size, const io::Deadline& deadline) override;
  std::size_t Read(std::uint8_t* buffer, std::size_t max, const io::Deadline& deadline) override;
  void DropInput() override;
  void Close() noexcept override;

  void SetBaudRate(std::int32_t baud) override;
  void SetDataBits(int bits) override;
  void SetStopBits(int bits) override;
  void SetHandshake(std::int16_t handshake) override;
  void SetDTR(bool) override {}
  void SetRTS(bool) override {}
  bool DSR() override { return true; }
  void Flush(const io::Deadline& deadline) override;

 private:
  void Report();

  std::shared_ptr<Instrument> m_instrument;
  std::int32_t m_baud = 9600;
  std::int16_t m_handshake = 1;
};

}  // namespace cvn73100::sim
