#pragma once
#include <chrono>
#include <memory>
#include <string>

#include "iolib/MessageIO.h"

namespace cvn73100::io {

class PrologixConnection;

// One GPIB address behind a Prologix-style adapter (IOType "GPIB").
// - Writes: "++addr N" when the adapter was talking to another address, then the bytes as one escaped data line;
//   the adapter sends them with EOI on the last byte.
// - Reads: the first read after a write sends "++read eoi" (with "++read_tmo_ms" set to Timeout, at most 3000 ms)
//   and takes the adapter's bytes until the message is complete. The adapter does not pass EOI on, so Enter ends
//   at LF only. When Timeout is longer than the adapter waits and it has stopped reading, "++read eoi" is sent again.
// - Clear and a timed-out read send "++clr" (selected device clear), then "++ver", and drop everything up to the
//   version line: the adapter may still have been reading when our Timeout ran out, and what that read brings
//   must not be taken as the next reply. A write while a read may still be running (after ReadBytes, which cannot
//   see where the message ends) does the same before it sends.
// - The adapter reports no missing listener: a write to an empty address succeeds and the read times out.
// - Close sends "++loc" (go to local).
class PrologixIO : public MessageIO {
 public:
  PrologixIO(std::string resourceName, std::shared_ptr<PrologixConnection> connection, int address);
  ~PrologixIO() override;

  std::string IOType() const override { return "GPIB"; }

 protected:
  void DoWrite(const std::uint8_t* data, std::size_t size, bool end, const Deadline& deadline) override;
  std::size_t DoRead(std::uint8_t* buffer, std::size_t max, ReadKind kind, const Deadline& deadline,
                     bool& end) override;
  void DoClear(const Deadline& deadline) override;
  void DoDropInput() override;
  void AfterReadTimeout(bool partial) override;
  void MessageEnded() override;
  void DoClose() noexcept override;

 private:
  // With the connection locked: waits out whatever read is still running on the adapter.
  void Resync();

  std::shared_ptr<PrologixConnection> m_connection;
  // The last device clear found nobody at the address (see DoClear).
  bool m_noListener = false;
  int m_address;
  std::chrono::steady_clock::time_point m_lastHeard{};
};

}  // namespace cvn73100::io
