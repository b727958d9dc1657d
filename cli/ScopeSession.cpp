#include "cli/ScopeSession.h"

#include "form/FormFile.h"
#include "diagnostics/CDebug.h"
#include "dialogs/LanguageSelection.h"
#include "dialogs/Messages.h"

namespace cvn73100 {

ScopeSession::ScopeSession(CliContext& context) : ScopeSession(context, Options{}) {}

ScopeSession::ScopeSession(CliContext& context, Options options)
    : m_context(context), m_form(options.formPath.empty() ? context.formPath : options.formPath) {
  if (!options.fresh) m_form.Load(m_loaded);
  m_control = std::make_unique<Cvn73100Scope>();
  // Also with an empty bag: reading passes the host's user mode on to the connection.
  m_control->ReadProperties(m_loaded);
  if (context.countryCode != 0) Messages::SetLanguageBase(LanguageSelection::Check(context.countryCode).base);
  // Support messages switched to events are shown on the error stream, as they happen.
  m_control->SupportMessage.Connect(
      [this](const std::string& message) { m_context.err << ConsoleHost::ToTerminal(message) << "\n"; });
}

ScopeSession::~ScopeSession() = default;

void ScopeSession::Connect() {
  if (!m_control->InstrumentConnected()) m_control->Initialize();
}

bool ScopeSession::Finish(bool force) {
  MemoryPropertyBag written;
  m_control->WriteProperties(written);
  // Compared as the file would hold them: a 16-bit value read back from JSON is a Long.
  if (!force && FormFile::ToJson(written) == FormFile::ToJson(m_loaded)) return false;
  m_form.Save(written);
  m_loaded = written;
  return true;
}

}  // namespace cvn73100
