#pragma once
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "iolib/BoardMap.h"
#include "iolib/ByteStream.h"
#include "platform/Variant.h"

namespace cvn73100::io {

// The host's link to a Prologix-style GPIB adapter (USB serial or TCP), shared by every open address behind it.
// On connecting it makes the adapter the bus controller with the settings the library relies on:
//   ++savecfg 0 (spare the EEPROM), ++mode 1, ++ifc, ++auto 0 (read only when asked), ++eoi 1 (EOI with the last
//   byte), ++eos 3 (append nothing: the message carries its own LF), ++eot_enable 0,
// and asks ++ver: a device that does not answer within 2 s is not such an adapter.
// Data lines are escaped (ESC before CR, LF, ESC and '+') and end with one unescaped LF. Callers hold Lock()
// around every exchange, since all addresses share one stream.
class PrologixConnection {
 public:
  // The connection for `target` (a PrologixSerial or PrologixTcp entry), made on first use and shared while any
  // holder keeps it. Raises IOERR_OPEN_FAILED when the adapter cannot be reached or does not answer ++ver.
  static std::shared_ptr<PrologixConnection> Open(const BoardMap::GpibTarget& target);
  // Sets up the adapter behind `stream` (which it takes over); `name` is for messages.
  PrologixConnection(std::unique_ptr<ByteStream> stream, std::string name);
  ~PrologixConnection();
  PrologixConnection(const PrologixConnection&) = delete;
  PrologixConnection& operator=(const PrologixConnection&) = delete;

  // ESC before each CR, LF, ESC and '+'.
  static Bytes Escape(const std::uint8_t* data, std::size_t size);
  static constexpr int kMaxReadTimeoutMs = 3000;

  std::unique_lock<std::mutex> Lock() { return std::unique_lock<std::mutex>(m_mutex); }

  // The following need the lock.
  // Sends "++addr N" when the adapter talks to another address.
  void Select(int address, const Deadline& deadline);
  // Sends "++<command>".
  void Command(const std::string& command, const Deadline& deadline);
  // Sends `size` bytes to the selected instrument as one escaped data line.
  void SendData(const std::uint8_t* data, std::size_t size, const Deadline& deadline);
  // Sets the adapter's inter-character read timeout (clamped to 1..3000 ms) and sends "++read eoi";
  // `owner` is the reader the coming bytes belong to.
  void RequestRead(const void* owner, int readTimeoutMs, const Deadline& deadline);
  // Serial-polls the selected address under a short adapter timeout; returns the status byte, or -1 when no
  // device answers there. For use when no read is in progress.
  int SerialPoll(const Deadline& deadline);
  // The reader whose "++read" output may still be arriving (an orphaned read has an owner of its own), or nullptr.
  const void* ReadOwner() const { return m_readOwner; }
  void EndRead() { m_readOwner = nullptr; }
  // Bytes from the adapter (0 when the deadline passed first).
  std::size_t Receive(std::uint8_t* buffer, std::size_t max, const Deadline& deadline);
  // Drops unread bytes; for use when no read is in progress.
  void DropInput();
  // Waits until the adapter has worked through everything sent so far (a read still running included): sends
  // "++ver" and drops all bytes up to its answer. Raises IOERR_TIMEOUT when the answer does not come by `deadline`.
  void Resync(const Deadline& deadline);
  // Marks a read whose bytes may still be arriving while nobody waits for them (its reader closed).
  void OrphanRead() { m_readOwner = &m_readOwner; }
  int ReadTimeoutMs() const { return m_readTimeoutMs; }

  const std::string& Name() const { return m_name; }
  const std::string& Version() const { return m_version; }
  // Whether the link failed for good (the adapter vanished); a later Open makes a new one.
  bool Broken() const { return m_broken; }
  // Takes the lock and, unless a read is in progress, asks ++ver; marks the link broken when no answer comes.
  void CheckAlive();

 private:
  void Send(const std::uint8_t* data, std::size_t size, const Deadline& deadline);
  template <typename Call>
  auto Guard(Call call) -> decltype(call());

  std::mutex m_mutex;
  std::unique_ptr<ByteStream> m_stream;
  std::string m_name;
  std::string m_version;
  int m_address = -1;
  int m_readTimeoutMs = -1;
  const void* m_readOwner = nullptr;
  bool m_broken = false;
};

}  // namespace cvn73100::io
