// Arrays of the host's memory, filled from sequences of Python, and lists that are made of them. Lock held in
// all of these.
#ifndef KIT_I_ARRAYS_H
#define KIT_I_ARRAYS_H

#include <Python.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "kelvar.framework/source/tables/t_values.h"
#include "kelvar/atom.h"
#include "kelvar/general.h"

namespace qlx {

struct HostFree {
  void operator()(void* memory) const { kelvar::Free(memory); }
};

// `release()` gives the memory to whom the host's Free is known.
template <class Element>
using HostArray = std::unique_ptr<Element[], HostFree>;

struct Unref {
  void operator()(PyObject* object) const { Py_DECREF(object); }
};
using Reference = std::unique_ptr<PyObject, Unref>;

// Each takes at least one item, and no more than the sequence said it has. Null with an exception, which calls
// the sequence `name`; `count` is the number of elements that were written.
//
// An int that doesn't fit becomes -1 and the others are read all the same: the array comes with OverflowError.
HostArray<int32_t> GetInt32Array(PyObject* sequence, Py_ssize_t& count, const char* name);
HostArray<double> GetFloat64Array(PyObject* sequence, Py_ssize_t& count, const char* name);
HostArray<float> GetFloat32Array(PyObject* sequence, Py_ssize_t& count, const char* name);
HostArray<Vector32> GetVector32Array(PyObject* sequence, Py_ssize_t& count, const char* name);
HostArray<Vector> GetVector64Array(PyObject* sequence, Py_ssize_t& count, const char* name);
HostArray<Matrix> GetMatrixArray(PyObject* sequence, Py_ssize_t& count, const char* name);
HostArray<Tangent> GetTangentArray(PyObject* sequence, Py_ssize_t& count, const char* name);
HostArray<CPolygon> GetCPolygonArray(PyObject* sequence, Py_ssize_t& count, const char* name);
HostArray<UVWStruct> GetUVWArray(PyObject* sequence, Py_ssize_t& count, const char* name);

// The atoms are alive when it answers true; no Python code may run while they are used.
bool GetAtomArray(PyObject* sequence, std::vector<QLXAtom*>& atoms, const char* name);

// New lists, or null with an exception.
PyObject* Int32ArrayToList(const int32_t* array, Py_ssize_t count);
PyObject* Float64ArrayToList(const double* array, Py_ssize_t count);
PyObject* Float32ArrayToList(const float* array, Py_ssize_t count);
PyObject* Vector32ArrayToList(const Vector32* array, Py_ssize_t count);
PyObject* Vector64ArrayToList(const Vector* array, Py_ssize_t count);
PyObject* MatrixArrayToList(const Matrix* array, Py_ssize_t count);
PyObject* TangentArrayToList(const Tangent* array, Py_ssize_t count);
PyObject* CPolygonArrayToList(const CPolygon* array, Py_ssize_t count);
PyObject* UVWArrayToList(const UVWStruct* array, Py_ssize_t count);

}  // namespace qlx

#endif
