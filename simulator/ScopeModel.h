#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "simulator/ErrorCode.h"
#include "simulator/Identity.h"
#include "simulator/MessageParser.h"
#include "simulator/ScopeState.h"
#include "simulator/StatusRegisters.h"

namespace cvn73100::sim {

struct SettingDef;

enum class RunState { Run, Stop, Single };

// The instrument's brain: executes program messages against the settings and the status registers and builds
// the response message. It knows nothing of transports, timing or faults. Not thread-safe.
class ScopeModel {
 public:
  explicit ScopeModel(Identity identity = {});

  // Executes one program message (terminator removed) and appends its response message, without terminator,
  // to `response`. Returns whether any query was answered (an empty *IDN? reply is still a response).
  bool Execute(std::string_view message, std::string& response);
  // A message too long to keep was discarded.
  void ReportInputOverrun() { status_.Push(kInputBufferOverrun); }
  // Whether the output queue holds unread bytes, for the MAV bit of *STB?.
  void SetMessageAvailable(bool available) { messageAvailable_ = available; }

  const ScopeState& State() const { return state_; }
  void SetState(const ScopeState& state) { state_ = state; }
  const Identity& GetIdentity() const { return identity_; }
  void SetIdentity(const Identity& identity) { identity_ = identity; }
  StatusRegisters& Status() { return status_; }
  const StatusRegisters& Status() const { return status_; }
  RunState Running() const { return run_; }
  // *RST: the default settings, running; identity, status registers and error queue stay.
  void Reset();

  // An entry of the command table (built in ScopeModel.cpp): a header pattern and its handlers, which return 0
  // or the negative error number.
  struct Call;
  using Handler = int (ScopeModel::*)(const Call&, std::string& out);
  struct CommandDef {
    std::string_view header;
    Handler command = nullptr;
    Handler query = nullptr;
    int tag = 0;
    const SettingDef* setting = nullptr;
  };

 private:
  friend class CommandTable;
  // Executes one unit; `separate` puts a ';' before its reply. Returns false when it failed.
  bool Dispatch(const ProgramUnit& unit, std::string& response, bool separate);
  int ExecuteCommon(const ProgramUnit& unit, std::string& out);

  int SetSetting(const Call& call, std::string& out);
  int QuerySetting(const Call& call, std::string& out);
  int QueryError(const Call& call, std::string& out);
  int SetSetup(const Call& call, std::string& out);
  int QuerySetup(const Call& call, std::string& out);
  int SetRunState(const Call& call, std::string& out);
  int QueryRunState(const Call& call, std::string& out);
  int Digitize(const Call& call, std::string& out);
  int Autoscale(const Call& call, std::string& out);
  int QueryPreamble(const Call& call, std::string& out);
  int QueryWaveformData(const Call& call, std::string& out);
  int QueryScreen(const Call& call, std::string& out);
  int QueryMeasurement(const Call& call, std::string& out);

  // A channel that is off has no record to send.
  bool SourceIsOff() const;
  Identity identity_;
  ScopeState state_;
  StatusRegisters status_;
  RunState run_ = RunState::Run;
  bool messageAvailable_ = false;
  ProgramUnit unit_;              // reused between units to avoid allocations
  std::vector<HeaderNode> path_;  // the compound-header path of the current message
  std::vector<HeaderNode> resolved_;
  std::string scratch_;
};

}  // namespace cvn73100::sim
