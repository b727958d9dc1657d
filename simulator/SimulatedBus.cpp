#include "simulator/SimulatedBus.h"

#include <array>

#include "simulator/Instrument.h"
#include "simulator/SimBusIO.h"

namespace cvn73100::sim {
namespace {

std::shared_ptr<Instrument> MakeInstrument(int address, const char* model, const char* serial, const char* firmware) {
  InstrumentConfig config{};
  config.identity.manufacturer = "Corvane Technologies";
  config.identity.model = model;
  config.identity.serial = serial;
  config.identity.firmware = firmware;
  config.gpibAddress = address;
  return std::make_shared<Instrument>(config);
}

}  // namespace

void SimulatedBus::Attach(int address, std::shared_ptr<Instrument> instrument) {
  std::lock_guard lock(m_mutex);
  m_instruments[address] = std::move(instrument);
}

void SimulatedBus::Detach(int address) {
  std::lock_guard lock(m_mutex);
  m_instruments.erase(address);
}

std::shared_ptr<Instrument> SimulatedBus::Listener(int address) const {
  std::lock_guard lock(m_mutex);
  const auto found = m_instruments.find(address);
  return found == m_instruments.end() ? nullptr : found->second;
}

std::vector<int> SimulatedBus::Listeners() const {
  std::lock_guard lock(m_mutex);
  std::vector<int> addresses;
  for (const auto& [address, instrument] : m_instruments) addresses.push_back(address);
  return addresses;
}

std::string SimulatedBus::Identity(int address) const {
  const auto instrument = Listener(address);
  if (!instrument) return {};
  const auto& identity = instrument->Config().identity;
  return identity.manufacturer + "," + identity.model + "," + identity.serial + "," + identity.firmware;
}

std::shared_ptr<IInstrumentIO> SimulatedBus::Open(const std::string& resourceName, int address) {
  return std::make_shared<SimBusIO>(resourceName, shared_from_this(), address);
}

std::shared_ptr<SimulatedBus> SimulatedBus::WithDefaultInstruments() {
  auto bus = std::make_shared<SimulatedBus>();
  bus->Attach(3, MakeInstrument(3, "73199B", "QX40005678", "A.01.04"));
  bus->Attach(7, MakeInstrument(7, "73135D", "QX40001234", "A.02.10"));
  bus->Attach(12, MakeInstrument(12, "44210A", "QX40009012", "B.03.01"));
  return bus;
}

std::shared_ptr<SimulatedBus> SimulatedBus::Shared(int board) {
  static std::mutex mutex;
  static std::array<std::shared_ptr<SimulatedBus>, 4> buses;
  std::lock_guard lock(mutex);
  auto& bus = buses.at(static_cast<std::size_t>(board));
  if (!bus) bus = WithDefaultInstruments();
  return bus;
}

}  // namespace cvn73100::sim
