#pragma once
#include <memory>
#include <string>
#include <vector>

#include "platform/InstrumentIO.h"

namespace cvn73100::io {

class SerialLine;

// A GPIB bus whose devices live in this process (a board the board map sends to "sim").
class IInProcessBus {
 public:
  virtual ~IInProcessBus() = default;
  // Addresses with a listener, ascending.
  virtual std::vector<int> Listeners() const = 0;
  // The identification of the device at `address` for people ("" when there is none).
  virtual std::string Identity(int address) const = 0;
  // `address` on this bus as the resource `resourceName`; never checks for a device, as on a real bus.
  virtual std::shared_ptr<IInstrumentIO> Open(const std::string& resourceName, int address) = 0;
};

// The far end of a COM port the board map sends to "sim".
class IInProcessPort {
 public:
  virtual ~IInProcessPort() = default;
  // A new serial line to it.
  virtual std::unique_ptr<SerialLine> OpenLine() = 0;
};

// What "sim" in the board map leads to. The I/O library does not make these devices: a component outside it
// (the simulator) provides them, and the program that offers them registers it.
class IInProcessBackend {
 public:
  virtual ~IInProcessBackend() = default;
  // The bus behind GPIB `board` (0..3), the same object for the life of the process.
  virtual std::shared_ptr<IInProcessBus> Bus(int board) = 0;
  // The far end of COM `port` (1..4), the same object for the life of the process.
  virtual std::shared_ptr<IInProcessPort> Port(int port) = 0;
};

// Makes "sim" lead to `backend` for every manager made afterwards (nullptr: to nothing). Without a backend a
// port sent to "sim" lists nothing and fails to open with IOERR_OPEN_FAILED.
void RegisterInProcessBackend(std::shared_ptr<IInProcessBackend> backend);
// The backend registered last, or nullptr.
std::shared_ptr<IInProcessBackend> RegisteredInProcessBackend();

}  // namespace cvn73100::io
