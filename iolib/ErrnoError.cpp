#include "iolib/ErrnoError.h"

#include <cerrno>
#include <cstring>

namespace cvn73100::io {

bool ErrnoError::MeansVanished(int err) {
  switch (err) {
    case EIO:
    case ENXIO:
    case ENODEV:
    case EPIPE:
    case ECONNRESET:
    case ECONNABORTED:
    case ESHUTDOWN:
    case ENOTCONN:
    case EBADF:
      return true;
    default:
      return false;
  }
}

ScopeError ErrnoError::Make(int err, const std::string& what, IOErrorCode otherwise) {
  const IOErrorCode code = MeansVanished(err) ? IOERR_DEVICE_VANISHED : otherwise;
  return IOError(code, what + ": " + std::strerror(err));
}

}  // namespace cvn73100::io
