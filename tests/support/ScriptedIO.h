#pragma once
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/InstrumentIO.h"

namespace cvn73100::test {

// An instrument channel that replays a fixed reply. When the reply runs out, a read fails the way a channel
// reports silence: with `endError` (a timeout by default), at once or, with `waitOnSilence`, after Timeout. With
// `eoi` the reply ends with END: a read past it returns what is left. `microsPerByte` makes bytes arrive at a
// pace; a read that would take longer than Timeout waits Timeout and times out.
class ScriptedIO : public IInstrumentIO, public IPort {
 public:
  explicit ScriptedIO(std::string reply) : m_reply(std::move(reply)) {}

  std::string IOType() const override { return "GPIB"; }
  std::string ResourceName() const override { return "GPIB0::7::INSTR"; }
  std::int32_t Timeout() const override { return m_timeout; }
  void SetTimeout(std::int32_t milliseconds) override { m_timeout = milliseconds; }
  void Clear() override { ++clears; }
  void Output(const std::string& data) override { written.push_back(data); }
  void Enter(std::string& data, const std::string& = "K") override {
    const auto lf = m_reply.find('\n', m_pos);
    if (m_pos >= m_reply.size()) throw endError;
    data = m_reply.substr(m_pos, lf == std::string::npos ? std::string::npos : lf - m_pos);
    m_pos = lf == std::string::npos ? m_reply.size() : lf + 1;
  }
  std::int16_t OutputTermination() const override { return 10; }
  void SetOutputTermination(std::int16_t) override {}
  std::int32_t ReadBytes(std::int32_t count, Bytes& buffer) override {
    largestRead = std::max(largestRead, count);
    longestReadTimeout = std::max(longestReadTimeout, m_timeout);
    ++reads;
    const auto wanted = static_cast<std::size_t>(count);
    if (microsPerByte > 0) {
      const auto needed = std::chrono::microseconds(static_cast<std::int64_t>(microsPerByte * count));
      const auto limit = std::chrono::milliseconds(m_timeout);
      std::this_thread::sleep_for(std::min<std::chrono::microseconds>(needed, limit));
      if (needed > limit) throw IOError(IOERR_TIMEOUT, "paced");
    }
    const std::size_t left = m_reply.size() - m_pos;
    if (left < wanted && !(eoi && left > 0)) {
      m_pos = m_reply.size();
      if (waitOnSilence) std::this_thread::sleep_for(std::chrono::milliseconds(m_timeout));
      throw endError;
    }
    const std::size_t n = std::min(left, wanted);
    buffer.assign(m_reply.begin() + static_cast<std::ptrdiff_t>(m_pos),
                  m_reply.begin() + static_cast<std::ptrdiff_t>(m_pos + n));
    m_pos += n;
    return static_cast<std::int32_t>(n);
  }
  void WriteBytes(std::int32_t count, const Bytes& buffer) override {
    written.emplace_back(buffer.begin(), buffer.begin() + count);
  }
  IPort& Port() override { return *this; }
  ISerialIO* Serial() override { return nullptr; }
  void Close() override { closed = true; }

  std::size_t Remaining() const { return m_reply.size() - m_pos; }
  void Append(const std::string& more) { m_reply += more; }

  ScopeError endError = IOError(IOERR_TIMEOUT, "scripted reply ended");
  bool eoi = false;
  bool waitOnSilence = false;
  double microsPerByte = 0;
  std::int32_t largestRead = 0;
  std::int32_t longestReadTimeout = 0;
  int reads = 0;
  int clears = 0;
  bool closed = false;
  std::vector<std::string> written;

 private:
  std::string m_reply;
  std::size_t m_pos = 0;
  std::int32_t m_timeout = 2000;
};

// An I/O manager that hands out one scripted channel.
class ScriptedManager : public IIOManager {
 public:
  explicit ScriptedManager(std::shared_ptr<ScriptedIO> io) : m_io(std::move(io)) {}
  std::vector<std::string> FindResources(const std::string&) override { return {"GPIB0::7::INSTR"}; }
  std::shared_ptr<IInstrumentIO> Open(const std::string&) override { return m_io; }

 private:
  std::shared_ptr<ScriptedIO> m_io;
};

}  // namespace cvn73100::test
