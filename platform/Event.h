#pragma once
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace cvn73100 {

// A handle that disconnects one handler from its event; safe to use after the event is gone.
class EventConnection {
 public:
  EventConnection() = default;
  explicit EventConnection(std::function<void()> disconnect) : m_disconnect(std::move(disconnect)) {}
  void Disconnect() {
    if (m_disconnect) std::exchange(m_disconnect, nullptr)();
  }

 private:
  std::function<void()> m_disconnect;
};

// An event raised on the caller's thread; handlers run in the order they were connected.
template <class... Args>
class Event {
 public:
  using Handler = std::function<void(Args...)>;

  EventConnection Connect(Handler handler) {
    const std::uint64_t id = ++m_state->nextId;
    m_state->handlers.emplace_back(id, std::move(handler));
    std::weak_ptr<State> weak = m_state;
    return EventConnection([weak, id] {
      if (auto state = weak.lock()) std::erase_if(state->handlers, [id](const auto& h) { return h.first == id; });
    });
  }

  // Handlers may connect or disconnect while the event is raised; the list is taken first.
  void Raise(Args... args) const {
    const auto handlers = m_state->handlers;
    for (const auto& entry : handlers) entry.second(args...);
  }

  std::size_t HandlerCount() const { return m_state->handlers.size(); }

 private:
  struct State {
    std::uint64_t nextId = 0;
    std::vector<std::pair<std::uint64_t, Handler>> handlers;
  };
  std::shared_ptr<State> m_state = std::make_shared<State>();
};

}  // namespace cvn73100
