#include "iolib/LinuxGpibIO.h"

#include <cerrno>
#include <cstring>

#include "iolib/LinuxGpibLibrary.h"

namespace cvn73100::io {
namespace {

using Lib = LinuxGpibLibrary;

constexpr int kMessageEos = Lib::REOS | Lib::BIN | '\n';
constexpr int kBytesEos = 0;

}  // namespace

LinuxGpibIO::LinuxGpibIO(std::string resourceName, std::shared_ptr<LinuxGpibLibrary> library, int board, int address)
    : MessageIO(std::move(resourceName)), m_library(std::move(library)) {
  m_ud = m_library->Dev(board, address, 0, Lib::T3s, 1, kMessageEos);
  if (m_ud < 0) {
    const int err = m_library->Iberr();
    throw IOError(IOERR_OPEN_FAILED, ResourceName() + ": ibdev failed (" + Lib::ErrorName(err) + ")");
  }
  m_step = Lib::T3s;
  m_eos = kMessageEos;
}

LinuxGpibIO::~LinuxGpibIO() { Close(); }

ScopeError LinuxGpibIO::Failure(const char* call, int iberr, long count) const {
  const std::string what = ResourceName() + ": " + call + " failed (" + Lib::ErrorName(iberr) + ")";
  switch (iberr) {
    case Lib::ENOL:
      return IOError(IOERR_NO_LISTENER, what);
    case Lib::ENEB:
      return IOError(IOERR_DEVICE_VANISHED, what);
    case Lib::EDVR:
      // ibcntl holds errno for a system error.
      if (count == ENODEV || count == ENXIO || count == ESHUTDOWN)
        return IOError(IOERR_DEVICE_VANISHED, what + ": " + std::strerror(static_cast<int>(count)));
      if (count > 0 && count < 4096)
        return IOError(IOERR_IO_FAILURE, what + ": " + std::strerror(static_cast<int>(count)));
      return IOError(IOERR_IO_FAILURE, what);
    default:
      return IOError(IOERR_IO_FAILURE, what);
  }
}

bool LinuxGpibIO::SetStep(const Deadline& deadline) {
  std::chrono::microseconds length{};
  const int step = Lib::StepWithin(std::chrono::duration_cast<std::chrono::microseconds>(deadline.Remaining()), length);
  if (step == 0) return false;
  if (step != m_step) {
    if (m_library->Tmo(m_ud, step) & Lib::ERR) throw Failure("ibtmo", m_library->Iberr(), m_library->Ibcntl());
    m_step = step;
  }
  return true;
}

void LinuxGpibIO::DoWrite(const std::uint8_t* data, std::size_t size, bool, const Deadline& deadline) {
  std::size_t done = 0;
  while (done < size) {
    if (!SetStep(deadline)) break;
    const int status = m_library->Wrt(m_ud, data + done, static_cast<long>(size - done));
    const long count = m_library->Ibcntl();
    if (!(status & Lib::ERR)) {
      done = size;
      break;
    }
    const int err = m_library->Iberr();
    if (count > 0) done += static_cast<std::size_t>(std::min<long>(count, static_cast<long>(size - done)));
    if (err == Lib::EABO && (status & Lib::TIMO)) continue;
    // A plain bus-error board reports a write nobody accepts as EIO.
    if (err == Lib::EDVR && count == EIO && done == 0)
      throw IOError(IOERR_NO_LISTENER, ResourceName() + ": ibwrt bus error");
    throw Failure("ibwrt", err, count);
  }
  if (done == size) return;
  if (done == 0) throw IOError(IOERR_NO_LISTENER, ResourceName() + ": no device accepted the data");
  throw IOError(IOERR_TIMEOUT, "write to " + ResourceName());
}

std::size_t LinuxGpibIO::DoRead(std::uint8_t* buffer, std::size_t max, ReadKind kind, const Deadline& deadline,
                                bool& end) {
  end = false;
  const int eos = kind == ReadKind::Message ? kMessageEos : kBytesEos;
  if (eos != m_eos) {
    if (m_library->Eos(m_ud, eos) & Lib::ERR) throw Failure("ibeos", m_library->Iberr(), m_library->Ibcntl());
    m_eos = eos;
  }
  for (;;) {
    if (!SetStep(deadline)) return 0;
    const int status = m_library->Rd(m_ud, buffer, static_cast<long>(max));
    const long count = m_library->Ibcntl();
    if (status & Lib::ERR) {
      const int err = m_library->Iberr();
      if (!(err == Lib::EABO && (status & Lib::TIMO))) throw Failure("ibrd", err, count);
    }
    if (count > 0) {
      // END also marks an EOS byte; for a message read that byte is the LF that ends it anyway.
      end = (status & Lib::END) != 0;
      return static_cast<std::size_t>(std::min<long>(count, static_cast<long>(max)));
    }
  }
}

void LinuxGpibIO::DoClear(const Deadline& deadline) {
  SetStep(deadline.Within(std::chrono::seconds(1)));
  if (m_library->Clr(m_ud) & Lib::ERR) {
    const int err = m_library->Iberr();
    if (err != Lib::ENOL) throw Failure("ibclr", err, m_library->Ibcntl());
  }
}

void LinuxGpibIO::AfterReadTimeout(bool) { DoClear(CallDeadline()); }

void LinuxGpibIO::DoClose() noexcept {
  if (m_ud < 0) return;
  m_library->Loc(m_ud);
  m_library->Onl(m_ud, 0);
  m_ud = -1;
}

}  // namespace cvn73100::io
