#pragma once
#include <memory>
#include <string>

#include "iolib/MessageIO.h"

namespace cvn73100::io {

class LinuxGpibLibrary;

// One GPIB address on a linux-gpib board (IOType "GPIB"), opened with ibdev (no secondary address, EOI on the
// last byte of each write) and closed with ibloc and ibonl(0).
// - Timeout: each ib call gets the longest timeout step (10 us .. 1000 s) that fits in what is left of the
//   call's Timeout, and the call is repeated with the rest, so a read or write as a whole ends within Timeout.
// - Enter reads with the EOS mode "end on LF, 8-bit compare"; ReadBytes reads with EOS off (only the count ends it).
// - Errors: ENOL -> IOERR_NO_LISTENER; a write that times out before the device took a single byte, or that fails
//   with EIO (boards that report a missing listener as a bus error), -> IOERR_NO_LISTENER as well; ENEB or a
//   system error ENODEV/ENXIO -> IOERR_DEVICE_VANISHED; others -> IOERR_IO_FAILURE with the iberr name.
// - Clear is ibclr (selected device clear); ENOL there is ignored, as a real board cannot always tell.
//   A read that times out ends with ibclr too, so the rest of that reply never comes.
class LinuxGpibIO : public MessageIO {
 public:
  // Raises IOERR_OPEN_FAILED when ibdev fails.
  LinuxGpibIO(std::string resourceName, std::shared_ptr<LinuxGpibLibrary> library, int board, int address);
  ~LinuxGpibIO() override;

  std::string IOType() const override { return "GPIB"; }

 protected:
  void DoWrite(const std::uint8_t* data, std::size_t size, bool end, const Deadline& deadline) override;
  std::size_t DoRead(std::uint8_t* buffer, std::size_t max, ReadKind kind, const Deadline& deadline,
                     bool& end) override;
  void DoClear(const Deadline& deadline) override;
  void AfterReadTimeout(bool partial) override;
  void DoClose() noexcept override;

 private:
  // Sets the call timeout for the next ib call; false when nothing of the deadline is left.
  bool SetStep(const Deadline& deadline);
  ScopeError Failure(const char* call, int iberr, long count) const;

  std::shared_ptr<LinuxGpibLibrary> m_library;
  int m_ud = -1;
  int m_step = -1;
  int m_eos = -1;
};

}  // namespace cvn73100::io
