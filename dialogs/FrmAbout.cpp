#include "dialogs/FrmAbout.h"

#include <utility>

#include "dialogs/Messages.h"

namespace cvn73100 {

FrmAbout::FrmAbout(std::string version) : m_strVersion(std::move(version)) {}

std::string FrmAbout::Caption() const { return Messages::Load(120); }

std::vector<std::string> FrmAbout::Lines() const {
  return {Messages::Load(121), Messages::Load(122) + " " + m_strVersion, Messages::Load(123)};
}

std::string FrmAbout::OKCaption() const { return Messages::Load(111); }

}  // namespace cvn73100
