#pragma once
#include <cstdint>
#include <map>
#include <string>

namespace cvn73100 {

// Operating-system services the control needs. One instance serves the process; tests swap in FakeOs.
class Os {
 public:
  virtual ~Os() = default;

  // Milliseconds since an arbitrary start, wrapping at 2^32 and read as a signed 32-bit value.
  virtual std::int32_t GetTickCount() = 0;
  // Blocks the calling thread until the tick counter reads `tick`, asleep for all but the last fraction of a
  // millisecond; returns at once when it already has (ticks compared across the wrap, as signed 32-bit differences).
  virtual void SleepUntilTick(std::int32_t tick) = 0;
  // The user's own temporary directory, ending in '/'.
  virtual std::string TempPath() = 0;
  // Whether the code page's characters take more than one byte (932, 949, 950 for the Asian languages).
  virtual bool CodePageIsDoubleByte(int codePage) = 0;
  // The folder of the running program, ending in '/' (help files live below it).
  virtual std::string ProgramFolder() = 0;

  static Os& Current();
  // Installs `os` for the process; nullptr restores the real one. The caller keeps ownership.
  static void SetCurrent(Os* os);
};

// The real services: a monotonic clock, a private folder ($XDG_RUNTIME_DIR, else one under TMPDIR or /tmp),
// iconv's code-page tables.
class RealOs : public Os {
 public:
  std::int32_t GetTickCount() override;
  void SleepUntilTick(std::int32_t tick) override;
  std::string TempPath() override;
  bool CodePageIsDoubleByte(int codePage) override;
  std::string ProgramFolder() override;
};

// A clock the test advances (sleeping advances it too) and settings the test chooses.
class FakeOs : public Os {
 public:
  std::int32_t GetTickCount() override { return m_tick; }
  void SleepUntilTick(std::int32_t tick) override {
    const auto ahead = static_cast<std::int32_t>(static_cast<std::uint32_t>(tick) - static_cast<std::uint32_t>(m_tick));
    if (ahead > 0) m_tick = tick;
  }
  std::string TempPath() override { return m_tempPath; }
  bool CodePageIsDoubleByte(int codePage) override { return m_doubleByte[codePage]; }
  std::string ProgramFolder() override { return m_programFolder; }

  void SetTick(std::int32_t tick) { m_tick = tick; }
  void Advance(std::int32_t milliseconds) {
    m_tick = static_cast<std::int32_t>(static_cast<std::uint32_t>(m_tick) + static_cast<std::uint32_t>(milliseconds));
  }
  void SetTempPath(std::string path) { m_tempPath = std::move(path); }
  void SetDoubleByte(int codePage, bool value) { m_doubleByte[codePage] = value; }
  void SetProgramFolder(std::string folder) { m_programFolder = std::move(folder); }

 private:
  std::int32_t m_tick = 0;
  std::string m_tempPath = "/tmp/";
  std::string m_programFolder = "./";
  std::map<int, bool> m_doubleByte;
};

// Installs a FakeOs for the lifetime of a scope.
class ScopedOs {
 public:
  explicit ScopedOs(Os& os) { Os::SetCurrent(&os); }
  ~ScopedOs() { Os::SetCurrent(nullptr); }
  ScopedOs(const ScopedOs&) = delete;
  ScopedOs& operator=(const ScopedOs&) = delete;
};

}  // namespace cvn73100
