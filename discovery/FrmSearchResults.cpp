#include "discovery/FrmSearchResults.h"

#include <charconv>

#include "dialogs/Messages.h"
#include "ioconfig/IOConfigurationConstants.h"
#include "platform/ScopeError.h"

namespace cvn73100 {
namespace {

constexpr const char* NL = "\r\n";
constexpr const char* IND = "    ";

std::int16_t ParseFontSize(const std::string& text) {
  std::int16_t size = 0;
  std::from_chars(text.data(), text.data() + text.size(), size);
  return size;
}

}  // namespace

std::size_t FrmSearchResults::Slot(std::int32_t index) {
  if (index < 0 || index >= COM_PORT_COUNT) throw RuntimeError(ERR_SUBSCRIPT_OUT_OF_RANGE);
  return static_cast<std::size_t>(index);
}

bool FrmSearchResults::InstrumentFoundOnCOMPort(std::int32_t index) const { return m_abInstrumentFound[Slot(index)]; }
void FrmSearchResults::SetInstrumentFoundOnCOMPort(std::int32_t index, bool value) {
  m_abInstrumentFound[Slot(index)] = value;
}
bool FrmSearchResults::COMPortPresent(std::int32_t index) const { return m_abPresent[Slot(index)]; }
void FrmSearchResults::SetCOMPortPresent(std::int32_t index, bool value) { m_abPresent[Slot(index)] = value; }
bool FrmSearchResults::IncludedCOMPort(std::int32_t index) const { return m_abIncluded[Slot(index)]; }
void FrmSearchResults::SetIncludedCOMPort(std::int32_t index, bool value) { m_abIncluded[Slot(index)] = value; }
bool FrmSearchResults::CheckEnabled(std::int32_t index) const { return m_abCheckEnabled[Slot(index)]; }
int FrmSearchResults::CheckValue(std::int32_t index) const { return m_aiCheckValue[Slot(index)]; }

std::string FrmSearchResults::CheckCaption(std::int32_t index) {
  return RS232_PREFIX + std::to_string(Slot(index) + RS232_PORT::First);
}

void FrmSearchResults::Update() {
  m_strFontName = Messages::Load(102);
  m_iFontSize = ParseFontSize(Messages::Load(103));

  m_strCaption = Messages::Load(260);
  m_strContinueCaption = Messages::Load(111);
  m_strHeading = Messages::Load(273);

  m_strExplanation = Messages::Load(261);
  for (std::int32_t i = 0; i < COM_PORT_COUNT; ++i) {
    if (Offered(i)) m_strExplanation += std::string(NL) + IND + CheckCaption(i);
  }
  m_strExplanation += std::string(NL) + NL + Messages::Load(262) + NL + NL + Messages::Load(263);

  m_strFrameCaption = Messages::Load(264);

  for (std::int32_t i = 0; i < COM_PORT_COUNT; ++i) {
    const std::size_t slot = Slot(i);
    m_abCheckEnabled[slot] = Offered(i);
    m_aiCheckValue[slot] = m_abIncluded[slot] ? UNCHECKED : CHECKED;
  }
}

bool FrmSearchResults::Offered(std::int32_t index) const {
  return m_abPresent[Slot(index)] && !m_abInstrumentFound[Slot(index)];
}

void FrmSearchResults::CheckCOM1_Click(std::int32_t index, int value) {
  const std::size_t slot = Slot(index);
  if (m_abCheckEnabled[slot]) m_aiCheckValue[slot] = value == CHECKED ? CHECKED : UNCHECKED;
}

void FrmSearchResults::CommandContinue_Click() {
  for (std::int32_t i = 0; i < COM_PORT_COUNT; ++i) {
    const std::size_t slot = Slot(i);
    m_abIncluded[slot] = m_aiCheckValue[slot] != CHECKED;
  }
  m_bVisible = false;
}

}  // namespace cvn73100
