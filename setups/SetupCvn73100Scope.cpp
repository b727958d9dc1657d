#include "setups/SetupCvn73100Scope.h"

#include <utility>

#include "connection/CCvn73100EZ.h"
#include "diagnostics/CDebug.h"
#include "dialogs/Messages.h"
#include "setups/CSetupFile.h"
#include "setups/CWrenfoldFile.h"
#include "setups/SetupText.h"
#include "setups/SetupsCvn73100Scope.h"

namespace cvn73100 {
namespace {

constexpr const char* CLASS_NAME = "Setup";
constexpr std::int32_t ERR_OBJECT_NOT_SET = 91;
constexpr int MSG_OPEN_SETUP_FILE = 670;
constexpr int MSG_NOT_A_SETUP_FILE = 674;
constexpr int MSG_SEND_SETUP = 690;
constexpr int MSG_NOT_COMPATIBLE = 691;
constexpr int MSG_SETUP_EMPTY = 692;

bool HoldsBar(const std::string& text) { return text.find('|') != std::string::npos; }

// The parent and its connection, both kept alive for the call. Without them nothing can be exchanged
// with an instrument: asserted, then raised as an unset object.
std::pair<std::shared_ptr<SetupsCvn73100Scope>, std::shared_ptr<CCvn73100EZ>> Connection(
    const SetupCvn73100Scope& setup, const char* expression, const char* procedure) {
  auto parent = setup.ParentSetups();
  auto connection = parent ? parent->CCvn73100EZPtr() : nullptr;
  CDebug::Instance().Assert(connection != nullptr, expression, CLASS_NAME, procedure, "1");
  if (!connection) {
    throw ScopeError(ERR_OBJECT_NOT_SET, "Cvn73100CtrlLib", "Object variable or With block variable not set");
  }
  return {std::move(parent), std::move(connection)};
}

std::string Key(const char* word, std::int16_t index) { return word + std::to_string(index); }

}  // namespace

void SetupCvn73100Scope::SetComments(const std::string& comments) {
  // A bar would break the header of a native setup file.
  if (HoldsBar(comments)) throw InvalidPropertyValue();
  m_strComments = SetupText::Trim(comments);
}

void SetupCvn73100Scope::SetNewName(const std::string& name) {
  if (name.empty() || HoldsBar(name) || name.find(' ') != std::string::npos) throw InvalidPropertyValue();
  m_strName = SetupText::Trim(name);
}

void SetupCvn73100Scope::ReadProperties(const PropertyBag& bag, std::int16_t index) {
  m_strName = bag.ReadString(Key("SetupName", index), DEFAULT_NAME);
  m_strComments = bag.ReadString(Key("SetupComments", index), "");
  m_vntLearnString = ToLearnString(bag.ReadProperty(Key("LearnString", index), Variant()));
  m_strModel = bag.ReadString(Key("Model", index), "");
  m_strVersion = bag.ReadString(Key("Version", index), "");
}

void SetupCvn73100Scope::WriteProperties(PropertyBag& bag, std::int16_t index) const {
  bag.WriteProperty(Key("SetupName", index), m_strName, DEFAULT_NAME);
  bag.WriteProperty(Key("SetupComments", index), m_strComments, "");
  bag.WriteProperty(Key("LearnString", index), ToVariant(m_vntLearnString), Variant());
  bag.WriteProperty(Key("Model", index), m_strModel, "");
  bag.WriteProperty(Key("Version", index), m_strVersion, "");
}

void SetupCvn73100Scope::Copy(const SetupCvn73100Scope& source) {
  if (&source == this) return;
  SetNewName(source.m_strName);
  SetComments(source.m_strComments);
  m_vntLearnString = source.m_vntLearnString;
  m_strModel = source.m_strModel;
  m_strVersion = source.m_strVersion;
}

void SetupCvn73100Scope::GetFromInstrument() {
  const auto [parent, connection] = Connection(*this, "(Not (m_setup.CCvn73100EZPtr Is Nothing))", "GetFromInstrument");
  IUtilities& utilities = connection->Utilities();
  // Each field takes its value as soon as it is read; an error ends the fetch and keeps what it already took.
  m_vntLearnString = utilities.ReadStateData();
  m_strModel = utilities.InstrumentModel();
  CDebug::Instance().Assert(!m_strModel.empty(), "(Len(m_strModel) > 0)", CLASS_NAME, "GetFromInstrument", "2");
  m_strVersion = utilities.InstrumentFirmwareVersion();
  CDebug::Instance().Assert(!m_strVersion.empty(), "(Len(m_strVersion) > 0)", CLASS_NAME, "GetFromInstrument", "3");
  parent->SetLastInstrumentSetup(m_strName);
}

bool SetupCvn73100Scope::IsLearnStringCompatible(const std::string& instrumentModel,
                                                 const std::string& instrumentVersion) const {
  if (m_strModel.empty() || m_strVersion.empty()) return false;
  if (!SetupText::EqualsIgnoreCase(instrumentModel, m_strModel)) return false;
  return SetupText::EqualsIgnoreCase(instrumentVersion, m_strVersion) ||
         SetupText::EqualsIgnoreCase(m_strVersion, WILDCARD_VERSION);
}

void SetupCvn73100Scope::ReadFromFile(const std::string& fileName) {
  // The content decides the format, never the extension; the native format has the first say.
  std::unique_ptr<ISetupFile> file = std::make_unique<CSetupFile>();
  if (!file->IsACompatibleFile(fileName)) {
    file = std::make_unique<CWrenfoldFile>();
    if (!file->IsACompatibleFile(fileName)) {
      CDebug::Instance().Assert(false, "", CLASS_NAME, "ReadFromFile", "1");
      throw CatalogueError(ERR_NOT_A_SETUP_FILE, MSG_OPEN_SETUP_FILE, MSG_NOT_A_SETUP_FILE);
    }
  }
  file->ReadFile(fileName);
  m_strModel = file->Model();
  m_vntLearnString = file->LearnString();
  m_strVersion = file->Version();
  m_strComments = file->UserComments();
}

void SetupCvn73100Scope::SaveToFile(const std::string& fileName) const {
  CSetupFile file;
  file.SetModel(m_strModel);
  file.SetLearnString(m_vntLearnString);
  file.SetVersion(m_strVersion);
  file.SetUserComments(m_strComments);
  file.WriteFile(fileName);
}

void SetupCvn73100Scope::SendToInstrument() {
  const auto [parent, connection] = Connection(*this, "(Not (m_setups.CCvn73100EZPtr Is Nothing))", "SendToInstrument");
  IUtilities& utilities = connection->Utilities();
  const std::string model = utilities.InstrumentModel();
  const std::string version = utilities.InstrumentFirmwareVersion();
  if (!IsLearnStringCompatible(model, version)) {
    throw CatalogueError(ERR_SETUP_NOT_SENDABLE, MSG_SEND_SETUP,
                         m_vntLearnString ? MSG_NOT_COMPATIBLE : MSG_SETUP_EMPTY);
  }
  utilities.WriteStateData(m_vntLearnString);
  parent->SetLastInstrumentSetup(m_strName);
}

std::shared_ptr<SetupsCvn73100Scope> SetupCvn73100Scope::ParentSetups() const {
  auto setups = m_setups.lock();
  CDebug::Instance().Assert(setups != nullptr, "(Not (m_setups Is Nothing))", CLASS_NAME, "Get ParentSetups", "1");
  return setups;
}

void SetupCvn73100Scope::SetParentSetups(const std::shared_ptr<SetupsCvn73100Scope>& setups) {
  m_setups = setups;
  CDebug::Instance().Assert(setups != nullptr, "(Not (m_setups Is Nothing))", CLASS_NAME, "Let ParentSetups", "1");
}

}  // namespace cvn73100
