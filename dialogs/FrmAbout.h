#pragma once
#include <string>
#include <vector>

namespace cvn73100 {

// The About box: a title, three lines and one OK button that closes it. A Qt or console face draws
// these texts, all in the current language.
class FrmAbout {
 public:
  // `version` is the control's version, shown after message 122 "Version:".
  explicit FrmAbout(std::string version);

  // Message 120 "About QD 73100 Scope Control".
  std::string Caption() const;
  // Message 121, message 122 + " " + the version, message 123.
  std::vector<std::string> Lines() const;
  // Message 111 "OK".
  std::string OKCaption() const;

  void OK() { m_bClosed = true; }
  bool Closed() const { return m_bClosed; }

 private:
  std::string m_strVersion;
  bool m_bClosed = false;
};

}  // namespace cvn73100
