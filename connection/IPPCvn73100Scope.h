#pragma once
#include <cstdint>
#include <memory>
#include <string>

#include "platform/InstrumentIO.h"

namespace cvn73100 {

class CCvn73100EZ;
class CIOconfiguration;
class SetupsCvn73100Scope;

// What the control's property pages see of the control: flags that belong to the control, which
// sibling pages exist, the shared I/O configuration, the screen centre for placing the property
// frame, and the few public members the pages read. The control implements it beside its public
// interface; the pages, below the control, know it only through this.
//
// Every Set of a Boolean or String member except SetCenterPropertyPages does nothing for an equal
// value; otherwise it stores the value and tells the host that "IPPCvn73100Scope_" + the member's
// name changed, so that open pages refresh.
class IPPCvn73100Scope : public IIOManagerSource {
 public:
  virtual ~IPPCvn73100Scope() = default;

  // A page changed the control's I/O configuration: the control marks "Address" and "SearchCriteria"
  // changed and gives the connection the new active address.
  virtual void IOConfigurationChanged() = 0;
  // The control's own I/O configuration (shared, not a copy).
  virtual std::shared_ptr<CIOconfiguration> IOConfigurationControl() const = 0;
  // A fresh copy of the control's I/O configuration for a page to edit and hand back with Copy.
  virtual std::shared_ptr<CIOconfiguration> IOConfigurationPropertyPage() const = 0;
  // Non-zero while some page wants to hear of I/O configuration changes: IOConfigurationChanged then
  // also announces "IPPCvn73100Scope_IOConfigurationChanged". Setting another value is announced.
  virtual std::int32_t NotifyIOConfigurationChanged() const = 0;
  virtual void SetNotifyIOConfigurationChanged(std::int32_t value) = 0;

  // The user chose not to see the RS-232 handshake warning again.
  virtual bool DontShowIOHandshakeWarning() const = 0;
  virtual void SetDontShowIOHandshakeWarning(bool value) = 0;
  // Each page announces itself, so that pages refer the user only to siblings that exist.
  virtual bool SearchIOExists() const = 0;
  virtual void SetSearchIOExists(bool value) = 0;
  virtual bool SearchCriteriaExists() const = 0;
  virtual void SetSearchCriteriaExists(bool value) = 0;
  virtual bool SetIOExists() const = 0;
  virtual void SetSetIOExists(bool value) = 0;
  virtual bool SetupsExists() const = 0;
  virtual void SetSetupsExists(bool value) = 0;

  // Half the screen's width and height, in pixels.
  virtual std::int32_t ScreenCenterWidthInPixels() const = 0;
  virtual std::int32_t ScreenCenterHeightInPixels() const = 0;

  // Whether pages centre their frame on the screen; True at first; set without a notice.
  virtual bool CenterPropertyPages() const = 0;
  virtual void SetCenterPropertyPages(bool value) = 0;
  // The address whose handshake was last settled (compared exactly).
  virtual const std::string& LastIOHandshakeAddress() const = 0;
  virtual void SetLastIOHandshakeAddress(const std::string& value) = 0;
  // Serial ports may use DTR/DSR handshaking only (kept in the I/O configuration).
  virtual bool DTROnly() const = 0;
  virtual void SetDTROnly(bool value) = 0;
  // The Search Instruments page starts a search on its own when first shown.
  virtual bool InitialSearchMode() const = 0;
  virtual void SetInitialSearchMode(bool value) = 0;

  // Members of the control's public interface (see Cvn73100Scope) that the pages use, besides IOManager.
  virtual const std::string& Address() const = 0;
  virtual const std::string& AddressInstrumentID() const = 0;
  virtual void SetAddressInstrumentID(const std::string& value) = 0;
  virtual std::int32_t TXDelay() const = 0;
  virtual const std::string& FontName() const = 0;
  virtual std::int16_t FontSize() const = 0;
  virtual std::shared_ptr<CCvn73100EZ> Connection() const = 0;
  virtual std::shared_ptr<SetupsCvn73100Scope> Setups() const = 0;
};

}  // namespace cvn73100
