#pragma once
#include <array>
#include <functional>
#include <memory>

#include "ioconfig/IOConfigurationConstants.h"
#include "ui/ConfigurationPage.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;

namespace cvn73100 {
class CIOconfiguration;
}

namespace cvn73100::ui {

// The Search Criteria page: which ports a search visits (GPIB0..GPIB3, COM1..COM4), which GPIB
// addresses it probes on each interface (with Include All / Exclude All per interface), each COM
// port's baud rate and handshake, DTR/DSR-only handshaking, and [Find Ports], which asks the I/O
// library which ports this computer has.
//
// It edits a copy of the control's I/O configuration. Apply hands back what this page edits (the
// search tables and DTR/DSR-only) over the control's current configuration, so an address another
// page has applied meanwhile stays, and tells the control that its I/O configuration changed.
class SearchCriteriaPage : public ConfigurationPage {
  Q_OBJECT
 public:
  explicit SearchCriteriaPage(QWidget* parent = nullptr);
  ~SearchCriteriaPage() override;

  QString Caption() const override;
  void ApplyChanges() override;

  QCheckBox* GPIBInclude(int port) const { return m_gpibInclude[static_cast<std::size_t>(port)]; }
  QLabel* GPIBInstalled(int port) const { return m_gpibInstalled[static_cast<std::size_t>(port)]; }
  QCheckBox* RS232Include(int port) const { return m_comInclude[static_cast<std::size_t>(port - 1)]; }
  QLabel* RS232Installed(int port) const { return m_comInstalled[static_cast<std::size_t>(port - 1)]; }
  QComboBox* BaudRate(int port) const { return m_baud[static_cast<std::size_t>(port - 1)]; }
  QComboBox* Handshake(int port) const { return m_handshake[static_cast<std::size_t>(port - 1)]; }
  // The interface whose addresses the mask shows, and its 31 boxes.
  QComboBox* MaskPort() const { return m_maskPort; }
  QCheckBox* MaskAddress(int address) const { return m_mask[static_cast<std::size_t>(address)]; }
  QPushButton* IncludeAll() const { return m_includeAll; }
  QPushButton* ExcludeAll() const { return m_excludeAll; }
  QCheckBox* DTROnly() const { return m_dtrOnly; }
  QPushButton* FindPorts() const { return m_findPorts; }
  QLabel* Status() const { return m_status; }

 protected:
  void Fill() override;

 private:
  // Applies one edit to the working copy; a refused edit is shown and the page drawn again.
  void Edit(const std::function<void(CIOconfiguration&)>& edit);
  void SetMask(bool included);
  void RunFindPorts();

  std::array<QCheckBox*, GPIB_PORT_COUNT> m_gpibInclude{};
  std::array<QLabel*, GPIB_PORT_COUNT> m_gpibInstalled{};
  std::array<QCheckBox*, RS232_PORT_COUNT> m_comInclude{};
  std::array<QLabel*, RS232_PORT_COUNT> m_comInstalled{};
  std::array<QComboBox*, RS232_PORT_COUNT> m_baud{};
  std::array<QComboBox*, RS232_PORT_COUNT> m_handshake{};
  QComboBox* m_maskPort = nullptr;
  std::array<QCheckBox*, GPIB_ADDRESS_COUNT> m_mask{};
  QPushButton* m_includeAll = nullptr;
  QPushButton* m_excludeAll = nullptr;
  QCheckBox* m_dtrOnly = nullptr;
  QPushButton* m_findPorts = nullptr;
  QLabel* m_status = nullptr;
};

}  // namespace cvn73100::ui
