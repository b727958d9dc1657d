#include "ui/FrmSearchResultsDialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFontMetrics>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "discovery/FrmSearchResults.h"
#include "ui/DialogFont.h"
#include "ui/DialogPlacement.h"

namespace cvn73100::ui {
namespace {

// The explanation as the model writes it, with CR LF line ends, as a label shows it.
QString LabelText(const std::string& text) {
  QString label = QString::fromStdString(text);
  label.replace("\r\n", "\n");
  return label;
}

// Wide enough for the longest explanation sentence to wrap onto two or three lines, not ten.
constexpr int TEXT_WIDTH_CHARS = 64;

}  // namespace

FrmSearchResultsDialog::FrmSearchResultsDialog(FrmSearchResults& model, QWidget* parent)
    : QDialog(parent), m_model(model) {
  const QFont font = DialogFont(m_model.FontName(), m_model.FontSize());
  setFont(font);
  setWindowTitle(QString::fromStdString(m_model.Caption()));
  setModal(true);

  auto* heading = new QLabel(QString::fromStdString(m_model.Heading()), this);
  heading->setObjectName("Heading");
  QFont bold = font;
  bold.setBold(true);
  heading->setFont(bold);

  auto* explanation = new QLabel(LabelText(m_model.Explanation()), this);
  explanation->setObjectName("Explanation");
  explanation->setTextFormat(Qt::PlainText);
  explanation->setWordWrap(true);
  explanation->setFixedWidth(LatinTextWidth(font, TEXT_WIDTH_CHARS));

  auto* frame = new QGroupBox(QString::fromStdString(m_model.FrameCaption()), this);
  frame->setObjectName("FrameExclude");
  auto* checks = new QHBoxLayout(frame);
  for (std::int32_t i = 0; i < FrmSearchResults::COM_PORT_COUNT; ++i) {
    auto* check = new QCheckBox(QString::fromStdString(FrmSearchResults::CheckCaption(i)), frame);
    check->setObjectName(QString("CheckCOM%1").arg(i + 1));
    check->setChecked(m_model.CheckValue(i) == FrmSearchResults::CHECKED);
    check->setEnabled(m_model.CheckEnabled(i));
    connect(check, &QCheckBox::toggled, this, [this, i](bool checked) {
      m_model.CheckCOM1_Click(i, checked ? FrmSearchResults::CHECKED : FrmSearchResults::UNCHECKED);
    });
    checks->addWidget(check);
    m_checks[static_cast<std::size_t>(i)] = check;
  }
  checks->addStretch(1);

  auto* buttons = new QDialogButtonBox(this);
  auto* continueButton =
      buttons->addButton(QString::fromStdString(m_model.ContinueCaption()), QDialogButtonBox::AcceptRole);
  continueButton->setObjectName("Continue");
  continueButton->setDefault(true);
  connect(continueButton, &QPushButton::clicked, this, &FrmSearchResultsDialog::OnContinue);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(heading);
  layout->addWidget(explanation);
  layout->addWidget(frame);
  layout->addWidget(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);
}

void FrmSearchResultsDialog::ShowModal(FrmSearchResults& model, QWidget* parent) {
  FrmSearchResultsDialog dialog(model, parent);
  dialog.exec();
}

void FrmSearchResultsDialog::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  if (!m_bPlaced) {
    m_bPlaced = true;
    PlaceOverParentWithinScreen(this, parentWidget());
  }
}

void FrmSearchResultsDialog::OnContinue() {
  m_model.CommandContinue_Click();
  if (!m_model.Visible()) accept();
}

}  // namespace cvn73100::ui
