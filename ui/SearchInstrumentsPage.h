#pragma once
#include <QIcon>
#include <QTimer>
#include <functional>
#include <memory>

#include "discovery/ISearchInstrumentsView.h"
#include "ui/PropertyPage.h"

class QLabel;
class QProgressBar;
class QPushButton;
class QTreeWidget;

namespace cvn73100 {
class Cvn73100PPSrchIO;
class FrmSearchResults;
}  // namespace cvn73100

namespace cvn73100::ui {

// The Search Instruments page drawn in Qt: the instrument list (Model, X, Address, Manufacturer, and
// the "ConnectedInstrument" icon on the row the control uses), Test and Search, the working and
// message texts. The page's behaviour is Cvn73100PPSrchIO; this class runs its two timers, shows the
// hourglass while it works, and lets the window repaint during a search. While a search runs, Search reads
// Stop and stops it.
class SearchInstrumentsPage : public PropertyPage, public ISearchInstrumentsView {
  Q_OBJECT
 public:
  explicit SearchInstrumentsPage(QWidget* parent = nullptr);
  ~SearchInstrumentsPage() override;

  // --- PropertyPage ---
  QString Caption() const override;
  void SelectionChanged() override;
  void ApplyChanges() override;
  bool Changed() const override;
  bool Busy() const override;

  // --- ISearchInstrumentsView ---
  WindowHandle Window() const override;
  void ShowRows(const std::vector<InstrumentRow>& rows, std::int32_t selectedRow) override;
  void SetWorkingText(const std::string& text) override;
  void SetMessage(const std::string& text, bool visible) override;
  void EnableTest(bool enabled) override;
  void SetChanged(bool changed) override;
  void ShowSearchResults(FrmSearchResults& dialog) override;
  void EnsureVisible(std::int32_t row) override;
  void SetMousePointer(int pointer) override;
  void Refresh() override;
  void FocusSearch() override;
  void SetTimer(SearchPageTimer timer, bool enabled, std::int32_t intervalMs) override;
  void ShowProgress(std::int32_t step, std::int32_t total) override;

  Cvn73100PPSrchIO& Behaviour() const { return *m_page; }
  QTreeWidget* List() const { return m_list; }
  QPushButton* TestButton() const { return m_test; }
  QPushButton* SearchButton() const { return m_search; }
  QLabel* WorkingLabel() const { return m_working; }
  QLabel* MessageLabel() const { return m_message; }
  QTimer& DiscoveryTimer() { return m_discoveryTimer; }
  QTimer& IdleTimer() { return m_idleTimer; }
  // The icon of the row the control uses.
  static QIcon ConnectedInstrumentIcon();

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  // Runs a behaviour event; an error it raises is shown in a box over the page.
  void Run(const std::function<void()>& event);
  // The Search button: starts a search, or asks the one running to stop.
  void SearchOrStop();

  QTimer m_discoveryTimer;
  QTimer m_idleTimer;
  QTreeWidget* m_list = nullptr;
  QLabel* m_supported = nullptr;
  QPushButton* m_test = nullptr;
  QPushButton* m_search = nullptr;
  QLabel* m_working = nullptr;
  QProgressBar* m_progress = nullptr;
  QLabel* m_message = nullptr;
  bool m_waitCursor = false;
  bool m_drawing = false;
  bool m_stopRequested = false;
  std::unique_ptr<Cvn73100PPSrchIO> m_page;
};

}  // namespace cvn73100::ui
