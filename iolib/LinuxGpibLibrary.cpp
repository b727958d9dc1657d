#include "iolib/LinuxGpibLibrary.h"

#include <dlfcn.h>

#include <map>
#include <mutex>

#include "platform/InstrumentIO.h"

namespace cvn73100::io {
namespace {

template <typename Function>
void Bind(void* handle, const char* name, Function& function, const std::string& path) {
  function = reinterpret_cast<Function>(::dlsym(handle, name));
  if (!function) throw IOError(IOERR_OPEN_FAILED, path + " has no " + name);
}

template <typename Function>
void BindOptional(void* handle, const char* name, Function& function) {
  function = reinterpret_cast<Function>(::dlsym(handle, name));
}

// Lengths of the timeout steps T10us (1) .. T1000s (17).
constexpr std::int64_t kStepMicroseconds[] = {10,       30,       100,       300,       1000,      3000,
                                              10000,    30000,    100000,    300000,    1000000,   3000000,
                                              10000000, 30000000, 100000000, 300000000, 1000000000};

}  // namespace

std::shared_ptr<LinuxGpibLibrary> LinuxGpibLibrary::Load(const std::string& path) {
  static std::mutex mutex;
  static std::map<std::string, std::shared_ptr<LinuxGpibLibrary>> loaded;
  std::lock_guard lock(mutex);
  if (const auto found = loaded.find(path); found != loaded.end()) return found->second;

  void* handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!handle) {
    const char* why = ::dlerror();
    throw IOError(IOERR_OPEN_FAILED, why ? why : path);
  }
  std::shared_ptr<LinuxGpibLibrary> library(new LinuxGpibLibrary(path));
  try {
    Bind(handle, "ibdev", library->m_ibdev, path);
    Bind(handle, "ibwrt", library->m_ibwrt, path);
    Bind(handle, "ibrd", library->m_ibrd, path);
    Bind(handle, "ibclr", library->m_ibclr, path);
    Bind(handle, "ibtmo", library->m_ibtmo, path);
    Bind(handle, "ibonl", library->m_ibonl, path);
    Bind(handle, "ibloc", library->m_ibloc, path);
    Bind(handle, "ibeos", library->m_ibeos, path);
    Bind(handle, "ibask", library->m_ibask, path);
    Bind(handle, "FindLstn", library->m_FindLstn, path);
    BindOptional(handle, "ThreadIberr", library->m_ThreadIberr);
    BindOptional(handle, "ThreadIbcntl", library->m_ThreadIbcntl);
    if (!library->m_ThreadIberr) Bind(handle, "iberr", library->m_iberr, path);
    if (!library->m_ThreadIbcntl) Bind(handle, "ibcntl", library->m_ibcntl, path);
  } catch (...) {
    ::dlclose(handle);
    throw;
  }
  loaded.emplace(path, library);
  return library;
}

int LinuxGpibLibrary::Iberr() const { return m_ThreadIberr ? m_ThreadIberr() : *m_iberr; }
long LinuxGpibLibrary::Ibcntl() const { return m_ThreadIbcntl ? m_ThreadIbcntl() : *m_ibcntl; }

int LinuxGpibLibrary::StepWithin(std::chrono::microseconds remaining, std::chrono::microseconds& length) {
  int step = 0;
  for (int i = 0; i < static_cast<int>(std::size(kStepMicroseconds)); ++i) {
    if (kStepMicroseconds[i] > remaining.count()) break;
    step = i + 1;
  }
  length = std::chrono::microseconds(step > 0 ? kStepMicroseconds[step - 1] : 0);
  return step;
}

std::string LinuxGpibLibrary::ErrorName(int iberr) {
  switch (iberr) {
    case EDVR:
      return "EDVR: system error";
    case ECIC:
      return "ECIC: board is not controller in charge";
    case ENOL:
      return "ENOL: no listener";
    case EADR:
      return "EADR: board not addressed correctly";
    case EARG:
      return "EARG: invalid argument";
    case ESAC:
      return "ESAC: board is not system controller";
    case EABO:
      return "EABO: I/O aborted";
    case ENEB:
      return "ENEB: no such board";
    case ECAP:
      return "ECAP: capability missing";
    case EBUS:
      return "EBUS: bus error";
    case ETAB:
      return "ETAB: table overflow";
    default:
      return "iberr " + std::to_string(iberr);
  }
}

}  // namespace cvn73100::io
