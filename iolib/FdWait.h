#pragma once
#include "iolib/Deadline.h"

namespace cvn73100::io {

// Blocking waits on a file descriptor with a deadline (poll), shared by the descriptor-based streams.
class FdWait {
 public:
  enum class Result { Ready, Hangup, Expired };
  // Waits until `fd` has input, the other end hung up or failed, or the deadline passed.
  static Result Readable(int fd, const Deadline& deadline);
  // Waits until `fd` accepts output, hung up or failed, or the deadline passed.
  static Result Writable(int fd, const Deadline& deadline);
  // Whether the other end of `fd` has hung up or the descriptor failed (checked without waiting).
  static bool HungUp(int fd);
};

}  // namespace cvn73100::io
