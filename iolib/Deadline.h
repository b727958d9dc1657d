#pragma once
#include <algorithm>
#include <chrono>
#include <cstdint>

namespace cvn73100::io {

// A point on the monotonic clock by which an I/O call must be over. Every wait in the library is bounded by one.
class Deadline {
 public:
  using Clock = std::chrono::steady_clock;

  explicit Deadline(std::chrono::milliseconds span) : m_end(Clock::now() + span) {}
  explicit Deadline(Clock::time_point end) : m_end(end) {}
  static Deadline AfterMs(std::int64_t milliseconds) {
    return Deadline(std::chrono::milliseconds(std::max<std::int64_t>(0, milliseconds)));
  }

  Clock::time_point End() const { return m_end; }
  bool Expired() const { return Clock::now() >= m_end; }
  // Time left, never negative.
  Clock::duration Remaining() const { return std::max(m_end - Clock::now(), Clock::duration::zero()); }
  // Time left in whole milliseconds, rounded up so a wait never ends early; capped to fit a poll() argument.
  int RemainingMs() const {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(Remaining()).count();
    return static_cast<int>(std::min<std::int64_t>(left, 0x7FFFFFFF));
  }
  // The earlier of this deadline and `span` from now.
  Deadline Within(std::chrono::milliseconds span) const { return Deadline(std::min(m_end, Clock::now() + span)); }

 private:
  Clock::time_point m_end;
};

}  // namespace cvn73100::io
