#include "ui/MessageOptionDialog.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QShowEvent>
#include <QStyle>
#include <QVBoxLayout>
#include <algorithm>

#include "ui/DialogFont.h"
#include "ui/QtHost.h"
#include "ui/UiText.h"

namespace cvn73100::ui {

MessageOptionDialog::MessageOptionDialog(FrmMessageOption& form, QWidget* parent) : QDialog(parent), m_form(form) {
  m_form.Discover();
  setWindowTitle(FromSystem(m_form.Caption()));
  if (!m_form.FontName().empty()) setFont(DialogFont(m_form.FontName(), m_form.FontSize()));

  auto* icon = new QLabel(this);
  const int iconSize = style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, this);
  icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning, nullptr, this).pixmap(iconSize, iconSize));
  icon->setAlignment(Qt::AlignTop);

  m_message = new QLabel(FromSystem(m_form.Message()), this);
  m_message->setObjectName(QStringLiteral("LabelMessage"));
  m_message->setWordWrap(true);
  m_message->setTextFormat(Qt::PlainText);
  // As wide as the message's longest line, within reason, so that its own line breaks are the ones shown.
  int widest = 0;
  for (const QString& line : m_message->text().split(QLatin1Char('\n')))
    widest = std::max(widest, m_message->fontMetrics().horizontalAdvance(line));
  const int unit = m_message->fontMetrics().horizontalAdvance(QLatin1Char('x'));
  m_message->setMinimumWidth(std::clamp(widest + 2, unit * 40, unit * 100));

  m_option = new QCheckBox(FromSystem(m_form.OptionText()), this);
  m_option->setObjectName(QStringLiteral("CheckOption"));
  m_option->setChecked(m_form.OptionChecked());

  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  using B = FrmMessageOption::Button;
  for (B button : {B::Continue, B::OK, B::Cancel}) {
    auto* push = new QPushButton(FromSystem(m_form.ButtonCaption(button)), this);
    push->setVisible(m_form.IsVisible(button));
    push->setAutoDefault(false);
    connect(push, &QPushButton::clicked, this, [this, button] { Click(button); });
    buttons->addWidget(push);
    m_buttons[button] = push;
  }
  m_buttons[B::Continue]->setObjectName(QStringLiteral("CommandContinue"));
  m_buttons[B::OK]->setObjectName(QStringLiteral("CommandOK"));
  m_buttons[B::Cancel]->setObjectName(QStringLiteral("CommandCancel"));
  (m_form.IsVisible(B::Continue) ? m_buttons[B::Continue] : m_buttons[B::OK])->setDefault(true);

  auto* text = new QVBoxLayout;
  text->addWidget(m_message);
  text->addSpacing(fontMetrics().height() / 2);
  text->addWidget(m_option);
  auto* body = new QHBoxLayout;
  body->addWidget(icon);
  body->addSpacing(fontMetrics().averageCharWidth() * 2);
  body->addLayout(text, 1);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(body);
  layout->addSpacing(fontMetrics().height() / 2);
  layout->addLayout(buttons);
  // The label's height follows its text, and the dialog its contents.
  layout->setSizeConstraint(QLayout::SetFixedSize);
}

void MessageOptionDialog::SetPlacement(Placement place, QWidget* placeOver) {
  m_place = std::move(place);
  m_placeOver = placeOver;
}

void MessageOptionDialog::Click(FrmMessageOption::Button button) {
  m_form.SetOptionChecked(m_option->isChecked());
  m_form.Click(button);
  if (m_form.Closed()) done(m_form.Result().button);
}

void MessageOptionDialog::reject() {
  // Escape and the window's close button both press the form's Escape button.
  Click(m_form.EscapeButton());
}

void MessageOptionDialog::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  if (!m_place || !m_placeOver || event->spontaneous()) return;
  const Rect placed = m_place(QtHost::ScreenRectOf(this), QtHost::ScreenRectOf(m_placeOver));
  move(placed.left, placed.top);
}

}  // namespace cvn73100::ui
