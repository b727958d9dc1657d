#include "ui/SerialCombos.h"

#include <QComboBox>

#include "ioconfig/IOConfigurationConstants.h"
#include "ui/UiText.h"

namespace cvn73100::ui {

void FillBaudRates(QComboBox* combo) {
  combo->clear();
  for (std::int32_t rate : RS232_BAUD_RATES) combo->addItem(QString::number(rate), rate);
}

void FillHandshakes(QComboBox* combo) {
  combo->clear();
  combo->addItem(Msg(317), static_cast<int>(RS232_HandShake_XON_XOFF));
  combo->addItem(Msg(318), static_cast<int>(RS232_HandShake_DTR_DSR));
}

void SelectValue(QComboBox* combo, std::int32_t value) { combo->setCurrentIndex(combo->findData(value)); }

std::int32_t SelectedValue(const QComboBox* combo, std::int32_t fallback) {
  return combo->currentIndex() < 0 ? fallback : combo->currentData().toInt();
}

}  // namespace cvn73100::ui
