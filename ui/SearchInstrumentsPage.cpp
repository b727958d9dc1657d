#include "ui/SearchInstrumentsPage.h"

#include <QApplication>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QProgressBar>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <cmath>

#include "control/Cvn73100Scope.h"
#include "discovery/Cvn73100PPSrchIO.h"
#include "discovery/FrmSearchResults.h"
#include "platform/Interrupt.h"
#include "ui/FrmSearchResultsDialog.h"
#include "ui/QtHost.h"
#include "ui/ScopeIcon.h"
#include "ui/UiText.h"

namespace cvn73100::ui {
namespace {

enum Column { COLUMN_MODEL, COLUMN_SUPPORTED, COLUMN_ADDRESS, COLUMN_MANUFACTURER };
constexpr int ICON_SIZE = 16;
constexpr int STOP_MESSAGE = 725;  // "Stop": the Search button's caption while a search runs

}  // namespace

QIcon SearchInstrumentsPage::ConnectedInstrumentIcon() {
  // A small instrument screen with a trace on it.
  QPixmap pixmap(ICON_SIZE, ICON_SIZE);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(QColor(40, 40, 48), 1));
  painter.setBrush(QColor(24, 56, 40));
  painter.drawRoundedRect(QRectF(0.5, 2.5, 15, 11), 2, 2);
  QPainterPath trace;
  for (int x = 0; x <= 11; ++x) {
    const double y = 8 - 3 * std::sin(x * 3.14159265 / 5.5);
    if (x == 0) {
      trace.moveTo(2.5 + x, y);
    } else {
      trace.lineTo(2.5 + x, y);
    }
  }
  painter.setPen(QPen(QColor(90, 230, 110), 1.4));
  painter.setBrush(Qt::NoBrush);
  painter.drawPath(trace);
  return QIcon(pixmap);
}

SearchInstrumentsPage::SearchInstrumentsPage(QWidget* parent) : PropertyPage(parent) {
  m_list = new QTreeWidget(this);
  m_list->setObjectName(QStringLiteral("ListViewInstruments"));
  m_list->setRootIsDecorated(false);
  m_list->setUniformRowHeights(true);
  m_list->setAllColumnsShowFocus(true);
  m_list->setSelectionMode(QAbstractItemView::SingleSelection);
  m_list->setIconSize(QSize(ICON_SIZE, ICON_SIZE));
  QStringList headers;
  for (const std::string& header : Cvn73100PPSrchIO::ColumnHeaders()) headers << FromSystem(header);
  m_list->setHeaderLabels(headers);
  m_list->headerItem()->setTextAlignment(COLUMN_SUPPORTED, Qt::AlignCenter);
  QHeaderView* header = m_list->header();
  header->setStretchLastSection(true);
  header->setSectionsMovable(false);
  // Columns as wide as their usual contents or their header, whichever is wider.
  const QFontMetrics metrics = fontMetrics();
  const auto fit = [&metrics, &headers](int column, const QString& sample, int extra) {
    return std::max(metrics.horizontalAdvance(sample), metrics.horizontalAdvance(headers[column])) + extra;
  };
  const int padding = metrics.horizontalAdvance(QLatin1Char('x')) * 3;
  m_list->setColumnWidth(COLUMN_MODEL, fit(COLUMN_MODEL, QStringLiteral("73135D Unknown"), ICON_SIZE + padding));
  m_list->setColumnWidth(COLUMN_SUPPORTED, fit(COLUMN_SUPPORTED, QStringLiteral("X"), padding));
  m_list->setColumnWidth(COLUMN_ADDRESS, fit(COLUMN_ADDRESS, QStringLiteral("GPIB0::30"), padding));
  const int charWidth = metrics.horizontalAdvance(QLatin1Char('x'));
  m_list->setMinimumHeight(fontMetrics().height() * 9);

  m_supported = new QLabel(FromSystem(Cvn73100PPSrchIO::SupportedCaption()), this);
  m_supported->setObjectName(QStringLiteral("LabelSupported"));
  m_test = new QPushButton(FromSystem(Cvn73100PPSrchIO::TestCaption()), this);
  m_test->setObjectName(QStringLiteral("CommandTest"));
  m_test->setEnabled(false);
  m_search = new QPushButton(FromSystem(Cvn73100PPSrchIO::SearchCaption()), this);
  m_search->setObjectName(QStringLiteral("Search"));
  for (QPushButton* button : {m_test, m_search}) {
    button->setAutoDefault(false);
    button->setMinimumWidth(charWidth * 11);
  }

  m_working = new QLabel(this);
  m_working->setObjectName(QStringLiteral("TextWorking"));
  m_working->setTextFormat(Qt::PlainText);
  m_progress = new QProgressBar(this);
  m_progress->setObjectName(QStringLiteral("ProgressSearch"));
  m_progress->setTextVisible(false);
  m_progress->setMaximumHeight(fontMetrics().height() / 2 + 4);
  m_progress->setMaximumWidth(charWidth * 24);
  QSizePolicy keepSpace = m_progress->sizePolicy();
  keepSpace.setRetainSizeWhenHidden(true);
  m_progress->setSizePolicy(keepSpace);
  m_progress->hide();

  m_message = new QLabel(this);
  m_message->setObjectName(QStringLiteral("TextMessage"));
  m_message->setTextFormat(Qt::PlainText);
  m_message->setWordWrap(true);
  m_message->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  m_message->setFrameShape(QFrame::StyledPanel);
  m_message->setMargin(fontMetrics().height() / 3);
  m_message->setMinimumHeight(fontMetrics().height() * 3 + 2 * m_message->margin() + 4);
  QSizePolicy keepMessage = m_message->sizePolicy();
  keepMessage.setRetainSizeWhenHidden(true);
  m_message->setSizePolicy(keepMessage);
  m_message->hide();

  auto* buttons = new QHBoxLayout;
  buttons->addWidget(m_supported, 1);
  buttons->addWidget(m_test);
  buttons->addWidget(m_search);
  auto* working = new QHBoxLayout;
  working->addWidget(m_working, 1);
  working->addWidget(m_progress);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(m_list, 1);
  layout->addLayout(buttons);
  layout->addLayout(working);
  layout->addWidget(m_message);

  connect(m_test, &QPushButton::clicked, this, [this] { Run([this] { m_page->Test_Click(); }); });
  connect(m_search, &QPushButton::clicked, this, [this] { SearchOrStop(); });
  connect(m_list, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* item) {
    if (m_drawing || !item) return;
    const auto row = static_cast<std::int32_t>(m_list->indexOfTopLevelItem(item)) + 1;
    Run([this, row] { m_page->ListViewInstruments_ItemClick(row); });
  });
  connect(m_list, &QTreeWidget::itemDoubleClicked, this,
          [this] { Run([this] { m_page->ListViewInstruments_DblClick(); }); });
  connect(&m_discoveryTimer, &QTimer::timeout, this,
          [this] { Run([this] { m_page->TimerInstrumentDiscovery_Timer(); }); });
  connect(&m_idleTimer, &QTimer::timeout, this, [this] { Run([this] { m_page->TimerIdleProcessing_Timer(); }); });

  // Once the view is whole, the behaviour draws its state and starts its discovery timer through it.
  m_page = std::make_unique<Cvn73100PPSrchIO>(*this);
  m_page->PropertyPage_Paint();
}

SearchInstrumentsPage::~SearchInstrumentsPage() {
  m_page->PropertyPage_Terminate();
  SetMousePointer(Cvn73100PPSrchIO::MOUSE_POINTER_DEFAULT);
}

void SearchInstrumentsPage::Run(const std::function<void()>& event) {
  try {
    event();
  } catch (const Interrupted&) {
    // Stopped by the user: what the event got so far stays shown.
  } catch (const std::exception& error) {
    ShowError(Window(), error);
  }
}

void SearchInstrumentsPage::SearchOrStop() {
  if (m_page->Searching()) {
    m_stopRequested = true;
    return;
  }
  m_stopRequested = false;
  m_search->setText(Msg(STOP_MESSAGE));
  {
    const Interrupt::Scope stop([this] { return m_stopRequested; });
    Run([this] { m_page->Search_Click(); });
  }
  m_search->setText(FromSystem(Cvn73100PPSrchIO::SearchCaption()));
}

// --- PropertyPage ---

QString SearchInstrumentsPage::Caption() const { return FromSystem(Cvn73100PPSrchIO::PageCaption()); }

void SearchInstrumentsPage::SelectionChanged() {
  Run([this] { m_page->PropertyPage_SelectionChanged(SelectedControl()); });
}

void SearchInstrumentsPage::ApplyChanges() {
  Run([this] { m_page->PropertyPage_ApplyChanges(); });
}

bool SearchInstrumentsPage::Changed() const { return m_page->Changed(); }

bool SearchInstrumentsPage::Busy() const { return m_page->Searching(); }

void SearchInstrumentsPage::showEvent(QShowEvent* event) {
  PropertyPage::showEvent(event);
  // The page may appear before the timer's first tick; the guidance should not wait for it.
  if (m_discoveryTimer.isActive() && m_page->Bound()) Run([this] { m_page->TimerInstrumentDiscovery_Timer(); });
}

// --- ISearchInstrumentsView ---

WindowHandle SearchInstrumentsPage::Window() const { return QtHost::HandleOf(this); }

void SearchInstrumentsPage::ShowRows(const std::vector<InstrumentRow>& rows, std::int32_t selectedRow) {
  m_drawing = true;
  const QIcon connected = ConnectedInstrumentIcon();
  const QIcon blank = BlankIcon();
  m_list->clear();
  QList<QTreeWidgetItem*> items;
  for (const InstrumentRow& row : rows) {
    auto* item = new QTreeWidgetItem(QStringList{FromSystem(row.model), FromSystem(row.supported),
                                                 FromSystem(row.address), FromSystem(row.manufacturer)});
    item->setIcon(COLUMN_MODEL, row.icon == Cvn73100PPSrchIO::CONNECTED_INSTRUMENT_ICON ? connected : blank);
    item->setTextAlignment(COLUMN_SUPPORTED, Qt::AlignCenter);
    item->setToolTip(COLUMN_MANUFACTURER, FromSystem(row.reply));
    items << item;
  }
  m_list->addTopLevelItems(items);
  if (selectedRow >= 1 && selectedRow <= static_cast<std::int32_t>(items.size())) {
    m_list->setCurrentItem(items[selectedRow - 1]);
  } else {
    m_list->setCurrentItem(nullptr);
    m_list->clearSelection();
  }
  m_drawing = false;
}

void SearchInstrumentsPage::SetWorkingText(const std::string& text) { m_working->setText(FromSystem(text)); }

void SearchInstrumentsPage::SetMessage(const std::string& text, bool visible) {
  m_message->setText(FromSystem(text));
  m_message->setVisible(visible);
}

void SearchInstrumentsPage::EnableTest(bool enabled) { m_test->setEnabled(enabled); }

void SearchInstrumentsPage::SetChanged(bool changed) {
  (void)changed;
  emit this->changed();
}

void SearchInstrumentsPage::ShowSearchResults(FrmSearchResults& dialog) {
  FrmSearchResultsDialog::ShowModal(dialog, this);
}

void SearchInstrumentsPage::EnsureVisible(std::int32_t row) {
  if (QTreeWidgetItem* item = m_list->topLevelItem(row - 1)) m_list->scrollToItem(item);
}

void SearchInstrumentsPage::SetMousePointer(int pointer) {
  const bool wait = pointer == Cvn73100PPSrchIO::MOUSE_POINTER_HOURGLASS;
  if (wait == m_waitCursor) return;
  m_waitCursor = wait;
  if (wait) {
    QApplication::setOverrideCursor(Qt::WaitCursor);
  } else {
    QApplication::restoreOverrideCursor();
  }
}

void SearchInstrumentsPage::Refresh() {
  // Painted when the behaviour lets the host process its events, right after this.
  update();
  m_list->viewport()->update();
  // The host leaves the user's input for later; during a search it is taken now, so that Stop can be clicked (the
  // page ignores its other buttons meanwhile, and the frame does not close).
  if (m_page && m_page->Searching()) QCoreApplication::processEvents(QEventLoop::AllEvents);
}

void SearchInstrumentsPage::FocusSearch() {
  if (m_search->isVisible()) m_search->setFocus(Qt::OtherFocusReason);
}

void SearchInstrumentsPage::SetTimer(SearchPageTimer timer, bool enabled, std::int32_t intervalMs) {
  QTimer& qtimer = timer == SearchPageTimer::InstrumentDiscovery ? m_discoveryTimer : m_idleTimer;
  qtimer.setInterval(intervalMs);
  if (enabled) {
    qtimer.start();
  } else {
    qtimer.stop();
  }
}

void SearchInstrumentsPage::ShowProgress(std::int32_t step, std::int32_t total) {
  m_progress->setRange(0, std::max(total, 1));
  m_progress->setValue(step);
  m_progress->setVisible(step < total);
}

}  // namespace cvn73100::ui
