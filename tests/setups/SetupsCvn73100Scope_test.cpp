#include "setups/SetupsCvn73100Scope.h"

#include <filesystem>

#include "tests/setups/SetupTestSupport.h"

namespace cvn73100::test {
namespace {

using SetupsTest = SetupFileTest;

std::vector<std::string> Names(const SetupsCvn73100Scope& setups) {
  std::vector<std::string> names;
  for (const auto& setup : setups) names.push_back(setup->Name());
  return names;
}

std::shared_ptr<SetupsCvn73100Scope> ThreeSetups() {
  auto setups = SetupsCvn73100Scope::Create();
  MemoryPropertyBag bag;
  const char* names[] = {"Alpha", "beta", "Gamma"};
  for (int i = 0; i < 3; ++i) {
    bag.Set("SetupName1", names[i]);
    bag.Set("SetupComments1", std::string("comment ") + names[i]);
    bag.Set("LearnString1", Bytes{static_cast<std::uint8_t>(i), 0xFF});
    bag.Set("Model1", "7313" + std::to_string(i) + "D");
    bag.Set("Version1", i == 2 ? "X.XX.XX" : "A.01.0" + std::to_string(i));
    setups->Add(names[i])->ReadProperties(bag, 1);
  }
  setups->SetLastInstrumentSetup("beta");
  return setups;
}

TEST_F(SetupsTest, AddRefusesBadAndDuplicateNames) {
  const auto setups = SetupsCvn73100Scope::Create();
  EXPECT_EQ(setups->InitialDirectory(), std::filesystem::current_path().string());
  const auto first = setups->Add("Setup1");
  EXPECT_EQ(first->ParentSetups(), setups);
  EXPECT_EQ(first->LearnString(), std::nullopt);
  for (const char* bad : {"my setup", "a|b", ""}) {
    EXPECT_TRUE(IsCatalogueError(ErrorOf([&] { setups->Add(bad); }), ERR_INVALID_PROPERTY_VALUE, 104, 106)) << bad;
  }
  for (const char* duplicate : {"Setup1", "SETUP1", "setup1"}) {
    EXPECT_EQ(ErrorOf([&] { setups->Add(duplicate); }).Number(), ERR_DUPLICATE_KEY) << duplicate;
  }
  EXPECT_EQ(setups->Count(), 1);
  EXPECT_TRUE(Asserted("Setups", "Add"));
}

TEST_F(SetupsTest, ItemByPositionOrName) {
  const auto setups = ThreeSetups();
  EXPECT_EQ(setups->item(2)->Name(), "beta");
  EXPECT_EQ(setups->item("GAMMA")->Name(), "Gamma");
  EXPECT_EQ(setups->item(Variant(std::int16_t{1}))->Name(), "Alpha");
  EXPECT_EQ(setups->item(Variant(3.0))->Name(), "Gamma");
  EXPECT_EQ(setups->item(Variant("Beta"))->Name(), "beta");

  struct Case {
    Variant index;
    std::int32_t error;
  };
  const Case cases[] = {{0, ERR_SUBSCRIPT_OUT_OF_RANGE},         {4, ERR_SUBSCRIPT_OUT_OF_RANGE},
                        {1e12, ERR_SUBSCRIPT_OUT_OF_RANGE},      {"Delta", ERR_INVALID_PROCEDURE_CALL},
                        {Variant(), ERR_INVALID_PROCEDURE_CALL}, {Bytes{1}, ERR_TYPE_MISMATCH}};
  for (const auto& c : cases) {
    EXPECT_EQ(ErrorOf([&] { setups->item(c.index); }).Number(), c.error) << c.index.AsString();
    EXPECT_EQ(ErrorOf([&] { setups->Remove(c.index); }).Number(), c.error);
  }
  EXPECT_EQ(setups->Count(), 3);

  setups->item(1)->SetNewName("Renamed");  // a rename leaves the key it was added under
  EXPECT_EQ(setups->item("alpha")->Name(), "Renamed");
  EXPECT_EQ(ErrorOf([&] { setups->item("Renamed"); }).Number(), ERR_INVALID_PROCEDURE_CALL);
}

TEST_F(SetupsTest, OnlyRemovingByTheExactNameClearsTheLastInstrumentSetup) {
  struct Case {
    Variant index;
    std::string last;
  };
  const Case cases[] = {{"beta", ""}, {2, "beta"}, {"BETA", "beta"}, {"Alpha", "beta"}};
  for (const auto& c : cases) {
    const auto setups = ThreeSetups();
    setups->Remove(c.index);
    EXPECT_EQ(setups->Count(), 2);
    EXPECT_EQ(setups->LastInstrumentSetup(), c.last) << c.index.AsString();
  }
  const auto setups = ThreeSetups();
  setups->Remove("beta");
  EXPECT_EQ(Names(*setups), (std::vector<std::string>{"Alpha", "Gamma"}));
}

TEST_F(SetupsTest, CopyIsIndependent) {
  const auto source = ThreeSetups();
  source->SetInitialDirectory("/data/setups");
  source->SetGetLearnStringOnAdd(false);
  const auto copy = SetupsCvn73100Scope::Create();
  copy->Add("Stale");
  copy->Copy(*source);
  EXPECT_EQ(Names(*copy), Names(*source));
  EXPECT_EQ(copy->InitialDirectory(), "/data/setups");
  EXPECT_FALSE(copy->GetLearnStringOnAdd());
  EXPECT_EQ(copy->LastInstrumentSetup(), "beta");
  EXPECT_EQ(copy->item(2)->ParentSetups(), copy);
  EXPECT_EQ(copy->item(3)->Version(), "X.XX.XX");

  copy->item(1)->SetComments("changed");
  copy->Remove(3);
  EXPECT_EQ(source->item(1)->Comments(), "comment Alpha");
  EXPECT_EQ(source->Count(), 3);
  EXPECT_NE(copy->item(2), source->item(2));
}

TEST_F(SetupsTest, ThreeSetupsRoundTripThroughAPropertyBag) {
  const auto source = ThreeSetups();
  source->SetGetLearnStringOnAdd(false);
  MemoryPropertyBag bag;
  source->WriteProperties(bag);
  EXPECT_EQ(bag.ReadProperty("SetupCount", Variant()), Variant(std::int32_t{3}));
  std::vector<std::string> keys;
  for (const auto& entry : bag.Entries()) keys.push_back(entry.first);
  keys.resize(10);
  EXPECT_EQ(keys, (std::vector<std::string>{"SetupsInitialDirectory", "SetupsGetLearnStringOnAdd",
                                            "LastInstrumentSetup", "SetupCount", "SetupName1", "SetupComments1",
                                            "LearnString1", "Model1", "Version1", "SetupName2"}));

  const auto read = SetupsCvn73100Scope::Create();
  read->ReadProperties(bag);
  MemoryPropertyBag again;
  read->WriteProperties(again);
  EXPECT_EQ(again.Entries(), bag.Entries());
  EXPECT_EQ(read->item(3)->ParentSetups(), read);
}

TEST_F(SetupsTest, DefaultCollectionWritesNothing) {
  const auto setups = SetupsCvn73100Scope::Create();
  setups->ReadProperties(MemoryPropertyBag());
  EXPECT_EQ(setups->InitialDirectory(), "");
  MemoryPropertyBag bag;
  setups->WriteProperties(bag);
  EXPECT_TRUE(bag.Entries().empty());
}

TEST_F(SetupsTest, ReadingStopsAtARejectedNameAndKeepsWhatWasRead) {
  for (const char* second : {"bad name", "FIRST"}) {
    MemoryPropertyBag bag;
    bag.Set("SetupCount", std::int16_t{3});
    bag.Set("SetupName1", "First");
    bag.Set("SetupName2", second);
    const auto setups = SetupsCvn73100Scope::Create();
    EXPECT_NE(ErrorOf([&] { setups->ReadProperties(bag); }).Number(), 0) << second;
    EXPECT_EQ(Names(*setups), (std::vector<std::string>{"First"}));
  }
}

}  // namespace
}  // namespace cvn73100::test
