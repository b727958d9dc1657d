#include "iolib/IOManager.h"

#include <algorithm>
#include <iomanip>
#include <sstream>

#include "iolib/LinuxGpibIO.h"
#include "iolib/LinuxGpibLibrary.h"
#include "iolib/PrologixConnection.h"
#include "iolib/PrologixIO.h"
#include "iolib/ResourceAddress.h"
#include "iolib/Rfc2217Line.h"
#include "iolib/SerialIO.h"
#include "iolib/SocketIO.h"
#include "iolib/TcpSerialLine.h"
#include "iolib/Vxi11IO.h"
#include "iolib/Vxi11Link.h"

namespace cvn73100::io {
namespace {

using GpibKind = BoardMap::GpibKind;
using ComKind = BoardMap::ComKind;
constexpr std::size_t ComIndex(int port) { return static_cast<std::size_t>(port - BoardMap::kFirstCom); }
constexpr std::size_t GpibIndex(int board) { return static_cast<std::size_t>(board - BoardMap::kFirstGpib); }
// How long a VXI-11 gateway may take to be reached and to make a link.
constexpr std::chrono::milliseconds kVxi11OpenWait{3000};

// Whether a pattern can list anything of the port `portName`.
bool MayMatchPort(const std::string& pattern, const std::string& portName) {
  return ResourceAddress::Glob(pattern.substr(0, pattern.find("::")), portName);
}

}  // namespace

IOManager::IOManager(BoardMap map) : m_map(std::move(map)) {
  const auto backend = RegisteredInProcessBackend();
  if (!backend) return;
  for (int board = BoardMap::kFirstGpib; board <= BoardMap::kLastGpib; ++board)
    if (m_map.Gpib(board).kind == GpibKind::Simulated) m_buses[GpibIndex(board)] = backend->Bus(board);
  for (int port = BoardMap::kFirstCom; port <= BoardMap::kLastCom; ++port)
    if (m_map.Com(port).kind == ComKind::Simulated) m_serialPorts[ComIndex(port)] = backend->Port(port);
}

std::shared_ptr<IOManager> IOManager::FromEnvironment() { return std::make_shared<IOManager>(BoardMap::Load()); }

std::shared_ptr<IInProcessBus> IOManager::SimulatedBusOf(int board) const { return m_buses.at(GpibIndex(board)); }

void IOManager::SetSimulatedBus(int board, std::shared_ptr<IInProcessBus> bus) {
  if (m_map.Gpib(board).kind != GpibKind::Simulated)
    throw IOError(IOERR_BAD_ARGUMENT, "GPIB" + std::to_string(board) + " is not mapped to the simulated bus");
  m_buses.at(GpibIndex(board)) = std::move(bus);
}

void IOManager::SetSimulatedSerialPort(int port, std::shared_ptr<IInProcessPort> farEnd) {
  if (m_map.Com(port).kind != ComKind::Simulated)
    throw IOError(IOERR_BAD_ARGUMENT, "COM" + std::to_string(port) + " is not mapped to a simulated instrument");
  m_serialPorts.at(ComIndex(port)) = std::move(farEnd);
}

std::vector<std::string> IOManager::FindResources(const std::string& pattern) {
  std::vector<std::string> candidates;
  for (int port = BoardMap::kFirstCom; port <= BoardMap::kLastCom; ++port)
    if (MayMatchPort(pattern, "COM" + std::to_string(port))) ListSerial(port, candidates);
  for (int board = BoardMap::kFirstGpib; board <= BoardMap::kLastGpib; ++board)
    if (MayMatchPort(pattern, "GPIB" + std::to_string(board))) {
      ListGpib(board, candidates);
      for (const auto& [where, lan] : m_map.StandIns()) {  // listed unprobed, as a network COM port is
        const std::string name = ResourceAddress::GpibInstrument(board, where.second).Name();
        if (where.first == board && std::find(candidates.begin(), candidates.end(), name) == candidates.end())
          candidates.push_back(name);
      }
    }
  std::vector<std::string> names;
  for (auto& name : candidates)
    if (ResourceAddress::Matches(pattern, name)) names.push_back(std::move(name));
  return names;
}

void IOManager::ListSerial(int port, std::vector<std::string>& names) const {
  const auto& target = m_map.Com(port);
  const bool present = (target.kind == ComKind::Simulated && m_serialPorts.at(ComIndex(port))) ||
                       target.kind == ComKind::Rfc2217 || target.kind == ComKind::RawTcp ||
                       (target.kind == ComKind::Node && SerialLine::NodeIsOpenable(target.node));
  if (present) names.push_back(ResourceAddress::Serial(port).Name());
}

void IOManager::ListGpib(int board, std::vector<std::string>& names) {
  const auto& target = m_map.Gpib(board);
  const std::string intfc = ResourceAddress::GpibInterface(board).Name();
  switch (target.kind) {
    case GpibKind::Socket:
    case GpibKind::None:
      return;
    case GpibKind::Simulated:
      if (!SimulatedBusOf(board)) return;
      names.push_back(intfc);
      for (int address : SimulatedBusOf(board)->Listeners())
        names.push_back(ResourceAddress::GpibInstrument(board, address).Name());
      return;
    case GpibKind::PrologixSerial:
    case GpibKind::PrologixTcp:
      try {
        Adapter(board, true);
        names.push_back(intfc);
      } catch (const ScopeError&) {
        // No adapter there: the board is not listed.
      }
      return;
    case GpibKind::Vxi11:
      ListVxi11(board, names);
      return;
    case GpibKind::LinuxGpib: {
      std::shared_ptr<LinuxGpibLibrary> library;
      try {
        library = LinuxGpibLibrary::Load(m_map.LibGpibPath());
      } catch (const ScopeError&) {
        return;  // no linux-gpib on this computer
      }
      int ownAddress = 0;
      if (library->Ask(target.board, LinuxGpibLibrary::IbaPAD, &ownAddress) & LinuxGpibLibrary::ERR) return;
      names.push_back(intfc);
      std::vector<std::uint16_t> pads;
      for (int pad = 0; pad <= ResourceAddress::kMaxGpibAddress; ++pad)
        if (pad != ownAddress) pads.push_back(static_cast<std::uint16_t>(pad));
      pads.push_back(LinuxGpibLibrary::NOADDR);
      std::vector<std::uint16_t> found(pads.size(), LinuxGpibLibrary::NOADDR);
      library->FindLstn(target.board, pads.data(), found.data(), static_cast<int>(found.size()) - 1);
      for (std::uint16_t address : found) {
        if (address == LinuxGpibLibrary::NOADDR) break;
        const int pad = address & 0xFF;  // the primary address; a secondary one would be in the high byte
        if (pad <= ResourceAddress::kMaxGpibAddress)
          names.push_back(ResourceAddress::GpibInstrument(board, pad).Name());
      }
      return;
    }
  }
}

std::shared_ptr<IInstrumentIO> IOManager::Open(const std::string& address) {
  const auto resource = ResourceAddress::Parse(address);
  if (!resource) throw IOError(IOERR_OPEN_FAILED, "unknown resource \"" + address + "\"");
  switch (resource->GetKind()) {
    case ResourceAddress::Kind::Serial:
      return OpenSerial(resource->Port(), resource->Name());
    case ResourceAddress::Kind::GpibInstrument:
      return OpenGpib(resource->Port(), resource->Address(), resource->Name());
    case ResourceAddress::Kind::GpibInterface:
      break;
  }
  throw IOError(IOERR_OPEN_FAILED, resource->Name() + " is an interface, not an instrument");
}

bool IOManager::SerialSettingsFixed(const std::string& portName) const {
  const auto resource = ResourceAddress::Parse(portName);
  return resource && resource->GetKind() == ResourceAddress::Kind::Serial &&
         m_map.Com(resource->Port()).kind == ComKind::RawTcp;
}

std::shared_ptr<IInstrumentIO> IOManager::OpenSerial(int port, const std::string& name) {
  const auto& target = m_map.Com(port);
  switch (target.kind) {
    case ComKind::Node:
      return std::make_shared<SerialIO>(name, SerialLine::OpenNode(target.node));
    case ComKind::Simulated:
      if (const auto& farEnd = m_serialPorts.at(ComIndex(port)))
        return std::make_shared<SerialIO>(name, farEnd->OpenLine());
      throw IOError(IOERR_OPEN_FAILED, name + " leads to simulated instruments, and this program offers none");
    case ComKind::Rfc2217:
      return std::make_shared<SerialIO>(name, std::make_unique<Rfc2217Line>(target.host, target.port));
    case ComKind::RawTcp:
      return std::make_shared<SerialIO>(name, std::make_unique<TcpSerialLine>(target.host, target.port));
    case ComKind::None:
      break;
  }
  throw IOError(IOERR_OPEN_FAILED, name + " is not mapped to a device");
}

std::shared_ptr<IInstrumentIO> IOManager::OpenGpib(int board, int address, const std::string& name) {
  if (const BoardMap::GpibTarget* lan = m_map.StandIn(board, address)) {
    if (lan->kind == GpibKind::Socket) return std::make_shared<SocketIO>(name, lan->host, lan->port);
    return std::make_shared<Vxi11IO>(name, [target = *lan] {
      return std::make_unique<Vxi11Link>(target.host, target.port, target.interfaceName, Deadline(kVxi11OpenWait));
    });
  }
  const auto& target = m_map.Gpib(board);
  switch (target.kind) {
    case GpibKind::Simulated:
      if (const auto bus = SimulatedBusOf(board)) return bus->Open(name, address);
      throw IOError(IOERR_OPEN_FAILED, name + " leads to simulated instruments, and this program offers none");
    case GpibKind::LinuxGpib:
      return std::make_shared<LinuxGpibIO>(name, LinuxGpibLibrary::Load(m_map.LibGpibPath()), target.board, address);
    case GpibKind::PrologixSerial:
    case GpibKind::PrologixTcp:
      return std::make_shared<PrologixIO>(name, Adapter(board, false), address);
    case GpibKind::Vxi11:
      return std::make_shared<Vxi11IO>(name, [target, address] {
        return std::make_unique<Vxi11Link>(
            target.host, target.port, target.interfaceName + "," + std::to_string(address), Deadline(kVxi11OpenWait));
      });
    case GpibKind::Socket:
    case GpibKind::None:
      break;
  }
  throw IOError(IOERR_OPEN_FAILED, "GPIB" + std::to_string(board) + " is not mapped to a board");
}

void IOManager::ListVxi11(int board, std::vector<std::string>& names) const {
  const auto& target = m_map.Gpib(board);
  // The gateway says which addresses it can reach: one link per address, made and dropped again at once.
  try {
    const Vxi11Link probe(target.host, target.port, target.interfaceName, Deadline(kVxi11OpenWait));
  } catch (const ScopeError&) {
    return;  // no gateway there, or no such interface
  }
  names.push_back(ResourceAddress::GpibInterface(board).Name());
  for (int address = 0; address <= ResourceAddress::kMaxGpibAddress; ++address) {
    try {
      const Vxi11Link probe(target.host, target.port, target.interfaceName + "," + std::to_string(address),
                            Deadline(kVxi11OpenWait));
      names.push_back(ResourceAddress::GpibInstrument(board, address).Name());
    } catch (const ScopeError&) {
      // nothing at this address
    }
  }
}

std::shared_ptr<PrologixConnection> IOManager::Adapter(int board, bool check) {
  auto& adapter = m_adapters.at(GpibIndex(board));
  if (adapter && check) adapter->CheckAlive();
  if (!adapter || adapter->Broken()) {
    adapter.reset();
    adapter = PrologixConnection::Open(m_map.Gpib(board));
  }
  return adapter;
}

std::string IOManager::DescribeBoardMap() const {
  std::ostringstream out;
  out << m_map.Describe();
  for (int board = BoardMap::kFirstGpib; board <= BoardMap::kLastGpib; ++board) {
    const auto bus = SimulatedBusOf(board);
    if (!bus) continue;
    out << "Simulated instruments on GPIB" << board << ":";
    const auto listeners = bus->Listeners();
    if (listeners.empty()) out << " none";
    for (int address : listeners) out << "\n  " << std::setw(2) << address << "  " << bus->Identity(address);
    out << "\n";
  }
  return out.str();
}

}  // namespace cvn73100::io
