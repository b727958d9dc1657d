// Saving and loading a native setup file with a 1 MiB learn string, against copying the same file.
// The save is atomic and durable (temporary file, fsync, rename), so it is compared both with a plain
// copy and with a copy that is synced too. Prints the ratios after the table.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "setups/CSetupFile.h"

namespace {

namespace fs = std::filesystem;
using cvn73100::Bytes;
using cvn73100::CSetupFile;

constexpr std::size_t LEARN_STRING_BYTES = 1u << 20;

const fs::path& Folder() {
  static const fs::path folder = [] {
    std::string pattern = (fs::temp_directory_path() / "cvnsetupsbench.XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) std::abort();
    return fs::path(pattern);
  }();
  return folder;
}

fs::path Source() {
  static const fs::path source = [] {
    CSetupFile file;
    file.SetModel("73135D");
    file.SetVersion("A.01.02");
    file.SetUserComments("benchmark");
    Bytes data(LEARN_STRING_BYTES);
    for (std::size_t i = 0; i < data.size(); ++i) data[i] = static_cast<std::uint8_t>(i * 31 + (i >> 9));
    file.SetLearnString(data);
    fs::path path = Folder() / "source.scp";
    file.WriteFile(path.string());
    return path;
  }();
  return source;
}

void BM_SetupFileRead(benchmark::State& state) {
  const std::string path = Source().string();
  for (auto _ : state) {
    CSetupFile file;
    file.ReadFile(path);
    benchmark::DoNotOptimize(file.LearnString());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * fs::file_size(path)));
}

void BM_SetupFileWrite(benchmark::State& state) {
  CSetupFile file;
  file.ReadFile(Source().string());
  const std::string target = (Folder() / "written.scp").string();
  for (auto _ : state) file.WriteFile(target);
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * fs::file_size(target)));
}

void BM_SetupFileReadWrite(benchmark::State& state) {
  const std::string source = Source().string();
  const std::string target = (Folder() / "copied.scp").string();
  for (auto _ : state) {
    CSetupFile file;
    file.ReadFile(source);
    file.WriteFile(target);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * fs::file_size(source)));
}

void BM_PlainCopy(benchmark::State& state) {
  const fs::path source = Source();
  const fs::path target = Folder() / "plain.scp";
  for (auto _ : state) fs::copy_file(source, target, fs::copy_options::overwrite_existing);
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * fs::file_size(source)));
}

void BM_PlainReadWriteSynced(benchmark::State& state) {
  const fs::path source = Source();
  const std::string target = (Folder() / "synced.scp").string();
  for (auto _ : state) {
    std::vector<char> bytes(fs::file_size(source));
    std::ifstream(source, std::ios::binary).read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    const int fd = ::open(target.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0 || ::write(fd, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()) || ::fsync(fd) != 0)
      state.SkipWithError("plain write failed");
    if (fd >= 0) ::close(fd);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * fs::file_size(source)));
}

BENCHMARK(BM_SetupFileRead)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(BM_SetupFileWrite)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(BM_SetupFileReadWrite)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(BM_PlainCopy)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(BM_PlainReadWriteSynced)->Unit(benchmark::kMicrosecond)->UseRealTime();

// Keeps the time per iteration of every run so the ratios can be printed at the end.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const auto& run : runs) {
      const double seconds = run.GetAdjustedRealTime();  // per iteration, in the run's unit (the same for all)
      if (run.run_type == Run::RT_Iteration) m_seconds[run.run_name.function_name].push_back(seconds);
      if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median")
        m_seconds[run.run_name.function_name] = {seconds};
    }
  }
  void PrintRatio(const char* what, const char* name, const char* peer) const {
    const double a = Median(name);
    const double b = Median(peer);
    if (a <= 0 || b <= 0) return;
    std::printf("%-58s %6.2fx\n", what, a / b);
  }

 private:
  // The median over repetitions (--benchmark_repetitions), 0 when the benchmark did not run.
  double Median(const std::string& name) const {
    const auto it = m_seconds.find(name);
    if (it == m_seconds.end() || it->second.empty()) return 0;
    std::vector<double> times = it->second;
    std::nth_element(times.begin(), times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2), times.end());
    return times[times.size() / 2];
  }

  std::map<std::string, std::vector<double>> m_seconds;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  std::printf("\nratio (goal: within 3x)\n");
  reporter.PrintRatio("setup file read+write / plain copy", "BM_SetupFileReadWrite", "BM_PlainCopy");
  reporter.PrintRatio("setup file read+write / synced read+write of the bytes", "BM_SetupFileReadWrite",
                      "BM_PlainReadWriteSynced");
  reporter.PrintRatio("setup file read / plain copy", "BM_SetupFileRead", "BM_PlainCopy");
  benchmark::Shutdown();
  std::error_code ec;
  fs::remove_all(Folder(), ec);
  return 0;
}
