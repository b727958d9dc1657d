#include "iolib/InProcessBackend.h"

#include <mutex>

namespace cvn73100::io {
namespace {

std::mutex g_mutex;
std::shared_ptr<IInProcessBackend> g_backend;

}  // namespace

void RegisterInProcessBackend(std::shared_ptr<IInProcessBackend> backend) {
  std::lock_guard lock(g_mutex);
  g_backend = std::move(backend);
}

std::shared_ptr<IInProcessBackend> RegisteredInProcessBackend() {
  std::lock_guard lock(g_mutex);
  return g_backend;
}

}  // namespace cvn73100::io
