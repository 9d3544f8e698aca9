// The constants of the package: the host's symbols, which are not known ahead of its start.

#include <iterator>

#include "boundary/tables.h"
#include "interpreter/lib_python_lock.h"
#include "interpreter/lib_python_output.h"
#include "kelvar/general.h"
#include "kit/i_package.h"
#include "values/values.h"

namespace qlx {
namespace {

// Names of the host's own language, which scripts must not see.
constexpr const char* kHidden[] = {"false", "true", "FALSE", "TRUE", "NULL", "null"};

// Whether the host's table has been asked for since the interpreter came up.
bool g_registered = false;

// A host that lacks one of these has no symbols: a stand-in would pretend that it has none of late.
bool HasSymbols() {
  const auto& general = tables::general;
  namespace standIns = standin::general;
  return general.GetSymbolCount != standIns::GetSymbolCount &&
         general.GetSymbolName != standIns::GetSymbolName &&
         general.GetSymbolValue != standIns::GetSymbolValue &&
         general.SymbolsUpToDate != standIns::SymbolsUpToDate;
}

bool AddSymbol(PyObject* dictionary, const char* name, int32_t value) {
  PyObject* key = PyUnicode_FromString(name);
  PyObject* number = key ? PyLong_FromLong(value) : nullptr;
  const bool added = number && PyDict_SetItem(dictionary, key, number) == 0;
  Py_XDECREF(number);
  Py_XDECREF(key);
  return added;
}

// An address as a constant; what fails leaves it out.
void AddAddress(PyObject* module, const char* name, const DescLevel& level) {
  DescID id;
  id.PushId(level);
  PyObject* address = NewDescID(id);
  g_wrapperTracker.Remove(address);  // it lasts as long as the package: no leak
  if (!address || PyModule_AddObject(module, name, address) < 0) {
    Py_XDECREF(address);
    PyErr_Clear();
  }
}

void FillIn(PyObject* module) {
  if (PyModule_AddIntConstant(module, "TAVOR_TARGET_DEBUG", 0) < 0) PrintAndClearError();
  PyObject* dictionary = PyModule_GetDict(module);
  const int32_t count = kelvar::GetSymbolCount();
  for (int32_t i = 0; i < count; ++i) {
    const char* name = kelvar::GetSymbolName(i);
    // One that fails doesn't keep the others away.
    if (name && !AddSymbol(dictionary, name, kelvar::GetSymbolValue(i))) PrintAndClearError();
  }
  for (const char* name : kHidden)
    if (PyDict_DelItemString(dictionary, name) < 0) PyErr_Clear();
  AddAddress(module, "DESCID_ROOT", {1000491, 0, 0});
  AddAddress(module, "DESCID_DYNAMICSUB", {700, 5, 0});
}

}  // namespace

tavor::Error RegisterSymbols(bool onlyIfChanged) {
  GilScope lock;
  if (!HasSymbols()) return tavor::Error("the host offers no table of symbols");
  if (onlyIfChanged && kelvar::SymbolsUpToDate()) return {};
  PyObject* module = PyImport_ImportModule("qlx");
  if (!module) {
    PrintAndClearError();
    return tavor::Error("unable to import qlx module");
  }
  g_registered = true;
  FillIn(module);
  Py_DECREF(module);
  return {};
}

void AddKnownSymbols(PyObject* module) {
  if (g_registered) FillIn(module);
}

}  // namespace qlx
