#pragma once
#include <QDialog>
#include <map>

#include "dialogs/FrmMessageOption.h"
#include "platform/Host.h"

class QCheckBox;
class QLabel;
class QPushButton;

namespace cvn73100::ui {

// Draws a FrmMessageOption: the message, the option check box and the buttons of its mode (Continue
// and Cancel, or OK alone), with the form's font. Every click, the Escape key and the window's close
// button go to the form; the dialog closes when the form does. When a placement is given the dialog
// goes where it says over `placeOver`, once it has its final size and before it appears.
class MessageOptionDialog : public QDialog {
  Q_OBJECT
 public:
  // `form` must outlive the dialog; it is filled (Discover) here.
  explicit MessageOptionDialog(FrmMessageOption& form, QWidget* parent = nullptr);

  void SetPlacement(Placement place, QWidget* placeOver);

  QLabel* MessageLabel() const { return m_message; }
  QCheckBox* OptionBox() const { return m_option; }
  // The button drawn for `button` (hidden when the form's mode has none).
  QPushButton* Button(FrmMessageOption::Button button) const { return m_buttons.at(button); }

 public slots:
  void reject() override;

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  void Click(FrmMessageOption::Button button);

  FrmMessageOption& m_form;
  QLabel* m_message = nullptr;
  QCheckBox* m_option = nullptr;
  std::map<FrmMessageOption::Button, QPushButton*> m_buttons;
  Placement m_place;
  QWidget* m_placeOver = nullptr;
};

}  // namespace cvn73100::ui
