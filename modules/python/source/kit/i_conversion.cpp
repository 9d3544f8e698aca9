// Between the host's tagged values and Python objects.

#include "kit/i_conversion.h"

#include <cstring>
#include <string_view>
#include <utility>

#include "interpreter/lib_python_lock.h"
#include "kelvar/basetime.h"
#include "kelvar/link.h"
#include "kelvar/text.h"
#include "kit/i_errors.h"
#include "kit/i_lasting.h"
#include "kit/i_present.h"
#include "kit/i_valueletters.h"
#include "scene/geometry.h"
#include "scene/scene.h"
#include "values/values.h"

namespace qlx {
namespace {

// By place; null where no wrapper is bound.
constinit const CustomDataEntry* g_customEntries[std::size(kCustomTypes)] = {};

PyObject* LinkToPython(HostLink link, const BaseDocument* document) {
  QLXAtom* atom = LookUpIn(link, document);
  return atom ? WrapHostObject(atom, false) : NewNone();
}

PyObject* ContainerToPython(const HostGeData& data) {
  const BaseContainer* container = kelvar::gedata::GetContainer(&data);
  BaseContainer* copy = container ? container->GetClone() : nullptr;
  return copy ? NewBaseContainer(copy, true, false, nullptr) : PyErr_NoMemory();  // the record frees the copy
}

PyObject* CustomToPython(const HostGeData& data) {
  for (size_t i = 0; i < std::size(kCustomTypes); ++i)
    if (kCustomTypes[i] == data.type && g_customEntries[i]) return g_customEntries[i]->toPython(data);
  return RaiseUnknownParameterType();
}

PyObject* Vector4dToPython(const HostGeData& data) {
  const auto* value = GeData::CustomOf<Vector4d>(data);
  return value ? NewVector4d(*value) : nullptr;
}

PyObject* ColorToPython(const HostGeData& data) {
  const auto* color = GeData::CustomOf<ColorA>(data);
  return color ? NewVector4d({color->r, color->g, color->b, color->a}) : nullptr;
}

Lasting<KeptReference> g_uuidModule;

// The module, borrowed; null when it is not kept yet and no script has imported it.
PyObject* KnownUuidModule() {
  if (*g_uuidModule) return g_uuidModule->Get();
  PyObject* module = PyDict_GetItemString(PyImport_GetModuleDict(), "uuid");
  if (!module || !PyModule_Check(module)) return nullptr;
  Py_INCREF(module);
  *g_uuidModule = KeptReference::Adopt(module);
  return module;
}

bool IsUuid(PyObject* object) {
  PyObject* module = KnownUuidModule();
  PyObject* type = module ? PyDict_GetItemString(PyModule_GetDict(module), "UUID") : nullptr;
  return type && PyType_Check(type) && PyObject_TypeCheck(object, reinterpret_cast<PyTypeObject*>(type));
}

bool IntFromPython(PyObject* object, GeData& data) {
  int overflow;
  const long value = PyLong_AsLongAndOverflow(object, &overflow);
  // The lower end is not looked at: a value below it is cut to its low 32 bits.
  if (!overflow && value < 2147483648L) {
    data = GeData::Int32(int32_t(value));
    return true;
  }
  const long long wide = PyLong_AsLongLong(object);
  if (wide == -1 && PyErr_Occurred()) return false;
  data = GeData::Int64(wide);
  return true;
}

bool TextFromPython(PyObject* object, int32_t type, GeData& data) {
  if (type == HOST_DATA_FILENAME) {
    Filename name;
    if (!FilenameFromPython(object, name)) return false;
    data = GeData::Filename(name);
    return true;
  }
  Py_ssize_t size;
  const char* utf8 = PyUnicode_AsUTF8AndSize(object, &size);
  if (!utf8) return false;
  data = GeData::String(kelvar::Text({utf8, size_t(size)}));
  return true;
}

// In the forms that the data bridge takes for a colour with alpha.
Conversion ColorFromPython(PyObject* object, GeData& data) {
  ColorA color;
  const Conversion conversion = ConvertLetter(ValueLetter::kColorA, object, &color);
  if (conversion != Conversion::kStored) return conversion;
  return StoreMade(GeData::Custom(color), object, data) ? conversion : Conversion::kFailed;
}

bool LinkFromPython(PyObject* object, GeData& data) {
  HostLink link{};
  if (object != Py_None) {
    QLXAtom* atom;
    if (!Present<QLXAtom>::Get(object, atom)) return false;
    if (!SetLink(atom, link)) return PyErr_NoMemory(), false;
  }
  data = GeData::Link(link);
  return true;
}

// Only its address: what is read back is a pointer, and no selection.
bool SelectionFromPython(PyObject* object, GeData& data) {
  BaseSelect* selection;
  if (!Present<BaseSelect>::Get(object, selection)) return false;
  data = GeData::Pointer(selection);
  return true;
}

bool FloatFromPython(PyObject* object, GeData& data) {
  const double value = PyFloat_AsDouble(object);
  if (value == -1 && PyErr_Occurred()) return false;
  data = GeData::Float(value);
  return true;
}

bool ContainerFromPython(PyObject* object, GeData& data) {
  const BaseContainer* container = BaseContainerOf(object);
  return container && StoreMade(GeData::Container(container), object, data);
}

bool UuidDataFromPython(PyObject* object, GeData& data) {
  Uuid uuid;
  if (!UuidFromPython(object, uuid)) return false;
  data = GeData::Uuid(uuid);
  return true;
}

Conversion ConvertGeData(PyObject* object, void* target) {
  return GeDataFromPython(object, *static_cast<GeData*>(target)) ? Conversion::kStored : Conversion::kFailed;
}

const LetterEntry g_letter(ValueLetter::kGeData, ConvertGeData);

}  // namespace

CustomDataEntry::CustomDataEntry(CustomPlace place, PyTypeObject& pythonType,
                                 PyObject* (*to)(const HostGeData&), bool (*from)(PyObject*, GeData&))
    : type(&pythonType), toPython(to), fromPython(from) {
  g_customEntries[place.index] = this;
}

bool StoreMade(GeData made, PyObject* object, GeData& data) {
  if (made.Type() == HOST_DATA_NONE) return RaiseNotConvertible(object), false;
  data = std::move(made);
  return true;
}

BaseTime TimeFromPython(PyObject* time) {
  return kelvar::MakeTime(ValueOf<BaseTime>(time).numerator, ValueOf<BaseTime>(time).denominator);
}

QLXAtom* LookUpIn(HostLink link, const BaseDocument* document) {
  auto* atom = static_cast<QLXAtom*>(LookUp(link));
  if (!atom || !document) return atom;
  const BaseDocument* own = static_cast<GeListNode*>(atom)->GetDocument();
  return !own || own == document ? static_cast<QLXAtom*>(LookUp(link)) : nullptr;
}

PyObject* GeDataToPython(const HostGeData& data, BaseDocument* document) {
  switch (data.type) {
    case HOST_DATA_NONE:
      return NewNone();
    case HOST_DATA_POINTER:
      return data.value.pointer ? PyCapsule_New(data.value.pointer, nullptr, nullptr) : NewNone();
    case HOST_DATA_INT32:
    case HOST_DATA_INT64:
      return PyLong_FromLongLong(data.value.integer);
    case HOST_DATA_FLOAT:
      return PyFloat_FromDouble(data.value.real);
    case HOST_DATA_TIME:
      return Present<BaseTime>::Wrap(data.value.time);
    case HOST_DATA_VECTOR:
      return NewVector(data.value.vector);
    case HOST_DATA_MATRIX: {
      const Matrix* matrix = kelvar::gedata::GetMatrix(&data);
      return matrix ? Present<Matrix>::Wrap(*matrix) : PyErr_NoMemory();
    }
    case HOST_DATA_STRING:
      return StringToPython(reinterpret_cast<const String&>(data.value.string));
    case HOST_DATA_FILENAME:
      return FilenameToPython(reinterpret_cast<const Filename&>(data.value.filename));
    case HOST_DATA_CONTAINER:
      return ContainerToPython(data);
    case HOST_DATA_LINK:
      return LinkToPython(data.value.link, document);
    case HOST_DATA_UUID:
      return UuidToPython(Uuid(data.value.uuid));  // a copy: the conversion runs Python code
    case HOST_CUSTOM_VECTOR4D:
      return Vector4dToPython(data);
    case HOST_CUSTOM_COLORA:
      return ColorToPython(data);
    default:
      return CustomToPython(data);
  }
}

// The order is that of the checks, not of the types: one that matches the object but not the type
// that the value has moves on to the next.
bool GeDataFromPython(PyObject* object, GeData& data) {
  if (!object) return false;
  const int32_t type = data.Type();
  const auto fits = [type](int32_t id) { return type == HOST_DATA_NONE || type == id; };
  if (object == Py_None && type == HOST_DATA_NONE) {
    data = GeData();
    return true;
  }
  if (IsVector(object) && fits(HOST_DATA_VECTOR)) {
    data = GeData::Vector(ValueOf<Vector>(object));
    return true;
  }
  if (IsVector4d(object) && fits(HOST_CUSTOM_VECTOR4D))
    return StoreMade(GeData::Custom(ValueOf<Vector4d>(object)), object, data);
  if (PyLong_Check(object) && (fits(HOST_DATA_INT32) || type == HOST_DATA_INT64))
    return IntFromPython(object, data);
  if (IsBaseTime(object) && fits(HOST_DATA_TIME)) {
    data = GeData::Time(TimeFromPython(object));
    return true;
  }
  if (PyUnicode_Check(object) && (fits(HOST_DATA_STRING) || type == HOST_DATA_FILENAME))
    return TextFromPython(object, type, data);
  if ((PyFloat_Check(object) || PyLong_Check(object)) && fits(HOST_DATA_FLOAT))
    return FloatFromPython(object, data);
  if (IsMatrix(object) && fits(HOST_DATA_MATRIX))
    return StoreMade(GeData::Matrix(ValueOf<Matrix>(object)), object, data);
  if (IsBaseContainer(object) && fits(HOST_DATA_CONTAINER)) return ContainerFromPython(object, data);
  if (fits(HOST_DATA_UUID) && IsUuid(object)) return UuidDataFromPython(object, data);
  if ((object == Py_None || PyObject_TypeCheck(object, &g_BaseList2DType)) && fits(HOST_DATA_LINK))
    return LinkFromPython(object, data);
  for (size_t i = 0; i < std::size(kCustomTypes); ++i) {
    const CustomDataEntry* entry = fits(kCustomTypes[i]) ? g_customEntries[i] : nullptr;
    if (entry && PyObject_TypeCheck(object, entry->type)) return entry->fromPython(object, data);
  }
  if (IsBaseSelect(object) && fits(HOST_DATA_POINTER)) return SelectionFromPython(object, data);
  if (fits(HOST_CUSTOM_COLORA)) {
    const Conversion conversion = ColorFromPython(object, data);
    if (conversion != Conversion::kWrongType) return conversion == Conversion::kStored;
  }
  RaiseNotConvertible(object);
  return false;
}

PyObject* UuidToPython(const Uuid& uuid) {
  if (!*g_uuidModule) {
    PyObject* module = PyImport_ImportModule("uuid");
    if (!module) return RaiseNoUuidModule();
    *g_uuidModule = KeptReference::Adopt(module);
  }
  PyObject* type = PyObject_GetAttrString(g_uuidModule->Get(), "UUID");
  PyObject* none = type ? PyTuple_New(0) : nullptr;
  PyObject* bytes =
      none ? PyBytes_FromStringAndSize(reinterpret_cast<const char*>(uuid.bytes), sizeof uuid.bytes) : nullptr;
  PyObject* keywords = bytes ? Py_BuildValue("{s:O}", "bytes", bytes) : nullptr;
  PyObject* result = keywords ? PyObject_Call(type, none, keywords) : nullptr;
  Py_XDECREF(keywords);
  Py_XDECREF(bytes);
  Py_XDECREF(none);
  Py_XDECREF(type);
  return result;
}

void ReleaseUuidModule() { g_uuidModule->Drop(); }

bool UuidFromPython(PyObject* object, Uuid& uuid) {
  PyObject* bytes = PyObject_GetAttrString(object, "bytes");
  char* data;
  Py_ssize_t size;
  bool read = bytes && PyBytes_AsStringAndSize(bytes, &data, &size) == 0;
  if (read && size != Py_ssize_t(sizeof uuid.bytes)) {
    RaiseNotConvertible(object);
    read = false;
  }
  if (read) std::memcpy(uuid.bytes, data, sizeof uuid.bytes);
  Py_XDECREF(bytes);
  return read;
}

bool StringFromPython(PyObject* object, String& text) {
  Py_ssize_t size;
  const char* utf8 = PyUnicode_AsUTF8AndSize(object, &size);
  if (!utf8 && PyErr_ExceptionMatches(PyExc_MemoryError)) return false;
  if (!utf8) PyErr_Clear();
  text = utf8 ? kelvar::Text({utf8, size_t(size)}) : String();
  return true;
}

bool FilenameFromText(const String& text, Filename& name) {
  if (kelvar::View(text).find('\0') != std::string_view::npos) return RaiseNullByte(), false;
  name = Filename::FromString(text);
  return true;
}

bool FilenameFromPython(PyObject* object, Filename& name) {
  const Reference bytes(PyUnicode_AsEncodedString(object, "utf-8", "surrogateescape"));
  if (!bytes) return false;
  const std::string_view path(PyBytes_AS_STRING(bytes.get()), size_t(PyBytes_GET_SIZE(bytes.get())));
  return FilenameFromText(kelvar::Bytes(path), name);
}

}  // namespace qlx
