#pragma once
#include <QDialog>
#include <QStringList>
#include <string>

namespace cvn73100 {
class FrmAbout;
}

namespace cvn73100::ui {

// The About box: the control's picture, the title, its lines (who made it, "Version:" and the version,
// the copyright) and one OK button, in the current language and its font.
//
// Child object names: "Line1".."LineN", "OK".
class FrmAboutDialog : public QDialog {
  Q_OBJECT
 public:
  // Draws `about`, whose OK is pressed when the dialog's OK is. `about` must outlive the dialog.
  explicit FrmAboutDialog(FrmAbout& about, QWidget* parent = nullptr);
  // Draws a title and lines handed over as they are (the host's About box request).
  FrmAboutDialog(const QString& title, const QStringList& lines, QWidget* parent = nullptr);

  // Shows the About box of the control's `version` modally.
  static void ShowModal(const std::string& version, QWidget* parent);

 private:
  void Build(const QString& title, const QStringList& lines, const QString& okCaption);

  FrmAbout* m_about = nullptr;
};

}  // namespace cvn73100::ui
