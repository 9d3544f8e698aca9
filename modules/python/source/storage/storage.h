// The module qlx.storage: files.
#ifndef STORAGE_STORAGE_H
#define STORAGE_STORAGE_H

#include <Python.h>

#include "kelvar/hyperfile.h"
#include "kit/i_arguments.h"

namespace qlx {

extern PyTypeObject g_HyperFileType;
extern PyMethodDef g_storageFunctions[];

struct HyperFileRecord {
  PyObject ob_base;
  HyperFile* data;
  bool isOpen;
};

template <>
struct RecordType<HyperFileRecord> {
  static PyTypeObject& Get() { return g_HyperFileType; }
};

template <>
struct Present<HyperFile> {
  static PyObject* Wrap(HyperFile* host, bool owned);  // takes it over, in any case
};

}  // namespace qlx

#endif
