#include "connection/CQueryInstrument.h"

#include <algorithm>
#include <cctype>
#include <exception>
#include <string_view>

#include "diagnostics/CDebug.h"
#include "dialogs/Messages.h"
#include "ioconfig/CIOconfiguration.h"
#include "platform/Interrupt.h"
#include "platform/Os.h"
#include "platform/SupportedModels.h"

namespace cvn73100 {
namespace {

constexpr const char* CLASS_NAME = "CQueryInstrument";
constexpr const char* NL = "\r\n";
constexpr const char* IND = "    ";
constexpr const char* SERIAL_IO_TYPE = "ASRL";
constexpr const char* IDN_QUERY = "*IDN?";
constexpr const char* GPIB_WORD = "GPIB";
constexpr std::size_t RS232_PORT_NAME_LENGTH = 4;  // "COM" and one digit
// FlushRXBuffer gives up after this many bytes, so a device that never stops talking cannot hold the thread.
constexpr int FLUSH_BYTE_LIMIT = 65536;

bool StartsWithNoCase(const std::string& text, const std::string& prefix) {
  return text.size() >= prefix.size() && std::equal(prefix.begin(), prefix.end(), text.begin(), [](char a, char b) {
           return std::toupper(static_cast<unsigned char>(a)) == std::toupper(static_cast<unsigned char>(b));
         });
}

std::string Msg(int number) { return Messages::Load(number); }

void AssertFalse(const char* procedure, const char* location) {
  CDebug::Instance().Assert(false, "false", CLASS_NAME, procedure, location);
}

// Closing is part of giving the channel up; a channel that already failed may refuse it.
void CloseQuietly(IInstrumentIO& instrument) {
  try {
    instrument.Port().Close();
  } catch (const std::exception&) {
  }
}

}  // namespace

CQueryInstrument::CQueryInstrument() = default;
CQueryInstrument::~CQueryInstrument() = default;

static_assert(CQueryInstrument::SUPPORTED_MODEL_COUNT == SUPPORTED_MODELS.size());
static_assert(std::ranges::none_of(SUPPORTED_MODELS, [](std::string_view model) { return model.empty(); }),
              "an empty entry would match every model of the family");

const std::array<std::string, CQueryInstrument::SUPPORTED_MODEL_COUNT>& CQueryInstrument::SupportedModels() {
  static const std::array<std::string, SUPPORTED_MODEL_COUNT> models = [] {
    std::array<std::string, SUPPORTED_MODEL_COUNT> copy;
    std::ranges::copy(SUPPORTED_MODELS, copy.begin());
    return copy;
  }();
  return models;
}

void CQueryInstrument::Initialize(std::int32_t txDelay, std::shared_ptr<CIOconfiguration> ioConfiguration,
                                  std::shared_ptr<IIOManager> ioManager) {
  m_lTXDelay = txDelay;
  m_cioconfiguration = std::move(ioConfiguration);
  m_iomanager = std::move(ioManager);
}

CIOconfiguration& CQueryInstrument::Configuration(const char* procedure) const {
  CDebug::Instance().Assert(m_cioconfiguration != nullptr, "(Not (m_cioconfiguration Is Nothing))", CLASS_NAME,
                            procedure, "");
  if (!m_cioconfiguration) throw InvalidPropertyValue();
  return *m_cioconfiguration;
}

std::int16_t CQueryInstrument::ModelCompatibility(const std::string& model) {
  return static_cast<std::int16_t>(ClassifyModel(model));
}

std::int16_t CQueryInstrument::IsValidInstrument(const std::string& reply) {
  const std::size_t comma = reply.find(',');
  if (comma != std::string::npos) return ModelCompatibility(reply.substr(comma + 1));
  return reply.empty() ? IDNNoResponse : IDNNotIEEE4882;
}

std::string CQueryInstrument::AppendAddressAt(const std::string& message, const std::string& address) {
  std::string shown = address;
  if (!StartsWithNoCase(address, GPIB_WORD)) {
    const std::size_t separator = address.find("::");
    if (separator != std::string::npos) shown = address.substr(0, separator);
  }
  return message + NL + NL + Msg(228) + NL + NL + IND + shown;
}

void CQueryInstrument::Wait(std::int32_t milliseconds) {
  Os& os = Os::Current();
  const std::int32_t start = os.GetTickCount();
  // Widened so that a start near the top of the range cannot overflow: such a wait then ends in the
  // wrap-around error, as the 32-bit counter can never exceed the end.
  const std::int64_t end = static_cast<std::int64_t>(start) + milliseconds;
  for (;;) {
    const std::int32_t now = os.GetTickCount();
    if (now > end) return;
    if (now < start) {
      AssertFalse("Wait", "ElseIf");
      throw InvalidPropertyValue();
    }
    // Wake on the tick that ends the wait, or on the wrap of the counter when that comes first.
    const std::int64_t wake = std::min<std::int64_t>(end + 1, std::int64_t{INT32_MAX} + 1);
    os.SleepUntilTick(static_cast<std::int32_t>(static_cast<std::uint32_t>(wake)));
  }
}

void CQueryInstrument::DropHandshake(IInstrumentIO& instrument, std::int32_t delayMs, bool restore) {
  CDebug::Instance().Assert(instrument.IOType() == SERIAL_IO_TYPE, "(iioInstrument.IOType = 'ASRL')", CLASS_NAME,
                            "DropHandshake", "");
  ISerialIO* serial = instrument.Serial();
  if (!serial) throw IOError(IOERR_UNSUPPORTED, "the channel has no handshake lines");

  Wait(SETTLE_MS);
  const std::int16_t savedHandshake = serial->Handshake();
  serial->SetHandshake(RS232_HandShake_None);
  serial->SetDTRState(false);
  serial->SetRTSState(false);
  if (delayMs > 0) Wait(delayMs);
  if (restore) {
    serial->SetDTRState(true);
    serial->SetRTSState(true);
    serial->SetHandshake(savedHandshake);
  }
}

void CQueryInstrument::FlushRXBuffer(IInstrumentIO& instrument) {
  const std::int32_t savedTimeout = instrument.Timeout();
  instrument.SetTimeout(FLUSH_TIMEOUT_MS);
  Bytes buffer;
  try {
    for (int i = 0; i < FLUSH_BYTE_LIMIT; ++i) instrument.ReadBytes(1, buffer);
  } catch (const ScopeError&) {
    // The read that fails is the one that found the buffer empty.
  }
  instrument.SetTimeout(savedTimeout);
}

std::int16_t CQueryInstrument::RS232IDNQuery(const std::string& address, std::string& reply) {
  CIOconfiguration& configuration = Configuration("RS232IDNQuery");
  if (configuration.IsStringGPIB(address)) {
    reply.clear();
    return IDNWrongPortType;
  }

  // Keywords after the port name are the automation server's business; the query uses the port's
  // configured settings.
  const std::shared_ptr<IInstrumentIO> instrument = OpenChannel(address.substr(0, RS232_PORT_NAME_LENGTH));
  if (!instrument) {
    reply.clear();
    return IDNPortNotFound;
  }

  ISerialIO* serial = nullptr;
  std::int16_t configuredHandshake = RS232_HandShake_XON_XOFF;
  try {
    DropHandshake(*instrument, m_lTXDelay, true);
    CDebug::Instance().Assert(instrument->IOType() == SERIAL_IO_TYPE, "(iioInstrument.IOType = 'ASRL')", CLASS_NAME,
                              "RS232IDNQuery", "");
    serial = instrument->Serial();
    if (!serial) throw IOError(IOERR_UNSUPPORTED, "the channel has no serial settings");
    const auto portIndex = configuration.RS232PortIndex(address);
    serial->SetBaudRate(static_cast<std::int32_t>(configuration.BaudRate(portIndex)));
    configuredHandshake = static_cast<std::int16_t>(configuration.Handshake(portIndex));
    CDebug::Instance().Assert(
        configuredHandshake == RS232_HandShake_DTR_DSR || configuredHandshake == RS232_HandShake_XON_XOFF,
        "(m_cioconfiguration.Handshake(iPortIndex) = CorvaneIOUtilsLib.RS232_HandShake_DTR_DSR Or "
        "m_cioconfiguration.Handshake(iPortIndex) = CorvaneIOUtilsLib.RS232_HandShake_XON_XOFF)",
        CLASS_NAME, "RS232IDNQuery", "");
    serial->SetDataBits(8);
    serial->SetStopBits(1);
    instrument->SetTimeout(REPLY_TIMEOUT_MS);
    instrument->Clear();
  } catch (...) {
    // The caller sees the failure, but the port is not left open behind it.
    CloseQuietly(*instrument);
    throw;
  }

  try {
    // A bare line end (written without flow control) ends whatever half command the instrument holds.
    serial->SetHandshake(RS232_HandShake_None);
    const std::int16_t savedTermination = instrument->OutputTermination();
    instrument->SetOutputTermination(0);
    instrument->Output("\r\n");
    instrument->SetOutputTermination(savedTermination);
    serial->SetHandshake(configuredHandshake);
    serial = nullptr;

    Wait(m_lTXDelay);
    // Anything that arrived since the channel was cleared answers an earlier query, not this one.
    instrument->Clear();
    instrument->Output(IDN_QUERY);
    Wait(m_lTXDelay);
    reply.clear();
    instrument->Enter(reply, "K");

    DropHandshake(*instrument, m_lTXDelay, true);
    instrument->Port().Close();
  } catch (const Interrupted&) {
    CloseQuietly(*instrument);
    throw;
  } catch (const std::exception&) {
    reply.clear();
    // Best effort: the lines are restored and the port closed even when the device has gone.
    try {
      DropHandshake(*instrument, m_lTXDelay, true);
    } catch (const std::exception&) {
    }
    CloseQuietly(*instrument);
    return IDNNoResponse;
  } catch (...) {
    CloseQuietly(*instrument);
    throw;
  }
  if (reply.empty()) return IDNNoResponse;
  return IsValidInstrument(reply);
}

std::int16_t CQueryInstrument::GPIBIDNQuery(const std::string& address, std::string& reply) {
  CIOconfiguration& configuration = Configuration("GPIBIDNQuery");
  if (!configuration.IsStringGPIB(address)) {
    reply.clear();
    return IDNWrongPortType;
  }

  const std::shared_ptr<IInstrumentIO> instrument = OpenChannel(address);
  if (!instrument) {
    reply.clear();
    return IDNPortNotFound;
  }

  // The device clear also discards a reply the device still owes an earlier query.
  instrument->SetTimeout(REPLY_TIMEOUT_MS);
  instrument->Clear();

  try {
    instrument->Output(IDN_QUERY);
    Wait(m_lTXDelay);
    reply.clear();
    instrument->Enter(reply, "K");
  } catch (const Interrupted&) {
    CloseQuietly(*instrument);
    throw;
  } catch (const std::exception&) {
    CloseQuietly(*instrument);
    reply.clear();
    return IDNNoResponse;
  }
  // The channel is released here without Close; dropping the last reference gives the device up.
  return IsValidInstrument(reply);
}

std::shared_ptr<IInstrumentIO> CQueryInstrument::OpenChannel(const std::string& name) {
  m_strCause.clear();
  if (!m_iomanager) return nullptr;
  try {
    return m_iomanager->Open(name);
  } catch (const Interrupted&) {
    throw;
  } catch (const std::exception& error) {
    m_strCause = error.what();
  }
  return nullptr;
}

std::string CQueryInstrument::WhyNotOpened(const std::string& name) {
  OpenChannel(name);
  return m_strCause;
}

std::string CQueryInstrument::CautionBlock() const {
  if (Messages::LanguageBase() == Messages::ENGLISH) {
    return std::string(IND) + Msg(282) + NL + NL + IND + Msg(283) + NL + NL + IND + Msg(284) + NL + IND + Msg(285) +
           NL + IND + Msg(286) + NL + NL + IND + Msg(287) + NL + IND + Msg(288);
  }
  return std::string(IND) + Msg(711) + NL + NL + IND + Msg(712) + NL + NL + IND + Msg(713);
}

std::string CQueryInstrument::TestMessage(std::int16_t code, const std::string& address,
                                          const std::string& reply) const {
  CIOconfiguration& configuration = Configuration("Test");
  const bool isGPIB = configuration.IsStringGPIB(address);
  const std::string response = Msg(227) + NL + NL + IND + reply;
  std::string text;
  switch (code) {
    case IDNSupported: {
      const bool handshakeWrong =
          !isGPIB && configuration.Handshake(configuration.RS232PortIndex(address)) != RS232_HandShake_DTR_DSR;
      text = Msg(226) + NL + NL;
      if (handshakeWrong) text += CautionBlock() + NL + NL;
      text += response;
      return AppendAddressAt(text, address);
    }
    case IDNUnsupportedModel:
      return AppendAddressAt(Msg(225) + NL + NL + response, address);
    case IDNNotFamily:
      return AppendAddressAt(Msg(223) + NL + Msg(224) + NL + NL + response, address);
    case IDNNotIEEE4882:
      return AppendAddressAt(Msg(222) + NL + Msg(224) + NL + NL + response, address);
    case IDNNoResponse:
      text = AppendAddressAt(Msg(530), address) + NL + NL + NL + Msg(531) + NL + NL + Msg(532);
      if (!isGPIB) text += NL + Msg(533);
      text += std::string(NL) + NL;
      if (isGPIB) {
        text += Msg(538) + NL + Msg(539) + NL + Msg(540);
      } else {
        text += Msg(535) + NL + Msg(536) + NL + Msg(537);
      }
      return text;
    case IDNPortNotFound:
      return AppendAddressAt(Msg(221), address);
    default:
      AssertFalse("Test", "Case Else");
      throw ScopeError(ObjectError(ERR_INVALID_PROPERTY_VALUE), Msg(104),
                       AppendAddressAt(Msg(isGPIB ? 110 : 109), address));
  }
}

std::int16_t CQueryInstrument::Test(WindowHandle owner, const std::string& address, std::string& reply) {
  const std::string title = Msg(220);
  const std::int16_t code =
      Configuration("Test").IsStringGPIB(address) ? GPIBIDNQuery(address, reply) : RS232IDNQuery(address, reply);
  std::string text = TestMessage(code, address, reply);
  if (code == IDNPortNotFound && !m_strCause.empty()) text += std::string(NL) + NL + m_strCause;
  Host::Current().MsgBox(owner, text, TEST_BOX_STYLE, title);
  return code;
}

}  // namespace cvn73100
