#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace cvn73100::sim {

// Whatever sits at the far end of a byte stream (a serial line or a socket): an instrument, or an adapter
// with instruments behind it. A stream pump calls Receive from one thread and Send from another.
class ByteDevice {
 public:
  virtual ~ByteDevice() = default;
  // Bytes the host sent.
  virtual void Receive(const std::uint8_t* data, std::size_t size) = 0;
  // Bytes for the host: blocks until some are ready or the timeout passes (returns 0 then).
  virtual std::size_t Send(std::uint8_t* buffer, std::size_t max, std::chrono::milliseconds timeout) = 0;
  // The host's serial settings as last seen on the line; `xonXoff` is the host's software flow control.
  virtual void HostLineSettings(int /*baud*/, bool /*xonXoff*/) {}
  // The host closed its connection.
  virtual void HostDisconnected() {}
};

}  // namespace cvn73100::sim
