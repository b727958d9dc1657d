#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <numbers>
#include <sstream>

#include "cli/CliMessages.h"
#include "cli/ConsoleHost.h"
#include "cli/TextWidth.h"
#include "dialogs/Messages.h"
#include "connection/CQueryInstrument.h"
#include "ioconfig/CIOconfiguration.h"
#include "simulator/Instrument.h"
#include "simulator/InstrumentPort.h"
#include "simulator/PtyServer.h"
#include "tests/cli/CliRunner.h"

namespace cvn73100 {
namespace {

using nlohmann::json;
using test::CliTest;
using test::RunResult;

bool Contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

// The box `cvnscope test` prints, as the message box of the query shows it.
std::string TestBox(std::int16_t code, const std::string& address, const std::string& reply) {
  CQueryInstrument query;
  query.Initialize(CQueryInstrument::DEFAULT_TX_DELAY, std::make_shared<CIOconfiguration>(), nullptr);
  return "== " + Messages::LoadIn(Messages::ENGLISH, 220) + " ==\n" +
         ConsoleHost::ToTerminal(query.TestMessage(code, address, reply)) + "\n";
}

constexpr const char* SUPPORTED_IDN = "Corvane Technologies,73135D,QX40001234,A.02.10";
constexpr const char* OTHER_731_IDN = "Corvane Technologies,73199B,QX40005678,A.01.04";
constexpr const char* OTHER_FAMILY_IDN = "Corvane Technologies,44210A,QX40009012,B.03.01";

// --- test: the message text and the exit status for each outcome on the simulated bus ---

struct TestCase {
  const char* address;
  std::int16_t code;
  const char* reply;
  int status;
  const char* cause = "";  // the operating system's or the I/O library's, below the box's text
};

class TestCommand : public CliTest, public ::testing::WithParamInterface<TestCase> {};

TEST_P(TestCommand, PrintsTheTestBoxAndExitsWithTheCode) {
  const TestCase& c = GetParam();
  env["CVN73100_COM2"] = "/dev/cvn-none";
  const RunResult r = Run({"test", c.address});
  EXPECT_EQ(r.status, c.status) << r.err;
  std::string box = TestBox(c.code, c.address, c.reply);
  if (*c.cause) box.insert(box.size() - 1, std::string("\n\nCould not open the I/O resource. (") + c.cause + ")");
  EXPECT_EQ(r.out, box);
  EXPECT_FALSE(std::filesystem::exists(FormPath())) << "a test changes nothing in the form";
}

INSTANTIATE_TEST_SUITE_P(SimulatedBus, TestCommand,
                         ::testing::Values(TestCase{"GPIB0::7::INSTR", 0, SUPPORTED_IDN, 0},
                                           TestCase{"GPIB0::3::INSTR", 1, OTHER_731_IDN, 11},
                                           TestCase{"GPIB0::12::INSTR", 2, OTHER_FAMILY_IDN, 12},
                                           TestCase{"GPIB0::5::INSTR", 4, "", 14},
                                           TestCase{"COM3", 5, "", 15, "COM3 is not mapped to a device"},
                                           TestCase{"COM2", 5, "", 15, "/dev/cvn-none: No such file or directory"}));

// --- errors and usage ---

struct FailureCase {
  std::vector<std::string> args;
  int status;
  const char* stderrPart;
};

class Failures : public CliTest, public ::testing::WithParamInterface<FailureCase> {};

TEST_P(Failures, ExitNonZeroWithTheErrorOnStderr) {
  const FailureCase& c = GetParam();
  const RunResult r = Run(c.args);
  EXPECT_EQ(r.status, c.status) << r.out << r.err;
  EXPECT_TRUE(Contains(r.err, c.stderrPart)) << r.err;
}

INSTANTIATE_TEST_SUITE_P(
    Cli, Failures,
    ::testing::Values(
        FailureCase{{"test", "GPIB9::1::INSTR"}, 1, "Error -2147221124: QD 73100 Scope Control: Invalid property value."},
        FailureCase{{"config", "set", "--tx-delay", "-1"}, 1, "Invalid property value. (--tx-delay -1: allowed 0 ms"},
        FailureCase{{"config", "serial", "COM2", "--baud", "4800"}, 1, "(COM2 --baud 4800: allowed baud 1200, 2400"},
        FailureCase{{"use", "1"}, 1, "run `cvnscope search` first"},
        FailureCase{{"setup", "send", "Nope"}, 1, "no setup named \"Nope\""},
        FailureCase{{"setup", "get", "a|b"}, 1, "Names may not contain spaces"},
        FailureCase{{"setup", "show", "missing.scp"}, 1, "File not found"},
        FailureCase{{"waveform", "--points", "7"}, 2, "--points"},
        FailureCase{{"frobnicate"}, 2, ""},
        FailureCase{{"message", "99999"}, 1, "Message 99999 is not in the catalogue."}));

// Files: "-" is standard input or output, a missing folder is an error unless --parents, and the image format
// follows the file's name.
TEST_F(CliTest, FilesStreamsFoldersAndFormats) {
  const struct {
    std::vector<std::string> args;
    int status;
    const char* part;  // of stdout, or of stderr when the command fails
  } cases[] = {
      {{"screenshot", "x.png"}, 2, ".png is not an image format of the instrument"},
      {{"screenshot", "x.gif", "--format", "bmp"}, 2, "x.gif would hold bmp under the name .gif"},
      {{"screenshot", "x.png", "--format", "bmp"}, 0, "Screen image (bmp, "},
      {{"screenshot", "no/such/x.bmp"}, 1, "the folder no/such does not exist (--parents creates it)"},
      {{"--parents", "screenshot", "new/x.tif"}, 0, "Screen image (tif, "},
      {{"screenshot", "-", "--format", "gif"}, 0, "GIF87a"},
      {{"waveform", "-o", "-", "-p", "100"}, 0, "time,volts\n"},
      {{"setup", "get", "Q1", "--yes"}, 0, "Fetched Q1"},
  };
  for (const auto& c : cases) {
    const RunResult r = Run(c.args);
    EXPECT_EQ(r.status, c.status) << c.args[0] << " " << c.args[1] << ": " << r.err;
    EXPECT_TRUE(Contains(c.status == 0 ? r.out : r.err, c.part)) << c.args[1] << ": " << r.out << r.err;
  }
  EXPECT_TRUE(std::filesystem::is_regular_file(dir / "new" / "x.tif"));
  input = Run({"setup", "save", "Q1", "-"}).out;
  ASSERT_EQ(Run({"setup", "open", "-", "Q2"}).status, 0);
  input = Run({"setup", "save", "Q2", "-"}).out;
  EXPECT_TRUE(Contains(Run({"setup", "show", "-"}).out, "Model:       73135D"));
}

// A sequence of commands talks to one simulated instrument, as to a real one, until `sim reset`.
TEST_F(CliTest, TheSimulatedInstrumentKeepsItsSettingsUntilReset) {
  ASSERT_EQ(Run({"write", ":TIMebase:RANGe 2E-3"}).status, 0);
  EXPECT_EQ(Run({"query", ":TIMebase:RANGe?"}).out, "2E-03\n");
  ASSERT_EQ(Run({"sim", "reset"}).status, 0);
  EXPECT_EQ(Run({"query", ":TIMebase:RANGe?"}).out, "1E-03\n");
}

// Habits of command-line tools: the version, usage errors as JSON, completions drawn from the command tree.
TEST_F(CliTest, VersionJsonUsageErrorsAndCompletions) {
  const struct {
    std::vector<std::string> args;
    int status;
    const char* stdoutPart;
  } cases[] = {
      {{"--version"}, 0, "cvnscope "},
      {{"--json", "waveform", "--points", "7"}, 2, "{\"error\": {\"usage\": \"--points"},
      {{"frobnicate", "--json"}, 2, "{\"error\": {\"usage\": "},
      {{"completion", "fish"}, 0, "complete -c cvnscope -f -n '__fish_seen_subcommand_from setup; and not"},
  };
  for (const auto& c : cases) {
    const RunResult r = Run(c.args);
    EXPECT_EQ(r.status, c.status) << c.args[0] << ": " << r.err;
    EXPECT_TRUE(Contains(r.out, c.stdoutPart)) << c.args[0] << ": " << r.out;
  }
  const std::filesystem::path script = dir / "cvnscope.bash";
  std::ofstream(script) << Run({"completion", "bash"}).out;
  const std::string complete = "bash -c 'source " + script.string() +
                               "; COMP_WORDS=(cvnscope --json setup s); COMP_CWORD=3; _cvnscope; "
                               "echo \"${COMPREPLY[*]}\"' > " + (dir / "reply").string();
  ASSERT_EQ(std::system(complete.c_str()), 0);
  EXPECT_EQ(ReadFile(dir / "reply"), "send save show\n");

  env["CVN73100_COM2"] = (dir / "no-such-tty").string();
  const RunResult doctor = Run({"doctor"});
  EXPECT_EQ(doctor.status, 1);
  EXPECT_TRUE(Contains(doctor.out, "PROBLEM  COM2: " + (dir / "no-such-tty").string() + ": No such file")) << doctor.out;
  EXPECT_TRUE(Contains(doctor.out, "fix: connect the adapter")) << doctor.out;
}

TEST_F(CliTest, ErrorsAsJsonCarryNumberSourceAndDescription) {
  const RunResult r = Run({"--json", "test", "GPIB9::1::INSTR"});
  EXPECT_EQ(r.status, 1);
  const json error = json::parse(r.out)["error"];
  EXPECT_EQ(error["number"], -2147221124);
  EXPECT_EQ(error["source"], "QD 73100 Scope Control");
  EXPECT_EQ(error["description"], "Invalid property value. (ADDRESS GPIB9::1::INSTR: allowed GPIB0..3::0..30::INSTR or "
                                  "COM1..4[::Baud=…,Handshake=…])");
}

// --- the form across processes ---

TEST_F(CliTest, SearchThenUseThenIdnAnswerAcrossProcesses) {
  RunResult r = Run({"search"});
  ASSERT_EQ(r.status, 0) << r.err;
  // The answering instruments only, in address order; the X on the supported one; the default address marked.
  EXPECT_TRUE(Contains(r.out, "   1  73199B     GPIB0::3   Corvane Technologies\n")) << r.out;
  EXPECT_TRUE(Contains(r.out, "*  2  73135D  X  GPIB0::7   Corvane Technologies\n")) << r.out;
  EXPECT_TRUE(Contains(r.out, "   3  44210A     GPIB0::12  Corvane Technologies\n")) << r.out;
  EXPECT_TRUE(Contains(r.out, "28 addresses did not answer")) << r.out;
  EXPECT_TRUE(Contains(r.out, "Search Complete.")) << r.out;

  r = Run({"use", "1"});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, std::string("Address: GPIB0::3::INSTR\nInstrument: ") + OTHER_731_IDN + "\n");
  r = Run({"idn"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, std::string(OTHER_731_IDN) + "\n");

  // An address in any spelling finds its row; one that the table does not hold is tested on the way.
  r = Run({"use", "gpib0::12::instr"});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, std::string("Address: GPIB0::12::INSTR\nInstrument: ") + OTHER_FAMILY_IDN + "\n");
  r = Run({"--json", "idn"});
  EXPECT_EQ(json::parse(r.out), json({{"address", "GPIB0::12::INSTR"}, {"identity", OTHER_FAMILY_IDN}}));
  r = Run({"use", "GPIB0::5::INSTR"});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, TestBox(4, "GPIB0::5::INSTR", "") + "Address: GPIB0::5::INSTR\n");

  r = Run({"use", "4"});
  EXPECT_EQ(r.status, 1);
  EXPECT_TRUE(Contains(r.err, "rows 1 to 3")) << r.err;
}

TEST_F(CliTest, SearchJsonListsRowsAndSilentAddresses) {
  const test::SilentPty silent;
  env["CVN73100_COM2"] = silent.Path();
  const RunResult r = Run({"--json", "search", "--exclude-silent"});
  ASSERT_EQ(r.status, 0) << r.err;
  const json result = json::parse(r.out);
  ASSERT_EQ(result["rows"].size(), 3u);
  EXPECT_EQ(result["rows"][1]["fullAddress"], "GPIB0::7::INSTR");
  EXPECT_EQ(result["rows"][1]["supported"], true);
  EXPECT_EQ(result["rows"][0]["supported"], false);
  EXPECT_EQ(result["silent"].size(), 28u);
  // Only the silent port that is there may be excluded, and the exclusion reaches the form.
  EXPECT_EQ(result["excludedPorts"], json({"COM2"}));
  const json config = json::parse(Run({"--json", "config"}).out);
  for (const auto& port : config["serial"]) EXPECT_EQ(port["included"].get<bool>(), port["port"] != "COM2") << port;
}

// Ctrl-C ends either search at once with the rows found so far, and leaves the form and the table alone.
TEST_F(CliTest, CtrlCStopsTheSearchWithTheRowsFoundSoFar) {
  const test::SilentPty silent;
  env["CVN73100_COM1"] = silent.Path();
  for (const char* mode : {"--parallel", "--all"}) {
    SCOPED_TRACE(mode);
    interruptAfter = std::chrono::milliseconds(2000);
    const RunResult r = Run({"search", mode});
    EXPECT_EQ(r.status, 130) << r.err;
    EXPECT_LT(r.sinceInterrupt, std::chrono::milliseconds(500)) << "well before the silent port's reply limit";
    EXPECT_TRUE(Contains(r.err, "Search stopped.")) << r.err;
    // In parallel the simulated bus is searched meanwhile; one port after another, COM1 still holds the search.
    EXPECT_EQ(Contains(r.out, "GPIB0::7"), std::string(mode) == "--parallel") << r.out;
    EXPECT_FALSE(std::filesystem::exists(FormPath()));
  }
}

TEST_F(CliTest, FormIsWrittenOnlyWhenSomethingChanged) {
  EXPECT_EQ(Run({"config"}).status, 0);
  EXPECT_FALSE(std::filesystem::exists(FormPath())) << "showing the configuration changes nothing";

  RunResult r = Run({"config", "set", "--tx-delay", "20", "--reset-on-init", "on"});
  ASSERT_EQ(r.status, 0) << r.err;
  const json form = json::parse(ReadFile(FormPath()));
  EXPECT_EQ(form["properties"]["TXDelay"], 20);
  EXPECT_EQ(form["properties"]["ResetOnIntialize"], true);

  const std::string before = ReadFile(FormPath());
  r = Run({"config", "set", "--tx-delay", "20"});
  EXPECT_TRUE(Contains(r.out, "Unchanged")) << r.out;
  EXPECT_EQ(Run({"config", "set", "--tx-delay", "-5"}).status, 1);
  EXPECT_EQ(ReadFile(FormPath()), before) << "a failed command leaves the form as it was";
}

TEST_F(CliTest, FormLanguageSpeaksAndCountryOverridesForOneRun) {
  ASSERT_EQ(Run({"config", "set", "--language", "49"}).status, 0);
  EXPECT_EQ(Run({"message", "106"}).out, Messages::LoadIn(Messages::GERMAN, 106) + "\n");
  EXPECT_EQ(Run({"message", "106", "--country", "33"}).out, Messages::LoadIn(Messages::FRENCH, 106) + "\n");
  const RunResult r = Run({"test", "GPIB0::7::INSTR"});
  EXPECT_TRUE(Contains(r.out, Messages::LoadIn(Messages::GERMAN, 220))) << r.out;
  // The command line's own texts and CLI11's help follow the same choice.
  EXPECT_TRUE(Contains(Run({"--help"}).out, Messages::LoadIn(Messages::GERMAN, CliMsg::HELP_FLAG)));
  const std::string help = Run({"--country", "886", "config", "--help"}).out;
  EXPECT_TRUE(Contains(help, Messages::LoadIn(Messages::TRADITIONAL_CHINESE, CliMsg::LABEL_USAGE) + ":")) << help;
  EXPECT_TRUE(Contains(help, Messages::LoadIn(Messages::TRADITIONAL_CHINESE, CliMsg::CONFIG_SHOW_COMMAND))) << help;
  EXPECT_FALSE(Contains(help, "Options:")) << help;  // the help flags too stand under the translated heading
  // The Traditional Chinese search table: every row's address starts in the column of its heading.
  const std::string table = Run({"--country", "886", "search", "--all"}).out;
  const std::string heading = Messages::LoadIn(Messages::TRADITIONAL_CHINESE, 203);
  std::istringstream lines(table.substr(table.rfind('\n', table.find(heading)) + 1));
  std::string line;
  std::getline(lines, line);
  const std::size_t column = DisplayWidth(line.substr(0, line.find(heading)));
  int rows = 0;
  while (std::getline(lines, line) && line.find("GPIB0::") != std::string::npos) {
    EXPECT_EQ(DisplayWidth(line.substr(0, line.find("GPIB0::"))), column) << table;
    ++rows;
  }
  EXPECT_EQ(rows, 31) << table;
  // The doctor's fix lines start under the subject however wide the translated verdicts are.
  env["CVN73100_COM2"] = "/dev/cvn-none";
  const std::string doctor = Run({"--country", "81", "doctor"}).out;
  const std::string verdict = Messages::LoadIn(Messages::JAPANESE, CliMsg::DOCTOR_PROBLEM) + "  COM2: ";
  const std::string fix = Messages::LoadIn(Messages::JAPANESE, CliMsg::DOCTOR_FIX);
  EXPECT_TRUE(Contains(doctor, verdict + "/dev/cvn-none")) << doctor;
  EXPECT_TRUE(Contains(doctor, "\n" + std::string(DisplayWidth(verdict) - 6, ' ') + fix.substr(0, fix.find("{1}")))) << doctor;
  EXPECT_TRUE(Contains(Run({"config", "show"}).out, "49 (" + Messages::LoadIn(Messages::GERMAN, CliMsg::LANGUAGE_GERMAN) + ")"));
}

// --- config: each change reaches the form and shows in the next process ---

struct ConfigCase {
  std::vector<std::string> args;
  const char* pointer;  // JSON pointer into `cvnscope --json config`
  json expected;
};

class ConfigCommands : public CliTest, public ::testing::WithParamInterface<ConfigCase> {};

TEST_P(ConfigCommands, ChangeIsKeptInTheForm) {
  const ConfigCase& c = GetParam();
  const RunResult r = Run(c.args);
  ASSERT_EQ(r.status, 0) << r.err;
  const json config = json::parse(Run({"--json", "config"}).out);
  EXPECT_EQ(config.at(json::json_pointer(c.pointer)), c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Cli, ConfigCommands,
    ::testing::Values(
        ConfigCase{{"config", "serial", "COM2", "--baud", "19200", "--handshake", "dtr-dsr", "--exclude"},
                   "/serial/1",
                   {{"port", "COM2"}, {"baud", 19200}, {"parity", 1}, {"handshake", "DTR_DSR"}, {"installed", false},
                    {"included", false}}},
        ConfigCase{{"config", "gpib", "GPIB1", "--addresses", "0-5,9,12-30", "--exclude"},
                   "/gpib/1",
                   {{"port", "GPIB1"}, {"installed", false}, {"included", false}, {"addresses", "0-5,9,12-30"}}},
        ConfigCase{{"config", "set", "--dtr-only", "on"}, "/serial/3/handshake", "DTR_DSR"},
        ConfigCase{{"config", "set", "--address", "com2::baud=2400"}, "/automationServerAddress",
                   "COM2::Baud=2400,Handshake=XON_XOFF"},
        ConfigCase{{"config", "set", "--check-id-on-init", "yes"}, "/checkIDOnInitialize", true},
        ConfigCase{{"log", "--mode", "6"}, "/supportMessages/event", true}));

TEST_F(CliTest, SearchVisitsOnlyTheIncludedAddresses) {
  ASSERT_EQ(Run({"config", "gpib", "0", "--addresses", "3,7"}).status, 0);
  const json result = json::parse(Run({"--json", "search"}).out);
  ASSERT_EQ(result["rows"].size(), 2u);
  EXPECT_EQ(result["rows"][1]["fullAddress"], "GPIB0::7::INSTR");
  EXPECT_TRUE(result["silent"].empty());
  for (const char* list : {"5-2", "31", "x", "3,,7"})
    EXPECT_EQ(Run({"config", "gpib", "0", "--addresses", list}).status, 1) << list;
}

TEST_F(CliTest, SupportMessagesAsEventsArePrintedAndTheLogIsKeptForTheNextCommand) {
  ASSERT_EQ(Run({"log", "--mode", "4"}).status, 0);
  RunResult r = Run({"test", "GPIB9::1::INSTR"});
  EXPECT_TRUE(Contains(r.err, "Assertion: (lPort >= GPIB_PORT.First And lPort <= GPIB_PORT.Last)")) << r.err;

  ASSERT_EQ(Run({"log", "--mode", "2"}).status, 0);
  Run({"test", "GPIB9::1::INSTR"});
  r = Run({"log", "--show"});
  EXPECT_TRUE(Contains(r.out, "Log file: " + (dir / ("cvn73100-" + std::to_string(::geteuid())) / "CvnScope.DBG").string())) << r.out;
  EXPECT_TRUE(Contains(r.out, "Function: Let ActiveIOPort")) << r.out;
}

// --- setups ---

TEST_F(CliTest, SetupFetchedSavedShownSentAndRemoved) {
  RunResult r = Run({"setup", "get", "S1", "--comments", "bench"});
  ASSERT_EQ(r.status, 0) << r.err;
  r = Run({"setup", "save", "S1", "s1.scp"});
  ASSERT_EQ(r.status, 0) << r.err;
  r = Run({"--json", "setup", "show", "s1.scp"});
  ASSERT_EQ(r.status, 0) << r.err;
  const json shown = json::parse(r.out);
  EXPECT_EQ(shown["format"], "scp");
  EXPECT_EQ(shown["model"], "73135D");
  EXPECT_EQ(shown["version"], "A.02.10");
  EXPECT_EQ(shown["comments"], "bench");
  EXPECT_GT(shown["bytes"].get<int>(), 0);

  // Saving again asks before replacing the file; without a terminal that is Cancel.
  EXPECT_EQ(Run({"setup", "save", "S1", "s1.scp"}).status, 3);
  EXPECT_EQ(Run({"setup", "send", "S1"}).status, 3);
  EXPECT_EQ(Run({"--yes", "setup", "send", "S1"}).status, 0);

  r = Run({"--json", "setup", "list"});
  const json listed = json::parse(r.out)["setups"];
  ASSERT_EQ(listed.size(), 1u);
  EXPECT_EQ(listed[0]["current"], true);
  EXPECT_EQ(listed[0]["bytes"], shown["bytes"]);

  EXPECT_EQ(Run({"setup", "remove", "S1", "--yes"}).status, 0);
  EXPECT_EQ(json::parse(Run({"--json", "setup", "list"}).out)["setups"].size(), 0u);
}

TEST_F(CliTest, HandMadeStpShowsItsModelAndTheWildcardVersion) {
  std::ofstream(dir / "bench.stp", std::ios::binary) << "STP1.10\n3\n  bench setup  \nCVN73135D\n:SYSTEM:SETUP #14abcd";
  RunResult r = Run({"setup", "show", "bench.stp"});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_TRUE(Contains(r.out, "Model:       73135D\n")) << r.out;
  EXPECT_TRUE(Contains(r.out, "Version:     X.XX.XX\n")) << r.out;
  EXPECT_TRUE(Contains(r.out, "Comments:    bench setup\n")) << r.out;
  EXPECT_TRUE(Contains(r.out, "Data length: 7 bytes\n")) << r.out;

  r = Run({"setup", "open", "bench.stp", "Bench2"});
  ASSERT_EQ(r.status, 0) << r.err;
  const json listed = json::parse(Run({"--json", "setup", "list"}).out)["setups"];
  ASSERT_EQ(listed.size(), 1u);
  EXPECT_EQ(listed[0]["name"], "Bench2");
  EXPECT_EQ(listed[0]["version"], "X.XX.XX");
}

// --- capture ---

TEST_F(CliTest, WaveformRowsFollowTheSimulatedSine) {
  const RunResult r = Run({"waveform", "--channel", "1", "--points", "1000", "-o", "w.csv", "--plot", "w.png"});
  ASSERT_EQ(r.status, 0) << r.err;
  std::istringstream csv(ReadFile(dir / "w.csv"));
  std::string line;
  std::getline(csv, line);
  EXPECT_EQ(line, "time,volts");
  // The default screen: 1 ms across, centred; 8 V over 16-bit codes.
  const double quantum = 8.0 / 65536.0;
  int rows = 0;
  while (std::getline(csv, line)) {
    double t = 0, v = 0;
    ASSERT_EQ(std::sscanf(line.c_str(), "%lf,%lf", &t, &v), 2) << line;
    EXPECT_NEAR(t, -0.5e-3 + rows * 1e-6, 1e-12) << line;
    EXPECT_NEAR(v, std::sin(2 * std::numbers::pi * 1000 * t), quantum) << line;
    ++rows;
  }
  EXPECT_EQ(rows, 1000);
  EXPECT_EQ(ReadFile(dir / "w.png").substr(0, 8), "\x89PNG\r\n\x1a\n");
}

TEST_F(CliTest, ScreenshotFormatFollowsTheExtension) {
  ASSERT_EQ(Run({"screenshot", "screen.gif"}).status, 0);
  ASSERT_EQ(Run({"screenshot", "screen.img", "--format", "bmp"}).status, 0);
  EXPECT_EQ(ReadFile(dir / "screen.gif").substr(0, 6), "GIF87a");
  EXPECT_EQ(ReadFile(dir / "screen.img").substr(0, 2), "BM");
}

TEST_F(CliTest, QueryAndWriteReachTheInstrument) {
  EXPECT_EQ(Run({"write", ":CHANnel1:RANGe 4"}).status, 0);
  RunResult r = Run({"query", ":CHANnel1:RANGe?"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, "4E+00\n");
  r = Run({"query", "*IDN?"});
  EXPECT_EQ(r.out, std::string(SUPPORTED_IDN) + "\n");
  r = Run({"query", ":SYSTem:SETup?", "--block", "-o", "learn.bin"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(ReadFile(dir / "learn.bin").substr(0, 4), "CVLS");
}

TEST_F(CliTest, DemoLeavesPlotScreenSetupFileAndForm) {
  const RunResult r = Run({"demo", "--output", "out"});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_TRUE(Contains(r.out, "Demo summary")) << r.out;
  for (const char* file : {"waveform-ch1.csv", "waveform-ch1.png", "screen.gif", "DemoSetup.scp", "form.json"})
    EXPECT_TRUE(std::filesystem::exists(dir / "out" / file)) << file;
  EXPECT_TRUE(Contains(r.out, "GPIB0::7::INSTR  " + std::string(SUPPORTED_IDN))) << r.out;
  const RunResult idn = Run({"--form", "out/form.json", "idn"});
  EXPECT_EQ(idn.out, std::string(SUPPORTED_IDN) + "\n");
  EXPECT_EQ(json::parse(Run({"--json", "setup", "show", "out/DemoSetup.scp"}).out)["model"], "73135D");
}

// --- RS-232: the simulator on a pseudo-terminal as COM1 ---

class SerialCli : public CliTest {
 protected:
  void SetUp() override {
    CliTest::SetUp();
    env["CVN73100_COM1"] = pty.DevicePath();
  }
  sim::Instrument scope;
  sim::InstrumentPort port{scope, sim::InstrumentPort::Line::Serial};
  sim::PtyServer pty{port};
};

TEST_F(SerialCli, TestUseAndIdnOverThePseudoTerminal) {
  RunResult r = Run({"test", "COM1"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, TestBox(0, "COM1", SUPPORTED_IDN));

  // XON/XOFF for a supported instrument: the handshake warning asks to continue; without a terminal that is
  // Cancel and nothing changes. With --yes it comes once, through the console host.
  r = Run({"use", "COM1"});
  EXPECT_EQ(r.status, 3) << r.err;  // cancelled
  EXPECT_TRUE(Contains(r.err, "Cancelled: the address stays GPIB0::7::INSTR")) << r.err;
  r = Run({"use", "COM1", "--yes"});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_TRUE(Contains(r.out, "The Handshake setting for the current COM port is not correct.")) << r.out;
  EXPECT_TRUE(Contains(r.out, "Address: COM1\n")) << r.out;
  r = Run({"use", "COM1"});
  EXPECT_FALSE(Contains(r.out, "The Handshake setting for the current COM port is not correct.")) << r.out;
  r = Run({"idn"});
  EXPECT_EQ(r.out, std::string(SUPPORTED_IDN) + "\n") << r.err;
}

// An instrument whose identity is not text: raw into a pipe, valid JSON with U+FFFD, escaped in the table.
const std::string HOSTILE_MANUFACTURER = "Bad\xFF\x1B[2J\xC2\x9B" "Co";

class HostileReplies : public SerialCli {
 protected:
  static sim::InstrumentConfig Hostile() {
    sim::InstrumentConfig config;
    config.identity.manufacturer = HOSTILE_MANUFACTURER;
    return config;
  }
  sim::Instrument hostile{Hostile()};
  sim::InstrumentPort hostilePort{hostile, sim::InstrumentPort::Line::Serial};
  sim::PtyServer hostilePty{hostilePort};
};

TEST_F(HostileReplies, BytesThatAreNotTextReachPipesRawJsonValidAndTheTableEscaped) {
  env["CVN73100_COM1"] = hostilePty.DevicePath();
  ASSERT_EQ(Run({"use", "COM1::Handshake=DTR_DSR", "--yes"}).status, 0);
  EXPECT_TRUE(Contains(Run({"idn"}).out, HOSTILE_MANUFACTURER));
  const json idn = json::parse(Run({"--json", "idn"}).out);
  EXPECT_TRUE(Contains(idn["identity"].get<std::string>(), "Bad\xEF\xBF\xBD\x1B[2J")) << idn.dump();
  const std::string table = Run({"search"}).out;
  EXPECT_TRUE(Contains(table, "Bad\xEF\xBF\xBD\\x1B[2J\\xC2\\x9BCo")) << table;
  EXPECT_FALSE(Contains(table, "\x1B")) << table;
}

}  // namespace
}  // namespace cvn73100
