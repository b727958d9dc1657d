#pragma once

#include <memory>
#include <string>

#include "simulator/ByteDevice.h"
#include "simulator/StreamPump.h"

namespace cvn73100::sim {

// Serves a ByteDevice on a new pseudo-terminal, a real serial device node a host opens like any port. The
// server keeps the slave side open itself, so a host closing and reopening the node never hangs up the pty.
// It starts the line raw at 9600 baud, 8N1, no flow control.
class PtyServer {
 public:
  // `device` must outlive the server. Throws std::system_error when no pseudo-terminal can be made.
  explicit PtyServer(ByteDevice& device);
  ~PtyServer();
  PtyServer(const PtyServer&) = delete;
  PtyServer& operator=(const PtyServer&) = delete;

  // The slave's device node, e.g. "/dev/pts/5".
  const std::string& DevicePath() const { return path_; }

 private:
  int master_ = -1;
  int slave_ = -1;
  std::string path_;
  std::unique_ptr<StreamPump> pump_;
};

}  // namespace cvn73100::sim
