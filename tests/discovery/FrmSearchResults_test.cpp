#include "discovery/FrmSearchResults.h"

#include <gtest/gtest.h>

#include <array>

#include "dialogs/Messages.h"
#include "platform/ScopeError.h"

namespace cvn73100 {
namespace {

using Ports = std::array<bool, 4>;

FrmSearchResults Filled(const Ports& found, const Ports& included) {
  Messages::SetLanguageBase(Messages::ENGLISH);
  FrmSearchResults dialog;
  for (int i = 0; i < 4; ++i) {
    dialog.SetInstrumentFoundOnCOMPort(i, found[static_cast<std::size_t>(i)]);
    dialog.SetIncludedCOMPort(i, included[static_cast<std::size_t>(i)]);
  }
  dialog.Update();
  return dialog;
}

TEST(FrmSearchResults, UpdateNamesTheSilentPorts) {
  const FrmSearchResults dialog = Filled({true, false, true, false}, {true, true, true, true});
  EXPECT_EQ(dialog.Caption(), "Search Instruments Results");
  EXPECT_EQ(dialog.ContinueCaption(), "OK");
  EXPECT_EQ(dialog.Heading(), "Search Complete.");
  EXPECT_EQ(dialog.FrameCaption(), "Exclude from Future Searches");
  EXPECT_EQ(dialog.Explanation(),
            "The following COM ports are on your system but no instruments were found connected to them:\r\n"
            "    COM2\r\n    COM4\r\n\r\n"
            "The parameters for these ports may not be correct or the instruments attached may not be IEEE-488.2 "
            "compliant.\r\n\r\n"
            "If any of these ports have instruments connected to them, go to the Search Criteria property page "
            "and set the RS-232 parameters.");
}

TEST(FrmSearchResults, BoxesFollowFoundAndIncludedAndContinueHandsBackTheTicks) {
  struct Case {
    Ports found, included;
    std::array<int, 4> shown;  // -1 disabled, else the box's value
    std::array<int, 4> ticks;  // what the user sets (-1: leaves it)
    Ports after;
  };
  const Case cases[] = {
      {{false, false, false, false},
       {true, true, true, true},
       {0, 0, 0, 0},
       {1, -1, -1, -1},
       {false, true, true, true}},
      // An excluded port shows its tick; clearing it includes the port again.
      {{true, false, true, false},
       {true, false, true, true},
       {-1, 1, -1, 0},
       {-1, 0, -1, -1},
       {true, true, true, true}},
      // A port with an instrument cannot be excluded here, and keeps what it had.
      {{true, true, true, true}, {false, true, true, true}, {-1, -1, -1, -1}, {0, 1, 1, 1}, {false, true, true, true}},
  };
  for (const Case& c : cases) {
    FrmSearchResults dialog = Filled(c.found, c.included);
    dialog.Show();
    for (int i = 0; i < 4; ++i) {
      const auto slot = static_cast<std::size_t>(i);
      EXPECT_EQ(dialog.CheckEnabled(i) ? dialog.CheckValue(i) : -1, c.shown[slot]) << "COM" << i + 1;
      if (c.ticks[slot] >= 0) dialog.CheckCOM1_Click(i, c.ticks[slot]);
    }
    dialog.CommandContinue_Click();
    EXPECT_FALSE(dialog.Visible());
    for (int i = 0; i < 4; ++i)
      EXPECT_EQ(dialog.IncludedCOMPort(i), c.after[static_cast<std::size_t>(i)]) << "COM" << i + 1;
  }
}

TEST(FrmSearchResults, IndexOutsideTheFourPortsIsASubscriptError) {
  FrmSearchResults dialog;
  for (int index : {-1, 4}) {
    try {
      (void)dialog.IncludedCOMPort(index);
      ADD_FAILURE() << index;
    } catch (const ScopeError& error) {
      EXPECT_EQ(error.Number(), ERR_SUBSCRIPT_OUT_OF_RANGE);
    }
  }
}

}  // namespace
}  // namespace cvn73100
