#include "ioconfig/ModIsHandshakeOK.h"

#include <initializer_list>

#include "diagnostics/CDebug.h"
#include "dialogs/AutoCenter.h"
#include "dialogs/Messages.h"
#include "ioconfig/CIOconfiguration.h"
#include "platform/Components.h"
#include "platform/SupportedModels.h"

namespace cvn73100 {
namespace {

constexpr const char* MODULE_NAME = "IsHandshakeOK.bas";
constexpr const char* CRLF = "\r\n";

std::string JoinLines(std::initializer_list<std::string> lines) {
  std::string text;
  bool first = true;
  for (const auto& line : lines) {
    if (!first) text += CRLF;
    text += line;
    first = false;
  }
  return text;
}

}  // namespace

MessageOptionRequest HandshakeWarningRequest(WindowHandle hwndParent, bool bOptionChecked, bool bContinueCancel,
                                             bool bSettingsFixed) {
  MessageOptionRequest request;
  request.parent = hwndParent;
  request.optionChecked = bOptionChecked;
  request.continueCancel = bContinueCancel;
  request.placeOnParent = true;
  request.placement = AutoCenter::MessageOptionPlacement();
  // Only the English catalogue carries the long, itemised text; the other languages have a short one.
  if (Messages::LanguageBase() == Messages::ENGLISH) {
    request.message =
        JoinLines({Messages::Load(281), "", Messages::Load(283), "", Messages::Load(284), Messages::Load(285),
                   Messages::Load(286), "", Messages::Load(287) + " " + Messages::Load(288)});
    request.option = Messages::Load(289);
    request.title = Messages::Load(280);
  } else {
    request.message = JoinLines({Messages::Load(711), "", Messages::Load(712), "", Messages::Load(713)});
    request.option = Messages::Load(714);
    request.title = Messages::Load(104);
  }
  if (bSettingsFixed) request.message = Messages::Load(724);
  return request;
}

bool IsHandshakeOK(const std::string& strAddress, const std::string& strIDN, WindowHandle hwndParent,
                   bool& bDontShowIOHandshakeWarning, std::string& strLastIOHandshakeAddress, bool& bWarningShown,
                   bool bOptionChecked, bool bContinueCancel, MessageOptionResult* dialogResult) {
  CDebug::Instance().Assert(hwndParent != 0, "hwndParent <> 0", MODULE_NAME, "IsHandshakeOK", "Start");
  bWarningShown = false;
  if (bDontShowIOHandshakeWarning) return true;

  CIOconfiguration ioconfiguration;
  ioconfiguration.SetActiveAddressString(strAddress);
  const std::string strCanonical = ioconfiguration.ActiveAddressString();
  if (ioconfiguration.ActivePortIsGPIB()) {
    strLastIOHandshakeAddress = strCanonical;
    return true;
  }
  if (strIDN.empty()) {
    strLastIOHandshakeAddress.clear();
    return true;
  }

  const std::int32_t lHandshake = ioconfiguration.ActivePortHandshake();
  const bool bSettingsFixed = Components::HasIOManager() && Components::CreateIOManager()->SerialSettingsFixed(
                                                                strCanonical.substr(0, strCanonical.find("::")));
  const bool bWarn = NamesSupportedModel(strIDN) && strCanonical != strLastIOHandshakeAddress &&
                     (lHandshake != RS232_HandShake_DTR_DSR || bSettingsFixed);
  if (!bWarn) {
    strLastIOHandshakeAddress = strCanonical;
    return true;
  }

  const MessageOptionResult result = Host::Current().ShowMessageOption(
      HandshakeWarningRequest(hwndParent, bOptionChecked, bContinueCancel, bSettingsFixed));
  bWarningShown = true;
  if (result.optionChecked) bDontShowIOHandshakeWarning = true;
  strLastIOHandshakeAddress = strCanonical;
  if (dialogResult) *dialogResult = result;
  return result.optionChecked;
}

}  // namespace cvn73100
