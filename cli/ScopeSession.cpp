#include "cli/ScopeSession.h"

#include <algorithm>

#include "diagnostics/CDebug.h"
#include "dialogs/LanguageSelection.h"
#include "dialogs/Messages.h"
#include "form/FormFile.h"

namespace cvn73100 {
namespace {

// Compared as the file would hold them (a 16-bit value read back from JSON is a Long), in any order.
bool SameProperties(const MemoryPropertyBag& a, const MemoryPropertyBag& b) {
  const auto sorted = [](const MemoryPropertyBag& bag) {
    auto entries = bag.Entries();
    std::sort(entries.begin(), entries.end(), [](const auto& x, const auto& y) { return x.first < y.first; });
    MemoryPropertyBag copy;
    for (auto& [key, value] : entries) copy.Set(key, std::move(value));
    return FormFile::ToJson(copy);
  };
  return sorted(a) == sorted(b);
}

}  // namespace

ScopeSession::ScopeSession(CliContext& context) : ScopeSession(context, Options{}) {}

ScopeSession::ScopeSession(CliContext& context, Options options)
    : m_context(context), m_form(options.formPath.empty() ? context.formPath : options.formPath) {
  if (!options.fresh) m_form.Load(m_loaded, [this](const std::string& notice) { m_context.err << notice << "\n"; });
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
  if (!force && SameProperties(written, m_loaded)) return false;
  // Other commands may have changed the form since it was read: only this command's changes are applied.
  m_form.SaveChanges(m_loaded, written, [this](const std::string& notice) { m_context.err << notice << "\n"; });
  m_loaded = written;
  return true;
}

}  // namespace cvn73100
