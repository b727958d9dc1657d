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

std::string Messages::Load(int number) {
  if (auto text = Find(LanguageBase() + number)) return *text;
  return Find(number).value_or(std::string());
}

int Messages::LanguageBase() { return g_languageBase.load(); }
void Messages::SetLanguageBase(int base) { g_languageBase.store(base); }

ScopeError CatalogueError(std::int32_t code, int sourceMessage, int descriptionMessage) {
  return ScopeError(ObjectError(code), Messages::Load(sourceMessage), Messages::Load(descriptionMessage));
}

ScopeError InvalidPropertyValue() { return CatalogueError(ERR_INVALID_PROPERTY_VALUE, 104, 106); }

}  // namespace cvn73100
