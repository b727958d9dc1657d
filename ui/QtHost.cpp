#include "ui/QtHost.h"

#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QGuiApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QShowEvent>
#include <QWidget>
#include <algorithm>

#include "control/Cvn73100Scope.h"
#include "dialogs/AutoCenter.h"
#include "dialogs/FrmMessageOption.h"
#include "ui/DialogFont.h"
#include "ui/DialogPlacement.h"
#include "ui/FrmAboutDialog.h"
#include "ui/MessageOptionDialog.h"
#include "ui/PropertyFrame.h"
#include "ui/UiText.h"

namespace cvn73100::ui {
namespace {

constexpr int BUTTONS_MASK = 0xF;
constexpr int ICON_MASK = 0x70;
constexpr int ICON_CRITICAL = 16;
constexpr int ICON_QUESTION = 32;

// A message box that takes its place once it has its final size, before it appears.
class PlacedMessageBox : public QMessageBox {
 public:
  PlacedMessageBox(QWidget* parent, Placement place, QWidget* placeOver)
      : QMessageBox(parent), m_place(std::move(place)), m_placeOver(placeOver) {}

 protected:
  void showEvent(QShowEvent* event) override {
    QMessageBox::showEvent(event);
    if (!m_place || !m_placeOver || event->spontaneous()) return;
    const Rect placed = m_place(QtHost::ScreenRectOf(this), QtHost::ScreenRectOf(m_placeOver));
    move(placed.left, placed.top);
  }

 private:
  Placement m_place;
  QWidget* m_placeOver;
};

QMessageBox::Icon IconOfStyle(int style) {
  switch (style & ICON_MASK) {
    case ICON_CRITICAL:
      return QMessageBox::Critical;
    case ICON_QUESTION:
      return QMessageBox::Question;
    case MsgBoxStyle::Exclamation:
      return QMessageBox::Warning;
    case MsgBoxStyle::Information:
      return QMessageBox::Information;
    default:
      return QMessageBox::NoIcon;
  }
}

// The control's font when a control is known, otherwise the language's.
QFont FontFor(const Cvn73100Scope* control) {
  return control ? DialogFont(control->FontName(), control->FontSize()) : LanguageFont();
}

// "Description (*.scp; *.stp)" with patterns "*.scp;*.stp": Qt reads the patterns from the last
// parentheses and shows only what comes before them, so the description appears as it stands.
QString NameFilter(const std::pair<std::string, std::string>& filter) {
  QString patterns = QString::fromStdString(filter.second);
  patterns.replace(QLatin1Char(';'), QLatin1Char(' '));
  return QString::fromStdString(filter.first) + QStringLiteral(" (") + patterns.simplified() + QLatin1Char(')');
}

}  // namespace

QtHost::QtHost(QObject* parent) : QObject(parent) {}

QtHost::~QtHost() {
  if (&Host::Current() == this) Host::SetCurrent(nullptr);
}

void QtHost::Install() { Host::SetCurrent(this); }

void QtHost::AnnounceShown(QDialog* dialog) {
  // Posted now, delivered by the dialog's own event loop: by then it is on the screen.
  QPointer<QDialog> shown(dialog);
  QMetaObject::invokeMethod(
      this,
      [this, shown] {
        if (shown && shown->isVisible()) emit dialogShown(shown);
      },
      Qt::QueuedConnection);
}

WindowHandle QtHost::HandleOf(const QWidget* widget) { return reinterpret_cast<WindowHandle>(widget); }

QWidget* QtHost::WidgetOf(WindowHandle handle) {
  if (handle == 0) return nullptr;
  const auto widgets = QApplication::allWidgets();
  for (QWidget* widget : widgets)
    if (reinterpret_cast<WindowHandle>(widget) == handle) return widget;
  return nullptr;
}

Rect QtHost::ScreenRectOf(const QWidget* widget) {
  if (widget->isWindow()) return ToRect(widget->frameGeometry());
  return ToRect(QRect(widget->mapToGlobal(QPoint(0, 0)), widget->size()));
}

void QtHost::SetPropertyPageControl(Cvn73100Scope* control, QWidget* owner) {
  m_pageControl = control;
  m_pageOwner = owner;
}

void QtHost::ForgetPropertyPageControl(const Cvn73100Scope* control) {
  if (m_pageControl == control) SetPropertyPageControl(nullptr, nullptr);
}

// --- Message boxes ---

int QtHost::ShowBox(QWidget* parent, const std::string& prompt, int style, const std::string& title,
                    const Placement& place) {
  PlacedMessageBox box(parent, place, parent);
  box.setWindowTitle(FromSystem(title));
  box.setText(FromSystem(prompt));
  box.setTextFormat(Qt::PlainText);
  box.setIcon(IconOfStyle(style));
  box.setFont(FontFor(m_pageControl));
  const bool okCancel = (style & BUTTONS_MASK) == MsgBoxStyle::OKCancel;
  QPushButton* ok = box.addButton(Msg(111), QMessageBox::AcceptRole);
  QPushButton* cancel = okCancel ? box.addButton(Msg(112), QMessageBox::RejectRole) : nullptr;
  box.setDefaultButton(ok);
  box.setEscapeButton(cancel ? cancel : ok);
  if (style & MsgBoxStyle::SetForeground) {
    QObject::connect(this, &QtHost::dialogShown, &box, [&box](QDialog* shown) {
      if (shown != &box) return;
      box.raise();
      box.activateWindow();
    });
  }
  AnnounceShown(&box);
  box.exec();
  return box.clickedButton() == cancel && cancel ? MsgBoxResult::Cancel : MsgBoxResult::OK;
}

int QtHost::MsgBox(WindowHandle parent, const std::string& prompt, int style, const std::string& title) {
  return ShowBox(WidgetOf(parent), prompt, style, title, Placement());
}

int QtHost::MsgBoxPlaced(WindowHandle parent, const std::string& prompt, int style, const std::string& title,
                         const Placement& place, const std::string& helpFile, int helpContext) {
  // Help files are of the old help system; the box shows no Help button for them.
  (void)helpFile;
  (void)helpContext;
  return ShowBox(WidgetOf(parent), prompt, style, title, place);
}

MessageOptionResult QtHost::ShowMessageOption(const MessageOptionRequest& request) {
  FrmMessageOption form(request);
  if (m_pageControl) form.SetControlFont(m_pageControl->FontName(), m_pageControl->FontSize());
  QWidget* parent = WidgetOf(request.parent);
  MessageOptionDialog dialog(form, parent);
  if (!m_pageControl) dialog.setFont(LanguageFont());
  if (request.placeOnParent && parent)
    dialog.SetPlacement(request.placement ? request.placement : AutoCenter::MessageOptionPlacement(), parent);
  AnnounceShown(&dialog);
  dialog.exec();
  // Closed some other way than through the form (the program quit): nothing was chosen.
  if (!form.Closed()) return MessageOptionResult{MsgBoxResult::Cancel, request.optionChecked};
  return form.Result();
}

// --- File dialogs ---

std::optional<FileDialogResult> QtHost::RunFileDialog(const FileDialogRequest& request, bool save) {
  constexpr long OVERWRITE_PROMPT = 0x2;
  constexpr long FILE_MUST_EXIST = 0x1000;
  QFileDialog dialog(WidgetOf(request.owner), FromSystem(request.title),
                     QString::fromStdString(request.initialDirectory));
  dialog.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
  dialog.setFileMode(save || !(request.flags & FILE_MUST_EXIST) ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
  dialog.setOption(QFileDialog::HideNameFilterDetails, true);
  dialog.setOption(QFileDialog::DontConfirmOverwrite, !(request.flags & OVERWRITE_PROMPT));
  QStringList filters;
  for (const auto& filter : request.filters) filters << NameFilter(filter);
  if (!filters.isEmpty()) {
    dialog.setNameFilters(filters);
    const int index = std::clamp(request.filterIndex, 1, static_cast<int>(filters.size()));
    dialog.selectNameFilter(filters[index - 1]);
  }
  if (!request.fileName.empty()) dialog.selectFile(QString::fromStdString(request.fileName));
  AnnounceShown(&dialog);
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;
  FileDialogResult result;
  result.path = dialog.selectedFiles().first().toStdString();
  // The dialog names the chosen filter as it shows it: the description alone.
  const QString chosen = dialog.selectedNameFilter();
  result.filterIndex = request.filterIndex;
  for (std::size_t i = 0; i < request.filters.size(); ++i)
    if (chosen == QString::fromStdString(request.filters[i].first) || chosen == filters[static_cast<int>(i)])
      result.filterIndex = static_cast<int>(i) + 1;
  return result;
}

std::optional<FileDialogResult> QtHost::GetOpenFileName(const FileDialogRequest& request) {
  return RunFileDialog(request, false);
}

std::optional<FileDialogResult> QtHost::GetSaveFileName(const FileDialogRequest& request) {
  return RunFileDialog(request, true);
}

// --- Clipboard, events, notices ---

void QtHost::SetClipboardText(const std::string& text) {
  QGuiApplication::clipboard()->setText(QString::fromStdString(text));
}

std::string QtHost::ClipboardText() { return QGuiApplication::clipboard()->text().toStdString(); }

void QtHost::ProcessEvents() { QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents); }

void QtHost::PropertyChanged(const std::string& name) { emit propertyChanged(QString::fromStdString(name)); }

std::pair<int, int> QtHost::ScreenSizeInPixels() {
  const QScreen* screen = QGuiApplication::primaryScreen();
  if (!screen) return Host::ScreenSizeInPixels();
  const QSize size = screen->size();
  return {size.width(), size.height()};
}

// --- Property frame, About box ---

void QtHost::ShowPropertyPages(const std::vector<std::string>& pages, int initialPage) {
  if (!m_pageControl) return;
  QWidget* owner = m_pageOwner ? m_pageOwner->window() : nullptr;
  PropertyFrame frame(*m_pageControl, pages, initialPage, owner);
  AnnounceShown(&frame);
  frame.exec();
}

void QtHost::ShowAboutBox(const std::string& title, const std::vector<std::string>& lines) {
  QStringList texts;
  for (const std::string& line : lines) texts << FromSystem(line);
  FrmAboutDialog dialog(FromSystem(title), texts, m_pageOwner ? m_pageOwner->window() : nullptr);
  AnnounceShown(&dialog);
  dialog.exec();
}

}  // namespace cvn73100::ui
