#pragma once
#include <cstdint>
#include <string>

#include "platform/ScopeError.h"

namespace cvn73100::server {

inline constexpr const char* SERVER_ERROR_SOURCE = "Cvn73100ServerLib";

// The automation server's own failures, each a code over the object-error base. Failures of the
// I/O library (timeout, vanished device, no listener, open failure) pass through with its source.
enum ServerErrorCode : std::int32_t {
  SERVERERR_NOT_CONNECTED = 1200,     // an operation needs an open connection and there is none
  SERVERERR_BAD_ADDRESS = 1201,       // the address or one of its keywords is not understood
  SERVERERR_BLOCK_HEADER = 1202,      // a reply that should hold a block has no valid "#<n><length>" header
  SERVERERR_BLOCK_TOO_LARGE = 1203,   // a block declares more bytes than the transfer accepts
  SERVERERR_BLOCK_INDEFINITE = 1204,  // an indefinite-length block ("#0"), which this server refuses
  SERVERERR_BLOCK_SHORT = 1205,       // a block ended, or stopped arriving, before its declared length
  SERVERERR_BAD_REPLY = 1206,         // a reply that cannot be read (a number, a preamble, an identity)
  SERVERERR_BAD_ARGUMENT = 1207,      // an argument out of range (channel, format, count, empty learn string)
  SERVERERR_FILE = 1208,              // an image file could not be written
  SERVERERR_INSTRUMENT = 1209,        // the instrument's error queue reported a failure of a command
  SERVERERR_UNSUPPORTED = 1210,       // the instrument or its line cannot do what was asked
};

ScopeError ServerError(ServerErrorCode code, const std::string& detail = {});
// The server condition of an error made by ServerError, or 0 for any other error.
std::int32_t ServerErrorCondition(const ScopeError& error);

}  // namespace cvn73100::server
