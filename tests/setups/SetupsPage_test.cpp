#include <gtest/gtest.h>

#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "connection/CCvn73100EZ.h"
#include "control/Cvn73100Scope.h"
#include "diagnostics/CDebug.h"
#include "dialogs/Messages.h"
#include "platform/Components.h"
#include "platform/Os.h"
#include "server/Cvn73100Server.h"
#include "setups/CSetupFile.h"
#include "setups/Cvn73100PPSetup.h"
#include "setups/SetupsCvn73100Scope.h"
#include "tests/support/ScriptedHost.h"
#include "tests/support/SimulatedScope.h"
#include "tests/support/TempDir.h"

namespace cvn73100 {
namespace {

constexpr WindowHandle kPageWindow = 4711;
constexpr int kConfirm = 65585;
constexpr int kError = 65600;
constexpr const char* kIcon = "CurrentScopeSetup";
constexpr const char* kIdentity = "Corvane Technologies,73135D,QX40001234,A.02.10";

std::string Msg(int number) { return Messages::Load(number); }

// A message box shown over the page.
void ExpectBox(const test::ScriptedHost::Box& box, const std::string& title, const std::string& prompt, int style) {
  EXPECT_EQ(box.title, title);
  EXPECT_EQ(box.prompt, prompt);
  EXPECT_EQ(box.style, style);
  EXPECT_EQ(box.parent, kPageWindow);
}

std::size_t FileCount(const std::filesystem::path& dir) {
  std::size_t n = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(dir)) n += entry.is_regular_file();
  return n;
}

// What the user types into the Add / Edit form before pressing OK, or Cancel.
struct FormAttempt {
  std::string name, comments;
  std::optional<bool> getFromInstrument;
  bool cancel = false;
};

// Draws nothing: records what the page shows and plays the user's part in the form and the menu.
class ScriptedView : public ISetupsPageView {
 public:
  enum class MenuChoice { None, Edit, Copy };

  std::vector<SetupRow> rows;
  int selected = -2;
  SetupsPageButtons buttons;
  std::string fontName;
  int fontSize = 0;
  bool changed = false;
  std::deque<FormAttempt> attempts;
  std::vector<FrmSetup> forms;  // each as it was shown
  MenuChoice menuChoice = MenuChoice::None;
  int menusShown = 0;

  WindowHandle Window() const override { return kPageWindow; }
  void ShowRows(const std::vector<SetupRow>& r, int s) override { rows = r, selected = s; }
  void EnableButtons(const SetupsPageButtons& b) override { buttons = b; }
  void SetFont(const std::string& name, int size) override { fontName = name, fontSize = size; }
  void SetChanged(bool c) override { changed = c; }
  void ShowSetupForm(FrmSetup& form) override {
    forms.push_back(form);
    while (form.IsOpen() && !attempts.empty()) {
      const FormAttempt a = attempts.front();
      attempts.pop_front();
      if (a.cancel) return form.CommandCancel_Click();
      form.SetName(a.name);
      form.SetComments(a.comments);
      if (a.getFromInstrument) form.SetGetSetupFromInstrument(*a.getFromInstrument);
      form.CommandOK_Click();
    }
  }
  void ShowPopupMenu(FrmSetupMenu& menu) override {
    ++menusShown;
    if (menuChoice == MenuChoice::Edit) menu.Edit_Click();
    if (menuChoice == MenuChoice::Copy) menu.Copy_Click();
  }
};

// The page over a control connected to the simulated 73135D at GPIB0::7.
class SetupsPageTest : public ::testing::Test {
 protected:
  void SetUp() override {
    os.SetTempPath(dir.string() + "/");
    Os::SetCurrent(&os);
    Messages::SetLanguageBase(Messages::ENGLISH);
    server::RegisterAutomationServer();
    Components::SetIOManagerFactory([this] { return sim.manager; });
    control = std::make_unique<Cvn73100Scope>();
    control->SetTXDelay(0);
    control->SetFontName("DejaVu Sans");
    control->SetFontSize(11);
    control->Setups()->SetInitialDirectory(dir.string());
    control->Initialize();
    page = std::make_unique<Cvn73100PPSetup>(view);
    page->PropertyPage_Initialize();
    page->PropertyPage_SelectionChanged(*control);
  }
  void TearDown() override {
    page.reset();
    control.reset();
    CDebug::SetInstance(nullptr);
    Os::SetCurrent(nullptr);
  }

  SetupsCvn73100Scope& Working() { return *page->WorkingSetups(); }
  std::string Path(const std::string& name) const { return temp.Path(name); }
  void Add(const std::string& name, bool fetch, const std::string& comments = "") {
    view.attempts.push_back({name, comments, fetch});
    page->CommandAdd_Click();
  }
  void Select(const std::string& name) {
    for (std::size_t i = 0; i < view.rows.size(); ++i) {
      if (view.rows[i].name == name) return page->ListViewSetup_Click(static_cast<int>(i));
    }
    FAIL() << "no row " << name;
  }
  // The one row with the current-setup icon ("" unless exactly one has it).
  std::string IconRow() const {
    std::vector<std::string> marked;
    for (const auto& row : view.rows)
      if (row.icon == kIcon) marked.push_back(row.name);
    return marked.size() == 1 ? marked[0] : "";
  }
  std::vector<std::string> Names() {
    std::vector<std::string> names;
    for (const auto& setup : Working()) names.push_back(setup->Name());
    return names;
  }
  // Everything about the setups that the control would save, and the instrument's settings.
  std::pair<std::vector<std::pair<std::string, Variant>>, sim::ScopeState> Snapshot() {
    return {Saved(Working()), sim.scope->State()};
  }
  static std::vector<std::pair<std::string, Variant>> Saved(const SetupsCvn73100Scope& setups) {
    MemoryPropertyBag bag;
    setups.WriteProperties(bag);
    return bag.Entries();
  }
  std::string WriteSetupFile(const std::string& name, const std::string& model, const std::string& version,
                             const Bytes& learnString, const std::string& comments = "") {
    CSetupFile file;
    file.SetModel(model);
    file.SetVersion(version);
    file.SetLearnString(learnString);
    file.SetUserComments(comments);
    file.WriteFile(Path(name));
    return Path(name);
  }
  static sim::ScopeState OtherState() {
    sim::ScopeState state;
    state.timebaseRange = 5e-3;
    return state;
  }

  test::TempDir temp{"cvnsetuppage"};
  const std::filesystem::path& dir = temp.path();
  FakeOs os;
  test::ScriptedHost host;
  test::ScopedHost scoped{host};
  test::SimulatedScope sim;
  std::unique_ptr<Cvn73100Scope> control;
  ScriptedView view;
  std::unique_ptr<Cvn73100PPSetup> page;
};

TEST(FrmSetupTest, OKValidationKeepsTheFormOpenWithTheRightMessage) {
  test::ScriptedHost host;
  test::ScopedHost scoped{host};
  Messages::SetLanguageBase(Messages::ENGLISH);
  const struct {
    std::string name, comments;
    int title, text;  // 0: the form closes with OK, no box
  } cases[] = {
      {"", "", 715, 631},      {"my setup", "", 715, 716}, {"a|b", "", 715, 716},       {" lead", "", 715, 716},
      {"ok", "x|y", 717, 718}, {"a b", "x|y", 715, 716},   {"ok", "with spaces", 0, 0},
  };
  for (const auto& c : cases) {
    host.boxes.clear();
    FrmSetup form;
    form.Update(FrmSetup::Purpose::Add, c.name, c.comments, true);
    form.SetWindow(kPageWindow);
    EXPECT_EQ(form.CommandOK_Click(), c.text == 0) << c.name << "/" << c.comments;
    EXPECT_EQ(form.IsOpen(), c.text != 0);
    ASSERT_EQ(host.boxes.size(), c.text == 0 ? 0u : 1u) << c.name;
    if (c.text != 0) ExpectBox(host.boxes[0], Msg(c.title), Msg(c.text), kError);
  }
}

TEST_F(SetupsPageTest, BindingListsTheControlsSetupsWithTheIconAndFont) {
  page->PropertyPage_Terminate();
  auto setups = control->Setups();
  setups->Add("First")->SetComments("one");
  setups->Add("Second");
  setups->Add("Third");
  setups->SetLastInstrumentSetup("second");
  page->PropertyPage_Initialize();
  page->PropertyPage_SelectionChanged(*control);
  EXPECT_EQ(view.rows, (std::vector<SetupRow>{{"First", "one", ""}, {"Second", "", kIcon}, {"Third", "", ""}}));
  EXPECT_EQ(view.selected, 0);
  EXPECT_EQ(view.fontName, "DejaVu Sans");
  EXPECT_EQ(view.fontSize, 11);
  // The page works on a copy: the control's own setups are other objects.
  EXPECT_NE(Working().item("First"), setups->item("First"));
}

TEST_F(SetupsPageTest, AddFetchesWhenTickedAndRemembersTheTick) {
  Add("Fetched", true, "  first  ");
  EXPECT_TRUE(view.forms.at(0).GetSetupFromInstrument() && view.forms[0].CheckBoxVisible());
  EXPECT_EQ(Working().item("Fetched")->Model(), "73135D");
  EXPECT_EQ(view.rows, (std::vector<SetupRow>{{"Fetched", "first", kIcon}}));
  EXPECT_EQ(view.buttons, (SetupsPageButtons{true, true, true, true}));

  Add("Empty", false);
  EXPECT_EQ(view.buttons, (SetupsPageButtons{true, true, false, false})) << "nothing to send or save";
  EXPECT_FALSE(Working().item("Empty")->LearnString().has_value());
  EXPECT_FALSE(Working().GetLearnStringOnAdd());
  view.attempts = {{"", "", std::nullopt, true}};
  page->CommandAdd_Click();
  EXPECT_FALSE(view.forms[2].GetSetupFromInstrument()) << "the form is preset from the last choice";
  EXPECT_EQ(view.rows[1], (SetupRow{"Empty", "", ""}));
  EXPECT_TRUE(view.changed);
}

TEST_F(SetupsPageTest, AddingANameThatExistsInAnyCaseIsRefused) {
  Add("Setup1", false, "original");
  Add("setup1", true, "other");
  ASSERT_EQ(host.boxes.size(), 1u);
  ExpectBox(host.boxes[0], Msg(105), "Error.  Setup names must be unique.", kError);
  EXPECT_EQ(view.rows, (std::vector<SetupRow>{{"Setup1", "original", ""}}));
  EXPECT_FALSE(Working().GetLearnStringOnAdd()) << "a refused add stores nothing";
}

TEST_F(SetupsPageTest, EveryCancelLeavesSetupsAndInstrumentUnchanged) {
  Add("Kept", true, "note");
  Add("Other", true);
  WriteSetupFile("Kept.scp", "73135D", "X.XX.XX", Bytes{1, 2, 3}, "from file");
  // The instrument has moved on since the setups were fetched: a fetch or a send would show.
  sim.scope->SetState(OtherState());
  Select("Kept");
  page->PropertyPage_ApplyChanges();
  ASSERT_FALSE(page->Changed());

  const auto cancelBox = [&] { host.msgBoxAnswers = {MsgBoxResult::Cancel}; };
  const struct {
    const char* what;
    std::function<void()> script, act;
    std::string title;  // of the confirmation; empty: none is asked
  } cases[] = {
      {"remove", cancelBox, [&] { page->CommandRemove_Click(); }, "Remove Setup"},
      {"get overwrite", cancelBox, [&] { page->CommandGetFromInstrument_Click(); }, "Getting Setup"},
      {"send", cancelBox, [&] { page->CommandSendToInstrument_Click(); }, "Send Setup"},
      {"open overwrite",
       [&] {
         host.openFileAnswers = {FileDialogResult{Path("Kept.scp"), 2}};
         cancelBox();
       },
       [&] { page->CommandGetFromFile_Click(); }, "Open Setup File"},
      {"open dialog", [&] { host.openFileAnswers = {std::nullopt}; }, [&] { page->CommandGetFromFile_Click(); }, ""},
      {"save dialog", [&] { host.saveFileAnswers = {std::nullopt}; }, [&] { page->CommandSendToFile_Click(); }, ""},
      {"add form",
       [&] {
         view.attempts = {{"New", "", true, true}};
       },
       [&] { page->CommandAdd_Click(); }, ""},
      {"edit form",
       [&] {
         view.attempts = {{"Renamed", "changed", false, true}};
         view.menuChoice = ScriptedView::MenuChoice::Edit;
       },
       [&] { page->ListViewSetup_MouseUp(Cvn73100PPSetup::RIGHT_BUTTON); }, ""},
  };
  for (const auto& c : cases) {
    const auto before = Snapshot();
    const auto rows = view.rows;
    const std::size_t files = FileCount(dir);
    host.boxes.clear();
    c.script();
    c.act();
    ASSERT_EQ(host.boxes.size(), c.title.empty() ? 0u : 1u) << c.what;
    if (!c.title.empty()) {
      EXPECT_EQ(host.boxes[0].title, c.title);
      EXPECT_EQ(host.boxes[0].style, kConfirm);
    }
    EXPECT_TRUE(Snapshot() == before) << c.what;
    EXPECT_EQ(view.rows, rows) << c.what;
    EXPECT_FALSE(page->Changed()) << c.what;
    EXPECT_EQ(FileCount(dir), files) << c.what;
  }
}

TEST_F(SetupsPageTest, AfterGetOrSendExactlyOneRowCarriesTheIcon) {
  Add("A", true);
  const sim::ScopeState stateA = sim.scope->State();
  sim.scope->SetState(OtherState());
  Add("B", true);
  Add("C", false);
  EXPECT_EQ(IconRow(), "B");

  Select("A");
  page->CommandSendToInstrument_Click();
  EXPECT_EQ(sim.scope->State(), stateA);
  EXPECT_EQ(IconRow(), "A");
  EXPECT_EQ(Working().LastInstrumentSetup(), "A");

  Select("C");
  page->CommandGetFromInstrument_Click();  // C holds nothing yet: no question
  EXPECT_EQ(host.boxes.size(), 1u);
  EXPECT_EQ(Working().item("C")->LearnString(), Working().item("A")->LearnString());
  EXPECT_EQ(IconRow(), "C");

  Select("B");
  page->CommandGetFromInstrument_Click();  // overwrite question answered OK
  EXPECT_EQ(IconRow(), "B");
  EXPECT_FALSE(control->Connection()->PropertyPageMode());
}

TEST_F(SetupsPageTest, SendReportsRefusedSetupsAndInstrumentErrors) {
  WriteSetupFile("Foreign.scp", "73199B", "A.01.00", Bytes{1, 2, 3});
  WriteSetupFile("Broken.scp", "73135D", "X.XX.XX", Bytes{1, 2, 3});
  Add("Good", true);
  const struct {
    const char* file;  // nullptr: the fetched setup
    bool staleError;   // an error already queued before the send
    std::vector<std::string> lines;
    bool instrumentChanged;
  } cases[] = {
      {"Foreign.scp", false, {Msg(691)}, false},
      {"Broken.scp", false, {Msg(696), Msg(697)}, false},
      {nullptr, true, {}, true},
  };
  for (const auto& c : cases) {
    std::string name = "Good";
    if (c.file) {
      host.openFileAnswers = {FileDialogResult{Path(c.file), 1}};
      page->CommandGetFromFile_Click();
      name = std::filesystem::path(c.file).stem().string();
    }
    sim.scope->SetState(OtherState());
    if (c.staleError) sim.scope->Send(":NOSUCH:COMMAND");
    Select(name);
    host.boxes.clear();
    page->CommandSendToInstrument_Click();
    ASSERT_EQ(host.boxes.size(), c.lines.empty() ? 1u : 2u) << name;
    EXPECT_EQ(sim.scope->State() != OtherState(), c.instrumentChanged) << name;
    if (c.lines.empty()) continue;
    EXPECT_EQ(host.boxes[1].title, "Setups Error");
    EXPECT_EQ(host.boxes[1].style, kError);
    EXPECT_EQ(host.boxes[1].prompt.rfind(c.lines[0], 0), 0u) << host.boxes[1].prompt;
    if (c.lines.size() > 1) {
      EXPECT_NE(host.boxes[1].prompt.find("\r\n" + c.lines[1] + "\r\n"), std::string::npos) << host.boxes[1].prompt;
    }
  }
  EXPECT_TRUE(sim.scope->Errors().empty());
}

TEST_F(SetupsPageTest, OpenAddsOrOverwritesAfterAskingAndFollowsTheFolder) {
  const std::filesystem::path sub = dir / "files";
  std::filesystem::create_directory(sub);
  WriteSetupFile("files/Bench.scp", "73135D", "A.02.10", Bytes{9, 8, 7}, "bench");
  host.openFileAnswers = {FileDialogResult{(sub / "Bench.scp").string(), 3}};
  page->CommandGetFromFile_Click();

  ASSERT_EQ(host.openFileRequests.size(), 1u);
  EXPECT_EQ(host.openFileRequests[0].initialDirectory, dir.string());
  EXPECT_EQ(Working().InitialDirectory(), sub.string());
  EXPECT_EQ(page->FilterIndex(), 3);
  EXPECT_EQ(view.rows, (std::vector<SetupRow>{{"Bench", "bench", ""}}));
  EXPECT_EQ(Working().item("Bench")->LearnString(), LearnString(Bytes{9, 8, 7}));

  // A file of the same name in other case asks first; OK overwrites.
  WriteSetupFile("BENCH.stp", "73135D", "A.02.10", Bytes{1, 1}, "newer");
  host.openFileAnswers = {FileDialogResult{Path("BENCH.stp"), 1}};
  page->CommandGetFromFile_Click();
  EXPECT_EQ(host.openFileRequests[1].initialDirectory, sub.string());
  ASSERT_EQ(host.boxes.size(), 1u);
  EXPECT_EQ(Working().item("Bench")->LearnString(), LearnString(Bytes{1, 1}));
  EXPECT_EQ(view.rows, (std::vector<SetupRow>{{"Bench", "newer", ""}}));

  // A file that is no setup file adds nothing.
  std::filesystem::create_directory(dir / "junk");
  temp.Make("junk/Junk.scp", "not a setup");
  host.openFileAnswers = {FileDialogResult{Path("junk/Junk.scp"), 1}};
  page->CommandGetFromFile_Click();
  ASSERT_EQ(host.boxes.size(), 2u);
  ExpectBox(host.boxes[1], "Setups Error", "The selected file is not a setup file.", kError);
  EXPECT_EQ(Names(), std::vector<std::string>{"Bench"});
}

TEST_F(SetupsPageTest, SaveAsWritesTheSelectedSetupThatOpenReadsBack) {
  Add("Saved", true, "keep me");
  host.saveFileAnswers = {FileDialogResult{Path("copy"), 2}};
  page->CommandSendToFile_Click();
  ASSERT_EQ(host.saveFileRequests.size(), 1u);
  EXPECT_EQ(host.saveFileRequests[0].fileName, "Saved");
  CSetupFile written;
  written.ReadFile(Path("copy.scp"));
  EXPECT_EQ(written.LearnString(), Working().item("Saved")->LearnString());

  Select("Saved");
  host.saveFileAnswers = {FileDialogResult{Path("missing/folder/x.scp"), 1}};
  page->CommandSendToFile_Click();
  ASSERT_EQ(host.boxes.size(), 1u);
  ExpectBox(host.boxes[0], "Setups Error", "Error while saving to file.", kError);
}

TEST_F(SetupsPageTest, EditRenamesAndReKeysTheSetup) {
  Add("Alpha", true, "a");
  Add("Beta", false);
  Select("Alpha");
  const LearnString learned = Working().item("Alpha")->LearnString();
  view.menuChoice = ScriptedView::MenuChoice::Edit;
  view.attempts = {{"Gamma", "g", false}};
  page->ListViewSetup_MouseUp(Cvn73100PPSetup::RIGHT_BUTTON);

  ASSERT_EQ(view.forms.size(), 3u);
  EXPECT_EQ(std::make_tuple(view.forms[2].Caption(), view.forms[2].Name(), view.forms[2].Comments()),
            std::make_tuple(std::string("Edit Setup"), std::string("Alpha"), std::string("a")));
  EXPECT_EQ(Names(), (std::vector<std::string>{"Beta", "Gamma"}));
  EXPECT_EQ(Working().item("Gamma")->LearnString(), learned);
  EXPECT_EQ(Working().LastInstrumentSetup(), "") << "a renamed setup is no longer the current one";
  EXPECT_EQ(view.rows, (std::vector<SetupRow>{{"Gamma", "g", ""}, {"Beta", "", ""}}));

  // Another setup's name in other case is refused; the same name in other case is a rename in place.
  view.attempts = {{"BETA", "g", false}};
  page->ListViewSetup_DblClick(0);
  ASSERT_EQ(host.boxes.size(), 1u);
  EXPECT_EQ(host.boxes[0].prompt, Msg(630));
  view.attempts = {{"GAMMA", "g", false}};
  page->ListViewSetup_DblClick(0);
  EXPECT_EQ(Names(), (std::vector<std::string>{"Beta", "GAMMA"}));
  EXPECT_EQ(view.rows[0].name, "GAMMA");
}

TEST_F(SetupsPageTest, CopyNamePutsTheSelectedNameOnTheClipboard) {
  Add("First", false);
  Add("Second", false);
  view.menuChoice = ScriptedView::MenuChoice::Copy;
  const struct {
    int row;
    const char* clipboard;
  } cases[] = {{0, "First"}, {1, "Second"}, {-1, ""}};
  for (const auto& c : cases) {
    host.clipboard = "stale";
    page->ListViewSetup_Click(c.row);
    page->ListViewSetup_MouseUp(Cvn73100PPSetup::RIGHT_BUTTON);
    EXPECT_EQ(host.clipboard, c.clipboard);
  }
  page->ListViewSetup_MouseUp(1);  // the left button shows no menu
  EXPECT_EQ(view.menusShown, 3);
}

TEST_F(SetupsPageTest, RemoveSelectsANeighbourAndClearsTheCurrentMark) {
  Add("A", false);
  Add("B", true);
  Add("C", false);
  for (const int selectedAfter : {1, 0, -1}) {
    if (selectedAfter == 1) Select("B");
    page->CommandRemove_Click();
    EXPECT_EQ(view.selected, selectedAfter);
  }
  EXPECT_EQ(Working().LastInstrumentSetup(), "") << "B was the current setup";
  EXPECT_EQ(view.buttons, SetupsPageButtons{});
}

TEST_F(SetupsPageTest, ApplyCopiesTheWorkingCopyBackAndStoresTheIdentity) {
  Add("Applied", true, "c");
  EXPECT_EQ(control->Setups()->Count(), 0) << "nothing reaches the control before Apply";

  control->SetSetIOExists(true);  // a raised page flag holds the copy back
  page->PropertyPage_ApplyChanges();
  EXPECT_EQ(control->Setups()->Count(), 0);
  EXPECT_TRUE(page->Changed());
  control->SetSetIOExists(false);

  control->SetAddressInstrumentID("");
  page->PropertyPage_ApplyChanges();
  ASSERT_EQ(control->Setups()->Count(), 1);
  EXPECT_EQ(Saved(*control->Setups()), Saved(Working()));
  EXPECT_NE(control->Setups()->item("Applied"), Working().item("Applied"));
  EXPECT_FALSE(view.changed);
  EXPECT_EQ(control->AddressInstrumentID(), kIdentity);

  // Without a connection the identity is not asked for (asking would open one).
  control->CloseConnection();
  control->SetAddressInstrumentID("kept");
  page->PropertyPage_ApplyChanges();
  EXPECT_EQ(control->AddressInstrumentID(), "kept");
  EXPECT_EQ(page->GetInstrumentID(), "");
}

}  // namespace
}  // namespace cvn73100
