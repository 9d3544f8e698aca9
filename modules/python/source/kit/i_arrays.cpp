// Arrays of the host's memory and sequences of Python.

#include "kit/i_arrays.h"

#include <type_traits>

#include "kit/i_collections.h"
#include "kit/i_errors.h"
#include "kit/i_valueletters.h"
#include "scene/scene.h"
#include "values/values.h"

namespace qlx {
namespace {

// The number of items that the sequence promises; 0 with an exception for none.
Py_ssize_t SizeOf(PyObject* sequence) {
  const Py_ssize_t size = PyObject_Size(sequence);
  if (size >= 1) return size;
  RaiseInvalidLength();
  return 0;
}

// Reads the items one by one, and none behind the promised ones. The sequence's own code runs in between, and
// may end it early.
template <class ReadItem>
bool Walk(PyObject* sequence, Py_ssize_t size, Py_ssize_t& count, const char* name, const char* expected,
          const ReadItem& read) {
  const Reference iterator(PyObject_GetIter(sequence));
  if (!iterator) return false;
  for (count = 0; count < size; ++count) {
    const Reference item(PyIter_Next(iterator.get()));
    if (!item && PyErr_Occurred()) return false;
    const Conversion conversion = item ? read(item.get(), count) : Conversion::kWrongType;
    if (conversion == Conversion::kWrongType) RaiseExpectedTypeFor(name, expected, item ? item.get() : Py_None);
    if (conversion != Conversion::kStored) return false;
  }
  return true;
}

// `read` fills one element from an item.
template <class Element, class ReadItem>
HostArray<Element> GetArray(PyObject* sequence, Py_ssize_t& count, const char* name, const char* expected,
                            const ReadItem& read) {
  static_assert(std::is_trivially_copyable_v<Element>);
  count = 0;
  const Py_ssize_t size = SizeOf(sequence);
  if (size == 0) return nullptr;
  HostArray<Element> array;
  if (size <= PY_SSIZE_T_MAX / Py_ssize_t(sizeof(Element)))
    array.reset(static_cast<Element*>(kelvar::Alloc(size * int64_t(sizeof(Element)))));
  if (!array) return PyErr_NoMemory(), nullptr;
  const bool walked = Walk(sequence, size, count, name, expected,
                           [&](PyObject* item, Py_ssize_t index) { return read(item, array[size_t(index)]); });
  return walked ? std::move(array) : nullptr;
}

Vector32 Narrow(const Vector& v) { return {float(v.x), float(v.y), float(v.z)}; }

template <class Value>
Conversion ReadValue(PyObject* item, Value& value) {
  if (!Present<Value>::Is(item)) return Conversion::kWrongType;
  value = ValueOf<Value>(item);
  return Conversion::kStored;
}

Conversion ReadVector32(PyObject* item, Vector32& value) {
  if (!IsVector(item)) return Conversion::kWrongType;
  value = Narrow(ValueOf<Vector>(item));
  return Conversion::kStored;
}

template <class Number>
Conversion ReadFloat(PyObject* item, Number& number) {
  if (!PyFloat_Check(item) && !PyLong_Check(item)) return Conversion::kWrongType;
  const double value = PyFloat_AsDouble(item);
  if (value == -1 && PyErr_Occurred()) return Conversion::kFailed;
  number = Number(value);
  return Conversion::kStored;
}

// The vectors of an element that is a dict in Python, by their keys.
template <class Element>
struct Member {
  const char* key;
  Vector Element::*vector;
};
constexpr Member<Tangent> kTangentMembers[] = {{"vl", &Tangent::vl}, {"vr", &Tangent::vr}};
constexpr Member<UVWStruct> kUVWMembers[] = {
    {"a", &UVWStruct::a}, {"b", &UVWStruct::b}, {"c", &UVWStruct::c}, {"d", &UVWStruct::d}};

template <auto& kMembers, class Element>
Conversion ReadDict(PyObject* item, Element& element) {
  if (!PyDict_Check(item)) return Conversion::kWrongType;
  for (const Member<Element>& member : kMembers)
    if (PyDictRef(item).Get(member.key, element.*member.vector) != kFound) {
      PyErr_Clear();  // the message is that of the whole dict
      return Conversion::kWrongType;
    }
  return Conversion::kStored;
}

template <auto& kMembers, class Element>
PyObject* MakeDict(const Element& element) {
  Reference dict(PyDict_New());
  for (const Member<Element>& member : kMembers)
    if (!dict || !PyDictRef(dict.get()).Set(member.key, element.*member.vector)) return nullptr;
  return dict.release();
}

template <class Element, class Make>
PyObject* MakeList(const Element* array, Py_ssize_t count, const Make& make) {
  Reference list(PyList_New(0));
  for (Py_ssize_t i = 0; list && i < count; ++i) {
    const Reference item(make(array[i]));
    if (!item || PyList_Append(list.get(), item.get()) < 0) return nullptr;
  }
  return list.release();
}

template <class Number>
PyObject* MakeNumber(Number value) {
  return ToPython(value);
}

}  // namespace

HostArray<int32_t> GetInt32Array(PyObject* sequence, Py_ssize_t& count, const char* name) {
  bool overflows = false;
  auto array = GetArray<int32_t>(sequence, count, name, "int or long", [&](PyObject* item, int32_t& value) {
    if (!PyLong_Check(item)) return Conversion::kWrongType;
    if (!ReadInt32(item, value)) {
      // Raised behind the walk, which runs the sequence's own code.
      PyErr_Clear();
      overflows = true;
      value = -1;
    }
    return Conversion::kStored;
  });
  if (array && overflows) RaiseIntTooLarge();
  return array;
}

HostArray<double> GetFloat64Array(PyObject* sequence, Py_ssize_t& count, const char* name) {
  return GetArray<double>(sequence, count, name, "int or float", ReadFloat<double>);
}

HostArray<float> GetFloat32Array(PyObject* sequence, Py_ssize_t& count, const char* name) {
  return GetArray<float>(sequence, count, name, "float", ReadFloat<float>);
}

HostArray<Vector32> GetVector32Array(PyObject* sequence, Py_ssize_t& count, const char* name) {
  return GetArray<Vector32>(sequence, count, name, "qlx.Vector", ReadVector32);
}

HostArray<Vector> GetVector64Array(PyObject* sequence, Py_ssize_t& count, const char* name) {
  return GetArray<Vector>(sequence, count, name, "qlx.Vector", ReadValue<Vector>);
}

HostArray<Matrix> GetMatrixArray(PyObject* sequence, Py_ssize_t& count, const char* name) {
  return GetArray<Matrix>(sequence, count, name, "qlx.Matrix", ReadValue<Matrix>);
}

HostArray<Tangent> GetTangentArray(PyObject* sequence, Py_ssize_t& count, const char* name) {
  return GetArray<Tangent>(sequence, count, name, "list of tangents(dict('vl':Vector,'vr':Vector))",
                           ReadDict<kTangentMembers, Tangent>);
}

HostArray<CPolygon> GetCPolygonArray(PyObject* sequence, Py_ssize_t& count, const char* name) {
  return GetArray<CPolygon>(sequence, count, name, "qlx.CPolygon", ReadValue<CPolygon>);
}

HostArray<UVWStruct> GetUVWArray(PyObject* sequence, Py_ssize_t& count, const char* name) {
  return GetArray<UVWStruct>(sequence, count, name, "dict('a', 'b', 'c', 'd')",
                             ReadDict<kUVWMembers, UVWStruct>);
}

// The wrappers are kept and resolved behind the walk: the sequence's own code may destroy what one presents.
bool GetAtomArray(PyObject* sequence, std::vector<QLXAtom*>& atoms, const char* name) {
  atoms.clear();
  Py_ssize_t count = 0;
  const Py_ssize_t size = SizeOf(sequence);
  const Reference wrappers(size > 0 ? PyList_New(0) : nullptr);
  if (!wrappers) return false;
  const auto keep = [&](PyObject* item, Py_ssize_t) {
    if (!PyObject_TypeCheck(item, &g_QLXAtomType)) return Conversion::kWrongType;
    return PyList_Append(wrappers.get(), item) == 0 ? Conversion::kStored : Conversion::kFailed;
  };
  if (!Walk(sequence, size, count, name, "qlx.QLXAtom", keep)) return false;
  atoms.resize(size_t(count));
  for (Py_ssize_t i = 0; i < count; ++i)
    if (!Present<QLXAtom>::Get(PyList_GET_ITEM(wrappers.get(), i), atoms[size_t(i)])) return false;
  return true;
}

PyObject* Int32ArrayToList(const int32_t* array, Py_ssize_t count) {
  return MakeList(array, count, MakeNumber<int32_t>);
}

PyObject* Float64ArrayToList(const double* array, Py_ssize_t count) {
  return MakeList(array, count, MakeNumber<double>);
}

PyObject* Float32ArrayToList(const float* array, Py_ssize_t count) {
  return MakeList(array, count, MakeNumber<float>);
}

PyObject* Vector32ArrayToList(const Vector32* array, Py_ssize_t count) {
  return MakeList(array, count, [](const Vector32& v) { return NewVector({v.x, v.y, v.z}); });
}

PyObject* Vector64ArrayToList(const Vector* array, Py_ssize_t count) {
  return MakeList(array, count, NewVector);
}

PyObject* MatrixArrayToList(const Matrix* array, Py_ssize_t count) { return MakeList(array, count, NewMatrix); }

PyObject* TangentArrayToList(const Tangent* array, Py_ssize_t count) {
  return MakeList(array, count, MakeDict<kTangentMembers, Tangent>);
}

PyObject* CPolygonArrayToList(const CPolygon* array, Py_ssize_t count) {
  return MakeList(array, count, NewCPolygon);
}

PyObject* UVWArrayToList(const UVWStruct* array, Py_ssize_t count) {
  return MakeList(array, count, MakeDict<kUVWMembers, UVWStruct>);
}

}  // namespace qlx
