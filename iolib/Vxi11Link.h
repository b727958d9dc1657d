#pragma once
#include <cstddef>
#include <cstdint>
#include <string>

#include "iolib/Deadline.h"
#include "platform/InstrumentIO.h"

struct __rpc_client;  // NOLINT(bugprone-reserved-identifier): the RPC library's own name

namespace cvn73100::io {

// One VXI-11 link: the core channel (ONC RPC over TCP) to a LAN gateway or LAN instrument, and the link to one of
// its devices ("inst0", "gpib0,7"), kept open until Close.
// Errors: the gateway's error codes become the I/O library's: device not accessible or invalid address ->
// IOERR_NO_LISTENER, I/O timeout -> IOERR_TIMEOUT, invalid link or a connection that breaks -> IOERR_DEVICE_VANISHED
// ("link lost"), operation not supported -> IOERR_UNSUPPORTED, the rest -> IOERR_IO_FAILURE; each names the code.
// Not thread-safe: one thread at a time.
class Vxi11Link {
 public:
  static constexpr int kPortmapperPort = 111;
  static constexpr long kErrNone = 0, kErrNotAccessible = 3, kErrInvalidLink = 4, kErrUnsupported = 8, kErrLocked = 11,
                        kErrTimeout = 15, kErrIO = 17, kErrInvalidAddress = 21;
  static constexpr long kFlagEnd = 0x08, kFlagTermChar = 0x80;
  static constexpr long kReasonCount = 0x01, kReasonChar = 0x02, kReasonEnd = 0x04;

  // Connects to `host` (on `port`, or where its portmapper says the core channel is when `port` is 0) and creates a
  // link to `device`, all before `deadline`. Raises IOERR_OPEN_FAILED when no gateway answers there, and the
  // gateway's error (IOERR_NO_LISTENER for a device it does not have) when it refuses the link.
  Vxi11Link(const std::string& host, int port, const std::string& device, const Deadline& deadline);
  ~Vxi11Link();
  Vxi11Link(const Vxi11Link&) = delete;
  Vxi11Link& operator=(const Vxi11Link&) = delete;

  // Sends all `size` bytes in blocks the gateway accepts; `end` asks for END with the last byte.
  void Write(const std::uint8_t* data, std::size_t size, bool end, const Deadline& deadline);
  // Reads up to `max` bytes, stopping at END, or at `termChar` when it is 0..255; 0 when the deadline passed first.
  // The gateway is asked for as much as it will give; what the caller did not take yet is kept for the next Read.
  std::size_t Read(std::uint8_t* buffer, std::size_t max, int termChar, const Deadline& deadline, bool& end);
  // Drops what was read ahead (a new message makes it stale).
  void DropAhead() noexcept;
  // Device clear; drops what was read ahead.
  void Clear(const Deadline& deadline);
  // The device's status byte (a serial poll behind a GPIB gateway).
  std::uint8_t ReadStatusByte(const Deadline& deadline);
  // Destroys the link and closes the channel; harmless when already closed.
  void Close() noexcept;

  const std::string& Name() const { return m_name; }
  std::size_t MaxWriteBlock() const { return m_maxRecvSize; }

  // "device not accessible" for 3, and so on; "error N" for codes without a name.
  static std::string ErrorText(long code);
  // The I/O library's error for the gateway's error `code` in operation `what`.
  static ScopeError GatewayError(long code, const std::string& what);

 private:
  void Check(long code, const char* what) const;

  std::string m_name;
  __rpc_client* m_client = nullptr;
  long m_lid = 0;
  std::size_t m_maxRecvSize = 0;
  char* m_ahead = nullptr;  // the last device_read's data (malloc'd by the RPC library), handed out from m_aheadPos
  std::size_t m_aheadLen = 0;
  std::size_t m_aheadPos = 0;
  bool m_aheadEnd = false;
};

}  // namespace cvn73100::io
