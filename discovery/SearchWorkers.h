#pragma once
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/InstrumentIO.h"

namespace cvn73100 {

// What a search learns about one of its ports (a COM port, or a GPIB board and its addresses), in the order the
// port's worker learns it.
struct SearchEvent {
  enum class Kind {
    Starting,   // `address` is about to be probed
    NotOpened,  // the port's device could not be found; `cause` says why in the I/O library's words
    Probed,     // `address` answered `code` with `reply`
    Ended,      // the port is done; `failure` is what ended it early, if anything
  };
  Kind kind = Kind::Starting;
  std::size_t port = 0;
  std::string address;
  std::int16_t code = 0;
  std::string reply;
  std::string cause;
  std::exception_ptr failure;
};

// Runs the probes of a search's ports on worker threads and hands what they report to the searching thread. Ports
// are taken in order; with one thread the ports are probed one after another, as the search always did, and the
// searching thread stays free to repaint and to notice a request to stop.
//
// A probe reports through Report and is asked to stop through Interrupt: every wait of the I/O library on a
// worker raises Interrupted once Stop was called. The destructor stops the workers and waits for them.
class SearchWorkers {
 public:
  using Probe = std::function<void(std::size_t port, SearchWorkers& workers)>;

  SearchWorkers(std::size_t ports, std::size_t threads, Probe probe);
  ~SearchWorkers();
  SearchWorkers(const SearchWorkers&) = delete;
  SearchWorkers& operator=(const SearchWorkers&) = delete;

  // From a worker: adds `event` to what the searching thread collects next.
  void Report(SearchEvent event);

  // From the searching thread: what was reported since the last call, in order, waiting at most `slice` for the
  // first of it. Empty after the wait when nothing came.
  std::vector<SearchEvent> Collect(std::chrono::milliseconds slice);
  // Whether every port's probe has ended and everything it reported was collected.
  bool Finished() const;
  // Makes the probes still running end at their next wait and waits for the workers.
  void Stop();

 private:
  void Work();

  Probe m_probe;
  std::size_t m_ports;
  std::atomic<bool> m_stop{false};
  mutable std::mutex m_mutex;
  std::condition_variable m_reported;
  std::size_t m_nextPort = 0;
  std::size_t m_ended = 0;
  std::vector<SearchEvent> m_events;
  std::vector<std::thread> m_threads;
};

// One I/O manager shared by a search's workers. The manager serves one thread at a time, so listing and opening
// take turns; the channels it opens are each used on their own worker's thread.
class SharedIOManager : public IIOManager,
                        public IIOManagerSource,
                        public std::enable_shared_from_this<SharedIOManager> {
 public:
  explicit SharedIOManager(std::shared_ptr<IIOManager> manager) : m_manager(std::move(manager)) {}

  std::vector<std::string> FindResources(const std::string& pattern) override;
  std::shared_ptr<IInstrumentIO> Open(const std::string& address) override;
  bool SerialSettingsFixed(const std::string& portName) const override;
  std::shared_ptr<IIOManager> IOManager() const override;

 private:
  std::shared_ptr<IIOManager> m_manager;
  mutable std::mutex m_turn;
};

}  // namespace cvn73100
