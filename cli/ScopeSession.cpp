#include "cli/ScopeSession.h"

#include "form/FormFile.h"
#include "diagnostics/CDebug.h"
#include "dialogs/LanguageSelection.h"
#include "dialogs/Messages.h"

namespace cvn73100 {

ScopeSession::ScopeSession(CliContext& context) : ScopeSession(context, Options{}) {}

ScopeSession::ScopeSession(CliContext& context, Options options)
    : m_context(context),
      m_form(options.formPath.empty() ? context.formPath : options.formPath),
      m_fresh(options.fresh) {
  if (!m_fresh) m_form.Load(m_loaded, [this](const std::string& notice) { m_context.err << notice << "\n"; });
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

bool ScopeSession::Finish() {
  MemoryPropertyBag written;
  m_control->WriteProperties(written);
  written = FormFile::AsStored(written);
  if (m_fresh) {
    m_form.Save(written);
  } else if (written.Entries() == m_loaded.Entries()) {
    return false;
  } else {
    // Only what this command changed goes in: others may have changed the form since it was read.
    m_form.Merge(m_loaded, written, [this](const std::string& notice) { m_context.err << notice << "\n"; });
  }
  m_loaded = std::move(written);
  return true;
}

}  // namespace cvn73100
