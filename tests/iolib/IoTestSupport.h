#pragma once
#include <dirent.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <optional>
#include <string>

#include "platform/InstrumentIO.h"

namespace cvn73100::io::test {

// Open file descriptors of this process.
inline int OpenDescriptorCount() {
  DIR* dir = ::opendir("/proc/self/fd");
  int count = 0;
  while (::readdir(dir) != nullptr) ++count;
  ::closedir(dir);
  return count;
}

// The I/O condition a call raises, or 0 when it returns normally.
inline std::int32_t ConditionOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const ScopeError& error) {
    return IOErrorCondition(error);
  }
  return 0;
}

// How long a call takes.
inline std::chrono::milliseconds Elapsed(const std::function<void()>& call) {
  const auto start = std::chrono::steady_clock::now();
  call();
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
}

inline std::string Query(IInstrumentIO& io, const std::string& message) {
  io.Output(message);
  std::string reply;
  io.Enter(reply);
  return reply;
}

// A query to a silent instrument times out after `timeoutMs`, neither early nor much late.
inline void ExpectSilentTimeout(IInstrumentIO& io, int timeoutMs) {
  io.SetTimeout(timeoutMs);
  io.Output("*IDN?");
  std::string reply;
  const auto elapsed = Elapsed([&] { EXPECT_EQ(ConditionOf([&] { io.Enter(reply); }), IOERR_TIMEOUT); });
  EXPECT_GE(elapsed.count(), timeoutMs - 10);
  EXPECT_LT(elapsed.count(), timeoutMs + 150);
}

// An instrument that answers `lateMs` after a query, with `shortMs` < `lateMs` < `longMs`: the reply the timeout
// gave up on must be gone, so the next wait sees nothing and the next query gets its own answer.
inline void ExpectLateReplyDropped(IInstrumentIO& io, int shortMs, int longMs) {
  io.SetTimeout(shortMs);
  io.Output("*IDN?");
  std::string reply;
  EXPECT_EQ(ConditionOf([&] { io.Enter(reply); }), IOERR_TIMEOUT);
  io.SetTimeout(longMs);
  EXPECT_EQ(ConditionOf([&] { io.Enter(reply); }), IOERR_TIMEOUT) << reply;
  EXPECT_EQ(Query(io, "*OPC?"), "1");
}

// Sets (or, with nullopt, removes) an environment variable for the life of the object.
class ScopedEnv {
 public:
  ScopedEnv(std::string name, const std::optional<std::string>& value) : m_name(std::move(name)) {
    if (const char* old = std::getenv(m_name.c_str())) m_old = old;
    if (value)
      ::setenv(m_name.c_str(), value->c_str(), 1);
    else
      ::unsetenv(m_name.c_str());
  }
  ~ScopedEnv() {
    if (m_old)
      ::setenv(m_name.c_str(), m_old->c_str(), 1);
    else
      ::unsetenv(m_name.c_str());
  }
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

 private:
  std::string m_name;
  std::optional<std::string> m_old;
};

// Reads one definite-length block reply ("#NDDD<bytes>" and its LF) with ReadBytes.
inline Bytes ReadBlock(IInstrumentIO& io) {
  Bytes head;
  io.ReadBytes(2, head);
  EXPECT_EQ(head[0], '#');
  const int digits = head[1] - '0';
  Bytes length;
  io.ReadBytes(digits, length);
  Bytes data;
  io.ReadBytes(std::stoi(std::string(length.begin(), length.end())), data);
  Bytes end;
  io.ReadBytes(1, end);
  EXPECT_EQ(end[0], '\n');
  return data;
}

// "<header> #<n><length><data>" and LF: a program message carrying a definite-length block.
inline Bytes BlockMessage(const std::string& header, const Bytes& data) {
  const std::string length = std::to_string(data.size());
  const std::string head = header + " #" + std::to_string(length.size()) + length;
  Bytes message(head.begin(), head.end());
  message.insert(message.end(), data.begin(), data.end());
  message.push_back('\n');
  return message;
}

// Writes `setup` back as a definite-length block over a changed time base: it reads back unchanged, error-free.
inline void ExpectSetupWritesBack(IInstrumentIO& io, const Bytes& setup) {
  io.Output(":TIMebase:RANGe 1");
  const Bytes message = BlockMessage(":SYSTem:SETup", setup);
  io.WriteBytes(static_cast<std::int32_t>(message.size()), message);
  io.Output(":SYSTem:SETup?");
  EXPECT_EQ(ReadBlock(io), setup);
  EXPECT_EQ(std::stoi(Query(io, ":SYSTem:ERRor?")), 0);
}

}  // namespace cvn73100::io::test
