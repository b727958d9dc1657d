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
      {"sim", 0, true, GpibKind::Simulated, 0, "", "", 1234},
      {" SIM ", 0, true, GpibKind::Simulated, 0, "", "", 1234},
      {"none", 1, true, GpibKind::None, 0, "", "", 1234},
      {"linux-gpib", 2, true, GpibKind::LinuxGpib, 2, "", "", 1234},
      {"Linux-GPIB:15", 0, true, GpibKind::LinuxGpib, 15, "", "", 1234},
      {"linux-gpib:16", 0, false},
      {"linux-gpib:", 0, false},
      {"linux-gpib:-1", 0, false},
      {"prologix-serial:/dev/serial/by-id/usb-x-if00-port0", 0, true, GpibKind::PrologixSerial, 0,
       "/dev/serial/by-id/usb-x-if00-port0", "", 1234},
      {"prologix-serial:ttyUSB1", 0, false},
      {"prologix-serial:", 0, false},
      {"prologix-tcp:192.168.1.20", 0, true, GpibKind::PrologixTcp, 0, "", "192.168.1.20", 1234},
      {"prologix-tcp:gpib.lab:4000", 0, true, GpibKind::PrologixTcp, 0, "", "gpib.lab", 4000},
      {"prologix-tcp:[::1]:1235", 0, true, GpibKind::PrologixTcp, 0, "", "::1", 1235},
      {"prologix-tcp:[fe80::1]", 0, true, GpibKind::PrologixTcp, 0, "", "fe80::1", 1234},
      {"prologix-tcp:fe80::1", 0, true, GpibKind::PrologixTcp, 0, "", "fe80::1", 1234},
      {"prologix-tcp:host:0", 0, false},
      {"prologix-tcp:host:70000", 0, false},
      {"prologix-tcp:host:", 0, false},
      {"prologix-tcp:", 0, false},
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
      {"NONE", true, ComKind::None, ""},
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

// What a process sees: its environment and the files that exist.
struct LoadCase {
  const char* name;
  std::map<std::string, std::string> environment;
  std::map<std::string, std::string> files;
  // Expectations.
  const char* configPath;
  bool embedded;
  BoardMap::ComTarget com1;
  BoardMap::ComTarget com2;
  GpibKind gpib0;
  GpibKind gpib1;
  const char* libgpib;
  std::size_t problems;
};

TEST(BoardMapTest, LoadFromFileAndEnvironment) {
  const BoardMap::ComTarget ttyS0{ComKind::Node, "/dev/ttyS0", {}};
  const BoardMap::ComTarget ttyS1{ComKind::Node, "/dev/ttyS1", {}};
  const std::string homeConf = "/home/u/.config/cvn73100/io.conf";
  const LoadCase cases[] = {
      {"nothing configured",
       {{"HOME", "/home/u"}},
       {},
       homeConf.c_str(),
       true,
       ttyS0,
       ttyS1,
       GpibKind::Simulated,
       GpibKind::None,
       "libgpib.so.0",
       0},
      {"no home at all", {}, {}, "", true, ttyS0, ttyS1, GpibKind::Simulated, GpibKind::None, "libgpib.so.0", 0},
      {"XDG before HOME",
       {{"HOME", "/home/u"}, {"XDG_CONFIG_HOME", "/xdg"}},
       {{"/xdg/cvn73100/io.conf", "GPIB1 = linux-gpib:0\n"}, {homeConf, "COM1 = sim\n"}},
       "/xdg/cvn73100/io.conf",
       false,
       ttyS0,
       ttyS1,
       GpibKind::None,
       GpibKind::LinuxGpib,
       "libgpib.so.0",
       0},
      {"explicit file wins",
       {{"HOME", "/home/u"}, {"CVN73100_IO_CONF", "/etc/io.conf"}},
       {{"/etc/io.conf", "COM1 = /dev/ttyUSB0\n"}, {homeConf, "COM1 = sim\n"}},
       "/etc/io.conf",
       false,
       {ComKind::Node, "/dev/ttyUSB0", {}},
       ttyS1,
       GpibKind::None,
       GpibKind::None,
       "libgpib.so.0",
       0},
      {"explicit file missing",
       {{"CVN73100_IO_CONF", "/nowhere.conf"}},
       {},
       "/nowhere.conf",
       true,
       ttyS0,
       ttyS1,
       GpibKind::Simulated,
       GpibKind::None,
       "libgpib.so.0",
       1},
      {"an override keeps the embedded bus",
       {{"HOME", "/home/u"}, {"CVN73100_COM1", "/dev/pts/5"}},
       {},
       homeConf.c_str(),
       true,
       {ComKind::Node, "/dev/pts/5", {}},
       ttyS1,
       GpibKind::Simulated,
       GpibKind::None,
       "libgpib.so.0",
       0},
      {"an override replaces the embedded bus",
       {{"HOME", "/home/u"}, {"CVN73100_GPIB0", "prologix-tcp:127.0.0.1:1234"}},
       {},
       homeConf.c_str(),
       false,
       ttyS0,
       ttyS1,
       GpibKind::PrologixTcp,
       GpibKind::None,
       "libgpib.so.0",
       0},
      {"environment beats file, empty values are unset",
       {{"HOME", "/home/u"}, {"CVN73100_COM2", "sim"}, {"CVN73100_COM1", "  "}, {"CVN73100_LIBGPIB", "/opt/g.so"}},
       {{homeConf, "COM2 = /dev/ttyUSB3\nCOM1 = none\nLIBGPIB = /usr/lib/libgpib.so.0\n"}},
       homeConf.c_str(),
       false,
       {ComKind::None, "", {}},
       {ComKind::Simulated, "", {}},
       GpibKind::None,
       GpibKind::None,
       "/opt/g.so",
       0},
      {"bad lines are skipped and reported",
       {{"HOME", "/home/u"}, {"CVN73100_GPIB1", "gpib-usb"}},
       {{homeConf,
         "# board map\n; old comment\n[ports]\nbogus\nCOM9 = /dev/x\nGPIB0 = foo\ncom2 = sim\n\nGpib1=sim\r\n"}},
       homeConf.c_str(),
       false,
       ttyS0,
       {ComKind::Simulated, "", {}},
       GpibKind::None,
       GpibKind::Simulated,
       "libgpib.so.0",
       4},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const BoardMap map = BoardMap::Load(
        [&](const std::string& name) -> std::optional<std::string> {
          const auto found = c.environment.find(name);
          return found == c.environment.end() ? std::nullopt : std::optional(found->second);
        },
        [&](const std::string& path) -> std::optional<std::string> {
          const auto found = c.files.find(path);
          return found == c.files.end() ? std::nullopt : std::optional(found->second);
        });
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
