// The package `qlx`: its module and the references that the module keeps to it.

#include "kit/i_package.h"

#include "interpreter/lib_python_lock.h"
#include "kit/i_lasting.h"

namespace qlx {
namespace {

PyModuleDef g_definition = {
    PyModuleDef_HEAD_INIT,
    "qlx",
    "Common module for the most required classes and functions.",
    -1,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
};

Lasting<KeptReference> g_packageModule;
Lasting<KeptReference> g_packageDictionary;
Lasting<KeptReference> g_importedModule;

// What the package holds ahead of the host's symbols.
bool InitPackageContents(PyObject* module) {
  return PyModule_AddIntConstant(module, "TAVOR_TARGET_DEBUG", 0) == 0;
}

}  // namespace

PyObject* InitPackage() {
  PyObject* module = PyModule_Create(&g_definition);
  PyObject* dictionary = module ? PyModule_GetDict(module) : nullptr;
  if (!dictionary || !InitPackageContents(module)) {
    Py_XDECREF(module);
    // The reason is of no use to whoever imports; a null without an error would be a fault
    // of its own for the interpreter.
    PyErr_Clear();
    PyErr_SetString(PyExc_ImportError, "the package 'qlx' could not be built");
    return nullptr;
  }
  Py_INCREF(module);
  *g_packageModule = KeptReference::Adopt(module);
  Py_INCREF(dictionary);
  *g_packageDictionary = KeptReference::Adopt(dictionary);
  return module;
}

tavor::Error ImportPackage() {
  PyObject* module = PyImport_ImportModule("qlx");
  PyErr_Clear();
  if (!module) return tavor::Error("unable to import qlx module");
  *g_importedModule = KeptReference::Adopt(module);
  return {};
}

PyObject* PackageDictionary() { return g_packageDictionary->Get(); }

void ReleasePackage() {
  g_packageModule->Drop();
  g_packageDictionary->Drop();
  g_importedModule->Drop();
}

// The constants come with the types that they belong to.
tavor::Error RegisterSymbols(bool) { return {}; }

}  // namespace qlx
