#pragma once
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

namespace cvn73100::io {

// The linux-gpib user library, loaded at run time with dlopen so that nothing needs it to build.
// Holds the entry points the I/O library uses and reads the per-thread status after each call.
// A loaded library stays loaded for the life of the process (it registers fork handlers and may own threads).
class LinuxGpibLibrary {
 public:
  // ibsta bits, iberr codes, EOS flags and ibask options of the library's C interface.
  static constexpr int ERR = 0x8000, TIMO = 0x4000, END = 0x2000, CMPL = 0x0100;
  static constexpr int EDVR = 0, ECIC = 1, ENOL = 2, EADR = 3, EARG = 4, ESAC = 5, EABO = 6, ENEB = 7, ECAP = 11,
                       EBUS = 14, ETAB = 20;
  static constexpr int REOS = 0x0400, BIN = 0x1000;
  static constexpr int IbaPAD = 0x1;
  static constexpr std::uint16_t NOADDR = 0xFFFF;
  static constexpr int T3s = 12;

  // Loads `path` (a name such as "libgpib.so.0" is looked up the usual way). Raises IOERR_OPEN_FAILED when the
  // library or one of the required entry points is missing. The same path gives the same object.
  static std::shared_ptr<LinuxGpibLibrary> Load(const std::string& path);

  // The timeout step (T10us .. T1000s, values 1..17) for one call that must be over within `remaining`: the
  // longest step not longer than it, or 0 when even the shortest (10 us) does not fit. `length` gets its length.
  static int StepWithin(std::chrono::microseconds remaining, std::chrono::microseconds& length);

  int Dev(int board, int pad, int sad, int timeout, int sendEoi, int eos) const {
    return m_ibdev(board, pad, sad, timeout, sendEoi, eos);
  }
  int Wrt(int ud, const void* data, long count) const { return m_ibwrt(ud, data, count); }
  int Rd(int ud, void* data, long count) const { return m_ibrd(ud, data, count); }
  int Clr(int ud) const { return m_ibclr(ud); }
  int Tmo(int ud, int step) const { return m_ibtmo(ud, step); }
  int Onl(int ud, int online) const { return m_ibonl(ud, online); }
  int Loc(int ud) const { return m_ibloc(ud); }
  int Eos(int ud, int mode) const { return m_ibeos(ud, mode); }
  int Ask(int ud, int option, int* value) const { return m_ibask(ud, option, value); }
  void FindLstn(int board, const std::uint16_t* pads, std::uint16_t* results, int max) const {
    m_FindLstn(board, pads, results, max);
  }
  // Status of the calling thread's last call.
  int Iberr() const;
  long Ibcntl() const;

  const std::string& Path() const { return m_path; }
  // A short name for an iberr code ("ENOL: no listener").
  static std::string ErrorName(int iberr);

 private:
  explicit LinuxGpibLibrary(std::string path) : m_path(std::move(path)) {}

  std::string m_path;
  int (*m_ibdev)(int, int, int, int, int, int) = nullptr;
  int (*m_ibwrt)(int, const void*, long) = nullptr;
  int (*m_ibrd)(int, void*, long) = nullptr;
  int (*m_ibclr)(int) = nullptr;
  int (*m_ibtmo)(int, int) = nullptr;
  int (*m_ibonl)(int, int) = nullptr;
  int (*m_ibloc)(int) = nullptr;
  int (*m_ibeos)(int, int) = nullptr;
  int (*m_ibask)(int, int, int*) = nullptr;
  void (*m_FindLstn)(int, const std::uint16_t*, std::uint16_t*, int) = nullptr;
  // Per-thread status functions, or the process-wide variables of older libraries.
  int (*m_ThreadIberr)() = nullptr;
  long (*m_ThreadIbcntl)() = nullptr;
  volatile int* m_iberr = nullptr;
  volatile long* m_ibcntl = nullptr;
};

}  // namespace cvn73100::io
