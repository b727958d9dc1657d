#include "platform/InstrumentIO.h"

namespace cvn73100 {

ScopeError IOError(IOErrorCode code, const std::string& detail) {
  const char* text = "I/O error.";
  switch (code) {
    case IOERR_TIMEOUT:
      text = "I/O operation timed out.";
      break;
    case IOERR_DEVICE_VANISHED:
      text = "The I/O device is no longer present.";
      break;
    case IOERR_NO_LISTENER:
      text = "No listener at the GPIB address.";
      break;
    case IOERR_OPEN_FAILED:
      text = "Could not open the I/O resource.";
      break;
    case IOERR_IO_FAILURE:
      text = "I/O failure.";
      break;
    case IOERR_UNSUPPORTED:
      text = "The operation is not supported by this I/O resource.";
      break;
    case IOERR_BAD_ARGUMENT:
      text = "Invalid I/O argument.";
      break;
    case IOERR_CLOSED:
      text = "The I/O resource is closed.";
      break;
  }
  std::string description = text;
  if (!detail.empty()) description += " (" + detail + ")";
  return ScopeError(ObjectError(code), IO_ERROR_SOURCE, description);
}

std::int32_t IOErrorCondition(const ScopeError& error) {
  if (error.Source() != IO_ERROR_SOURCE) return 0;
  const std::int32_t code = error.Number() - OBJECT_ERROR_BASE;
  return code >= IOERR_TIMEOUT && code <= IOERR_CLOSED ? code : 0;
}

}  // namespace cvn73100
