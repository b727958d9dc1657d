#pragma once
#include <memory>
#include <string>

#include "cli/CliContext.h"
#include "control/Cvn73100Scope.h"
#include "form/FormFile.h"
#include "platform/PropertyBag.h"

namespace cvn73100 {

// One command's control: created over the registered I/O library and automation server, its properties
// read from the form file (the control's property bag), and the form written back whole when the command
// has changed any of them.
//
// The form's language is the language of the command's messages; --country overrides it for this run
// only, without changing the form.
class ScopeSession {
 public:
  struct Options {
    std::string formPath;  // empty: the context's form
    bool fresh = false;    // start from a new form instead of reading the file
  };

  explicit ScopeSession(CliContext& context);
  ScopeSession(CliContext& context, Options options);
  ~ScopeSession();
  ScopeSession(const ScopeSession&) = delete;
  ScopeSession& operator=(const ScopeSession&) = delete;

  Cvn73100Scope& Control() { return *m_control; }
  const std::string& FormPath() const { return m_form.Path(); }

  // Opens the connection on the control's address unless it is open; failures reach the caller.
  void Connect();
  // Writes the form when the control's properties differ from what was read (or always, with `force`).
  // Returns whether it wrote. A command calls it once it has done its work: a failed command leaves the
  // form as it was.
  bool Finish(bool force = false);

 private:
  CliContext& m_context;
  FormFile m_form;
  MemoryPropertyBag m_loaded;
  std::unique_ptr<Cvn73100Scope> m_control;
};

}  // namespace cvn73100
