#pragma once
#include <QFont>
#include <QTimer>
#include <vector>

#include "setups/Cvn73100PPSetup.h"
#include "setups/ISetupsPageView.h"
#include "ui/PropertyPage.h"

class QGroupBox;
class QPushButton;
class QTreeWidget;

namespace cvn73100::ui {

// The Setups property page: the list of the control's setups (Name and Comments, the mark on the setup
// the instrument holds), Add and Remove, Get and Send (Instrument), Open and Save As (File), and the
// list's pop-up menu. Cvn73100PPSetup decides everything; this class draws what it says and forwards
// the user's clicks, keys and menu choices to it.
//
// Child object names: "ListViewSetup", "CommandAdd", "CommandRemove", "CommandGetFromInstrument",
// "CommandSendToInstrument", "CommandGetFromFile" (Open), "CommandSendToFile" (Save As).
class SetupsPage : public PropertyPage, public ISetupsPageView {
  Q_OBJECT
 public:
  explicit SetupsPage(QWidget* parent = nullptr);
  ~SetupsPage() override;

  // --- PropertyPage. ---
  QString Caption() const override;
  void SelectionChanged() override;
  void ApplyChanges() override;
  bool Changed() const override;

  // The page's behaviour, for scripts and tests.
  Cvn73100PPSetup& Behaviour() { return m_page; }

  // --- ISetupsPageView. ---
  WindowHandle Window() const override;
  void ShowRows(const std::vector<SetupRow>& rows, int selectedRow) override;
  void EnableButtons(const SetupsPageButtons& buttons) override;
  void SetFont(const std::string& name, int size) override;
  void ShowSetupForm(FrmSetup& form) override;
  void ShowPopupMenu(FrmSetupMenu& menu) override;
  void SetChanged(bool changed) override;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  void Retranslate();
  void OnSelectionChanged();
  int RowOf(const QPoint& viewportPos) const;
  // Runs `handler`, then lets the frame re-read Changed().
  template <class F>
  void Forward(F handler);

  Cvn73100PPSetup m_page;
  QTreeWidget* m_list = nullptr;
  QGroupBox* m_setupFrame = nullptr;
  QGroupBox* m_instrumentFrame = nullptr;
  QGroupBox* m_fileFrame = nullptr;
  QPushButton* m_add = nullptr;
  QPushButton* m_remove = nullptr;
  QPushButton* m_get = nullptr;
  QPushButton* m_send = nullptr;
  QPushButton* m_open = nullptr;
  QPushButton* m_saveAs = nullptr;
  QTimer m_idleTimer;
  QFont m_font;
  std::vector<SetupRow> m_shownRows;
  bool m_bFilling = false;
};

}  // namespace cvn73100::ui
