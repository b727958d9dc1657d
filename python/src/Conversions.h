#pragma once
#include <pybind11/pybind11.h>

#include <climits>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>

#include "connection/CQueryInstrument.h"
#include "control/Cvn73100Scope.h"
#include "platform/Enumerations.h"
#include "platform/ScopeError.h"
#include "platform/Variant.h"

namespace cvn73100::python {

namespace py = pybind11;

// --- Texts. ---

// A text from the control or the instrument. Valid UTF-8 (every catalogue text, every SCPI reply) comes
// through as it is; anything else is taken byte for byte (Latin-1), so a garbled reply can still be printed.
py::str Text(const std::string& text);
// A Python str as UTF-8, or bytes as they are.
std::string TextArgument(py::handle value);

// --- Values. ---

py::bytes ToPyBytes(const Bytes& bytes);
// bytes, bytearray, memoryview or any object with the buffer protocol.
Bytes ToBytes(py::handle value);
// None or bytes.
py::object ToPython(const LearnString& learnString);
LearnString ToLearnString(py::handle value);
// Empty -> None, Boolean -> bool, Integer/Long -> int, Double -> float, String -> str, ByteArray -> bytes,
// DoubleArray and Array -> list.
py::object ToPython(const Variant& value);
// The reverse; an int is a Long when it fits in 32 bits and a Double otherwise. Any other object raises
// the type-mismatch error (13).
Variant ToVariant(py::handle value);

// A path given as str or os.PathLike.
std::string PathArgument(py::handle path);

// --- Errors. ---

// The module's error classes (cvn73100._types), looked up once at import.
void LoadErrorClasses();
// Raises `error` as a Python ScopeError, of the subclass its number calls for (ScopeIndexError for error 9,
// ScopeTimeoutError for a timeout, ...).
[[noreturn]] void RaiseScopeError(const ScopeError& error);
// Raises `error` as ScopeKeyError naming `key`: the collection's answer to an unknown name.
[[noreturn]] void RaiseScopeKeyError(const ScopeError& error, const std::string& key);
// Turns every ScopeError that leaves a binding into the Python class.
void RegisterErrorTranslator();

// Python callables kept by C++ objects (event handlers, the host's hook) are released with the GIL held,
// whichever thread drops the last copy of the std::function that holds them.
std::shared_ptr<py::object> KeepCallable(py::object callable);

// A Python callback raised an exception inside C++ work that cannot stop: report it the way Python reports
// errors in __del__ and go on.
void ReportUnraisable(py::error_already_set& error, const char* where);

// --- Enumerations as Python IntEnum classes. ---

// The support-message mode's bits (CDebug::MODE_*) as a type of their own, for SupportMessageMode.
enum SupportMessageModeFlag : std::int32_t {};

// The Python class that stands for the C++ enumeration E; set once by MakeEnum.
template <class E>
struct EnumClass {
  static inline PyObject* cls = nullptr;
};

// Creates enum.IntEnum (or IntFlag) `name` in `module` with `members` (PEP 8 names, the system's values) and
// makes it the face of E in every binding.
template <class E>
void MakeEnum(py::module_& module, const char* name, std::initializer_list<std::pair<const char*, E>> members,
              const char* doc, const char* base = "IntEnum") {
  py::list pairs;
  for (const auto& [memberName, value] : members)
    pairs.append(py::make_tuple(memberName, static_cast<long long>(value)));
  py::object cls = py::module_::import("enum").attr(base)(name, pairs, py::arg("module") = module.attr("__name__"));
  cls.attr("__doc__") = doc;
  cls.attr("__qualname__") = name;
  module.attr(name) = cls;
  // Kept for the life of the process: the casters may run during interpreter shutdown.
  EnumClass<E>::cls = cls.release().ptr();
}

// A member of E's Python class for `value`; a plain int for a value the class does not list (an instrument
// may answer one).
template <class E>
py::object EnumValue(E value) {
  const auto number = static_cast<long long>(value);
  if (!EnumClass<E>::cls) return py::int_(number);
  try {
    return py::reinterpret_borrow<py::object>(EnumClass<E>::cls)(number);
  } catch (py::error_already_set&) {
    return py::int_(number);
  }
}

// Reads an int that fits in 32 bits: an IntEnum member, a plain int, or a bool (display = True is ON).
bool LoadEnumNumber(py::handle src, std::int32_t& number);

}  // namespace cvn73100::python

// Each enumeration crosses as an int going in and as a member of its IntEnum class coming out; NAME is the
// class's name in signatures.
#define CVN_PY_INT_ENUM(E, NAME)                                                                                     \
  namespace pybind11::detail {                                                                                       \
  template <>                                                                                                        \
  struct type_caster<E> {                                                                                            \
    PYBIND11_TYPE_CASTER(E, const_name(NAME));                                                                       \
    bool load(handle src, bool) {                                                                                    \
      std::int32_t number = 0;                                                                                       \
      if (!cvn73100::python::LoadEnumNumber(src, number)) return false;                                              \
      value = static_cast<E>(number);                                                                                \
      return true;                                                                                                   \
    }                                                                                                                \
    static handle cast(E src, return_value_policy, handle) { return cvn73100::python::EnumValue<E>(src).release(); } \
  };                                                                                                                 \
  }

CVN_PY_INT_ENUM(cvn73100::Cvn73100_CountryCode, "Language")
CVN_PY_INT_ENUM(cvn73100::Cvn73100_AcquisitionType, "AcquisitionType")
CVN_PY_INT_ENUM(cvn73100::Cvn73100_OnOffState, "OnOffState")
CVN_PY_INT_ENUM(cvn73100::Cvn73100_ProbeCoupling, "ProbeCoupling")
CVN_PY_INT_ENUM(cvn73100::Cvn73100_ImageFormat, "ImageFormat")
CVN_PY_INT_ENUM(cvn73100::Cvn73100_TimeMode, "TimeMode")
CVN_PY_INT_ENUM(cvn73100::Cvn73100_TimeReference, "TimeReference")
CVN_PY_INT_ENUM(cvn73100::Cvn73100_TriggerMode, "TriggerMode")
CVN_PY_INT_ENUM(cvn73100::Cvn73100_TriggerSource, "TriggerSource")
CVN_PY_INT_ENUM(cvn73100::Cvn73100_TriggerSlope, "TriggerSlope")
CVN_PY_INT_ENUM(cvn73100::Cvn73100_TriggerCoupling, "TriggerCoupling")
CVN_PY_INT_ENUM(cvn73100::IDNQueryResult, "IDNQueryResult")
