#pragma once
#include <algorithm>
#include <chrono>
#include <functional>
#include <stdexcept>

namespace cvn73100 {

// Raised out of a wait that was asked to stop. It is not a ScopeError on purpose: code that carries on past an
// instrument's error (a search that goes on to the next port) must not carry on past a request to stop.
class Interrupted : public std::runtime_error {
 public:
  Interrupted() : std::runtime_error("interrupted") {}
};

// Long work can be stopped by whoever started it (Ctrl-C, a Stop button, Python's KeyboardInterrupt). The starter
// installs a check on its thread; every long wait of the I/O library and of the search wakes at least every
// kPollInterval while a check is installed, and calls Check(), which raises Interrupted when a check says stop.
// With no check installed a wait blocks for its whole span, at no extra cost.
class Interrupt {
 public:
  static constexpr std::chrono::milliseconds kPollInterval{50};
  using Check_t = std::function<bool()>;

  // Installs `shouldStop` on this thread for its lifetime; scopes nest and every installed check is asked.
  class Scope {
   public:
    explicit Scope(Check_t shouldStop);
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    Check_t m_shouldStop;
  };

  // Whether any check is installed on this thread.
  static bool Installed();
  // Raises Interrupted when an installed check says stop.
  static void Check();
  // One check that asks all of this thread's, for a worker thread that does part of this thread's work;
  // an empty function when none is installed.
  static Check_t Current();

  // The longest a wait may block before it checks again: `span` itself when nothing is installed.
  template <class Duration>
  static Duration Slice(Duration span) {
    if (!Installed()) return span;
    return std::min(span, std::chrono::duration_cast<Duration>(kPollInterval));
  }
};

}  // namespace cvn73100
