#pragma once
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/AutomationServer.h"
#include "server/ScpiChannel.h"

namespace cvn73100::server {

// The server's Utilities: the instrument's identity, reset, the identity check, learn strings and the
// instrument's error queue.
class ServerUtilities : public IUtilities {
 public:
  explicit ServerUtilities(ScpiChannel& channel) : m_channel(channel) {}

  // The four fields come from one "*IDN?" reply, asked once per connection.
  std::string Manufacturer() override { return Identity().manufacturer; }
  std::string Model() override { return Identity().model; }
  std::string SerialNumber() override { return Identity().serial; }
  std::string FirmwareVersion() override { return Identity().firmware; }
  // "*RST", then waits for the instrument to finish it ("*OPC?").
  void ResetInstrument() override;
  // True when the identity names a supported model (the model field matched by prefix).
  bool CheckInstrumentID(std::int32_t reserved1 = 0, std::int32_t reserved2 = 0, std::int32_t reserved3 = 0) override;
  std::shared_ptr<IInstrumentIO> IOChannel() override { return m_channel.Shared(); }
  // ":SYSTem:SETup?"; a zero-length block is Empty.
  LearnString ReadStateData() override;
  // ":SYSTem:SETup <block>"; raises SERVERERR_BAD_ARGUMENT for Empty or one beyond the set-up cap.
  void WriteStateData(const LearnString& learnString) override;
  std::string InstrumentModel() override { return Identity().model; }
  std::string InstrumentFirmwareVersion() override { return Identity().firmware; }
  std::string QueryInstrumentError() override;
  std::vector<std::string> DrainInstrumentErrors() override { return m_channel.DrainErrors(); }

  // Drops the remembered identity (the connection changed).
  void Forget() { m_identity.reset(); }

  struct IdentityFields {
    std::string reply;  // as received
    std::string manufacturer, model, serial, firmware;
  };
  // Splits a reply at its first three commas; fields it lacks are empty.
  static IdentityFields SplitIdentity(const std::string& reply);

 private:
  const IdentityFields& Identity();

  ScpiChannel& m_channel;
  std::optional<IdentityFields> m_identity;
};

}  // namespace cvn73100::server
