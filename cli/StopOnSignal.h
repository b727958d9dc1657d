#pragma once
#include <csignal>

#include "platform/Interrupt.h"

namespace cvn73100 {

// While it lives, Ctrl-C (SIGINT) and SIGTERM ask this thread's long work to stop through Interrupt instead of
// ending the process: the work ends at its next wait (within Interrupt::kPollInterval) with Interrupted. A second
// signal ends the process as the signal would have. The handlers in place before are put back afterwards.
class StopOnSignal {
 public:
  StopOnSignal();
  ~StopOnSignal();
  StopOnSignal(const StopOnSignal&) = delete;
  StopOnSignal& operator=(const StopOnSignal&) = delete;

  // The signal received, or 0.
  static int Received();

 private:
  struct sigaction m_oldInt {};
  struct sigaction m_oldTerm {};
  Interrupt::Scope m_scope;
};

}  // namespace cvn73100
