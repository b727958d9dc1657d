#include "cli/SimulatorState.h"

#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>

#include "iolib/BoardMap.h"
#include "platform/AtomicFile.h"
#include "simulator/Instrument.h"
#include "simulator/LearnString.h"
#include "simulator/SimulatedBus.h"

namespace cvn73100 {
namespace {

namespace fs = std::filesystem;

// Calls `visit` with every instrument on a simulated bus of the board map and the name of its state file.
void ForEachSimulated(const std::function<void(sim::Instrument&, const std::string&)>& visit) {
  const io::BoardMap map = io::BoardMap::Load();
  for (int board = 0; board < 4; ++board) {
    if (map.Gpib(board).kind != io::BoardMap::GpibKind::Simulated) continue;
    const auto bus = sim::SimulatedBus::Shared(board);
    for (int address : bus->Listeners()) {
      if (const auto instrument = bus->Listener(address)) {
        visit(*instrument, "GPIB" + std::to_string(board) + "-" + std::to_string(address) + ".cvls");
      }
    }
  }
}

}  // namespace

SimulatorState::SimulatorState(const std::string& formPath)
    : m_folder((fs::path(formPath).parent_path() / "simulator").string()) {}

void SimulatorState::Load() const {
  std::error_code ec;
  if (!fs::is_directory(m_folder, ec)) return;
  ForEachSimulated([&](sim::Instrument& instrument, const std::string& name) {
    std::ifstream in(fs::path(m_folder) / name, std::ios::binary);
    if (!in) return;
    std::ostringstream bytes;
    bytes << in.rdbuf();
    sim::ScopeState state = instrument.State();
    if (sim::LearnString::Decode(bytes.str(), state) == 0) instrument.SetState(state);
  });
}

void SimulatorState::Save() const {
  std::error_code ec;
  fs::create_directories(m_folder, ec);
  ForEachSimulated([&](sim::Instrument& instrument, const std::string& name) {
    try {
      ReplaceFileAtomically((fs::path(m_folder) / name).string(), {sim::LearnString::Encode(instrument.State())});
    } catch (const AtomicFileError&) {
      // The instrument forgets its settings, as the command's own work is done.
    }
  });
}

void SimulatorState::Reset() const {
  std::error_code ec;
  fs::remove_all(m_folder, ec);
}

}  // namespace cvn73100
