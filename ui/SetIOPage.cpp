#include "ui/SetIOPage.h"

#include <QApplication>
#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include "connection/CQueryInstrument.h"
#include "control/Cvn73100Scope.h"
#include "dialogs/AutoCenter.h"
#include "ioconfig/CIOconfiguration.h"
#include "ioconfig/IOConfigurationConstants.h"
#include "ioconfig/ModIsHandshakeOK.h"
#include "ui/QtHost.h"
#include "ui/SerialCombos.h"
#include "ui/UiText.h"

namespace cvn73100::ui {
namespace {

constexpr int CONFIRMATION_STYLE = MsgBoxStyle::OKOnly | MsgBoxStyle::Information | MsgBoxStyle::SetForeground;

QStringList PortNames() {
  QStringList names;
  for (int port = GPIB_PORT::First; port <= GPIB_PORT::Last; ++port) names << QStringLiteral("GPIB%1").arg(port);
  for (int port = RS232_PORT::First; port <= RS232_PORT::Last; ++port) names << QStringLiteral("COM%1").arg(port);
  return names;
}

}  // namespace

std::optional<SetIOPage::SupportMessageChord> SetIOPage::ChordOf(int key, Qt::KeyboardModifiers modifiers) {
  if ((modifiers & ~Qt::KeypadModifier) != (Qt::ControlModifier | Qt::ShiftModifier)) return std::nullopt;
  switch (key) {
    case Qt::Key_B:
      return SupportMessageChord{1, false, "Support Message message boxes have been enabled."};
    case Qt::Key_L:
      return SupportMessageChord{2, false, "Support Message log file has been enabled."};
    case Qt::Key_E:
      return SupportMessageChord{4, false, "Support Message events have been enabled."};
    case Qt::Key_A:
      return SupportMessageChord{8, false, "Support Message debug mode assert has been enabled."};
    case Qt::Key_0:
    case Qt::Key_ParenRight:  // Shift+0 on most layouts
      return SupportMessageChord{0, true, "All Support Message functionality has been disabled."};
    default:
      return std::nullopt;
  }
}

SetIOPage::SetIOPage(QWidget* parent) : ConfigurationPage(parent) {
  m_port = new QComboBox(this);
  m_port->setObjectName(QStringLiteral("ComboPort"));
  m_port->addItems(PortNames());
  m_gpibAddress = new QSpinBox(this);
  m_gpibAddress->setObjectName(QStringLiteral("SpinGPIBAddress"));
  m_gpibAddress->setRange(SEARCH_CRITERIA::FIRST_GPIB_INCLUDE, SEARCH_CRITERIA::LAST_GPIB_INCLUDE);
  m_baud = new QComboBox(this);
  m_baud->setObjectName(QStringLiteral("ComboBaud"));
  FillBaudRates(m_baud);
  m_handshake = new QComboBox(this);
  m_handshake->setObjectName(QStringLiteral("ComboHandshake"));
  FillHandshakes(m_handshake);
  m_address = new QLineEdit(this);
  m_address->setObjectName(QStringLiteral("TextAddress"));
  m_address->setMinimumWidth(fontMetrics().horizontalAdvance(QStringLiteral("COM4::Baud=57600,Handshake=DTR_DSR")) +
                             16);
  m_address->installEventFilter(this);
  m_test = new QPushButton(Msg(206), this);
  m_test->setObjectName(QStringLiteral("CommandTest"));
  m_test->setAutoDefault(false);
  m_test->setMinimumWidth(fontMetrics().horizontalAdvance(QLatin1Char('x')) * 11);

  auto* addressRow = new QHBoxLayout;
  addressRow->addWidget(m_address, 1);
  addressRow->addWidget(m_test);
  // The port's own settings in a box named after the port, between the port and the address it makes.
  m_settings = new QGroupBox(this);
  m_settings->setObjectName(QStringLiteral("FramePortSettings"));
  m_form = new QFormLayout(m_settings);
  m_form->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
  m_form->addRow(Msg(306), m_gpibAddress);
  m_form->addRow(Msg(307), m_baud);
  m_form->addRow(Msg(308), m_handshake);
  auto* grid = new QGridLayout;
  grid->addWidget(new QLabel(Msg(330), this), 0, 0);
  grid->addWidget(m_port, 0, 1, Qt::AlignLeft);
  grid->addWidget(m_settings, 1, 0, 1, 2);
  grid->addWidget(new QLabel(Msg(331), this), 2, 0);
  grid->addLayout(addressRow, 2, 1);
  grid->setColumnStretch(1, 1);

  auto* hint = new QLabel(Msg(332), this);
  hint->setObjectName(QStringLiteral("LabelHint"));
  hint->setWordWrap(true);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(grid);
  layout->addSpacing(fontMetrics().height());
  layout->addWidget(hint);
  layout->addStretch();

  connect(m_port, &QComboBox::currentIndexChanged, this, [this] {
    const std::string port = m_port->currentText().toStdString();
    Edit([port](CIOconfiguration& config) { config.SetActiveIOPort(port); });
  });
  connect(m_gpibAddress, &QSpinBox::valueChanged, this, [this](int address) {
    Edit([address](CIOconfiguration& config) { config.SetActivePortGPIBAddress(address); });
  });
  connect(m_baud, &QComboBox::currentIndexChanged, this, [this] {
    const std::int32_t rate = SelectedValue(m_baud, DEFAULT_BAUD_RATE);
    Edit([rate](CIOconfiguration& config) { config.SetActivePortBaudRate(rate); });
  });
  connect(m_handshake, &QComboBox::currentIndexChanged, this, [this] {
    const std::int32_t handshake = SelectedValue(m_handshake, DEFAULT_HANDSHAKE);
    Edit([handshake](CIOconfiguration& config) { config.SetActivePortHandshake(handshake); });
  });
  connect(m_address, &QLineEdit::editingFinished, this, [this] { TypedAddress(); });
  connect(m_test, &QPushButton::clicked, this, [this] { RunTest(); });
  setEnabled(false);
}

SetIOPage::~SetIOPage() = default;

QString SetIOPage::Caption() const { return Msg(301); }

void SetIOPage::Fill() {
  if (!m_config) return;
  m_filling = true;
  const bool gpib = m_config->ActivePortIsGPIB();
  m_port->setCurrentText(QString::fromStdString(m_config->ActiveIOPort()));
  m_settings->setTitle(m_port->currentText());
  m_form->setRowVisible(m_gpibAddress, gpib);
  m_form->setRowVisible(m_baud, !gpib);
  m_form->setRowVisible(m_handshake, !gpib);
  if (gpib) {
    m_gpibAddress->setValue(m_config->ActivePortGPIBAddress());
  } else {
    SelectValue(m_baud, m_config->ActivePortBaudRate());
    SelectValue(m_handshake, m_config->ActivePortHandshake());
    m_handshake->setEnabled(!m_config->DTROnly());
  }
  m_address->setText(QString::fromStdString(m_config->ActiveAddressString()));
  m_filling = false;
}

void SetIOPage::Edit(const std::function<void(CIOconfiguration&)>& edit) {
  if (m_filling || !m_config) return;
  const std::string before = m_config->ActiveAddressString();
  try {
    edit(*m_config);
  } catch (const std::exception& error) {
    ShowError(QtHost::HandleOf(this), error);
  }
  if (m_config->ActiveAddressString() != before) {
    m_changed = true;
    emit changed();
  }
  Fill();
}

void SetIOPage::TypedAddress() {
  const std::string typed = m_address->text().trimmed().toStdString();
  if (!m_config || typed == m_config->ActiveAddressString()) return;
  Edit([typed](CIOconfiguration& config) { config.SetActiveAddressString(typed); });
}

std::string SetIOPage::KnownIdentity() const {
  const std::string& address = m_config->ActiveAddressString();
  if (address == m_testedAddress) return m_testedReply;
  const Cvn73100Scope* control = SelectedControl();
  if (control && address == control->Address()) return control->AddressInstrumentID();
  return {};
}

void SetIOPage::RunTest() {
  Cvn73100Scope* control = SelectedControl();
  if (!control || !m_config) return;
  TypedAddress();
  const std::string address = m_config->ActiveAddressString();
  QApplication::setOverrideCursor(Qt::WaitCursor);
  try {
    CQueryInstrument query;
    query.Initialize(control->TXDelay(), m_config, control->IOManager());
    std::string reply;
    query.Test(QtHost::HandleOf(this), address, reply);
    m_testedAddress = address;
    m_testedReply = reply;
  } catch (const std::exception& error) {
    QApplication::restoreOverrideCursor();
    ShowError(QtHost::HandleOf(this), error);
    return;
  }
  QApplication::restoreOverrideCursor();
}

void SetIOPage::ApplyChanges() {
  Cvn73100Scope* control = SelectedControl();
  if (!control || !m_config) return;
  TypedAddress();
  IPPCvn73100Scope& link = *control;
  try {
    // The address and its port's settings over the control's configuration as it is now.
    const auto handedBack = link.IOConfigurationPropertyPage();
    handedBack->SetActiveAddressString(m_config->ActiveAddressString());
    if (!handedBack->ActivePortIsGPIB()) {
      handedBack->SetActivePortBaudRate(m_config->ActivePortBaudRate());
      handedBack->SetActivePortHandshake(m_config->ActivePortHandshake());
    }
    const std::string identity = KnownIdentity();

    bool dontShow = link.DontShowIOHandshakeWarning();
    std::string lastAddress = link.LastIOHandshakeAddress();
    bool warningShown = false;
    MessageOptionResult answer;
    IsHandshakeOK(handedBack->ActiveAddressString(), identity, QtHost::HandleOf(this), dontShow, lastAddress,
                  warningShown, false, true, &answer);
    link.SetDontShowIOHandshakeWarning(dontShow);
    link.SetLastIOHandshakeAddress(lastAddress);
    // Cancel in the warning: the user goes back to the settings before anything is handed over.
    if (warningShown && answer.button == MsgBoxResult::Cancel) return;

    link.IOConfigurationControl()->Copy(*handedBack);
    link.IOConfigurationChanged();
    control->SetAddressInstrumentID(identity);
  } catch (const std::exception& error) {
    ShowError(QtHost::HandleOf(this), error);
    return;
  }
  TakeControlConfiguration();
}

bool SetIOPage::eventFilter(QObject* watched, QEvent* event) {
  if (watched == m_address && event->type() == QEvent::KeyPress) {
    const auto* key = static_cast<QKeyEvent*>(event);
    if (const auto chord = ChordOf(key->key(), key->modifiers())) {
      UseChord(*chord);
      return true;
    }
  }
  return PropertyPage::eventFilter(watched, event);
}

void SetIOPage::UseChord(const SupportMessageChord& chord) {
  Cvn73100Scope* control = SelectedControl();
  if (!control) return;
  control->SetSupportMessageMode(ModeAfter(control->SupportMessageMode(), chord));
  AutoCenter::MsgBoxAutoCenter(QtHost::HandleOf(this), chord.confirmation, CONFIRMATION_STYLE, SUPPORT_MESSAGE_TITLE);
}

}  // namespace cvn73100::ui
