#include "cli/ConsoleHost.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/cli/CliRunner.h"

namespace cvn73100 {
namespace {

constexpr int ERROR_BOX = MsgBoxStyle::OKOnly | MsgBoxStyle::Information | MsgBoxStyle::SetForeground;
constexpr int QUESTION = MsgBoxStyle::OKCancel | MsgBoxStyle::Exclamation;
constexpr long OVERWRITE_PROMPT = 0x2;

// The tests run without a terminal on standard input: a question is answered Cancel unless --yes.
struct BoxCase {
  bool json;
  bool assumeYes;
  std::string title;
  int style;
  int answer;
  bool onStdout;
  bool error;
  int cancelled;
};

class ConsoleHostBoxes : public ::testing::TestWithParam<BoxCase> {};

TEST_P(ConsoleHostBoxes, RoutesAndAnswers) {
  const BoxCase& c = GetParam();
  std::ostringstream out, err;
  ConsoleHost host(out, err);
  host.SetJson(c.json);
  host.SetAssumeYes(c.assumeYes);
  host.SetErrorTitles({"Setups Error"});
  EXPECT_EQ(host.MsgBox(0, "line 1\r\nline 2", c.style, c.title), c.answer);
  const std::string shown = "== " + c.title + " ==\nline 1\nline 2\n";
  EXPECT_EQ(out.str().find(shown) != std::string::npos, c.onStdout) << out.str();
  EXPECT_EQ(err.str().find(shown) != std::string::npos, !c.onStdout) << err.str();
  EXPECT_EQ(host.ErrorShown(), c.error);
  EXPECT_EQ(host.Cancelled(), c.cancelled);
  ASSERT_EQ(host.Boxes().size(), 1u);
  EXPECT_EQ(host.Boxes()[0].prompt, "line 1\r\nline 2");
}

INSTANTIATE_TEST_SUITE_P(
    Console, ConsoleHostBoxes,
    ::testing::Values(BoxCase{false, false, "Result", ERROR_BOX, MsgBoxResult::OK, true, false, 0},
                      BoxCase{false, false, "Setups Error", ERROR_BOX, MsgBoxResult::OK, false, true, 0},
                      BoxCase{true, false, "Result", ERROR_BOX, MsgBoxResult::OK, false, false, 0},
                      BoxCase{false, false, "Send Setup", QUESTION, MsgBoxResult::Cancel, true, false, 1},
                      BoxCase{false, true, "Send Setup", QUESTION, MsgBoxResult::OK, true, false, 0}));

TEST(ConsoleHost, SaveDialogAsksBeforeReplacingAFile) {
  const std::filesystem::path dir = test::MakeTempDir("cvnscope-host");
  const std::string path = (dir / "s1.scp").string();
  std::ostringstream out, err;
  ConsoleHost host(out, err);
  FileDialogRequest request;
  request.flags = OVERWRITE_PROMPT;
  request.filterIndex = 2;

  EXPECT_FALSE(host.GetSaveFileName(request)) << "no answer set: the dialog is cancelled";
  host.SetFileAnswer(path);
  ASSERT_TRUE(host.GetSaveFileName(request));
  EXPECT_EQ(host.GetSaveFileName(request)->filterIndex, 2);
  std::ofstream(path) << "old";
  EXPECT_FALSE(host.GetSaveFileName(request)) << "an existing file is kept without a terminal";
  EXPECT_EQ(host.Cancelled(), 1);
  request.flags = 0;
  EXPECT_EQ(host.GetSaveFileName(request)->path, path);
  host.SetAssumeYes(true);
  request.flags = OVERWRITE_PROMPT;
  EXPECT_EQ(host.GetSaveFileName(request)->path, path);
  std::filesystem::remove_all(dir);
}

}  // namespace
}  // namespace cvn73100
