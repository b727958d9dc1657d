#include "ui/SearchCriteriaPage.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "control/Cvn73100Scope.h"
#include "ioconfig/CIOconfiguration.h"
#include "ui/QtHost.h"
#include "ui/SerialCombos.h"
#include "ui/UiText.h"

namespace cvn73100::ui {
namespace {

constexpr int MASK_COLUMNS = 11;

std::size_t Slot(int index, int first) { return static_cast<std::size_t>(index - first); }

QLabel* HeaderLabel(int message, QWidget* parent) {
  auto* label = new QLabel(Msg(message), parent);
  QFont font = label->font();
  font.setBold(true);
  label->setFont(font);
  return label;
}

QLabel* StatusLabel(QWidget* parent) {
  auto* label = new QLabel(parent);
  label->setForegroundRole(QPalette::PlaceholderText);
  return label;
}

}  // namespace

SearchCriteriaPage::SearchCriteriaPage(QWidget* parent) : ConfigurationPage(parent) {
  auto* intro = new QLabel(Msg(320), this);
  intro->setWordWrap(true);

  // The GPIB interfaces.
  auto* gpibBox = new QGroupBox(Msg(312), this);
  gpibBox->setObjectName(QStringLiteral("FrameGPIBPorts"));
  auto* gpibGrid = new QGridLayout(gpibBox);
  gpibGrid->addWidget(HeaderLabel(303, gpibBox), 0, 0);
  for (int port = GPIB_PORT::First; port <= GPIB_PORT::Last; ++port) {
    const std::size_t slot = Slot(port, GPIB_PORT::First);
    m_gpibInclude[slot] = new QCheckBox(QStringLiteral("GPIB%1").arg(port), gpibBox);
    m_gpibInclude[slot]->setObjectName(QStringLiteral("CheckGPIB%1").arg(port));
    m_gpibInstalled[slot] = StatusLabel(gpibBox);
    gpibGrid->addWidget(m_gpibInclude[slot], port + 1, 0);
    gpibGrid->addWidget(m_gpibInstalled[slot], port + 1, 1);
    connect(m_gpibInclude[slot], &QCheckBox::toggled, this, [this, port](bool on) {
      Edit([port, on](CIOconfiguration& config) { config.SetGPIBPortIncluded(port, on); });
    });
  }
  gpibGrid->setColumnStretch(2, 1);
  gpibGrid->setRowStretch(GPIB_PORT_COUNT + 1, 1);

  // The serial ports.
  auto* comBox = new QGroupBox(Msg(313), this);
  comBox->setObjectName(QStringLiteral("FrameRS232Ports"));
  auto* comGrid = new QGridLayout(comBox);
  comGrid->addWidget(HeaderLabel(303, comBox), 0, 0);
  comGrid->addWidget(HeaderLabel(307, comBox), 0, 2);
  comGrid->addWidget(HeaderLabel(308, comBox), 0, 3);
  for (int port = RS232_PORT::First; port <= RS232_PORT::Last; ++port) {
    const std::size_t slot = Slot(port, RS232_PORT::First);
    m_comInclude[slot] = new QCheckBox(QStringLiteral("COM%1").arg(port), comBox);
    m_comInclude[slot]->setObjectName(QStringLiteral("CheckCOM%1").arg(port));
    m_comInstalled[slot] = StatusLabel(comBox);
    m_baud[slot] = new QComboBox(comBox);
    m_baud[slot]->setObjectName(QStringLiteral("ComboBaud%1").arg(port));
    FillBaudRates(m_baud[slot]);
    m_handshake[slot] = new QComboBox(comBox);
    m_handshake[slot]->setObjectName(QStringLiteral("ComboHandshake%1").arg(port));
    FillHandshakes(m_handshake[slot]);
    comGrid->addWidget(m_comInclude[slot], port, 0);
    comGrid->addWidget(m_comInstalled[slot], port, 1);
    comGrid->addWidget(m_baud[slot], port, 2);
    comGrid->addWidget(m_handshake[slot], port, 3);
    connect(m_comInclude[slot], &QCheckBox::toggled, this, [this, port](bool on) {
      Edit([port, on](CIOconfiguration& config) { config.SetRS232PortIncluded(port, on); });
    });
    connect(m_baud[slot], &QComboBox::currentIndexChanged, this, [this, port, slot] {
      const std::int32_t rate = SelectedValue(m_baud[slot], DEFAULT_BAUD_RATE);
      Edit([port, rate](CIOconfiguration& config) { config.SetBaudRate(port, rate); });
    });
    connect(m_handshake[slot], &QComboBox::currentIndexChanged, this, [this, port, slot] {
      const std::int32_t handshake = SelectedValue(m_handshake[slot], DEFAULT_HANDSHAKE);
      Edit([port, handshake](CIOconfiguration& config) { config.SetHandshake(port, handshake); });
    });
  }
  comGrid->setColumnStretch(1, 1);
  m_dtrOnly = new QCheckBox(Msg(319), comBox);
  m_dtrOnly->setObjectName(QStringLiteral("CheckDTROnly"));
  comGrid->addWidget(m_dtrOnly, RS232_PORT_COUNT + 1, 0, 1, 4);
  connect(m_dtrOnly, &QCheckBox::toggled, this,
          [this](bool on) { Edit([on](CIOconfiguration& config) { config.SetDTROnly(on); }); });

  // The GPIB addresses a search probes, one interface at a time.
  auto* maskBox = new QGroupBox(Msg(314), this);
  maskBox->setObjectName(QStringLiteral("FrameGPIBAddresses"));
  m_maskPort = new QComboBox(maskBox);
  m_maskPort->setObjectName(QStringLiteral("ComboMaskPort"));
  for (int port = GPIB_PORT::First; port <= GPIB_PORT::Last; ++port)
    m_maskPort->addItem(QStringLiteral("GPIB%1").arg(port), port);
  m_includeAll = new QPushButton(Msg(315), maskBox);
  m_includeAll->setObjectName(QStringLiteral("CommandIncludeAll"));
  m_excludeAll = new QPushButton(Msg(316), maskBox);
  m_excludeAll->setObjectName(QStringLiteral("CommandExcludeAll"));
  auto* maskTop = new QHBoxLayout;
  maskTop->addWidget(new QLabel(Msg(304), maskBox));
  maskTop->addWidget(m_maskPort);
  maskTop->addStretch();
  maskTop->addWidget(m_includeAll);
  maskTop->addWidget(m_excludeAll);
  auto* maskGrid = new QGridLayout;
  for (int address = SEARCH_CRITERIA::FIRST_GPIB_INCLUDE; address <= SEARCH_CRITERIA::LAST_GPIB_INCLUDE; ++address) {
    const std::size_t slot = Slot(address, SEARCH_CRITERIA::FIRST_GPIB_INCLUDE);
    m_mask[slot] = new QCheckBox(QString::number(address), maskBox);
    m_mask[slot]->setObjectName(QStringLiteral("CheckAddress%1").arg(address));
    maskGrid->addWidget(m_mask[slot], static_cast<int>(slot) / MASK_COLUMNS, static_cast<int>(slot) % MASK_COLUMNS);
    connect(m_mask[slot], &QCheckBox::toggled, this, [this, address](bool on) {
      const int port = m_maskPort->currentData().toInt();
      Edit([port, address, on](CIOconfiguration& config) { config.SetGPIBPortIncludes(port, address, on); });
    });
  }
  auto* maskLayout = new QVBoxLayout(maskBox);
  maskLayout->addLayout(maskTop);
  maskLayout->addLayout(maskGrid);
  connect(m_maskPort, &QComboBox::currentIndexChanged, this, [this] { Fill(); });
  connect(m_includeAll, &QPushButton::clicked, this, [this] { SetMask(true); });
  connect(m_excludeAll, &QPushButton::clicked, this, [this] { SetMask(false); });

  m_findPorts = new QPushButton(Msg(302), this);
  m_findPorts->setObjectName(QStringLiteral("CommandFindPorts"));
  m_findPorts->setAutoDefault(false);
  connect(m_findPorts, &QPushButton::clicked, this, [this] { RunFindPorts(); });
  m_status = new QLabel(this);
  m_status->setObjectName(QStringLiteral("LabelStatus"));
  m_status->setWordWrap(true);

  auto* ports = new QHBoxLayout;
  ports->addWidget(gpibBox, 2);
  ports->addWidget(comBox, 5);
  auto* bottom = new QHBoxLayout;
  bottom->addWidget(m_status, 1);
  bottom->addWidget(m_findPorts);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(intro);
  layout->addLayout(ports);
  layout->addWidget(maskBox);
  layout->addStretch();
  layout->addLayout(bottom);
  setEnabled(false);
}

SearchCriteriaPage::~SearchCriteriaPage() = default;

QString SearchCriteriaPage::Caption() const { return Msg(300); }

void SearchCriteriaPage::Fill() {
  if (!m_config) return;
  m_filling = true;
  const QString installed = Msg(310);
  const QString notInstalled = Msg(311);
  for (int port = GPIB_PORT::First; port <= GPIB_PORT::Last; ++port) {
    const std::size_t slot = Slot(port, GPIB_PORT::First);
    m_gpibInclude[slot]->setChecked(m_config->GPIBPortIncluded(port));
    m_gpibInstalled[slot]->setText(m_config->GPIBPortInstalled(port) ? installed : notInstalled);
  }
  for (int port = RS232_PORT::First; port <= RS232_PORT::Last; ++port) {
    const std::size_t slot = Slot(port, RS232_PORT::First);
    m_comInclude[slot]->setChecked(m_config->RS232PortIncluded(port));
    m_comInstalled[slot]->setText(m_config->RS232PortInstalled(port) ? installed : notInstalled);
    SelectValue(m_baud[slot], m_config->BaudRate(port));
    SelectValue(m_handshake[slot], m_config->Handshake(port));
    // With DTR/DSR only there is nothing to choose.
    m_handshake[slot]->setEnabled(!m_config->DTROnly());
  }
  m_dtrOnly->setChecked(m_config->DTROnly());
  const int port = m_maskPort->currentData().toInt();
  for (int address = SEARCH_CRITERIA::FIRST_GPIB_INCLUDE; address <= SEARCH_CRITERIA::LAST_GPIB_INCLUDE; ++address) {
    QCheckBox* box = m_mask[Slot(address, SEARCH_CRITERIA::FIRST_GPIB_INCLUDE)];
    box->setChecked(m_config->GPIBPortIncludes(port, address));
    // Addresses where the last [Find Ports] met a listener stand out.
    QFont font = box->font();
    font.setBold(m_config->GPIBInstrumentFound(port, address));
    box->setFont(font);
  }
  m_filling = false;
}

void SearchCriteriaPage::Edit(const std::function<void(CIOconfiguration&)>& edit) {
  if (m_filling || !m_config) return;
  try {
    edit(*m_config);
    m_changed = true;
  } catch (const std::exception& error) {
    ShowError(QtHost::HandleOf(this), error);
  }
  Fill();
  emit changed();
}

void SearchCriteriaPage::SetMask(bool included) {
  const int port = m_maskPort->currentData().toInt();
  Edit([port, included](CIOconfiguration& config) {
    for (int address = SEARCH_CRITERIA::FIRST_GPIB_INCLUDE; address <= SEARCH_CRITERIA::LAST_GPIB_INCLUDE; ++address)
      config.SetGPIBPortIncludes(port, address, included);
  });
}

void SearchCriteriaPage::RunFindPorts() {
  Cvn73100Scope* control = SelectedControl();
  if (!control || !m_config) return;
  QApplication::setOverrideCursor(Qt::WaitCursor);
  m_status->setText(Msg(208));
  Host::Current().ProcessEvents();
  Edit([control](CIOconfiguration& config) { config.FindAll(*control); });
  QApplication::restoreOverrideCursor();
  m_status->setText(m_config->HasInstalledPorts() ? QString() : Msg(321));
}

void SearchCriteriaPage::ApplyChanges() {
  Cvn73100Scope* control = SelectedControl();
  if (!control || !m_config) return;
  IPPCvn73100Scope& link = *control;
  try {
    // This page's tables over the control's configuration as it is now.
    const auto handedBack = link.IOConfigurationPropertyPage();
    handedBack->SetDTROnly(m_config->DTROnly());
    handedBack->SetDataAsVariant(m_config->DataAsVariant());
    link.IOConfigurationControl()->Copy(*handedBack);
    link.IOConfigurationChanged();
  } catch (const std::exception& error) {
    ShowError(QtHost::HandleOf(this), error);
    return;
  }
  TakeControlConfiguration();
}

}  // namespace cvn73100::ui
