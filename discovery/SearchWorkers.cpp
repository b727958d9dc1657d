#include "discovery/SearchWorkers.h"

#include <algorithm>
#include <utility>

#include "platform/Interrupt.h"

namespace cvn73100 {

SearchWorkers::SearchWorkers(std::size_t ports, std::size_t threads, Probe probe)
    : m_probe(std::move(probe)), m_ports(ports) {
  const std::size_t count = std::min(std::max<std::size_t>(threads, 1), ports);
  for (std::size_t i = 0; i < count; ++i) m_threads.emplace_back([this] { Work(); });
}

SearchWorkers::~SearchWorkers() { Stop(); }

void SearchWorkers::Work() {
  const Interrupt::Scope stopping([this] { return m_stop.load(); });
  for (;;) {
    std::size_t port = 0;
    {
      std::lock_guard lock(m_mutex);
      if (m_stop || m_nextPort >= m_ports) return;
      port = m_nextPort++;
    }
    SearchEvent ended;
    ended.kind = SearchEvent::Kind::Ended;
    ended.port = port;
    try {
      m_probe(port, *this);
    } catch (...) {
      ended.failure = std::current_exception();
    }
    Report(std::move(ended));
  }
}

void SearchWorkers::Report(SearchEvent event) {
  {
    std::lock_guard lock(m_mutex);
    if (event.kind == SearchEvent::Kind::Ended) ++m_ended;
    m_events.push_back(std::move(event));
  }
  m_reported.notify_all();
}

std::vector<SearchEvent> SearchWorkers::Collect(std::chrono::milliseconds slice) {
  std::unique_lock lock(m_mutex);
  m_reported.wait_for(lock, slice, [this] { return !m_events.empty(); });
  return std::exchange(m_events, {});
}

bool SearchWorkers::Finished() const {
  std::lock_guard lock(m_mutex);
  return m_ended == m_ports && m_events.empty();
}

void SearchWorkers::Stop() {
  m_stop = true;
  for (std::thread& thread : m_threads)
    if (thread.joinable()) thread.join();
}

std::vector<std::string> SharedIOManager::FindResources(const std::string& pattern) {
  std::lock_guard turn(m_turn);
  return m_manager->FindResources(pattern);
}

std::shared_ptr<IInstrumentIO> SharedIOManager::Open(const std::string& address) {
  std::lock_guard turn(m_turn);
  return m_manager->Open(address);
}

bool SharedIOManager::SerialSettingsFixed(const std::string& portName) const {
  std::lock_guard turn(m_turn);
  return m_manager->SerialSettingsFixed(portName);
}

std::shared_ptr<IIOManager> SharedIOManager::IOManager() const {
  return std::const_pointer_cast<SharedIOManager>(shared_from_this());
}

}  // namespace cvn73100
