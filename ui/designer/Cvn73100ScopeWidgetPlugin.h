#pragma once
#include <QObject>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>

namespace cvn73100::ui {

// Puts the control widget in Qt Designer's widget box ("Instruments"), so the control can be placed
// on a form like any widget. On a form in Designer the control is in design mode: it does not open
// its instrument.
class Cvn73100ScopeWidgetPlugin : public QObject, public QDesignerCustomWidgetInterface {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID "org.qt-project.Qt.QDesignerCustomWidgetInterface")
  Q_INTERFACES(QDesignerCustomWidgetInterface)
 public:
  explicit Cvn73100ScopeWidgetPlugin(QObject* parent = nullptr);

  QString name() const override;
  QString group() const override;
  QString toolTip() const override;
  QString whatsThis() const override;
  QString includeFile() const override;
  QIcon icon() const override;
  bool isContainer() const override;
  QWidget* createWidget(QWidget* parent) override;
  bool isInitialized() const override;
  void initialize(QDesignerFormEditorInterface* core) override;
  QString domXml() const override;

 private:
  bool m_bInitialized = false;
};

}  // namespace cvn73100::ui
