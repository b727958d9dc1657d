#include "iolib/BoardMap.h"

#include <gtest/gtest.h>

#include <map>

namespace cvn73100::io {
namespace {

using GpibKind = BoardMap::GpibKind;
using ComKind = BoardMap::ComKind;

// A parsed value in one line: its kind and the one field that kind uses.
std::string Shown(const std::optional<BoardMap::GpibTarget>& t) {
  if (!t) return "refused";
  switch (t->kind) {
    case GpibKind::None:
      return "none";
    case GpibKind::Simulated:
      return "sim";
    case GpibKind::LinuxGpib:
      return "linux-gpib " + std::to_string(t->board);
    case GpibKind::PrologixSerial:
      return "serial " + t->node;
    case GpibKind::PrologixTcp:
      return "tcp " + t->host + " " + std::to_string(t->port);
    case GpibKind::Vxi11:
      return "vxi11 " + t->host + " " + std::to_string(t->port) + " " + t->interfaceName;
    case GpibKind::Socket:
      return "socket " + t->host + " " + std::to_string(t->port);
  }
  return "?";
}

TEST(BoardMapTest, GpibValues) {
  const std::pair<const char*, const char*> accepted[] = {
      {"sim", "sim"},
      {"none", "none"},
      {"linux-gpib", "linux-gpib 2"},  // the board of the GPIB number
      {"Linux-GPIB:15", "linux-gpib 15"},
      {"prologix-serial:/dev/serial/by-id/usb-x", "serial /dev/serial/by-id/usb-x"},
      {"prologix-tcp:192.168.1.20", "tcp 192.168.1.20 1234"},
      {"prologix-tcp:gpib.lab:4000", "tcp gpib.lab 4000"},
      {"prologix-tcp:[::1]:1235", "tcp ::1 1235"},
      {"prologix-tcp:fe80::1", "tcp fe80::1 1234"},
      {"vxi11:gw.lab", "vxi11 gw.lab 0 gpib0"},  // port 0: ask the portmapper
      {"vxi11:10.0.0.9:1024/GPIB1", "vxi11 10.0.0.9 1024 gpib1"}};
  for (const auto& [value, shown] : accepted) {
    std::string error;
    EXPECT_EQ(Shown(BoardMap::ParseGpibValue(value, 2, error)), shown) << value << ": " << error;
  }
  for (const char* value :
       {"linux-gpib:16", "linux-gpib:-1", "prologix-serial:ttyUSB1", "prologix-tcp:host:0", "prologix-tcp:host:70000",
        "prologix-tcp:[::1", "gpib-usb:0", "vxi11:gw/", "vxi11:gw/gpib0,5", ""}) {
    std::string error;
    EXPECT_EQ(Shown(BoardMap::ParseGpibValue(value, 0, error)), "refused") << value;
    EXPECT_FALSE(error.empty()) << value;
  }
}

TEST(BoardMapTest, ComValues) {
  const std::pair<const char*, std::optional<BoardMap::ComTarget>> cases[] = {
      {"  /dev/pts/5 ", BoardMap::ComTarget{ComKind::Node, "/dev/pts/5", {}}},
      {"Sim", BoardMap::ComTarget{ComKind::Simulated, "", {}}},
      {"NONE", BoardMap::ComTarget{ComKind::None, "", {}}},
      {"rfc2217:ts.lab:4001", BoardMap::ComTarget{ComKind::Rfc2217, "", {}, "ts.lab", 4001}},
      {"TCP:[::1]:4002", BoardMap::ComTarget{ComKind::RawTcp, "", {}, "::1", 4002}},
      {"rfc2217:ts.lab", std::nullopt},
      {"ttyUSB0", std::nullopt},
      {"", std::nullopt}};
  for (const auto& [value, target] : cases) {
    std::string error;
    EXPECT_EQ(BoardMap::ParseComValue(value, error), target) << value;
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
      {.name = "no home at all", .environment = {}, .configPath = "", .embedded = true, .gpib0 = GpibKind::Simulated},
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
  BoardMap map = BoardMap::FromText(
      "COM1 = /dev/ttyUSB0\nGPIB2 = prologix-tcp:[::1]:1300\nGPIB1.5 = socket:lab:5025\nGPIB1.31 = socket:lab:1\n"
      "GPIB1.6 = vxi11:lab/inst0\n",
      "io.conf");
  const std::string text = map.Describe();
  ASSERT_EQ(map.Problems().size(), 1u);  // address 31
  EXPECT_EQ(map.StandIn(1, 6)->interfaceName, "inst0");
  for (const char* expected : {"COM1      /dev/ttyUSB0", "[io.conf:1]", "COM4      /dev/ttyS3", "GPIB0     not mapped",
                               "GPIB2     Prologix-style adapter at [::1]:1300", "[io.conf:2]",
                               "GPIB1.5   SCPI socket lab:5025", "GPIB1.6   VXI-11 device lab, inst0"})
    EXPECT_NE(text.find(expected), std::string::npos) << expected << "\n" << text;
  EXPECT_EQ(text.find("simulated instrument answers"), std::string::npos);
  EXPECT_NE(BoardMap::EmbeddedDefault().Describe().find("The simulated instrument answers on GPIB0"),
            std::string::npos);
}

}  // namespace
}  // namespace cvn73100::io
