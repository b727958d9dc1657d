#pragma once
#include <memory>

#include "iolib/InProcessBackend.h"
#include "simulator/SimSerialLine.h"

namespace cvn73100::sim {

class Instrument;

// The far end of a COM port sent to "sim": one simulated instrument, reached over a new line at each open.
class SimulatedSerialPort : public io::IInProcessPort {
 public:
  explicit SimulatedSerialPort(std::shared_ptr<Instrument> instrument) : m_instrument(std::move(instrument)) {}

  std::unique_ptr<io::SerialLine> OpenLine() override { return std::make_unique<SimSerialLine>(m_instrument); }

 private:
  std::shared_ptr<Instrument> m_instrument;
};

}  // namespace cvn73100::sim
