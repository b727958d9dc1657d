#pragma once
#include <array>
#include <memory>
#include <string>
#include <vector>

#include "iolib/BoardMap.h"
#include "iolib/InProcessBackend.h"
#include "platform/InstrumentIO.h"

namespace cvn73100::io {

class PrologixConnection;

// The I/O library's manager: lists and opens the resources of a board map.
//
// Listing (FindResources):
// - COMn lists as "COMn" when its device node exists and opens as a terminal (opened and closed again at once),
//   or when it is mapped to a serial device server or the simulated RS-232 instrument. A server is not probed:
//   it would open and close the device for the probe, and servers refuse a new connection while a device closes.
// - A GPIB board lists "GPIBn::INTFC" when it is there, then "GPIBn::ADDR::INSTR" for each address with a listener:
//   the simulated bus lists its instruments; linux-gpib lists the board when ibask answers for it and the addresses
//   FindLstn finds (all but the board's own); a VXI-11 gateway lists the board when it accepts a link to its
//   interface and each address it accepts a link to; a Prologix-style adapter lists only its interface, once it answers
//   ++ver, because the adapter has no reliable way to tell an empty address from a silent device (the search
//   probes each address with *IDN? anyway). The link to such an adapter, once made, stays open while the manager
//   lives (and is made again when the adapter vanished).
// - A LAN instrument standing in for GPIBn.ADDR is listed as that address (not probed), after the board's own.
// Opening (Open): "COMn" (keywords after "::" are ignored) and "GPIBn::ADDR::INSTR" (a stand-in wins over the
// board). No GPIB backend checks for a device at open; writing to an empty address tells (IOERR_NO_LISTENER where
// the bus can tell, at once on a VXI-11 gateway, which refuses the link).
// Raises IOERR_OPEN_FAILED for a name it does not know, a port that is not mapped, or a device that cannot be opened.
// A manager serves one thread at a time; the objects it opens may be used on other threads, one thread per object.
class IOManager : public IIOManager {
 public:
  // A manager over `map`. Ports mapped to "sim" lead to the registered in-process backend (none: to nothing).
  explicit IOManager(BoardMap map);
  // A manager over the board map of this process (config file and environment).
  static std::shared_ptr<IOManager> FromEnvironment();

  std::vector<std::string> FindResources(const std::string& pattern) override;
  std::shared_ptr<IInstrumentIO> Open(const std::string& address) override;
  bool SerialSettingsFixed(const std::string& portName) const override;

  const BoardMap& Map() const { return m_map; }
  // True when no config file was found and GPIB0 is the embedded simulated bus.
  bool UsingEmbeddedDefault() const { return m_map.UsingEmbeddedDefault(); }
  // The board map for people, with the instruments on simulated buses.
  std::string DescribeBoardMap() const;

  // The bus behind a GPIB board mapped to "sim" (nullptr for other boards, or with no backend).
  std::shared_ptr<IInProcessBus> SimulatedBusOf(int board) const;
  // Replaces the bus behind a board mapped to "sim" (tests bring their own instruments).
  void SetSimulatedBus(int board, std::shared_ptr<IInProcessBus> bus);
  // Replaces the far end of a COM port mapped to "sim".
  void SetSimulatedSerialPort(int port, std::shared_ptr<IInProcessPort> farEnd);

 private:
  void ListSerial(int port, std::vector<std::string>& names) const;
  void ListGpib(int board, std::vector<std::string>& names);
  void ListVxi11(int board, std::vector<std::string>& names) const;
  std::shared_ptr<IInstrumentIO> OpenSerial(int port, const std::string& name);
  std::shared_ptr<IInstrumentIO> OpenGpib(int board, int address, const std::string& name);
  // The link to the adapter behind `board`, made when there is none or it failed; with `check`, a kept link must
  // first prove that the adapter still answers.
  std::shared_ptr<PrologixConnection> Adapter(int board, bool check);

  BoardMap m_map;
  std::array<std::shared_ptr<IInProcessBus>, 4> m_buses;
  std::array<std::shared_ptr<IInProcessPort>, 4> m_serialPorts;
  // Links to Prologix-style adapters stay open while the manager lives, so an open costs no reconnection.
  std::array<std::shared_ptr<PrologixConnection>, 4> m_adapters;
};

}  // namespace cvn73100::io
