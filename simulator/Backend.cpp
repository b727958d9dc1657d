#include "simulator/Backend.h"

#include <array>
#include <mutex>

#include "iolib/InProcessBackend.h"
#include "simulator/Instrument.h"
#include "simulator/SimulatedBus.h"
#include "simulator/SimulatedSerialPort.h"

namespace cvn73100::sim {
namespace {

class Backend : public io::IInProcessBackend {
 public:
  std::shared_ptr<io::IInProcessBus> Bus(int board) override { return SimulatedBus::Shared(board); }

  std::shared_ptr<io::IInProcessPort> Port(int port) override {
    std::lock_guard lock(m_mutex);
    auto& far = m_ports.at(static_cast<std::size_t>(port - 1));
    if (!far) far = std::make_shared<SimulatedSerialPort>(std::make_shared<Instrument>(InstrumentConfig{}));
    return far;
  }

 private:
  std::mutex m_mutex;
  std::array<std::shared_ptr<io::IInProcessPort>, 4> m_ports;
};

}  // namespace

void RegisterBackend() {
  // Registered once: managers made before and after a second call see the same instruments.
  static const auto backend = std::make_shared<Backend>();
  io::RegisterInProcessBackend(backend);
}

}  // namespace cvn73100::sim
