#pragma once
#include <memory>
#include <string>

#include "iolib/MessageIO.h"
#include "iolib/SerialLine.h"

namespace cvn73100::io {

// An RS-232 port (IOType "ASRL") over a serial line. Messages end with LF only (a serial line has no EOI).
// Handshake 1 (off) uses no flow control and leaves DTR and RTS as they were set; 2 lets the driver do XON/XOFF
// both ways; 4 asserts DTR (we accept data) and, before each write and every 64 bytes of it, waits for the device
// to assert DSR, within the call's Timeout (IOERR_TIMEOUT when it never does). The DTR/DSR wait sleeps in 1 ms slices;
// on a line without modem-control inputs (a pseudo-terminal) DSR reads asserted and the wait costs nothing.
// Clear lets bytes already written leave (within Timeout) and drops both buffers; there is no device clear on RS-232.
// A read that times out in the middle of a message waits for the line to fall quiet (50 ms, or 20 character times
// at slow rates; at most 1 s) and drops what still comes, so the rest of that message cannot start the next reply.
class SerialIO : public MessageIO, public ISerialIO {
 public:
  SerialIO(std::string resourceName, std::unique_ptr<SerialLine> line);
  ~SerialIO() override;

  std::string IOType() const override { return "ASRL"; }
  ISerialIO* Serial() override { return this; }

  std::int32_t BaudRate() const override { return m_baudRate; }
  void SetBaudRate(std::int32_t baud) override;
  std::int16_t DataBits() const override { return m_dataBits; }
  // 5 to 8.
  void SetDataBits(std::int16_t bits) override;
  std::int16_t StopBits() const override { return m_stopBits; }
  // 1 or 2.
  void SetStopBits(std::int16_t bits) override;
  std::int16_t Handshake() const override { return m_handshake; }
  void SetHandshake(std::int16_t handshake) override;
  // The state last set (asserted after opening).
  bool DTRState() const override { return m_dtr; }
  void SetDTRState(bool asserted) override;
  bool RTSState() const override { return m_rts; }
  void SetRTSState(bool asserted) override;

 protected:
  void DoWrite(const std::uint8_t* data, std::size_t size, bool end, const Deadline& deadline) override;
  std::size_t DoRead(std::uint8_t* buffer, std::size_t max, ReadKind kind, const Deadline& deadline,
                     bool& end) override;
  void DoClear(const Deadline& deadline) override;
  void DoDropInput() override;
  void AfterReadTimeout(bool partial) override;
  void DoClose() noexcept override;

 private:
  void WaitForDsr(const Deadline& deadline);

  std::unique_ptr<SerialLine> m_line;
  std::int32_t m_baudRate = 9600;
  std::int16_t m_dataBits = 8;
  std::int16_t m_stopBits = 1;
  std::int16_t m_handshake = RS232_HandShake_None;
  bool m_dtr = true;
  bool m_rts = true;
};

}  // namespace cvn73100::io
