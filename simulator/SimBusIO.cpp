#include "simulator/SimBusIO.h"

#include <thread>

#include "platform/Interrupt.h"
#include "simulator/Instrument.h"
#include "simulator/SimulatedBus.h"

namespace cvn73100::sim {

SimBusIO::SimBusIO(std::string resourceName, std::shared_ptr<SimulatedBus> bus, int address)
    : MessageIO(std::move(resourceName)), m_bus(std::move(bus)), m_address(address) {}

SimBusIO::~SimBusIO() { Close(); }

void SimBusIO::DoWrite(const std::uint8_t* data, std::size_t size, bool end, const io::Deadline&) {
  const auto instrument = m_bus->Listener(m_address);
  if (!instrument) throw IOError(IOERR_NO_LISTENER, ResourceName());
  instrument->Write(data, size, end);
}

std::size_t SimBusIO::DoRead(std::uint8_t* buffer, std::size_t max, ReadKind, const io::Deadline& deadline, bool& end) {
  end = false;
  const auto instrument = m_bus->Listener(m_address);
  if (!instrument) {
    // Nobody talks at this address: the read ends by its timeout, as on a real bus.
    while (!deadline.Expired()) {
      Interrupt::Check();
      std::this_thread::sleep_for(Interrupt::Slice(deadline.Remaining()));
    }
    return 0;
  }
  for (;;) {
    Interrupt::Check();
    const auto slice = Interrupt::Slice(std::chrono::milliseconds(deadline.RemainingMs()));
    const std::size_t n = instrument->Read(buffer, max, slice, end);
    if (n > 0 || deadline.Expired()) return n;
  }
}

void SimBusIO::DoClear(const io::Deadline&) {
  if (const auto instrument = m_bus->Listener(m_address)) instrument->DeviceClear();
}

void SimBusIO::AfterReadTimeout(bool) { DoClear(CallDeadline()); }

void SimBusIO::DoClose() noexcept {}

}  // namespace cvn73100::sim
