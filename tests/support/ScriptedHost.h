#pragma once
#include <algorithm>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "diagnostics/CDebug.h"
#include "platform/Host.h"

namespace cvn73100::test {

// A host for tests: records everything the control shows or announces and answers as the test
// scripts it. Queued answers are used first; when a queue is empty the default answer is given.
// Placements handed to the host are evaluated on the rectangles the test sets (boxRect, parentRect).
class ScriptedHost : public Host {
 public:
  struct Box {
    WindowHandle parent = 0;
    std::string prompt;
    int style = 0;
    std::string title;
    bool placed = false;           // shown through MsgBoxPlaced
    std::optional<Rect> placedAt;  // where the placement put it, when there was one
    std::string helpFile;
    int helpContext = 0;
  };
  struct OptionDialog {
    MessageOptionRequest request;
    std::optional<Rect> placedAt;
  };
  struct Pages {
    std::vector<std::string> pages;
    int initialPage = 0;
  };
  struct About {
    std::string title;
    std::vector<std::string> lines;
  };

  // --- Answers. ---
  std::deque<int> msgBoxAnswers;
  int defaultMsgBoxAnswer = MsgBoxResult::OK;
  // Without a queued answer the dialog is closed with OK and the option as the request set it.
  std::deque<MessageOptionResult> optionAnswers;
  std::deque<std::optional<FileDialogResult>> openFileAnswers;
  std::deque<std::optional<FileDialogResult>> saveFileAnswers;
  bool userMode = true;
  std::pair<int, int> screenSize{1920, 1080};
  Rect boxRect{0, 0, 300, 120};
  Rect parentRect{100, 100, 800, 600};

  // --- Records. ---
  std::vector<Box> boxes;
  std::vector<OptionDialog> optionDialogs;
  std::vector<std::string> propertyChanges;
  std::vector<Pages> pagesShown;
  std::vector<About> aboutBoxes;
  std::vector<FileDialogRequest> openFileRequests;
  std::vector<FileDialogRequest> saveFileRequests;
  std::string clipboard;
  int processEventsCalls = 0;
  std::function<void()> onBox;  // runs as each plain box is shown

  int MsgBox(WindowHandle parent, const std::string& prompt, int style, const std::string& title) override {
    boxes.push_back(Box{parent, prompt, style, title, false, std::nullopt, {}, 0});
    if (onBox) onBox();
    return Next(msgBoxAnswers, defaultMsgBoxAnswer);
  }
  int MsgBoxPlaced(WindowHandle parent, const std::string& prompt, int style, const std::string& title,
                   const Placement& place, const std::string& helpFile, int helpContext) override {
    std::optional<Rect> at;
    if (place) at = place(boxRect, parentRect);
    boxes.push_back(Box{parent, prompt, style, title, true, at, helpFile, helpContext});
    return Next(msgBoxAnswers, defaultMsgBoxAnswer);
  }
  MessageOptionResult ShowMessageOption(const MessageOptionRequest& request) override {
    std::optional<Rect> at;
    if (request.placement) at = request.placement(boxRect, parentRect);
    optionDialogs.push_back(OptionDialog{request, at});
    return Next(optionAnswers, MessageOptionResult{MsgBoxResult::OK, request.optionChecked});
  }
  void PropertyChanged(const std::string& name) override { propertyChanges.push_back(name); }
  bool AmbientUserMode() override { return userMode; }
  std::optional<FileDialogResult> GetOpenFileName(const FileDialogRequest& request) override {
    openFileRequests.push_back(request);
    return Next(openFileAnswers, std::optional<FileDialogResult>());
  }
  std::optional<FileDialogResult> GetSaveFileName(const FileDialogRequest& request) override {
    saveFileRequests.push_back(request);
    return Next(saveFileAnswers, std::optional<FileDialogResult>());
  }
  void SetClipboardText(const std::string& text) override { clipboard = text; }
  std::string ClipboardText() override { return clipboard; }
  void ProcessEvents() override { ++processEventsCalls; }
  void ShowPropertyPages(const std::vector<std::string>& pages, int initialPage) override {
    pagesShown.push_back(Pages{pages, initialPage});
  }
  std::pair<int, int> ScreenSizeInPixels() override { return screenSize; }
  void ShowAboutBox(const std::string& title, const std::vector<std::string>& lines) override {
    aboutBoxes.push_back(About{title, lines});
  }

  // How often `name` was announced.
  long Changes(const std::string& name) const {
    return std::count(propertyChanges.begin(), propertyChanges.end(), name);
  }
  void ClearRecords() {
    boxes.clear();
    optionDialogs.clear();
    propertyChanges.clear();
    pagesShown.clear();
    aboutBoxes.clear();
    openFileRequests.clear();
    saveFileRequests.clear();
  }

 private:
  template <class T>
  static T Next(std::deque<T>& answers, T fallback) {
    if (answers.empty()) return fallback;
    T answer = answers.front();
    answers.pop_front();
    return answer;
  }
};

// Makes `host` the process's host for the lifetime of a scope.
class ScopedHost {
 public:
  explicit ScopedHost(Host& host) { Host::SetCurrent(&host); }
  ~ScopedHost() { Host::SetCurrent(nullptr); }
  ScopedHost(const ScopedHost&) = delete;
  ScopedHost& operator=(const ScopedHost&) = delete;
};

// Makes a fresh support-message facility the process's own for a scope, delivering as events, and keeps
// every block it delivers.
class SupportLog {
 public:
  SupportLog() {
    m_debug->SetMode(CDebug::MODE_EVENT);
    m_debug->SupportMessage.Connect([this](const std::string& block) { blocks.push_back(block); });
    CDebug::SetInstance(m_debug);
  }
  ~SupportLog() { CDebug::SetInstance(nullptr); }
  SupportLog(const SupportLog&) = delete;
  SupportLog& operator=(const SupportLog&) = delete;

  std::vector<std::string> blocks;

 private:
  std::shared_ptr<CDebug> m_debug = std::make_shared<CDebug>();
};

}  // namespace cvn73100::test
