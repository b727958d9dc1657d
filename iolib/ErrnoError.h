#pragma once
#include <string>

#include "platform/InstrumentIO.h"

namespace cvn73100::io {

// Turns an operating-system error number into the I/O library's error.
class ErrnoError {
 public:
  // Whether `err` means the device or connection is gone (EIO, ENXIO, ENODEV, EPIPE, ECONNRESET, ...).
  static bool MeansVanished(int err);
  // IOERR_DEVICE_VANISHED for a vanished device, otherwise `otherwise`; the detail names `what` and the error text.
  static ScopeError Make(int err, const std::string& what, IOErrorCode otherwise = IOERR_IO_FAILURE);
};

}  // namespace cvn73100::io
