#include <pybind11/pybind11.h>

#include <cstdint>
#include <memory>
#include <string>

#include "python/src/Bindings.h"
#include "python/src/Conversions.h"

namespace cvn73100::python {
namespace {

// Python counts from 0 and from the end with negative numbers; the collection counts from 1. A position
// outside the collection stays outside, so the collection raises its own error 9 for it.
std::int32_t CollectionPosition(const SetupsCvn73100Scope& setups, std::int64_t index) {
  const std::int64_t count = setups.Count();
  if (index < 0) index += count;
  if (index < 0 || index >= count) return index < 0 ? 0 : static_cast<std::int32_t>(count + 1);
  return static_cast<std::int32_t>(index + 1);
}

// The collection by name; an unknown name is a KeyError (naming it) as well as a ScopeError.
template <class Action>
auto ByName(const std::string& name, Action action) -> decltype(action()) {
  try {
    return action();
  } catch (const ScopeError& error) {
    if (error.Number() == ERR_INVALID_PROCEDURE_CALL) RaiseScopeKeyError(error, name);
    throw;
  }
}

std::int64_t Position(py::handle key) {
  if (!PyIndex_Check(key.ptr())) throw py::type_error("set-ups are found by position (int) or by name (str)");
  return key.cast<std::int64_t>();
}

SetupRef Member(const SetupsRef& ref, const SetupsCvn73100Scope::Setup& setup) { return SetupRef{setup, ref.owner}; }

SetupRef Item(const SetupsRef& ref, py::handle key) {
  if (PyUnicode_Check(key.ptr())) {
    const std::string name = key.cast<std::string>();
    return ByName(name, [&] { return Member(ref, ref.setups->item(name)); });
  }
  return Member(ref, ref.setups->item(CollectionPosition(*ref.setups, Position(key))));
}

void Remove(const SetupsRef& ref, py::handle key) {
  if (PyUnicode_Check(key.ptr())) {
    const std::string name = key.cast<std::string>();
    ByName(name, [&] { ref.setups->Remove(name); });
    return;
  }
  ref.setups->Remove(CollectionPosition(*ref.setups, Position(key)));
}

py::list Snapshot(const SetupsRef& ref) {
  py::list members;
  for (const auto& setup : ref.setups->NewEnum()) members.append(Member(ref, setup));
  return members;
}

std::string Quoted(const std::string& text) { return "\"" + text + "\""; }

}  // namespace

void BindSetups(py::module_& m) {
  py::class_<SetupRef>(m, "Setup",
                       "One saved instrument set-up: the learn string fetched from an oscilloscope, the model and "
                       "firmware version that produced it, and the user's name and comments. It reaches the instrument "
                       "through the connection of the control that owns its collection.")
      .def(py::init([] {
             return SetupRef{std::make_shared<SetupCvn73100Scope>(), nullptr};
           }),
           "A set-up of its own, named \"Setup1\", outside any collection (for files).")
      .def_property(
          "name", [](const SetupRef& s) { return Text(s.setup->Name()); },
          [](const SetupRef& s, const std::string& name) { s.setup->SetNewName(name); },
          ("The set-up's name. Renaming keeps the key the collection found it under. " + CatalogueText(716) +
           " Such a name raises ScopeError -2147221124 and leaves the name as it was.")
              .c_str())
      .def_property(
          "comments", [](const SetupRef& s) { return Text(s.setup->Comments()); },
          [](const SetupRef& s, const std::string& comments) { s.setup->SetComments(comments); },
          ("The user's comments, stored without leading and trailing spaces. " + CatalogueText(718) +
           " Such text raises ScopeError -2147221124 and leaves the comments as they were.")
              .c_str())
      .def_property_readonly(
          "learn_string", [](const SetupRef& s) { return ToPython(s.setup->LearnString()); },
          "The instrument's saved state as bytes; None until fetched or read from a file.")
      .def_property_readonly(
          "model", [](const SetupRef& s) { return Text(s.setup->Model()); },
          "The model that produced the learn string.")
      .def_property_readonly(
          "version", [](const SetupRef& s) { return Text(s.setup->Version()); },
          "The firmware version that produced it; \"X.XX.XX\" suits every firmware of the model.")
      .def_property_readonly(
          "parent",
          [](const SetupRef& s) -> py::object {
            const auto parent = s.setup->ParentSetups();
            if (!parent) return py::none();
            return py::cast(SetupsRef{parent, s.owner});
          },
          "The Setups collection that owns the set-up, or None.")
      .def(
          "get_from_instrument", [](const SetupRef& s) { s.setup->GetFromInstrument(); }, Waits(),
          "Reads the learn string, model and firmware version from the instrument and makes this set-up the "
          "collection's last_instrument_setup. A failure leaves the set-up as it was.")
      .def(
          "send_to_instrument", [](const SetupRef& s) { s.setup->SendToInstrument(); }, Waits(),
          (CatalogueText(694) +
           " Loads the learn string into the instrument when the set-up is compatible with it; "
           "otherwise raises ScopeError -2147221487 (\"" +
           CatalogueText(691) + "\", or \"" + CatalogueText(692) + "\") and sends nothing.")
              .c_str())
      .def(
          "read_from_file", [](const SetupRef& s, py::object path) { s.setup->ReadFromFile(PathArgument(path)); },
          py::arg("path"),
          ("Loads learn string, model, version and comments from a native (.scp) or Wrenfold (.stp) set-up file. "
           "Another file raises ScopeError -2147221183 (\"" +
           CatalogueText(674) + "\"), a damaged one ScopeError -2147190467; either way nothing changes.")
              .c_str())
      .def(
          "save_to_file", [](const SetupRef& s, py::object path) { s.setup->SaveToFile(PathArgument(path)); },
          py::arg("path"),
          ("Writes the native set-up file, whole or not at all, whatever the extension. A failure raises ScopeError "
           "-2147190467 (\"" +
           CatalogueText(681) + "\").")
              .c_str())
      .def(
          "is_learn_string_compatible",
          [](const SetupRef& s, const std::string& model, const std::string& version) {
            return s.setup->IsLearnStringCompatible(model, version);
          },
          py::arg("instrument_model"), py::arg("instrument_version"),
          "True when the set-up may be sent to an instrument of this model and firmware version.")
      .def(
          "copy_from", [](const SetupRef& s, const SetupRef& source) { s.setup->Copy(*source.setup); },
          py::arg("source"), "Takes name, comments, learn string, model and version of ``source``.")
      .def("__eq__", [](const SetupRef& a, const SetupRef& b) { return a.setup == b.setup; })
      .def("__hash__", [](const SetupRef& s) { return std::hash<const void*>()(s.setup.get()); })
      .def("__repr__",
           [](const SetupRef& s) {
             return Text("<cvn73100.Setup " + Quoted(s.setup->Name()) +
                         (s.setup->Model().empty() ? "" : " " + s.setup->Model() + " " + s.setup->Version()) + ">");
           })
      .attr("WILDCARD_VERSION") = SetupCvn73100Scope::WILDCARD_VERSION;

  py::class_<SetupsRef>(m, "Setups",
                        "The control's set-ups: an ordered collection keyed by name without regard to case.\n\n"
                        "It is a Python sequence: ``len(setups)``, iteration in the order the set-ups were added, "
                        "``setups[0]`` the first and ``setups[-1]`` the last (positions count from 0 here, as "
                        "everywhere in Python), and ``setups['Name']`` by name. item() keeps the control's own "
                        "numbering, from 1.")
      .def(py::init([] {
             return SetupsRef{SetupsCvn73100Scope::Create(), nullptr};
           }),
           "A collection of its own, without an instrument connection (for files).")
      .def("__len__", [](const SetupsRef& s) { return s.setups->Count(); })
      .def(
          "__iter__", [](const SetupsRef& s) { return Snapshot(s).attr("__iter__")(); },
          "The set-ups in order, as a snapshot that stays valid while the collection changes.")
      .def(
          "__getitem__",
          [](const SetupsRef& s, py::object key) -> py::object {
            if (PySlice_Check(key.ptr())) return Snapshot(s)[key];
            return py::cast(Item(s, key));
          },
          py::arg("key"),
          "By position (from 0; negative from the end; a slice gives a list) or by name (case ignored). A position "
          "outside the collection raises ScopeIndexError (error 9), an unknown name ScopeKeyError (error 5).")
      .def("__delitem__", &Remove, py::arg("key"), "Removes by position (from 0) or by name.")
      .def(
          "__contains__",
          [](const SetupsRef& s, py::object key) {
            std::string name;
            if (py::isinstance<SetupRef>(key)) {
              const auto& member = key.cast<const SetupRef&>();
              for (const auto& setup : *s.setups)
                if (setup == member.setup) return true;
              return false;
            }
            if (!PyUnicode_Check(key.ptr())) return false;
            try {
              (void)s.setups->item(key.cast<std::string>());
              return true;
            } catch (const ScopeError& error) {
              if (error.Number() == ERR_INVALID_PROCEDURE_CALL) return false;
              throw;
            }
          },
          py::arg("key"), "Whether a set-up of this name (case ignored), or this Setup, is in the collection.")
      .def(
          "add", [](const SetupsRef& s, const std::string& name) { return Member(s, s.setups->Add(name)); },
          py::arg("name"),
          ("Appends a new set-up with an empty learn string and returns it; adding never talks to the instrument. " +
           CatalogueText(716) +
           " Such a name, or an empty one, raises ScopeError -2147221124; a name already present "
           "in any case raises ScopeError 457 (\"" +
           CatalogueText(630) + "\"). Nothing is added on failure.")
              .c_str())
      .def("remove", &Remove, py::arg("key"),
           "Removes the set-up at a position (from 0) or under a name, with the errors of indexing. Only a name "
           "spelled exactly as last_instrument_setup clears that.")
      .def(
          "item",
          [](const SetupsRef& s, py::object key) {
            if (PyUnicode_Check(key.ptr())) return Item(s, key);
            return Member(s, s.setups->item(static_cast<std::int32_t>(Position(key))));
          },
          py::arg("index"),
          "The set-up at a position counted from 1, as the control counts, or under a name. A position outside "
          "1..len raises ScopeIndexError (error 9), an unknown name ScopeKeyError (error 5).")
      .def(
          "names",
          [](const SetupsRef& s) {
            py::list names;
            for (const auto& setup : *s.setups) names.append(Text(setup->Name()));
            return names;
          },
          "The set-ups' names, in order.")
      .def(
          "copy_from", [](const SetupsRef& s, const SetupsRef& source) { s.setups->Copy(*source.setups); },
          py::arg("source"),
          "Makes this collection an independent copy of ``source``: its settings and fresh set-ups with the same "
          "contents. The instrument connection stays.")
      .def_property(
          "initial_directory", [](const SetupsRef& s) { return Text(s.setups->InitialDirectory()); },
          [](const SetupsRef& s, py::object directory) { s.setups->SetInitialDirectory(PathArgument(directory)); },
          "The folder in which the set-up file dialogs open.")
      .def_property(
          "get_learn_string_on_add", [](const SetupsRef& s) { return s.setups->GetLearnStringOnAdd(); },
          [](const SetupsRef& s, bool value) { s.setups->SetGetLearnStringOnAdd(value); },
          "Whether the Setups page fetches the learn string when it adds a set-up (saved with the properties).")
      .def_property(
          "last_instrument_setup", [](const SetupsRef& s) { return Text(s.setups->LastInstrumentSetup()); },
          [](const SetupsRef& s, const std::string& name) { s.setups->SetLastInstrumentSetup(name); },
          "The name of the set-up last fetched from or sent to the instrument.")
      .def("__eq__", [](const SetupsRef& a, const SetupsRef& b) { return a.setups == b.setups; })
      .def("__hash__", [](const SetupsRef& s) { return std::hash<const void*>()(s.setups.get()); })
      .def("__repr__", [](const SetupsRef& s) {
        std::string text = "<cvn73100.Setups [";
        bool first = true;
        for (const auto& setup : *s.setups) {
          text += (first ? "" : ", ") + Quoted(setup->Name());
          first = false;
        }
        return Text(text + "]>");
      });
}

}  // namespace cvn73100::python
