#include "setups/Cvn73100PPSetup.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "connection/CCvn73100EZ.h"
#include "connection/IPPCvn73100Scope.h"
#include "diagnostics/CDebug.h"
#include "dialogs/AutoCenter.h"
#include "dialogs/Messages.h"
#include "setups/SetupText.h"
#include "setups/SetupsCvn73100Scope.h"

namespace cvn73100 {
namespace {

constexpr int MSG_CONTROL_ERROR = 105;
constexpr int MSG_SETUP_NAMES_UNIQUE = 630;
constexpr int MSG_SETUPS_ERROR = 650;
constexpr int MSG_GETTING_SETUP = 660;
constexpr int MSG_SELECTION_HAS_SETUP = 661;
constexpr int MSG_OVERWRITE_INSTRUMENT_SETUP = 662;
constexpr int MSG_OPEN_SETUP_FILE = 670;
constexpr int MSG_SETUP_NAME_EXISTS = 671;
constexpr int MSG_OVERWRITE_SETUP = 672;
constexpr int MSG_ERROR_LOADING = 673;
constexpr int MSG_SAVE_SETUP_FILE = 680;
constexpr int MSG_ERROR_SAVING = 681;
constexpr int MSG_SEND_SETUP = 690;
constexpr int MSG_SEND_TERMINATED = 693;
constexpr int MSG_SEND_CHANGES_INSTRUMENT = 694;
constexpr int MSG_OK_TO_CONTINUE = 695;
constexpr int MSG_ERROR_WHILE_SENDING = 696;
constexpr int MSG_SETUP_MAY_BE_WRONG = 697;
constexpr int MSG_REMOVE_SETUP = 700;
constexpr int MSG_SURE_TO_REMOVE = 701;
constexpr int MSG_NAME_FORMAT_TITLE = 715;
constexpr int MSG_NAME_FORMAT = 716;
constexpr int MSG_FILTER_ALL_SCOPE = 720;
constexpr int MSG_FILTER_SCP = 721;
constexpr int MSG_FILTER_STP = 722;
constexpr int MSG_FILTER_ALL = 723;

constexpr const char* LINE_BREAK = "\r\n";
constexpr int CONFIRM_BOX = MsgBoxStyle::OKCancel | MsgBoxStyle::Exclamation | MsgBoxStyle::SetForeground;
constexpr int ERROR_BOX = MsgBoxStyle::OKOnly | MsgBoxStyle::Information | MsgBoxStyle::SetForeground;

std::string Lines(std::initializer_list<std::string> lines) {
  std::string text;
  for (const auto& line : lines) text += (text.empty() ? "" : LINE_BREAK) + line;
  return text;
}

bool IsValidName(const std::string& name) {
  return !name.empty() && name.find(' ') == std::string::npos && name.find('|') == std::string::npos;
}

// Holds the connection in property-page mode for the length of one instrument exchange.
class PropertyPageModeScope {
 public:
  explicit PropertyPageModeScope(CCvn73100EZ* connection) : m_connection(connection) {
    if (m_connection) m_connection->SetPropertyPageMode(true);
  }
  ~PropertyPageModeScope() {
    if (m_connection) m_connection->SetPropertyPageMode(false);
  }
  PropertyPageModeScope(const PropertyPageModeScope&) = delete;
  PropertyPageModeScope& operator=(const PropertyPageModeScope&) = delete;

 private:
  CCvn73100EZ* m_connection;
};

}  // namespace

SetupsPageCaptions SetupsPageCaptions::Load() {
  SetupsPageCaptions c;
  c.page = Messages::Load(600);
  c.nameColumn = Messages::Load(601);
  c.commentsColumn = Messages::Load(602);
  c.add = Messages::Load(603);
  c.remove = Messages::Load(604);
  c.instrumentFrame = Messages::Load(605);
  c.getFromInstrument = Messages::Load(606);
  c.sendToInstrument = Messages::Load(607);
  c.fileFrame = Messages::Load(608);
  c.open = Messages::Load(609);
  c.saveAs = Messages::Load(610);
  c.setup = Messages::Load(611);
  return c;
}

Cvn73100PPSetup::Cvn73100PPSetup(ISetupsPageView& view) : m_view(view) {
  m_menuConnections.push_back(m_frmsetupmenu.EditClick.Connect([this] { frmsetupmenuEvents_EditClick(); }));
  m_menuConnections.push_back(m_frmsetupmenu.CopyClick.Connect([this] { frmsetupmenuEvents_CopyClick(); }));
}

Cvn73100PPSetup::~Cvn73100PPSetup() {
  for (auto& connection : m_menuConnections) connection.Disconnect();
}

// --- Page events. ---

void Cvn73100PPSetup::PropertyPage_Initialize() {
  m_setups = SetupsCvn73100Scope::Create();
  m_filter = {{Messages::Load(MSG_FILTER_ALL_SCOPE), "*.scp;*.stp"},
              {Messages::Load(MSG_FILTER_SCP), "*.scp"},
              {Messages::Load(MSG_FILTER_STP), "*.stp"},
              {Messages::Load(MSG_FILTER_ALL), "*.*"}};
  m_iFilterIndex = 1;
}

void Cvn73100PPSetup::PropertyPage_SelectionChanged(IPPCvn73100Scope& control) {
  if (!m_setups) PropertyPage_Initialize();
  m_control = &control;
  m_setups->SetCCvn73100EZPtr(control.Connection());
  if (const auto setups = control.Setups()) m_setups->Copy(*setups);
  FillRows();
  m_bChanged = false;
  m_view.SetChanged(false);
  m_view.SetFont(control.FontName(), control.FontSize());
  m_lDrawnMask = -1;
  Redraw();
}

void Cvn73100PPSetup::PropertyPage_ApplyChanges() {
  IPPCvn73100Scope* link = Link();
  if (!m_control || !link || !m_setups) return;
  // Like the Search Instruments page, the page stands back while the link shows any page flag raised.
  const bool pagesQuiet =
      !link->SearchIOExists() && !link->SearchCriteriaExists() && !link->SetIOExists() && !link->SetupsExists();
  if (pagesQuiet && m_bChanged) {
    if (const auto setups = m_control->Setups()) {
      try {
        setups->Copy(*m_setups);
      } catch (const std::exception& error) {
        ShowError(error);
        return;
      }
      m_bChanged = false;
      m_view.SetChanged(false);
    }
  }
  try {
    const std::string id = GetInstrumentID();
    if (!id.empty()) m_control->SetAddressInstrumentID(id);
  } catch (const std::exception& error) {
    ShowError(error);
  }
}

void Cvn73100PPSetup::PropertyPage_Paint() {
  m_lDrawnMask = -1;
  Redraw();
}

void Cvn73100PPSetup::PropertyPage_Terminate() {
  m_control = nullptr;
  m_setups.reset();
  m_rows.clear();
  m_iSelectedRow = -1;
  m_bChanged = false;
}

void Cvn73100PPSetup::TimerIdleProcessing_Timer() {
  CDebug& debug = CDebug::Instance();
  debug.Assert(m_control != nullptr, "(Not (SelectedControls(0) Is Nothing))", CLASS_NAME, "TimerIdleProcessing_Timer",
               "1");
  debug.Assert(Link() != nullptr, "(Not (m_ippcvn73100scope Is Nothing))", CLASS_NAME, "TimerIdleProcessing_Timer",
               "2");
  const std::int32_t lMaskValue = ButtonMask();
  debug.Assert(lMaskValue >= 0 && lMaskValue <= LARGEST_MASK_VALUE,
               "(lMaskValue >= 0 And lMaskValue <= LARGEST_MASK_VALUE)", CLASS_NAME, "TimerIdleProcessing_Timer", "3");
  if (UpdateButtons()) {
    debug.Trace("Cvn73100Setup TimerIdleProcessing_Timer (Changed)", CLASS_NAME, "TimerIdleProcessing_Timer", "");
  }
}

// --- Buttons. ---

void Cvn73100PPSetup::CommandAdd_Click() {
  if (!m_setups) return;
  if (!ShowForm(FrmSetup::Purpose::Add, "", "", m_setups->GetLearnStringOnAdd())) return;
  const std::string name = m_frmsetup.Name();
  if (Contains(name)) {
    MsgBox(Messages::Load(MSG_SETUP_NAMES_UNIQUE), ERROR_BOX, Messages::Load(MSG_CONTROL_ERROR));
    return;
  }
  const bool fetch = m_frmsetup.GetSetupFromInstrument();
  m_setups->SetGetLearnStringOnAdd(fetch);
  std::shared_ptr<SetupCvn73100Scope> setup;
  try {
    setup = m_setups->Add(name);
    setup->SetComments(m_frmsetup.Comments());
  } catch (const std::exception& error) {
    if (setup) m_setups->Remove(name);
    ShowError(error);
    return;
  }
  m_rows.push_back(SetupRow{setup->Name(), setup->Comments(), ""});
  m_iSelectedRow = static_cast<int>(m_rows.size()) - 1;
  SetChanged();
  if (fetch) {
    CDebug::Instance().Assert(Link() != nullptr, "(Not (m_ippcvn73100scope Is Nothing))", CLASS_NAME,
                              "CommandAdd_Click", "1");
    FetchFromInstrument(*setup);
  }
  RefreshIcons();
  Redraw();
}

void Cvn73100PPSetup::CommandRemove_Click() {
  if (!m_setups || m_iSelectedRow < 0) return;
  if (MsgBox(Messages::Load(MSG_SURE_TO_REMOVE), CONFIRM_BOX, Messages::Load(MSG_REMOVE_SETUP)) != MsgBoxResult::OK) {
    return;
  }
  const std::string name = m_rows[static_cast<std::size_t>(m_iSelectedRow)].name;
  m_rows.erase(m_rows.begin() + m_iSelectedRow);
  m_iSelectedRow = std::min(m_iSelectedRow, static_cast<int>(m_rows.size()) - 1);
  try {
    m_setups->Remove(name);
  } catch (const std::exception& error) {
    ShowError(error);
  }
  SetChanged();
  RefreshIcons();
  Redraw();
}

void Cvn73100PPSetup::CommandGetFromInstrument_Click() {
  const auto setup = SelectedSetup();
  CDebug::Instance().Assert(setup != nullptr, "(Len(strName) > 0)", CLASS_NAME, "CommandGetFromInstrument_Click", "1");
  if (!setup) return;
  if (setup->LearnString()) {
    const std::string text =
        Lines({Messages::Load(MSG_SELECTION_HAS_SETUP), Messages::Load(MSG_OVERWRITE_INSTRUMENT_SETUP)});
    if (MsgBox(text, CONFIRM_BOX, Messages::Load(MSG_GETTING_SETUP)) != MsgBoxResult::OK) return;
  }
  if (FetchFromInstrument(*setup)) SetChanged();
  RefreshIcons();
  Redraw();
}

void Cvn73100PPSetup::CommandSendToInstrument_Click() {
  const auto setup = SelectedSetup();
  if (!setup) return;
  const std::string question = Lines({Messages::Load(MSG_SEND_CHANGES_INSTRUMENT), Messages::Load(MSG_OK_TO_CONTINUE)});
  if (MsgBox(question, CONFIRM_BOX, Messages::Load(MSG_SEND_SETUP)) != MsgBoxResult::OK) return;

  const auto connection = m_setups->CCvn73100EZPtr();
  IUtilities* utilities = nullptr;
  try {
    // Errors already queued have nothing to do with this send: empty the queue, so that whatever it
    // holds afterwards was caused by the setup.
    if (connection) {
      utilities = &connection->Utilities();
      int stale = 0;
      while (stale < MAX_STALE_ERRORS && !utilities->QueryInstrumentError().empty()) ++stale;
    }
  } catch (const std::exception& error) {
    ShowError(error);
    return;
  }
  try {
    PropertyPageModeScope mode(connection.get());
    setup->SendToInstrument();
  } catch (const ScopeError& error) {
    // A setup refused before sending (incompatible or empty) tells why; any other failure happened on
    // the way to the instrument, which may hold part of the setup.
    if (error.Number() == ObjectError(ERR_SETUP_NOT_SENDABLE)) {
      ShowError(error);
    } else {
      ShowSetupsError(Lines({error.Description(), Messages::Load(MSG_SEND_TERMINATED)}));
    }
    return;
  } catch (const std::exception& error) {
    ShowSetupsError(Lines({error.what(), Messages::Load(MSG_SEND_TERMINATED)}));
    return;
  }
  SetChanged();
  RefreshIcons();
  Redraw();
  try {
    const std::string instrumentError = utilities ? utilities->QueryInstrumentError() : std::string();
    if (!instrumentError.empty()) {
      ShowSetupsError(
          Lines({Messages::Load(MSG_ERROR_WHILE_SENDING), Messages::Load(MSG_SETUP_MAY_BE_WRONG), instrumentError}));
    }
  } catch (const std::exception& error) {
    ShowError(error);
  }
}

void Cvn73100PPSetup::CommandGetFromFile_Click() { OpenFile(); }

void Cvn73100PPSetup::CommandSendToFile_Click() { SaveFile(); }

// --- The list. ---

void Cvn73100PPSetup::ListViewSetup_Click(int row) {
  m_iSelectedRow = (row >= 0 && row < static_cast<int>(m_rows.size())) ? row : -1;
  Redraw();
}

void Cvn73100PPSetup::ListViewSetup_DblClick(int row) {
  ListViewSetup_Click(row);
  if (m_iSelectedRow >= 0) frmsetupmenuEvents_EditClick();
}

void Cvn73100PPSetup::ListViewSetup_KeyUp(int keyCode) {
  if (keyCode == KEY_DELETE) CommandRemove_Click();
}

void Cvn73100PPSetup::ListViewSetup_MouseUp(int button) {
  if (button != RIGHT_BUTTON) return;
  m_frmsetupmenu.SetEditEnabled(true);
  m_frmsetupmenu.SetCopyEnabled(true);
  m_view.ShowPopupMenu(m_frmsetupmenu);
}

// --- The pop-up menu. ---

void Cvn73100PPSetup::frmsetupmenuEvents_EditClick() {
  const auto setup = SelectedSetup();
  if (!setup) return;
  const std::string oldName = setup->Name();
  if (!ShowForm(FrmSetup::Purpose::Edit, oldName, setup->Comments(), false)) return;
  const std::string newName = m_frmsetup.Name();
  const std::string comments = m_frmsetup.Comments();
  const bool renamed = newName != oldName;
  const bool caseOnly = renamed && SetupText::EqualsIgnoreCase(newName, oldName);
  if (renamed && !caseOnly && Contains(newName)) {
    MsgBox(Messages::Load(MSG_SETUP_NAMES_UNIQUE), ERROR_BOX, Messages::Load(MSG_CONTROL_ERROR));
    return;
  }
  if (!renamed && comments == setup->Comments()) return;

  auto edited = setup;
  try {
    if (caseOnly) {
      // The collection finds names in any case, so the key may stay.
      setup->SetNewName(newName);
    } else if (renamed) {
      // Re-keyed by removing the old name, which, like any removal by name, clears the current mark.
      edited = m_setups->Add(newName);
      edited->Copy(*setup);
      edited->SetNewName(newName);
      m_setups->Remove(oldName);
    }
    edited->SetComments(comments);
  } catch (const std::exception& error) {
    ShowError(error);
    return;
  }
  SetupRow& row = m_rows[static_cast<std::size_t>(m_iSelectedRow)];
  row.name = edited->Name();
  row.comments = edited->Comments();
  SetChanged();
  RefreshIcons();
  Redraw();
}

void Cvn73100PPSetup::frmsetupmenuEvents_CopyClick() {
  const std::string name = m_iSelectedRow >= 0 ? m_rows[static_cast<std::size_t>(m_iSelectedRow)].name : "";
  // Replacing the clipboard's text clears whatever it held before.
  Host::Current().SetClipboardText(name);
}

// --- State. ---

SetupsPageButtons Cvn73100PPSetup::Buttons() const {
  const std::int32_t mask = ButtonMask();
  return SetupsPageButtons{(mask & MASK_REMOVE) != 0, (mask & MASK_GET) != 0, (mask & MASK_SEND) != 0,
                           (mask & MASK_SAVE) != 0};
}

std::string Cvn73100PPSetup::GetInstrumentID() {
  if (!m_control) return {};
  const auto connection = m_control->Connection();
  // Asking an instrument that is not connected would open a connection as a side effect of Apply.
  if (!connection || !connection->InstrumentConnected()) return {};
  return connection->IDNQuery();
}

// --- Private. ---

IPPCvn73100Scope* Cvn73100PPSetup::Link() const { return m_control; }

int Cvn73100PPSetup::MsgBox(const std::string& prompt, int style, const std::string& title) const {
  return AutoCenter::MsgBoxAutoCenter(m_view.Window(), prompt, style, title);
}

void Cvn73100PPSetup::ShowSetupsError(const std::string& text) const {
  MsgBox(text, ERROR_BOX, Messages::Load(MSG_SETUPS_ERROR));
}

void Cvn73100PPSetup::ShowError(const std::exception& error, int fallbackMessage) const {
  std::string text;
  if (const auto* scopeError = dynamic_cast<const ScopeError*>(&error)) {
    text = scopeError->Description();
  } else {
    text = error.what();
  }
  if (text.empty() && fallbackMessage != 0) text = Messages::Load(fallbackMessage);
  ShowSetupsError(text);
}

bool Cvn73100PPSetup::Contains(const std::string& name) const {
  if (!m_setups) return false;
  return std::any_of(m_setups->begin(), m_setups->end(),
                     [&name](const auto& setup) { return SetupText::EqualsIgnoreCase(setup->Name(), name); });
}

std::shared_ptr<SetupCvn73100Scope> Cvn73100PPSetup::SelectedSetup() const {
  if (!m_setups || m_iSelectedRow < 0) return nullptr;
  const std::string& name = m_rows[static_cast<std::size_t>(m_iSelectedRow)].name;
  if (name.empty()) return nullptr;
  for (const auto& setup : *m_setups) {
    if (SetupText::EqualsIgnoreCase(setup->Name(), name)) return setup;
  }
  return nullptr;
}

bool Cvn73100PPSetup::FetchFromInstrument(SetupCvn73100Scope& setup) {
  const auto connection = m_setups->CCvn73100EZPtr();
  try {
    PropertyPageModeScope mode(connection.get());
    setup.GetFromInstrument();
  } catch (const std::exception& error) {
    ShowError(error);
    return false;
  }
  return true;
}

bool Cvn73100PPSetup::ShowForm(FrmSetup::Purpose purpose, const std::string& name, const std::string& comments,
                               bool check) {
  m_frmsetup.Update(purpose, name, comments, check);
  m_frmsetup.SetWindow(m_view.Window());
  m_view.ShowSetupForm(m_frmsetup);
  return m_frmsetup.GetResult() == FrmSetup::Result::OK;
}

std::string Cvn73100PPSetup::SetupNameOfFile(const std::string& path) {
  return std::filesystem::path(path).stem().string();
}

void Cvn73100PPSetup::RememberFolder(const std::string& path) {
  const std::string folder = std::filesystem::path(path).parent_path().string();
  if (!folder.empty() && folder != m_setups->InitialDirectory()) {
    m_setups->SetInitialDirectory(folder);
    SetChanged();
  }
}

FileDialogRequest Cvn73100PPSetup::FileRequest(int titleMessage, long flags, const std::string& fileName) const {
  FileDialogRequest request;
  request.owner = m_view.Window();
  request.title = Messages::Load(titleMessage);
  request.filters = m_filter;
  request.filterIndex = m_iFilterIndex;
  request.initialDirectory = m_setups->InitialDirectory();
  request.fileName = fileName;
  request.flags = flags;
  return request;
}

void Cvn73100PPSetup::OpenFile() {
  if (!m_setups) return;
  const auto chosen = Host::Current().GetOpenFileName(FileRequest(MSG_OPEN_SETUP_FILE, OPEN_FILE_FLAGS, ""));
  if (!chosen) {
    // The host reports a cancelled or failed dialog alike, without an extended error.
    const long lExtendedError = 0;
    CDebug::Instance().Assert(lExtendedError == 0, "lExtendedError = 0", CLASS_NAME, "OpenFile", "1");
    return;
  }
  m_iFilterIndex = chosen->filterIndex;
  RememberFolder(chosen->path);

  // A setup file does not carry a setup name; the file's name is what the user chose it by.
  const std::string name = SetupNameOfFile(chosen->path);
  if (!IsValidName(name)) {
    MsgBox(Messages::Load(MSG_NAME_FORMAT), ERROR_BOX, Messages::Load(MSG_NAME_FORMAT_TITLE));
    Redraw();
    return;
  }
  if (!Contains(name)) {
    std::shared_ptr<SetupCvn73100Scope> setupNew;
    try {
      setupNew = m_setups->Add(name);
      CDebug::Instance().Assert(setupNew != nullptr, "Not (setupNew Is Nothing)", CLASS_NAME, "OpenFile", "2");
      setupNew->ReadFromFile(chosen->path);
    } catch (const std::exception& error) {
      // A file that cannot be read leaves no empty setup behind.
      if (setupNew) m_setups->Remove(name);
      ShowError(error, MSG_ERROR_LOADING);
      Redraw();
      return;
    }
    m_rows.push_back(SetupRow{setupNew->Name(), setupNew->Comments(), ""});
    m_iSelectedRow = static_cast<int>(m_rows.size()) - 1;
  } else {
    const std::string question = Lines({Messages::Load(MSG_SETUP_NAME_EXISTS), Messages::Load(MSG_OVERWRITE_SETUP)});
    if (MsgBox(question, CONFIRM_BOX, Messages::Load(MSG_OPEN_SETUP_FILE)) != MsgBoxResult::OK) {
      Redraw();
      return;
    }
    const auto existing = m_setups->item(name);
    try {
      existing->ReadFromFile(chosen->path);
    } catch (const std::exception& error) {
      ShowError(error, MSG_ERROR_LOADING);
      Redraw();
      return;
    }
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
      if (SetupText::EqualsIgnoreCase(m_rows[i].name, name)) {
        m_rows[i].comments = existing->Comments();
        m_iSelectedRow = static_cast<int>(i);
      }
    }
  }
  SetChanged();
  RefreshIcons();
  Redraw();
}

void Cvn73100PPSetup::SaveFile() {
  const auto setup = SelectedSetup();
  if (!setup) return;
  const auto chosen = Host::Current().GetSaveFileName(FileRequest(MSG_SAVE_SETUP_FILE, SAVE_FILE_FLAGS, setup->Name()));
  if (!chosen) {
    const long lExtendedError = 0;
    CDebug::Instance().Assert(lExtendedError == 0, "lExtendedError = 0", CLASS_NAME, "SaveFile", "1");
    return;
  }
  m_iFilterIndex = chosen->filterIndex;
  RememberFolder(chosen->path);
  std::string path = chosen->path;
  if (!std::filesystem::path(path).has_extension()) path += DEFAULT_EXTENSION;
  try {
    setup->SaveToFile(path);
  } catch (const std::exception& error) {
    ShowError(error, MSG_ERROR_SAVING);
  }
  Redraw();
}

void Cvn73100PPSetup::FillRows() {
  m_rows.clear();
  for (const auto& setup : *m_setups) m_rows.push_back(SetupRow{setup->Name(), setup->Comments(), ""});
  m_iSelectedRow = m_rows.empty() ? -1 : 0;
  RefreshIcons();
}

void Cvn73100PPSetup::RefreshIcons() {
  const std::string current = m_setups ? m_setups->LastInstrumentSetup() : std::string();
  for (auto& row : m_rows) {
    const bool isCurrent = !current.empty() && SetupText::EqualsIgnoreCase(row.name, current);
    row.icon = isCurrent ? CURRENT_SETUP_ICON : "";
  }
}

void Cvn73100PPSetup::SetChanged() {
  m_bChanged = true;
  m_view.SetChanged(true);
}

void Cvn73100PPSetup::Redraw() {
  m_view.ShowRows(m_rows, m_iSelectedRow);
  UpdateButtons();
}

std::int32_t Cvn73100PPSetup::ButtonMask() const {
  const auto setup = SelectedSetup();
  if (!setup) return 0;
  // Only a setup holding instrument state can be sent or saved; a fresh one can only be fetched.
  std::int32_t mask = MASK_REMOVE | MASK_GET;
  if (setup->LearnString()) mask |= MASK_SEND | MASK_SAVE;
  return mask;
}

bool Cvn73100PPSetup::UpdateButtons() {
  const std::int32_t mask = ButtonMask();
  if (mask == m_lDrawnMask) return false;
  m_lDrawnMask = mask;
  m_view.EnableButtons(Buttons());
  return true;
}

}  // namespace cvn73100
