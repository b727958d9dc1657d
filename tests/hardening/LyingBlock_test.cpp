// Replies whose block header lies, fed to the automation server through a channel of the test's own: each
// must end in its own error at once, without the reader ever holding memory for what the header claims.
//
// This program counts every allocation, so a buffer sized from a declared length shows up even when its
// pages are never touched (an overcommitting kernel gives a reserve() of gigabytes for free in RSS).
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <tuple>

#include "platform/InstrumentIO.h"
#include "server/BlockReader.h"
#include "server/Cvn73100Server.h"
#include "server/ServerError.h"
#include "tests/hardening/Hardening.h"
#include "tests/support/ScriptedIO.h"

namespace {

std::atomic<std::size_t> g_live{0};
std::atomic<std::size_t> g_peak{0};
// Keeps the block 16-byte aligned, as malloc's is.
constexpr std::size_t kHeader = 16;

void* Allocate(std::size_t size) {
  auto* block = static_cast<unsigned char*>(std::malloc(size + kHeader));
  if (block == nullptr) return nullptr;
  *reinterpret_cast<std::size_t*>(block) = size;
  const std::size_t live = g_live.fetch_add(size) + size;
  std::size_t peak = g_peak.load();
  while (live > peak && !g_peak.compare_exchange_weak(peak, live)) {
  }
  return block + kHeader;
}

void Release(void* pointer) noexcept {
  if (pointer == nullptr) return;
  auto* block = static_cast<unsigned char*>(pointer) - kHeader;
  g_live.fetch_sub(*reinterpret_cast<std::size_t*>(block));
  std::free(block);
}

}  // namespace

void* operator new(std::size_t size) {
  if (void* p = Allocate(size)) return p;
  throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
  if (void* p = Allocate(size)) return p;
  throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* p) noexcept { Release(p); }
void operator delete[](void* p) noexcept { Release(p); }
void operator delete(void* p, std::size_t) noexcept { Release(p); }
void operator delete[](void* p, std::size_t) noexcept { Release(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { Release(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { Release(p); }

namespace cvn73100::hardening {
namespace {

using Clock = std::chrono::steady_clock;
constexpr std::size_t kMiB = std::size_t{1} << 20;
constexpr std::int32_t kChannelTimeoutMs = 5000;

struct LieCase {
  const char* name;
  std::string reply;
  bool endsWithEoi;
  std::int32_t error;  // the server condition expected of every block read
};

void PrintTo(const LieCase& c, std::ostream* os) { *os << c.name; }

// The server's block reads, each with its own cap: the raw "B" image (16 MiB) and the learn string (1 MiB).
struct Reader {
  const char* name;
  std::function<void(server::Cvn73100Server&)> read;
};

const Reader kReaders[] = {
    {"Enter B",
     [](server::Cvn73100Server& s) {
       s.Output(Variant(":WAVeform:DATA?"));
       Variant block;
       s.Enter(block, Variant("B"));
     }},
    {"ReadStateData", [](server::Cvn73100Server& s) { s.Utilities().ReadStateData(); }},
};

class LyingBlockHeader : public ::testing::TestWithParam<LieCase> {};

TEST_P(LyingBlockHeader, SpecificErrorAtOnceWithoutHoldingTheClaimedMemory) {
  const LieCase& c = GetParam();
  for (const Reader& reader : kReaders) {
    SCOPED_TRACE(reader.name);
    // A channel whose reads past the reply wait out its timeout, as a real line's do.
    auto attempt = [&] {
      auto channel = std::make_shared<test::ScriptedIO>(c.reply);
      channel->eoi = c.endsWithEoi;
      channel->waitOnSilence = true;
      server::Cvn73100Server server(std::make_shared<test::ScriptedManager>(channel));
      server.OpenConnection("GPIB0::7::INSTR");
      channel->SetTimeout(kChannelTimeoutMs);
      const std::size_t rssBefore = PeakResidentBytes();
      const std::size_t heapBefore = g_live.load();
      g_peak.store(heapBefore);
      const auto start = Clock::now();
      const std::int32_t error = server::ServerErrorCondition(test::ErrorOf([&] { reader.read(server); }));
      const double ms = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
      return std::make_tuple(error, ms, g_peak.load() - heapBefore, PeakResidentBytes() - rssBefore);
    };
    attempt();  // the first run pays for the code and the error text; the second one is measured
    const auto [error, ms, heap, rss] = attempt();
    EXPECT_EQ(error, c.error);
    EXPECT_LT(ms, kChannelTimeoutMs / 10.0) << "the reader waited on the channel";
    EXPECT_LT(heap, kMiB) << "peak heap bytes during the read";
    EXPECT_LT(rss, kMiB) << "peak resident bytes during the read";
  }
}

INSTANTIATE_TEST_SUITE_P(
    Hardening, LyingBlockHeader,
    ::testing::Values(LieCase{"TenDigitLength", "#9999999999", false, server::SERVERERR_BLOCK_TOO_LARGE},
                      LieCase{"TenDigitLengthThenEnd", "#9999999999\n", true, server::SERVERERR_BLOCK_TOO_LARGE},
                      LieCase{"TenBytesClaimedFourSentThenEnd", "#210ABCD", true, server::SERVERERR_BLOCK_SHORT},
                      LieCase{"AlmostTheCapClaimedFourSentThenEnd", "#71000000ABCD", true,
                              server::SERVERERR_BLOCK_SHORT},
                      LieCase{"IndefiniteLength", "#0ABCD\n", true, server::SERVERERR_BLOCK_INDEFINITE}),
    [](const ::testing::TestParamInfo<LieCase>& param) { return std::string(param.param.name); });

}  // namespace
}  // namespace cvn73100::hardening
