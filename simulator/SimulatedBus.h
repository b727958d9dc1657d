#pragma once
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "iolib/InProcessBackend.h"

namespace cvn73100::sim {

class Instrument;

// A GPIB bus in this process with simulated instruments as its devices. An address with an instrument is a
// listener; a write to any other address fails at once with IOERR_NO_LISTENER. Thread-safe.
class SimulatedBus : public io::IInProcessBus, public std::enable_shared_from_this<SimulatedBus> {
 public:
  // Places `instrument` at primary address 0..30, replacing any instrument there.
  void Attach(int address, std::shared_ptr<Instrument> instrument);
  void Detach(int address);
  // The instrument at `address`, or nullptr.
  std::shared_ptr<Instrument> Listener(int address) const;
  // Addresses with an instrument, ascending.
  std::vector<int> Listeners() const override;
  std::string Identity(int address) const override;
  std::shared_ptr<IInstrumentIO> Open(const std::string& resourceName, int address) override;

  // A bus with the embedded default's instruments:
  //   7  Corvane Technologies,73135D,QX40001234,A.02.10  (a supported model)
  //   3  Corvane Technologies,73199B,QX40005678,A.01.04  (a 731xx model the software does not support)
  //   12 Corvane Technologies,44210A,QX40009012,B.03.01  (another instrument family)
  static std::shared_ptr<SimulatedBus> WithDefaultInstruments();
  // The process's bus behind GPIB `board` when the board map says "sim": made with the default instruments on
  // first use and kept for the life of the process, so every manager and every open sees the same instruments.
  static std::shared_ptr<SimulatedBus> Shared(int board);

 private:
  mutable std::mutex m_mutex;
  std::map<int, std::shared_ptr<Instrument>> m_instruments;
};

}  // namespace cvn73100::sim
