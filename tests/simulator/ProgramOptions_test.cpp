#include "simulator/ProgramOptions.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <stdexcept>

namespace cvn73100::sim {
namespace {

using Args = std::vector<std::string>;

TEST(ProgramOptions, InstrumentOptionsApplyToTheLatestInstrument) {
  const ProgramOptions o =
      ProgramOptions::Parse({"--pty", "--model", "73105B", "--late-reply=250", "--instrument", "--idn", "73135D",
                             "--garbage", "--instrument", "--address", "3", "--wrong-parameter", "19200,4",
                             "--line-baud", "9600", "--prologix-tcp", "127.0.0.1:1234", "--tcp", "localhost:0"});
  ASSERT_EQ(o.instruments.size(), 3u);
  EXPECT_EQ(o.instruments[0].gpibAddress, 7);
  EXPECT_EQ(o.instruments[0].identity.model, "73105B");
  EXPECT_EQ(o.instruments[0].faults.lateReplyMs, 250);
  EXPECT_EQ(o.instruments[1].gpibAddress, 8);
  EXPECT_EQ(o.instruments[1].identity.Reply(), "73135D");
  EXPECT_TRUE(o.instruments[1].faults.garbage);
  EXPECT_EQ(o.instruments[2].gpibAddress, 3);
  EXPECT_EQ(o.instruments[2].faults,
            (Faults{.lineBaud = 9600, .wrongParameter = true, .requiredBaud = 19200, .requiredHandshake = 4}));
  EXPECT_TRUE(o.pty);
  EXPECT_EQ(o.prologixTcpPort, 1234);
  EXPECT_EQ(o.tcpPort, 0);
  EXPECT_FALSE(o.prologixPty);
}

TEST(ProgramOptions, BadArgumentsAreRefusedWithAMessage) {
  const Args cases[] = {{},
                        {"--model", "X"},
                        {"--pty", "--address", "31"},
                        {"--tcp", "0.0.0.0:5025"},
                        {"--tcp", "127.0.0.1:99999"},
                        {"--pty", "--bogus"},
                        {"--pty", "--model"},
                        {"--pty=1"},
                        {"--pty", "--wrong-parameter", "9600"},
                        {"--pty", "--wrong-parameter", "9600,3"},
                        {"--pty", "--instrument", "--instrument", "--address", "7"},
                        {"--pty", "--config", "/nonexistent/sim.conf"},
                        {"pty"}};
  for (const auto& args : cases)
    EXPECT_THROW(ProgramOptions::Parse(args), std::invalid_argument) << ::testing::PrintToString(args);
}

TEST(ProgramOptions, ConfigFileStandsForItsOptions) {
  const std::string text =
      "# two scopes behind an adapter\n"
      "prologix-tcp = 127.0.0.1:0\n"
      "pty = false\n"
      "[instrument]\n"
      "idn = ACME,12345A,1,2\n"
      "silent = true\n"
      "\n"
      "[instrument]\n"
      "  address = 12\n"
      "drop-mid-block = yes\n";
  EXPECT_EQ(ProgramOptions::ConfigWords(text),
            (Args{"--prologix-tcp", "127.0.0.1:0", "--instrument", "--idn", "ACME,12345A,1,2", "--silent",
                  "--instrument", "--address", "12", "--drop-mid-block"}));
  const std::string path = ::testing::TempDir() + "sim_options_test.conf";
  std::ofstream(path) << text;
  const ProgramOptions o = ProgramOptions::Parse({"--config", path, "--late-reply", "5"});
  std::remove(path.c_str());
  ASSERT_EQ(o.instruments.size(), 2u);
  EXPECT_TRUE(o.instruments[0].faults.silent);
  EXPECT_EQ(o.instruments[0].identity.model, "12345A");
  EXPECT_EQ(o.instruments[1].gpibAddress, 12);
  EXPECT_TRUE(o.instruments[1].faults.dropMidBlock);
  EXPECT_EQ(o.instruments[1].faults.lateReplyMs, 5);  // the command line goes on where the file ended
  EXPECT_FALSE(o.pty);
  EXPECT_THROW(ProgramOptions::ConfigWords("silent = maybe\n"), std::invalid_argument);
}

}  // namespace
}  // namespace cvn73100::sim
