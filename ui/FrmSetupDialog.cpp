#include "ui/FrmSetupDialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFontMetrics>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "setups/FrmSetup.h"
#include "ui/DialogFont.h"
#include "ui/QtHost.h"

namespace cvn73100::ui {
namespace {
// Room for a typical setup name and a line of comments without scrolling.
constexpr int EDIT_WIDTH_CHARS = 44;
}  // namespace

FrmSetupDialog::FrmSetupDialog(FrmSetup& form, const QFont& font, QWidget* parent) : QDialog(parent), m_form(form) {
  setFont(font);
  setWindowTitle(QString::fromStdString(m_form.Caption()));
  setModal(true);

  auto* nameLabel = new QLabel(QString::fromStdString(FrmSetup::NameLabel()), this);
  m_name = new QLineEdit(QString::fromStdString(m_form.Name()), this);
  m_name->setObjectName("Name");
  nameLabel->setBuddy(m_name);
  auto* commentsLabel = new QLabel(QString::fromStdString(FrmSetup::CommentsLabel()), this);
  m_comments = new QLineEdit(QString::fromStdString(m_form.Comments()), this);
  m_comments->setObjectName("Comments");
  commentsLabel->setBuddy(m_comments);
  m_name->setMinimumWidth(LatinTextWidth(font, EDIT_WIDTH_CHARS));

  m_getSetup = new QCheckBox(QString::fromStdString(FrmSetup::CheckBoxCaption()), this);
  m_getSetup->setObjectName("GetSetupFromInstrument");
  m_getSetup->setChecked(m_form.GetSetupFromInstrument());
  m_getSetup->setVisible(m_form.CheckBoxVisible());

  auto* fields = new QGridLayout;
  fields->addWidget(nameLabel, 0, 0);
  fields->addWidget(m_name, 0, 1);
  fields->addWidget(commentsLabel, 1, 0);
  fields->addWidget(m_comments, 1, 1);
  fields->addWidget(m_getSetup, 2, 1);
  fields->setColumnStretch(1, 1);

  auto* buttons = new QDialogButtonBox(this);
  m_ok = buttons->addButton(QString::fromStdString(FrmSetup::OKCaption()), QDialogButtonBox::AcceptRole);
  m_ok->setObjectName("OK");
  m_ok->setDefault(true);
  m_cancel = buttons->addButton(QString::fromStdString(FrmSetup::CancelCaption()), QDialogButtonBox::RejectRole);
  m_cancel->setObjectName("Cancel");
  // OK closes only when the form accepts the texts, so it does not go through the box's accepted().
  connect(m_ok, &QPushButton::clicked, this, &FrmSetupDialog::OnOK);
  connect(m_cancel, &QPushButton::clicked, this, &FrmSetupDialog::reject);

  auto* layout = new QVBoxLayout(this);
  layout->addLayout(fields);
  layout->addSpacing(QFontMetrics(font).height() / 2);
  layout->addWidget(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);
  m_name->setFocus();
  m_name->selectAll();
}

void FrmSetupDialog::ShowModal(FrmSetup& form, const QFont& font, QWidget* parent) {
  FrmSetupDialog dialog(form, font, parent);
  dialog.exec();
  // However the dialog went away, an open form counts as cancelled.
  if (form.IsOpen()) form.CommandCancel_Click();
}

void FrmSetupDialog::OnOK() {
  m_form.SetName(m_name->text().toStdString());
  m_form.SetComments(m_comments->text().toStdString());
  m_form.SetGetSetupFromInstrument(m_getSetup->isChecked());
  // The format messages belong over this dialog, not over the page behind it.
  m_form.SetWindow(QtHost::HandleOf(this));
  if (m_form.CommandOK_Click()) {
    accept();
  } else {
    m_name->setFocus();
  }
}

void FrmSetupDialog::reject() {
  m_form.CommandCancel_Click();
  QDialog::reject();
}

}  // namespace cvn73100::ui
