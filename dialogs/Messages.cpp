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

bool Messages::IsMessageNumber(int number) {
  return (number >= 0 && number < LANGUAGE_SPAN) || (number >= CLI_FIRST && number < CLI_END);
}

int Messages::TableId(int base, int number) {
  return number < LANGUAGE_SPAN ? base + number : CLI_TABLE_OFFSET + base + number;
}

std::string Messages::LoadIn(int base, int number) {
  // Anything outside the two ranges is no message number (and must not reach into the next language or
  // overflow).
  if (!IsMessageNumber(number)) return std::string();
  if (auto text = Find(TableId(base, number))) return *text;
  return Find(TableId(ENGLISH, number)).value_or(std::string());
}

int Messages::LanguageBase() { return g_languageBase.load(); }
void Messages::SetLanguageBase(int base) { g_languageBase.store(base); }

ScopeError CatalogueError(std::int32_t code, int sourceMessage, int descriptionMessage) {
  return ScopeError(ObjectError(code), Messages::Load(sourceMessage), Messages::Load(descriptionMessage));
}

ScopeError InvalidPropertyValue() { return CatalogueError(ERR_INVALID_PROPERTY_VALUE, 104, 106); }

}  // namespace cvn73100
