#include "setups/SetupCvn73100Scope.h"

#include "connection/CCvn73100EZ.h"
#include "setups/CSetupFile.h"
#include "setups/SetupsCvn73100Scope.h"
#include "tests/setups/SetupTestSupport.h"

namespace cvn73100::test {
namespace {

// A setup in a collection whose connection reaches a fake instrument.
class SetupTest : public SetupFileTest {
 protected:
  void SetUp() override {
    SetupFileTest::SetUp();
    UseFakeServer(m_instrument);
    m_connection = std::make_shared<CCvn73100EZ>();
    m_setups->SetCCvn73100EZPtr(m_connection);
    m_setup = m_setups->Add("S1");
  }

  std::shared_ptr<FakeUtilities> m_instrument = std::make_shared<FakeUtilities>();
  std::shared_ptr<CCvn73100EZ> m_connection;
  std::shared_ptr<SetupsCvn73100Scope> m_setups = SetupsCvn73100Scope::Create();
  std::shared_ptr<SetupCvn73100Scope> m_setup;
};

TEST_F(SetupTest, NameAndCommentRules) {
  for (const char* bad : {"a b", "a|b", "", " "}) {
    EXPECT_EQ(ErrorOf([&] { m_setup->SetNewName(bad); }).Number(), ObjectError(ERR_INVALID_PROPERTY_VALUE)) << bad;
    EXPECT_EQ(m_setup->Name(), "S1");
  }
  m_setup->SetNewName("Scope1");
  EXPECT_EQ(m_setup->Name(), "Scope1");

  m_setup->SetComments("  note  ");
  EXPECT_EQ(m_setup->Comments(), "note");
  EXPECT_TRUE(IsCatalogueError(ErrorOf([&] { m_setup->SetComments("x|y"); }), ERR_INVALID_PROPERTY_VALUE, 104, 106));
  EXPECT_EQ(m_setup->Comments(), "note");
}

TEST_F(SetupTest, CompatibilityRule) {
  struct Case {
    const char *model, *version, *instrumentModel, *instrumentVersion;
    bool compatible;
  };
  const Case cases[] = {
      {"73135D", "X.XX.XX", "73135d", "B.09.99", true},
      {"73135D", "x.xx.xx", "73135D", "", true},
      {"73135D", "X.XX.XX", "73136D", "A.01.02", false},
      {"73135D", "A.01.02", "73135D", "a.01.02", true},
      {"73135D", "A.01.02", "73135D", "A.01.03", false},
      {"", "X.XX.XX", "", "A.01.02", false},
      {"73135D", "", "73135D", "", false},
  };
  MemoryPropertyBag bag;
  for (const auto& c : cases) {
    bag.Set("Model1", c.model);
    bag.Set("Version1", c.version);
    m_setup->ReadProperties(bag, 1);
    EXPECT_EQ(m_setup->IsLearnStringCompatible(c.instrumentModel, c.instrumentVersion), c.compatible)
        << c.model << " " << c.version << " / " << c.instrumentModel << " " << c.instrumentVersion;
  }
}

TEST_F(SetupTest, GetFromInstrumentTakesStateModelAndVersion) {
  m_setup->GetFromInstrument();
  EXPECT_EQ(m_setup->LearnString(), m_instrument->state);
  EXPECT_EQ(m_setup->Model(), "73135D");
  EXPECT_EQ(m_setup->Version(), "A.01.02");
  EXPECT_EQ(m_setups->LastInstrumentSetup(), "S1");

  // A failure ends the fetch where it happens: what was read before it stays, nothing after it is read.
  const struct {
    const char* failing;
    bool stateKept, modelKept;
  } cases[] = {
      {"ReadStateData", false, false}, {"InstrumentModel", true, false}, {"InstrumentFirmwareVersion", true, true}};
  std::uint8_t fetch = 0;
  for (const auto& c : cases) {
    const LearnString before = m_setup->LearnString();
    m_setups->SetLastInstrumentSetup("");
    m_instrument->failing = c.failing;
    m_instrument->state = Bytes{0x23, 0x38, ++fetch};
    m_instrument->model = m_setup->Model() + "X";
    m_instrument->version = m_setup->Version() + "X";
    const std::string model = m_setup->Model(), version = m_setup->Version();
    EXPECT_EQ(ErrorOf([&] { m_setup->GetFromInstrument(); }).Description(), "device vanished") << c.failing;
    EXPECT_EQ(m_setup->LearnString(), c.stateKept ? m_instrument->state : before) << c.failing;
    EXPECT_EQ(m_setup->Model(), c.modelKept ? m_instrument->model : model) << c.failing;
    EXPECT_EQ(m_setup->Version(), version) << c.failing;
    EXPECT_EQ(m_setups->LastInstrumentSetup(), "") << c.failing;
  }
}

TEST_F(SetupTest, SendToInstrumentOnlyWhenCompatible) {
  m_setup->GetFromInstrument();
  m_setups->SetLastInstrumentSetup("");
  m_setup->SendToInstrument();
  ASSERT_EQ(m_instrument->written.size(), 1u);
  EXPECT_EQ(m_instrument->written[0], m_instrument->state);
  EXPECT_EQ(m_setups->LastInstrumentSetup(), "S1");

  m_setups->SetLastInstrumentSetup("");
  m_instrument->version = "A.01.03";
  EXPECT_TRUE(IsCatalogueError(ErrorOf([&] { m_setup->SendToInstrument(); }), ERR_SETUP_NOT_SENDABLE, 690, 691));
  const auto empty = m_setups->Add("Empty");
  EXPECT_TRUE(IsCatalogueError(ErrorOf([&] { empty->SendToInstrument(); }), ERR_SETUP_NOT_SENDABLE, 690, 692));
  EXPECT_EQ(m_instrument->written.size(), 1u);
  EXPECT_EQ(m_setups->LastInstrumentSetup(), "");
}

TEST_F(SetupTest, WithoutAConnectionNothingIsExchanged) {
  m_connection.reset();  // the control let go of it: the collection must not keep it alive
  EXPECT_EQ(m_setups->CCvn73100EZPtr(), nullptr);
  EXPECT_EQ(ErrorOf([&] { m_setup->GetFromInstrument(); }).Number(), 91);
  EXPECT_TRUE(Asserted("Setup", "GetFromInstrument"));
  EXPECT_TRUE(Asserted("Setups", "Get CCvn73100EZPtr"));

  m_setups.reset();  // a setup held after its collection is gone has no parent, and is not kept alive by one
  EXPECT_EQ(m_setup->ParentSetups(), nullptr);
  EXPECT_EQ(ErrorOf([&] { m_setup->SendToInstrument(); }).Number(), 91);
  EXPECT_TRUE(Asserted("Setup", "Get ParentSetups"));
}

TEST_F(SetupTest, FilesRoundTripInEitherFormatAndSaveNatively) {
  m_setup->GetFromInstrument();
  m_setup->SetComments("bench 3");
  m_setup->SaveToFile(Path("s.stp"));
  EXPECT_TRUE(CSetupFile().IsACompatibleFile(Path("s.stp")));

  const auto other = m_setups->Add("Other");
  other->ReadFromFile(Path("s.stp"));
  EXPECT_EQ(other->Name(), "Other");
  EXPECT_EQ(other->LearnString(), m_setup->LearnString());
  EXPECT_EQ(other->Model(), "73135D");
  EXPECT_EQ(other->Version(), "A.01.02");
  EXPECT_EQ(other->Comments(), "bench 3");

  other->ReadFromFile(Make("w.scp", "stp1.10\n1\n a|b \nCVN73135D\n:SYSTEM:SETUP xyz"));
  EXPECT_EQ(other->Version(), "X.XX.XX");
  EXPECT_EQ(other->Comments(), "a|b");  // taken from the file as it stands
  EXPECT_EQ(ErrorOf([&] { other->SaveToFile(Path("bar.scp")); }).Number(), ObjectError(ERR_SETUP_FILE));

  EXPECT_TRUE(IsCatalogueError(ErrorOf([&] { other->ReadFromFile(Make("x.scp", "neither\n")); }), ERR_NOT_A_SETUP_FILE,
                               670, 674));
  EXPECT_EQ(ErrorOf([&] { other->ReadFromFile(Make("y.stp", "stp1.10\n1\nc\nCVN9\n:SYST")); }).Number(),
            ObjectError(ERR_SETUP_FILE));
  EXPECT_EQ(other->Model(), "73135D");  // neither failure changed the setup
  EXPECT_EQ(other->LearnString(), Bytes({'x', 'y', 'z'}));
}

TEST_F(SetupTest, MissingKeysReadAsDefaults) {
  m_setup->GetFromInstrument();
  m_setup->SetComments("c");
  m_setup->ReadProperties(MemoryPropertyBag(), 4);
  EXPECT_EQ(m_setup->Name(), "Setup1");
  EXPECT_EQ(m_setup->Comments(), "");
  EXPECT_EQ(m_setup->Model(), "");
  EXPECT_EQ(m_setup->Version(), "");
  EXPECT_EQ(m_setup->LearnString(), std::nullopt);
}

}  // namespace
}  // namespace cvn73100::test
