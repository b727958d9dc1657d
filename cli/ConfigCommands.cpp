#include <CLI/CLI.hpp>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>
#include <algorithm>
#include <cctype>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>

#include "cli/CliContext.h"
#include "cli/CliText.h"
#include "cli/TextWidth.h"
#include "cli/JsonText.h"
#include "cli/ScopeSession.h"
#include "control/Cvn73100Scope.h"
#include "diagnostics/CDebug.h"
#include "ioconfig/CIOconfiguration.h"
#include "ioconfig/IOConfigurationConstants.h"
#include "platform/Os.h"
#include "platform/ScopeError.h"

namespace cvn73100 {
namespace {

using nlohmann::json;

// Positions in the search-criteria list (CIOconfiguration::DataAsVariant).
constexpr std::size_t CRITERIA_GPIB_INCLUDED = 1;
constexpr std::size_t CRITERIA_GPIB_MASK = 2;
constexpr std::size_t CRITERIA_RS232_INCLUDED = 4;
constexpr std::size_t CRITERIA_RS232_SETTINGS = 5;

const std::vector<std::string> SWITCH_WORDS = {"on", "off", "true", "false", "yes", "no", "1", "0"};

bool SwitchValue(const std::string& word) {
  std::string lower = word;
  std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return std::tolower(c); });
  return lower == "on" || lower == "true" || lower == "yes" || lower == "1";
}

std::string OnOff(bool value) { return value ? "on" : "off"; }

// The name of the language a country code selects, in the language of this run.
std::string LanguageName(std::int32_t code) {
  switch (code) {
    case Cvn73100_Language_English: return CliText(CliMsg::LANGUAGE_ENGLISH);
    case Cvn73100_Language_French: return CliText(CliMsg::LANGUAGE_FRENCH);
    case Cvn73100_Language_Spanish: return CliText(CliMsg::LANGUAGE_SPANISH);
    case Cvn73100_Language_Italian: return CliText(CliMsg::LANGUAGE_ITALIAN);
    case Cvn73100_Language_German: return CliText(CliMsg::LANGUAGE_GERMAN);
    case Cvn73100_Language_Japanese: return CliText(CliMsg::LANGUAGE_JAPANESE);
    case Cvn73100_Language_Korean: return CliText(CliMsg::LANGUAGE_KOREAN);
    case Cvn73100_Language_Traditional_Chinese: return CliText(CliMsg::LANGUAGE_TRADITIONAL_CHINESE);
    default: return "?";
  }
}

std::string HandshakeName(std::int32_t handshake) {
  switch (handshake) {
    case RS232_HandShake_XON_XOFF: return HANDSHAKE_XON_XOFF;
    case RS232_HandShake_DTR_DSR: return HANDSHAKE_DTR_DSR;
    default: return std::to_string(handshake);
  }
}

// "xon-xoff", "XON_XOFF", "2"; "dtr-dsr", "DTR_DSR", "4". Anything else is passed on as a number, for the
// configuration to refuse.
std::int32_t HandshakeValue(const std::string& text) {
  std::string key;
  for (unsigned char c : text)
    if (std::isalnum(c)) key += static_cast<char>(std::toupper(c));
  if (key == "XONXOFF" || key == "XON") return RS232_HandShake_XON_XOFF;
  if (key == "DTRDSR" || key == "DTR") return RS232_HandShake_DTR_DSR;
  try {
    return std::stoi(text);
  } catch (const std::exception&) {
    throw ScopeError(ERR_TYPE_MISMATCH, CLI_SOURCE, CliText(CliMsg::UNKNOWN_HANDSHAKE, {text}));
  }
}

// "0-30", "3,7,12", "0-5,9", "all", "none" -> the addresses 0..30 it names.
std::vector<bool> AddressList(const std::string& text) {
  std::vector<bool> included(SEARCH_CRITERIA::LAST_GPIB_INCLUDE + 1, false);
  const auto fail = [&] {
    return ScopeError(ERR_INVALID_PROPERTY_VALUE, CLI_SOURCE, CliText(CliMsg::NOT_ADDRESS_LIST, {text}));
  };
  if (text == "all") return std::vector<bool>(included.size(), true);
  if (text == "none") return included;
  std::stringstream stream(text);
  std::string part;
  while (std::getline(stream, part, ',')) {
    int first = 0, last = 0;
    char dash = 0;
    std::stringstream range(part);
    if (!(range >> first)) throw fail();
    last = first;
    if (range >> dash) {
      if (dash != '-' || !(range >> last)) throw fail();
    }
    std::string rest;
    if (range >> rest) throw fail();
    if (first < SEARCH_CRITERIA::FIRST_GPIB_INCLUDE || last > SEARCH_CRITERIA::LAST_GPIB_INCLUDE || first > last)
      throw fail();
    for (int a = first; a <= last; ++a) included[static_cast<std::size_t>(a)] = true;
  }
  return included;
}

// "0-7,9,12-30".
std::string AddressRanges(const CIOconfiguration& configuration, std::int32_t board) {
  std::string text;
  std::int32_t a = SEARCH_CRITERIA::FIRST_GPIB_INCLUDE;
  while (a <= SEARCH_CRITERIA::LAST_GPIB_INCLUDE) {
    if (!configuration.GPIBPortIncludes(board, a)) {
      ++a;
      continue;
    }
    std::int32_t end = a;
    while (end + 1 <= SEARCH_CRITERIA::LAST_GPIB_INCLUDE && configuration.GPIBPortIncludes(board, end + 1)) ++end;
    text += (text.empty() ? "" : ",") + std::to_string(a) + (end > a ? "-" + std::to_string(end) : "");
    a = end + 1;
  }
  return text.empty() ? "none" : text;
}

// The last `lines` lines of the log at `path`: nullopt when there is none. Only a regular file is read, never
// through a link, and at most its last mebibyte, so that a planted FIFO or a huge file cannot stall the command.
std::optional<std::string> LogTail(const std::string& path, std::size_t lines) {
  constexpr off_t MAX_READ = 1 << 20;
  const int fd = ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) {
    if (errno == ENOENT) return std::nullopt;
    throw ScopeError(75, "cvnscope", "Path/File access error: " + path + ": " + std::strerror(errno));
  }
  struct stat st {};
  if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
    ::close(fd);
    throw ScopeError(75, "cvnscope", "Path/File access error: " + path + ": not a regular file");
  }
  const off_t start = std::max<off_t>(0, st.st_size - MAX_READ);
  std::string text(static_cast<std::size_t>(st.st_size - start), '\0');
  const ssize_t got = ::pread(fd, text.data(), text.size(), start);
  ::close(fd);
  text.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
  std::size_t begin = text.size();
  for (std::size_t seen = 0; begin > 0; --begin) {
    if (text[begin - 1] == '\n' && begin != text.size() && ++seen == lines) break;
  }
  return text.substr(begin);
}

std::string LogPath() {
  const std::string& path = CDebug::Instance().LogPath();
  return path.empty() ? Os::Current().TempPath() + CDebug::LOG_FILE_NAME : path;
}

json ModeJson(std::int32_t mode) {
  return json{{"mode", mode},
              {"messageBox", (mode & CDebug::MODE_MESSAGE_BOX) != 0},
              {"logFile", (mode & CDebug::MODE_LOG) != 0},
              {"event", (mode & CDebug::MODE_EVENT) != 0},
              {"assert", (mode & CDebug::MODE_ASSERT) != 0},
              {"log", LogPath()}};
}

void ShowConfig(CliContext& context, ScopeSession& session) {
  Cvn73100Scope& control = session.Control();
  const CIOconfiguration& io = *control.IOConfiguration();
  if (context.json) {
    json serial = json::array();
    for (std::int32_t port = RS232_PORT::First; port <= RS232_PORT::Last; ++port) {
      serial.push_back(json{{"port", io.RS232PortString(port)},
                            {"baud", io.BaudRate(port)},
                            {"parity", io.Parity(port)},
                            {"handshake", HandshakeName(io.Handshake(port))},
                            {"installed", io.RS232PortInstalled(port)},
                            {"included", io.RS232PortIncluded(port)}});
    }
    json gpib = json::array();
    for (std::int32_t board = GPIB_PORT::First; board <= GPIB_PORT::Last; ++board) {
      gpib.push_back(json{{"port", io.GPIBPortString(board)},
                          {"installed", io.GPIBPortInstalled(board)},
                          {"included", io.GPIBPortIncluded(board)},
                          {"addresses", AddressRanges(io, board)}});
    }
    context.out << json{{"form", session.FormPath()},
                        {"address", control.Address()},
                        {"automationServerAddress", control.AutomationServerAddress()},
                        {"instrument", control.AddressInstrumentID()},
                        {"countryCode", static_cast<std::int32_t>(control.CountryCode())},
                        {"txDelay", control.TXDelay()},
                        {"resetOnInitialize", control.ResetOnInitialize()},
                        {"checkIDOnInitialize", control.CheckIDOnInitialize()},
                        {"dtrOnly", control.DTROnly()},
                        {"initialSearch", control.InitialSearchMode()},
                        {"handshakeWarning", !control.DontShowIOHandshakeWarning()},
                        {"lastHandshakeAddress", control.LastIOHandshakeAddress()},
                        {"supportMessages", ModeJson(control.SupportMessageMode())},
                        {"serial", serial},
                        {"gpib", gpib}}
                       .dump(2, ' ', false, kReplaceInvalidUtf8)
                << "\n";
    return;
  }
  std::ostream& out = context.out;
  const std::string lastSettled = control.LastIOHandshakeAddress();
  PrintFields(out, {{CliText(CliMsg::FIELD_FORM), session.FormPath()},
                    {CliText(CliMsg::FIELD_ADDRESS), control.Address()},
                    {CliText(CliMsg::FIELD_SERVER_ADDRESS), control.AutomationServerAddress()},
                    {CliText(CliMsg::FIELD_INSTRUMENT),
                     control.AddressInstrumentID().empty() ? "-" : control.AddressInstrumentID()},
                    {CliText(CliMsg::FIELD_LANGUAGE),
                     std::to_string(control.CountryCode()) + " (" + LanguageName(control.CountryCode()) + ")"},
                    {CliText(CliMsg::FIELD_TX_DELAY), std::to_string(control.TXDelay()) + " ms"},
                    {CliText(CliMsg::FIELD_RESET_ON_INIT), OnOff(control.ResetOnInitialize())},
                    {CliText(CliMsg::FIELD_CHECK_ID_ON_INIT), OnOff(control.CheckIDOnInitialize())},
                    {CliText(CliMsg::FIELD_DTR_ONLY), OnOff(control.DTROnly())},
                    {CliText(CliMsg::FIELD_INITIAL_SEARCH), OnOff(control.InitialSearchMode())},
                    {CliText(CliMsg::FIELD_HANDSHAKE_WARNING),
                     OnOff(!control.DontShowIOHandshakeWarning()) +
                         (lastSettled.empty() ? "" : " (" + CliText(CliMsg::LAST_SETTLED, {lastSettled}) + ")")},
                    {CliText(CliMsg::FIELD_SUPPORT_MESSAGES),
                     CliText(CliMsg::MODE_N, {std::to_string(control.SupportMessageMode())})}});
  out << CliText(CliMsg::SERIAL_PORTS) << "\n";
  TextTable serial("  ", "   ");
  for (std::int32_t port = RS232_PORT::First; port <= RS232_PORT::Last; ++port) {
    std::string state = CliText(CliMsg::BAUD_PARITY, {std::to_string(io.BaudRate(port)), std::to_string(io.Parity(port))}) +
                        ", " + HandshakeName(io.Handshake(port));
    if (io.RS232PortInstalled(port)) state += ", " + CliText(CliMsg::INSTALLED);
    state += ", " + CliText(io.RS232PortIncluded(port) ? CliMsg::SEARCHED : CliMsg::EXCLUDED_FROM_SEARCHES);
    serial.Add({io.RS232PortString(port), state});
  }
  serial.Print(out);
  out << CliText(CliMsg::GPIB_INTERFACES) << "\n";
  TextTable gpib("  ");
  for (std::int32_t board = GPIB_PORT::First; board <= GPIB_PORT::Last; ++board) {
    std::string state = io.GPIBPortInstalled(board) ? CliText(CliMsg::INSTALLED) + ", " : "";
    state += CliText(io.GPIBPortIncluded(board) ? CliMsg::SEARCHED : CliMsg::EXCLUDED_FROM_SEARCHES);
    gpib.Add({io.GPIBPortString(board), state + ", " + CliText(CliMsg::ADDRESSES_LIST, {AddressRanges(io, board)})});
  }
  gpib.Print(out);
}

void Saved(CliContext& context, ScopeSession& session) {
  const bool written = session.Finish();
  if (context.json)
    context.out << json{{"form", session.FormPath()}, {"changed", written}}.dump(-1, ' ', false, kReplaceInvalidUtf8) << "\n";
  else
    context.out << CliText(written ? CliMsg::FORM_SAVED : CliMsg::FORM_UNCHANGED, {session.FormPath()}) << "\n";
}

void RegisterShow(CLI::App& config, CliContext& context) {
  auto* show = config.add_subcommand("show", CliText(CliMsg::CONFIG_SHOW_COMMAND));
  show->callback([&context] {
    ScopeSession session(context);
    ShowConfig(context, session);
  });
}

void RegisterSet(CLI::App& config, CliContext& context) {
  struct Options {
    std::string address;
    std::int32_t txDelay = 0;
    std::string resetOnInitialize;
    std::string checkIDOnInitialize;
    std::int32_t language = 0;
    std::string dtrOnly;
    std::string initialSearch;
    std::string handshakeWarning;
  };
  auto o = std::make_shared<Options>();
  auto* set = config.add_subcommand("set", CliText(CliMsg::CONFIG_SET_COMMAND));
  auto* address = set->add_option("--address", o->address, CliText(CliMsg::OPTION_ADDRESS));
  auto* txDelay = set->add_option("--tx-delay", o->txDelay, CliText(CliMsg::OPTION_TX_DELAY));
  auto* reset = set->add_option("--reset-on-init", o->resetOnInitialize, CliText(CliMsg::OPTION_RESET_ON_INIT))
                    ->check(CLI::IsMember(SWITCH_WORDS, CLI::ignore_case));
  auto* checkID = set->add_option("--check-id-on-init", o->checkIDOnInitialize,
                                  CliText(CliMsg::OPTION_CHECK_ID_ON_INIT))
                      ->check(CLI::IsMember(SWITCH_WORDS, CLI::ignore_case));
  auto* language = set->add_option("--language", o->language,
                                   CliText(CliMsg::OPTION_LANGUAGE));
  auto* dtrOnly = set->add_option("--dtr-only", o->dtrOnly, CliText(CliMsg::OPTION_DTR_ONLY))
                      ->check(CLI::IsMember(SWITCH_WORDS, CLI::ignore_case));
  auto* initialSearch = set->add_option("--initial-search", o->initialSearch,
                                        CliText(CliMsg::OPTION_INITIAL_SEARCH))
                            ->check(CLI::IsMember(SWITCH_WORDS, CLI::ignore_case));
  auto* warning = set->add_option("--handshake-warning", o->handshakeWarning,
                                  CliText(CliMsg::OPTION_HANDSHAKE_WARNING))
                      ->check(CLI::IsMember(SWITCH_WORDS, CLI::ignore_case));
  set->callback([&context, o, address, txDelay, reset, checkID, language, dtrOnly, initialSearch, warning] {
    ScopeSession session(context);
    Cvn73100Scope& control = session.Control();
    if (language->count()) {
      NamingTheProperty("--language", std::to_string(o->language), CliText(CliMsg::ALLOWED_COUNTRY_CODES),
                        [&] { control.SetCountryCode(o->language); });
    }
    if (dtrOnly->count()) control.SetDTROnly(SwitchValue(o->dtrOnly));
    if (address->count()) {
      NamingTheProperty("--address", o->address, CliText(CliMsg::ALLOWED_ADDRESS),
                        [&] { control.SetAddress(o->address); });
    }
    if (txDelay->count()) {
      NamingTheProperty("--tx-delay", std::to_string(o->txDelay), CliText(CliMsg::ALLOWED_TX_DELAY), [&] { control.SetTXDelay(o->txDelay); });
    }
    if (reset->count()) control.SetResetOnInitialize(SwitchValue(o->resetOnInitialize));
    if (checkID->count()) control.SetCheckIDOnInitialize(SwitchValue(o->checkIDOnInitialize));
    if (initialSearch->count()) control.SetInitialSearchMode(SwitchValue(o->initialSearch));
    if (warning->count()) control.SetDontShowIOHandshakeWarning(!SwitchValue(o->handshakeWarning));
    Saved(context, session);
  });
}

void RegisterSerial(CLI::App& config, CliContext& context) {
  struct Options {
    std::int32_t port = 1;
    std::int32_t baud = 0;
    std::string handshake;
    bool include = false;
    bool exclude = false;
  };
  auto o = std::make_shared<Options>();
  auto* serial = config.add_subcommand("serial", CliText(CliMsg::CONFIG_SERIAL_COMMAND));
  serial->add_option("PORT", o->port, "1..4 (COM1..COM4)")
      ->required()
      ->transform([](std::string text) {
        if (text.size() > 3 && (text[0] == 'C' || text[0] == 'c')) text = text.substr(3);
        return text;
      })
      ->check(CLI::Range(RS232_PORT::First, RS232_PORT::Last));
  auto* baud = serial->add_option("--baud", o->baud, CliText(CliMsg::OPTION_BAUD));
  auto* handshake = serial->add_option("--handshake", o->handshake, CliText(CliMsg::OPTION_HANDSHAKE));
  auto* include = serial->add_flag("--include", o->include, CliText(CliMsg::PORT_INCLUDE_FLAG));
  auto* exclude = serial->add_flag("--exclude", o->exclude, CliText(CliMsg::PORT_EXCLUDE_FLAG));
  include->excludes(exclude);
  serial->callback([&context, o, baud, handshake] {
    ScopeSession session(context);
    Cvn73100Scope& control = session.Control();
    Variant criteria = control.SearchCriteria();
    Variant::Array& list = criteria.AsArray();
    const auto slot = static_cast<std::size_t>(o->port - RS232_PORT::First);
    Variant::Array& settings = list[CRITERIA_RS232_SETTINGS].AsArray()[slot].AsArray();
    if (baud->count()) settings[SEARCH_CRITERIA::BAUD_RATE_INDEX] = Variant(o->baud);
    if (handshake->count()) settings[SEARCH_CRITERIA::HANDSHAKE_INDEX] = Variant(HandshakeValue(o->handshake));
    if (o->include || o->exclude) list[CRITERIA_RS232_INCLUDED].AsArray()[slot] = Variant(o->include);
    // The configuration checks the settings of every port as it takes them.
    std::string given = baud->count() ? "--baud " + std::to_string(o->baud) : "";
    if (handshake->count()) given += (given.empty() ? "--handshake " : " --handshake ") + o->handshake;
    NamingTheProperty("COM" + std::to_string(o->port), given, CliText(CliMsg::ALLOWED_BAUD),
                      [&] { control.SetSearchCriteria(criteria); });
    Saved(context, session);
  });
}

void RegisterGpib(CLI::App& config, CliContext& context) {
  struct Options {
    std::int32_t board = 0;
    std::string addresses;
    bool include = false;
    bool exclude = false;
  };
  auto o = std::make_shared<Options>();
  auto* gpib = config.add_subcommand("gpib", CliText(CliMsg::CONFIG_GPIB_COMMAND));
  gpib->add_option("BOARD", o->board, "0..3 (GPIB0..GPIB3)")
      ->required()
      ->transform([](std::string text) {
        if (text.size() > 4 && (text[0] == 'G' || text[0] == 'g')) text = text.substr(4);
        return text;
      })
      ->check(CLI::Range(GPIB_PORT::First, GPIB_PORT::Last));
  auto* addresses = gpib->add_option("--addresses", o->addresses, CliText(CliMsg::OPTION_ADDRESSES));
  auto* include = gpib->add_flag("--include", o->include, CliText(CliMsg::INTERFACE_INCLUDE_FLAG));
  auto* exclude = gpib->add_flag("--exclude", o->exclude, CliText(CliMsg::INTERFACE_EXCLUDE_FLAG));
  include->excludes(exclude);
  gpib->callback([&context, o, addresses] {
    ScopeSession session(context);
    Cvn73100Scope& control = session.Control();
    Variant criteria = control.SearchCriteria();
    Variant::Array& list = criteria.AsArray();
    const auto slot = static_cast<std::size_t>(o->board - GPIB_PORT::First);
    if (o->include || o->exclude) list[CRITERIA_GPIB_INCLUDED].AsArray()[slot] = Variant(o->include);
    if (addresses->count()) {
      const std::vector<bool> included = AddressList(o->addresses);
      Variant::Array& mask = list[CRITERIA_GPIB_MASK].AsArray()[slot].AsArray();
      for (std::size_t a = 0; a < mask.size() && a < included.size(); ++a) mask[a] = Variant(bool(included[a]));
    }
    control.SetSearchCriteria(criteria);
    Saved(context, session);
  });
}

void RegisterLog(CLI::App& app, CliContext& context) {
  struct Options {
    std::int32_t mode = 0;
    bool show = false;
    std::size_t lines = 40;
  };
  auto o = std::make_shared<Options>();
  auto* log = app.add_subcommand("log", CliText(CliMsg::LOG_COMMAND) + "\n" + CliText(CliMsg::LOG_MODE_BITS) + "\n" +
                                            CliText(CliMsg::LOG_FRESH));
  auto* mode = log->add_option("--mode", o->mode, CliText(CliMsg::OPTION_MODE))->check(CLI::Range(0, 15));
  log->add_flag("--show", o->show, CliText(CliMsg::OPTION_SHOW_LOG));
  log->add_option("--lines", o->lines, CliText(CliMsg::OPTION_LINES))->check(CLI::PositiveNumber);
  log->callback([&context, o, mode] {
    // Read before the control starts its own, fresh log over it.
    std::optional<std::string> previous;
    if (o->show) previous = LogTail(Os::Current().TempPath() + CDebug::LOG_FILE_NAME, o->lines);
    ScopeSession session(context);
    Cvn73100Scope& control = session.Control();
    if (mode->count()) control.SetSupportMessageMode(o->mode);
    const bool written = session.Finish();
    const std::int32_t current = control.SupportMessageMode();
    if (context.json) {
      json result = ModeJson(current);
      result["changed"] = written;
      if (o->show) result["previousLog"] = previous ? json(*previous) : json(nullptr);
      context.out << result.dump(-1, ' ', false, kReplaceInvalidUtf8) << "\n";
      return;
    }
    const int names[] = {CliMsg::MODE_MESSAGE_BOX, CliMsg::MODE_LOG_FILE, CliMsg::MODE_EVENT, CliMsg::MODE_ASSERT};
    std::string bits;
    for (int bit = 0; bit < 4; ++bit) {
      if ((current & (1 << bit)) != 0) bits += (bits.empty() ? "" : ", ") + CliText(names[bit]);
    }
    context.out << CliText(CliMsg::SUPPORT_MODE, {std::to_string(current), bits.empty() ? CliText(CliMsg::MODE_OFF) : bits})
                << "\n"
                << CliText(CliMsg::LOG_FILE_AT, {LogPath()})
                << ((current & CDebug::MODE_LOG) != 0 ? "" : " " + CliText(CliMsg::NOT_WRITTEN_IN_MODE)) << "\n";
    if (o->show) {
      if (!previous)
        context.out << CliText(CliMsg::NO_LOG_FILE) << "\n";
      else
        context.out << CliText(CliMsg::PREVIOUS_LOG) << "\n" << ConsoleHost::ToTerminal(*previous);
    }
  });
}

}  // namespace

void RegisterConfigCommands(CLI::App& app, CliContext& context) {
  auto* config = app.add_subcommand("config", CliText(CliMsg::CONFIG_COMMAND));
  config->require_subcommand(0, 1);
  RegisterShow(*config, context);
  RegisterSet(*config, context);
  RegisterSerial(*config, context);
  RegisterGpib(*config, context);
  config->callback([&context, config] {
    if (!config->get_subcommands().empty()) return;
    ScopeSession session(context);
    ShowConfig(context, session);
  });
  RegisterLog(app, context);
}

}  // namespace cvn73100
