#include "cli/StopOnSignal.h"

namespace cvn73100 {
namespace {

volatile std::sig_atomic_t g_received = 0;

void OnSignal(int signal) {
  if (g_received != 0) {
    ::signal(signal, SIG_DFL);
    ::raise(signal);
    return;
  }
  g_received = signal;
}

}  // namespace

StopOnSignal::StopOnSignal() : m_scope([] { return g_received != 0; }) {
  g_received = 0;
  struct sigaction action {};
  action.sa_handler = OnSignal;
  sigemptyset(&action.sa_mask);
  ::sigaction(SIGINT, &action, &m_oldInt);
  ::sigaction(SIGTERM, &action, &m_oldTerm);
}

StopOnSignal::~StopOnSignal() {
  ::sigaction(SIGINT, &m_oldInt, nullptr);
  ::sigaction(SIGTERM, &m_oldTerm, nullptr);
}

int StopOnSignal::Received() { return g_received; }

}  // namespace cvn73100
