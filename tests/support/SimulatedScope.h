#pragma once
#include <memory>
#include <string>

#include "iolib/IOManager.h"
#include "simulator/Instrument.h"
#include "simulator/SimulatedBus.h"
#include "simulator/SimulatedSerialPort.h"

namespace cvn73100::test {

// An I/O manager whose GPIB0 is a bus of the test's own: the supported 73135D at 7, an unsupported 73199B at 3
// and an instrument of another family at 12. COM1 is a simulated 73135D on a serial line.
struct SimulatedScope {
  SimulatedScope() {
    io::BoardMap map = io::BoardMap::EmbeddedDefault();
    map.SetCom(1, io::BoardMap::ComTarget{io::BoardMap::ComKind::Simulated, "", "test"});
    manager = std::make_shared<io::IOManager>(map);
    bus = std::make_shared<sim::SimulatedBus>();
    scope = Make("73135D", 7);
    bus->Attach(7, scope);
    bus->Attach(3, Make("73199B", 3));
    bus->Attach(12, Make("44210A", 12));
    manager->SetSimulatedBus(0, bus);
    serialScope = Make("73135D", 0);
    manager->SetSimulatedSerialPort(1, std::make_shared<sim::SimulatedSerialPort>(serialScope));
  }

  static std::shared_ptr<sim::Instrument> Make(const std::string& model, int address) {
    sim::InstrumentConfig config;
    config.identity.model = model;
    config.gpibAddress = address;
    return std::make_shared<sim::Instrument>(config);
  }

  std::shared_ptr<io::IOManager> manager;
  std::shared_ptr<sim::SimulatedBus> bus;
  std::shared_ptr<sim::Instrument> scope;
  std::shared_ptr<sim::Instrument> serialScope;
};

}  // namespace cvn73100::test
