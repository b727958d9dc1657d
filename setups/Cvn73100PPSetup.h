#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/Event.h"
#include "platform/Host.h"
#include "platform/ScopeError.h"
#include "setups/FrmSetup.h"
#include "setups/FrmSetupMenu.h"
#include "setups/ISetupsPageView.h"

namespace cvn73100 {

class IPPCvn73100Scope;
class SetupCvn73100Scope;
class SetupsCvn73100Scope;

// The Setups property page: manages a working copy of a control's setups (add, remove, fetch from and
// send to the instrument, open and save setup files, rename) and hands it back to the control on
// Apply. Fetching and sending act on the instrument at once; every change to the collection reaches
// the control only through Apply.
//
// A front end drives it like this:
//   Cvn73100PPSetup page(view);
//   page.PropertyPage_Initialize();
//   page.PropertyPage_SelectionChanged(control);   // rows, font and buttons arrive through the view
//   page.ListViewSetup_Click(row);                 // then any button, list or menu event
//   page.CommandSendToInstrument_Click();
//   page.PropertyPage_ApplyChanges();              // the working copy becomes the control's setups
//   page.PropertyPage_Terminate();
// and calls TimerIdleProcessing_Timer every IDLE_INTERVAL_MS while the page is shown. Message boxes
// and file dialogs go through Host::Current(); the Add / Edit form and the pop-up menu through the
// view. Errors of the setup operations are shown in an OK box titled "Setups Error" holding the
// error's description; nothing escapes to the caller.
class Cvn73100PPSetup {
 public:
  static constexpr const char* CLASS_NAME = "Cvn73100PPSetup";
  // Icon key of the row of the setup last fetched from or sent to the instrument.
  static constexpr const char* CURRENT_SETUP_ICON = "CurrentScopeSetup";
  // File-dialog flags: long names, file must exist, hide read-only / long names, path must exist, hide
  // read-only, prompt before overwriting.
  static constexpr long OPEN_FILE_FLAGS = 0x201004;
  static constexpr long SAVE_FILE_FLAGS = 0x200806;
  // Extension given to a saved file whose name has none.
  static constexpr const char* DEFAULT_EXTENSION = ".scp";
  // Bits of the button mask the idle timer watches.
  static constexpr std::int32_t MASK_REMOVE = 1;
  static constexpr std::int32_t MASK_GET = 2;
  static constexpr std::int32_t MASK_SEND = 4;
  static constexpr std::int32_t MASK_SAVE = 8;
  static constexpr std::int32_t LARGEST_MASK_VALUE = 15;
  // How often a front end should call TimerIdleProcessing_Timer.
  static constexpr int IDLE_INTERVAL_MS = 250;
  // Mouse button and key codes of the list events.
  static constexpr int RIGHT_BUTTON = 2;
  static constexpr int KEY_DELETE = 46;
  // Errors drained from the instrument's queue before a send, at most.
  static constexpr int MAX_STALE_ERRORS = 32;

  // The view must outlive the page.
  explicit Cvn73100PPSetup(ISetupsPageView& view);
  ~Cvn73100PPSetup();
  Cvn73100PPSetup(const Cvn73100PPSetup&) = delete;
  Cvn73100PPSetup& operator=(const Cvn73100PPSetup&) = delete;

  // --- Page events. ---

  // Creates the empty working copy and the file-dialog filter.
  void PropertyPage_Initialize();
  // Binds the page to `control` (which must outlive the binding): the working copy becomes a copy of
  // the control's setups over the control's connection, and the list, font and buttons are redrawn.
  void PropertyPage_SelectionChanged(IPPCvn73100Scope& control);
  // When bound, something changed and none of the link's page flags (SearchIOExists,
  // SearchCriteriaExists, SetIOExists, SetupsExists) is raised: copies the working copy into the
  // control's setups. Then, when the instrument is connected, stores its identity as the control's
  // AddressInstrumentID.
  void PropertyPage_ApplyChanges();
  // Redraws the list and the buttons.
  void PropertyPage_Paint();
  // Unbinds the page and releases the working copy.
  void PropertyPage_Terminate();
  // Re-evaluates the buttons; redraws them when the selection or a setup changed their state.
  void TimerIdleProcessing_Timer();

  // --- Buttons. ---

  void CommandAdd_Click();
  void CommandRemove_Click();
  void CommandGetFromInstrument_Click();
  void CommandSendToInstrument_Click();
  // Open.
  void CommandGetFromFile_Click();
  // Save As.
  void CommandSendToFile_Click();

  // --- The list. Rows count from 0; -1 is no row. ---

  // The user selected `row`.
  void ListViewSetup_Click(int row);
  // Opens Edit Setup on `row`.
  void ListViewSetup_DblClick(int row);
  // Delete asks to remove the selected setup.
  void ListViewSetup_KeyUp(int keyCode);
  // The right button shows the pop-up menu.
  void ListViewSetup_MouseUp(int button);

  // --- The pop-up menu's events. ---

  void frmsetupmenuEvents_EditClick();
  void frmsetupmenuEvents_CopyClick();

  // --- State for drawing and for front ends. ---

  const std::vector<SetupRow>& Rows() const { return m_rows; }
  int SelectedRow() const { return m_iSelectedRow; }
  SetupsPageButtons Buttons() const;
  // The file-dialog filter: (description, patterns) pairs, and the filter last chosen (from 1).
  const std::vector<std::pair<std::string, std::string>>& FileFilter() const { return m_filter; }
  int FilterIndex() const { return m_iFilterIndex; }
  // Whether the working copy holds changes that Apply would hand to the control.
  bool Changed() const { return m_bChanged; }
  bool IsBound() const { return m_control != nullptr; }
  // The working copy (null before PropertyPage_Initialize and after PropertyPage_Terminate).
  std::shared_ptr<SetupsCvn73100Scope> WorkingSetups() const { return m_setups; }
  // The identity of the connected instrument ("manufacturer,model,serial,firmware"); empty when the
  // page is unbound or the instrument is not connected, since asking would open a connection. Raises
  // the server's error when the instrument does not answer.
  std::string GetInstrumentID();

 private:
  IPPCvn73100Scope* Link() const;
  int MsgBox(const std::string& prompt, int style, const std::string& title) const;
  void ShowSetupsError(const std::string& text) const;
  void ShowError(const std::exception& error, int fallbackMessage = 0) const;
  // Whether the working copy holds `name` in any case.
  bool Contains(const std::string& name) const;
  std::shared_ptr<SetupCvn73100Scope> SelectedSetup() const;
  // Runs GetFromInstrument with the connection in property-page mode; false (and the error shown) when
  // it failed.
  bool FetchFromInstrument(SetupCvn73100Scope& setup);
  // Shows `form` through the view; true when it closed with OK.
  bool ShowForm(FrmSetup::Purpose purpose, const std::string& name, const std::string& comments, bool check);
  // The name a setup opened from `path` gets: the file's base name.
  static std::string SetupNameOfFile(const std::string& path);
  // Adopts the folder of a chosen file as the dialogs' initial folder.
  void RememberFolder(const std::string& path);
  FileDialogRequest FileRequest(int titleMessage, long flags, const std::string& fileName) const;
  void OpenFile();
  void SaveFile();

  void FillRows();
  // Puts the current-setup icon on the row of LastInstrumentSetup and takes it off every other row.
  void RefreshIcons();
  void SetChanged();
  // Draws the list and the buttons.
  void Redraw();
  std::int32_t ButtonMask() const;
  // Redraws the buttons when their mask differs from the one drawn last; returns whether it did.
  bool UpdateButtons();

  ISetupsPageView& m_view;
  IPPCvn73100Scope* m_control = nullptr;
  std::shared_ptr<SetupsCvn73100Scope> m_setups;
  std::vector<SetupRow> m_rows;
  int m_iSelectedRow = -1;
  std::vector<std::pair<std::string, std::string>> m_filter;
  int m_iFilterIndex = 1;
  bool m_bChanged = false;
  std::int32_t m_lDrawnMask = -1;
  FrmSetup m_frmsetup;
  FrmSetupMenu m_frmsetupmenu;
  std::vector<EventConnection> m_menuConnections;
};

}  // namespace cvn73100
