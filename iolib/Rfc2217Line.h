#pragma once
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "iolib/SerialLine.h"
#include "iolib/TcpStream.h"
#include "platform/InstrumentIO.h"

namespace cvn73100::io {

// A serial port of a serial device server, reached over Telnet with the com port control option: line settings,
// flow control, DTR and RTS and purges are sent to the server, data bytes 255 are doubled both ways.
// - Opening negotiates binary mode both ways and the com port option, then sets 9600 baud, 8 data bits, no parity,
//   1 stop bit, no flow control, DTR and RTS on. A server that does not take the com port option within kAckWait
//   fails the open (IOERR_OPEN_FAILED).
// - Flush purges what the server received from the device and drops what arrived here.
// - Baud rate, data bits, stop bits and parity must be acknowledged within kAckWait, or the call raises
//   IOERR_IO_FAILURE (IOERR_OPEN_FAILED while opening) naming the setting. Not every server answers flow control,
//   DTR/RTS or purge requests (a server on a port without modem-control lines leaves DTR and RTS unanswered): those are
//   waited for kOptionalAckWait, and a kind of request a server left unanswered once is not waited for again in this
//   process.
// - Handshake DTR/DSR asks the server for DSR flow control outbound and DTR flow control inbound, XON/XOFF for
//   XON/XOFF both ways. DSR reads asserted until the server reports a modem line on (a server that reports every
//   line off has a port without modem-control inputs, where DSR counts as asserted), then as reported.
// - A server that asks us to suspend sending holds writes until it resumes (within the write's deadline).
class Rfc2217Line : public SerialLine {
 public:
  static constexpr std::chrono::milliseconds kAckWait{1000};
  static constexpr std::chrono::milliseconds kOptionalAckWait{150};

  // Connects to host:port within kConnectWait and negotiates; raises IOERR_OPEN_FAILED when that fails.
  Rfc2217Line(const std::string& host, int port);
  ~Rfc2217Line() override;

  void Write(const std::uint8_t* data, std::size_t size, const Deadline& deadline) override;
  std::size_t Read(std::uint8_t* buffer, std::size_t max, const Deadline& deadline) override;
  void DropInput() override;
  void Close() noexcept override;

  void SetBaudRate(std::int32_t baud) override;
  void SetDataBits(int bits) override;
  void SetStopBits(int bits) override;
  void SetHandshake(std::int16_t handshake) override;
  void SetDTR(bool asserted) override;
  void SetRTS(bool asserted) override;
  bool DSR() override;
  void Flush(const Deadline& deadline) override;

  // Telnet bytes of a com port subnegotiation: IAC SB 44 command value IAC SE, with 255 doubled in `value`.
  static std::vector<std::uint8_t> Subnegotiation(std::uint8_t command, const std::vector<std::uint8_t>& value);

 private:
  enum class Need { Required, IfAnswered };
  // Sends a com port command and waits for the server's answer as `need` says.
  void Command(std::uint8_t command, const std::vector<std::uint8_t>& value, Need need, const char* what);
  // Reads what the server sent (until `deadline` when nothing is there yet) and takes the Telnet commands out.
  void Pump(const Deadline& deadline);
  void Parse(const std::uint8_t* bytes, std::size_t size);
  void Negotiate(std::uint8_t verb, std::uint8_t option);
  void Subnegotiated();
  void SendRaw(const std::vector<std::uint8_t>& bytes, const Deadline& deadline);

  std::string m_name;
  std::unique_ptr<TcpStream> m_stream;
  std::vector<std::uint8_t> m_input;  // data bytes received and not read yet
  std::size_t m_inputStart = 0;
  // Telnet receive state.
  enum class State { Data, Iac, Verb, Sub, SubIac } m_state = State::Data;
  std::uint8_t m_verb = 0;
  std::vector<std::uint8_t> m_sub;
  std::array<bool, 256> m_localOn{};   // options we perform
  std::array<bool, 256> m_remoteOn{};  // options the server performs
  bool m_comPortAnswered = false;
  // Com port answers: which commands were answered since last sent.
  std::array<bool, 13> m_answered{};
  int m_modemState = 0;
  bool m_modemLinesSeen = false;
  bool m_suspended = false;
  IOErrorCode m_settingFailure = IOERR_OPEN_FAILED;  // what an unacknowledged setting raises (while opening)
};

}  // namespace cvn73100::io
