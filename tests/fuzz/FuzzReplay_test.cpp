// Every input a fuzz target ever crashed on, and every seed, goes through the target once more.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#define CVN_FUZZ_TARGET(name) extern "C" int CvnFuzzEntry_##name(const std::uint8_t* data, std::size_t size);
#include "FuzzTargets.inc"
#undef CVN_FUZZ_TARGET

namespace {

namespace fs = std::filesystem;
using Entry = int (*)(const std::uint8_t*, std::size_t);

struct Target {
  const char* name;
  Entry entry;
};

void PrintTo(const Target& target, std::ostream* os) { *os << target.name; }

const Target kTargets[] = {
#define CVN_FUZZ_TARGET(name) {#name, &CvnFuzzEntry_##name},
#include "FuzzTargets.inc"
#undef CVN_FUZZ_TARGET
};

fs::path SourceDir() {
  const char* dir = std::getenv("CVN_SOURCE_DIR");
  return dir && *dir ? fs::path(dir) : fs::path(CVN_SOURCE_DIR_DEFAULT);
}

// The files of fuzz/<kind>/<target>/ in name order; none when the folder does not exist.
std::vector<fs::path> Inputs(const char* kind, const char* target) {
  std::vector<fs::path> files;
  const fs::path dir = SourceDir() / "fuzz" / kind / target;
  std::error_code ec;
  for (const auto& item : fs::directory_iterator(dir, ec))
    if (item.is_regular_file()) files.push_back(item.path());
  std::sort(files.begin(), files.end());
  return files;
}

std::vector<std::uint8_t> ReadAll(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::vector<std::uint8_t>(std::istreambuf_iterator<char>(in), {});
}

class FuzzReplay : public ::testing::TestWithParam<Target> {};

TEST_P(FuzzReplay, EveryKeptInputAndSeedPasses) {
  const Target& target = GetParam();
  const std::vector<fs::path> seeds = Inputs("corpus", target.name);
  EXPECT_FALSE(seeds.empty()) << "no seed corpus for " << target.name;
  std::vector<fs::path> files = Inputs("regressions", target.name);
  files.insert(files.end(), seeds.begin(), seeds.end());
  for (const fs::path& file : files) {
    const std::vector<std::uint8_t> bytes = ReadAll(file);
    // An exact-size copy, so that a read past the end is one past the allocation, as under libFuzzer.
    std::unique_ptr<std::uint8_t[]> data(new std::uint8_t[bytes.size()]);
    std::copy(bytes.begin(), bytes.end(), data.get());
    try {
      target.entry(data.get(), bytes.size());
    } catch (const std::exception& e) {
      ADD_FAILURE() << file << ": " << e.what();
    } catch (...) {
      ADD_FAILURE() << file << ": an exception that is not a std::exception";
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Fuzz, FuzzReplay, ::testing::ValuesIn(kTargets),
                         [](const ::testing::TestParamInfo<Target>& param) { return std::string(param.param.name); });

}  // namespace
