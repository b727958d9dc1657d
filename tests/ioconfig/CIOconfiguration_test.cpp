#include "ioconfig/CIOconfiguration.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "dialogs/Messages.h"
#include "tests/support/ScriptedHost.h"

namespace cvn73100 {

// Shows the address when two configurations differ.
void PrintTo(const CIOconfiguration& c, std::ostream* os) {
  *os << "CIOconfiguration{" << c.ActiveAddressString() << "}";
}

namespace {

constexpr std::int32_t INVALID_PROPERTY_VALUE = -2147221124;

class FakeManager : public IIOManager {
 public:
  std::map<std::string, std::vector<std::string>> lists;
  std::vector<std::string> asked;
  bool fail = false;
  std::vector<std::string> FindResources(const std::string& pattern) override {
    asked.push_back(pattern);
    if (fail) throw IOError(IOERR_IO_FAILURE);
    return lists[pattern];
  }
  std::shared_ptr<IInstrumentIO> Open(const std::string&) override { throw IOError(IOERR_OPEN_FAILED); }
};

class FakeSource : public IIOManagerSource {
 public:
  std::shared_ptr<FakeManager> manager = std::make_shared<FakeManager>();
  std::shared_ptr<IIOManager> IOManager() const override { return manager; }
};

class CIOconfigurationTest : public ::testing::Test {
 protected:
  void SetUp() override { Messages::SetLanguageBase(Messages::ENGLISH); }

  // A support message reported this assertion from this procedure of the configuration.
  bool Reported(const std::string& expression, const std::string& procedure, const std::string& location = "") const {
    for (const auto& block : blocks) {
      if (block.find("Assertion: " + expression + "\r\n") != std::string::npos &&
          block.find("File: CIOConfiguration\r\n") != std::string::npos &&
          block.find("Function: " + procedure + "\r\n") != std::string::npos &&
          (location.empty() || block.find("Location: " + location + "\r\n") != std::string::npos))
        return true;
    }
    return false;
  }

  // Runs `f`, expects it to raise error `number`, and expects `c` to be exactly as before.
  void ExpectRefused(CIOconfiguration& c, const std::function<void()>& f) { ExpectError(c, INVALID_PROPERTY_VALUE, f); }
  void ExpectError(CIOconfiguration& c, std::int32_t number, const std::function<void()>& f) {
    const CIOconfiguration before = c;
    try {
      f();
      ADD_FAILURE() << "no error raised";
    } catch (const ScopeError& e) {
      EXPECT_EQ(e.Number(), number);
      if (number == INVALID_PROPERTY_VALUE) {
        EXPECT_EQ(e.Source(), "QD 73100 Scope Control");
        EXPECT_EQ(e.Description(), "Invalid property value.");
        EXPECT_EQ(e.HelpFile(), "Cvn73100.hlp");
      }
    }
    EXPECT_EQ(c, before);
    EXPECT_EQ(c.DataAsVariant(), before.DataAsVariant());
  }

  test::SupportLog support;
  std::vector<std::string>& blocks = support.blocks;
};

TEST_F(CIOconfigurationTest, AddressesTakeTheirCanonicalAndServerForms) {
  const struct {
    const char* text;
    bool dtrOnly;
    const char *canonical, *server;
  } cases[] = {
      {"gpib2::15", false, "GPIB2::15::INSTR", "GPIB2::15::INSTR"},
      {"GPIB0xx7::INSTR", false, "GPIB0::7::INSTR", "GPIB0::7::INSTR"},
      {"GPIB0::007::INSTR", false, "GPIB0::7::INSTR", "GPIB0::7::INSTR"},
      {"GPIB1::30::whatever", false, "GPIB1::30::INSTR", "GPIB1::30::INSTR"},
      {"GPIB0::7.6::INSTR", false, "GPIB0::7::INSTR", "GPIB0::7::INSTR"},
      {"COM1::", false, "COM1", "COM1::Handshake=XON_XOFF"},
      {"com2 :: baud=19200", false, "COM2::Baud=19200", "COM2::Baud=19200,Handshake=XON_XOFF"},
      {"COM1::Baud=9600", false, "COM1", "COM1::Handshake=XON_XOFF"},
      {"COM3::Handshake=DTR_DSR,Baud=38400", false, "COM3::Baud=38400,Handshake=DTR_DSR",
       "COM3::Baud=38400,Handshake=DTR_DSR"},
      {"COM1::Size=8,Parity=NONE,Stop=1,Baud=2400", false, "COM1::Baud=2400", "COM1::Baud=2400,Handshake=XON_XOFF"},
      {"COM2::handshake=xon_xoff", false, "COM2", "COM2::Handshake=XON_XOFF"},
      {"COM2::Baud=2400,Handshake=dtr_dsr", true, "COM2::Baud=2400,Handshake=DTR_DSR",
       "COM2::Baud=2400,Handshake=DTR_DSR"},
  };
  for (const auto& t : cases) {
    SCOPED_TRACE(t.text);
    CIOconfiguration c;
    c.SetDTROnly(t.dtrOnly);
    c.SetActiveAddressString(t.text);
    EXPECT_EQ(c.ActiveAddressString(), t.canonical);
    EXPECT_EQ(c.ActiveAutomationServerAddress(), t.server);
  }
}

TEST_F(CIOconfigurationTest, RefusedAddressesLeaveEverythingAsItWas) {
  const std::vector<const char*> refused[] = {
      {"GPIB1::",
       "GPIB0::31::INSTR",
       "GPIB0::99999999999999999999::INSTR",
       "GPIB4::7::INSTR",
       "GPIB",
       "GPIB0:: 7::INSTR",
       "",
       " GPIB0::7::INSTR",
       "LPT1",
       "COM5",
       "COMx",
       "COM12",
       "COM",
       "COM1::Baud=14400",
       "COM1::Baud=019200",
       "COM1::Baud=19200,,Handshake=DTR_DSR",
       "COM1::::Baud=19200",
       "COM1::Baud=19200,Baud=2400",
       "COM1::Speed=19200",
       "COM1::Handshake=RTS_CTS"},
      {"COM1", "COM1::Handshake=XON_XOFF", "COM1::Baud=19200"}};  // under DTR-only operation
  for (const bool dtrOnly : {false, true}) {
    for (const char* text : refused[dtrOnly]) {
      SCOPED_TRACE(text);
      // A state away from every default, so that a partial restore shows.
      CIOconfiguration c;
      c.SetActivePortGPIBAddress(12);
      c.SetBaudRate(1, 38400);
      c.SetActiveAddressString("COM2::Baud=19200,Handshake=DTR_DSR");
      c.SetDTROnly(dtrOnly);
      ExpectRefused(c, [&] { c.SetActiveAddressString(text); });
    }
  }
  EXPECT_TRUE(Reported("false", "Let ActiveAddressString", "ErrorHandler"));
}

TEST_F(CIOconfigurationTest, SwitchingPortsKeepsEachPortsSettings) {
  CIOconfiguration c;
  c.SetActivePortGPIBAddress(22);
  c.SetBaudRate(2, 19200);
  c.SetActiveIOPort("COM2");
  EXPECT_EQ(c.ActiveAddressString(), "COM2::Baud=19200");
  c.SetActivePortHandshake(RS232_HandShake_DTR_DSR);
  EXPECT_EQ(c.Handshake(2), RS232_HandShake_DTR_DSR);
  EXPECT_EQ(c.ActiveAddressString(), "COM2::Baud=19200,Handshake=DTR_DSR");
  c.SetBaudRate(2, 9600);  // a row change of the active port shows at once
  EXPECT_EQ(c.ActiveAddressString(), "COM2::Handshake=DTR_DSR");
  c.SetActiveIOPort("GPIB1");
  EXPECT_EQ(c.ActiveAddressString(), "GPIB1::22::INSTR");
}

TEST_F(CIOconfigurationTest, ActivePortLetsRefuseBadValues) {
  CIOconfiguration c;
  c.SetActiveAddressString("COM1::Baud=2400");
  ExpectRefused(c, [&] { c.SetActivePortBaudRate(4800); });
  EXPECT_EQ(c.ActivePortBaudRate(), 2400);
  ExpectRefused(c, [&] { c.SetActivePortHandshake(1); });
  ExpectRefused(c, [&] { c.SetActivePortGPIBAddress(31); });
  // A handshake the address cannot express is refused on the active port only.
  ExpectRefused(c, [&] { c.SetHandshake(1, 3); });
  c.SetHandshake(2, 3);
  EXPECT_EQ(c.Handshake(2), 3);
  ExpectRefused(c, [&] { c.SetActiveIOPort("COM2"); });

  // Reading the GPIB address of a serial port, or a serial setting of a GPIB port, is only reported.
  blocks.clear();
  EXPECT_EQ(c.ActivePortGPIBAddress(), 7);
  EXPECT_TRUE(Reported("(m_bIsGPIB = True)", "ActivePortGPIBAddress"));
  c.SetActiveIOPort("GPIB0");
  const CIOconfiguration before = c;
  c.SetActivePortBaudRate(19200);
  EXPECT_TRUE(Reported("(m_bIsGPIB = False)", "ActivePortBaudRate"));
  EXPECT_EQ(c, before);
  EXPECT_EQ(c.ActivePortBaudRate(), 0);
}

TEST_F(CIOconfigurationTest, DTROnlyForcesEveryHandshakeOnce) {
  CIOconfiguration c;
  c.SetActiveAddressString("COM3::Baud=2400");
  c.SetDTROnly(true);
  for (std::int32_t port = 1; port <= 4; ++port) EXPECT_EQ(c.Handshake(port), RS232_HandShake_DTR_DSR);
  EXPECT_EQ(c.ActiveAddressString(), "COM3::Baud=2400,Handshake=DTR_DSR");
  c.SetHandshake(1, RS232_HandShake_XON_XOFF);
  c.SetDTROnly(true);  // unchanged value: nothing happens
  EXPECT_EQ(c.Handshake(1), RS232_HandShake_XON_XOFF);
  c.SetDTROnly(false);
  EXPECT_EQ(c.Handshake(3), RS232_HandShake_DTR_DSR);
}

TEST_F(CIOconfigurationTest, IndexedAccessorsRaiseSubscriptOutOfRange) {
  const std::function<void(CIOconfiguration&)> calls[] = {
      [](CIOconfiguration& c) { c.GPIBPortInstalled(4); },
      [](CIOconfiguration& c) { c.SetGPIBPortIncluded(4, false); },
      [](CIOconfiguration& c) { c.RS232PortIncluded(0); },
      [](CIOconfiguration& c) { c.SetGPIBPortIncludes(0, 31, false); },
      [](CIOconfiguration& c) { c.BaudRate(0); },
      [](CIOconfiguration& c) { c.SetHandshake(5, 2); },
      [](CIOconfiguration& c) { c.SetParity(0, 1); },
  };
  for (const auto& call : calls) {
    CIOconfiguration c;
    ExpectError(c, ERR_SUBSCRIPT_OUT_OF_RANGE, [&] { call(c); });
  }
}

TEST_F(CIOconfigurationTest, PortNameConverters) {
  CIOconfiguration c;
  // 1: a valid port name, 0: not one, -1: a type mismatch.
  const std::tuple<bool (CIOconfiguration::*)(const std::string&) const, const char*, int> names[] = {
      {&CIOconfiguration::IsValidGPIBPortString, "gpib3", 1},  {&CIOconfiguration::IsValidGPIBPortString, "GPIB4", 0},
      {&CIOconfiguration::IsValidGPIBPortString, "GPIB00", 0}, {&CIOconfiguration::IsValidGPIBPortString, "GPIBx", -1},
      {&CIOconfiguration::IsValidRS232PortString, "com4", 1},  {&CIOconfiguration::IsValidRS232PortString, "COM5", 0},
      {&CIOconfiguration::IsValidRS232PortString, "GPIB", 0},  {&CIOconfiguration::IsValidRS232PortString, "COMx", -1}};
  for (const auto& [valid, name, expected] : names) {
    SCOPED_TRACE(name);
    if (expected < 0)
      ExpectError(c, ERR_TYPE_MISMATCH, [&] { (c.*valid)(name); });
    else
      EXPECT_EQ((c.*valid)(name), expected == 1);
  }

  EXPECT_EQ(c.GPIBPortIndex("gpib2::5::instr"), 2);
  EXPECT_EQ(c.RS232PortIndex("COM3::Baud=2400"), 3);
  EXPECT_TRUE(c.IsStringGPIB("gpib"));
  EXPECT_FALSE(c.IsStringGPIB("Com9"));
  ExpectRefused(c, [&] { c.GPIBPortString(4); });
  ExpectRefused(c, [&] { c.RS232PortString(0); });
  for (const char* text : {"GPIB", "GPIBx", "GPIB7"}) ExpectRefused(c, [&] { c.GPIBPortIndex(text); });
  for (const char* text : {"COM", "COMx", "COM0"}) ExpectRefused(c, [&] { c.RS232PortIndex(text); });
  ExpectRefused(c, [&] { c.IsStringGPIB("ASRL1::INSTR"); });

  const std::pair<const char*, int> instrumentAddresses[] = {
      {"GPIB0::7::INSTR", 7},   {"GPIB0::30::INSTR", 30}, {"GPIB0::00::INSTR", 0}, {"GPIB0::007::INSTR", -1},
      {"GPIB0::31::INSTR", -1}, {"GPIB0::INTFC", -1},     {"GPIB0", -1},           {"GPIB0::::INSTR", -1},
      {"GPIB0::+7::INSTR", -1}};
  for (const auto& [text, expected] : instrumentAddresses) {
    SCOPED_TRACE(text);
    if (expected < 0)
      ExpectRefused(c, [&] { c.GPIBInstrumentAddress(text); });
    else
      EXPECT_EQ(c.GPIBInstrumentAddress(text), expected);
  }
}

TEST_F(CIOconfigurationTest, FindAllMarksInstalledPortsAndFoundAddresses) {
  FakeSource io;
  io.manager->lists["GPIB*"] = {"GPIB0::7::INSTR", "GPIB0::INTFC"};
  io.manager->lists["GPIB0"] = {"GPIB0::7::INSTR", "GPIB0::INTFC"};
  io.manager->lists["COM*"] = {"COM1", "com3"};
  io.manager->lists["COM3"] = {"COM3"};
  CIOconfiguration c;
  c.FindAll(io);
  EXPECT_TRUE(c.HasInstalledPorts());
  for (std::int32_t port = 0; port <= 3; ++port) {
    EXPECT_EQ(c.GPIBPortInstalled(port), port == 0);
    for (std::int32_t address = 0; address <= 30; ++address)
      EXPECT_EQ(c.GPIBInstrumentFound(port, address), port == 0 && address == 7);
  }
  for (std::int32_t port = 1; port <= 4; ++port) EXPECT_EQ(c.RS232PortInstalled(port), port == 1 || port == 3);
  EXPECT_TRUE(blocks.empty()) << "an interface resource is not a broken invariant";

  EXPECT_TRUE(c.FindGPIBPort(0, io));
  EXPECT_FALSE(c.FindGPIBPort(1, io));
  EXPECT_TRUE(c.FindRS232Port(3, io));
  EXPECT_FALSE(c.FindRS232Port(2, io));
  EXPECT_EQ(io.manager->asked, (std::vector<std::string>{"COM*", "GPIB*", "GPIB0", "GPIB1", "COM3", "COM2"}));
  ExpectError(c, ERR_SUBSCRIPT_OUT_OF_RANGE, [&] { c.FindGPIBPort(4, io); });

  io.manager->fail = true;
  EXPECT_FALSE(c.FindRS232Port(3, io));
  ExpectError(c, ObjectError(IOERR_IO_FAILURE), [&] { c.FindAll(io); });
  io.manager->fail = false;
  io.manager->lists.clear();
  c.FindAll(io);
  EXPECT_FALSE(c.HasInstalledPorts());
  EXPECT_FALSE(c.GPIBInstrumentFound(0, 7));
}

// Offsets of the image: installed and included flags, include mask, serial flags, serial rows.
Bytes DefaultImage() {
  Bytes image(164, 255);
  for (int i = 0; i < 4; ++i) image[i] = 0;  // nothing installed
  for (int i = 132; i < 136; ++i) image[i] = 0;
  for (int port = 0; port < 4; ++port) {
    const Bytes row = {0x80, 0x25, 0, 0, 1, 2};  // 9600, parity 1, XON/XOFF
    std::copy(row.begin(), row.end(), image.begin() + 140 + 6 * port);
  }
  return image;
}

TEST_F(CIOconfigurationTest, SearchCriteriaImageByteForByte) {
  CIOconfiguration c;
  MemoryPropertyBag fresh;
  c.WriteProperties(fresh);
  ASSERT_EQ(fresh.Entries().size(), 1u);  // the two plain keys hold their defaults
  EXPECT_EQ(fresh.Entries()[0].second.AsBytes(), DefaultImage());

  c.SetGPIBPortInstalled(1, true);
  c.SetGPIBPortIncluded(2, false);
  c.SetGPIBPortIncludes(3, 30, false);
  c.SetRS232PortInstalled(4, true);
  c.SetRS232PortIncluded(2, false);
  c.SetBaudRate(3, 57600);
  c.SetActiveAddressInstrumentID("QD,73104L,0,1.0");
  c.SetDTROnly(true);
  Bytes expected = DefaultImage();
  expected[1] = 255;
  expected[6] = 0;
  expected[8 + 3 * 31 + 30] = 0;
  expected[135] = 255;
  expected[137] = 0;
  for (int port = 0; port < 4; ++port) expected[140 + 6 * port + 5] = 4;
  expected[152] = 0, expected[153] = 225, expected[154] = 0, expected[155] = 0;

  MemoryPropertyBag bag;
  c.WriteProperties(bag);
  ASSERT_EQ(bag.Entries().size(), 3u);
  EXPECT_EQ(bag.Entries()[0].first, "ActiveAddressInstrumentID");
  EXPECT_EQ(bag.Entries()[1].first, "DTROnly");
  EXPECT_EQ(bag.Entries()[2].first, "SearchCriteria");
  EXPECT_EQ(bag.Entries()[2].second.AsBytes(), expected);

  CIOconfiguration read;
  read.ReadProperties(bag);
  EXPECT_EQ(read.DataAsVariant(), c.DataAsVariant());
  EXPECT_EQ(read.BaudRate(3), 57600);
  EXPECT_EQ(read.ActiveAddressInstrumentID(), "QD,73104L,0,1.0");
  EXPECT_TRUE(read.DTROnly());

  // Any non-zero byte is true, and is written back as 255.
  expected[0] = 1;
  bag.Set("SearchCriteria", expected);
  read.ReadProperties(bag);
  EXPECT_TRUE(read.GPIBPortInstalled(0));
  MemoryPropertyBag rewritten;
  read.WriteProperties(rewritten);
  EXPECT_EQ(rewritten.ReadProperty("SearchCriteria", Variant()).AsBytes()[0], 255);
}

TEST_F(CIOconfigurationTest, ReadPropertiesRefusesBadEntriesWhole) {
  CIOconfiguration c;
  c.SetActiveAddressString("COM2");
  for (std::size_t size : {0u, 163u, 165u}) {
    MemoryPropertyBag bag;
    bag.Set("ActiveAddressInstrumentID", "changed");
    bag.Set("DTROnly", true);
    bag.Set("SearchCriteria", Bytes(size, 0));
    ExpectRefused(c, [&] { c.ReadProperties(bag); });
  }
  const std::vector<std::pair<const char*, Variant>> wrongTypes = {
      {"SearchCriteria", Variant("not an image")},
      {"DTROnly", Variant("maybe")},
      {"ActiveAddressInstrumentID", Variant(Variant::Array{})},
  };
  for (const auto& [key, value] : wrongTypes) {
    MemoryPropertyBag bag;
    bag.Set(key, value);
    ExpectError(c, ERR_TYPE_MISMATCH, [&] { c.ReadProperties(bag); });
  }
  // A handshake byte the active port's address cannot express.
  Bytes image = DefaultImage();
  image[140 + 6 + 5] = 3;
  MemoryPropertyBag bag;
  bag.Set("SearchCriteria", image);
  ExpectRefused(c, [&] { c.ReadProperties(bag); });
}

TEST_F(CIOconfigurationTest, ReadPropertiesWithoutImageKeepsTablesAndAppliesDTROnly) {
  CIOconfiguration c;
  c.SetActiveAddressString("COM2::Baud=19200");
  c.SetGPIBPortIncluded(1, false);
  MemoryPropertyBag bag;
  bag.Set("DTROnly", true);
  c.ReadProperties(bag);
  EXPECT_FALSE(c.GPIBPortIncluded(1));
  EXPECT_EQ(c.Handshake(4), RS232_HandShake_DTR_DSR);
  EXPECT_EQ(c.ActiveAddressString(), "COM2::Baud=19200,Handshake=DTR_DSR");

  // An image's row for the active port shows in the address.
  Bytes image = DefaultImage();
  image[146] = 0x00, image[147] = 0x96;  // 38400
  bag.Set("SearchCriteria", image);
  bag.Set("DTROnly", false);
  c.ReadProperties(bag);
  EXPECT_EQ(c.ActiveAddressString(), "COM2::Baud=38400");
}

TEST_F(CIOconfigurationTest, DataAsVariantRoundTripAndRefusals) {
  CIOconfiguration source;
  source.SetGPIBPortInstalled(2, true);
  source.SetGPIBPortIncludes(1, 17, false);
  source.SetRS232PortIncluded(4, false);
  source.SetBaudRate(1, 2400);
  source.SetHandshake(2, RS232_HandShake_DTR_DSR);
  const Variant data = source.DataAsVariant();
  ASSERT_EQ(data.AsArray().size(), 6u);
  EXPECT_EQ(data.AsArray()[2].AsArray()[1].AsArray().size(), 31u);

  CIOconfiguration c;
  c.SetActiveIOPort("COM1");
  c.SetDataAsVariant(data);
  EXPECT_EQ(c.DataAsVariant(), data);
  EXPECT_EQ(c.ActiveAddressString(), "COM1::Baud=2400");

  struct Mutation {
    std::function<void(Variant::Array&)> change;
    std::int32_t number;
  };
  const auto setting = [](Variant::Array& list, int port, int index) -> Variant& {
    return list[5].AsArray()[port].AsArray()[index];
  };
  const Mutation mutations[] = {
      {[&](Variant::Array& l) { setting(l, 3, 0) = Variant(std::int32_t{4800}); }, INVALID_PROPERTY_VALUE},
      {[&](Variant::Array& l) { setting(l, 0, 1) = Variant(std::int32_t{0}); }, INVALID_PROPERTY_VALUE},
      {[&](Variant::Array& l) { setting(l, 1, 2) = Variant(std::int16_t{1}); }, INVALID_PROPERTY_VALUE},
      {[&](Variant::Array& l) { setting(l, 1, 0) = Variant("fast"); }, ERR_TYPE_MISMATCH},
      {[](Variant::Array& l) { l.pop_back(); }, ERR_SUBSCRIPT_OUT_OF_RANGE},
      {[](Variant::Array& l) { l[2].AsArray()[3].AsArray().pop_back(); }, ERR_SUBSCRIPT_OUT_OF_RANGE},
      {[](Variant::Array& l) { l[5].AsArray()[0].AsArray().emplace_back(std::int32_t{0}); },
       ERR_SUBSCRIPT_OUT_OF_RANGE},
      {[](Variant::Array& l) { l[0] = Variant(true); }, ERR_TYPE_MISMATCH},
  };
  for (const auto& m : mutations) {
    Variant changed = data;
    changed.AsArray()[0].AsArray()[0] = Variant(true);  // a refusal must not copy the tables either
    m.change(changed.AsArray());
    CIOconfiguration target;
    ExpectError(target, m.number, [&] { target.SetDataAsVariant(changed); });
  }
  CIOconfiguration target;
  ExpectError(target, ERR_TYPE_MISMATCH, [&] { target.SetDataAsVariant(Variant(std::int32_t{5})); });
}

TEST_F(CIOconfigurationTest, CopyTakesOverEverything) {
  FakeSource io;
  io.manager->lists["GPIB*"] = {"GPIB1::4::INSTR"};
  CIOconfiguration source;
  source.FindAll(io);
  source.SetDTROnly(true);
  source.SetActiveAddressString("COM3::Baud=1200,Handshake=DTR_DSR");
  source.SetActiveAddressInstrumentID("id");
  source.SetGPIBPortIncludes(0, 0, false);
  source.SetBaudRate(4, 12345);

  CIOconfiguration target;
  target.Copy(source);
  EXPECT_EQ(target, source);
  EXPECT_TRUE(target.GPIBInstrumentFound(1, 4));

  // A configuration under DTR-only operation takes over a plain XON/XOFF address.
  CIOconfiguration plain;
  plain.SetActiveIOPort("COM1");
  target.Copy(plain);
  EXPECT_EQ(target, plain);

  ExpectRefused(target, [&] { target.Copy(nullptr); });
}

}  // namespace
}  // namespace cvn73100
