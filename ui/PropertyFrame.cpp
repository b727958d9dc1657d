#include "ui/PropertyFrame.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QPushButton>
#include <QShowEvent>
#include <QTabWidget>
#include <QVBoxLayout>
#include <algorithm>

#include "control/Cvn73100Scope.h"
#include "dialogs/AutoCenter.h"
#include "ui/DialogFont.h"
#include "ui/PropertyPage.h"
#include "ui/QtHost.h"
#include "ui/UiText.h"

namespace cvn73100::ui {
namespace {

// The Apply caption; the catalogue may carry it in each language under this number.
constexpr int MSG_APPLY = 333;

}  // namespace

PropertyFrame::PropertyFrame(Cvn73100Scope& control, const std::vector<std::string>& pages, int initialPage,
                             QWidget* parent)
    : QDialog(parent), m_control(control) {
  setObjectName(QStringLiteral("PropertyFrame"));
  setWindowTitle(Msg(104));
  setFont(DialogFont(control.FontName(), control.FontSize()));

  m_tabs = new QTabWidget(this);
  m_tabs->setObjectName(QStringLiteral("PropertyPages"));
  int current = 0;
  for (std::size_t i = 0; i < pages.size(); ++i) {
    const PropertyPageFactory factory = FindPropertyPage(pages[i]);
    if (!factory) continue;
    PropertyPage* page = factory(m_tabs);
    if (!page) continue;
    page->setObjectName(QString::fromStdString(pages[i]));
    if (static_cast<int>(i) == initialPage) current = m_tabs->count();
    m_tabs->addTab(page, page->Caption());
    m_names.push_back(pages[i]);
    connect(page, &PropertyPage::changed, this, &PropertyFrame::UpdateApply);
  }
  m_tabs->setCurrentIndex(current);

  m_ok = new QPushButton(Msg(111), this);
  m_ok->setObjectName(QStringLiteral("CommandOK"));
  m_cancel = new QPushButton(Msg(112), this);
  m_cancel->setObjectName(QStringLiteral("CommandCancel"));
  const QString apply = Msg(MSG_APPLY);
  m_apply = new QPushButton(apply.isEmpty() ? QStringLiteral("Apply") : apply, this);
  m_apply->setObjectName(QStringLiteral("CommandApply"));
  m_ok->setDefault(true);
  for (QPushButton* button : {m_ok, m_cancel, m_apply}) button->setAutoDefault(false);
  connect(m_ok, &QPushButton::clicked, this, &PropertyFrame::accept);
  connect(m_cancel, &QPushButton::clicked, this, &PropertyFrame::reject);
  connect(m_apply, &QPushButton::clicked, this, [this] { Apply(); });

  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(m_ok);
  buttons->addWidget(m_cancel);
  buttons->addWidget(m_apply);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(m_tabs);
  layout->addLayout(buttons);
  // Bound last: a page announces its state to the frame's buttons as it takes the control's data.
  for (int i = 0; i < m_tabs->count(); ++i) Page(i)->Bind(&m_control);
  UpdateApply();
}

PropertyFrame::~PropertyFrame() {
  // The pages go before the frame's own members: each may still talk to the control as it ends, and a
  // page uncovered by its neighbour's going must not reach the frame any more.
  for (int i = 0; i < PageCount(); ++i) disconnect(Page(i), nullptr, this, nullptr);
  while (m_tabs->count() > 0) delete m_tabs->widget(0);
}

int PropertyFrame::PageCount() const { return m_tabs->count(); }

PropertyPage* PropertyFrame::Page(int index) const { return qobject_cast<PropertyPage*>(m_tabs->widget(index)); }

PropertyPage* PropertyFrame::PageNamed(const std::string& className) const {
  const auto found = std::find(m_names.begin(), m_names.end(), className);
  return found == m_names.end() ? nullptr : Page(static_cast<int>(found - m_names.begin()));
}

PropertyPage* PropertyFrame::CurrentPage() const { return qobject_cast<PropertyPage*>(m_tabs->currentWidget()); }

bool PropertyFrame::AnyBusy() const {
  for (int i = 0; i < PageCount(); ++i)
    if (Page(i)->Busy()) return true;
  return false;
}

void PropertyFrame::UpdateApply() {
  bool changed = false;
  for (int i = 0; i < PageCount(); ++i) changed = changed || (Page(i) && Page(i)->Changed());
  m_apply->setEnabled(changed);
}

bool PropertyFrame::Apply() {
  if (AnyBusy()) return false;
  for (int i = 0; i < PageCount(); ++i)
    if (Page(i)->Changed()) Page(i)->ApplyChanges();
  UpdateApply();
  return true;
}

void PropertyFrame::accept() {
  if (Apply()) QDialog::accept();
}

void PropertyFrame::reject() {
  if (!AnyBusy()) QDialog::reject();
}

void PropertyFrame::closeEvent(QCloseEvent* event) {
  if (AnyBusy()) {
    event->ignore();
    return;
  }
  QDialog::closeEvent(event);
}

void PropertyFrame::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  if (event->spontaneous() || !m_control.CenterPropertyPages()) return;
  const IPPCvn73100Scope& link = m_control;
  QWidget* page = m_tabs->currentWidget();
  const Rect placed = AutoCenter::CenterPropertyPage(
      QtHost::HandleOf(page ? page : m_tabs), QtHost::HandleOf(m_tabs), QtHost::HandleOf(this),
      QtHost::ScreenRectOf(this), link.ScreenCenterWidthInPixels(), link.ScreenCenterHeightInPixels());
  move(placed.left, placed.top);
}

}  // namespace cvn73100::ui
