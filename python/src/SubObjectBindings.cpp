#include <pybind11/pybind11.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/AutomationServer.h"
#include "python/src/Bindings.h"
#include "python/src/Conversions.h"

// The automation server's sub-objects as Python objects. Each one goes through the control on every use, so
// it connects on demand like the control and never outlives the connection it talks to.
namespace cvn73100::python {
namespace {

constexpr const char* CONTROL_SOURCE = "Cvn73100CtrlLib";

struct Acquisition {
  ScopePtr scope;
};
struct Timebase {
  ScopePtr scope;
};
struct Trigger {
  ScopePtr scope;
};
struct Measure {
  ScopePtr scope;
};
struct Utilities {
  ScopePtr scope;
};

// A family of numbered channels (analog channels, logic bits, traces) of type Member.
template <class Member>
struct Channels {
  ScopePtr scope;
  std::vector<std::int32_t> numbers;
  std::int32_t Check(std::int32_t number) const {
    if (std::find(numbers.begin(), numbers.end(), number) == numbers.end())
      throw RuntimeError(ERR_SUBSCRIPT_OUT_OF_RANGE, CONTROL_SOURCE);
    return number;
  }
};
struct AnalogChannel {
  ScopePtr scope;
  std::int32_t number;
  Cvn73100_AnalogChannels Id() const { return static_cast<Cvn73100_AnalogChannels>(number); }
};
struct LogicBit {
  ScopePtr scope;
  std::int32_t number;
  Cvn73100_LogicBits Id() const { return static_cast<Cvn73100_LogicBits>(number); }
};
struct TraceChannel {
  ScopePtr scope;
  std::int32_t number;
  Cvn73100_AllChannels Id() const { return static_cast<Cvn73100_AllChannels>(number); }
};

std::vector<std::int32_t> Range(std::int32_t first, std::int32_t last) {
  std::vector<std::int32_t> numbers;
  for (std::int32_t n = first; n <= last; ++n) numbers.push_back(n);
  return numbers;
}

std::vector<std::int32_t> TraceNumbers() {
  std::vector<std::int32_t> numbers = Range(Cvn73100_Channel_A1, Cvn73100_Channel_A4);
  for (std::int32_t n = Cvn73100_Channel_D0; n <= Cvn73100_Channel_D15; ++n) numbers.push_back(n);
  return numbers;
}

// Binds a Channels family whose members are made by `make`: len, iteration in channel order, indexing by
// the channel's own number.
template <class Member>
void BindChannels(py::module_& m, const char* name, const char* doc) {
  using Family = Channels<Member>;
  py::class_<Family>(m, name, doc)
      .def("__len__", [](const Family& c) { return c.numbers.size(); })
      .def("__getitem__",
           [](const Family& c, std::int32_t number) {
             return Member{c.scope, c.Check(number)};
           })
      .def("__contains__",
           [](const Family& c, std::int32_t number) {
             return std::find(c.numbers.begin(), c.numbers.end(), number) != c.numbers.end();
           })
      .def("__iter__",
           [](const Family& c) {
             py::list members;
             for (std::int32_t number : c.numbers) members.append(Member{c.scope, number});
             return members.attr("__iter__")();
           })
      .def("__repr__", [name](const Family& c) {
        return std::string("<cvn73100.") + name + " " + std::to_string(c.numbers.size()) + ">";
      });
}

// A property accessor or method that talks to the instrument.
template <class Function>
py::cpp_function Waiting(Function function) {
  return py::cpp_function(std::move(function), Waits());
}

}  // namespace

void BindSubObjects(py::module_& m, ScopeClass& scope) {
  py::class_<Acquisition>(m, "Acquisition", "How the instrument acquires.")
      .def_property(
          "type", Waiting([](const Acquisition& a) { return a.scope->Acquisition().Type(); }),
          Waiting([](const Acquisition& a, Cvn73100_AcquisitionType type) { a.scope->Acquisition().SetType(type); }),
          "The AcquisitionType.")
      .def_property("count", Waiting([](const Acquisition& a) {
                      return static_cast<std::int32_t>(a.scope->Acquisition().Count());
                    }),
                    Waiting([](const Acquisition& a, std::int32_t count) {
                      a.scope->Acquisition().SetCount(static_cast<Cvn73100_AcquisitionCount>(count));
                    }),
                    "Acquisitions averaged: 1, 4, 8, 16, 32, 64, 128 or 256.");

  py::class_<AnalogChannel>(m, "AnalogChannel", "One analog channel, 1-4.")
      .def_readonly("number", &AnalogChannel::number)
      .def_property("display",
                    Waiting([](const AnalogChannel& c) { return c.scope->AnalogChannels().Display(c.Id()); }),
                    Waiting([](const AnalogChannel& c, Cvn73100_OnOffState state) {
                      c.scope->AnalogChannels().SetDisplay(c.Id(), state);
                    }),
                    "Whether the channel is displayed (OnOffState).")
      .def_property("coupling",
                    Waiting([](const AnalogChannel& c) { return c.scope->AnalogChannels().Coupling(c.Id()); }),
                    Waiting([](const AnalogChannel& c, Cvn73100_ProbeCoupling coupling) {
                      c.scope->AnalogChannels().SetCoupling(c.Id(), coupling);
                    }),
                    "The input coupling (ProbeCoupling).")
      .def_property("probe_attenuation", Waiting([](const AnalogChannel& c) {
                      return static_cast<std::int32_t>(c.scope->AnalogChannels().ProbeAttenuation(c.Id()));
                    }),
                    Waiting([](const AnalogChannel& c, std::int32_t attenuation) {
                      c.scope->AnalogChannels().SetProbeAttenuation(
                          c.Id(), static_cast<Cvn73100_ProbeAttenuation>(attenuation));
                    }),
                    "The probe attenuation: 1, 10, 20 or 100.")
      .def_property(
          "range", Waiting([](const AnalogChannel& c) { return c.scope->AnalogChannels().Range(c.Id()); }),
          Waiting([](const AnalogChannel& c, double volts) { c.scope->AnalogChannels().SetRange(c.Id(), volts); }),
          "Volts over the full screen height.")
      .def_property(
          "offset", Waiting([](const AnalogChannel& c) { return c.scope->AnalogChannels().Offset(c.Id()); }),
          Waiting([](const AnalogChannel& c, double volts) { c.scope->AnalogChannels().SetOffset(c.Id(), volts); }),
          "Volts at the centre of the screen.")
      .def("__repr__",
           [](const AnalogChannel& c) { return "<cvn73100.AnalogChannel " + std::to_string(c.number) + ">"; });

  py::class_<LogicBit>(m, "LogicBit", "One logic bit, D0-D15.")
      .def_readonly("number", &LogicBit::number)
      .def_property("display", Waiting([](const LogicBit& b) { return b.scope->LogicChannel().Display(b.Id()); }),
                    Waiting([](const LogicBit& b, Cvn73100_OnOffState state) {
                      b.scope->LogicChannel().SetDisplay(b.Id(), state);
                    }),
                    "Whether the bit is displayed (OnOffState).")
      .def("__repr__", [](const LogicBit& b) { return "<cvn73100.LogicBit D" + std::to_string(b.number) + ">"; });

  py::class_<TraceChannel>(m, "TraceChannel",
                           "One trace on the display: analog channel 1-4 or logic bit 10-25 (D0-D15).")
      .def_readonly("number", &TraceChannel::number)
      .def_property(
          "display", Waiting([](const TraceChannel& t) { return t.scope->Trace().Display(t.Id()); }),
          Waiting([](const TraceChannel& t, Cvn73100_OnOffState state) { t.scope->Trace().SetDisplay(t.Id(), state); }),
          "Whether the trace is displayed (OnOffState).")
      .def("__repr__",
           [](const TraceChannel& t) { return "<cvn73100.TraceChannel " + std::to_string(t.number) + ">"; });

  BindChannels<AnalogChannel>(m, "AnalogChannels", "The analog channels, indexed by their numbers 1-4.");
  BindChannels<LogicBit>(m, "LogicChannel", "The logic bits, indexed by their numbers 0-15 (D0-D15).");
  BindChannels<TraceChannel>(m, "Trace",
                             "The display's traces, indexed by the combined channel numbers: 1-4 the analog channels, "
                             "10-25 the logic bits D0-D15.");

  py::class_<Measure>(m, "Measure", "Measurements over the record on screen.")
      .def(
          "frequency",
          [](const Measure& x, std::int32_t channel) {
            return x.scope->Measure().Frequency(static_cast<Cvn73100_AnalogChannels>(channel));
          },
          Waits(), py::arg("channel") = 1, "Hertz; 9.9E+37 when the channel shows no periodic signal.")
      .def(
          "vpp",
          [](const Measure& x, std::int32_t channel) {
            return x.scope->Measure().VPP(static_cast<Cvn73100_AnalogChannels>(channel));
          },
          Waits(), py::arg("channel") = 1, "Volts peak to peak.")
      .def(
          "v_average",
          [](const Measure& x, std::int32_t channel) {
            return x.scope->Measure().VAverage(static_cast<Cvn73100_AnalogChannels>(channel));
          },
          Waits(), py::arg("channel") = 1, "Average volts.");

  py::class_<Timebase>(m, "Timebase", "The horizontal settings.")
      .def_property("mode", Waiting([](const Timebase& t) { return t.scope->Timebase().Mode(); }),
                    Waiting([](const Timebase& t, Cvn73100_TimeMode mode) { t.scope->Timebase().SetMode(mode); }),
                    "The TimeMode.")
      .def_property("range", Waiting([](const Timebase& t) { return t.scope->Timebase().Range(); }),
                    Waiting([](const Timebase& t, double seconds) { t.scope->Timebase().SetRange(seconds); }),
                    "Seconds over the full screen width.")
      .def_property("delay", Waiting([](const Timebase& t) { return t.scope->Timebase().Delay(); }),
                    Waiting([](const Timebase& t, double seconds) { t.scope->Timebase().SetDelay(seconds); }),
                    "Seconds from the trigger to the reference point.")
      .def_property("reference", Waiting([](const Timebase& t) { return t.scope->Timebase().Reference(); }),
                    Waiting([](const Timebase& t, Cvn73100_TimeReference reference) {
                      t.scope->Timebase().SetReference(reference);
                    }),
                    "The TimeReference.");

  py::class_<Trigger>(m, "Trigger", "The trigger settings.")
      .def_property("mode", Waiting([](const Trigger& t) { return t.scope->Trigger().Mode(); }),
                    Waiting([](const Trigger& t, Cvn73100_TriggerMode mode) { t.scope->Trigger().SetMode(mode); }),
                    "The TriggerMode.")
      .def_property(
          "source", Waiting([](const Trigger& t) { return t.scope->Trigger().Source(); }),
          Waiting([](const Trigger& t, Cvn73100_TriggerSource source) { t.scope->Trigger().SetSource(source); }),
          "The TriggerSource.")
      .def_property("slope", Waiting([](const Trigger& t) { return t.scope->Trigger().Slope(); }),
                    Waiting([](const Trigger& t, Cvn73100_TriggerSlope slope) { t.scope->Trigger().SetSlope(slope); }),
                    "The TriggerSlope.")
      .def_property("level", Waiting([](const Trigger& t) { return t.scope->Trigger().Level(); }),
                    Waiting([](const Trigger& t, double volts) { t.scope->Trigger().SetLevel(volts); }), "Volts.")
      .def_property("coupling", Waiting([](const Trigger& t) { return t.scope->Trigger().Coupling(); }),
                    Waiting([](const Trigger& t, Cvn73100_TriggerCoupling coupling) {
                      t.scope->Trigger().SetCoupling(coupling);
                    }),
                    "The TriggerCoupling.");

  py::class_<Utilities>(m, "Utilities", "The instrument's identity, reset, and its learn string.")
      .def_property_readonly(
          "manufacturer",
          [](const Utilities& u) { return Text(Wait([&] { return u.scope->Utilities().Manufacturer(); })); },
          "The first field of the \"*IDN?\" reply.")
      .def_property_readonly(
          "model", [](const Utilities& u) { return Text(Wait([&] { return u.scope->Utilities().Model(); })); },
          "The second field of the \"*IDN?\" reply.")
      .def_property_readonly(
          "serial_number",
          [](const Utilities& u) { return Text(Wait([&] { return u.scope->Utilities().SerialNumber(); })); },
          "The third field of the \"*IDN?\" reply.")
      .def_property_readonly(
          "firmware_version",
          [](const Utilities& u) { return Text(Wait([&] { return u.scope->Utilities().FirmwareVersion(); })); },
          "The fourth field of the \"*IDN?\" reply.")
      .def_property_readonly(
          "instrument_model",
          [](const Utilities& u) { return Text(Wait([&] { return u.scope->Utilities().InstrumentModel(); })); },
          "The model a set-up records.")
      .def_property_readonly(
          "instrument_firmware_version",
          [](const Utilities& u) {
            return Text(Wait([&] { return u.scope->Utilities().InstrumentFirmwareVersion(); }));
          },
          "The firmware version a set-up records.")
      .def(
          "reset_instrument", [](const Utilities& u) { u.scope->Utilities().ResetInstrument(); }, Waits(),
          "Resets the instrument (\"*RST\").")
      .def(
          "check_instrument_id", [](const Utilities& u) { return u.scope->Utilities().CheckInstrumentID(0, 0, 0); },
          Waits(), "True when the instrument is a supported model.")
      .def(
          "read_state_data",
          [](const Utilities& u) { return ToPython(Wait([&] { return u.scope->Utilities().ReadStateData(); })); },
          "The instrument's learn string: bytes that only the instrument understands.")
      .def(
          "write_state_data",
          [](const Utilities& u, const py::object& learnString) {
            const LearnString data = ToLearnString(learnString);
            Wait([&] { u.scope->Utilities().WriteStateData(data); });
          },
          py::arg("learn_string"), "Restores a learn string that read_state_data() returned.")
      .def(
          "query_instrument_error",
          [](const Utilities& u) { return Text(Wait([&] { return u.scope->Utilities().QueryInstrumentError(); })); },
          "The instrument's oldest queued error as \"<code>,<text>\"; \"\" when there is none.")
      .def(
          "drain_instrument_errors",
          [](const Utilities& u) {
            const std::vector<std::string> entries = Wait([&] { return u.scope->Utilities().DrainInstrumentErrors(); });
            py::list errors;
            for (const std::string& entry : entries) errors.append(Text(entry));
            return errors;
          },
          "Every queued error, oldest first, as \"<code>,<text>\" strings; the queue is empty afterwards.");

  scope
      .def_property_readonly(
          "acquisition", [](const ScopePtr& s) { return Acquisition{s}; }, "The Acquisition settings.")
      .def_property_readonly(
          "analog_channels",
          [](const ScopePtr& s) {
            return Channels<AnalogChannel>{s, Range(Cvn73100_Channel_1, Cvn73100_Channel_4)};
          },
          "The AnalogChannels: ``scope.analog_channels[1].range = 4.0``.")
      .def_property_readonly(
          "logic_channel",
          [](const ScopePtr& s) {
            return Channels<LogicBit>{s, Range(Cvn73100_Logic_D0, Cvn73100_Logic_D15)};
          },
          "The LogicChannel bits: ``scope.logic_channel[0].display = OnOffState.ON``.")
      .def_property_readonly(
          "measure", [](const ScopePtr& s) { return Measure{s}; }, "The Measure functions.")
      .def_property_readonly(
          "timebase", [](const ScopePtr& s) { return Timebase{s}; }, "The Timebase settings.")
      .def_property_readonly(
          "trigger", [](const ScopePtr& s) { return Trigger{s}; }, "The Trigger settings.")
      .def_property_readonly(
          "trace",
          [](const ScopePtr& s) {
            return Channels<TraceChannel>{s, TraceNumbers()};
          },
          "The display's Trace switches.")
      .def_property_readonly(
          "utilities", [](const ScopePtr& s) { return Utilities{s}; }, "The Utilities.");
}

}  // namespace cvn73100::python
