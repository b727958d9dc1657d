#include "dialogs/Messages.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/ScopeError.h"

namespace cvn73100 {
namespace {

class MessagesTest : public ::testing::Test {
 protected:
  void TearDown() override { Messages::SetLanguageBase(Messages::ENGLISH); }
};

struct LookupCase {
  int base;
  int number;
  std::string text;
};

TEST_F(MessagesTest, LookupFallsBackToEnglishAndNeverCrossesLanguages) {
  const LookupCase cases[] = {
      {Messages::ENGLISH, 106, "Invalid property value."},
      {Messages::GERMAN, 106, "Ungültiger Eigenschaftswert."},
      {Messages::JAPANESE, 106, "プロパティ値が無効です。"},
      {Messages::JAPANESE, 111, "OK"},                  // Japanese holds only 100-107
      {Messages::JAPANESE, 200, "Search Instruments"},  // ... so the rest is English
      {Messages::FRENCH, 10, "Cvn73100.hlp"},           // the generic help file exists in English only
      {Messages::TRADITIONAL_CHINESE, 102, "Noto Sans CJK TC"},
      {Messages::ENGLISH, 999, ""},        // no such message anywhere
      {Messages::ENGLISH, 1106, ""},       // not a message number: no reach into French
      {Messages::FRENCH, -894, ""},        // nor back into English
      {Messages::KOREAN, 2147483647, ""},  // nor past the end of int
  };
  for (const LookupCase& c : cases) {
    SCOPED_TRACE(std::to_string(c.base) + "+" + std::to_string(c.number));
    Messages::SetLanguageBase(c.base);
    EXPECT_EQ(Messages::Load(c.number), c.text);
    Messages::SetLanguageBase(Messages::ENGLISH);
    EXPECT_EQ(Messages::LoadIn(c.base, c.number), c.text);
  }
}

TEST_F(MessagesTest, CatalogueErrorsSpeakTheCurrentLanguage) {
  Messages::SetLanguageBase(Messages::SPANISH);
  const ScopeError error = InvalidPropertyValue();
  EXPECT_EQ(error.Number(), -2147221124);
  EXPECT_EQ(error.Source(), "Control de osciloscopio QD 73100");
  EXPECT_EQ(error.Description(), "Valor de propiedad no válido.");
  EXPECT_EQ(error.HelpFile(), "Cvn73100.hlp");

  Messages::SetLanguageBase(Messages::JAPANESE);
  const ScopeError connection = CatalogueError(ERR_FAILED_CONNECTION, 104, 113);
  EXPECT_EQ(connection.Number(), -2147221445);
  EXPECT_EQ(connection.Source(), "QD 73100 オシロスコープ コントロール");
  EXPECT_EQ(connection.Description(), "Connection to instrument did not succeed");
}

}  // namespace
}  // namespace cvn73100
