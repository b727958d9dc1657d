#include <pybind11/pybind11.h>

#include <cstdint>
#include <memory>
#include <string>

#include "ioconfig/IOConfigurationConstants.h"
#include "python/src/Bindings.h"
#include "python/src/Conversions.h"

namespace cvn73100::python {
namespace {

using Ref = IOConfigurationRef;

// A setter of the configuration: the change, then the control told of it.
template <class Change>
void Apply(const Ref& ref, Change change) {
  // A search of the ports, and the control following a new address, may wait on the lines.
  Wait([&] {
    change(*ref.configuration);
    ref.Changed();
  });
}

}  // namespace

void BindIOConfiguration(py::module_& m) {
  m.attr("DEFAULT_ADDRESS") = DEFAULT_ADDRESS;
  m.attr("GPIB_PORTS") = py::module_::import("builtins").attr("range")(GPIB_PORT::First, GPIB_PORT::Last + 1);
  m.attr("RS232_PORTS") = py::module_::import("builtins").attr("range")(RS232_PORT::First, RS232_PORT::Last + 1);
  m.attr("GPIB_ADDRESSES") =
      py::module_::import("builtins")
          .attr("range")(SEARCH_CRITERIA::FIRST_GPIB_INCLUDE, SEARCH_CRITERIA::LAST_GPIB_INCLUDE + 1);
  py::tuple baudRates(std::size(RS232_BAUD_RATES));
  for (std::size_t i = 0; i < std::size(RS232_BAUD_RATES); ++i) baudRates[i] = RS232_BAUD_RATES[i];
  m.attr("RS232_BAUD_RATES") = baudRates;
  m.attr("RS232_HANDSHAKE_NONE") = 1;
  m.attr("RS232_HANDSHAKE_XON_XOFF") = static_cast<int>(RS232_HandShake_XON_XOFF);
  m.attr("RS232_HANDSHAKE_DTR_DSR") = static_cast<int>(RS232_HandShake_DTR_DSR);

  py::class_<Ref>(
      m, "IOConfiguration",
      ("The instrument ports and the port in use: which GPIB interfaces (GPIB0-GPIB3) and serial ports "
       "(COM1-COM4) exist and are searched, the GPIB addresses a search visits, every serial port's "
       "settings, and the active port with its address. " +
       CatalogueText(320) +
       "\n\nA rejected value raises ScopeError -2147221124 and leaves the configuration as it was; a port or "
       "address outside its table raises ScopeIndexError (error 9).")
          .c_str())
      .def(py::init([] {
             return Ref{std::make_shared<CIOconfiguration>(), nullptr};
           }),
           "A configuration of its own at \"GPIB0::7::INSTR\": nothing installed, everything included, every serial "
           "port at 9600 baud, parity 1, XON/XOFF.")
      .def(
          "copy",
          [](const Ref& r) {
            auto copy = std::make_shared<CIOconfiguration>();
            copy->Copy(*r.configuration);
            return Ref{copy, nullptr};
          },
          "An independent copy (a property page's working copy).")
      .def("__eq__", [](const Ref& a, const Ref& b) { return *a.configuration == *b.configuration; })

      // --- Per-port tables. ---
      .def(
          "gpib_port_installed",
          [](const Ref& r, std::int32_t port) { return r.configuration->GPIBPortInstalled(port); }, py::arg("port"),
          "The GPIB interface 0-3 exists on this computer (found by find_all).")
      .def(
          "set_gpib_port_installed",
          [](const Ref& r, std::int32_t port, bool value) {
            Apply(r, [&](CIOconfiguration& c) { c.SetGPIBPortInstalled(port, value); });
          },
          py::arg("port"), py::arg("value"))
      .def(
          "gpib_port_included", [](const Ref& r, std::int32_t port) { return r.configuration->GPIBPortIncluded(port); },
          py::arg("port"), "A search visits the GPIB interface 0-3.")
      .def(
          "set_gpib_port_included",
          [](const Ref& r, std::int32_t port, bool value) {
            Apply(r, [&](CIOconfiguration& c) { c.SetGPIBPortIncluded(port, value); });
          },
          py::arg("port"), py::arg("value"))
      .def(
          "rs232_port_installed",
          [](const Ref& r, std::int32_t port) { return r.configuration->RS232PortInstalled(port); }, py::arg("port"),
          "The serial port 1-4 exists on this computer (found by find_all).")
      .def(
          "set_rs232_port_installed",
          [](const Ref& r, std::int32_t port, bool value) {
            Apply(r, [&](CIOconfiguration& c) { c.SetRS232PortInstalled(port, value); });
          },
          py::arg("port"), py::arg("value"))
      .def(
          "rs232_port_included",
          [](const Ref& r, std::int32_t port) { return r.configuration->RS232PortIncluded(port); }, py::arg("port"),
          "A search visits the serial port 1-4.")
      .def(
          "set_rs232_port_included",
          [](const Ref& r, std::int32_t port, bool value) {
            Apply(r, [&](CIOconfiguration& c) { c.SetRS232PortIncluded(port, value); });
          },
          py::arg("port"), py::arg("value"))
      .def(
          "gpib_port_includes",
          [](const Ref& r, std::int32_t port, std::int32_t address) {
            return r.configuration->GPIBPortIncludes(port, address);
          },
          py::arg("port"), py::arg("address"), "A search visits ``address`` 0-30 on GPIB interface ``port``.")
      .def(
          "set_gpib_port_includes",
          [](const Ref& r, std::int32_t port, std::int32_t address, bool value) {
            Apply(r, [&](CIOconfiguration& c) { c.SetGPIBPortIncludes(port, address, value); });
          },
          py::arg("port"), py::arg("address"), py::arg("value"))
      .def(
          "gpib_instrument_found",
          [](const Ref& r, std::int32_t port, std::int32_t address) {
            return r.configuration->GPIBInstrumentFound(port, address);
          },
          py::arg("port"), py::arg("address"), "The last port detection listed a resource at this GPIB address.")
      .def(
          "baud_rate", [](const Ref& r, std::int32_t port) { return r.configuration->BaudRate(port); }, py::arg("port"),
          "The baud rate of serial port 1-4.")
      .def(
          "set_baud_rate",
          [](const Ref& r, std::int32_t port, std::int32_t value) {
            Apply(r, [&](CIOconfiguration& c) { c.SetBaudRate(port, value); });
          },
          py::arg("port"), py::arg("value"))
      .def(
          "parity", [](const Ref& r, std::int32_t port) { return r.configuration->Parity(port); }, py::arg("port"),
          "The parity value of serial port 1-4 (1).")
      .def(
          "set_parity",
          [](const Ref& r, std::int32_t port, std::int32_t value) {
            Apply(r, [&](CIOconfiguration& c) { c.SetParity(port, value); });
          },
          py::arg("port"), py::arg("value"))
      .def(
          "handshake", [](const Ref& r, std::int32_t port) { return r.configuration->Handshake(port); },
          py::arg("port"),
          "The handshake of serial port 1-4: RS232_HANDSHAKE_XON_XOFF (2) or RS232_HANDSHAKE_DTR_DSR (4).")
      .def(
          "set_handshake",
          [](const Ref& r, std::int32_t port, std::int32_t value) {
            Apply(r, [&](CIOconfiguration& c) { c.SetHandshake(port, value); });
          },
          py::arg("port"), py::arg("value"))
      .def_property_readonly(
          "has_installed_ports", [](const Ref& r) { return r.configuration->HasInstalledPorts(); },
          "A GPIB interface or a serial port is installed.")

      // --- The active port. ---
      .def_property(
          "active_io_port", [](const Ref& r) { return Text(r.configuration->ActiveIOPort()); },
          [](const Ref& r, const std::string& port) {
            Apply(r, [&](CIOconfiguration& c) { c.SetActiveIOPort(port); });
          },
          "\"GPIB0\"-\"GPIB3\" or \"COM1\"-\"COM4\"; any case goes in, upper case comes out.")
      .def_property_readonly(
          "active_port_is_gpib", [](const Ref& r) { return r.configuration->ActivePortIsGPIB(); },
          "The active port is a GPIB interface.")
      .def_property(
          "active_port_gpib_address", [](const Ref& r) { return r.configuration->ActivePortGPIBAddress(); },
          [](const Ref& r, std::int32_t address) {
            Apply(r, [&](CIOconfiguration& c) { c.SetActivePortGPIBAddress(address); });
          },
          "The instrument address 0-30 on the active GPIB port.")
      .def_property(
          "active_port_baud_rate", [](const Ref& r) { return r.configuration->ActivePortBaudRate(); },
          [](const Ref& r, std::int32_t rate) {
            Apply(r, [&](CIOconfiguration& c) { c.SetActivePortBaudRate(rate); });
          },
          "The baud rate of the active serial port: one of RS232_BAUD_RATES; 0 for a GPIB port.")
      .def_property(
          "active_port_handshake", [](const Ref& r) { return r.configuration->ActivePortHandshake(); },
          [](const Ref& r, std::int32_t handshake) {
            Apply(r, [&](CIOconfiguration& c) { c.SetActivePortHandshake(handshake); });
          },
          "The handshake of the active serial port; 0 for a GPIB port.")
      .def_property(
          "dtr_only", [](const Ref& r) { return r.configuration->DTROnly(); },
          [](const Ref& r, bool value) { Apply(r, [&](CIOconfiguration& c) { c.SetDTROnly(value); }); },
          (CatalogueText(319) + ": turning it on sets every serial port's handshake to DTR/DSR.").c_str())
      .def_property(
          "active_address_string", [](const Ref& r) { return Text(r.configuration->ActiveAddressString()); },
          [](const Ref& r, const std::string& address) {
            Apply(r, [&](CIOconfiguration& c) { c.SetActiveAddressString(address); });
          },
          "The canonical active address, e.g. \"GPIB0::7::INSTR\", \"COM2::Baud=19200,Handshake=DTR_DSR\".")
      .def_property_readonly(
          "active_automation_server_address",
          [](const Ref& r) { return Text(r.configuration->ActiveAutomationServerAddress()); },
          "The active address as the automation server takes it (a serial address always names its handshake).")
      .def_property(
          "active_address_instrument_id",
          [](const Ref& r) { return Text(r.configuration->ActiveAddressInstrumentID()); },
          [](const Ref& r, const std::string& id) {
            Apply(r, [&](CIOconfiguration& c) { c.SetActiveAddressInstrumentID(id); });
          },
          "The identity of the instrument last found at the active address.")

      // --- Address strings. ---
      .def(
          "is_string_gpib", [](const Ref& r, const std::string& text) { return r.configuration->IsStringGPIB(text); },
          py::arg("address"), "True for a text beginning with \"GPIB\", False for one beginning with \"COM\".")
      .def(
          "is_valid_gpib_port_string",
          [](const Ref& r, const std::string& text) { return r.configuration->IsValidGPIBPortString(text); },
          py::arg("port"), "\"GPIB0\"-\"GPIB3\" in any case.")
      .def(
          "is_valid_rs232_port_string",
          [](const Ref& r, const std::string& text) { return r.configuration->IsValidRS232PortString(text); },
          py::arg("port"), "\"COM1\"-\"COM4\" in any case.")
      .def(
          "gpib_port_string",
          [](const Ref& r, std::int32_t index) { return Text(r.configuration->GPIBPortString(index)); },
          py::arg("index"), "\"GPIB\" + index, for 0-3.")
      .def(
          "rs232_port_string",
          [](const Ref& r, std::int32_t index) { return Text(r.configuration->RS232PortString(index)); },
          py::arg("index"), "\"COM\" + index, for 1-4.")
      .def(
          "gpib_port_index", [](const Ref& r, const std::string& text) { return r.configuration->GPIBPortIndex(text); },
          py::arg("address"), "The port number in a GPIB port name or address: 2 for \"GPIB2::5::INSTR\".")
      .def(
          "rs232_port_index",
          [](const Ref& r, const std::string& text) { return r.configuration->RS232PortIndex(text); },
          py::arg("address"), "The port number in a serial port name or address: 3 for \"COM3::Baud=2400\".")
      .def(
          "gpib_instrument_address",
          [](const Ref& r, const std::string& text) { return r.configuration->GPIBInstrumentAddress(text); },
          py::arg("address"), "The instrument address 0-30 in a GPIB address.")

      // --- Port detection, through a control's I/O library. ---
      .def(
          "find_all",
          [](const Ref& r, const Cvn73100Scope& scope) { Apply(r, [&](CIOconfiguration& c) { c.FindAll(scope); }); },
          py::arg("scope"),
          ("Refreshes the installed flags of every port and the GPIB addresses found (\"" + CatalogueText(302) +
           "\"), through the I/O library of ``scope``.")
              .c_str())
      .def(
          "find_gpib_port",
          [](const Ref& r, std::int32_t port, const Cvn73100Scope& scope) {
            return Wait([&] {
              const bool found = r.configuration->FindGPIBPort(port, scope);
              r.Changed();
              return found;
            });
          },
          py::arg("port"), py::arg("scope"), "Whether the I/O library lists GPIB interface ``port``.")
      .def(
          "find_rs232_port",
          [](const Ref& r, std::int32_t port, const Cvn73100Scope& scope) {
            return r.configuration->FindRS232Port(port, scope);
          },
          py::arg("port"), py::arg("scope"), "Whether the I/O library lists serial port ``port``.")

      // --- Whole object. ---
      .def_property(
          "data", [](const Ref& r) { return ToPython(r.configuration->DataAsVariant()); },
          [](const Ref& r, py::object value) {
            const Variant data = ToVariant(value);
            Apply(r, [&](CIOconfiguration& c) { c.SetDataAsVariant(data); });
          },
          "The tables as six lists: GPIB installed (4 bools), GPIB included (4), the include mask (4 lists of 31), "
          "serial installed (4), serial included (4), serial settings (4 lists of baud rate, parity, handshake).")
      .def("__repr__", [](const Ref& r) {
        return Text("<cvn73100.IOConfiguration " + r.configuration->ActiveAddressString() + ">");
      });
}

}  // namespace cvn73100::python
