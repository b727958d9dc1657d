#include "ui/QuitOnSignal.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <csignal>

namespace cvn73100::ui {
namespace {

int g_pipe[2] = {-1, -1};
volatile std::sig_atomic_t g_received = 0;

void OnSignal(int signal) {
  if (g_received != 0) {
    // Asked twice: the first request is stuck; leave with the signal's own status.
    std::signal(signal, SIG_DFL);
    std::raise(signal);
    return;
  }
  g_received = signal;
  const char byte = 1;
  [[maybe_unused]] const auto written = ::write(g_pipe[1], &byte, 1);
}

}  // namespace

QuitOnSignal::QuitOnSignal(std::function<void()> quit, QObject* parent) : QObject(parent), m_quit(std::move(quit)) {
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, g_pipe) != 0) return;
  m_notifier = new QSocketNotifier(g_pipe[0], QSocketNotifier::Read, this);
  connect(m_notifier, &QSocketNotifier::activated, this, [this] {
    char byte;
    while (::read(g_pipe[0], &byte, 1) > 0) {
    }
    m_notifier->setEnabled(false);
    m_quit();
  });
  struct sigaction action {};
  action.sa_handler = OnSignal;
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESTART;
  ::sigaction(SIGTERM, &action, nullptr);
  ::sigaction(SIGINT, &action, nullptr);
}

QuitOnSignal::~QuitOnSignal() {
  std::signal(SIGTERM, SIG_DFL);
  std::signal(SIGINT, SIG_DFL);
  for (int& fd : g_pipe) {
    if (fd >= 0) ::close(fd);
    fd = -1;
  }
}

}  // namespace cvn73100::ui
