#pragma once
#include <array>
#include <cstdint>
#include <string>

namespace cvn73100 {

// The modal "Search Instruments Results" dialog: names the COM ports on which a search found no
// instrument and offers to exclude each port from future searches.
//
// The search page fills the two indexed properties, calls Update and hands the dialog to its view,
// which draws the texts and check boxes below, forwards the user's ticks to CheckCOM1_Click and the
// Continue button to CommandContinue_Click, and closes when Visible() turns false. A dialog closed
// any other way leaves IncludedCOMPort as the page set it, which changes nothing.
//
// Indices run 0..3 for COM1..COM4; any other index raises the subscript-out-of-range error (9).
class FrmSearchResults {
 public:
  static constexpr std::int32_t COM_PORT_COUNT = 4;
  // Check-box values.
  static constexpr int UNCHECKED = 0;
  static constexpr int CHECKED = 1;

  // True when the port gave a reply during the search; such a port cannot be excluded here.
  bool InstrumentFoundOnCOMPort(std::int32_t index) const;
  void SetInstrumentFoundOnCOMPort(std::int32_t index, bool value);
  // Whether the port's device is there; the dialog names and offers only such ports. True unless set.
  bool COMPortPresent(std::int32_t index) const;
  void SetCOMPortPresent(std::int32_t index, bool value);
  // In: whether the port is included in searches now. Out (after Continue): whether it stays included.
  bool IncludedCOMPort(std::int32_t index) const;
  void SetIncludedCOMPort(std::int32_t index, bool value);

  // Fills the texts and check boxes from the two properties, in the current language.
  void Update();
  // The user ticked or cleared check box `index` (CHECKED or UNCHECKED). A disabled box ignores it.
  void CheckCOM1_Click(std::int32_t index, int value);
  // Each port stays included unless its box is ticked; then the dialog hides itself.
  void CommandContinue_Click();

  // --- What Update filled in, for the view. ---

  const std::string& FontName() const { return m_strFontName; }
  std::int16_t FontSize() const { return m_iFontSize; }
  const std::string& Caption() const { return m_strCaption; }
  const std::string& ContinueCaption() const { return m_strContinueCaption; }
  const std::string& Heading() const { return m_strHeading; }
  // Paragraphs separated by a blank line; the missing ports on lines of their own, indented four spaces.
  const std::string& Explanation() const { return m_strExplanation; }
  const std::string& FrameCaption() const { return m_strFrameCaption; }
  bool CheckEnabled(std::int32_t index) const;
  int CheckValue(std::int32_t index) const;
  // The caption of every check box: "COM1".."COM4".
  static std::string CheckCaption(std::int32_t index);

  // True from the page's showing until Continue.
  bool Visible() const { return m_bVisible; }
  void Show() { m_bVisible = true; }

 private:
  static std::size_t Slot(std::int32_t index);
  // A port whose device is there and gave no reply.
  bool Offered(std::int32_t index) const;

  std::array<bool, COM_PORT_COUNT> m_abInstrumentFound{};
  std::array<bool, COM_PORT_COUNT> m_abIncluded{};
  std::array<bool, COM_PORT_COUNT> m_abPresent{true, true, true, true};
  std::array<bool, COM_PORT_COUNT> m_abCheckEnabled{};
  std::array<int, COM_PORT_COUNT> m_aiCheckValue{};
  std::string m_strFontName;
  std::int16_t m_iFontSize = 0;
  std::string m_strCaption;
  std::string m_strContinueCaption;
  std::string m_strHeading;
  std::string m_strExplanation;
  std::string m_strFrameCaption;
  bool m_bVisible = false;
};

}  // namespace cvn73100
