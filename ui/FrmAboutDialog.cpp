#include "ui/FrmAboutDialog.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "dialogs/FrmAbout.h"
#include "dialogs/Messages.h"
#include "ui/DialogFont.h"
#include "ui/ScopeIcon.h"

namespace cvn73100::ui {
namespace {

constexpr int MSG_OK = 111;
constexpr int PICTURE_SIZE = 48;

QStringList ToQt(const std::vector<std::string>& lines) {
  QStringList list;
  for (const auto& line : lines) list << QString::fromStdString(line);
  return list;
}

}  // namespace

FrmAboutDialog::FrmAboutDialog(FrmAbout& about, QWidget* parent) : QDialog(parent), m_about(&about) {
  Build(QString::fromStdString(about.Caption()), ToQt(about.Lines()), QString::fromStdString(about.OKCaption()));
}

FrmAboutDialog::FrmAboutDialog(const QString& title, const QStringList& lines, QWidget* parent) : QDialog(parent) {
  Build(title, lines, QString::fromStdString(Messages::Load(MSG_OK)));
}

void FrmAboutDialog::ShowModal(const std::string& version, QWidget* parent) {
  FrmAbout about(version);
  FrmAboutDialog dialog(about, parent);
  dialog.exec();
}

void FrmAboutDialog::Build(const QString& title, const QStringList& lines, const QString& okCaption) {
  setFont(LanguageFont());
  setWindowTitle(title);
  setModal(true);

  auto* picture = new QLabel(this);
  picture->setPixmap(ScopeIconPixmap(PICTURE_SIZE, devicePixelRatioF()));
  picture->setAlignment(Qt::AlignTop);

  auto* text = new QVBoxLayout;
  for (int i = 0; i < lines.size(); ++i) {
    auto* label = new QLabel(lines[i], this);
    label->setObjectName(QString("Line%1").arg(i + 1));
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    if (i == 0) {
      QFont bold = font();
      bold.setBold(true);
      label->setFont(bold);
    }
    text->addWidget(label);
  }
  text->addStretch(1);

  auto* top = new QHBoxLayout;
  top->addWidget(picture);
  top->addSpacing(PICTURE_SIZE / 4);
  top->addLayout(text, 1);

  auto* buttons = new QDialogButtonBox(this);
  auto* ok = buttons->addButton(okCaption, QDialogButtonBox::AcceptRole);
  ok->setObjectName("OK");
  ok->setDefault(true);
  connect(ok, &QPushButton::clicked, this, [this] {
    if (m_about) m_about->OK();
    accept();
  });
  buttons->setCenterButtons(true);

  auto* layout = new QVBoxLayout(this);
  layout->addLayout(top);
  layout->addWidget(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);
}

}  // namespace cvn73100::ui
