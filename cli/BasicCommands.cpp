#include <CLI/CLI.hpp>
#include <sstream>

#include "cli/CliContext.h"
#include "cli/CliText.h"
#include "form/FormFile.h"
#include "dialogs/LanguageSelection.h"
#include "dialogs/Messages.h"
#include "ioconfig/CIOconfiguration.h"
#include "platform/Enumerations.h"

namespace cvn73100 {

std::string JsonString(const std::string& text) {
  std::ostringstream out;
  out << '"';
  for (unsigned char c : text) {
    switch (c) {
      case '"': out << "\\\""; break;
      case '\\': out << "\\\\"; break;
      case '\n': out << "\\n"; break;
      case '\r': out << "\\r"; break;
      case '\t': out << "\\t"; break;
      default:
        if (c < 0x20) {
          char buffer[8];
          std::snprintf(buffer, sizeof buffer, "\\u%04x", c);
          out << buffer;
        } else {
          out << c;
        }
    }
  }
  out << '"';
  return out.str();
}

std::string Reply(const CliContext& context, const std::string& text) {
  return context.outIsTerminal ? ConsoleHost::ToTerminal(text) : text;
}

void NamingTheProperty(const std::string& option, const std::string& value, const std::string& allowed,
                       const std::function<void()>& change) {
  try {
    change();
  } catch (const ScopeError& error) {
    if (error.Description().find(option) != std::string::npos) throw;
    throw ScopeError(error.Number(), error.Source(),
                     CliText(CliMsg::PROPERTY_ALLOWED, {error.Description(), option, value, allowed}));
  }
}

int ReportError(CliContext& context, const ScopeError& error) {
  if (context.json) {
    context.out << "{\"error\": {\"number\": " << error.Number() << ", \"source\": " << JsonString(error.Source())
                << ", \"description\": " << JsonString(error.Description()) << "}}\n";
  } else {
    context.err << CliText(CliMsg::ERROR_LINE, {std::to_string(error.Number()), ConsoleHost::ToTerminal(error.Source()),
                                                ConsoleHost::ToTerminal(error.Description())})
                << "\n";
  }
  return ExitStatus::ERROR;
}

void RegisterBasicCommands(CLI::App& app, CliContext& context) {
  auto* address = app.add_subcommand("address", CliText(CliMsg::ADDRESS_COMMAND));
  static std::string addressText;
  static bool dtrOnly = false;
  address->add_option("ADDRESS", addressText, CliText(CliMsg::ADDRESS_ARGUMENT))->required();
  address->add_flag("--dtr-only", dtrOnly, CliText(CliMsg::DTR_ONLY_FLAG));
  address->callback([&context] {
    CIOconfiguration configuration;
    configuration.SetDTROnly(dtrOnly);
    configuration.SetActiveAddressString(addressText);
    if (context.json) {
      context.out << "{\"address\": " << JsonString(configuration.ActiveAddressString())
                  << ", \"automationServerAddress\": " << JsonString(configuration.ActiveAutomationServerAddress())
                  << "}\n";
    } else {
      context.out << configuration.ActiveAddressString() << "\n"
                  << configuration.ActiveAutomationServerAddress() << "\n";
    }
  });

  auto* message = app.add_subcommand("message", CliText(CliMsg::MESSAGE_COMMAND));
  static int number = 0;
  message->add_option("NUMBER", number, CliText(CliMsg::MESSAGE_NUMBER_ARGUMENT))->required();
  message->callback([&context] {
    // Checked, not selected: printing a message must not install help files. Without --country the
    // form's language speaks.
    std::int32_t country = context.countryCode;
    if (country == 0) {
      MemoryPropertyBag form;
      FormFile(context.formPath).Load(form);
      country = form.ReadLong("CountryCode", Cvn73100_Language_English);
    }
    const int base = LanguageSelection::Check(country).base;
    const std::string text = Messages::LoadIn(base, number);
    if (text.empty()) {
      throw ScopeError(ERR_SUBSCRIPT_OUT_OF_RANGE, CLI_SOURCE, CliText(CliMsg::MESSAGE_UNKNOWN, {std::to_string(number)}));
    }
    if (context.json)
      context.out << "{\"number\": " << number << ", \"text\": " << JsonString(text) << "}\n";
    else
      context.out << ConsoleHost::ToTerminal(text) << "\n";
  });
}

}  // namespace cvn73100
