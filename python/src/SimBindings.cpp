#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "iolib/BoardMap.h"
#include "python/src/Bindings.h"
#include "python/src/Conversions.h"
#include "simulator/Instrument.h"
#include "simulator/InstrumentPort.h"
#include "simulator/PtyServer.h"
#include "simulator/SimulatedBus.h"
#include "simulator/Waveform.h"

// cvn73100.sim: simulated instruments a script starts on the process's simulated GPIB bus or on a
// pseudo-terminal, and the formulas of their signals.
namespace cvn73100::python {
namespace {

using sim::Instrument;
using sim::Waveform;

// --- The signals. ---

// `f` over a number or any array of numbers, keeping the shape.
template <class Result, class F>
py::object OverSeconds(py::handle seconds, F f) {
  if (PyFloat_Check(seconds.ptr()) || PyLong_Check(seconds.ptr())) return py::cast(f(seconds.cast<double>()));
  const auto in = py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(seconds);
  if (!in) throw py::error_already_set();
  py::array_t<Result> out(std::vector<py::ssize_t>(in.shape(), in.shape() + in.ndim()));
  const double* from = in.data();
  Result* to = out.mutable_data();
  for (py::ssize_t i = 0; i < in.size(); ++i) to[i] = f(from[i]);
  return out;
}

void CheckChannel(int channel) {
  if (channel < 1 || channel > 4) throw py::index_error("analog channels are 1-4");
}

// --- Instruments. ---

// The four fields of "--idn": up to four comma-separated fields, fewer giving the shorter replies.
sim::Identity ParseIdn(const std::string& text) {
  sim::Identity identity{"", "", "", ""};
  std::string* fields[] = {&identity.manufacturer, &identity.model, &identity.serial, &identity.firmware};
  std::string rest = text;
  bool more = true;
  for (int i = 0; i < 4 && more; ++i) {
    const std::size_t comma = i < 3 ? rest.find(',') : std::string::npos;
    *fields[i] = rest.substr(0, comma);
    more = comma != std::string::npos;
    if (more) rest = rest.substr(comma + 1);
  }
  return identity;
}

std::shared_ptr<Instrument> MakeInstrument(std::optional<std::string> idn, std::optional<std::string> manufacturer,
                                           std::optional<std::string> model, std::optional<std::string> serial,
                                           std::optional<std::string> firmware, bool silent, bool garbage,
                                           bool dropMidBlock, int lateReplyMs, int lineBaud) {
  sim::InstrumentConfig config;
  if (idn) config.identity = ParseIdn(*idn);
  if (manufacturer) config.identity.manufacturer = *manufacturer;
  if (model) config.identity.model = *model;
  if (serial) config.identity.serial = *serial;
  if (firmware) config.identity.firmware = *firmware;
  config.faults.silent = silent;
  config.faults.garbage = garbage;
  config.faults.dropMidBlock = dropMidBlock;
  config.faults.lateReplyMs = std::max(lateReplyMs, 0);
  config.faults.lineBaud = std::max(lineBaud, 0);
  return std::make_shared<Instrument>(config);
}

template <class Field>
void SetFault(Instrument& instrument, Field sim::Faults::*field, Field value) {
  sim::Faults faults = instrument.Config().faults;
  faults.*field = value;
  instrument.SetFaults(faults);
}

std::chrono::milliseconds Milliseconds(double seconds) {
  return std::chrono::milliseconds(static_cast<long long>(std::max(seconds, 0.0) * 1000.0));
}

// --- Running instruments. ---

// An instrument placed on the process's simulated bus; stopping puts back what was at its address.
struct BusRun {
  std::shared_ptr<sim::SimulatedBus> bus;
  int board = 0;
  int address = 0;
  std::shared_ptr<Instrument> instrument;
  std::shared_ptr<Instrument> previous;
  bool running = true;
  void Stop() {
    if (!running) return;
    running = false;
    if (previous)
      bus->Attach(address, previous);
    else
      bus->Detach(address);
  }
};

// An instrument served as an RS-232 instrument on a new pseudo-terminal.
struct PtyRun {
  std::shared_ptr<Instrument> instrument;
  std::unique_ptr<sim::InstrumentPort> port;
  std::unique_ptr<sim::PtyServer> server;
  std::string path;
  int comPort = 0;
  py::object previousEnvironment;  // the CVN73100_COMn value before start, None when unset
  bool running = true;
  void Stop() {
    if (!running) return;
    running = false;
    server.reset();
    port.reset();
    if (comPort != 0) {
      const py::object environ = py::module_::import("os").attr("environ");
      const std::string key = "CVN73100_COM" + std::to_string(comPort);
      if (previousEnvironment.is_none())
        environ.attr("pop")(key, py::none());
      else
        environ[py::str(key)] = previousEnvironment;
    }
  }
};

// Every instrument started and not stopped: they run until stop() or the end of the interpreter, whether or not
// the script kept the handle.
std::vector<std::shared_ptr<BusRun>>& BusRuns() {
  static auto* runs = new std::vector<std::shared_ptr<BusRun>>();
  return *runs;
}
std::vector<std::shared_ptr<PtyRun>>& PtyRuns() {
  static auto* runs = new std::vector<std::shared_ptr<PtyRun>>();
  return *runs;
}

template <class Run>
void Forget(std::vector<std::shared_ptr<Run>>& runs, const std::shared_ptr<Run>& run) {
  run->Stop();
  std::erase(runs, run);
}

void StopAll() {
  // Newest first, so that instruments started at the same address put back the oldest one last.
  while (!PtyRuns().empty()) Forget(PtyRuns(), PtyRuns().back());
  while (!BusRuns().empty()) Forget(BusRuns(), BusRuns().back());
}

// As the controls made now will see it: the board map is read from the config file and the environment.
bool LeadsToSimulatedBus(int board) {
  return io::BoardMap::Load().Gpib(board).kind == io::BoardMap::GpibKind::Simulated;
}

std::string GpibResource(int board, int address) {
  return "GPIB" + std::to_string(board) + "::" + std::to_string(address) + "::INSTR";
}

std::shared_ptr<Instrument> GivenOrNew(py::object instrument, const py::kwargs& options) {
  if (!instrument.is_none()) {
    if (options.size() != 0) throw py::type_error("give either an Instrument or its options, not both");
    return instrument.cast<std::shared_ptr<Instrument>>();
  }
  return py::type::of<Instrument>()(**options).cast<std::shared_ptr<Instrument>>();
}

const char* OPTIONS_DOC =
    "``idn`` sets the four fields at once (fewer fields give the shorter replies: \"73135D\" answers without a "
    "comma, \"\" answers an empty line); ``manufacturer``, ``model``, ``serial`` and ``firmware`` set one each "
    "(default \"Corvane Technologies,73135D,QX40001234,A.02.10\"). Faults: ``silent`` (never answers), "
    "``garbage`` (answers every query with bytes and no comma), ``drop_mid_block`` (block replies stop half-way), "
    "``late_reply_ms`` (replies become readable that long after the query), ``line_baud`` (reply bytes leave at "
    "that baud rate).";

}  // namespace

void BindSim(py::module_& s) {
  s.def(
      "signal_volts",
      [](int channel, py::object seconds) {
        CheckChannel(channel);
        return OverSeconds<double>(seconds, [channel](double t) { return Waveform::SignalVolts(channel, t); });
      },
      py::arg("channel"), py::arg("seconds"),
      "Volts at the probe tip of analog channel 1-4, ``seconds`` after the trigger (a number or an array of them): "
      "channel 1 a 1 kHz sine of 1 V peak, channel 2 a 2 kHz square between 0 V and 1 V, channel 3 a 500 Hz ramp "
      "from -1 V to +1 V, channel 4 uniform noise of 0.2 V peak drawn from a fixed seed by the time itself.");
  s.def(
      "signal_hz",
      [](int channel) {
        CheckChannel(channel);
        return Waveform::SignalHz(channel);
      },
      py::arg("channel"), "The repetition frequency of a channel's signal; 0 for the noise.");
  s.def(
      "logic_word",
      [](py::object seconds) {
        return OverSeconds<std::uint16_t>(seconds, [](double t) { return Waveform::LogicWord(t); });
      },
      py::arg("seconds"), "The 16 logic bits at ``seconds``: a binary counter clocked at 100 kHz.");

  py::class_<Instrument, std::shared_ptr<Instrument>>(
      s, "Instrument",
      (std::string("A simulated 73100 oscilloscope: four analog channels and 16 logic bits that speak IEEE 488.2 "
                   "and SCPI. ") +
       OPTIONS_DOC)
          .c_str())
      .def(py::init(&MakeInstrument), py::kw_only(), py::arg("idn") = py::none(), py::arg("manufacturer") = py::none(),
           py::arg("model") = py::none(), py::arg("serial") = py::none(), py::arg("firmware") = py::none(),
           py::arg("silent") = false, py::arg("garbage") = false, py::arg("drop_mid_block") = false,
           py::arg("late_reply_ms") = 0, py::arg("line_baud") = 0)
      .def_property(
          "idn", [](const Instrument& i) { return Text(i.Config().identity.Reply()); },
          [](Instrument& i, const std::string& idn) { i.SetIdentity(ParseIdn(idn)); },
          "The \"*IDN?\" reply; setting it sets the four fields.")
      .def_property(
          "identity",
          [](const Instrument& i) {
            const sim::Identity id = i.Config().identity;
            return py::make_tuple(Text(id.manufacturer), Text(id.model), Text(id.serial), Text(id.firmware));
          },
          [](Instrument& i, const std::tuple<std::string, std::string, std::string, std::string>& id) {
            i.SetIdentity(sim::Identity{std::get<0>(id), std::get<1>(id), std::get<2>(id), std::get<3>(id)});
          },
          "(manufacturer, model, serial, firmware).")
      .def_property(
          "silent", [](const Instrument& i) { return i.Config().faults.silent; },
          [](Instrument& i, bool value) { SetFault(i, &sim::Faults::silent, value); }, "Never answers.")
      .def_property(
          "garbage", [](const Instrument& i) { return i.Config().faults.garbage; },
          [](Instrument& i, bool value) { SetFault(i, &sim::Faults::garbage, value); },
          "Answers every query with bytes and no comma.")
      .def_property(
          "drop_mid_block", [](const Instrument& i) { return i.Config().faults.dropMidBlock; },
          [](Instrument& i, bool value) { SetFault(i, &sim::Faults::dropMidBlock, value); },
          "Block replies stop half-way.")
      .def_property(
          "late_reply_ms", [](const Instrument& i) { return i.Config().faults.lateReplyMs; },
          [](Instrument& i, int value) { SetFault(i, &sim::Faults::lateReplyMs, std::max(value, 0)); },
          "Replies become readable this long after their query.")
      .def_property(
          "line_baud", [](const Instrument& i) { return i.Config().faults.lineBaud; },
          [](Instrument& i, int value) { SetFault(i, &sim::Faults::lineBaud, std::max(value, 0)); },
          "Reply bytes leave at this baud rate; 0 unpaced.")
      .def(
          "send", [](Instrument& i, const std::string& message) { i.Send(message); }, py::arg("message"),
          "Writes a whole program message to the instrument, as a host on its bus would.")
      .def(
          "query",
          [](Instrument& i, const std::string& message, double timeout) {
            return Text(Wait([&] { return i.Query(message, Milliseconds(timeout)); }));
          },
          py::arg("message"), py::arg("timeout") = 2.0,
          "Writes a program message and reads one reply (seconds of ``timeout``); \"\" when none came.")
      .def("device_clear", &Instrument::DeviceClear, "Drops the input and output queues, as a GPIB device clear.")
      .def("errors", &Instrument::Errors, "The error queue's numbers, oldest first.")
      .def(
          "channel_volts",
          [](const Instrument& i, int channel, py::object seconds) {
            CheckChannel(channel);
            const sim::ScopeState state = i.State();
            return OverSeconds<double>(
                seconds, [&state, channel](double t) { return Waveform::ChannelVolts(state, channel, t); });
          },
          py::arg("channel"), py::arg("seconds"),
          "The signal as the channel's present settings show it: GND coupling reads 0 V, AC coupling removes the "
          "mean, averaging divides the noise by the square root of the count.")
      .def("__repr__",
           [](const Instrument& i) { return Text("<cvn73100.sim.Instrument " + i.Config().identity.Reply() + ">"); });

  py::class_<BusRun, std::shared_ptr<BusRun>>(s, "BusInstrument",
                                              "An instrument started on the simulated GPIB bus (sim.start).")
      .def_readonly("instrument", &BusRun::instrument)
      .def_readonly("board", &BusRun::board)
      .def_readonly("address", &BusRun::address)
      .def_property_readonly(
          "resource", [](const BusRun& r) { return GpibResource(r.board, r.address); },
          "The instrument address to give Scope.address.")
      .def_readonly("running", &BusRun::running)
      .def(
          "stop", [](const std::shared_ptr<BusRun>& r) { Forget(BusRuns(), r); },
          "Takes the instrument off the bus and puts back the one that was at its address; later calls do nothing.")
      .def("__enter__", [](py::object self) { return self; })
      .def("__exit__", [](const std::shared_ptr<BusRun>& r, py::args) { Forget(BusRuns(), r); })
      .def("__repr__", [](const BusRun& r) {
        return "<cvn73100.sim.BusInstrument " + GpibResource(r.board, r.address) + (r.running ? "" : " stopped") + ">";
      });

  py::class_<PtyRun, std::shared_ptr<PtyRun>>(s, "PtyInstrument",
                                              "An instrument served on a pseudo-terminal (sim.start_pty).")
      .def_readonly("instrument", &PtyRun::instrument)
      .def_readonly("device_path", &PtyRun::path, "The serial device node, e.g. \"/dev/pts/5\".")
      .def_property_readonly(
          "com_port", [](const PtyRun& r) -> py::object { return r.comPort ? py::cast(r.comPort) : py::none(); },
          "The COM port that leads to it in this process, or None.")
      .def_readonly("running", &PtyRun::running)
      .def(
          "stop", [](const std::shared_ptr<PtyRun>& r) { Forget(PtyRuns(), r); },
          "Closes the pseudo-terminal and gives the COM port its previous mapping back; later calls do nothing.")
      .def("__enter__", [](py::object self) { return self; })
      .def("__exit__", [](const std::shared_ptr<PtyRun>& r, py::args) { Forget(PtyRuns(), r); })
      .def("__repr__", [](const PtyRun& r) {
        return "<cvn73100.sim.PtyInstrument " + r.path + (r.running ? "" : " stopped") + ">";
      });

  s.def(
      "start",
      [](int address, int board, py::object instrument, py::kwargs options) {
        if (address < 0 || address > 30) throw py::value_error("GPIB addresses are 0-30");
        if (board < 0 || board > 3) throw py::value_error("GPIB boards are 0-3");
        if (!LeadsToSimulatedBus(board))
          throw py::value_error("GPIB" + std::to_string(board) + " does not lead to the simulated bus here (" +
                                io::BoardMap::DescribeGpib(io::BoardMap::Load().Gpib(board)) + "); map it with GPIB" +
                                std::to_string(board) + " = sim");
        auto run = std::make_shared<BusRun>();
        run->bus = sim::SimulatedBus::Shared(board);
        run->board = board;
        run->address = address;
        run->instrument = GivenOrNew(std::move(instrument), options);
        run->previous = run->bus->Listener(address);
        run->bus->Attach(address, run->instrument);
        BusRuns().push_back(run);
        return run;
      },
      py::arg("address") = 7, py::kw_only(), py::arg("board") = 0, py::arg("instrument") = py::none(),
      (std::string(
           "Places a simulated instrument at ``address`` on the process's simulated GPIB bus (GPIB0 when no I/O "
           "configuration exists) and returns its BusInstrument; ``resource`` is its address. It replaces the "
           "instrument there until stop(). Give an Instrument, or the options of a new one. ") +
       OPTIONS_DOC)
          .c_str());

  s.def(
      "start_pty",
      [](py::object comPortArgument, py::object instrument, py::kwargs options) {
        // An int or None (py::object: GCC misreads an optional<int> argument as maybe uninitialised).
        const int comPort = comPortArgument.is_none() ? 0 : comPortArgument.cast<int>();
        if (!comPortArgument.is_none() && (comPort < 1 || comPort > 4)) throw py::value_error("COM ports are 1-4");
        auto run = std::make_shared<PtyRun>();
        run->instrument = GivenOrNew(std::move(instrument), options);
        run->port = std::make_unique<sim::InstrumentPort>(*run->instrument, sim::InstrumentPort::Line::Serial);
        run->server = std::make_unique<sim::PtyServer>(*run->port);
        run->path = run->server->DevicePath();
        if (comPort != 0) {
          const py::object environ = py::module_::import("os").attr("environ");
          const std::string key = "CVN73100_COM" + std::to_string(comPort);
          run->previousEnvironment = environ.attr("get")(key);
          environ[py::str(key)] = run->path;
          run->comPort = comPort;
        }
        PtyRuns().push_back(run);
        return run;
      },
      py::kw_only(), py::arg("com_port") = py::none(), py::arg("instrument") = py::none(),
      (std::string("Serves a simulated instrument as an RS-232 instrument on a new pseudo-terminal and returns its "
                   "PtyInstrument; ``device_path`` is the node. With ``com_port`` (1-4) that COM port leads to it for "
                   "the controls created afterwards in this process (CVN73100_COM<n>), until stop(). ") +
       OPTIONS_DOC)
          .c_str());

  s.def(
      "bus_instrument",
      [](int address, int board) -> std::shared_ptr<Instrument> {
        if (board < 0 || board > 3) throw py::value_error("GPIB boards are 0-3");
        if (!LeadsToSimulatedBus(board)) return nullptr;
        return sim::SimulatedBus::Shared(board)->Listener(address);
      },
      py::arg("address") = 7, py::kw_only(), py::arg("board") = 0,
      "The instrument at ``address`` on the simulated bus behind GPIB<board>, or None (also when that board leads "
      "elsewhere). Without an I/O configuration GPIB0 holds three: 3 a 731xx model the control does not support, 7 "
      "a supported 73135D, 12 another instrument family.");
  s.def(
      "running",
      [] {
        py::list runs;
        for (const auto& run : BusRuns()) runs.append(run);
        for (const auto& run : PtyRuns()) runs.append(run);
        return runs;
      },
      "The instruments started and not stopped.");
  s.def("stop_all", &StopAll, "Stops every instrument started; also done when the interpreter ends.");
  py::module_::import("atexit").attr("register")(py::cpp_function(&StopAll));
}

}  // namespace cvn73100::python
