#include "platform/Interrupt.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>

#include "platform/Os.h"
#include "tests/iolib/IoTestSupport.h"

namespace cvn73100::io {
namespace {

// Every long wait ends with Interrupted once a check says stop, long before its own limit: a wait that ignored
// the check would end with the I/O library's timeout instead, after a minute.
TEST(InterruptTest, EveryLongWaitEndsWhenACheckSaysStop) {
  test::Backends rig;
  rig.SetFaults({.silent = true});
  const auto read = [&](const char* address) {
    return [&rig, address] {
      const auto io = rig.manager.Open(address);
      io->SetTimeout(60'000);
      std::string reply;
      io->Enter(reply);
    };
  };
  std::vector<std::function<void()>> waits = {
      read("GPIB0::9::INSTR"),  // nobody at that address
      [] { Os::Current().SleepUntilTick(Os::Current().GetTickCount() + 60'000); }};
  for (const char* address : test::Backends::kAddresses) {
    if (std::string(address) != "GPIB3::7::INSTR") waits.push_back(read(address));  // a library call blocks
  }
  for (std::size_t i = 0; i < waits.size(); ++i) {
    std::atomic<int> asked{0};
    Interrupt::Scope scope([&asked] { return ++asked > 2; });
    EXPECT_THROW(waits[i](), Interrupted) << i;
  }
}

TEST(InterruptTest, NoCheckMeansNoInterruption) {
  EXPECT_FALSE(Interrupt::Installed());
  EXPECT_NO_THROW(Interrupt::Check());
  EXPECT_FALSE(Interrupt::Current());
  bool stop = false;
  Interrupt::Scope outer([&stop] { return stop; });
  const Interrupt::Check_t forWorker = Interrupt::Current();
  EXPECT_FALSE(forWorker());
  stop = true;
  EXPECT_TRUE(forWorker());
  EXPECT_THROW(Interrupt::Check(), Interrupted);
}

}  // namespace
}  // namespace cvn73100::io
