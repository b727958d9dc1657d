#include "simulator/InstrumentPort.h"

#include <algorithm>
#include <vector>

namespace cvn73100::sim {
namespace {
constexpr std::uint8_t kXon = 0x11, kXoff = 0x13;
// Serial output leaves in small pieces so that an XOFF takes effect within a few bytes, as with a UART.
constexpr std::size_t kSerialChunk = 64;
}  // namespace

InstrumentPort::InstrumentPort(Instrument& instrument, Line line) : instrument_(instrument), line_(line) {
  instrument_.SetStreamOutput(true);
}

void InstrumentPort::Receive(const std::uint8_t* data, std::size_t size) {
  bool xonXoff = false;
  {
    std::lock_guard lock(mutex_);
    xonXoff = xonXoff_;
  }
  if (!xonXoff) {
    instrument_.Write(data, size, false);
    return;
  }
  std::vector<std::uint8_t> text;
  text.reserve(size);
  for (std::size_t i = 0; i < size; ++i) {
    if (data[i] == kXon || data[i] == kXoff) {
      std::lock_guard lock(mutex_);
      paused_ = data[i] == kXoff;
      if (!paused_) resumed_.notify_all();
    } else {
      text.push_back(data[i]);
    }
  }
  if (!text.empty()) instrument_.Write(text.data(), text.size(), false);
}

std::size_t InstrumentPort::Send(std::uint8_t* buffer, std::size_t max, std::chrono::milliseconds timeout) {
  bool end = false;
  if (line_ == Line::Socket) return instrument_.Read(buffer, max, timeout, end);
  {
    std::unique_lock lock(mutex_);
    if (!resumed_.wait_for(lock, timeout, [this] { return !paused_; })) return 0;
  }
  // Wait for output first and look at XOFF again, so that an XOFF that came meanwhile holds it back.
  if (!instrument_.WaitReadable(timeout) || Paused()) return 0;
  return instrument_.Read(buffer, std::min(max, kSerialChunk), std::chrono::milliseconds(0), end);
}

void InstrumentPort::HostLineSettings(int baud, bool xonXoff) {
  {
    std::lock_guard lock(mutex_);
    xonXoff_ = xonXoff;
    if (!xonXoff && paused_) {
      paused_ = false;  // flow control switched off: nothing can resume the output any more
      resumed_.notify_all();
    }
  }
  instrument_.SetHostLineSettings(baud, xonXoff ? 2 : 4);
}

void InstrumentPort::HostDisconnected() {
  if (line_ == Line::Socket) instrument_.DeviceClear();
}

bool InstrumentPort::Paused() const {
  std::lock_guard lock(mutex_);
  return paused_;
}

}  // namespace cvn73100::sim
