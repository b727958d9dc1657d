#pragma once
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>

// Shared by the fuzz targets, which are also compiled into the replay test with an ordinary compiler, so
// nothing here may depend on libFuzzer's headers.
namespace cvn73100::fuzz {

// Hands out a fuzz input piece by piece; once it is used up every read gives zeros or empty text, so a target
// never has to check the length itself.
class FuzzInput {
 public:
  FuzzInput(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}

  std::size_t Remaining() const { return m_size - m_pos; }
  std::uint8_t Byte() { return m_pos < m_size ? m_data[m_pos++] : 0; }
  // `count` bytes, least significant first.
  std::uint64_t Number(int count) {
    std::uint64_t value = 0;
    for (int i = 0; i < count; ++i) value |= static_cast<std::uint64_t>(Byte()) << (8 * i);
    return value;
  }
  // Up to `count` bytes as text.
  std::string Text(std::size_t count) {
    const std::size_t n = count < Remaining() ? count : Remaining();
    std::string text(reinterpret_cast<const char*>(m_data + m_pos), n);
    m_pos += n;
    return text;
  }
  // Up to the next line feed (consumed, not returned) or the end.
  std::string Line() {
    std::size_t end = m_pos;
    while (end < m_size && m_data[end] != '\n') ++end;
    std::string text(reinterpret_cast<const char*>(m_data + m_pos), end - m_pos);
    m_pos = end < m_size ? end + 1 : end;
    return text;
  }
  std::string Rest() { return Text(Remaining()); }

 private:
  const std::uint8_t* m_data;
  std::size_t m_size;
  std::size_t m_pos = 0;
};

// A broken invariant. Under libFuzzer it aborts, so the input is kept as a crash; in the replay test it throws,
// so the test names the file and goes on with the next one.
inline void Require(bool condition, const char* what) {
  if (condition) return;
#ifdef CVN_FUZZ_REPLAY
  throw std::logic_error(what);
#else
  std::fprintf(stderr, "broken invariant: %s\n", what);
  std::abort();
#endif
}

}  // namespace cvn73100::fuzz
