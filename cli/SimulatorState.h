#pragma once
#include <string>

namespace cvn73100 {

// The built-in simulated instruments keep their settings from one cvnscope command to the next, as a real
// instrument does: each one's learn string lives in a folder beside the form, read when a command starts
// and written when it ends.
class SimulatorState {
 public:
  explicit SimulatorState(const std::string& formPath);

  // Gives every simulated instrument of the board map the settings kept for it; damaged ones are ignored.
  void Load() const;
  // Keeps the settings of every simulated instrument of the board map.
  void Save() const;
  // Forgets every kept setting: the instruments start afresh.
  void Reset() const;

  const std::string& Folder() const { return m_folder; }

 private:
  std::string m_folder;
};

}  // namespace cvn73100
