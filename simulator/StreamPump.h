#pragma once

#include <atomic>
#include <functional>
#include <thread>

#include "simulator/ByteDevice.h"

namespace cvn73100::sim {

// Moves bytes between a file descriptor (a pty master or a socket) and a ByteDevice, on two threads: one
// reads the host's bytes into the device, the other writes the device's bytes to the host.
class StreamPump {
 public:
  // `fd` stays owned by the caller and must stay open until the pump is destroyed. When `termiosFd` is a
  // terminal (the pty's slave side), its settings are reported to the device before each batch of host bytes,
  // and output the host does not read for a while is discarded as on a line nobody listens to. `onClosed` runs
  // on the reader thread when the host closes the stream.
  StreamPump(int fd, ByteDevice& device, int termiosFd = -1, std::function<void()> onClosed = {});
  ~StreamPump();
  StreamPump(const StreamPump&) = delete;
  StreamPump& operator=(const StreamPump&) = delete;

  bool Closed() const { return closed_; }

 private:
  void ReadLoop();
  void WriteLoop();
  void WriteAll(const std::uint8_t* data, std::size_t size);
  void ReportLineSettings();

  int fd_;
  ByteDevice& device_;
  int termiosFd_;
  std::function<void()> onClosed_;
  bool socket_ = false;
  int wake_[2] = {-1, -1};  // a pipe whose read end wakes the threads' polls on stop
  std::atomic<bool> stop_{false};
  std::atomic<bool> closed_{false};
  std::thread reader_;
  std::thread writer_;
};

}  // namespace cvn73100::sim
