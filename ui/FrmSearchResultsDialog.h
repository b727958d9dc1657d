#pragma once
#include <QDialog>
#include <array>

class QCheckBox;
class QLabel;
class QPushButton;

namespace cvn73100 {
class FrmSearchResults;
}

namespace cvn73100::ui {

// The "Search Instruments Results" dialog drawn from its model: the heading, the explanation naming the
// silent COM ports, one "Exclude from Future Searches" check box per COM port (enabled and ticked as
// the model says) and Continue. Ticks go to the model as the user makes them; Continue hands them over.
// Closing the dialog any other way changes nothing.
//
// Child object names: "Heading", "Explanation", "FrameExclude", "CheckCOM1".."CheckCOM4", "Continue".
class FrmSearchResultsDialog : public QDialog {
  Q_OBJECT
 public:
  // `model` must outlive the dialog and have been filled (Update) before.
  explicit FrmSearchResultsDialog(FrmSearchResults& model, QWidget* parent = nullptr);

  // Shows `model` modally, centred over `parent` and kept within the screen, and returns once it is
  // closed.
  static void ShowModal(FrmSearchResults& model, QWidget* parent);

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  void OnContinue();

  FrmSearchResults& m_model;
  std::array<QCheckBox*, 4> m_checks{};
  bool m_bPlaced = false;
};

}  // namespace cvn73100::ui
