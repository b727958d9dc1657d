#pragma once
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "iolib/MessageIO.h"
#include "iolib/Vxi11Link.h"

namespace cvn73100::io {

// One GPIB address behind a VXI-11 LAN gateway, or a LAN instrument's own VXI-11 device (IOType "GPIB").
// The link is made at open and kept until Close. A gateway that cannot be reached fails the open; one that has no
// device at the address refuses the link, and then every write and read raises IOERR_NO_LISTENER at once (asking
// the gateway again each time) instead of waiting out a timeout, while Clear has nothing to clear.
// Enter reads with the termination character LF set, ReadBytes without; both stop at END. A read that times out
// ends with a device clear, so the rest of that reply never comes.
class Vxi11IO : public MessageIO {
 public:
  using Connector = std::function<std::unique_ptr<Vxi11Link>()>;
  // `connect` makes the link (it raises as Vxi11Link's constructor does).
  Vxi11IO(std::string resourceName, Connector connect);
  ~Vxi11IO() override;

  std::string IOType() const override { return "GPIB"; }
  // The device's status byte (a serial poll behind a gateway), within Timeout.
  std::uint8_t ReadStatusByte();

 protected:
  void DoWrite(const std::uint8_t* data, std::size_t size, bool end, const Deadline& deadline) override;
  std::size_t DoRead(std::uint8_t* buffer, std::size_t max, ReadKind kind, const Deadline& deadline,
                     bool& end) override;
  void DoClear(const Deadline& deadline) override;
  void DoDropInput() override;
  void AfterReadTimeout(bool partial) override;
  void DoClose() noexcept override;

 private:
  // The link, made now if the gateway refused it before; raises IOERR_NO_LISTENER while it still does.
  Vxi11Link& Link();
  // Makes the link; false (the refusal kept) when the gateway has no such device.
  bool TryConnect();

  Connector m_connect;
  std::unique_ptr<Vxi11Link> m_link;
  std::optional<ScopeError> m_refusal;  // the gateway's last "no such device"
};

}  // namespace cvn73100::io
