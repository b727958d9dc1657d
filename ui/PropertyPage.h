#pragma once
#include <QString>
#include <QWidget>
#include <functional>
#include <string>

namespace cvn73100 {
class Cvn73100Scope;
}

namespace cvn73100::ui {

// One page of the control's property frame. The page's behaviour lives in its plain C++ object; the
// Qt page draws it and forwards the user's actions. The frame drives every page the same way:
//
//   page = factory(parent);             // the page's initialisation
//   page->Bind(&control);               // SelectedControl() set, then SelectionChanged()
//   ... user works; the page emits changed() whenever Changed() may have turned true or false
//   page->ApplyChanges();               // on OK or Apply, only for pages whose Changed() is true
//   delete page;                        // the page's termination (Cancel: nothing handed back)
//
// A page works on copies of what it edits and hands them to the control only in ApplyChanges.
class PropertyPage : public QWidget {
  Q_OBJECT
 public:
  explicit PropertyPage(QWidget* parent = nullptr) : QWidget(parent) {}
  ~PropertyPage() override = default;

  // The control the frame shows the page for (null until bound). The control outlives the page.
  Cvn73100Scope* SelectedControl() const { return m_control; }
  // Sets the control and lets the page take its data from it.
  void Bind(Cvn73100Scope* control) {
    m_control = control;
    SelectionChanged();
  }

  // The tab caption, in the current language.
  virtual QString Caption() const = 0;
  // The selected control was set: take working copies of its data and draw them.
  virtual void SelectionChanged() = 0;
  // Hand the working copies to the control.
  virtual void ApplyChanges() = 0;
  // Whether the page holds changes that ApplyChanges would hand to the control.
  virtual bool Changed() const = 0;
  // True while the page is in the middle of long work (a search): the frame then neither closes nor
  // applies.
  virtual bool Busy() const { return false; }

 signals:
  // Changed() may have a new value; the frame re-reads it for its Apply button.
  void changed();

 private:
  Cvn73100Scope* m_control = nullptr;
};

// Makes one page as a child of `parent`. The frame owns the page.
using PropertyPageFactory = std::function<PropertyPage*(QWidget* parent)>;

// The pages the property frame can make, by the class name the control offers them under
// (Cvn73100Scope::PAGE_SEARCH_IO ...). Registering a name again replaces its factory; a program
// registers its pages before it shows the frame. The Search Instruments, Search Criteria and Set I/O
// pages are registered from the start.
void RegisterPropertyPage(const std::string& className, PropertyPageFactory factory);
// The factory registered under `className`; empty when there is none.
PropertyPageFactory FindPropertyPage(const std::string& className);

}  // namespace cvn73100::ui
