#pragma once
#include <QDialog>
#include <string>
#include <vector>

class QPushButton;
class QTabWidget;

namespace cvn73100 {
class Cvn73100Scope;
}

namespace cvn73100::ui {

class PropertyPage;

// The property frame: the control's pages as tabs in the order offered, opened on the page asked
// for, with OK, Cancel and Apply. Each page is made by the factory registered for its class name and
// bound to the control; a name without a factory is left out. Apply is enabled while some page
// holds changes; Apply and OK hand the changed pages' copies to the control in page order; Cancel
// hands nothing back. When the control's CenterPropertyPages is set the frame is centred on the
// screen as the control's geometry says; otherwise it sits over its parent.
class PropertyFrame : public QDialog {
  Q_OBJECT
 public:
  PropertyFrame(Cvn73100Scope& control, const std::vector<std::string>& pages, int initialPage,
                QWidget* parent = nullptr);
  ~PropertyFrame() override;

  int PageCount() const;
  PropertyPage* Page(int index) const;
  // The page made for `className`, or null.
  PropertyPage* PageNamed(const std::string& className) const;
  PropertyPage* CurrentPage() const;
  QTabWidget* Tabs() const { return m_tabs; }
  QPushButton* OkButton() const { return m_ok; }
  QPushButton* CancelButton() const { return m_cancel; }
  QPushButton* ApplyButton() const { return m_apply; }

  // Hands every changed page's copies to the control; false when a page is busy.
  bool Apply();

 public slots:
  void accept() override;
  void reject() override;

 protected:
  void showEvent(QShowEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  bool AnyBusy() const;
  void UpdateApply();

  Cvn73100Scope& m_control;
  std::vector<std::string> m_names;
  QTabWidget* m_tabs = nullptr;
  QPushButton* m_ok = nullptr;
  QPushButton* m_cancel = nullptr;
  QPushButton* m_apply = nullptr;
};

}  // namespace cvn73100::ui
