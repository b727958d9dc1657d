#pragma once
#include <QString>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "ui/ConfigurationPage.h"

class QComboBox;
class QFormLayout;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

namespace cvn73100 {
class CIOconfiguration;
}

namespace cvn73100::ui {

// The Set I/O page: the instrument address set by hand. The active port (GPIB0..GPIB3, COM1..COM4)
// with its GPIB address or its serial settings, the address string they make (which may also be
// typed), and Test, which queries that address and shows the outcome.
//
// It edits a copy of the control's I/O configuration. Apply runs the RS-232 handshake check for the
// new address first (Cancel in its warning keeps the page as it is), then hands the address to the
// control and tells it that its I/O configuration changed.
//
// The address box also takes the support engineer's chords: Ctrl+Shift+B, L, E and A add the
// support-message mode bits 1 (message boxes), 2 (log file), 4 (events) and 8 (assert) to the current
// mode, and Ctrl+Shift+0 sets it to 0; each confirms in a box titled "Support Message". The chords add
// rather than set, so the same chord twice carries into the next bit.
class SetIOPage : public ConfigurationPage {
  Q_OBJECT
 public:
  struct SupportMessageChord {
    std::int32_t bit = 0;  // the value added to the mode; 0 with `reset`
    bool reset = false;    // the chord that sets the mode to 0
    const char* confirmation = "";
  };
  static constexpr const char* SUPPORT_MESSAGE_TITLE = "Support Message";

  // The chord of `key` pressed with `modifiers`, if it is one.
  static std::optional<SupportMessageChord> ChordOf(int key, Qt::KeyboardModifiers modifiers);
  // The mode after `chord` is used on `mode`.
  static std::int32_t ModeAfter(std::int32_t mode, const SupportMessageChord& chord) {
    return chord.reset ? 0 : mode + chord.bit;
  }

  explicit SetIOPage(QWidget* parent = nullptr);
  ~SetIOPage() override;

  QString Caption() const override;
  void ApplyChanges() override;

  QComboBox* Port() const { return m_port; }
  QSpinBox* GPIBAddress() const { return m_gpibAddress; }
  QComboBox* BaudRate() const { return m_baud; }
  QComboBox* Handshake() const { return m_handshake; }
  QLineEdit* AddressBox() const { return m_address; }
  QPushButton* TestButton() const { return m_test; }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void Fill() override;

 private:
  void Edit(const std::function<void(CIOconfiguration&)>& edit);
  void TypedAddress();
  void RunTest();
  void UseChord(const SupportMessageChord& chord);
  // The identity known for the working address: from this page's Test of it, or the control's when
  // the address is the control's own.
  std::string KnownIdentity() const;

  std::string m_testedAddress;
  std::string m_testedReply;
  QGroupBox* m_settings = nullptr;
  QFormLayout* m_form = nullptr;
  QComboBox* m_port = nullptr;
  QSpinBox* m_gpibAddress = nullptr;
  QComboBox* m_baud = nullptr;
  QComboBox* m_handshake = nullptr;
  QLineEdit* m_address = nullptr;
  QPushButton* m_test = nullptr;
};

}  // namespace cvn73100::ui
