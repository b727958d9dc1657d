#include "setups/CWrenfoldFile.h"

#include "setups/CSetupFile.h"
#include "tests/setups/SetupTestSupport.h"

namespace cvn73100::test {
namespace {

using WrenfoldSetupFileTest = SetupFileTest;

TEST_F(WrenfoldSetupFileTest, ReadsTheFourLinesAndTheLearnString) {
  struct Case {
    const char* name;
    std::string bytes;
    std::string comments, manufacturer, model;
    LearnString learnString;
  };
  const Case cases[] = {
      {"maker code CVN", "STP1.10\n12\n  my notes  \ncvn73135D\n:SYSTEM:SETUP \x01\x02\x03", "my notes",
       "Corvane Technologies", "73135D", Bytes{1, 2, 3}},
      {"other maker, 3-char ROM", "stp1.1\n-7\nc\nxyz54\n:system:setup ab", "c", "xyz", "54", Bytes{'a', 'b'}},
      {"carriage returns kept", "stp1.10\n12\r\nnote\r\nCVN73135D\r\n:SYSTEM:SETUP ab", "note\r",
       "Corvane Technologies", "73135D\r", Bytes{'a', 'b'}},
      {"no data", "stp1.10\n1\n\nCVN1\n:SYSTEM:SETUP ", "", "Corvane Technologies", "1", std::nullopt},
      {"data holding line feeds", "stp1.10\n1\n\nab\n:SYSTEM:SETUP \n\n", "", "ab", "", Bytes{'\n', '\n'}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string path = Make("a.stp", c.bytes);
    CWrenfoldFile file;
    file.SetSerialNumber("old");
    EXPECT_TRUE(file.IsACompatibleFile(path));
    file.ReadFile(path);
    EXPECT_EQ(file.UserComments(), c.comments);
    EXPECT_EQ(file.Manufacturer(), c.manufacturer);
    EXPECT_EQ(file.Model(), c.model);
    EXPECT_EQ(file.Version(), "X.XX.XX");
    EXPECT_EQ(file.SerialNumber(), "");
    EXPECT_EQ(file.LearnString(), c.learnString);
  }
}

TEST_F(WrenfoldSetupFileTest, RefusesWhatIsNotAWellFormedFile) {
  struct Case {
    const char* name;
    std::string bytes;
    bool compatible;
    int description;
  };
  const Case cases[] = {
      {"ROM version of 6 characters", "stp1.1234\n1\nc\nCVN1\n:SYSTEM:SETUP ab", false, 681},
      {"ROM version with a carriage return", "stp1.10\r\n1\nc\nCVN1\n:SYSTEM:SETUP ab", false, 681},
      {"native setup file", "52|scp|1|||||KSR Standard Setup File, Version: 1||||0|", false, 673},
      {"abbreviated command", "stp1.10\n1\nc\nCVN1\n:SYST:SET ab", true, 673},
      {"no command", "stp1.10\n1\nc\nCVN1\n", true, 673},
      {"line 2 not a number", "stp1.10\n1x\nc\nCVN1\n:SYSTEM:SETUP ab", true, ERR_TYPE_MISMATCH},
      {"cut inside line 4", "stp1.10\n1\nc\nCVN1", true, 673},
      {"empty file", "", false, 673},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string path = Make("b.stp", c.bytes);
    CWrenfoldFile file;
    EXPECT_EQ(file.IsACompatibleFile(path), c.compatible);
    const ScopeError error = ErrorOf([&] { file.ReadFile(path); });
    if (c.description == ERR_TYPE_MISMATCH) {
      EXPECT_EQ(error.Number(), ERR_TYPE_MISMATCH);
    } else {
      EXPECT_TRUE(IsCatalogueError(error, ERR_SETUP_FILE, 670, c.description));
    }
  }
  EXPECT_TRUE(Asserted("CWrenfoldFile", "ReadField"));
  EXPECT_TRUE(Asserted("CWrenfoldFile", "ReadFile"));
  EXPECT_FALSE(CSetupFile().IsACompatibleFile(Make("c.stp", "stp1.10\n1\nc\nCVN1\n:SYSTEM:SETUP ab")));
}

TEST_F(WrenfoldSetupFileTest, WritingIsRefusedAndCreatesNothing) {
  CWrenfoldFile file;
  file.SetModel("73135D");
  EXPECT_TRUE(IsCatalogueError(ErrorOf([&] { file.WriteFile(Path("w.stp")); }), ERR_SETUP_FILE, 670, 681));
  EXPECT_FALSE(std::filesystem::exists(Path("w.stp")));
  EXPECT_TRUE(Asserted("CWrenfoldFile", "WriteFile"));
}

}  // namespace
}  // namespace cvn73100::test
