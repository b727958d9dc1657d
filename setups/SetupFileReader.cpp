#include "setups/SetupFileReader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <limits>

#include "platform/ScopeError.h"

namespace cvn73100 {
namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

// One read that retries after a signal; the byte count, 0 at the end, -1 on failure.
ssize_t ReadSome(int fd, void* buffer, std::size_t count) {
  for (;;) {
    const ssize_t n = ::read(fd, buffer, count);
    if (n >= 0 || errno != EINTR) return n;
  }
}

}  // namespace

SetupFileReader::~SetupFileReader() { Close(); }

bool SetupFileReader::Open(const std::string& path) {
  Close();
  // Non-blocking only for the open itself, so that a FIFO planted at the path cannot hang us.
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (fd < 0) return false;
  struct stat st {};
  if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode) || ::fcntl(fd, F_SETFL, 0) != 0) {
    ::close(fd);
    return false;
  }
  m_fd = fd;
  m_size = st.st_size;
  m_position = 0;
  m_failed = false;
  m_begin = m_end = 0;
  if (!m_buffer) m_buffer = std::make_unique<std::uint8_t[]>(BUFFER_SIZE);
  return true;
}

void SetupFileReader::Close() {
  if (m_fd >= 0) ::close(m_fd);
  m_fd = -1;
  m_begin = m_end = 0;
}

bool SetupFileReader::Fill() {
  if (m_begin < m_end) return true;
  if (m_fd < 0 || m_failed) return false;
  const ssize_t n = ReadSome(m_fd, m_buffer.get(), BUFFER_SIZE);
  if (n <= 0) {
    m_failed = true;
    return false;
  }
  m_begin = 0;
  m_end = static_cast<std::size_t>(n);
  return true;
}

bool SetupFileReader::AtEnd() { return !Fill(); }

std::optional<std::uint8_t> SetupFileReader::ReadByte() {
  if (!Fill()) return std::nullopt;
  ++m_position;
  return m_buffer[m_begin++];
}

bool SetupFileReader::ReadExactly(std::size_t count, Bytes& out) {
  const std::size_t buffered = std::min(count, m_end - m_begin);
  out.insert(out.end(), m_buffer.get() + m_begin, m_buffer.get() + m_begin + buffered);
  m_begin += buffered;
  m_position += static_cast<std::int64_t>(buffered);
  std::size_t remaining = count - buffered;
  if (remaining == 0) return true;
  if (m_fd < 0 || m_failed) return false;
  // The caller has checked `count` against the file's size, so reading straight into place is safe.
  std::size_t done = out.size();
  out.resize(done + remaining);
  while (remaining > 0) {
    const ssize_t n = ReadSome(m_fd, out.data() + done, remaining);
    if (n <= 0) {
      out.resize(done);
      m_failed = true;
      return false;
    }
    done += static_cast<std::size_t>(n);
    remaining -= static_cast<std::size_t>(n);
    m_position += n;
  }
  return true;
}

bool SetupFileReader::ReadToEnd(std::size_t cap, Bytes& out) {
  const std::size_t start = out.size();
  while (Fill()) {
    const std::size_t chunk = m_end - m_begin;
    if (out.size() - start + chunk > cap) return false;
    out.insert(out.end(), m_buffer.get() + m_begin, m_buffer.get() + m_end);
    m_position += static_cast<std::int64_t>(chunk);
    m_begin = m_end;
  }
  return true;
}

std::optional<std::int32_t> SetupFileReader::ToLong(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  if (!text.empty() && text.front() == '+') {
    text.remove_prefix(1);
    if (!text.empty() && text.front() == '-') return std::nullopt;
  }
  if (text.empty()) return std::nullopt;
  std::int32_t value = 0;
  const auto [ptr, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (ec != std::errc() || ptr != text.data() + text.size()) return std::nullopt;
  return value;
}

std::int32_t SetupFileReader::ConvertToLong(std::string_view text) {
  const auto value = ToLong(text);
  if (!value) throw RuntimeError(ERR_TYPE_MISMATCH);
  return *value;
}

void SetupFileReader::RefuseLearnStringOf(std::size_t length) {
  throw ScopeError(ERR_SETUP_FILE, "Cvn73100CtrlLib",
                   "The setup file holds " + std::to_string(length) +
                       " bytes of setup data; an instrument's setup has at most " +
                       std::to_string(MAX_LEARN_STRING_BYTES) + ".");
}

}  // namespace cvn73100
