#include "ui/Cvn73100ScopeWidget.h"

#include <QGridLayout>
#include <QLabel>
#include <QPainter>
#include <QResizeEvent>
#include <limits>
#include <string>
#include <utility>

#include "control/Cvn73100Scope.h"
#include "platform/Host.h"
#include "platform/ScopeError.h"
#include "ui/DialogFont.h"
#include "ui/QtHost.h"
#include "ui/UiText.h"

namespace cvn73100::ui {
namespace {

// A round lamp: green when the instrument is connected, grey when not.
QPixmap Lamp(bool on, int size) {
  QPixmap pixmap(size, size);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);
  const QColor fill = on ? QColor(40, 170, 60) : QColor(150, 150, 150);
  painter.setPen(QPen(fill.darker(140), 1));
  painter.setBrush(fill);
  painter.drawEllipse(QRectF(1.5, 1.5, size - 3, size - 3));
  return pixmap;
}

QtHost* CurrentQtHost() { return dynamic_cast<QtHost*>(&Host::Current()); }

}  // namespace

Cvn73100ScopeWidget::Cvn73100ScopeWidget(QWidget* parent)
    : QWidget(parent), m_scope(std::make_unique<Cvn73100Scope>()) {
  setObjectName(QStringLiteral("Cvn73100Scope"));
  m_resizeTimer.setInterval(RESIZE_DELAY_MS);
  connect(&m_resizeTimer, &QTimer::timeout, this, [this] {
    m_resizeTimer.stop();
    LayOut();
  });

  m_name = new QLabel(this);
  m_state = new QLabel(this);
  m_address = new QLabel(this);
  m_identity = new QLabel(this);
  m_name->setObjectName(QStringLiteral("LabelName"));
  m_state->setObjectName(QStringLiteral("LabelConnected"));
  m_address->setObjectName(QStringLiteral("LabelAddress"));
  m_identity->setObjectName(QStringLiteral("LabelIdentity"));
  for (QLabel* label : {m_name, m_address, m_identity}) {
    label->setTextFormat(Qt::PlainText);
    label->setMinimumWidth(0);
    label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  }
  m_identity->setForegroundRole(QPalette::PlaceholderText);

  auto* layout = new QGridLayout(this);
  layout->addWidget(m_state, 0, 0, Qt::AlignVCenter);
  layout->addWidget(m_name, 0, 1);
  layout->addWidget(m_address, 1, 1);
  layout->addWidget(m_identity, 2, 1);
  layout->setColumnStretch(1, 1);
  layout->setRowStretch(3, 1);

  m_connections.push_back(m_scope->SupportMessage.Connect(
      [this](const std::string& block) { emit supportMessage(QString::fromStdString(block)); }));
  if (QtHost* host = CurrentQtHost()) {
    host->SetPropertyPageControl(m_scope.get(), this);
    connect(host, &QtHost::propertyChanged, this, &Cvn73100ScopeWidget::OnPropertyChanged);
  }
  Refresh();
}

Cvn73100ScopeWidget::~Cvn73100ScopeWidget() {
  for (auto& connection : m_connections) connection.Disconnect();
  if (QtHost* host = CurrentQtHost()) host->ForgetPropertyPageControl(m_scope.get());
}

void Cvn73100ScopeWidget::ShowPropertyPages(int selector) {
  if (QtHost* host = CurrentQtHost()) host->SetPropertyPageControl(m_scope.get(), this);
  m_scope->ShowPropertyPages(static_cast<std::int16_t>(selector));
  Refresh();
}

void Cvn73100ScopeWidget::OnPropertyChanged(const QString& name) {
  (void)name;
  // Any notice may concern the face (address, identity, font, language); reading it is cheap.
  Refresh();
}

void Cvn73100ScopeWidget::ApplyFont() {
  const QFont font = DialogFont(m_scope->FontName(), m_scope->FontSize());
  setFont(font);
  QFont bold = font;
  bold.setBold(true);
  m_name->setFont(bold);
}

void Cvn73100ScopeWidget::Refresh() {
  ApplyFont();
  m_name->setText(Msg(104));
  const bool connected = m_scope->InstrumentConnected();
  m_state->setPixmap(Lamp(connected, fontMetrics().height()));
  const QString address = QString::fromStdString(m_scope->Address());
  const QString identity = QString::fromStdString(m_scope->AddressInstrumentID());
  const auto language = static_cast<Language>(m_scope->CountryCode());
  const QString fontFamily = fontName();
  const bool newAddress = std::exchange(m_addressText, address) != address;
  const bool newIdentity = std::exchange(m_identityText, identity) != identity;
  const bool newLanguage = std::exchange(m_language, language) != language;
  const bool newFont =
      std::exchange(m_fontName, fontFamily) != fontFamily || std::exchange(m_fontSize, fontSize()) != m_fontSize;
  m_address->setToolTip(m_addressText);
  m_identity->setToolTip(m_identityText);
  LayOut();
  if (newAddress) emit addressChanged(address);
  if (newIdentity) emit instrumentIdChanged(identity);
  if (newLanguage) emit countryCodeChanged(language);
  if (newFont) emit fontChanged();
}

void Cvn73100ScopeWidget::Apply(const std::function<void()>& set) {
  try {
    set();
  } catch (const ScopeError& e) {
    Host::Current().Warning(e.Description());
  }
  Refresh();
}

QString Cvn73100ScopeWidget::address() const { return QString::fromStdString(m_scope->Address()); }
void Cvn73100ScopeWidget::setAddress(const QString& address) {
  Apply([&] { m_scope->SetAddress(address.toStdString()); });
}

Cvn73100ScopeWidget::Language Cvn73100ScopeWidget::countryCode() const {
  return static_cast<Language>(m_scope->CountryCode());
}
void Cvn73100ScopeWidget::setCountryCode(Language language) {
  Apply([&] { m_scope->SetCountryCode(language); });
}

QString Cvn73100ScopeWidget::fontName() const { return QString::fromStdString(m_scope->FontName()); }
void Cvn73100ScopeWidget::setFontName(const QString& name) {
  Apply([&] { m_scope->SetFontName(name.toStdString()); });
}

int Cvn73100ScopeWidget::fontSize() const { return m_scope->FontSize(); }
void Cvn73100ScopeWidget::setFontSize(int size) {
  if (size < 1 || size > std::numeric_limits<std::int16_t>::max()) {
    Host::Current().Warning("fontSize " + std::to_string(size) + " is outside 1 to 32767");
    return;
  }
  Apply([&] { m_scope->SetFontSize(static_cast<std::int16_t>(size)); });
}

int Cvn73100ScopeWidget::txDelay() const { return m_scope->TXDelay(); }
void Cvn73100ScopeWidget::setTxDelay(int delay) {
  Apply([&] { m_scope->SetTXDelay(delay); });
}

int Cvn73100ScopeWidget::supportMessageMode() const { return m_scope->SupportMessageMode(); }
void Cvn73100ScopeWidget::setSupportMessageMode(int mode) {
  Apply([&] { m_scope->SetSupportMessageMode(mode); });
}

bool Cvn73100ScopeWidget::resetOnInitialize() const { return m_scope->ResetOnInitialize(); }
void Cvn73100ScopeWidget::setResetOnInitialize(bool value) {
  Apply([&] { m_scope->SetResetOnInitialize(value); });
}

bool Cvn73100ScopeWidget::checkIdOnInitialize() const { return m_scope->CheckIDOnInitialize(); }
void Cvn73100ScopeWidget::setCheckIdOnInitialize(bool value) {
  Apply([&] { m_scope->SetCheckIDOnInitialize(value); });
}

bool Cvn73100ScopeWidget::debugEnabled() const { return m_scope->DebugEnabled(); }
void Cvn73100ScopeWidget::setDebugEnabled(bool value) {
  Apply([&] { m_scope->SetDebugEnabled(value); });
}

void Cvn73100ScopeWidget::LayOut() {
  ++m_layoutCount;
  // Texts wider than the face end in an ellipsis; the tool tips hold them whole.
  const auto elide = [](QLabel* label, const QString& text) {
    label->setText(label->fontMetrics().elidedText(text, Qt::ElideRight, std::max(label->width(), 1)));
  };
  elide(m_address, m_addressText);
  elide(m_identity, m_identityText);
}

QSize Cvn73100ScopeWidget::sizeHint() const {
  const QFontMetrics metrics = fontMetrics();
  return {metrics.horizontalAdvance(QLatin1Char('x')) * 40, metrics.height() * 4 + 16};
}

void Cvn73100ScopeWidget::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  m_resizeTimer.start();
}

void Cvn73100ScopeWidget::paintEvent(QPaintEvent* event) {
  (void)event;
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(palette().color(QPalette::Mid), 1));
  painter.setBrush(palette().color(QPalette::Base));
  painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
}

}  // namespace cvn73100::ui
