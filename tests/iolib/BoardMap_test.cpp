#include "iolib/BoardMap.h"

#include <gtest/gtest.h>

#include <map>

namespace cvn73100::io {
namespace {

using GpibKind = BoardMap::GpibKind;
using ComKind = BoardMap::ComKind;

struct GpibCase {
  const char* value;
  int index;
  bool ok;
  GpibKind kind = GpibKind::None;
  int board = 0;
  const char* node = "";
  const char* host = "";
  int port = 1234;
};

TEST(BoardMapTest, GpibValues) {
  const GpibCase cases[] = {
      {"sim", 0, true, GpibKind::Simulated, 0},
      {"none", 1, true, GpibKind::None, 0},
      {"linux-gpib", 2, true, GpibKind::LinuxGpib, 2},
      {"Linux-GPIB:15", 0, true, GpibKind::LinuxGpib, 15},
      {"linux-gpib:16", 0, false},
      {"linux-gpib:-1", 0, false},
      {"prologix-serial:/dev/serial/by-id/usb-x-if00-port0", 0, true, GpibKind::PrologixSerial, 0,
       "/dev/serial/by-id/usb-x-if00-port0", "", 1234},
      {"prologix-serial:ttyUSB1", 0, false},
      {"prologix-tcp:192.168.1.20", 0, true, GpibKind::PrologixTcp, 0, "", "192.168.1.20", 1234},
      {"prologix-tcp:gpib.lab:4000", 0, true, GpibKind::PrologixTcp, 0, "", "gpib.lab", 4000},
      {"prologix-tcp:[::1]:1235", 0, true, GpibKind::PrologixTcp, 0, "", "::1", 1235},
      {"prologix-tcp:fe80::1", 0, true, GpibKind::PrologixTcp, 0, "", "fe80::1", 1234},
      {"prologix-tcp:host:0", 0, false},
      {"prologix-tcp:host:70000", 0, false},
      {"prologix-tcp:[::1", 0, false},
      {"gpib-usb:0", 0, false},
      {"", 0, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.value);
    std::string error;
    const auto target = BoardMap::ParseGpibValue(c.value, c.index, error);
    ASSERT_EQ(target.has_value(), c.ok) << error;
    if (!c.ok) {
      EXPECT_FALSE(error.empty());
      continue;
    }
    EXPECT_EQ(target->kind, c.kind);
    EXPECT_EQ(target->board, c.board);
    EXPECT_EQ(target->node, c.node);
    EXPECT_EQ(target->host, c.host);
    EXPECT_EQ(target->port, c.port);
  }
}

TEST(BoardMapTest, ComValues) {
  const struct {
    const char* value;
    bool ok;
    ComKind kind = ComKind::None;
    const char* node = "";
  } cases[] = {
      {"/dev/ttyUSB0", true, ComKind::Node, "/dev/ttyUSB0"},
      {"  /dev/pts/5 ", true, ComKind::Node, "/dev/pts/5"},
      {"Sim", true, ComKind::Simulated, ""},
      {"ttyUSB0", false},
      {"", false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.value);
    std::string error;
    const auto target = BoardMap::ParseComValue(c.value, error);
    ASSERT_EQ(target.has_value(), c.ok);
    if (!c.ok) continue;
    EXPECT_EQ(target->kind, c.kind);
    EXPECT_EQ(target->node, c.node);
  }
}

const std::string kHomeConf = "/home/u/.config/cvn73100/io.conf";

// What a process sees (its environment and the files that exist), and what the map made of it.
struct LoadCase {
  const char* name;
  std::map<std::string, std::string> environment = {{"HOME", "/home/u"}};
  std::map<std::string, std::string> files = {};
  std::string configPath = kHomeConf;
  bool embedded = false;
  BoardMap::ComTarget com1 = {ComKind::Node, "/dev/ttyS0", {}};
  BoardMap::ComTarget com2 = {ComKind::Node, "/dev/ttyS1", {}};
  GpibKind gpib0 = GpibKind::None;
  GpibKind gpib1 = GpibKind::None;
  std::string libgpib = "libgpib.so.0";
  std::size_t problems = 0;
};

TEST(BoardMapTest, LoadFromFileAndEnvironment) {
  const LoadCase cases[] = {
      {.name = "nothing configured", .embedded = true, .gpib0 = GpibKind::Simulated},
      {.name = "XDG before HOME",
       .environment = {{"HOME", "/home/u"}, {"XDG_CONFIG_HOME", "/xdg"}},
       .files = {{"/xdg/cvn73100/io.conf", "GPIB1 = linux-gpib:0\n"}, {kHomeConf, "COM1 = sim\n"}},
       .configPath = "/xdg/cvn73100/io.conf",
       .gpib1 = GpibKind::LinuxGpib},
      {.name = "explicit file wins",
       .environment = {{"HOME", "/home/u"}, {"CVN73100_IO_CONF", "/etc/io.conf"}},
       .files = {{"/etc/io.conf", "COM1 = /dev/ttyUSB0\n"}, {kHomeConf, "COM1 = sim\n"}},
       .configPath = "/etc/io.conf",
       .com1 = {ComKind::Node, "/dev/ttyUSB0", {}}},
      {.name = "explicit file missing",
       .environment = {{"CVN73100_IO_CONF", "/nowhere.conf"}},
       .configPath = "/nowhere.conf",
       .embedded = true,
       .gpib0 = GpibKind::Simulated,
       .problems = 1},
      {.name = "an override keeps the embedded bus",
       .environment = {{"HOME", "/home/u"}, {"CVN73100_COM1", "/dev/pts/5"}},
       .embedded = true,
       .com1 = {ComKind::Node, "/dev/pts/5", {}},
       .gpib0 = GpibKind::Simulated},
      {.name = "an override replaces the embedded bus",
       .environment = {{"HOME", "/home/u"}, {"CVN73100_GPIB0", "prologix-tcp:127.0.0.1:1234"}},
       .gpib0 = GpibKind::PrologixTcp},
      {.name = "environment beats file, empty values are unset",
       .environment =
           {{"HOME", "/home/u"}, {"CVN73100_COM2", "sim"}, {"CVN73100_COM1", "  "}, {"CVN73100_LIBGPIB", "/opt/g.so"}},
       .files = {{kHomeConf, "COM2 = /dev/ttyUSB3\nCOM1 = none\nLIBGPIB = /usr/lib/libgpib.so.0\n"}},
       .com1 = {ComKind::None, "", {}},
       .com2 = {ComKind::Simulated, "", {}},
       .libgpib = "/opt/g.so"},
      {.name = "bad lines are skipped and reported",
       .environment = {{"HOME", "/home/u"}, {"CVN73100_GPIB1", "gpib-usb"}},
       .files =
           {{kHomeConf,
             "# board map\n; old comment\n[ports]\nbogus\nCOM9 = /dev/x\nGPIB0 = foo\ncom2 = sim\n\nGpib1=sim\r\n"}},
       .com2 = {ComKind::Simulated, "", {}},
       .gpib1 = GpibKind::Simulated,
       .problems = 4},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const auto lookUpIn = [](const std::map<std::string, std::string>& entries) {
      return [&entries](const std::string& key) -> std::optional<std::string> {
        const auto found = entries.find(key);
        return found == entries.end() ? std::nullopt : std::optional(found->second);
      };
    };
    const BoardMap map = BoardMap::Load(lookUpIn(c.environment), lookUpIn(c.files));
    EXPECT_EQ(map.ConfigPath(), c.configPath);
    EXPECT_EQ(map.UsingEmbeddedDefault(), c.embedded);
    EXPECT_EQ(map.Com(1), c.com1);
    EXPECT_EQ(map.Com(2), c.com2);
    EXPECT_EQ(map.Com(4).node, "/dev/ttyS3");
    EXPECT_EQ(map.Gpib(0).kind, c.gpib0);
    EXPECT_EQ(map.Gpib(1).kind, c.gpib1);
    EXPECT_EQ(map.LibGpibPath(), c.libgpib);
    EXPECT_EQ(map.Problems().size(), c.problems);
    for (const auto& problem : map.Problems()) EXPECT_NE(map.Describe().find(problem), std::string::npos);
  }
}

TEST(BoardMapTest, DescribeNamesEveryPortAndTheSource) {
  BoardMap map = BoardMap::FromText("COM1 = /dev/ttyUSB0\nGPIB2 = prologix-tcp:[::1]:1300\n", "io.conf");
  const std::string text = map.Describe();
  for (const char* expected : {"COM1      /dev/ttyUSB0", "[io.conf:1]", "COM4      /dev/ttyS3", "GPIB0     not mapped",
                               "GPIB2     Prologix-style adapter at [::1]:1300", "[io.conf:2]"})
    EXPECT_NE(text.find(expected), std::string::npos) << expected << "\n" << text;
  EXPECT_EQ(text.find("simulated instrument answers"), std::string::npos);
  EXPECT_NE(BoardMap::EmbeddedDefault().Describe().find("The simulated instrument answers on GPIB0"),
            std::string::npos);
}

}  // namespace
}  // namespace cvn73100::io
