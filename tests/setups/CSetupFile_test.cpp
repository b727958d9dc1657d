#include "setups/CSetupFile.h"

#include "tests/setups/SetupTestSupport.h"

namespace cvn73100::test {
namespace {

constexpr const char* EXAMPLE_HEADER =
    "95|scp|1|73135D|Corvane Technologies||A.01.02|test|KSR Standard Setup File, Version: 1||||1000|";

std::string Bytes1000() {
  std::string data;
  for (int i = 0; i < 1000; ++i) data.push_back(static_cast<char>(i * 7));
  return data;
}

Bytes ToBytes(const std::string& s) { return Bytes(s.begin(), s.end()); }

using CSetupFileTest = SetupFileTest;

TEST_F(CSetupFileTest, WritesTheExampleByteForByteAndReadsItBack) {
  CSetupFile out;
  out.SetModel("73135D");
  out.SetVersion("A.01.02");
  out.SetUserComments("test");
  out.SetLearnString(ToBytes(Bytes1000()));
  out.WriteFile(Path("a.scp"));
  EXPECT_EQ(ReadAll(Path("a.scp")), EXAMPLE_HEADER + Bytes1000());

  CSetupFile in;
  in.SetManufacturer("other");
  ASSERT_TRUE(in.IsACompatibleFile(Path("a.scp")));
  in.ReadFile(Path("a.scp"));
  EXPECT_EQ(in.Model(), "73135D");
  EXPECT_EQ(in.Manufacturer(), "Corvane Technologies");
  EXPECT_EQ(in.Version(), "A.01.02");
  EXPECT_EQ(in.UserComments(), "test");
  EXPECT_EQ(in.LearnString(), ToBytes(Bytes1000()));
}

TEST_F(CSetupFileTest, HeaderLengthCountsItsOwnDigits) {
  // Field 1, its terminator and the rest must always add up to the value written in field 1.
  for (std::int64_t tail = 1; tail < 200000; ++tail) {
    const std::int64_t n = CSetupFile::HeaderLength(tail);
    ASSERT_EQ(static_cast<std::int64_t>(std::to_string(n).size()) + 1 + tail, n) << tail;
  }
  // A tail of 99 bytes: 99 + 2 + 1 = 102 has a digit more than 99, so field 1 is 103, and only 103 reads.
  CSetupFile out;
  out.SetUserComments(std::string(27, 'c'));  // makes fields 2 to 13 exactly 99 bytes
  out.WriteFile(Path("h.scp"));
  const std::string file = ReadAll(Path("h.scp"));
  ASSERT_EQ(file.size(), 103u);
  EXPECT_EQ(file.substr(0, 4), "103|");
  CSetupFile in;
  EXPECT_NO_THROW(in.ReadFile(Path("h.scp")));
  Make("h102.scp", "102" + file.substr(3));
  EXPECT_TRUE(IsCatalogueError(ErrorOf([&] { in.ReadFile(Path("h102.scp")); }), ERR_SETUP_FILE, 670, 673));
}

TEST_F(CSetupFileTest, ShortLearnStringsReadBackAsEmpty) {
  struct Case {
    LearnString written;
    const char* lengthField;
    LearnString read;
  };
  const Case cases[] = {{std::nullopt, "|0|", std::nullopt},
                        {Bytes{}, "|0|", std::nullopt},
                        {Bytes{7}, "|1|", std::nullopt},
                        {Bytes{7, 8}, "|2|", Bytes{7, 8}}};
  for (const auto& c : cases) {
    CSetupFile out;
    out.SetLearnString(c.written);
    out.WriteFile(Path("s.scp"));
    const std::string file = ReadAll(Path("s.scp"));
    const std::string end = c.lengthField + (c.written ? std::string(c.written->begin(), c.written->end()) : "");
    EXPECT_TRUE(file.ends_with(end)) << c.lengthField;
    CSetupFile in;
    in.SetLearnString(Bytes{1, 2, 3});
    in.ReadFile(Path("s.scp"));
    EXPECT_EQ(in.LearnString(), c.read) << c.lengthField;
  }
}

// A header with a consistent field 1, for the given type, format version and data-length texts.
std::string Header(const std::string& type, const std::string& version, const std::string& length) {
  const std::string rest = "|" + type + "|" + version +
                           "|M|Corvane Technologies||V|c|KSR Standard Setup File, Version: 1||||" + length + "|";
  return std::to_string(CSetupFile::HeaderLength(static_cast<std::int64_t>(rest.size()) - 1)) + rest;
}

TEST_F(CSetupFileTest, DamagedOrForeignFilesAreRefused) {
  const std::string good = Header("scp", "1", "2");
  struct Case {
    const char* name;
    std::string bytes;
    bool compatible;
    int description;  // 0: reads fine; ERR_TYPE_MISMATCH: a number field holds text
  };
  const Case cases[] = {
      {"capital type", Header("SCP", "1", "2") + "ab", true, 0},
      {"version 2", Header("scp", "2", "2") + "ab", false, 681},
      {"type over its limit", Header("scpxy", "1", "2") + "ab", false, 673},
      {"cut inside the header", good.substr(0, 40), true, 673},
      {"empty file", "", false, 673},
      {"data length beyond the file", Header("scp", "1", "5000") + "ab", true, 673},
      {"data length beyond 32 bits", Header("scp", "1", "99999999999999") + "ab", true, ERR_TYPE_MISMATCH},
      {"data length beyond the cap", Header("scp", "1", "2000000000") + "ab", true, ERR_SETUP_FILE},
      {"negative data length", Header("scp", "1", "-2") + "ab", true, 673},
      {"text as header length", "x" + good + "ab", true, ERR_TYPE_MISMATCH},
      {"header length off by one", "80" + good.substr(2) + "ab", true, 673},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string path = Make("f.scp", c.bytes);
    CSetupFile file;
    EXPECT_EQ(file.IsACompatibleFile(path), c.compatible);
    const ScopeError error = ErrorOf([&] { file.ReadFile(path); });
    if (c.description == 0) {
      EXPECT_EQ(error.Number(), 0);
      EXPECT_EQ(file.LearnString(), Bytes({'a', 'b'}));
    } else if (c.description == ERR_TYPE_MISMATCH || c.description == ERR_SETUP_FILE) {
      EXPECT_EQ(error.Number(), c.description);
    } else {
      EXPECT_TRUE(IsCatalogueError(error, ERR_SETUP_FILE, 670, c.description)) << error.Number();
    }
  }
  EXPECT_TRUE(Asserted("CSetupFile", "ReadField"));
  EXPECT_TRUE(Asserted("CSetupFile", "ReadFileTypeAndVersion"));
  EXPECT_TRUE(Asserted("CSetupFile", "ReadFile"));
}

TEST_F(CSetupFileTest, MissingFilesAndFoldersAreNotSetupFiles) {
  CSetupFile file;
  EXPECT_FALSE(file.IsACompatibleFile(Path("missing.scp")));
  EXPECT_FALSE(file.IsACompatibleFile(m_dir.string()));
  EXPECT_TRUE(IsCatalogueError(ErrorOf([&] { file.ReadFile(Path("missing.scp")); }), ERR_SETUP_FILE, 670, 673));
}

// A save that fails part-way is the fault-injection tests' business; here, saves that cannot start.
TEST_F(CSetupFileTest, SavesThatCannotStartCreateNothing) {
  CSetupFile file;
  EXPECT_TRUE(IsCatalogueError(ErrorOf([&] { file.WriteFile(Path("no/such/folder.scp")); }), ERR_SETUP_FILE, 670, 681));
  // A field that would break the header is not written at all.
  file.SetUserComments("a|b");
  EXPECT_TRUE(IsCatalogueError(ErrorOf([&] { file.WriteFile(Path("bar.scp")); }), ERR_SETUP_FILE, 670, 681));
  EXPECT_FALSE(std::filesystem::exists(Path("bar.scp")));
  EXPECT_TRUE(Asserted("CSetupFile", "WriteFile"));
}

}  // namespace
}  // namespace cvn73100::test
