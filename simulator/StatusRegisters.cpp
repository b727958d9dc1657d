#include "simulator/StatusRegisters.h"

#include "simulator/ErrorCode.h"

namespace cvn73100::sim {

void StatusRegisters::Push(int code) {
  if (code <= -100 && code > -200) {
    esr_ |= kCommandError;
  } else if (code <= -200 && code > -300) {
    esr_ |= kExecutionError;
  } else if (code <= -300 && code > -400) {
    esr_ |= kDeviceError;
  } else if (code <= -400 && code > -500) {
    esr_ |= kQueryError;
  }
  if (errors_.size() >= kQueueDepth) {
    errors_.back() = kQueueOverflow;
    esr_ |= kDeviceError;
    return;
  }
  errors_.push_back(code);
}

int StatusRegisters::Pop() {
  if (errors_.empty()) return kNoError;
  const int code = errors_.front();
  errors_.pop_front();
  return code;
}

std::uint8_t StatusRegisters::TakeEventRegister() {
  const std::uint8_t value = esr_;
  esr_ = 0;
  return value;
}

std::uint8_t StatusRegisters::StatusByte(bool messageAvailable) const {
  std::uint8_t stb = 0;
  if (!errors_.empty()) stb |= kErrorAvailable;
  if (messageAvailable) stb |= kMessageAvailable;
  if ((esr_ & ese_) != 0) stb |= kEventSummary;
  if ((stb & sre_ & ~kMasterSummary) != 0) stb |= kMasterSummary;
  return stb;
}

void StatusRegisters::Clear() {
  errors_.clear();
  esr_ = 0;
}

}  // namespace cvn73100::sim
