#include <pybind11/pybind11.h>

#include "diagnostics/CDebug.h"
#include "dialogs/Messages.h"
#include "iolib/IOLibrary.h"
#include "python/src/Bindings.h"
#include "python/src/Conversions.h"
#include "python/src/Released.h"
#include "server/Cvn73100Server.h"
#include "simulator/Backend.h"

namespace cvn73100::python {

std::string CatalogueText(int number) { return Messages::LoadIn(Messages::ENGLISH, number); }

void BindEnums(py::module_& m) {
  MakeEnum<Cvn73100_CountryCode>(m, "Language",
                                 {{"ENGLISH", Cvn73100_Language_English},
                                  {"FRENCH", Cvn73100_Language_French},
                                  {"SPANISH", Cvn73100_Language_Spanish},
                                  {"ITALIAN", Cvn73100_Language_Italian},
                                  {"GERMAN", Cvn73100_Language_German},
                                  {"JAPANESE", Cvn73100_Language_Japanese},
                                  {"KOREAN", Cvn73100_Language_Korean},
                                  {"TRADITIONAL_CHINESE", Cvn73100_Language_Traditional_Chinese}},
                                 "The language of the control's messages, by country code (Scope.country_code).");
  MakeEnum<Cvn73100_AcquisitionType>(m, "AcquisitionType",
                                     {{"AVERAGE", Cvn73100_AcquisitionType_Average},
                                      {"PEAK", Cvn73100_AcquisitionType_Peak},
                                      {"GLITCH", Cvn73100_AcquisitionType_Glitch},
                                      {"REAL", Cvn73100_AcquisitionType_Real},
                                      {"AUTO", Cvn73100_AcquisitionType_Auto},
                                      {"NORMAL", Cvn73100_AcquisitionType_Normal}},
                                     "How the instrument acquires (Scope.acquisition.type).");
  MakeEnum<Cvn73100_OnOffState>(m, "OnOffState", {{"OFF", Cvn73100_Off}, {"ON", Cvn73100_On}},
                                "Whether a channel or trace is displayed.");
  MakeEnum<Cvn73100_ProbeCoupling>(
      m, "ProbeCoupling",
      {{"DC", Cvn73100_ProbeCoupling_DC}, {"GND", Cvn73100_ProbeCoupling_GND}, {"AC", Cvn73100_ProbeCoupling_AC}},
      "The input coupling of an analog channel.");
  MakeEnum<Cvn73100_ImageFormat>(m, "ImageFormat",
                                 {{"BMP", Cvn73100_ImageFormat_BMP},
                                  {"GIF", Cvn73100_ImageFormat_GIF},
                                  {"WMF", Cvn73100_ImageFormat_WMF},
                                  {"EMF", Cvn73100_ImageFormat_EMF},
                                  {"TIF", Cvn73100_ImageFormat_TIF},
                                  {"JPG", Cvn73100_ImageFormat_JPG}},
                                 "The file format of a screen image.");
  MakeEnum<Cvn73100_TimeMode>(m, "TimeMode",
                              {{"DELAYED", Cvn73100_TimeMode_Delayed},
                               {"XY", Cvn73100_TimeMode_XY},
                               {"ROLL", Cvn73100_TimeMode_Roll},
                               {"NORMAL", Cvn73100_TimeMode_Normal}},
                              "The time base mode.");
  MakeEnum<Cvn73100_TimeReference>(m, "TimeReference",
                                   {{"CENTER", Cvn73100_TimeReference_Center},
                                    {"RIGHT", Cvn73100_TimeReference_Right},
                                    {"LEFT", Cvn73100_TimeReference_Left}},
                                   "Where on the screen the time base delay is measured from.");
  MakeEnum<Cvn73100_TriggerMode>(m, "TriggerMode",
                                 {{"AUTO", Cvn73100_TriggerMode_Auto},
                                  {"NORMAL", Cvn73100_TriggerMode_Normal},
                                  {"AUTO_LEVEL", Cvn73100_TriggerMode_AutoLevel}},
                                 "The trigger mode.");
  MakeEnum<Cvn73100_TriggerSource>(
      m, "TriggerSource",
      {{"CHANNEL1", Cvn73100_TriggerSource_Channel1},   {"CHANNEL2", Cvn73100_TriggerSource_Channel2},
       {"CHANNEL3", Cvn73100_TriggerSource_Channel3},   {"CHANNEL4", Cvn73100_TriggerSource_Channel4},
       {"EXTERNAL", Cvn73100_TriggerSource_External},   {"LINE", Cvn73100_TriggerSource_Line},
       {"LOGIC_D0", Cvn73100_TriggerSource_Logic_D0},   {"LOGIC_D1", Cvn73100_TriggerSource_Logic_D1},
       {"LOGIC_D2", Cvn73100_TriggerSource_Logic_D2},   {"LOGIC_D3", Cvn73100_TriggerSource_Logic_D3},
       {"LOGIC_D4", Cvn73100_TriggerSource_Logic_D4},   {"LOGIC_D5", Cvn73100_TriggerSource_Logic_D5},
       {"LOGIC_D6", Cvn73100_TriggerSource_Logic_D6},   {"LOGIC_D7", Cvn73100_TriggerSource_Logic_D7},
       {"LOGIC_D8", Cvn73100_TriggerSource_Logic_D8},   {"LOGIC_D9", Cvn73100_TriggerSource_Logic_D9},
       {"LOGIC_D10", Cvn73100_TriggerSource_Logic_D10}, {"LOGIC_D11", Cvn73100_TriggerSource_Logic_D11},
       {"LOGIC_D12", Cvn73100_TriggerSource_Logic_D12}, {"LOGIC_D13", Cvn73100_TriggerSource_Logic_D13},
       {"LOGIC_D14", Cvn73100_TriggerSource_Logic_D14}, {"LOGIC_D15", Cvn73100_TriggerSource_Logic_D15}},
      "The signal the instrument triggers on.");
  MakeEnum<Cvn73100_TriggerSlope>(
      m, "TriggerSlope", {{"POSITIVE", Cvn73100_TriggerSlope_Positive}, {"NEGATIVE", Cvn73100_TriggerSlope_Negative}},
      "The edge the instrument triggers on.");
  MakeEnum<Cvn73100_TriggerCoupling>(m, "TriggerCoupling",
                                     {{"DC", Cvn73100_TriggerCoupling_DC}, {"AC", Cvn73100_TriggerCoupling_AC}},
                                     "The coupling of the trigger input.");

  const std::string idnDoc =
      "The outcome of an identification query (query_instrument):\n\n"
      "SUPPORTED: " +
      CatalogueText(226) +
      "\n"
      "UNSUPPORTED_MODEL: " +
      CatalogueText(225) +
      "\n"
      "NOT_FAMILY: " +
      CatalogueText(223) + " " + CatalogueText(224) +
      "\n"
      "NOT_IEEE4882: " +
      CatalogueText(222) +
      "\n"
      "NO_RESPONSE: " +
      CatalogueText(530) +
      "\n"
      "PORT_NOT_FOUND: " +
      CatalogueText(221) +
      "\n"
      "WRONG_PORT_TYPE: the address is not of the kind the query serves (GPIB for RS-232 or the reverse).";
  MakeEnum<IDNQueryResult>(m, "IDNQueryResult",
                           {{"SUPPORTED", IDNSupported},
                            {"UNSUPPORTED_MODEL", IDNUnsupportedModel},
                            {"NOT_FAMILY", IDNNotFamily},
                            {"NOT_IEEE4882", IDNNotIEEE4882},
                            {"NO_RESPONSE", IDNNoResponse},
                            {"PORT_NOT_FOUND", IDNPortNotFound},
                            {"WRONG_PORT_TYPE", IDNWrongPortType}},
                           idnDoc.c_str());

  MakeEnum<SupportMessageModeFlag>(m, "SupportMessageMode",
                                   {{"MESSAGE_BOX", SupportMessageModeFlag{CDebug::MODE_MESSAGE_BOX}},
                                    {"LOG_FILE", SupportMessageModeFlag{CDebug::MODE_LOG}},
                                    {"EVENT", SupportMessageModeFlag{CDebug::MODE_EVENT}},
                                    {"ASSERT", SupportMessageModeFlag{CDebug::MODE_ASSERT}}},
                                   "Switches of the support messages (Scope.support_message_mode): a message box, "
                                   "the log file CvnScope.DBG in the temporary folder, the support-message event "
                                   "(Scope.connect_support_message), and assertions.",
                                   "IntFlag");
}

}  // namespace cvn73100::python

PYBIND11_MODULE(_native, m) {
  using namespace cvn73100;
  using namespace cvn73100::python;
  m.doc() = "The 73100 oscilloscope control: the compiled half of the cvn73100 package.";

  // The components a host program registers: the I/O library with the simulated instruments, and the automation
  // server.
  io::RegisterIOLibrary();
  sim::RegisterBackend();
  server::RegisterAutomationServer();

  LoadErrorClasses();
  RegisterErrorTranslator();
  RegisterInterruptTranslator();
  BindEnums(m);
  BindHost(m);
  BindIOConfiguration(m);
  BindSetups(m);
  ScopeClass scope = DeclareScope(m);
  BindSubObjects(m, scope);
  BindScope(m, scope);
  BindDiscovery(m, scope);
  py::module_ sim = m.def_submodule("sim", "The simulated 73100 oscilloscope.");
  BindSim(sim);
}
