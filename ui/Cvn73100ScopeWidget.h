#pragma once
#include <QTimer>
#include <QWidget>
#include <functional>
#include <memory>
#include <vector>

#include "platform/Enumerations.h"
#include "platform/Event.h"

class QLabel;

namespace cvn73100 {
class Cvn73100Scope;
}

namespace cvn73100::ui {

// The control as a host places it on a form: it owns the Cvn73100Scope and shows its face (the
// control's name, the active address, whether the instrument is connected, and the instrument's
// identity). Layout after a resize waits for the resize timer, which stops itself on its first tick,
// so dragging a form's edge lays the face out once when it settles.
//
// Making one makes the control, so the I/O library and the automation server must be registered
// with Components first (the control raises otherwise).
//
// The control's saved settings are Qt properties too, so a form designer lists them, stores them in its
// form and the generated code sets them through the set... functions. A value the control refuses leaves
// the property as it was and goes to the host as a warning: Qt's property system has no way to carry
// the error back, and a form designer must not be brought down by a typing mistake.
class Cvn73100ScopeWidget : public QWidget {
  Q_OBJECT
  Q_PROPERTY(QString address READ address WRITE setAddress NOTIFY addressChanged DESIGNABLE true)
  Q_PROPERTY(Language countryCode READ countryCode WRITE setCountryCode NOTIFY countryCodeChanged DESIGNABLE true)
  Q_PROPERTY(QString fontName READ fontName WRITE setFontName NOTIFY fontChanged DESIGNABLE true)
  Q_PROPERTY(int fontSize READ fontSize WRITE setFontSize NOTIFY fontChanged DESIGNABLE true)
  Q_PROPERTY(int txDelay READ txDelay WRITE setTxDelay DESIGNABLE true)
  Q_PROPERTY(int supportMessageMode READ supportMessageMode WRITE setSupportMessageMode DESIGNABLE true)
  Q_PROPERTY(bool resetOnInitialize READ resetOnInitialize WRITE setResetOnInitialize DESIGNABLE true)
  Q_PROPERTY(bool checkIdOnInitialize READ checkIdOnInitialize WRITE setCheckIdOnInitialize DESIGNABLE true)
  Q_PROPERTY(bool debugEnabled READ debugEnabled WRITE setDebugEnabled DESIGNABLE true)
  // Found at run time; nothing to design or store.
  Q_PROPERTY(QString instrumentId READ instrumentId NOTIFY instrumentIdChanged DESIGNABLE false STORED false)

 public:
  static constexpr int RESIZE_DELAY_MS = 100;

  // The languages of the control's texts, by their country codes.
  enum Language {
    English = Cvn73100_Language_English,
    French = Cvn73100_Language_French,
    Spanish = Cvn73100_Language_Spanish,
    Italian = Cvn73100_Language_Italian,
    German = Cvn73100_Language_German,
    Japanese = Cvn73100_Language_Japanese,
    Korean = Cvn73100_Language_Korean,
    TraditionalChinese = Cvn73100_Language_Traditional_Chinese,
  };
  Q_ENUM(Language)

  explicit Cvn73100ScopeWidget(QWidget* parent = nullptr);
  ~Cvn73100ScopeWidget() override;

  Cvn73100Scope& Scope() const { return *m_scope; }

  // The control's ShowPropertyPages with this widget as the frame's owner; the face is refreshed
  // afterwards. Errors of the control (an unknown selector) reach the caller.
  void ShowPropertyPages(int selector = 0);
  // Reads the face's texts from the control again.
  void Refresh();

  QTimer& ResizeTimer() { return m_resizeTimer; }
  // How often the face has been laid out (for tests of the resize timer).
  int LayoutCount() const { return m_layoutCount; }

  QSize sizeHint() const override;

  QString address() const;
  void setAddress(const QString& address);
  Language countryCode() const;
  void setCountryCode(Language language);
  QString fontName() const;
  void setFontName(const QString& name);
  int fontSize() const;
  void setFontSize(int size);
  int txDelay() const;
  void setTxDelay(int delay);
  int supportMessageMode() const;
  void setSupportMessageMode(int mode);
  bool resetOnInitialize() const;
  void setResetOnInitialize(bool value);
  bool checkIdOnInitialize() const;
  void setCheckIdOnInitialize(bool value);
  bool debugEnabled() const;
  void setDebugEnabled(bool value);
  QString instrumentId() const { return m_identityText; }

 signals:
  // The control's support message, as it formats it.
  void supportMessage(const QString& block);
  // Emitted by Refresh for whatever changed the control: a setter, the property pages or the control itself.
  void addressChanged(const QString& address);
  void countryCodeChanged(cvn73100::ui::Cvn73100ScopeWidget::Language language);
  void fontChanged();
  void instrumentIdChanged(const QString& id);

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void LayOut();
  void OnPropertyChanged(const QString& name);
  void ApplyFont();
  // Runs a setter of the control; a refusal becomes a host warning. Refreshes the face either way.
  void Apply(const std::function<void()>& set);

  std::unique_ptr<Cvn73100Scope> m_scope;
  std::vector<EventConnection> m_connections;
  QTimer m_resizeTimer;
  int m_layoutCount = 0;
  QLabel* m_name = nullptr;
  QLabel* m_state = nullptr;
  QLabel* m_address = nullptr;
  QLabel* m_identity = nullptr;
  QString m_addressText;
  QString m_identityText;
  Language m_language = English;
  QString m_fontName;
  int m_fontSize = 0;
};

}  // namespace cvn73100::ui
