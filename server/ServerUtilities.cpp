#include "server/ServerUtilities.h"

#include "platform/SupportedModels.h"
#include "server/BlockReader.h"
#include "server/ServerError.h"

namespace cvn73100::server {
namespace {

std::string Trim(const std::string& text) {
  const auto begin = text.find_first_not_of(" \t\r\n");
  if (begin == std::string::npos) return {};
  return text.substr(begin, text.find_last_not_of(" \t\r\n") - begin + 1);
}

}  // namespace

ServerUtilities::IdentityFields ServerUtilities::SplitIdentity(const std::string& reply) {
  IdentityFields fields;
  fields.reply = reply;
  std::string* slots[] = {&fields.manufacturer, &fields.model, &fields.serial, &fields.firmware};
  std::size_t start = 0;
  for (std::size_t i = 0; i < 4 && start <= reply.size(); ++i) {
    // The last field keeps whatever follows, commas included.
    const std::size_t comma = i == 3 ? std::string::npos : reply.find(',', start);
    const std::size_t end = comma == std::string::npos ? reply.size() : comma;
    *slots[i] = Trim(reply.substr(start, end - start));
    if (comma == std::string::npos) break;
    start = comma + 1;
  }
  return fields;
}

const ServerUtilities::IdentityFields& ServerUtilities::Identity() {
  if (!m_identity) m_identity = SplitIdentity(m_channel.Query("*IDN?"));
  return *m_identity;
}

void ServerUtilities::ResetInstrument() {
  m_channel.Write("*RST");
  (void)m_channel.Query("*OPC?");
}

bool ServerUtilities::CheckInstrumentID(std::int32_t, std::int32_t, std::int32_t) {
  const std::string& reply = Identity().reply;
  const std::size_t comma = reply.find(',');
  return comma != std::string::npos &&
         ClassifyModel(std::string_view(reply).substr(comma + 1)) == ModelMatch::Supported;
}

LearnString ServerUtilities::ReadStateData() {
  m_channel.RequireBinarySafeLine("learn strings");
  Bytes data = m_channel.QueryBlock(":SYSTem:SETup?", BlockReader::SETUP_CAP);
  if (data.empty()) return std::nullopt;
  return data;
}

void ServerUtilities::WriteStateData(const LearnString& learnString) {
  if (!learnString || learnString->empty()) throw ServerError(SERVERERR_BAD_ARGUMENT, "empty learn string");
  if (learnString->size() > BlockReader::SETUP_CAP) {
    throw ServerError(SERVERERR_BAD_ARGUMENT, "learn string of " + std::to_string(learnString->size()) + " bytes");
  }
  m_channel.RequireBinarySafeLine("learn strings");
  m_channel.WriteBlock(":SYSTem:SETup", *learnString);
}

std::string ServerUtilities::QueryInstrumentError() {
  const std::string reply = Trim(m_channel.Query(":SYSTem:ERRor?"));
  const std::size_t comma = reply.find(',');
  double code = 0;
  try {
    code = ScpiChannel::ParseReal(reply.substr(0, comma));
  } catch (const ScopeError&) {
    throw ServerError(SERVERERR_BAD_REPLY, "error queue reply \"" + reply.substr(0, 40) + "\"");
  }
  return code == 0 ? std::string() : reply;
}

}  // namespace cvn73100::server
