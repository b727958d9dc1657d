#include "ui/SetupsPage.h"

#include <QAction>
#include <QCursor>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "control/Cvn73100Scope.h"
#include "dialogs/Messages.h"
#include "ui/DialogFont.h"
#include "ui/FrmSetupDialog.h"
#include "ui/QtHost.h"
#include "ui/ScopeIcon.h"

namespace cvn73100::ui {
namespace {

constexpr int NAME_COLUMN = 0;
constexpr int COMMENTS_COLUMN = 1;
// The Name column's first width, in average characters; the Comments column takes the rest.
constexpr int NAME_COLUMN_CHARS = 18;
// The list's smallest useful size, in text lines and average characters.
constexpr int LIST_MIN_LINES = 8;
constexpr int LIST_MIN_CHARS = 44;

QPushButton* MakeButton(const char* objectName, QWidget* parent) {
  auto* button = new QPushButton(parent);
  button->setObjectName(objectName);
  button->setAutoDefault(false);
  return button;
}

}  // namespace

SetupsPage::SetupsPage(QWidget* parent) : PropertyPage(parent), m_page(*this) {
  m_setupFrame = new QGroupBox(this);
  m_list = new QTreeWidget(m_setupFrame);
  m_list->setObjectName("ListViewSetup");
  m_list->setColumnCount(2);
  m_list->setRootIsDecorated(false);
  m_list->setUniformRowHeights(true);
  m_list->setAllColumnsShowFocus(true);
  m_list->setSelectionMode(QAbstractItemView::SingleSelection);
  m_list->setSelectionBehavior(QAbstractItemView::SelectRows);
  m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
  m_list->setIconSize(QSize(16, 16));
  m_list->header()->setStretchLastSection(true);
  m_list->header()->setSectionsMovable(false);
  m_list->installEventFilter(this);
  m_list->viewport()->installEventFilter(this);
  auto* listLayout = new QVBoxLayout(m_setupFrame);
  listLayout->addWidget(m_list);

  m_add = MakeButton("CommandAdd", this);
  m_remove = MakeButton("CommandRemove", this);
  m_instrumentFrame = new QGroupBox(this);
  m_get = MakeButton("CommandGetFromInstrument", m_instrumentFrame);
  m_send = MakeButton("CommandSendToInstrument", m_instrumentFrame);
  auto* instrumentLayout = new QVBoxLayout(m_instrumentFrame);
  instrumentLayout->addWidget(m_get);
  instrumentLayout->addWidget(m_send);
  m_fileFrame = new QGroupBox(this);
  m_open = MakeButton("CommandGetFromFile", m_fileFrame);
  m_saveAs = MakeButton("CommandSendToFile", m_fileFrame);
  auto* fileLayout = new QVBoxLayout(m_fileFrame);
  fileLayout->addWidget(m_open);
  fileLayout->addWidget(m_saveAs);

  // Add and Remove line up with the buttons inside the two frames below them.
  auto* listButtons = new QVBoxLayout;
  const QMargins frameMargins = instrumentLayout->contentsMargins();
  listButtons->setContentsMargins(frameMargins.left(), 0, frameMargins.right(), 0);
  listButtons->addWidget(m_add);
  listButtons->addWidget(m_remove);
  auto* commands = new QVBoxLayout;
  commands->addSpacing(m_setupFrame->fontMetrics().height());
  commands->addLayout(listButtons);
  commands->addSpacing(frameMargins.bottom());
  commands->addWidget(m_instrumentFrame);
  commands->addWidget(m_fileFrame);
  commands->addStretch(1);

  auto* layout = new QHBoxLayout(this);
  layout->addWidget(m_setupFrame, 1);
  layout->addLayout(commands);

  connect(m_add, &QPushButton::clicked, this, [this] { Forward([this] { m_page.CommandAdd_Click(); }); });
  connect(m_remove, &QPushButton::clicked, this, [this] { Forward([this] { m_page.CommandRemove_Click(); }); });
  connect(m_get, &QPushButton::clicked, this, [this] { Forward([this] { m_page.CommandGetFromInstrument_Click(); }); });
  connect(m_send, &QPushButton::clicked, this, [this] { Forward([this] { m_page.CommandSendToInstrument_Click(); }); });
  connect(m_open, &QPushButton::clicked, this, [this] { Forward([this] { m_page.CommandGetFromFile_Click(); }); });
  connect(m_saveAs, &QPushButton::clicked, this, [this] { Forward([this] { m_page.CommandSendToFile_Click(); }); });
  connect(m_list, &QTreeWidget::itemSelectionChanged, this, &SetupsPage::OnSelectionChanged);
  connect(m_list, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem* item) {
    const int row = m_list->indexOfTopLevelItem(item);
    Forward([this, row] { m_page.ListViewSetup_DblClick(row); });
  });

  m_idleTimer.setInterval(Cvn73100PPSetup::IDLE_INTERVAL_MS);
  connect(&m_idleTimer, &QTimer::timeout, this, [this] {
    if (m_page.IsBound()) m_page.TimerIdleProcessing_Timer();
  });

  // Until a control is bound there is no setup to act on.
  EnableButtons(SetupsPageButtons{});
  m_page.PropertyPage_Initialize();
  SetFont(Cvn73100Scope::DEFAULT_FONT_NAME, Cvn73100Scope::DEFAULT_FONT_SIZE);
  Retranslate();
}

SetupsPage::~SetupsPage() {
  m_idleTimer.stop();
  m_page.PropertyPage_Terminate();
}

QString SetupsPage::Caption() const { return QString::fromStdString(SetupsPageCaptions::Load().page); }

void SetupsPage::SelectionChanged() {
  // The language may have changed since the page was made.
  Retranslate();
  if (Cvn73100Scope* control = SelectedControl()) m_page.PropertyPage_SelectionChanged(*control);
  if (isVisible() && m_page.IsBound()) m_idleTimer.start();
}

void SetupsPage::ApplyChanges() {
  m_page.PropertyPage_ApplyChanges();
  emit changed();
}

bool SetupsPage::Changed() const { return m_page.Changed(); }

void SetupsPage::Retranslate() {
  const SetupsPageCaptions captions = SetupsPageCaptions::Load();
  m_list->setHeaderLabels(
      {QString::fromStdString(captions.nameColumn), QString::fromStdString(captions.commentsColumn)});
  m_setupFrame->setTitle(QString::fromStdString(captions.setup));
  m_add->setText(QString::fromStdString(captions.add));
  m_remove->setText(QString::fromStdString(captions.remove));
  m_instrumentFrame->setTitle(QString::fromStdString(captions.instrumentFrame));
  m_get->setText(QString::fromStdString(captions.getFromInstrument));
  m_send->setText(QString::fromStdString(captions.sendToInstrument));
  m_fileFrame->setTitle(QString::fromStdString(captions.fileFrame));
  m_open->setText(QString::fromStdString(captions.open));
  m_saveAs->setText(QString::fromStdString(captions.saveAs));
}

// --- ISetupsPageView. ---

WindowHandle SetupsPage::Window() const { return QtHost::HandleOf(this); }

void SetupsPage::ShowRows(const std::vector<SetupRow>& rows, int selectedRow) {
  m_bFilling = true;
  if (rows != m_shownRows) {
    m_list->clear();
    const QIcon mark = ScopeIcon();
    const QIcon blank = BlankIcon();
    QList<QTreeWidgetItem*> items;
    for (const SetupRow& row : rows) {
      auto* item = new QTreeWidgetItem({QString::fromStdString(row.name), QString::fromStdString(row.comments)});
      item->setIcon(NAME_COLUMN, row.icon == Cvn73100PPSetup::CURRENT_SETUP_ICON ? mark : blank);
      item->setData(NAME_COLUMN, Qt::UserRole, QString::fromStdString(row.icon));
      item->setToolTip(COMMENTS_COLUMN, QString::fromStdString(row.comments));
      items << item;
    }
    m_list->addTopLevelItems(items);
    m_shownRows = rows;
  }
  if (selectedRow >= 0 && selectedRow < m_list->topLevelItemCount()) {
    QTreeWidgetItem* item = m_list->topLevelItem(selectedRow);
    m_list->setCurrentItem(item);
    m_list->scrollToItem(item);
  } else {
    m_list->clearSelection();
    m_list->setCurrentItem(nullptr);
  }
  m_bFilling = false;
}

void SetupsPage::EnableButtons(const SetupsPageButtons& buttons) {
  m_remove->setEnabled(buttons.remove);
  m_get->setEnabled(buttons.getFromInstrument);
  m_send->setEnabled(buttons.sendToInstrument);
  m_saveAs->setEnabled(buttons.sendToFile);
}

void SetupsPage::SetFont(const std::string& name, int size) {
  m_font = DialogFont(name, size);
  QWidget::setFont(m_font);
  const QFontMetrics metrics(m_font);
  m_list->setMinimumSize(LatinTextWidth(m_font, LIST_MIN_CHARS),
                         metrics.height() * LIST_MIN_LINES + m_list->header()->sizeHint().height());
  m_list->setColumnWidth(NAME_COLUMN, LatinTextWidth(m_font, NAME_COLUMN_CHARS) + m_list->iconSize().width());
}

void SetupsPage::ShowSetupForm(FrmSetup& form) { FrmSetupDialog::ShowModal(form, m_font, this); }

void SetupsPage::ShowPopupMenu(FrmSetupMenu& menu) {
  QMenu popup(this);
  popup.setObjectName("FrmSetupMenu");
  QAction* edit = popup.addAction(QString::fromStdString(FrmSetupMenu::EditCaption()));
  edit->setObjectName("Edit");
  edit->setEnabled(menu.EditEnabled());
  QAction* copy = popup.addAction(QString::fromStdString(FrmSetupMenu::CopyCaption()));
  copy->setObjectName("Copy");
  copy->setEnabled(menu.CopyEnabled());
  // The choice is forwarded after the menu has closed, so that a dialog the entry opens does not
  // appear under a menu that is still on the screen.
  QAction* chosen = nullptr;
  connect(edit, &QAction::triggered, &popup, [&chosen, edit] { chosen = edit; });
  connect(copy, &QAction::triggered, &popup, [&chosen, copy] { chosen = copy; });
  popup.exec(QCursor::pos());
  if (chosen == edit) {
    menu.Edit_Click();
  } else if (chosen == copy) {
    menu.Copy_Click();
  }
}

void SetupsPage::SetChanged(bool) { emit changed(); }

// --- Qt events. ---

bool SetupsPage::eventFilter(QObject* watched, QEvent* event) {
  if (watched == m_list && event->type() == QEvent::KeyRelease) {
    const auto* key = static_cast<QKeyEvent*>(event);
    if (key->key() == Qt::Key_Delete && !key->isAutoRepeat()) {
      Forward([this] { m_page.ListViewSetup_KeyUp(Cvn73100PPSetup::KEY_DELETE); });
      return true;
    }
  }
  if (watched == m_list->viewport() && event->type() == QEvent::MouseButtonRelease) {
    const auto* mouse = static_cast<QMouseEvent*>(event);
    if (mouse->button() == Qt::RightButton) {
      // A right click selects the row under the pointer first, as a left click would.
      const int row = RowOf(mouse->position().toPoint());
      if (row >= 0) Forward([this, row] { m_page.ListViewSetup_Click(row); });
      Forward([this] { m_page.ListViewSetup_MouseUp(Cvn73100PPSetup::RIGHT_BUTTON); });
      return true;
    }
  }
  return PropertyPage::eventFilter(watched, event);
}

void SetupsPage::showEvent(QShowEvent* event) {
  PropertyPage::showEvent(event);
  if (m_page.IsBound()) {
    m_page.PropertyPage_Paint();
    m_idleTimer.start();
  }
}

void SetupsPage::hideEvent(QHideEvent* event) {
  m_idleTimer.stop();
  PropertyPage::hideEvent(event);
}

// --- Private. ---

void SetupsPage::OnSelectionChanged() {
  if (m_bFilling) return;
  const QList<QTreeWidgetItem*> selected = m_list->selectedItems();
  const int row = selected.isEmpty() ? -1 : m_list->indexOfTopLevelItem(selected.front());
  Forward([this, row] { m_page.ListViewSetup_Click(row); });
}

int SetupsPage::RowOf(const QPoint& viewportPos) const {
  QTreeWidgetItem* item = m_list->itemAt(viewportPos);
  return item ? m_list->indexOfTopLevelItem(item) : -1;
}

template <class F>
void SetupsPage::Forward(F handler) {
  handler();
  emit changed();
}

}  // namespace cvn73100::ui
