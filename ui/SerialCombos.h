#pragma once
#include <cstdint>

class QComboBox;

namespace cvn73100::ui {

// The choices of a serial port's settings, each item carrying its value as item data.
// Baud rates 1200..57600.
void FillBaudRates(QComboBox* combo);
// XON/XOFF and DTR/DSR (messages 317, 318).
void FillHandshakes(QComboBox* combo);
// Selects the item carrying `value`; a value without an item selects none.
void SelectValue(QComboBox* combo, std::int32_t value);
// The value of the selected item, or `fallback` when none is selected.
std::int32_t SelectedValue(const QComboBox* combo, std::int32_t fallback);

}  // namespace cvn73100::ui
