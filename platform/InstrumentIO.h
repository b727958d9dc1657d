#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/ScopeError.h"
#include "platform/Variant.h"

namespace cvn73100 {

// Handshake values of the serial view.
inline constexpr std::int16_t RS232_HandShake_None = 1;  // no flow control: the lines are left alone
inline constexpr std::int16_t RS232_HandShake_XON_XOFF = 2;
inline constexpr std::int16_t RS232_HandShake_DTR_DSR = 4;

// The I/O library's own error numbers, one per condition, so a caller can tell them apart.
enum IOErrorCode : std::int32_t {
  IOERR_TIMEOUT = 1100,          // no (complete) reply within Timeout
  IOERR_DEVICE_VANISHED = 1101,  // the device node or connection went away
  IOERR_NO_LISTENER = 1102,      // no device listens at the GPIB address
  IOERR_OPEN_FAILED = 1103,      // the resource does not exist or cannot be opened
  IOERR_IO_FAILURE = 1104,       // any other failure of the line or adapter
  IOERR_UNSUPPORTED = 1105,      // the backend cannot do what was asked
  IOERR_BAD_ARGUMENT = 1106,     // an argument out of range (negative count, unknown image)
  IOERR_CLOSED = 1107,           // the object was closed through Port().Close()
};
inline constexpr const char* IO_ERROR_SOURCE = "CorvaneIOUtilsLib";
ScopeError IOError(IOErrorCode code, const std::string& detail = {});
// The I/O condition of an error raised by IOError, or 0 for any other error.
std::int32_t IOErrorCondition(const ScopeError& error);

// The port beneath an instrument I/O object.
class IPort {
 public:
  virtual ~IPort() = default;
  // Releases the device; later calls on the I/O object raise IOERR_CLOSED. Closing twice is harmless.
  virtual void Close() = 0;
};

// The serial view of an instrument I/O object (IOType "ASRL").
class ISerialIO {
 public:
  virtual ~ISerialIO() = default;
  virtual std::int32_t BaudRate() const = 0;
  virtual void SetBaudRate(std::int32_t baud) = 0;
  virtual std::int16_t DataBits() const = 0;
  virtual void SetDataBits(std::int16_t bits) = 0;
  virtual std::int16_t StopBits() const = 0;
  virtual void SetStopBits(std::int16_t bits) = 0;
  // RS232_HandShake_None, _XON_XOFF or _DTR_DSR.
  virtual std::int16_t Handshake() const = 0;
  virtual void SetHandshake(std::int16_t handshake) = 0;
  virtual bool DTRState() const = 0;
  virtual void SetDTRState(bool asserted) = 0;
  virtual bool RTSState() const = 0;
  virtual void SetRTSState(bool asserted) = 0;
};

// One open connection to an instrument address. Every failing call raises a ScopeError made by IOError.
class IInstrumentIO {
 public:
  virtual ~IInstrumentIO() = default;

  // "ASRL" for a serial port, "GPIB" for a GPIB address.
  virtual std::string IOType() const = 0;
  // The resource this object was opened on.
  virtual std::string ResourceName() const = 0;
  // Reply time limit in milliseconds for each read call as a whole.
  virtual std::int32_t Timeout() const = 0;
  virtual void SetTimeout(std::int32_t milliseconds) = 0;
  // Clears the device (GPIB selected device clear) and drops every byte buffered in either direction.
  virtual void Clear() = 0;
  // Writes `data` followed by the output termination (with EOI on the last byte on GPIB).
  virtual void Output(const std::string& data) = 0;
  // Reads one response message: up to LF or EOI, with a trailing CR LF or LF removed.
  // The image "K" (free-field text) is the one image every backend understands.
  virtual void Enter(std::string& data, const std::string& image = "K") = 0;
  // The write termination: 10 (LF, the default) appends a line feed; 0 appends nothing.
  virtual std::int16_t OutputTermination() const = 0;
  virtual void SetOutputTermination(std::int16_t termination) = 0;
  // Reads `count` bytes into `buffer` (replacing its contents) within one Timeout, or fewer when the message
  // ends first (EOI on GPIB); returns how many it read.
  virtual std::int32_t ReadBytes(std::int32_t count, Bytes& buffer) = 0;
  // Writes the first `count` bytes of `buffer` as they are (no termination).
  virtual void WriteBytes(std::int32_t count, const Bytes& buffer) = 0;
  virtual IPort& Port() = 0;
  // The serial view, or nullptr when the object is not a serial port.
  virtual ISerialIO* Serial() = 0;
};

// The I/O library's manager: lists resources by pattern and opens them.
class IIOManager {
 public:
  virtual ~IIOManager() = default;
  // Resource names matching `pattern`: "COM*", "COM3", "GPIB*", "GPIB0". A GPIB board lists its
  // interface ("GPIB0::INTFC") and each instrument address with a listener ("GPIB0::7::INSTR").
  virtual std::vector<std::string> FindResources(const std::string& pattern) = 0;
  // Opens an address: "GPIB0::7::INSTR" or a COM port name (keywords after "::" are not the manager's).
  // Raises IOERR_OPEN_FAILED when the resource does not exist.
  virtual std::shared_ptr<IInstrumentIO> Open(const std::string& address) = 0;
  // Whether the line settings of COM port `portName` ("COM3") are fixed at the other end of the line (a raw
  // socket to a serial device server), so that setting them has no effect.
  virtual bool SerialSettingsFixed(const std::string& /*portName*/) const { return false; }
};

// Whatever exposes the I/O library's manager (the control, or the connection).
class IIOManagerSource {
 public:
  virtual ~IIOManagerSource() = default;
  virtual std::shared_ptr<IIOManager> IOManager() const = 0;
};

}  // namespace cvn73100
