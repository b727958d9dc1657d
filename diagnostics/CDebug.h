#pragma once
#include <cstdint>
#include <memory>
#include <string>

#include "platform/Event.h"
#include "platform/PropertyBag.h"

namespace cvn73100 {

// The support-message facility: assertions, messages and traces, delivered as an event, a message
// box and a log file, each only when a support engineer has switched it on.
class CDebug {
 public:
  // Mode bits.
  static constexpr std::int32_t MODE_MESSAGE_BOX = 1;
  static constexpr std::int32_t MODE_LOG = 2;
  static constexpr std::int32_t MODE_EVENT = 4;
  static constexpr std::int32_t MODE_ASSERT = 8;
  static constexpr std::int32_t ASSERTION_CODE = -2147221453;  // object-error base + 51
  static constexpr const char* LOG_FILE_NAME = "CvnScope.DBG";
  static constexpr const char* MESSAGE_BOX_TITLE = "Remote Support Assistant";

  // Reports a broken invariant (when `condition` is false) and lets the caller go on.
  void Assert(bool condition, const std::string& expression, const std::string& className, const std::string& procedure,
              const std::string& location);
  void Message(std::int32_t code, const std::string& text, const std::string& className, const std::string& procedure,
               const std::string& location);
  void Trace(const std::string& text, const std::string& className, const std::string& procedure,
             const std::string& location);

  std::int32_t Mode() const { return CalculateMode(); }
  // Sets the switches from the bits; switching the log on starts a fresh log file.
  void SetMode(std::int32_t mode);
  std::int32_t CalculateMode() const;
  // Switches the log off without a change event, for a log file that cannot be opened.
  void SwitchLogOff() { m_bLogEnabled = false; }

  void ReadProperties(const PropertyBag& bag);
  void WriteProperties(PropertyBag& bag) const;

  // Full path of the log file; empty until the log has been switched on.
  const std::string& LogPath() const { return m_logPath; }

  // The formatted block and trace line, as delivered (exposed for the tests and the log viewer).
  static std::string FormatMessageBlock(std::int32_t code, const std::string& text, const std::string& className,
                                        const std::string& procedure, const std::string& location);
  static std::string FormatTraceLine(const std::string& text, const std::string& className,
                                     const std::string& procedure, const std::string& location);

  Event<const std::string&> SupportMessage;
  Event<const std::string&> PropertyChanged;

  // The process-wide instance; the control creates it and makes it current.
  static CDebug& Instance();
  static void SetInstance(std::shared_ptr<CDebug> instance);

 private:
  bool AnyOutput() const { return m_bMessageBoxEnabled || m_bEventEnabled || m_bLogEnabled; }
  void Deliver(const std::string& block);
  void StartLogFile();
  void AppendToLog(const std::string& text);

  bool m_bMessageBoxEnabled = false;
  bool m_bEventEnabled = false;
  bool m_bLogEnabled = false;
  bool m_bAssertEnabled = false;
  std::string m_logPath;
};

}  // namespace cvn73100
