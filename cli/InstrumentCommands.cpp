#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>

#include "cli/AtomicFile.h"
#include "cli/Capture.h"
#include "cli/CliContext.h"
#include "cli/CliText.h"
#include "cli/JsonText.h"
#include "cli/OutputFile.h"
#include "cli/PngPlot.h"
#include "cli/ScopeSession.h"
#include "connection/CCvn73100EZ.h"
#include "control/Cvn73100Scope.h"

namespace cvn73100 {
namespace {

using nlohmann::json;

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

std::string Hex(const Bytes& bytes) {
  static const char* digits = "0123456789abcdef";
  std::string hex;
  hex.reserve(bytes.size() * 2);
  for (std::uint8_t b : bytes) {
    hex += digits[b >> 4];
    hex += digits[b & 15];
  }
  return hex;
}

std::string Absolute(const std::string& path) { return std::filesystem::absolute(path).lexically_normal().string(); }

std::vector<std::string> DrainErrors(Cvn73100Scope& control) {
  return control.Connection()->EZPtr().Utilities().DrainInstrumentErrors();
}

// Fails with what the instrument queued after `command`, so a refused command does not pass silently.
void CheckErrors(Cvn73100Scope& control, const std::string& command) {
  const std::vector<std::string> errors = DrainErrors(control);
  if (errors.empty()) return;
  std::string text;
  for (const std::string& error : errors) text += (text.empty() ? "" : "; ") + error;
  throw std::runtime_error(CliText(CliMsg::INSTRUMENT_REPORTED, {text, command}));
}

}  // namespace

WaveformCapture CaptureWaveform(Cvn73100Scope& control, std::int32_t channel, std::int32_t points) {
  Variant time;
  Variant volts;
  control.GetWaveformData(static_cast<Cvn73100_AnalogChannels>(channel), static_cast<Cvn73100_WaveformPoints>(points),
                          time, volts);
  WaveformCapture capture;
  capture.channel = channel;
  capture.seconds = time.AsDoubles();
  capture.volts = volts.AsDoubles();
  return capture;
}

std::string WaveformCsv(const WaveformCapture& capture) {
  std::string csv = "time,volts\n";
  const std::size_t n = std::min(capture.seconds.size(), capture.volts.size());
  // A sample without a value (the instrument's overrange arrives as NaN) is an empty field; one that is
  // infinite is "nan", so that no reader takes it for a number.
  const auto field = [](double value) -> std::string {
    if (std::isnan(value)) return "";
    if (!std::isfinite(value)) return "nan";
    char text[32];
    std::snprintf(text, sizeof text, "%.10g", value);
    return text;
  };
  for (std::size_t i = 0; i < n; ++i) csv += field(capture.seconds[i]) + "," + field(capture.volts[i]) + "\n";
  return csv;
}

bool ImageFormatOfName(const std::string& name, Cvn73100_ImageFormat& format) {
  std::string key = Lower(name);
  if (!key.empty() && key[0] == '.') key.erase(0, 1);
  if (key == "bmp") format = Cvn73100_ImageFormat_BMP;
  else if (key == "gif") format = Cvn73100_ImageFormat_GIF;
  else if (key == "tif" || key == "tiff") format = Cvn73100_ImageFormat_TIF;
  else if (key == "jpg" || key == "jpeg") format = Cvn73100_ImageFormat_JPG;
  else return false;
  return true;
}

std::string ImageExtension(Cvn73100_ImageFormat format) {
  switch (format) {
    case Cvn73100_ImageFormat_GIF: return "gif";
    case Cvn73100_ImageFormat_TIF: return "tif";
    case Cvn73100_ImageFormat_JPG: return "jpg";
    default: return "bmp";
  }
}

namespace {

// A reply that a terminal would take for control sequences: a definite-length block, or control bytes.
bool LooksBinary(const std::string& reply) {
  if (reply.size() > 1 && reply[0] == '#' && reply[1] >= '0' && reply[1] <= '9') return true;
  return std::any_of(reply.begin(), reply.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return (byte < 0x20 && byte != '\t' && byte != '\r' && byte != '\n') || byte == 0x7F;
  });
}

// The image format of a screenshot: --format, else the file's extension, else BMP. A file whose extension names
// another image format, or (without --format) none the instrument offers, is refused rather than written under a
// false name.
Cvn73100_ImageFormat ScreenshotFormat(const std::string& file, const std::string& formatOption) {
  Cvn73100_ImageFormat chosen = Cvn73100_ImageFormat_BMP;
  const bool given = !formatOption.empty() && ImageFormatOfName(formatOption, chosen);
  const std::string extension = IsStandardStream(file) ? "" : std::filesystem::path(file).extension().string();
  if (extension.empty()) return chosen;
  Cvn73100_ImageFormat named = chosen;
  const bool known = ImageFormatOfName(extension, named);
  if (!given && !known) {
    throw CLI::ValidationError("FILE", CliText(CliMsg::NOT_AN_IMAGE_FORMAT, {file, extension}));
  }
  if (given && known && named != chosen) {
    throw CLI::ValidationError("--format", CliText(CliMsg::FORMAT_MISMATCH, {file, ImageExtension(chosen), extension}));
  }
  return known ? named : chosen;
}

}  // namespace

void RegisterInstrumentCommands(CLI::App& app, CliContext& context) {
  // --- idn ---
  auto* idn = app.add_subcommand("idn", CliText(CliMsg::IDN_COMMAND));
  idn->callback([&context] {
    ScopeSession session(context);
    Cvn73100Scope& control = session.Control();
    session.Connect();
    const std::string identity = control.Connection()->IDNQuery();
    if (context.json)
      context.out << json{{"address", control.Address()}, {"identity", identity}}.dump(-1, ' ', false, kReplaceInvalidUtf8) << "\n";
    else
      context.out << Reply(context, identity) << "\n";
    session.Finish();
  });

  // --- errors ---
  auto* errors = app.add_subcommand("errors", CliText(CliMsg::ERRORS_COMMAND));
  errors->callback([&context] {
    ScopeSession session(context);
    session.Connect();
    const std::vector<std::string> entries = DrainErrors(session.Control());
    if (context.json) {
      context.out << json{{"errors", entries}}.dump(-1, ' ', false, kReplaceInvalidUtf8) << "\n";
    } else {
      for (const std::string& entry : entries) context.out << Reply(context, entry) << "\n";
      if (entries.empty()) context.out << "0,\"No error\"\n";
    }
    session.Finish();
  });

  // --- write ---
  auto command = std::make_shared<std::string>();
  auto noCheck = std::make_shared<bool>(false);
  const std::string noCheckHelp = CliText(CliMsg::NO_CHECK_FLAG);
  auto* write = app.add_subcommand("write", CliText(CliMsg::WRITE_COMMAND));
  write->add_option("COMMAND", *command, CliText(CliMsg::EXAMPLE, {"\":CHANnel1:RANGe 4\""}))->required();
  write->add_flag("--no-check", *noCheck, noCheckHelp);
  write->callback([&context, command, noCheck] {
    ScopeSession session(context);
    session.Connect();
    session.Control().Output(Variant(*command));
    if (!*noCheck) CheckErrors(session.Control(), *command);
    if (context.json) context.out << json{{"written", *command}}.dump(-1, ' ', false, kReplaceInvalidUtf8) << "\n";
    session.Finish();
  });

  // --- query ---
  struct QueryOptions {
    std::string command;
    bool block = false;
    bool noCheck = false;
    std::string output;
  };
  auto queryOptions = std::make_shared<QueryOptions>();
  auto* query = app.add_subcommand("query", CliText(CliMsg::QUERY_COMMAND));
  query->add_option("COMMAND", queryOptions->command, CliText(CliMsg::EXAMPLE, {"\":CHANnel1:RANGe?\""}))->required();
  query->add_flag("--block", queryOptions->block, CliText(CliMsg::BLOCK_FLAG));
  query->add_option("-o,--output", queryOptions->output, CliText(CliMsg::QUERY_OUTPUT_OPTION));
  query->add_flag("--no-check", queryOptions->noCheck, noCheckHelp);
  query->callback([&context, queryOptions] {
    const std::string& output = queryOptions->output;
    PrepareOutputFolder(context, output, CliText(CliMsg::WHAT_REPLY_FILE));
    ScopeSession session(context);
    Cvn73100Scope& control = session.Control();
    session.Connect();
    control.Output(Variant(queryOptions->command));
    Variant reply;
    try {
      control.Enter(reply, queryOptions->block ? Variant("B") : Variant());
    } catch (const std::exception&) {
      // A refused query sends nothing; what the instrument queued says why.
      if (!queryOptions->noCheck) CheckErrors(control, queryOptions->command);
      throw;
    }
    if (!queryOptions->noCheck) CheckErrors(control, queryOptions->command);
    const bool block = reply.GetType() == Variant::Type::ByteArray;
    const std::string data = block ? std::string(reply.AsBytes().begin(), reply.AsBytes().end()) : reply.AsString();
    if (!output.empty()) {
      WriteOutput(context, output, data, CliText(CliMsg::WHAT_REPLY_FILE));
      if (IsStandardStream(output)) {
        // The bytes alone on standard output.
      } else if (context.json) {
        context.out << json{{"query", queryOptions->command}, {"bytes", data.size()}, {"file", Absolute(output)}}
                           .dump(-1, ' ', false, kReplaceInvalidUtf8)
                    << "\n";
      } else {
        context.out << CliText(CliMsg::BYTES_WRITTEN_TO, {std::to_string(data.size()), Absolute(output)}) << "\n";
      }
    } else if (block) {
      if (context.json)
        context.out << json{{"query", queryOptions->command}, {"bytes", data.size()}, {"hex", Hex(reply.AsBytes())}}
                           .dump(-1, ' ', false, kReplaceInvalidUtf8)
                    << "\n";
      else
        context.out << Hex(reply.AsBytes()) << "\n";
    } else if (context.json) {
      context.out << json{{"query", queryOptions->command}, {"reply", data}}.dump(-1, ' ', false, kReplaceInvalidUtf8)
                  << "\n";
    } else {
      if (context.outIsTerminal && LooksBinary(data)) {
        throw ScopeError(ERR_INVALID_PROCEDURE_CALL, CLI_SOURCE,
                         CliText(CliMsg::REPLY_IS_BINARY, {std::to_string(data.size())}));
      }
      context.out << Reply(context, data) << "\n";
    }
    session.Finish();
  });

  // --- waveform ---
  struct WaveformOptions {
    std::int32_t channel = 1;
    std::int32_t points = 1000;
    std::string output;
    std::string plot;
  };
  auto waveformOptions = std::make_shared<WaveformOptions>();
  auto* waveform = app.add_subcommand("waveform", CliText(CliMsg::WAVEFORM_COMMAND));
  waveform->add_option("--channel,-c", waveformOptions->channel, CliText(CliMsg::CHANNEL_OPTION))
      ->check(CLI::Range(1, 4))
      ->capture_default_str();
  waveform->add_option("--points,-p", waveformOptions->points, CliText(CliMsg::POINTS_OPTION))
      ->check(CLI::IsMember({0, 100, 250, 500, 1000, 2000}))
      ->capture_default_str();
  waveform->add_option("-o,--output", waveformOptions->output, CliText(CliMsg::CSV_OUTPUT_OPTION));
  waveform->add_option("--plot", waveformOptions->plot, CliText(CliMsg::PLOT_OPTION));
  waveform->callback([&context, waveformOptions] {
    if (IsStandardStream(waveformOptions->output) && IsStandardStream(waveformOptions->plot)) {
      throw CLI::ValidationError("--output, --plot", CliText(CliMsg::ONLY_ONE_TO_STDOUT));
    }
    PrepareOutputFolder(context, waveformOptions->output, CliText(CliMsg::WHAT_CSV_FILE));
    PrepareOutputFolder(context, waveformOptions->plot, CliText(CliMsg::WHAT_PLOT));
    ScopeSession session(context);
    Cvn73100Scope& control = session.Control();
    session.Connect();
    const WaveformCapture capture = CaptureWaveform(control, waveformOptions->channel, waveformOptions->points);
    const std::string csv = WaveformCsv(capture);
    if (!waveformOptions->output.empty()) WriteOutput(context, waveformOptions->output, csv, CliText(CliMsg::WHAT_CSV_FILE));
    if (!waveformOptions->plot.empty()) {
      const std::string title =
          "CH" + std::to_string(capture.channel) + "  " + std::to_string(capture.seconds.size()) + " POINTS";
      WriteOutput(context, waveformOptions->plot, PngPlot(capture.seconds, capture.volts, title).Encode(),
                  CliText(CliMsg::WHAT_PLOT));
    }
    const bool toStdout = waveformOptions->output.empty() && waveformOptions->plot.empty();
    if (IsStandardStream(waveformOptions->output) || IsStandardStream(waveformOptions->plot)) {
      // Standard output carries the file alone.
    } else if (context.json) {
      json result{{"address", control.Address()}, {"channel", capture.channel}, {"points", capture.seconds.size()}};
      if (!waveformOptions->output.empty()) result["csv"] = Absolute(waveformOptions->output);
      if (!waveformOptions->plot.empty()) result["plot"] = Absolute(waveformOptions->plot);
      if (toStdout) {
        result["time"] = capture.seconds;
        result["volts"] = capture.volts;
      }
      context.out << result.dump(-1, ' ', false, kReplaceInvalidUtf8) << "\n";
    } else if (toStdout) {
      context.out << csv;
    } else {
      if (!waveformOptions->output.empty())
        context.out << CliText(CliMsg::POINTS_WRITTEN_TO, {std::to_string(capture.seconds.size()),
                                                           std::to_string(capture.channel), Absolute(waveformOptions->output)})
                    << "\n";
      if (!waveformOptions->plot.empty())
        context.out << CliText(CliMsg::FIELD_PLOT) << ": " << Absolute(waveformOptions->plot) << "\n";
    }
    session.Finish();
  });

  // --- screenshot ---
  struct ScreenshotOptions {
    std::string file;
    std::string format;
  };
  auto screenshotOptions = std::make_shared<ScreenshotOptions>();
  auto* screenshot = app.add_subcommand("screenshot", CliText(CliMsg::SCREENSHOT_COMMAND));
  screenshot->add_option("FILE", screenshotOptions->file, CliText(CliMsg::IMAGE_FILE_ARGUMENT))->required();
  screenshot->add_option("--format,-f", screenshotOptions->format, CliText(CliMsg::FORMAT_OPTION))
      ->check(CLI::IsMember({"bmp", "gif", "tif", "tiff", "jpg", "jpeg"}, CLI::ignore_case));
  screenshot->callback([&context, screenshotOptions] {
    const std::string& file = screenshotOptions->file;
    const Cvn73100_ImageFormat format = ScreenshotFormat(file, screenshotOptions->format);
    PrepareOutputFolder(context, file, CliText(CliMsg::WHAT_SCREEN_IMAGE));
    ScopeSession session(context);
    Cvn73100Scope& control = session.Control();
    session.Connect();
    if (IsStandardStream(file)) {
      const Picture picture = control.GetScreenImage(format);
      WriteOutput(context, file, std::string(picture.data.begin(), picture.data.end()),
                  CliText(CliMsg::WHAT_SCREEN_IMAGE));
      session.Finish();
      return;
    }
    control.SaveScreenImage(file, format);
    std::error_code ec;
    const auto size = std::filesystem::file_size(file, ec);
    const std::string path = Absolute(file);
    if (context.json)
      context.out << json{{"file", path}, {"format", ImageExtension(format)}, {"bytes", ec ? 0 : size}}.dump(-1, ' ', false, kReplaceInvalidUtf8) << "\n";
    else
      context.out << CliText(CliMsg::SCREEN_IMAGE_WRITTEN,
                             {ImageExtension(format), std::to_string(ec ? 0 : size), path})
                  << "\n";
    session.Finish();
  });
}

}  // namespace cvn73100
