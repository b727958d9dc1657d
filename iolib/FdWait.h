#pragma once
#include <string>

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

  // The waits of a stream named `name`: a hang-up raises IOERR_DEVICE_VANISHED; a deadline that passes first
  // raises IOERR_TIMEOUT for a write, and makes a read return false (nothing arrived).
  static void UntilWritable(int fd, const Deadline& deadline, const std::string& name);
  static bool UntilReadable(int fd, const Deadline& deadline, const std::string& name);
};

}  // namespace cvn73100::io
