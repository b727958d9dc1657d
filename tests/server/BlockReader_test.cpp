#include "server/BlockReader.h"

#include <gtest/gtest.h>

#include <optional>

#include "server/ServerError.h"
#include "tests/support/ScriptedIO.h"
#include "tests/support/TempDir.h"

namespace cvn73100::server {
namespace {

using test::ScriptedIO;

constexpr std::size_t kCap = BlockReader::SETUP_CAP;

struct BlockCase {
  const char* name;
  std::string reply;
  std::size_t cap;
  std::optional<std::string> data;  // the block read, or nullopt for an error
  std::int32_t serverError = 0;     // the expected server condition
  std::int32_t ioError = 0;         // or the expected I/O library condition
};

void PrintTo(const BlockCase& c, std::ostream* os) { *os << c.name; }

std::string Block(const std::string& data) { return BlockReader::Header(data.size()) + data; }

class BlockReaderCases : public ::testing::TestWithParam<BlockCase> {};

TEST_P(BlockReaderCases, ReadsOrRefusesAtOnce) {
  const BlockCase& c = GetParam();
  ScriptedIO io(c.reply);
  io.SetTimeout(1500);
  BlockReader reader(io, c.cap, 0.0);
  if (c.data) {
    EXPECT_EQ(reader.Read(), Bytes(c.data->begin(), c.data->end()));
  } else {
    try {
      reader.Read();
      FAIL() << "no error";
    } catch (const ScopeError& e) {
      EXPECT_EQ(ServerErrorCondition(e), c.serverError) << e.Description();
      EXPECT_EQ(IOErrorCondition(e), c.ioError) << e.Description();
    }
  }
  // Nothing was asked of the channel beyond what had arrived plus one first chunk.
  EXPECT_LE(io.largestRead, 4096);
  EXPECT_EQ(io.Timeout(), 1500);
}

const std::string kBinary("\0\n\r#9\xff", 6);

INSTANTIATE_TEST_SUITE_P(
    Server, BlockReaderCases,
    ::testing::Values(BlockCase{"Plain", Block("ABCDE") + "\n", kCap, "ABCDE"},
                      BlockCase{"CarriageReturnLineFeed", Block("ABCDE") + "\r\n", kCap, "ABCDE"},
                      BlockCase{"EndWithoutTerminator", Block("ABCDE"), kCap, "ABCDE"},
                      BlockCase{"BinaryWithTerminatorsInside", Block(kBinary) + "\n", kCap, kBinary},
                      BlockCase{"Empty", "#10\n", kCap, ""},
                      BlockCase{"ExactlyTheCap", Block(std::string(100, 'x')) + "\n", 100, std::string(100, 'x')},
                      BlockCase{"OneOverTheCap", Block(std::string(101, 'x')) + "\n", 100, std::nullopt,
                                SERVERERR_BLOCK_TOO_LARGE},
                      BlockCase{"LyingHugeLength", "#9999999999", kCap, std::nullopt, SERVERERR_BLOCK_TOO_LARGE},
                      BlockCase{"LengthWithinCapButDataMissing", "#8160000001234", BlockReader::WAVEFORM_CAP,
                                std::nullopt, SERVERERR_BLOCK_SHORT},
                      BlockCase{"CutShort", "#210ABCD", kCap, std::nullopt, SERVERERR_BLOCK_SHORT},
                      BlockCase{"NonDigitLength", "#21AABCD\n", kCap, std::nullopt, SERVERERR_BLOCK_HEADER},
                      BlockCase{"NonDigitCount", "#X5ABCDE\n", kCap, std::nullopt, SERVERERR_BLOCK_HEADER},
                      BlockCase{"Indefinite", "#0ABCDE\n", kCap, std::nullopt, SERVERERR_BLOCK_INDEFINITE},
                      BlockCase{"NotABlock", "1.5E-3\n", kCap, std::nullopt, SERVERERR_BLOCK_HEADER},
                      BlockCase{"HeaderCutShort", "#3", kCap, std::nullopt, SERVERERR_BLOCK_SHORT},
                      BlockCase{"DataAfterTheBlock", Block("ABCDE") + "X\n", kCap, std::nullopt, SERVERERR_BAD_REPLY},
                      BlockCase{"NoReplyIsTheTimeout", "", kCap, std::nullopt, 0, IOERR_TIMEOUT}),
    [](const ::testing::TestParamInfo<BlockCase>& param) { return std::string(param.param.name); });

TEST(ServerBlockReader, ADeviceThatVanishesMidBlockIsReportedAsSuch) {
  ScriptedIO io("#3100" + std::string(50, 'x'));
  io.endError = IOError(IOERR_DEVICE_VANISHED, "gone");
  EXPECT_EQ(IOErrorCondition(test::ErrorOf([&] { BlockReader(io, kCap, 0.0).Read(); })), IOERR_DEVICE_VANISHED);
}

TEST(ServerBlockReader, LargeBlocksArriveInGrowingChunks) {
  const std::string data(300000, 'w');
  ScriptedIO io(Block(data) + "\n");
  EXPECT_EQ(BlockReader(io, BlockReader::WAVEFORM_CAP, 0.0).Read().size(), data.size());
  EXPECT_LT(io.reads, 30);
  EXPECT_EQ(io.Remaining(), 0u);
}

// The whole transfer has one deadline: Timeout plus the declared length at the line rate. A lying header, a drip
// and a drop mid-block each end after at most one Timeout of silence, however long the declared length would take
// at 9600 baud (2 ms a byte); a length other than the preamble's is refused at once.
TEST(ServerBlockReader, OneDeadlineAndAtMostOneTimeoutOfSilence) {
  const struct {
    const char* name;
    std::string reply;
    double microsPerByte, msPerByte;
    std::int32_t timeout;
    std::optional<std::size_t> expected;  // the preamble's length
    const char* says;                     // nullptr: the block is read
  } cases[] = {
      // A 8192-byte chunk takes 41 ms, within the timeout; the 20000 bytes take 100 ms.
      {"paced beyond the timeout", Block(std::string(20000, 'd')) + "\n", 5, 0.0, 60, {}, "declared bytes received"},
      {"paced within the line rate", Block(std::string(20000, 'd')) + "\n", 5, 0.01, 60, {}, nullptr},
      {"lying header", "#8160000001234", 0, 2.0, 50, {}, "of 16000000 declared bytes received, then silence for 50 ms"},
      {"drop mid-block", "#41000" + std::string(500, 'x'), 0, 2.0, 50, {}, "then silence for 50 ms"},
      {"not the preamble's length", "#41000" + std::string(1000, 'x'), 0, 2.0, 50, 2000,
       "1000 bytes declared, 2000 announced"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    ScriptedIO io(c.reply);
    io.microsPerByte = c.microsPerByte;
    io.SetTimeout(c.timeout);
    BlockReader reader(io, BlockReader::WAVEFORM_CAP, c.msPerByte);
    if (c.expected) reader.Expect(*c.expected);
    const ScopeError e = test::ErrorOf([&] { reader.Read(); });
    if (c.says == nullptr) {
      EXPECT_EQ(e.Number(), 0) << e.Description();
    } else {
      EXPECT_NE(e.Description().find(c.says), std::string::npos) << e.Description();
    }
    EXPECT_LE(io.longestReadTimeout, c.timeout);
    EXPECT_EQ(io.Timeout(), c.timeout);
  }
}

}  // namespace
}  // namespace cvn73100::server
