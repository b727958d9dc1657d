#include "server/ServerError.h"

namespace cvn73100::server {

ScopeError ServerError(ServerErrorCode code, const std::string& detail) {
  const char* text = "Automation server error.";
  switch (code) {
    case SERVERERR_NOT_CONNECTED:
      text = "The instrument is not connected.";
      break;
    case SERVERERR_BAD_ADDRESS:
      text = "The instrument address is not valid.";
      break;
    case SERVERERR_BLOCK_HEADER:
      text = "The instrument's data block has an invalid header.";
      break;
    case SERVERERR_BLOCK_TOO_LARGE:
      text = "The instrument's data block is larger than allowed.";
      break;
    case SERVERERR_BLOCK_INDEFINITE:
      text = "Indefinite-length data blocks are not supported.";
      break;
    case SERVERERR_BLOCK_SHORT:
      text = "The instrument's data block is incomplete.";
      break;
    case SERVERERR_BAD_REPLY:
      text = "The instrument's reply could not be read.";
      break;
    case SERVERERR_BAD_ARGUMENT:
      text = "Invalid argument.";
      break;
    case SERVERERR_FILE:
      text = "The file could not be written.";
      break;
    case SERVERERR_INSTRUMENT:
      text = "The instrument reported an error.";
      break;
    case SERVERERR_UNSUPPORTED:
      text = "Not possible on this instrument or line.";
      break;
  }
  std::string description = text;
  if (!detail.empty()) description += " (" + detail + ")";
  return ScopeError(ObjectError(code), SERVER_ERROR_SOURCE, description);
}

std::int32_t ServerErrorCondition(const ScopeError& error) {
  if (error.Source() != SERVER_ERROR_SOURCE) return 0;
  const std::int32_t code = error.Number() - OBJECT_ERROR_BASE;
  return code >= SERVERERR_NOT_CONNECTED && code <= SERVERERR_UNSUPPORTED ? code : 0;
}

}  // namespace cvn73100::server
