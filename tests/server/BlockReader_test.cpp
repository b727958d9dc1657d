#include "server/BlockReader.h"

#include <gtest/gtest.h>

#include <optional>

#include "server/ServerError.h"
#include "tests/server/ScriptedIO.h"

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
  try {
    BlockReader(io, kCap, 0.0).Read();
    FAIL() << "no error";
  } catch (const ScopeError& e) {
    EXPECT_EQ(IOErrorCondition(e), IOERR_DEVICE_VANISHED);
  }
}

TEST(ServerBlockReader, LargeBlocksArriveInGrowingChunks) {
  const std::string data(300000, 'w');
  ScriptedIO io(Block(data) + "\n");
  EXPECT_EQ(BlockReader(io, BlockReader::WAVEFORM_CAP, 0.0).Read().size(), data.size());
  EXPECT_LT(io.reads, 30);
  EXPECT_EQ(io.Remaining(), 0u);
}

// Every chunk alone would arrive within Timeout; the transfer as a whole does not, and must fail.
TEST(ServerBlockReader, TheWholeTransferHasOneDeadline) {
  ScriptedIO io(Block(std::string(20000, 'd')) + "\n");
  io.microsPerByte = 5;  // a 8192-byte chunk takes 41 ms, the 20000 bytes 100 ms
  io.SetTimeout(60);
  try {
    BlockReader(io, kCap, 0.0).Read();
    FAIL() << "no error";
  } catch (const ScopeError& e) {
    EXPECT_EQ(ServerErrorCondition(e), SERVERERR_BLOCK_SHORT) << e.Description();
  }
  EXPECT_EQ(io.Timeout(), 60);
}

TEST(ServerBlockReader, TheDeadlineGrowsWithTheDeclaredLengthAtTheLineRate) {
  ScriptedIO io(Block(std::string(20000, 'd')) + "\n");
  io.microsPerByte = 5;
  io.SetTimeout(60);
  EXPECT_EQ(BlockReader(io, kCap, 0.01).Read().size(), 20000u);  // 60 ms + 200 ms for the data
}

// A lying header, a drip and a drop mid-block each end after at most one Timeout of silence, however long the
// declared length would take at 9600 baud (2 ms a byte); a length other than the preamble's is refused at once.
TEST(ServerBlockReader, SilenceAndWrongLengthsEndTheReadWithinOneTimeout) {
  const struct {
    const char* name;
    std::string reply;
    std::optional<std::size_t> expected;
    const char* says;
  } cases[] = {
      {"lying header", "#8160000001234", std::nullopt, "of 16000000 declared bytes received, then silence for 50 ms"},
      {"drop mid-block", "#41000" + std::string(500, 'x'), std::nullopt, "then silence for 50 ms"},
      {"not the preamble's length", "#41000" + std::string(1000, 'x'), 2000, "1000 bytes declared, 2000 announced"},
  };
  for (const auto& c : cases) {
    ScriptedIO io(c.reply);
    io.SetTimeout(50);
    BlockReader reader(io, BlockReader::WAVEFORM_CAP, 2.0);
    if (c.expected) reader.Expect(*c.expected);
    try {
      reader.Read();
      ADD_FAILURE() << c.name << ": no error";
    } catch (const ScopeError& e) {
      EXPECT_NE(e.Description().find(c.says), std::string::npos) << c.name << ": " << e.Description();
    }
    EXPECT_LE(io.longestReadTimeout, 50) << c.name;
  }
}

}  // namespace
}  // namespace cvn73100::server
