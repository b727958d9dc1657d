#include "ui/ScopeMainWindow.h"

#include <QChart>
#include <QChartView>
#include <QCloseEvent>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLineSeries>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <QStatusBar>
#include <QVBoxLayout>
#include <QValueAxis>
#include <algorithm>
#include <cmath>
#include <exception>

#include "control/Cvn73100Scope.h"
#include "form/FormFile.h"
#include "platform/PropertyBag.h"
#include "platform/ScopeError.h"
#include "ui/Cvn73100ScopeWidget.h"
#include "ui/QtHost.h"
#include "ui/UiText.h"

namespace cvn73100::ui {
namespace {

struct TimeUnit {
  double scale;
  const char* name;
};

// The unit that shows a record of `span` seconds with a few digits before the point.
TimeUnit UnitFor(double span) {
  if (span < 1e-6) return {1e9, "ns"};
  if (span < 1e-3) return {1e6, "\u00b5s"};
  if (span < 1.0) return {1e3, "ms"};
  return {1.0, "s"};
}

// A step of 1, 2 or 5 times a power of ten that divides `span` into at most `count` parts.
double NiceStep(double span, int count) {
  if (!(span > 0.0)) return 1.0;
  const double raw = span / count;
  const double power = std::pow(10.0, std::floor(std::log10(raw)));
  for (double factor : {1.0, 2.0, 5.0}) {
    if (factor * power >= raw) return factor * power;
  }
  return 10.0 * power;
}

QPushButton* Button(const QString& text, const char* objectName, QWidget* parent) {
  auto* button = new QPushButton(text, parent);
  button->setObjectName(objectName);
  return button;
}

}  // namespace

ScopeMainWindow::ScopeMainWindow(QString formPath, QWidget* parent)
    : QMainWindow(parent), m_formPath(std::move(formPath)) {
  setObjectName("CvnScopeMainWindow");
  setWindowTitle("cvnscope-gui");
  auto* central = new QWidget(this);
  setCentralWidget(central);

  // The control on its form, and what the form offers around it.
  auto* controlBox = new QGroupBox("Control", central);
  m_scopeWidget = new Cvn73100ScopeWidget(controlBox);
  auto* initialize = Button("Initialize", "CommandInitialize", controlBox);
  auto* about = Button("About...", "CommandAbout", controlBox);
  auto* controlButtons = new QHBoxLayout;
  controlButtons->addWidget(initialize);
  controlButtons->addWidget(about);
  controlButtons->addStretch(1);
  auto* controlLayout = new QVBoxLayout(controlBox);
  controlLayout->addWidget(m_scopeWidget, 1);
  controlLayout->addLayout(controlButtons);

  auto* pagesBox = new QGroupBox("Property pages", central);
  auto* pagesLayout = new QGridLayout(pagesBox);
  const struct {
    int selector;
    const char* text;
  } pageButtons[] = {{0, "All pages..."}, {2, "Search..."}, {3, "Set I/O..."}, {1, "Setups..."}};
  int slot = 0;
  for (const auto& page : pageButtons) {
    const QString name = QString("CommandPages%1").arg(page.selector);
    auto* button = Button(page.text, name.toLatin1().constData(), pagesBox);
    button->setToolTip(QString("ShowPropertyPages %1").arg(page.selector));
    connect(button, &QPushButton::clicked, this, [this, selector = page.selector] { ShowPages(selector); });
    pagesLayout->addWidget(button, slot / 2, slot % 2);
    ++slot;
  }
  pagesLayout->setRowStretch((slot + 1) / 2, 1);

  auto* commandBox = new QGroupBox("Instrument command", central);
  m_command = new QLineEdit(commandBox);
  m_command->setObjectName("TextCommand");
  m_command->setPlaceholderText("*IDN?  or  :TIMebase:RANGe 1E-3");
  auto* output = Button("Output", "CommandOutput", commandBox);
  auto* query = Button("Query", "CommandQuery", commandBox);
  query->setDefault(true);
  m_reply = new QPlainTextEdit(commandBox);
  m_reply->setObjectName("TextReply");
  m_reply->setReadOnly(true);
  m_reply->setMaximumBlockCount(200);
  auto* commandRow = new QHBoxLayout;
  commandRow->addWidget(m_command, 1);
  commandRow->addWidget(output);
  commandRow->addWidget(query);
  auto* commandLayout = new QVBoxLayout(commandBox);
  commandLayout->addLayout(commandRow);
  commandLayout->addWidget(m_reply, 1);

  // The waveform and the screen image, side by side.
  auto* waveBox = new QGroupBox("Waveform", central);
  m_channel = new QComboBox(waveBox);
  m_channel->setObjectName("ComboChannel");
  for (int channel = Cvn73100_Channel_1; channel <= Cvn73100_Channel_4; ++channel) {
    m_channel->addItem(QString("Channel %1").arg(channel), channel);
  }
  m_points = new QComboBox(waveBox);
  m_points->setObjectName("ComboPoints");
  for (int points : {Cvn73100_DataPoints_100, Cvn73100_DataPoints_250, Cvn73100_DataPoints_500,
                     Cvn73100_DataPoints_1000, Cvn73100_DataPoints_2000}) {
    m_points->addItem(QString("%1 points").arg(points), points);
  }
  m_points->addItem("All points", static_cast<int>(Cvn73100_DataPoints_ALL));
  m_points->setCurrentIndex(3);
  auto* capture = Button("Digitize && capture", "CommandCapture", waveBox);
  auto* chart = new QChart;
  chart->legend()->hide();
  chart->setMargins(QMargins(4, 4, 4, 4));
  m_chart = new QChartView(chart, waveBox);
  m_chart->setObjectName("ChartWaveform");
  m_chart->setRenderHint(QPainter::Antialiasing);
  m_chart->setMinimumSize(360, 260);
  auto* waveRow = new QHBoxLayout;
  waveRow->addWidget(m_channel);
  waveRow->addWidget(m_points);
  waveRow->addWidget(capture);
  waveRow->addStretch(1);
  auto* waveLayout = new QVBoxLayout(waveBox);
  waveLayout->addLayout(waveRow);
  waveLayout->addWidget(m_chart, 1);

  auto* screenBox = new QGroupBox("Screen image", central);
  auto* fetchScreen = Button("Get screen image", "CommandScreenImage", screenBox);
  m_screen = new QLabel(screenBox);
  m_screen->setObjectName("PictureScreen");
  m_screen->setAlignment(Qt::AlignCenter);
  m_screen->setMinimumSize(320, 240);
  m_screen->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
  auto* screenRow = new QHBoxLayout;
  screenRow->addWidget(fetchScreen);
  screenRow->addStretch(1);
  auto* screenLayout = new QVBoxLayout(screenBox);
  screenLayout->addLayout(screenRow);
  screenLayout->addWidget(m_screen, 1);

  auto* top = new QHBoxLayout;
  top->addWidget(controlBox, 3);
  top->addWidget(pagesBox, 2);
  top->addWidget(commandBox, 4);
  auto* splitter = new QSplitter(Qt::Horizontal, central);
  splitter->addWidget(waveBox);
  splitter->addWidget(screenBox);
  splitter->setStretchFactor(0, 1);
  splitter->setStretchFactor(1, 1);
  splitter->setChildrenCollapsible(false);
  auto* layout = new QVBoxLayout(central);
  layout->addLayout(top);
  layout->addWidget(splitter, 1);

  connect(initialize, &QPushButton::clicked, this, &ScopeMainWindow::InitializeInstrument);
  connect(about, &QPushButton::clicked, this, &ScopeMainWindow::ShowAbout);
  connect(output, &QPushButton::clicked, this, [this] { SendCommand(false); });
  connect(query, &QPushButton::clicked, this, [this] { SendCommand(true); });
  connect(m_command, &QLineEdit::returnPressed, this, [this] { SendCommand(m_command->text().contains('?')); });
  connect(capture, &QPushButton::clicked, this, &ScopeMainWindow::CaptureWaveform);
  connect(fetchScreen, &QPushButton::clicked, this, &ScopeMainWindow::FetchScreenImage);
  connect(m_scopeWidget, &Cvn73100ScopeWidget::supportMessage, this,
          [this](const QString& block) { statusBar()->showMessage(block.simplified(), 10000); });

  LoadForm();
  resize(1200, 820);
}

ScopeMainWindow::~ScopeMainWindow() = default;

Cvn73100Scope& ScopeMainWindow::Scope() const { return m_scopeWidget->Scope(); }

// --- The form file. ---

void ScopeMainWindow::LoadForm() {
  if (m_formPath.isEmpty()) {
    Scope().InitProperties();
  } else {
    Try([this] {
      FormFile(m_formPath.toStdString()).Load(m_formAsRead);
      Scope().ReadProperties(m_formAsRead);
    });
    statusBar()->showMessage("Form: " + m_formPath);
  }
  // Also after a form that could not be read: the control runs in user mode on this form.
  Scope().AmbientChanged();
  m_scopeWidget->Refresh();
}

bool ScopeMainWindow::SaveForm(const QString& path) {
  const QString target = path.isEmpty() ? m_formPath : path;
  if (target.isEmpty()) return true;
  return Try([this, &target] {
    // A fresh bag: keys of setups removed since the form was read must not survive.
    MemoryPropertyBag bag;
    Scope().WriteProperties(bag);
    // The window's own form keeps what other programs changed meanwhile; another file is written whole.
    if (target == m_formPath) {
      FormFile(target.toStdString()).SaveChanges(m_formAsRead, bag);
      m_formAsRead = bag;
    } else {
      FormFile(target.toStdString()).Save(bag);
    }
  });
}

void ScopeMainWindow::closeEvent(QCloseEvent* event) {
  if (m_bSaveOnClose) SaveForm();
  QMainWindow::closeEvent(event);
}

// --- Actions. ---

void ScopeMainWindow::ShowPages(int selector) {
  Try([this, selector] { m_scopeWidget->ShowPropertyPages(selector); });
}

void ScopeMainWindow::InitializeInstrument() {
  if (Try([this] { Scope().Initialize(); })) Report("Initialized: " + QString::fromStdString(Scope().Address()));
  m_scopeWidget->Refresh();
}

void ScopeMainWindow::SendCommand(bool readReply) {
  const QString command = m_command->text().trimmed();
  if (command.isEmpty()) return;
  Try([&] {
    Scope().Output(Variant(command.toStdString()));
    m_reply->appendPlainText("> " + command);
    if (readReply) {
      Variant reply;
      Scope().Enter(reply);
      m_reply->appendPlainText(FromSystem(reply.AsString()));
    }
  });
  m_scopeWidget->Refresh();
}

void ScopeMainWindow::SetCommand(const QString& command) { m_command->setText(command); }

void ScopeMainWindow::CaptureWaveform() {
  const auto channel = static_cast<Cvn73100_AnalogChannels>(m_channel->currentData().toInt());
  const auto points = static_cast<Cvn73100_WaveformPoints>(m_points->currentData().toInt());
  Variant time;
  Variant volts;
  if (!Try([&] {
        Scope().Digitize();
        Scope().GetWaveformData(channel, points, time, volts);
      })) {
    m_scopeWidget->Refresh();
    return;
  }
  const Variant::Doubles& t = time.AsDoubles();
  const Variant::Doubles& v = volts.AsDoubles();
  const std::size_t n = std::min(t.size(), v.size());
  QChart* chart = m_chart->chart();
  chart->removeAllSeries();
  for (QAbstractAxis* axis : chart->axes()) {
    chart->removeAxis(axis);
    delete axis;
  }
  const TimeUnit unit = UnitFor(n > 1 ? std::fabs(t[n - 1] - t[0]) : 0.0);
  auto* series = new QLineSeries;
  QList<QPointF> samples;
  samples.reserve(static_cast<qsizetype>(n));
  double low = 0.0;
  double high = 0.0;
  for (std::size_t i = 0; i < n; ++i) {
    samples.append(QPointF(t[i] * unit.scale, v[i]));
    low = i == 0 ? v[i] : std::min(low, v[i]);
    high = i == 0 ? v[i] : std::max(high, v[i]);
  }
  series->replace(samples);
  chart->addSeries(series);
  auto* x = new QValueAxis;
  x->setTitleText(QString("Time (%1)").arg(QString::fromUtf8(unit.name)));
  x->setLabelFormat("%.3g");
  if (n > 1) {
    // The record fills the plot; the ticks fall on round numbers within it.
    x->setRange(samples.front().x(), samples.back().x());
    x->setTickType(QValueAxis::TicksDynamic);
    x->setTickAnchor(0.0);
    x->setTickInterval(NiceStep(samples.back().x() - samples.front().x(), 8));
  }
  auto* y = new QValueAxis;
  y->setTitleText("Volts");
  y->setLabelFormat("%.3g");
  const double margin = std::max((high - low) * 0.1, 1e-3);
  y->setRange(low - margin, high + margin);
  chart->addAxis(x, Qt::AlignBottom);
  chart->addAxis(y, Qt::AlignLeft);
  series->attachAxis(x);
  series->attachAxis(y);
  chart->setTitle(QString("%1, %2 points").arg(m_channel->currentText()).arg(n));
  Report(QString("Captured %1 points of %2").arg(n).arg(m_channel->currentText()));
  m_scopeWidget->Refresh();
}

void ScopeMainWindow::FetchScreenImage() {
  Picture picture;
  if (!Try([&] { picture = Scope().GetScreenImage(Cvn73100_ImageFormat_BMP); })) {
    m_scopeWidget->Refresh();
    return;
  }
  QPixmap pixmap;
  if (!pixmap.loadFromData(picture.data.data(), static_cast<uint>(picture.data.size()), "BMP")) {
    Report("The instrument's screen image could not be decoded");
    return;
  }
  m_screenPixmap = pixmap;
  ShowScreenPixmap();
  Report(QString("Screen image %1 x %2").arg(pixmap.width()).arg(pixmap.height()));
  m_scopeWidget->Refresh();
}

void ScopeMainWindow::ShowAbout() {
  Try([this] { Scope().AboutBox(); });
}

void ScopeMainWindow::resizeEvent(QResizeEvent* event) {
  QMainWindow::resizeEvent(event);
  ShowScreenPixmap();
}

void ScopeMainWindow::ShowScreenPixmap() {
  if (m_screenPixmap.isNull()) return;
  // Never enlarged: a screen image is sharpest at its own size.
  const QSize room = m_screen->size().boundedTo(m_screenPixmap.size());
  m_screen->setPixmap(m_screenPixmap.scaled(room, Qt::KeepAspectRatio, Qt::SmoothTransformation));
}

void ScopeMainWindow::Report(const QString& text) { statusBar()->showMessage(text, 10000); }

template <class F>
bool ScopeMainWindow::Try(F action) {
  try {
    action();
    return true;
  } catch (const ScopeError& error) {
    Report(QString("Error %1: %2").arg(error.Number()).arg(FromSystem(error.Description())));
    ShowError(QtHost::HandleOf(this), error);
  } catch (const std::exception& error) {
    Report(QString::fromStdString(error.what()));
    ShowError(QtHost::HandleOf(this), error);
  }
  return false;
}

}  // namespace cvn73100::ui
