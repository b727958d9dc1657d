#include "setups/SetupsCvn73100Scope.h"

#include <filesystem>
#include <system_error>

#include "connection/CCvn73100EZ.h"
#include "diagnostics/CDebug.h"
#include "dialogs/Messages.h"
#include "setups/SetupText.h"

namespace cvn73100 {
namespace {

constexpr const char* CLASS_NAME = "Setups";

std::string CurrentDirectory() {
  std::error_code ec;
  const auto directory = std::filesystem::current_path(ec);
  return ec ? std::string() : directory.string();
}

}  // namespace

std::shared_ptr<SetupsCvn73100Scope> SetupsCvn73100Scope::Create() {
  return std::make_shared<SetupsCvn73100Scope>(CreateKey());
}

SetupsCvn73100Scope::SetupsCvn73100Scope(CreateKey) : m_strInitialDirectory(CurrentDirectory()) {}

SetupsCvn73100Scope::Setup SetupsCvn73100Scope::Add(const std::string& name) {
  if (name.empty() || name.find(' ') != std::string::npos || name.find('|') != std::string::npos) {
    CDebug::Instance().Assert(false, "", CLASS_NAME, "Add", "1");
    throw InvalidPropertyValue();
  }
  for (const auto& key : m_keys) {
    if (SetupText::EqualsIgnoreCase(key, name)) throw RuntimeError(ERR_DUPLICATE_KEY);
  }
  auto setup = std::make_shared<SetupCvn73100Scope>();
  setup->SetNewName(name);
  setup->SetParentSetups(shared_from_this());
  m_keys.push_back(name);
  m_setups.push_back(setup);
  return setup;
}

std::size_t SetupsCvn73100Scope::PositionOf(std::int32_t position) const {
  if (position < 1 || position > Count()) throw RuntimeError(ERR_SUBSCRIPT_OUT_OF_RANGE);
  return static_cast<std::size_t>(position - 1);
}

std::size_t SetupsCvn73100Scope::PositionOf(const std::string& name) const {
  for (std::size_t i = 0; i < m_keys.size(); ++i) {
    if (SetupText::EqualsIgnoreCase(m_keys[i], name)) return i;
  }
  throw RuntimeError(ERR_INVALID_PROCEDURE_CALL);
}

std::size_t SetupsCvn73100Scope::PositionOf(const Variant& indexKey) const {
  switch (indexKey.GetType()) {
    case Variant::Type::String:
      return PositionOf(indexKey.AsString());
    case Variant::Type::Empty:
      throw RuntimeError(ERR_INVALID_PROCEDURE_CALL);
    default:
      break;
  }
  if (!indexKey.IsNumeric()) throw RuntimeError(ERR_TYPE_MISMATCH);
  std::int32_t position = 0;
  try {
    position = indexKey.AsLong();
  } catch (const ScopeError&) {
    throw RuntimeError(ERR_SUBSCRIPT_OUT_OF_RANGE);  // a number beyond 32 bits is no position either
  }
  return PositionOf(position);
}

SetupsCvn73100Scope::Setup SetupsCvn73100Scope::item(const Variant& indexKey) const {
  return m_setups[PositionOf(indexKey)];
}
SetupsCvn73100Scope::Setup SetupsCvn73100Scope::item(std::int32_t position) const {
  return m_setups[PositionOf(position)];
}
SetupsCvn73100Scope::Setup SetupsCvn73100Scope::item(const std::string& name) const {
  return m_setups[PositionOf(name)];
}

void SetupsCvn73100Scope::RemoveAt(std::size_t position) {
  m_keys.erase(m_keys.begin() + static_cast<std::ptrdiff_t>(position));
  m_setups.erase(m_setups.begin() + static_cast<std::ptrdiff_t>(position));
}

void SetupsCvn73100Scope::Remove(const Variant& indexKey) {
  if (indexKey.GetType() == Variant::Type::String) {
    Remove(indexKey.AsString());
  } else {
    RemoveAt(PositionOf(indexKey));
  }
}

void SetupsCvn73100Scope::Remove(std::int32_t position) { RemoveAt(PositionOf(position)); }

void SetupsCvn73100Scope::Remove(const std::string& name) {
  RemoveAt(PositionOf(name));
  // Only the index as given is compared, exactly: a position, or the name in other case, leaves the
  // last instrument setup standing even when it named the removed one.
  if (name == m_strLastInstrumentSetup) m_strLastInstrumentSetup.clear();
}

void SetupsCvn73100Scope::ReadProperties(const PropertyBag& bag) {
  m_strInitialDirectory = bag.ReadString("SetupsInitialDirectory", "");
  m_bGetLearnStringOnAdd = bag.ReadBoolean("SetupsGetLearnStringOnAdd", true);
  m_strLastInstrumentSetup = bag.ReadString("LastInstrumentSetup", "");
  const std::int16_t count = bag.ReadInteger("SetupCount", 0);
  SetupCvn73100Scope scratch;
  for (std::int32_t i = 1; i <= count; ++i) {
    scratch.ReadProperties(bag, static_cast<std::int16_t>(i));
    const Setup setup = Add(scratch.Name());
    setup->Copy(scratch);
    setup->SetParentSetups(shared_from_this());
  }
}

void SetupsCvn73100Scope::WriteProperties(PropertyBag& bag) const {
  bag.WriteProperty("SetupsInitialDirectory", m_strInitialDirectory, "");
  bag.WriteProperty("SetupsGetLearnStringOnAdd", m_bGetLearnStringOnAdd, true);
  bag.WriteProperty("LastInstrumentSetup", m_strLastInstrumentSetup, "");
  bag.WriteProperty("SetupCount", Count(), std::int32_t{0});
  std::int16_t index = 0;
  for (const auto& setup : m_setups) setup->WriteProperties(bag, ++index);
}

void SetupsCvn73100Scope::Copy(const SetupsCvn73100Scope& source) {
  if (&source == this) return;
  m_strInitialDirectory = source.m_strInitialDirectory;
  m_bGetLearnStringOnAdd = source.m_bGetLearnStringOnAdd;
  m_strLastInstrumentSetup = source.m_strLastInstrumentSetup;
  // Positional removal keeps the last instrument setup just copied.
  while (Count() > 0) Remove(1);
  CDebug::Instance().Assert(Count() == 0, "Me.Count = 0", CLASS_NAME, "Copy", "1");
  for (const auto& member : source.m_setups) Add(member->Name())->Copy(*member);
}

std::shared_ptr<CCvn73100EZ> SetupsCvn73100Scope::CCvn73100EZPtr() const {
  auto connection = m_ccvn73100ez.lock();
  CDebug::Instance().Assert(connection != nullptr, "(Not (m_ccvn73100ez Is Nothing))", CLASS_NAME, "Get CCvn73100EZPtr",
                            "1");
  return connection;
}

void SetupsCvn73100Scope::SetCCvn73100EZPtr(const std::shared_ptr<CCvn73100EZ>& connection) {
  m_ccvn73100ez = connection;
  CDebug::Instance().Assert(connection != nullptr, "(Not (m_ccvn73100ez Is Nothing))", CLASS_NAME, "Let CCvn73100EZPtr",
                            "1");
  for (const auto& setup : m_setups) setup->SetParentSetups(shared_from_this());
}

}  // namespace cvn73100
