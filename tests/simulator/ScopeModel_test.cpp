// The device model through its in-process transport: settings, errors, status and the common commands.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "simulator/ErrorCode.h"
#include "simulator/Instrument.h"
#include "simulator/SettingTable.h"

namespace cvn73100::sim {
namespace {

// Takes every queued error, oldest first.
std::vector<int> DrainErrors(Instrument& scope) {
  std::vector<int> errors;
  for (int i = 0; i < 40; ++i) {
    const std::string reply = scope.Query(":SYST:ERR?");
    const int code = std::stoi(reply);
    if (code == 0) break;
    errors.push_back(code);
  }
  return errors;
}

struct SetQueryCase {
  std::string command;
  std::string query;
  std::string reply;
};

class SetQueryTable : public ::testing::TestWithParam<SetQueryCase> {};

TEST_P(SetQueryTable, CommandChangesWhatTheQueryReports) {
  Instrument scope;
  scope.Send(GetParam().command);
  EXPECT_EQ(scope.Query(GetParam().query), GetParam().reply);
  EXPECT_TRUE(scope.Errors().empty()) << scope.Errors().front();
}

INSTANTIATE_TEST_SUITE_P(
    Spellings, SetQueryTable,
    ::testing::Values(
        SetQueryCase{":ACQ:TYPE hresolution", ":ACQuire:TYPE?", "HRES"},
        SetQueryCase{":acquire:count 64", ":ACQ:COUN?", "64"},
        SetQueryCase{":CHAN2:DISP ON", ":CHANnel2:DISPlay?", "1"},
        SetQueryCase{":CHANNEL3:COUP AC", ":CHAN3:COUP?", "AC"}, SetQueryCase{":CHAN4:PROB 100", ":CHAN4:PROB?", "100"},
        SetQueryCase{":CHAN:PROB:MODE AUTO", ":CHAN1:PROB:MODE?", "AUTO"},
        SetQueryCase{":CHAN1:RANG 400mV", ":CHAN1:RANG?", "4E-01"},
        SetQueryCase{":CHAN1:OFFS -0.125", ":CHAN1:OFFS?", "-1.25E-01"},
        SetQueryCase{":TIM:RANG 20 us", ":TIMebase:RANGe?", "2E-05"},
        SetQueryCase{":TIM:DEL MAX", ":TIM:DEL?", "5E+02"}, SetQueryCase{":TIM:REF center", ":TIM:REF?", "CENT"},
        SetQueryCase{":TIM:MODE WINDOW", ":TIM:MODE?", "WIND"}, SetQueryCase{":TRIG:SWE NORMAL", ":TRIG:SWE?", "NORM"},
        SetQueryCase{":TRIG:SOUR DIGITAL15", ":TRIG:SOUR?", "DIG15"},
        SetQueryCase{":TRIG:SOUR ext", ":TRIG:SOUR?", "EXT"}, SetQueryCase{":TRIG:SOUR CHAN", ":TRIG:SOUR?", "CHAN1"},
        SetQueryCase{":TRIG:SLOP NEGative", ":TRIG:SLOP?", "NEG"},
        SetQueryCase{":TRIG:LEV 1.5", ":TRIG:LEV?", "1.5E+00"}, SetQueryCase{":TRIG:COUP AC", ":TRIG:COUP?", "AC"},
        SetQueryCase{":DIG0:DISP 1", ":DIGital0:DISPlay?", "1"}, SetQueryCase{":WAV:SOUR POD2", ":WAV:SOUR?", "POD2"},
        SetQueryCase{":WAV:SOUR CHAN3", ":WAV:SOUR?", "CHAN3"}, SetQueryCase{":WAV:POIN MAX", ":WAV:POIN?", "0"},
        SetQueryCase{":WAV:POIN 250", ":WAV:POIN?", "250"}, SetQueryCase{":WAV:FORM ASCII", ":WAV:FORM?", "ASC"},
        SetQueryCase{":MEAS:SOUR CHAN2", ":MEAS:SOUR?", "CHAN2"},
        // Compound headers continue the previous path; a leading colon goes back to the root.
        SetQueryCase{":CHAN2:RANG 2;OFFS 0.5;:TIM:RANG 1e-3;DEL 1e-4", ":CHAN2:OFFS?;:TIM:DEL?", "5E-01;1E-04"},
        SetQueryCase{"*RST", "*IDN?;:CHAN1:RANG?;DISP?", "Corvane Technologies,73135D,QX40001234,A.02.10;8E+00;1"}));

// Every setting of the table, at every suffix, takes a value other than its default and reports it back.
TEST(ScopeModel, EverySettingRoundTrips) {
  for (const SettingDef& def : SettingTable::All()) {
    for (int n = def.suffixMin; n <= def.suffixMax; ++n) {
      Instrument scope;
      const ScopeState before = scope.State();
      const double old = SettingTable::Get(def, before, n);
      double value = def.min + (def.max - def.min) * 0.37;
      for (const Choice& c : def.choices) {
        if (c.value != old) value = c.value;
      }
      std::string header(def.header);
      if (const auto hash = header.find('#'); hash != std::string::npos) header.replace(hash, 1, std::to_string(n));
      std::string text = header + " ";
      if (const Choice* c = scpi::FindValue(def.choices, static_cast<std::int64_t>(value)); c && !c->keyword.empty()) {
        text += c->keyword;
      } else {
        AppendReal(text, value);
      }
      scope.Send(text);
      ScopeState expected = before;
      SettingTable::Set(def, expected, n, value);
      EXPECT_EQ(scope.State(), expected) << text;
      std::string reply;
      SettingTable::AppendReply(def, expected, n, reply);
      EXPECT_EQ(scope.Query(header + "?"), reply) << header;
      EXPECT_TRUE(scope.Errors().empty()) << text;
    }
  }
}

struct ErrorCase {
  std::string message;
  int error;
};

class ErrorTable : public ::testing::TestWithParam<ErrorCase> {};

TEST_P(ErrorTable, BadCommandQueuesItsErrorAndChangesNothing) {
  Instrument scope;
  const ScopeState before = scope.State();
  EXPECT_EQ(scope.Query(GetParam().message, std::chrono::milliseconds(5)), "");
  EXPECT_EQ(scope.State(), before);
  EXPECT_EQ(DrainErrors(scope), std::vector<int>{GetParam().error});
}

INSTANTIATE_TEST_SUITE_P(
    Commands, ErrorTable,
    ::testing::Values(
        ErrorCase{":FOO", kUndefinedHeader}, ErrorCase{":CHAN5:RANG 1", kHeaderSuffixOutOfRange},
        ErrorCase{":CHAN0:RANG 1", kHeaderSuffixOutOfRange}, ErrorCase{":TIM2:RANG 1", kUndefinedHeader},
        ErrorCase{":CHAN1:RANG 1e6", kDataOutOfRange}, ErrorCase{":ACQ:TYPE 3", kDataTypeError},
        ErrorCase{":ACQ:TYPE NORMA", kIllegalParameterValue}, ErrorCase{":TRIG:SOUR 10", kDataTypeError},
        ErrorCase{":TRIG:SOUR CHAN5", kIllegalParameterValue}, ErrorCase{":ACQ:COUN 3", kIllegalParameterValue},
        ErrorCase{":CHAN1:RANG", kMissingParameter}, ErrorCase{":CHAN1:RANG 1,2", kParameterNotAllowed},
        ErrorCase{":CHAN1:RANG? 1", kParameterNotAllowed}, ErrorCase{":CHAN1:RANG 'x'", kDataTypeError},
        ErrorCase{":WAV:FORM FLOAT", kIllegalParameterValue}, ErrorCase{":RUN?", kUndefinedHeader},
        ErrorCase{":WAV:DATA", kUndefinedHeader}, ErrorCase{"*IDN", kUndefinedHeader},
        ErrorCase{"*IDN? 1", kParameterNotAllowed}, ErrorCase{"*FOO?", kUndefinedHeader},
        ErrorCase{"*ESE 256", kDataOutOfRange}, ErrorCase{"*ESE", kMissingParameter},
        ErrorCase{":SYST:SET 5", kDataTypeError}, ErrorCase{":SYST:SET #14abcd", kIllegalParameterValue},
        ErrorCase{":DISP:DATA? WMF", kIllegalParameterValue}, ErrorCase{":DIG CHAN9", kIllegalParameterValue},
        ErrorCase{":MEAS:VPP? POD1", kIllegalParameterValue}, ErrorCase{":CHAN1:RANG 1 V V", kInvalidSeparator}));

TEST(ScopeModel, QueriesInOneMessageShareOneResponse) {
  Instrument scope;
  EXPECT_EQ(scope.Query("*OPC?;:BAD?;:WAV:POIN?;*TST?"), "1;1000;0");
  EXPECT_EQ(DrainErrors(scope), std::vector<int>{kUndefinedHeader});
}

TEST(ScopeModel, StatusRegistersTrackErrorsByClass) {
  Instrument scope;
  EXPECT_EQ(scope.Query("*ESR?"), "128");  // power-on
  EXPECT_EQ(scope.Query("*ESR?"), "0");
  scope.Send(":FOO;:CHAN1:RANG 1e9");
  EXPECT_EQ(scope.Query("*STB?"), "4");  // error available
  scope.Send("*ESE 48;*SRE 32");
  EXPECT_EQ(scope.Query("*ESE?;*SRE?"), "48;32");
  EXPECT_EQ(scope.Query("*STB?"), "100");  // EAV + ESB + MSS
  EXPECT_EQ(scope.SerialPoll(), 100);
  EXPECT_EQ(scope.Query("*ESR?"), "48");  // command error + execution error
  EXPECT_EQ(scope.Query(":SYST:ERR?"), "-113,\"Undefined header\"");
  EXPECT_EQ(scope.Query(":SYSTem:ERRor:NEXT?"), "-222,\"Data out of range\"");
  EXPECT_EQ(scope.Query(":SYST:ERR?"), "0,\"No error\"");
  scope.Send("*OPC");
  EXPECT_EQ(scope.Query("*ESR?"), "1");
  scope.Send(":FOO");
  scope.Send("*CLS");
  EXPECT_EQ(scope.Query("*ESR?;:SYST:ERR?"), "0;0,\"No error\"");
}

TEST(ScopeModel, FullErrorQueueEndsInOverflow) {
  Instrument scope;
  for (int i = 0; i < 35; ++i) scope.Send(":FOO");
  const std::vector<int> errors = scope.Errors();
  ASSERT_EQ(errors.size(), 30u);
  EXPECT_EQ(errors.front(), kUndefinedHeader);
  EXPECT_EQ(errors.back(), kQueueOverflow);
}

TEST(ScopeModel, RunControlAndAutoscale) {
  Instrument scope;
  EXPECT_EQ(scope.Query(":RSTate?"), "RUN");
  scope.Send(":SINGle");
  EXPECT_EQ(scope.Query(":RST?"), "SING");
  scope.Send(":RUN;:DIGitize CHANnel1,POD1");
  EXPECT_EQ(scope.Query(":RST?"), "STOP");
  scope.Send(":AUToscale");
  const ScopeState s = scope.State();
  for (const ChannelSettings& ch : s.channel) EXPECT_EQ(ch.display, 1);
  EXPECT_EQ(scope.Running(), RunState::Run);
  EXPECT_DOUBLE_EQ(s.timebaseRange, 2e-3);
  // The framed signals stay on screen: a peak-to-peak within the range.
  for (int ch = 1; ch <= 3; ++ch) {
    const double vpp = std::stod(scope.Query(":MEAS:VPP? CHAN" + std::to_string(ch)));
    EXPECT_LT(vpp, s.channel[static_cast<std::size_t>(ch - 1)].range) << ch;
    EXPECT_GT(vpp, 0.5 * s.channel[static_cast<std::size_t>(ch - 1)].range) << ch;
  }
}

TEST(ScopeModel, MeasurementsFollowTheSignals) {
  Instrument scope;
  EXPECT_NEAR(std::stod(scope.Query(":MEAS:VPP? CHAN1")), 2.0, 0.01);
  EXPECT_NEAR(std::stod(scope.Query(":MEAS:VAV? CHAN2")), 0.5, 0.01);
  EXPECT_NEAR(std::stod(scope.Query(":MEAS:VRMS? CHAN1")), std::sqrt(0.5), 0.01);
  EXPECT_EQ(scope.Query(":MEAS:FREQ? CHAN1;PER? CHAN3"), "1E+03;2E-03");
  scope.Send(":CHAN2:COUP AC;:MEAS:SOUR CHAN2");
  EXPECT_NEAR(std::stod(scope.Query(":MEAS:VAV?")), 0.0, 0.01);
  scope.Send(":CHAN1:COUP GND");
  EXPECT_EQ(scope.Query(":MEAS:FREQ? CHAN1;FREQ? CHAN4"), "9.9E+37;9.9E+37");
}

struct IdentityCase {
  Identity identity;
  std::string reply;
};

class IdentityTable : public ::testing::TestWithParam<IdentityCase> {};

// Every identification outcome a host must handle can be produced.
TEST_P(IdentityTable, IdnReportsTheConfiguredFields) {
  Instrument scope;
  scope.SetIdentity(GetParam().identity);
  EXPECT_EQ(scope.Query("*IDN?"), GetParam().reply);
}

INSTANTIATE_TEST_SUITE_P(Outcomes, IdentityTable,
                         ::testing::Values(IdentityCase{{}, "Corvane Technologies,73135D,QX40001234,A.02.10"},
                                           IdentityCase{{"ABC", "73199B", "1", "2"}, "ABC,73199B,1,2"},
                                           IdentityCase{{"ABC", "12345A", "1", "2"}, "ABC,12345A,1,2"},
                                           IdentityCase{{"ABC", "73135d", "1", "2"}, "ABC,73135d,1,2"},
                                           IdentityCase{{"73135D", "", "", ""}, "73135D"},
                                           IdentityCase{{"", "", "", ""}, ""},
                                           IdentityCase{{"A", "", "", "F"}, "A,,,F"}));

TEST(ScopeModel, ResetKeepsIdentityAndErrors) {
  Instrument scope;
  scope.SetIdentity({"X", "73105B", "S", "F"});
  scope.Send(":CHAN1:RANG 1;:FOO");
  scope.Send("*RST");
  EXPECT_EQ(scope.State(), ScopeState{});
  EXPECT_EQ(scope.Query("*IDN?"), "X,73105B,S,F");
  EXPECT_EQ(DrainErrors(scope), std::vector<int>{kUndefinedHeader});
}

}  // namespace
}  // namespace cvn73100::sim
