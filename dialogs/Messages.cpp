#include "dialogs/Messages.h"

#include <algorithm>
#include <atomic>

#include "dialogs/MessageTable.h"

namespace cvn73100 {
namespace {
std::atomic<int> g_languageBase{Messages::ENGLISH};
}

std::optional<std::string> Messages::Find(int id) {
  const MessageEntry* end = kMessageTable + kMessageTableSize;
  const MessageEntry* it =
      std::lower_bound(kMessageTable, end, id, [](const MessageEntry& e, int value) { return e.id < value; });
  if (it == end || it->id != id) return std::nullopt;
  return std::string(it->text);
}

std::string Messages::Load(int number) { return LoadIn(LanguageBase(), number); }

std::string Messages::LoadIn(int base, int number) {
  // A language's copy spans 1000 identifiers; anything outside 0..999 is no message number (and must not
  // reach into the next language or overflow).
  if (number < 0 || number >= LANGUAGE_SPAN) return std::string();
  if (auto text = Find(base + number)) return *text;
  return Find(number).value_or(std::string());
}

int Messages::LanguageBase() { return g_languageBase.load(); }
void Messages::SetLanguageBase(int base) { g_languageBase.store(base); }

ScopeError CatalogueError(std::int32_t code, int sourceMessage, int descriptionMessage) {
  return ScopeError(ObjectError(code), Messages::Load(sourceMessage), Messages::Load(descriptionMessage));
}

ScopeError InvalidPropertyValue() { return CatalogueError(ERR_INVALID_PROPERTY_VALUE, 104, 106); }

}  // namespace cvn73100
