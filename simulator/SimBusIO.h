#pragma once
#include <memory>
#include <string>

#include "iolib/MessageIO.h"

namespace cvn73100::sim {

class SimulatedBus;

// One GPIB address on a simulated bus (IOType "GPIB"). Opening never checks for a device, as on a real bus.
// Output and WriteBytes go to the instrument with EOI on the last byte, or fail at once with IOERR_NO_LISTENER
// when no instrument is at the address; reads from an empty address wait out Timeout. Clear and a timed-out
// read send the instrument a selected device clear (an empty address ignores it).
class SimBusIO : public io::MessageIO {
 public:
  SimBusIO(std::string resourceName, std::shared_ptr<SimulatedBus> bus, int address);
  ~SimBusIO() override;

  std::string IOType() const override { return "GPIB"; }

 protected:
  void DoWrite(const std::uint8_t* data, std::size_t size, bool end, const io::Deadline& deadline) override;
  std::size_t DoRead(std::uint8_t* buffer, std::size_t max, ReadKind kind, const io::Deadline& deadline,
                     bool& end) override;
  void DoClear(const io::Deadline& deadline) override;
  void AfterReadTimeout(bool partial) override;
  void DoClose() noexcept override;

 private:
  std::shared_ptr<SimulatedBus> m_bus;
  int m_address;
};

}  // namespace cvn73100::sim
