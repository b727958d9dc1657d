#include "python/src/Conversions.h"

#include <cmath>
#include <cstring>
#include <unordered_map>

#include "platform/InstrumentIO.h"
#include "server/ServerError.h"

namespace cvn73100::python {
namespace {

// The Python class of each error number that is also one of Python's standard errors; every other number is a
// plain ScopeError.
const std::unordered_map<std::int32_t, const char*>& ErrorClassNames() {
  static const std::unordered_map<std::int32_t, const char*> names{
      {ERR_SUBSCRIPT_OUT_OF_RANGE, "ScopeIndexError"},
      {ERR_INVALID_PROCEDURE_CALL, "ScopeValueError"},
      {ERR_TYPE_MISMATCH, "ScopeTypeError"},
      {ERR_DUPLICATE_KEY, "ScopeValueError"},
      {ObjectError(ERR_INVALID_PROPERTY_VALUE), "ScopeValueError"},
      {ObjectError(IOERR_TIMEOUT), "ScopeTimeoutError"},
      {ObjectError(IOERR_DEVICE_VANISHED), "ScopeConnectionError"},
      {ObjectError(IOERR_NO_LISTENER), "ScopeConnectionError"},
      {ObjectError(IOERR_OPEN_FAILED), "ScopeIOError"},
      {ObjectError(IOERR_IO_FAILURE), "ScopeIOError"},
      {ObjectError(IOERR_BAD_ARGUMENT), "ScopeValueError"},
      {ObjectError(IOERR_CLOSED), "ScopeConnectionError"},
      {ObjectError(server::SERVERERR_NOT_CONNECTED), "ScopeConnectionError"},
      {ObjectError(server::SERVERERR_BAD_ADDRESS), "ScopeValueError"},
      {ObjectError(server::SERVERERR_BAD_ARGUMENT), "ScopeValueError"},
      {ObjectError(server::SERVERERR_FILE), "ScopeIOError"},
  };
  return names;
}

// Borrowed for the life of the process, like the enumeration classes.
PyObject* g_scopeError = nullptr;
PyObject* g_scopeKeyError = nullptr;
std::unordered_map<std::int32_t, PyObject*> g_errorClasses;

constexpr int MAX_VARIANT_DEPTH = 8;

bool IsUtf8(const std::string& text) {
  std::size_t i = 0;
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
  while (i < text.size()) {
    const unsigned char lead = bytes[i];
    std::size_t length = 0;
    if (lead < 0x80)
      length = 1;
    else if ((lead & 0xE0) == 0xC0 && lead >= 0xC2)
      length = 2;
    else if ((lead & 0xF0) == 0xE0)
      length = 3;
    else if ((lead & 0xF8) == 0xF0 && lead <= 0xF4)
      length = 4;
    else
      return false;
    if (i + length > text.size()) return false;
    for (std::size_t k = 1; k < length; ++k)
      if ((bytes[i + k] & 0xC0) != 0x80) return false;
    i += length;
  }
  return true;
}

Variant ToVariantAt(py::handle value, int depth) {
  if (depth > MAX_VARIANT_DEPTH) throw RuntimeError(ERR_TYPE_MISMATCH);
  if (value.is_none()) return Variant();
  if (PyBool_Check(value.ptr())) return Variant(value.cast<bool>());
  if (PyLong_Check(value.ptr())) {
    int overflow = 0;
    const long long number = PyLong_AsLongLongAndOverflow(value.ptr(), &overflow);
    if (overflow == 0 && number >= INT32_MIN && number <= INT32_MAX) return Variant(static_cast<std::int32_t>(number));
    return Variant(PyLong_AsDouble(value.ptr()));
  }
  if (PyFloat_Check(value.ptr())) return Variant(value.cast<double>());
  if (PyUnicode_Check(value.ptr())) return Variant(value.cast<std::string>());
  if (PyBytes_Check(value.ptr()) || PyByteArray_Check(value.ptr()) || PyMemoryView_Check(value.ptr()))
    return Variant(ToBytes(value));
  if (PyList_Check(value.ptr()) || PyTuple_Check(value.ptr()) || py::hasattr(value, "tolist")) {
    // NumPy arrays arrive as lists of Python numbers.
    const py::object sequence =
        py::hasattr(value, "tolist") ? value.attr("tolist")() : py::reinterpret_borrow<py::object>(value);
    if (!PyList_Check(sequence.ptr()) && !PyTuple_Check(sequence.ptr())) return ToVariantAt(sequence, depth + 1);
    Variant::Array items;
    for (py::handle item : sequence) items.push_back(ToVariantAt(item, depth + 1));
    return Variant(std::move(items));
  }
  throw RuntimeError(ERR_TYPE_MISMATCH);
}

[[noreturn]] void RaiseAs(PyObject* cls, const ScopeError& error, py::object key = py::none()) {
  if (!cls) throw py::type_error(error.what());
  py::object instance = py::reinterpret_borrow<py::object>(cls)(error.Number(), Text(error.Source()),
                                                                Text(error.Description()), Text(error.HelpFile()));
  if (!key.is_none()) instance.attr("key") = key;
  PyErr_SetObject(cls, instance.ptr());
  throw py::error_already_set();
}

}  // namespace

py::str Text(const std::string& text) {
  if (IsUtf8(text)) return py::str(text);
  PyObject* decoded = PyUnicode_DecodeLatin1(text.data(), static_cast<Py_ssize_t>(text.size()), nullptr);
  if (!decoded) throw py::error_already_set();
  return py::reinterpret_steal<py::str>(decoded);
}

std::string TextArgument(py::handle value) {
  if (PyBytes_Check(value.ptr()) || PyByteArray_Check(value.ptr())) {
    const Bytes bytes = ToBytes(value);
    return std::string(bytes.begin(), bytes.end());
  }
  return value.cast<std::string>();
}

py::bytes ToPyBytes(const Bytes& bytes) { return py::bytes(reinterpret_cast<const char*>(bytes.data()), bytes.size()); }

Bytes ToBytes(py::handle value) {
  if (PyUnicode_Check(value.ptr())) throw py::type_error("expected bytes, bytearray or memoryview, not str");
  Py_buffer view;
  if (PyObject_GetBuffer(value.ptr(), &view, PyBUF_SIMPLE) != 0) throw py::error_already_set();
  Bytes bytes(static_cast<const std::uint8_t*>(view.buf), static_cast<const std::uint8_t*>(view.buf) + view.len);
  PyBuffer_Release(&view);
  return bytes;
}

py::object ToPython(const LearnString& learnString) {
  if (!learnString) return py::none();
  return ToPyBytes(*learnString);
}

LearnString ToLearnString(py::handle value) {
  if (value.is_none()) return std::nullopt;
  return ToBytes(value);
}

py::object ToPython(const Variant& value) {
  switch (value.GetType()) {
    case Variant::Type::Empty:
      return py::none();
    case Variant::Type::Boolean:
      return py::bool_(value.AsBool());
    case Variant::Type::Integer:
    case Variant::Type::Long:
      return py::int_(value.AsLong());
    case Variant::Type::Double:
      return py::float_(value.AsDouble());
    case Variant::Type::String:
      return Text(value.AsString());
    case Variant::Type::ByteArray:
      return ToPyBytes(value.AsBytes());
    case Variant::Type::DoubleArray: {
      py::list list;
      for (double d : value.AsDoubles()) list.append(d);
      return list;
    }
    case Variant::Type::Array: {
      py::list list;
      for (const Variant& item : value.AsArray()) list.append(ToPython(item));
      return list;
    }
  }
  return py::none();
}

Variant ToVariant(py::handle value) { return ToVariantAt(value, 0); }

std::string PathArgument(py::handle path) {
  // os.fspath gives str or bytes; both convert.
  return py::module_::import("os").attr("fspath")(path).cast<std::string>();
}

void LoadErrorClasses() {
  const py::module_ types = py::module_::import("cvn73100._types");
  g_scopeError = py::object(types.attr("ScopeError")).release().ptr();
  g_scopeKeyError = py::object(types.attr("ScopeKeyError")).release().ptr();
  for (const auto& [number, name] : ErrorClassNames())
    g_errorClasses[number] = py::object(types.attr(name)).release().ptr();
}

void RaiseScopeError(const ScopeError& error) {
  const auto found = g_errorClasses.find(error.Number());
  RaiseAs(found == g_errorClasses.end() ? g_scopeError : found->second, error);
}

void RaiseScopeKeyError(const ScopeError& error, const std::string& key) { RaiseAs(g_scopeKeyError, error, Text(key)); }

void RegisterErrorTranslator() {
  // pybind11 takes the translator only with this exact signature.
  py::register_exception_translator([](std::exception_ptr pointer) {  // NOLINT(performance-unnecessary-value-param)
    if (!pointer) return;
    try {
      std::rethrow_exception(pointer);
    } catch (const ScopeError& error) {
      try {
        RaiseScopeError(error);
      } catch (py::error_already_set& raised) {
        // The translator reports by leaving the Python error set.
        raised.restore();
      }
    }
  });
}

std::shared_ptr<py::object> KeepCallable(py::object callable) {
  return std::shared_ptr<py::object>(new py::object(std::move(callable)), [](py::object* object) {
    py::gil_scoped_acquire gil;
    delete object;
  });
}

void ReportUnraisable(py::error_already_set& error, const char* where) { error.discard_as_unraisable(where); }

bool LoadEnumNumber(py::handle src, std::int32_t& number) {
  if (!src || !PyLong_Check(src.ptr())) return false;
  int overflow = 0;
  const long long value = PyLong_AsLongLongAndOverflow(src.ptr(), &overflow);
  if (value == -1 && PyErr_Occurred()) {
    PyErr_Clear();
    return false;
  }
  if (overflow != 0 || value < INT32_MIN || value > INT32_MAX) return false;
  number = static_cast<std::int32_t>(value);
  return true;
}

}  // namespace cvn73100::python
