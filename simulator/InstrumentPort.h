#pragma once

#include <condition_variable>
#include <mutex>

#include "simulator/ByteDevice.h"
#include "simulator/Instrument.h"

namespace cvn73100::sim {

// An instrument's own port on a byte stream: its RS-232 connector, or its raw SCPI socket.
//
// Serial: the host's baud rate and flow control are passed to the instrument (for the wrong-parameter fault),
// and when the host uses XON/XOFF, the XOFF (0x13) and XON (0x11) bytes it sends pause and resume the
// instrument's output instead of reaching the parser. Socket: a host that disconnects clears the instrument, so
// the next one does not read a stale reply.
class InstrumentPort : public ByteDevice {
 public:
  enum class Line { Serial, Socket };
  // `instrument` must outlive the port.
  InstrumentPort(Instrument& instrument, Line line);

  void Receive(const std::uint8_t* data, std::size_t size) override;
  std::size_t Send(std::uint8_t* buffer, std::size_t max, std::chrono::milliseconds timeout) override;
  void HostLineSettings(int baud, bool xonXoff) override;
  void HostDisconnected() override;
  bool Paused() const;

 private:
  Instrument& instrument_;
  Line line_;
  mutable std::mutex mutex_;
  std::condition_variable resumed_;
  bool xonXoff_ = false;
  bool paused_ = false;
};

}  // namespace cvn73100::sim
