#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/InstrumentIO.h"
#include "platform/ScpiMnemonics.h"
#include "platform/Variant.h"

namespace cvn73100::server {

// The server's one connection to an instrument: opens it through the I/O manager, applies the serial
// line settings of the address, and speaks SCPI over it (commands, queries, numbers, blocks).
class ScpiChannel {
 public:
  // Reply time limit of a new channel object, in milliseconds.
  static constexpr std::int32_t DEFAULT_TIMEOUT_MS = 5000;

  void SetIOManager(std::shared_ptr<IIOManager> ioManager) { m_ioManager = std::move(ioManager); }
  // The reply time limit set on every channel opened, and on the open one when it changes.
  std::int32_t Timeout() const { return m_timeoutMs; }
  // Raises SERVERERR_BAD_ARGUMENT for a negative time.
  void SetTimeout(std::int32_t milliseconds);

  // Closes any open channel, then opens `address` (see ServerAddress). Raises SERVERERR_BAD_ADDRESS,
  // SERVERERR_NOT_CONNECTED when there is no I/O manager, or the I/O library's error.
  void Open(const std::string& address);
  // Closes the port; harmless when nothing is open.
  void Close();
  bool IsOpen() const { return static_cast<bool>(m_io); }
  // The address the channel was opened on; "" when closed.
  const std::string& Address() const { return m_address; }
  // The channel in use; raises SERVERERR_NOT_CONNECTED when closed.
  std::shared_ptr<IInstrumentIO> Shared() const;
  IInstrumentIO& IO() const { return *Shared(); }

  // The channel, ready for a new message. An instrument on a serial line whose reply was not read in time may
  // still send it; before anything new is sent, it is brought back in step (see Resynchronise).
  IInstrumentIO& ForWriting();
  // Reads of the reply to the last message; a read that times out on a serial line leaves a reply owed.
  void Enter(std::string& reply, const std::string& image);
  std::int32_t ReadBytes(std::int32_t count, Bytes& buffer);
  // Reads a definite-length block of at most `cap` bytes. A failed transfer clears the channel so the next
  // command starts on an empty line.
  Bytes ReadBlock(std::size_t cap, std::optional<std::size_t> expected = std::nullopt);

  void Write(const std::string& command);
  // Sends a settings command and the error query in one message; an entry in the instrument's error queue
  // fails it with SERVERERR_INSTRUMENT naming the instrument's number, text and `command`.
  void Set(const std::string& command);
  // Sends `query` and reads one reply line. A query the instrument rejects sends nothing back: when no reply
  // comes, the error queue is read and its entries reported in place of the bare timeout.
  std::string Query(const std::string& query);
  // A reply read as a number; raises SERVERERR_BAD_REPLY when it is not one. The instrument's "no value"
  // (9.9E+37 and beyond) reads as NaN.
  double QueryReal(const std::string& query);
  // A reply read as a whole number (a count or a ratio).
  std::int32_t QueryInteger(const std::string& query);
  // A reply read as one of the table's keywords; returns its value.
  std::int32_t QueryKeyword(const std::string& query, std::span<const ::cvn73100::scpi::Mnemonic> table,
                            const char* what);
  // A boolean reply: 1/0 or ON/OFF.
  bool QueryBoolean(const std::string& query);
  // Reads the instrument's error queue until it reports no error; returns the entries, oldest first.
  std::vector<std::string> DrainErrors();
  // Sends `query` and reads the definite-length block of its reply (ReadBlock); a refused query is reported
  // as Query reports it.
  Bytes QueryBlock(const std::string& query, std::size_t cap, std::optional<std::size_t> expected = std::nullopt);
  // Sends `header`, a space and `data` as one definite-length block in one message.
  void WriteBlock(const std::string& header, const Bytes& data);

  // True on a serial line with XON/XOFF flow control, where the bytes 0x11 and 0x13 of binary data are lost.
  bool UsesSoftwareFlowControl() const;
  // Raises SERVERERR_UNSUPPORTED, naming the cause and the remedy, when binary `what` cannot cross the line.
  void RequireBinarySafeLine(const char* what) const;

  static double ParseReal(const std::string& text);
  // The number of an error queue entry (`-104,"Data type error"`); raises SERVERERR_BAD_REPLY.
  static std::int32_t ErrorNumber(const std::string& entry);

 private:
  // Runs a read; on a serial line, a timeout means the instrument may still answer later.
  template <class Read>
  auto Reading(Read&& read);
  // Sends `query` and runs `read`; a reply that does not come is explained by the instrument's error queue.
  template <class Read>
  auto Asking(const std::string& query, Read&& read);
  // Asks "*OPC?" twice in one message and discards every line before the joint answer: the instrument gives it
  // only after whatever it still owes. Lines that follow the answer at once (an earlier synchronisation's late
  // answer came first) are read until the line is quiet.
  void Resynchronise(IInstrumentIO& io);

  std::shared_ptr<IIOManager> m_ioManager;
  std::shared_ptr<IInstrumentIO> m_io;
  std::string m_address;
  bool m_replyOwed = false;
  std::int32_t m_timeoutMs = DEFAULT_TIMEOUT_MS;
};

}  // namespace cvn73100::server
