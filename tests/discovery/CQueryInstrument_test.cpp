#include "connection/CQueryInstrument.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <deque>
#include <map>

#include "dialogs/Messages.h"
#include "ioconfig/CIOconfiguration.h"
#include "platform/Os.h"
#include "tests/support/ScriptedHost.h"

namespace cvn73100 {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

// A channel that records every call that changes or moves something, in order, with the fake clock's
// tick at the time. `failOn` makes the first call whose record starts with it raise `failCode`; with
// `vanishes` every later call raises too, as a device that has gone away does.
class FakeChannel : public IInstrumentIO, public ISerialIO, public IPort {
 public:
  FakeChannel(std::string ioType, std::vector<std::string>& log) : m_ioType(std::move(ioType)), m_log(log) {}

  std::string idnReply;           // answered to "*IDN?"; empty: the device stays silent
  std::string strayOnLineEnd;     // a message that arrives while the bare line end is written
  std::deque<std::string> input;  // messages waiting to be read
  std::string failOn;
  IOErrorCode failCode = IOERR_IO_FAILURE;
  bool vanishes = false;
  std::vector<std::int32_t> ticks;  // tick of each record of this channel
  std::int16_t handshake = RS232_HandShake_XON_XOFF;
  std::int32_t timeout = 2000;
  std::int16_t termination = 10;

  std::string IOType() const override { return m_ioType; }
  std::string ResourceName() const override { return "fake"; }
  std::int32_t Timeout() const override { return timeout; }
  void SetTimeout(std::int32_t ms) override {
    Call("Timeout=" + std::to_string(ms));
    timeout = ms;
  }
  void Clear() override {
    Call("Clear");
    input.clear();
  }
  void Output(const std::string& data) override {
    Call("Output:" + data);
    if (data == "*IDN?" && !idnReply.empty()) input.push_back(idnReply);
    if (data == "\r\n" && !strayOnLineEnd.empty()) input.push_back(strayOnLineEnd);
  }
  void Enter(std::string& data, const std::string& image) override {
    Call("Enter:" + image);
    if (input.empty()) throw IOError(IOERR_TIMEOUT);
    data = input.front();
    input.pop_front();
  }
  std::int16_t OutputTermination() const override { return termination; }
  void SetOutputTermination(std::int16_t value) override {
    Call("OutputTermination=" + std::to_string(value));
    termination = value;
  }
  std::int32_t ReadBytes(std::int32_t, Bytes&) override { throw IOError(IOERR_UNSUPPORTED); }
  void WriteBytes(std::int32_t, const Bytes&) override { Call("WriteBytes"); }
  IPort& Port() override { return *this; }
  ISerialIO* Serial() override { return m_ioType == "ASRL" ? this : nullptr; }

  void Close() override { Call("Close"); }

  std::int32_t BaudRate() const override { return 0; }
  void SetBaudRate(std::int32_t baud) override { Call("BaudRate=" + std::to_string(baud)); }
  std::int16_t DataBits() const override { return 0; }
  void SetDataBits(std::int16_t bits) override { Call("DataBits=" + std::to_string(bits)); }
  std::int16_t StopBits() const override { return 0; }
  void SetStopBits(std::int16_t bits) override { Call("StopBits=" + std::to_string(bits)); }
  std::int16_t Handshake() const override { return handshake; }
  void SetHandshake(std::int16_t value) override {
    Call("Handshake=" + std::to_string(value));
    handshake = value;
  }
  bool DTRState() const override { return false; }
  void SetDTRState(bool on) override { Call(on ? "DTR=1" : "DTR=0"); }
  bool RTSState() const override { return false; }
  void SetRTSState(bool on) override { Call(on ? "RTS=1" : "RTS=0"); }

 private:
  void Call(const std::string& record) {
    m_log.push_back(record);
    ticks.push_back(Os::Current().GetTickCount());
    if (m_failed && vanishes) throw IOError(IOERR_DEVICE_VANISHED);
    if (!failOn.empty() && record.rfind(failOn, 0) == 0) {
      failOn.clear();
      m_failed = true;
      throw IOError(failCode);
    }
  }

  std::string m_ioType;
  std::vector<std::string>& m_log;
  bool m_failed = false;
};

// Opens the channels it was given, by exact address; any other address does not exist.
class FakeManager : public IIOManager {
 public:
  std::vector<std::string> log;
  std::map<std::string, std::shared_ptr<FakeChannel>> channels;

  std::shared_ptr<FakeChannel> Add(const std::string& address, const std::string& ioType) {
    auto channel = std::make_shared<FakeChannel>(ioType, log);
    channels[address] = channel;
    return channel;
  }
  std::vector<std::string> FindResources(const std::string&) override { return {}; }
  std::shared_ptr<IInstrumentIO> Open(const std::string& address) override {
    log.push_back("Open:" + address);
    auto it = channels.find(address);
    if (it == channels.end()) throw IOError(IOERR_OPEN_FAILED, address);
    return it->second;
  }
};

// ---- Classification ----

struct ReplyCase {
  const char* reply;
  std::int16_t code;
};

TEST(CQueryInstrumentClassify, ReplyGivesItsResultCode) {
  const ReplyCase cases[] = {
      {"ABC,73135D,X,Y", IDNSupported},
      {"ABC,73135DX", IDNSupported},  // a supported model is a prefix of the field
      {",73105B", IDNSupported},
      {"ABC,73199B", IDNUnsupportedModel},
      {"ABC,731", IDNUnsupportedModel},
      {"ABC,73135d,X,Y", IDNUnsupportedModel},  // family prefix passes, the exact comparison does not
      {"ABC,12345A", IDNNotFamily},
      {"ABC,", IDNNotFamily},
      {"ABC,MODEL 73135D,1,A.01", IDNNotFamily},
      {"73135D,ABC,1,2", IDNNotFamily},  // the manufacturer field is never examined
      {"73135D", IDNNotIEEE4882},
      {"garbage\x01\xff", IDNNotIEEE4882},
      {"", IDNNoResponse},
  };
  for (const ReplyCase& c : cases) {
    EXPECT_EQ(CQueryInstrument::IsValidInstrument(c.reply), c.code) << '"' << c.reply << '"';
  }
}

TEST(CQueryInstrumentClassify, EverySupportedModelIsSupportedAndNoPrefixOfIt) {
  EXPECT_EQ(CQueryInstrument::SupportedModels().size(), 21u);
  for (const std::string& model : CQueryInstrument::SupportedModels()) {
    EXPECT_EQ(CQueryInstrument::ModelCompatibility(model + ",QX40001234,A.02.10"), IDNSupported) << model;
    EXPECT_EQ(CQueryInstrument::ModelCompatibility(model.substr(0, 5)), IDNUnsupportedModel) << model;
  }
}

// ---- Wait ----

TEST(CQueryInstrumentWait, LeavesOnTheFirstTickPastTheEnd) {
  struct Case {
    std::int32_t start, ms, end;
  };
  const Case cases[] = {{0, 0, 1}, {0, 50, 51}, {1000, 7, 1008}, {-30, 50, 21}, {-1, 2500, 2500}, {500, -20, 500}};
  for (const Case& c : cases) {
    FakeOs os;
    ScopedOs scoped(os);
    os.SetTick(c.start);
    CQueryInstrument::Wait(c.ms);
    EXPECT_EQ(os.GetTickCount(), c.end) << c.start << " + " << c.ms;
  }
}

TEST(CQueryInstrumentWait, NeverEndsEarlyOnTheRealClock) {
  RealOs os;
  for (const std::int32_t ms : {0, 1, 3, 7}) {
    const std::int32_t start = os.GetTickCount();
    CQueryInstrument::Wait(ms);
    EXPECT_GT(os.GetTickCount(), start + ms) << ms << " ms";
  }
  const std::int32_t now = os.GetTickCount();
  os.SleepUntilTick(now - 5);  // a tick already past returns at once
  EXPECT_LE(os.GetTickCount() - now, 1);
}

TEST(CQueryInstrumentWait, CounterWrapIsAnError) {
  for (const std::int32_t ms : {50, 5}) {
    test::SupportLog assertions;
    FakeOs os;
    ScopedOs scoped(os);
    os.SetTick(INT32_MAX - 3);
    try {
      CQueryInstrument::Wait(ms);
      ADD_FAILURE() << "no error for a wait across the wrap, " << ms << " ms";
    } catch (const ScopeError& error) {
      EXPECT_EQ(error.Number(), static_cast<std::int32_t>(0x8004017C));
      EXPECT_EQ(error.Source(), Messages::Load(104));
      EXPECT_EQ(error.Description(), Messages::Load(106));
    }
    ASSERT_EQ(assertions.blocks.size(), 1u);
    EXPECT_THAT(assertions.blocks[0], HasSubstr("Function: Wait"));
    EXPECT_THAT(assertions.blocks[0], HasSubstr("Location: ElseIf"));
  }
}

// ---- Serial helpers ----

TEST(CQueryInstrumentSerial, DropHandshakeSequence) {
  struct Case {
    std::int32_t delay;
    bool restore;
    std::vector<std::string> calls;
    std::int16_t finalHandshake;
  };
  const Case cases[] = {
      {50, true, {"Handshake=1", "DTR=0", "RTS=0", "DTR=1", "RTS=1", "Handshake=4"}, RS232_HandShake_DTR_DSR},
      {20, false, {"Handshake=1", "DTR=0", "RTS=0"}, RS232_HandShake_None},
  };
  for (const Case& c : cases) {
    FakeOs os;
    ScopedOs scoped(os);
    std::vector<std::string> log;
    FakeChannel channel("ASRL", log);
    channel.handshake = RS232_HandShake_DTR_DSR;
    CQueryInstrument::DropHandshake(channel, c.delay, c.restore);
    EXPECT_EQ(log, c.calls) << c.delay;
    EXPECT_EQ(channel.handshake, c.finalHandshake);
    EXPECT_EQ(channel.ticks.front(), CQueryInstrument::SETTLE_MS + 1) << "settles before touching the lines";
    const std::int32_t heldDown = c.delay > 0 ? c.delay + 1 : 0;
    EXPECT_EQ(os.GetTickCount(), CQueryInstrument::SETTLE_MS + 1 + heldDown);
    if (c.restore) {
      EXPECT_EQ(channel.ticks[3] - channel.ticks[2], heldDown) << "lines held down for the delay";
    }
  }
}

// ---- Queries against a fake I/O library ----

class CQueryInstrumentFake : public ::testing::Test {
 protected:
  void SetUp() override {
    Messages::SetLanguageBase(Messages::ENGLISH);
    query.Initialize(50, config, manager);
  }
  void TearDown() override { Messages::SetLanguageBase(Messages::ENGLISH); }

  FakeOs os;
  ScopedOs scopedOs{os};
  test::ScriptedHost host;
  test::ScopedHost scopedHost{host};
  std::shared_ptr<CIOconfiguration> config = std::make_shared<CIOconfiguration>();
  std::shared_ptr<FakeManager> manager = std::make_shared<FakeManager>();
  CQueryInstrument query;
};

TEST_F(CQueryInstrumentFake, RS232QueryStepByStep) {
  config->SetBaudRate(1, 38400);  // the port's row counts, not the address's keyword
  config->SetHandshake(1, RS232_HandShake_DTR_DSR);
  auto channel = manager->Add("COM1", "ASRL");
  channel->idnReply = "ABC,73135D,QX1,A.02.10";
  std::string reply = "old";
  EXPECT_EQ(query.RS232IDNQuery("COM1::Baud=19200", reply), IDNSupported);
  EXPECT_EQ(reply, "ABC,73135D,QX1,A.02.10");
  // The lines are dropped with the handshake the port was opened with, and at the end with the configured one.
  // clang-format off
  const std::vector<std::string> expected = {
      "Open:COM1",
      "Handshake=1", "DTR=0", "RTS=0", "DTR=1", "RTS=1", "Handshake=2",
      "BaudRate=38400", "DataBits=8", "StopBits=1", "Timeout=2500", "Clear",
      "Handshake=1", "OutputTermination=0", "Output:\r\n", "OutputTermination=10", "Handshake=4",
      "Clear", "Output:*IDN?", "Enter:K",
      "Handshake=1", "DTR=0", "RTS=0", "DTR=1", "RTS=1", "Handshake=4",
      "Close"};
  // clang-format on
  EXPECT_EQ(manager->log, expected);
  EXPECT_EQ(channel.use_count(), 2) << "the query keeps no reference";
}

TEST_F(CQueryInstrumentFake, GPIBQueryIsReleasedWithoutClose) {
  auto channel = manager->Add("GPIB0::7::INSTR", "GPIB");
  channel->idnReply = "ABC,73199B,1,A";
  std::string reply;
  EXPECT_EQ(query.GPIBIDNQuery("GPIB0::7::INSTR", reply), IDNUnsupportedModel);
  EXPECT_EQ(reply, "ABC,73199B,1,A");
  EXPECT_THAT(manager->log, ElementsAre("Open:GPIB0::7::INSTR", "Timeout=2500", "Clear", "Output:*IDN?", "Enter:K"));
  EXPECT_EQ(channel.use_count(), 2);
}

TEST_F(CQueryInstrumentFake, AddressesThatCannotBeQueried) {
  std::string reply = "old";
  EXPECT_EQ(query.RS232IDNQuery("GPIB0::7::INSTR", reply), IDNWrongPortType);
  EXPECT_EQ(reply, "");
  EXPECT_EQ(query.GPIBIDNQuery("COM1", reply), IDNWrongPortType);
  EXPECT_THAT(manager->log, IsEmpty()) << "the wrong kind of address opens nothing";

  reply = "old";
  EXPECT_EQ(query.RS232IDNQuery("COM3::Handshake=DTR_DSR", reply), IDNPortNotFound);
  EXPECT_EQ(reply, "");
  EXPECT_THAT(manager->log, ElementsAre("Open:COM3"));
  query.Initialize(50, config, nullptr);
  EXPECT_EQ(query.GPIBIDNQuery("GPIB0::7::INSTR", reply), IDNPortNotFound) << "no I/O manager yet";
}

// A failure while the channel is being set up reaches the caller; one after that is "no response".
// Either way the serial channel ends closed, and a GPIB channel is closed only on the error path.
TEST_F(CQueryInstrumentFake, IOFailures) {
  struct Case {
    const char* address;
    const char* failOn;
    IOErrorCode code;
    bool vanishes;
    bool raises;
    bool closed;
  };
  const Case cases[] = {
      {"COM1", "Handshake=1", IOERR_DEVICE_VANISHED, true, true, true},
      {"COM1", "BaudRate=", IOERR_BAD_ARGUMENT, false, true, true},
      {"COM1", "Timeout=", IOERR_IO_FAILURE, false, true, true},
      {"COM1", "Clear", IOERR_IO_FAILURE, false, true, true},
      {"COM1", "Output:\r\n", IOERR_IO_FAILURE, false, false, true},
      {"COM1", "Output:*IDN?", IOERR_TIMEOUT, false, false, true},
      {"COM1", "Enter", IOERR_DEVICE_VANISHED, true, false, true},
      {"COM1", "Close", IOERR_IO_FAILURE, false, false, true},
      {"GPIB0::7::INSTR", "Timeout=", IOERR_IO_FAILURE, false, true, false},
      {"GPIB0::7::INSTR", "Clear", IOERR_NO_LISTENER, false, true, false},
      {"GPIB0::7::INSTR", "Output:*IDN?", IOERR_NO_LISTENER, false, false, true},
      {"GPIB0::7::INSTR", "Enter", IOERR_DEVICE_VANISHED, true, false, true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.address) + " failing on " + c.failOn);
    manager->log.clear();
    const bool serial = std::string(c.address) == "COM1";
    auto channel = manager->Add(c.address, serial ? "ASRL" : "GPIB");
    channel->idnReply = "ABC,73135D,1,A";
    channel->failOn = c.failOn;
    channel->failCode = c.code;
    channel->vanishes = c.vanishes;
    std::string reply = "old";
    if (c.raises) {
      try {
        query.Test(0, c.address, reply);
        ADD_FAILURE() << "no error";
      } catch (const ScopeError& error) {
        EXPECT_EQ(IOErrorCondition(error), c.code);
      }
      EXPECT_THAT(host.boxes, IsEmpty());
    } else {
      EXPECT_EQ(query.Test(0, c.address, reply), IDNNoResponse);
      EXPECT_EQ(reply, "");
      ASSERT_EQ(host.boxes.size(), 1u);
      EXPECT_THAT(host.boxes[0].prompt, HasSubstr(Messages::Load(530)));
    }
    host.boxes.clear();
    EXPECT_EQ(std::count(manager->log.begin(), manager->log.end(), "Close") > 0, c.closed);
    if (serial && !c.raises && !c.vanishes) {
      // The lines go back up on the way out, before the port is closed.
      const auto close = std::find(manager->log.rbegin(), manager->log.rend(), "Close");
      EXPECT_THAT(std::vector<std::string>(manager->log.rbegin(), close), IsEmpty());
      EXPECT_EQ(*(close + 2), "RTS=1");
    }
    EXPECT_EQ(channel.use_count(), 2);
  }
}

// Bytes that reach the channel before "*IDN?" is written belong to an earlier exchange.
TEST_F(CQueryInstrumentFake, EarlierRepliesAreNeverTheAnswer) {
  auto serial = manager->Add("COM2", "ASRL");
  serial->input.push_back("LATE,73199B,1,A");
  serial->strayOnLineEnd = "STRAY,12345A,1,A";
  serial->idnReply = "ABC,73135D,1,A";
  auto gpib = manager->Add("GPIB0::9::INSTR", "GPIB");
  gpib->input.push_back("LATE,73199B,1,A");
  std::string reply;
  EXPECT_EQ(query.RS232IDNQuery("COM2", reply), IDNSupported);
  EXPECT_EQ(reply, "ABC,73135D,1,A");
  EXPECT_EQ(query.GPIBIDNQuery("GPIB0::9::INSTR", reply), IDNNoResponse);
  EXPECT_EQ(reply, "");
}

// ---- Test and its texts ----

struct TextCase {
  const char* address;
  const char* idnReply;  // nullptr: the address cannot be opened
  std::int16_t com1Handshake;
  std::int16_t code;
  const char* text;
};

const TextCase kEnglishTexts[] = {
    {"GPIB0::7::INSTR", "ABC,73135D,QX1,A.02.10", RS232_HandShake_XON_XOFF, IDNSupported,
     "Success -- Instrument was found and is a supported QD 73100-Series Scope.\r\n\r\n"
     "The instrument's *IDN? response was:\r\n\r\n    ABC,73135D,QX1,A.02.10\r\n\r\n"
     "At address:\r\n\r\n    GPIB0::7::INSTR"},
    {"COM1", "ABC,73135D,QX1,A.02.10", RS232_HandShake_XON_XOFF, IDNSupported,
     "Success -- Instrument was found and is a supported QD 73100-Series Scope.\r\n\r\n"
     "    Caution -- The Handshake setting for this COM port is not correct.\r\n\r\n"
     "    To ensure proper communication with the instrument:\r\n\r\n"
     "    ---- On the property pages, set the Handshake mode to DTR/DSR.\r\n"
     "    ---- On the Instrument, set the Handshake mode to DTR.\r\n"
     "    ---- Verify that you have the correct RS-232 cable.\r\n\r\n"
     "    Go to the Set I/O or Search Criteria property page to set the Handshake\r\n"
     "    to DTR/DSR.\r\n\r\n"
     "The instrument's *IDN? response was:\r\n\r\n    ABC,73135D,QX1,A.02.10\r\n\r\n"
     "At address:\r\n\r\n    COM1"},
    {"COM4", nullptr, RS232_HandShake_XON_XOFF, IDNPortNotFound,
     "This I/O port was NOT found.\r\n\r\nAt address:\r\n\r\n    COM4\r\n\r\nCould not open the I/O resource. (COM4)"},
};

TEST_F(CQueryInstrumentFake, TestShowsTheEnglishTexts) {
  for (const TextCase& c : kEnglishTexts) {
    SCOPED_TRACE(std::string(c.address) + " code " + std::to_string(c.code));
    manager->channels.clear();
    host.boxes.clear();
    config->SetHandshake(1, c.com1Handshake);
    if (c.idnReply) {
      const bool serial = std::string(c.address).rfind("COM", 0) == 0;
      const std::string port = serial ? std::string(c.address).substr(0, 4) : std::string(c.address);
      manager->Add(port, serial ? "ASRL" : "GPIB")->idnReply = c.idnReply;
    }
    std::string reply = "old";
    EXPECT_EQ(query.Test(4711, c.address, reply), c.code);
    EXPECT_EQ(reply, c.idnReply ? c.idnReply : "");
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].parent, 4711);
    EXPECT_EQ(host.boxes[0].style, 65600);
    EXPECT_EQ(host.boxes[0].title, "QD 73100 Instrument Test Result");
    EXPECT_EQ(host.boxes[0].prompt, c.text);
  }
}

// The other results differ from those above in their heading only.
TEST_F(CQueryInstrumentFake, EachResultHasItsHeading) {
  const std::pair<std::int16_t, const char*> cases[] = {
      {IDNUnsupportedModel, "Instrument was found -- but is not a supported QD 73100-Series Scope.\r\n"},
      {IDNNotFamily, "Instrument was found -- but is not an QD 73100-Series Scope\r\nand is not compatible"},
      {IDNNotIEEE4882, "Instrument was found -- but is not an IEEE 488.2 compliant QD 73100-Series Scope\r\n"},
      {IDNNoResponse,
       "Instrument NOT found.\r\n\r\nAt address:\r\n\r\n    GPIB2::15::INSTR\r\n\r\n\r\n"
       "If there is an instrument at this address:\r\n\r\n---- Check the physical connection.\r\n\r\n"},
  };
  for (const auto& [code, heading] : cases) {
    const std::string text = query.TestMessage(code, "GPIB2::15::INSTR", "A,B");
    EXPECT_EQ(text.rfind(heading, 0), 0u) << text;
  }
  EXPECT_NE(query.TestMessage(IDNNoResponse, "COM1", "").find("---- Check the RS-232 parameters"), std::string::npos);
}

TEST_F(CQueryInstrumentFake, OtherLanguagesShowTheShortCaution) {
  Messages::SetLanguageBase(Messages::FRENCH);
  config->SetHandshake(1, RS232_HandShake_XON_XOFF);
  const std::string idn = "ABC,73135D,QX1,A.02.10";
  manager->Add("COM1", "ASRL")->idnReply = idn;
  const auto L = [](int n) { return Messages::Load(n); };
  ASSERT_NE(L(226), Messages::Find(226)) << "the French catalogue is present";
  std::string reply;
  EXPECT_EQ(query.Test(0, "COM1", reply), IDNSupported);
  ASSERT_EQ(host.boxes.size(), 1u);
  EXPECT_EQ(host.boxes[0].title, L(220));
  EXPECT_EQ(host.boxes[0].prompt, L(226) + "\r\n\r\n    " + L(711) + "\r\n\r\n    " + L(712) + "\r\n\r\n    " + L(713) +
                                      "\r\n\r\n" + L(227) + "\r\n\r\n    " + idn + "\r\n\r\n" + L(228) +
                                      "\r\n\r\n    COM1");
}

TEST_F(CQueryInstrumentFake, WrongPortTypeIsRaisedWithTheAddress) {
  test::SupportLog assertions;
  const std::pair<const char*, const char*> cases[] = {
      {"GPIB1::3::INSTR", "GP-IB instrument ID query error.\r\n\r\nAt address:\r\n\r\n    GPIB1::3::INSTR"},
      {"COM2::Baud=2400", "RS-232 instrument ID query error.\r\n\r\nAt address:\r\n\r\n    COM2"},
  };
  for (const auto& [address, description] : cases) {
    try {
      query.TestMessage(IDNWrongPortType, address, "");
      ADD_FAILURE() << address;
    } catch (const ScopeError& error) {
      EXPECT_EQ(error.Number(), static_cast<std::int32_t>(0x8004017C));
      EXPECT_EQ(error.Source(), "QD 73100 Scope Control");
      EXPECT_EQ(error.Description(), description);
    }
  }
  ASSERT_EQ(assertions.blocks.size(), 2u);
  EXPECT_THAT(assertions.blocks[0], HasSubstr("Location: Case Else"));
  EXPECT_THAT(host.boxes, IsEmpty());
}

}  // namespace
}  // namespace cvn73100
