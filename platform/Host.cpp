#include "platform/Host.h"

#include <iostream>

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

int Host::MsgBoxPlaced(WindowHandle parent, const std::string& prompt, int style, const std::string& title,
                       const Placement&, const std::string&, int) {
  return MsgBox(parent, prompt, style, title);
}

void Host::ShowAboutBox(const std::string& title, const std::vector<std::string>& lines) {
  std::string text;
  for (const auto& line : lines) text += (text.empty() ? "" : "\r\n") + line;
  MsgBox(0, text, MsgBoxStyle::OKOnly | MsgBoxStyle::Information, title);
}

void Host::Warning(const std::string& text) { std::cerr << "warning: " << text << "\n"; }

std::optional<FileDialogResult> Host::GetOpenFileName(const FileDialogRequest&) { return std::nullopt; }
std::optional<FileDialogResult> Host::GetSaveFileName(const FileDialogRequest&) { return std::nullopt; }

Host& Host::Current() {
  static SilentHost silent;
  return g_host ? *g_host : silent;
}

void Host::SetCurrent(Host* host) { g_host = host; }

}  // namespace cvn73100
