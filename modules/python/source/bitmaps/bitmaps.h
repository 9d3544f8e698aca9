// The pictures of the package.
#ifndef BITMAPS_BITMAPS_H
#define BITMAPS_BITMAPS_H

#include <Python.h>

#include "kit/i_present.h"

namespace qlx {

extern PyTypeObject g_BaseBitmapType;

template <>
struct TypeOf<BaseBitmap> {
  static PyTypeObject& Get() { return g_BaseBitmapType; }
};

template <>
struct Present<BaseBitmap> {
  static PyTypeObject& Type() { return TypeOf<BaseBitmap>::Get(); }
  static constexpr bool kResolvedFirst = true;
  static bool Get(PyObject* object, BaseBitmap*& host) {
    return ResolveBitmap(reinterpret_cast<AtomWrapper*>(object), host);
  }
  static PyObject* Wrap(BaseBitmap* host, bool owned);
};

}  // namespace qlx

#endif
