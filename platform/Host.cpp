#include "platform/Host.h"

namespace cvn73100 {
namespace {
Host* g_host = nullptr;
}

MessageOptionResult Host::ShowMessageOption(const MessageOptionRequest& request) {
  MessageOptionResult result;
  result.button = MsgBox(request.parent, request.message,
                         request.continueCancel ? MsgBoxStyle::OKCancel : MsgBoxStyle::OKOnly, request.title);
  result.optionChecked = request.optionChecked;
  return result;
}

std::optional<FileDialogResult> Host::GetOpenFileName(const FileDialogRequest&) { return std::nullopt; }
std::optional<FileDialogResult> Host::GetSaveFileName(const FileDialogRequest&) { return std::nullopt; }

Host& Host::Current() {
  static SilentHost silent;
  return g_host ? *g_host : silent;
}

void Host::SetCurrent(Host* host) { g_host = host; }

}  // namespace cvn73100
