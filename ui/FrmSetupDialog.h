#pragma once
#include <QDialog>
#include <QFont>

class QCheckBox;
class QLineEdit;
class QPushButton;

namespace cvn73100 {
class FrmSetup;
}

namespace cvn73100::ui {

// The Add New Setup / Edit Setup dialog drawn from its form: the title, the Name and Comments boxes,
// the "Get Setup From Instrument" check box when adding, OK and Cancel. OK hands the edits to the form,
// which shows why a name or comment is refused and keeps the dialog open; Cancel, Escape and the close
// box cancel.
//
// Child object names, for tests and scripts: "Name", "Comments", "GetSetupFromInstrument", "OK",
// "Cancel".
class FrmSetupDialog : public QDialog {
  Q_OBJECT
 public:
  // `form` must outlive the dialog; it is filled (Update) before the dialog is made.
  FrmSetupDialog(FrmSetup& form, const QFont& font, QWidget* parent = nullptr);

  // Shows `form` modally over `parent` and returns once it is closed; the form holds the result.
  static void ShowModal(FrmSetup& form, const QFont& font, QWidget* parent);

 public slots:
  void reject() override;

 private:
  void OnOK();

  FrmSetup& m_form;
  QLineEdit* m_name = nullptr;
  QLineEdit* m_comments = nullptr;
  QCheckBox* m_getSetup = nullptr;
  QPushButton* m_ok = nullptr;
  QPushButton* m_cancel = nullptr;
};

}  // namespace cvn73100::ui
