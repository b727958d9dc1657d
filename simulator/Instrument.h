#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/Identity.h"
#include "simulator/MessageFramer.h"
#include "simulator/ScopeModel.h"
#include "simulator/ScopeState.h"
#include "simulator/Waveform.h"

namespace cvn73100::sim {

struct Faults {
  bool silent = false;          // never answers
  bool garbage = false;         // answers every query with garbage bytes (no comma), LF-terminated
  bool dropMidBlock = false;    // definite-length block replies stop half-way
  int lateReplyMs = 0;          // replies become readable only this long after the query ends
  int lineBaud = 0;             // 0 = unpaced; else output bytes leave at baud/10 bytes per second
  bool wrongParameter = false;  // serial: answers only when host baud/handshake match required*
  int requiredBaud = 9600;
  int requiredHandshake = 2;  // 2 XON/XOFF, 4 DTR/DSR (I/O library values; 1 = none)
  bool operator==(const Faults&) const = default;
};

struct InstrumentConfig {
  Identity identity;
  Faults faults;
  int gpibAddress = 7;
};

// One simulated 73100 oscilloscope as a device on a bus: bytes in, bytes out, with message ends marked as
// GPIB's EOI marks them. Thread-safe: transports call it from their own threads.
//
// Output follows IEEE 488.2: a response waits in the output queue until read, and a new program message that
// arrives before the previous response is read discards it with -410. On a byte stream (a serial line or a
// socket) a response is already on its way to the host, so nothing is discarded there. There is one output
// queue: serve an instrument on one transport at a time, or replies go to whichever transport reads first.
class Instrument {
 public:
  explicit Instrument(InstrumentConfig config = {});

  // Host -> device bytes. `end` marks the end of a program message (GPIB EOI); an LF also ends one.
  void Write(const std::uint8_t* data, std::size_t size, bool end);
  // Device -> host bytes: blocks until at least one byte is readable or the timeout passes (returns 0 then).
  // `end` is set when the returned bytes finish a response message (EOI on the last byte).
  std::size_t Read(std::uint8_t* buffer, std::size_t max, std::chrono::milliseconds timeout, bool& end);
  // Blocks until a reply byte is readable or the timeout passes; returns whether one is.
  bool WaitReadable(std::chrono::milliseconds timeout);
  // GPIB SDC / clear: drops input and output queues (the error queue and the settings stay).
  void DeviceClear();
  // What the host's serial port is set to (baud rate; handshake 1 none, 2 XON/XOFF, 4 DTR/DSR). Marks the
  // instrument as reached over a serial line. For the wrong-parameter fault a pseudo-terminal cannot tell
  // DTR/DSR from no handshake, so 1 and 4 count as the same choice.
  void SetHostLineSettings(int baud, int handshake);
  // Marks the instrument as served on a byte stream (serial line or socket): see the class comment.
  void SetStreamOutput(bool stream);

  InstrumentConfig Config() const;
  void SetFaults(const Faults& faults);
  void SetIdentity(const Identity& identity);

  // GPIB serial poll: the status byte.
  std::uint8_t SerialPoll();
  // Direct access for tests and tools: the full device state, run state and error queue (oldest first). The
  // signal formula is Waveform::ChannelVolts / Waveform::LogicWord with Waveform::MakePreamble(State()).
  ScopeState State() const;
  void SetState(const ScopeState& state);
  RunState Running() const;
  std::vector<int> Errors() const;
  // Writes `message` with END (a whole program message).
  void Send(std::string_view message);
  // Writes `message` with END and reads one whole response message (without its LF) within `timeout`;
  // returns what arrived, empty when nothing did.
  std::string Query(std::string_view message, std::chrono::milliseconds timeout = std::chrono::seconds(2));

 private:
  using Clock = std::chrono::steady_clock;
  struct Reply {
    std::string bytes;
    std::size_t pos = 0;
    bool end = true;  // EOI on the last byte
    Clock::time_point readyAt;
    Clock::duration byteTime{};  // zero when the line is not paced
  };

  void HandleMessage();
  void Enqueue(std::string& response);
  bool LineMatches() const;
  std::string Garbage();
  static std::size_t Available(const Reply& reply, Clock::time_point now);

  mutable std::mutex mutex_;
  std::condition_variable readable_;
  InstrumentConfig config_;
  ScopeModel model_;
  MessageFramer framer_;
  std::deque<Reply> output_;
  std::string response_;
  Clock::time_point lineFreeAt_{};
  bool serial_ = false;
  bool stream_ = false;
  int hostBaud_ = 0;
  int hostHandshake_ = 0;
  std::uint64_t garbageState_ = 0x9E3779B97F4A7C15ull;
};

}  // namespace cvn73100::sim
