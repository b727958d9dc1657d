#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <algorithm>
#include <memory>
#include <string>

#include "connection/CCvn73100EZ.h"
#include "diagnostics/CDebug.h"
#include "form/FormFile.h"
#include "platform/Event.h"
#include "platform/PropertyBag.h"
#include "python/src/Bindings.h"
#include "python/src/Conversions.h"
#include "python/src/Released.h"

namespace cvn73100::python {
namespace {

constexpr std::int32_t OBJECT_NOT_SET = 91;

// A support-message handler's connection to its control.
class SupportMessageConnection {
 public:
  explicit SupportMessageConnection(EventConnection connection) : m_connection(std::move(connection)) {}
  void Disconnect() { m_connection.Disconnect(); }

 private:
  EventConnection m_connection;
};

py::array_t<double> ToArray(const Variant::Doubles& values) {
  py::array_t<double> array(static_cast<py::ssize_t>(values.size()));
  std::copy(values.begin(), values.end(), array.mutable_data());
  return array;
}

py::tuple Record(const Variant& time, const Variant& volts) {
  return py::make_tuple(ToArray(time.AsDoubles()), ToArray(volts.AsDoubles()));
}

Variant ReadReply(Cvn73100Scope& scope, bool block) {
  Variant reply;
  scope.Enter(reply, block ? Variant("B") : Variant());
  return reply;
}

std::string FormPath(const py::object& path) { return path.is_none() ? FormFile::DefaultPath() : PathArgument(path); }

void LoadForm(Cvn73100Scope& scope, const std::string& path) {
  MemoryPropertyBag bag;
  FormFile(path).Load(bag);
  scope.ReadProperties(bag);
}

py::object ScreenImageOf(const Picture& picture) {
  return py::module_::import("cvn73100._types")
      .attr("ScreenImage")(ToPyBytes(picture.data), EnumValue(picture.format), Text(picture.mimeType), picture.width,
                           picture.height);
}

}  // namespace

ScopeClass DeclareScope(py::module_& m) {
  return ScopeClass(m, "Scope",
                    "The 73100 oscilloscope control: the instrument address, the connection, the sub-objects, waveform "
                    "capture, screen images, set-ups, the I/O configuration and the saved properties.\n\n"
                    "A new control is at \"GPIB0::7::INSTR\" (the built-in simulated instrument when no I/O "
                    "configuration exists) and starts a fresh support-message log. Give ``form`` to read the "
                    "properties saved in a form file (the one cvnscope uses). Everything runs on the caller's thread.");
}

void BindScope(py::module_& m, ScopeClass& scope) {
  py::class_<SupportMessageConnection>(m, "SupportMessageConnection",
                                       "A support-message handler's connection; disconnect() removes the handler.")
      .def("disconnect", &SupportMessageConnection::Disconnect, "Removes the handler; later calls do nothing.")
      .def("__enter__", [](py::object self) { return self; })
      .def("__exit__", [](SupportMessageConnection& self, const py::args&) { self.Disconnect(); });

  scope
      .def(py::init([](const py::object& form) {
             auto control = std::make_shared<Cvn73100Scope>();
             // The host's ambient user mode: a script runs the control, so it connects on demand.
             control->AmbientChanged();
             if (!form.is_none()) {
               const std::string path = PathArgument(form);
               Wait([&] { LoadForm(*control, path); });
             }
             return control;
           }),
           py::arg("form") = py::none())

      // --- Address and connection. ---
      .def_property(
          "address", [](const Cvn73100Scope& s) { return Text(s.Address()); },
          py::cpp_function(&Cvn73100Scope::SetAddress, Waits()),
          ("The instrument address: \"GPIB<n>::<address>::INSTR\" (n 0-3, address 0-30) or \"COM<n>\" (n 1-4) with "
           "optional \"::Baud=<rate>\" and \"Handshake=DTR_DSR\" keywords joined by \",\". Reads back in canonical "
           "form. Setting it closes the connection and clears address_instrument_id; an invalid address raises "
           "ScopeError -2147221124 (\"" +
           CatalogueText(106) + "\") and changes nothing.")
              .c_str())
      .def_property(
          "address_instrument_id", [](const Cvn73100Scope& s) { return Text(s.AddressInstrumentID()); },
          &Cvn73100Scope::SetAddressInstrumentID,
          "The identity (\"*IDN?\" reply) of the instrument found at the address; set by initialize().")
      .def_property_readonly(
          "automation_server_address", [](const Cvn73100Scope& s) { return Text(s.AutomationServerAddress()); },
          "The address in the form the automation server takes (a serial address always names its handshake).")
      .def("initialize", &Cvn73100Scope::Initialize, Waits(),
           ("Opens the connection on the address: resets the instrument when reset_on_initialize is set and checks its "
            "identity when check_id_on_initialize is set. A rejected instrument raises ScopeError -2147221445 (\"" +
            CatalogueText(113) + " " + CatalogueText(114) + "\"); I/O errors reach the caller unchanged.")
               .c_str())
      .def("close_connection", &Cvn73100Scope::CloseConnection, Waits(), "Closes the connection.")
      .def_property_readonly("instrument_connected", &Cvn73100Scope::InstrumentConnected,
                             "True while the connection is open.")
      .def_property("reset_on_initialize", &Cvn73100Scope::ResetOnInitialize, &Cvn73100Scope::SetResetOnInitialize,
                    "initialize() resets the instrument (\"*RST\").")
      .def_property("check_id_on_initialize", &Cvn73100Scope::CheckIDOnInitialize,
                    &Cvn73100Scope::SetCheckIDOnInitialize,
                    "initialize() refuses an instrument that is not a supported model.")
      .def_property("tx_delay", &Cvn73100Scope::TXDelay, &Cvn73100Scope::SetTXDelay,
                    "The transmit delay in milliseconds; a negative value raises ScopeError -2147221124.")
      .def_property(
          "timeout", [](const Cvn73100Scope& s) { return s.Connection()->EZPtr().Timeout(); },
          [](const Cvn73100Scope& s, std::int32_t milliseconds) { s.Connection()->EZPtr().SetTimeout(milliseconds); },
          "How long a read waits for the instrument's reply, in milliseconds (5000 to begin with); it holds for "
          "the open connection and later ones. A read that runs out of time raises ScopeTimeoutError, also a "
          "TimeoutError; a negative time raises ScopeValueError.")
      .def_property_readonly(
          "connection_name", [](Cvn73100Scope& s) { return Text(s.ConnectionName()); },
          "The address the automation server's connection is open on; \"\" when closed.")
      .def("__enter__", [](py::object self) { return self; })
      .def(
          "__exit__", [](Cvn73100Scope& s, const py::args&) { Wait([&] { s.CloseConnection(); }); },
          "Leaving a with block closes the connection.")

      // --- Commands and replies. ---
      .def(
          "write",
          [](Cvn73100Scope& s, const py::object& data) {
            const Variant message(PyUnicode_Check(data.ptr()) ? Variant(data.cast<std::string>())
                                                              : Variant(ToBytes(data)));
            Wait([&] { s.Output(message); });
          },
          py::arg("data"),
          "Sends a command (str, sent with the line termination) or bytes (sent as they are). Connects first when "
          "needed.")
      .def(
          "read", [](Cvn73100Scope& s, bool block) { return ToPython(Wait([&] { return ReadReply(s, block); })); },
          py::kw_only(), py::arg("block") = false,
          "Reads one reply as str; with ``block=True`` reads a definite-length block (such as the reply to "
          "\":SYSTem:SETup?\") as bytes.")
      .def(
          "query",
          [](Cvn73100Scope& s, const std::string& command, bool block) {
            return ToPython(Wait([&] {
              s.Output(Variant(command));
              return ReadReply(s, block);
            }));
          },
          py::arg("command"), py::kw_only(), py::arg("block") = false,
          "write(command), then read(block=block): ``scope.query('*IDN?')``.")
      .def(
          "read_bytes",
          [](Cvn73100Scope& s, std::int32_t count) {
            Bytes buffer;
            Wait([&] { s.ReadBytes(count, buffer); });
            buffer.resize(std::min(buffer.size(), static_cast<std::size_t>(std::max(count, 0))));
            return ToPyBytes(buffer);
          },
          py::arg("count"), "Reads exactly ``count`` bytes.")
      .def(
          "write_bytes",
          [](Cvn73100Scope& s, const py::object& data) {
            Bytes buffer = ToBytes(data);
            Wait([&] { s.WriteBytes(static_cast<std::int32_t>(buffer.size()), buffer); });
          },
          py::arg("data"), "Sends the bytes as they are.")
      .def("auto_scale", &Cvn73100Scope::AutoScale, Waits(), "Frames every signal on the screen.")
      .def("digitize", &Cvn73100Scope::Digitize, Waits(), "Acquires once and stops.")
      .def("run", &Cvn73100Scope::Run, Waits(), "Starts acquiring continuously.")
      .def("single_trigger", &Cvn73100Scope::SingleTrigger, Waits(), "Acquires on the next trigger, then stops.")
      .def("stop_trigger", &Cvn73100Scope::StopTrigger, Waits(), "Stops acquiring.")

      // --- Data. ---
      .def(
          "waveform",
          [](Cvn73100Scope& s, std::int32_t channel, std::int32_t points) {
            Variant time;
            Variant volts;
            Wait([&] {
              s.GetWaveformData(static_cast<Cvn73100_AnalogChannels>(channel),
                                static_cast<Cvn73100_WaveformPoints>(points), time, volts);
            });
            return Record(time, volts);
          },
          py::arg("channel") = 1, py::arg("points") = 1000,
          "Captures analog channel 1-4: ``(times, volts)``, two NumPy float64 arrays, seconds from the trigger and "
          "volts. ``points`` is 100, 250, 500, 1000, 2000, or 0 for the whole record.")
      .def(
          "waveforms",
          [](Cvn73100Scope& s, std::int32_t points) {
            Variant::Array all;
            Wait([&] { s.GetAllWaveformData(static_cast<Cvn73100_WaveformPoints>(points), all); });
            py::list records;
            for (const Variant& entry : all) records.append(Record(entry.AsArray().at(0), entry.AsArray().at(1)));
            return records;
          },
          py::arg("points") = 1000, "Captures the four analog channels: a list of four ``(times, volts)`` pairs.")
      .def(
          "logic_data",
          [](Cvn73100Scope& s, std::int32_t points) {
            Variant time;
            Variant data;
            Wait([&] { s.GetLogicData(static_cast<Cvn73100_WaveformPoints>(points), time, data); });
            const Variant::Array& words = data.AsArray();
            py::array_t<std::int32_t> bits(static_cast<py::ssize_t>(words.size()));
            std::int32_t* out = bits.mutable_data();
            for (const Variant& word : words) *out++ = word.AsLong();
            return py::make_tuple(ToArray(time.AsDoubles()), bits);
          },
          py::arg("points") = 1000,
          "Captures the 16 logic bits: ``(times, bits)``, seconds and one int32 per point (bit n is D<n>).")
      .def(
          "screen_image",
          [](Cvn73100Scope& s, Cvn73100_ImageFormat format) {
            return ScreenImageOf(Wait([&] { return s.GetScreenImage(format); }));
          },
          py::arg("format") = Cvn73100_ImageFormat_BMP,
          "The instrument's screen as a ScreenImage: ``data`` (the encoded file as bytes), ``format``, ``mime_type``, "
          "``width`` and ``height``. BMP, GIF, TIF or JPG.")
      .def(
          "save_screen_image",
          [](Cvn73100Scope& s, py::object path, Cvn73100_ImageFormat format) {
            const std::string file = PathArgument(path);
            Wait([&] { s.SaveScreenImage(file, format); });
          },
          py::arg("path"), py::arg("format") = Cvn73100_ImageFormat_BMP,
          "Writes the screen image to a file, whole or not at all.")

      // --- The control's collections. ---
      .def_property_readonly(
          "setups",
          [](const ScopePtr& s) {
            // Only a terminated control has none, and Python never holds one.
            if (!s->Setups())
              throw ScopeError(OBJECT_NOT_SET, "Cvn73100CtrlLib", "Object variable or With block variable not set");
            return SetupsRef{s->Setups(), s};
          },
          "The control's set-ups (Setups).")
      .def_property(
          "io_configuration",
          [](const ScopePtr& s) {
            return IOConfigurationRef{s->IOConfiguration(), s};
          },
          [](const ScopePtr& s, const IOConfigurationRef& configuration) {
            if (configuration.configuration == s->IOConfiguration()) return;
            Wait([&] {
              s->IOConfiguration()->Copy(*configuration.configuration);
              s->IOConfigurationChanged();
            });
          },
          "The control's own I/O configuration. Changes made through it reach the control at once, as Apply on a "
          "property page does. Assigning an IOConfiguration copies it into the control's.")
      .def_property(
          "search_criteria", [](const Cvn73100Scope& s) { return ToPython(s.SearchCriteria()); },
          [](Cvn73100Scope& s, const py::object& value) { s.SetSearchCriteria(ToVariant(value)); },
          ("The I/O configuration's search settings as six lists: GPIB installed (4 bools), GPIB included (4), "
           "the include mask (4 lists of 31), serial installed (4), serial included (4), serial settings (4 lists of "
           "baud rate, parity, handshake). " +
           CatalogueText(320))
              .c_str())

      // --- Language, font, diagnostics. ---
      .def_property("country_code", &Cvn73100Scope::CountryCode, &Cvn73100Scope::SetCountryCode,
                    ("The language of the messages (Language). An Asian language without its code page raises "
                     "ScopeError -2147221124 (\"" +
                     CatalogueText(107) + "\").")
                        .c_str())
      .def_property(
          "font_name", [](const Cvn73100Scope& s) { return Text(s.FontName()); }, &Cvn73100Scope::SetFontName,
          "The font of the control's pages.")
      .def_property("font_size", &Cvn73100Scope::FontSize, &Cvn73100Scope::SetFontSize, "The font size in points.")
      .def_property(
          "support_message_mode",
          [](const Cvn73100Scope& s) { return EnumValue(static_cast<SupportMessageModeFlag>(s.SupportMessageMode())); },
          &Cvn73100Scope::SetSupportMessageMode,
          "The support-message switches (SupportMessageMode): 1 message box, 2 log file, 4 event, 8 assert. "
          "Switching the log on starts a fresh log.")
      .def(
          "connect_support_message",
          [](Cvn73100Scope& s, py::function callback) {
            const auto keep = KeepCallable(std::move(callback));
            return SupportMessageConnection(s.SupportMessage.Connect([keep](const std::string& message) {
              py::gil_scoped_acquire gil;
              try {
                (*keep)(Text(message));
              } catch (py::error_already_set& error) {
                ReportUnraisable(error, "cvn73100 support-message callback");
              }
            }));
          },
          py::arg("callback"),
          "Calls ``callback(text)`` with each support message, as the control formats it, while the EVENT bit of "
          "support_message_mode is set. An exception in the callback is reported as unraisable and the control goes "
          "on. The handler stays connected until the returned connection's disconnect().")
      .def_property("debug_enabled", &Cvn73100Scope::DebugEnabled, &Cvn73100Scope::SetDebugEnabled,
                    "Handed to the connection; saved with the properties.")
      .def_property_readonly(
          "help_file", [](const Cvn73100Scope& s) { return Text(s.HelpFile()); }, "The help file of the messages.")
      .def_property_readonly_static(
          "version", [](const py::object&) { return Text(Cvn73100Scope::Version()); }, "The control's version.")

      // --- Settings of the property-page link that are saved. ---
      .def_property("initial_search_mode", &Cvn73100Scope::InitialSearchMode, &Cvn73100Scope::SetInitialSearchMode,
                    "The first search offers its first row as the address when no row is the control's.")
      .def_property("dtr_only", &Cvn73100Scope::DTROnly, &Cvn73100Scope::SetDTROnly, CatalogueText(319).c_str())
      .def_property("dont_show_io_handshake_warning", &Cvn73100Scope::DontShowIOHandshakeWarning,
                    &Cvn73100Scope::SetDontShowIOHandshakeWarning, CatalogueText(289).c_str())
      .def_property(
          "last_io_handshake_address", [](const Cvn73100Scope& s) { return Text(s.LastIOHandshakeAddress()); },
          &Cvn73100Scope::SetLastIOHandshakeAddress, "The address the handshake warning last spoke of.")

      // --- Saved properties. ---
      .def(
          "save_properties",
          [](const Cvn73100Scope& s, const py::object& path) {
            MemoryPropertyBag bag;
            s.WriteProperties(bag);
            FormFile form(FormPath(path));
            form.Save(bag);
            return Text(form.Path());
          },
          py::arg("path") = py::none(),
          "Writes the control's properties to a form file, whole or not at all, and returns its path. The file is the "
          "one cvnscope reads; without ``path`` it is the default form (default_form_path()).")
      .def(
          "load_properties",
          [](Cvn73100Scope& s, const py::object& path) {
            const std::string file = FormPath(path);
            Wait([&] { LoadForm(s, file); });
            return Text(file);
          },
          py::arg("path") = py::none(),
          "Reads the control's properties from a form file (a missing file gives the defaults) and returns its path. "
          "Set-ups stored in the form are appended to those the control holds.")
      .def(
          "write_properties",
          [](const Cvn73100Scope& s) {
            MemoryPropertyBag bag;
            s.WriteProperties(bag);
            py::dict properties;
            for (const auto& [key, value] : bag.Entries()) properties[Text(key)] = ToPython(value);
            return properties;
          },
          "The property bag the control writes, as a dict in the order of its keys; values equal to their defaults are "
          "left out.")
      .def(
          "read_properties",
          [](Cvn73100Scope& s, const py::dict& properties) {
            MemoryPropertyBag bag;
            for (const auto& [key, value] : properties) bag.Set(key.cast<std::string>(), ToVariant(value));
            Wait([&] { s.ReadProperties(bag); });
          },
          py::arg("properties"), "Reads the control's properties from a dict shaped as write_properties() returns it.")
      .def("__repr__", [](const Cvn73100Scope& s) {
        return Text("<cvn73100.Scope " + s.Address() + (s.InstrumentConnected() ? " connected>" : ">"));
      });

  m.def(
      "default_form_path", [] { return Text(FormFile::DefaultPath()); },
      "The default form file: $XDG_CONFIG_HOME/cvn73100/form.json (or ~/.config/cvn73100/form.json).");
}

}  // namespace cvn73100::python
