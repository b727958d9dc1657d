#pragma once
#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/Host.h"
#include "platform/InstrumentIO.h"

namespace cvn73100 {

class CIOconfiguration;

// The outcome of one identification query. The numbers are compared by the search page and the
// control, so they never change.
enum IDNQueryResult : std::int16_t {
  IDNSupported = 0,         // the reply names a supported model
  IDNUnsupportedModel = 1,  // the model field begins with "731" but is not in the supported list
  IDNNotFamily = 2,         // the reply has a comma but its model field does not begin with "731"
  IDNNotIEEE4882 = 3,       // a non-empty reply without any comma
  IDNNoResponse = 4,        // an empty reply, or an I/O error after the port was opened
  IDNPortNotFound = 5,      // the I/O library could not open the address
  IDNWrongPortType = 6,     // a GPIB address given to the RS-232 query, or the reverse
};

// Answers one question about one instrument address: does something there answer "*IDN?", and is it
// a supported oscilloscope? Each query opens its own channel and gives it up before returning.
class CQueryInstrument {
 public:
  static constexpr std::int32_t DEFAULT_TX_DELAY = 50;
  static constexpr std::int32_t REPLY_TIMEOUT_MS = 2500;
  static constexpr std::int32_t FLUSH_TIMEOUT_MS = 250;
  static constexpr std::int32_t SETTLE_MS = 10;
  static constexpr std::size_t SUPPORTED_MODEL_COUNT = 21;
  // Message-box style of Test: OK button, information icon, brought to the foreground.
  static constexpr int TEST_BOX_STYLE = MsgBoxStyle::OKOnly | MsgBoxStyle::Information | MsgBoxStyle::SetForeground;

  CQueryInstrument();
  ~CQueryInstrument();
  CQueryInstrument(const CQueryInstrument&) = delete;
  CQueryInstrument& operator=(const CQueryInstrument&) = delete;

  // Runs the query that fits `address` and shows the outcome in a message box over `owner`.
  // `reply` receives the raw "*IDN?" reply or "". Returns the IDNQueryResult. A wrong-kind result
  // raises error 380 (source message 104, description message 109 or 110 with the address block)
  // instead of showing a box. Errors of the I/O configuration and of the channel set-up propagate.
  std::int16_t Test(WindowHandle owner, const std::string& address, std::string& reply);

  // The text Test shows for `code` (0..5) after a query of `address` that returned `reply`.
  // Any other code reports an assertion and raises the error Test raises for it.
  std::string TestMessage(std::int16_t code, const std::string& address, const std::string& reply) const;

  // Classifies a raw reply: the model field (everything after the first comma) decides 0..2; a
  // reply without a comma is 3, or 4 when empty.
  static std::int16_t IsValidInstrument(const std::string& reply);

  // `message`, a blank line, message 228 ("At address:"), a blank line and the indented address:
  // a GPIB address whole, any other address up to its first "::".
  static std::string AppendAddressAt(const std::string& message, const std::string& address);

  // Stores the transmit delay (ms, paused after each write and while the handshake lines are down),
  // the I/O configuration that classifies addresses and holds each COM port's settings, and the I/O
  // manager that opens channels. Replaces all three. Without a manager every query answers IDNPortNotFound;
  // without a configuration a query reports the assertion and raises error 380.
  void Initialize(std::int32_t txDelay, std::shared_ptr<CIOconfiguration> ioConfiguration,
                  std::shared_ptr<IIOManager> ioManager);

  std::int32_t TXDelay() const { return m_lTXDelay; }
  // Why the last query could not open its port, in the operating system's and I/O library's words ("No such
  // file or directory", "Permission denied", "Device or resource busy"); "" when it opened. Test shows it
  // below the result text.
  const std::string& Cause() const { return m_strCause; }
  // Opens `name` (a COM port name or a GPIB address) only to learn why it cannot be opened, and gives it up at
  // once: the cause, or "" when it opens.
  std::string WhyNotOpened(const std::string& name);

  // "*IDN?" on a COM port. Only the port name (the first four characters) of `address` is opened; the
  // line settings come from the I/O configuration's row for that port. The channel is always closed.
  // Failures while the channel is being set up (handshake drop, line settings, timeout, clear) close
  // it and then reach the caller; an I/O error after that gives IDNNoResponse.
  std::int16_t RS232IDNQuery(const std::string& address, std::string& reply);

  // "*IDN?" on a full GPIB address. A failure to set the timeout or clear the device reaches the
  // caller; an I/O error after that closes the channel and gives IDNNoResponse. On every other path
  // the channel is released without an explicit Close.
  std::int16_t GPIBIDNQuery(const std::string& address, std::string& reply);

  // Holds a serial channel's handshake lines down: settles 10 ms, turns flow control off, drops DTR
  // then RTS, waits `delayMs` (when positive) and, with `restore`, raises both lines and puts the
  // previous flow control back. Raises IOERR_UNSUPPORTED for a channel that has no serial view.
  static void DropHandshake(IInstrumentIO& instrument, std::int32_t delayMs, bool restore);

  // Reads and discards single bytes until a read fails (250 ms each), then restores the timeout.
  static void FlushRXBuffer(IInstrumentIO& instrument);

  // Blocks the thread until the tick counter has passed start + `milliseconds`, sleeping in short
  // slices. Raises error 380 (messages 104/106) if the counter runs backwards (wrap-around).
  static void Wait(std::int32_t milliseconds);

  // The supported model numbers, in the order they are compared.
  static const std::array<std::string, SUPPORTED_MODEL_COUNT>& SupportedModels();

  // 2 when `model` does not begin with "731"; 0 when it begins with a supported model number
  // (case-sensitive prefix match; trailing fields are allowed); 1 otherwise.
  static std::int16_t ModelCompatibility(const std::string& model);

 private:
  CIOconfiguration& Configuration(const char* procedure) const;
  std::string CautionBlock() const;
  // The channel at `name`, or nullptr with the failure kept as the cause. A request to stop passes through.
  std::shared_ptr<IInstrumentIO> OpenChannel(const std::string& name);

  std::shared_ptr<IIOManager> m_iomanager;
  std::shared_ptr<CIOconfiguration> m_cioconfiguration;
  std::int32_t m_lTXDelay = DEFAULT_TX_DELAY;
  std::string m_strCause;
};

}  // namespace cvn73100
