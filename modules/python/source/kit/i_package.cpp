// The package `qlx`: its module and the references that the module keeps to it.

#include "kit/i_package.h"

#include <cstring>
#include <string>

#include "bitmaps/bitmaps.h"
#include "interpreter/lib_python_lock.h"
#include "kit/i_lasting.h"
#include "plugins/plugins.h"
#include "scene/scene.h"
#include "values/values.h"

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

PyTypeObject* const g_types[] = {&g_VectorType, &g_BaseContainerType, &g_QLXAtomType, &g_GeListNodeType,
                                 &g_BaseList2DType};
PyTypeObject* const g_bitmapTypes[] = {&g_BaseBitmapType};
PyTypeObject* const g_pluginTypes[] = {&g_BaseDataType};

// A type is known to its module by the last part of its name.
template <size_t Count>
bool AddTypes(PyObject* module, PyTypeObject* const (&types)[Count]) {
  for (PyTypeObject* type : types) {
    if (PyType_Ready(type) < 0) return false;
    Py_INCREF(type);
    if (PyModule_AddObject(module, std::strrchr(type->tp_name, '.') + 1, reinterpret_cast<PyObject*>(type)) ==
        0)
      continue;
    Py_DECREF(type);
    return false;
  }
  return true;
}

// A sub-module, which `import qlx.<name>` finds too.
template <size_t Count>
bool AddModule(PyObject* package, const char* name, const char* doc, PyTypeObject* const (&types)[Count]) {
  PyObject* module = PyImport_AddModule((std::string("qlx.") + name).c_str());  // borrowed
  if (!module || PyModule_SetDocString(module, doc) < 0 || !AddTypes(module, types)) return false;
  Py_INCREF(module);
  if (PyModule_AddObject(package, name, module) == 0) return true;
  Py_DECREF(module);
  return false;
}

// A module with a path is a package.
bool MakePackage(PyObject* module) {
  PyObject* path = PyList_New(0);
  if (path && PyModule_AddObject(module, "__path__", path) == 0) return true;
  Py_XDECREF(path);
  return false;
}

// What the package holds ahead of the host's symbols.
bool InitPackageContents(PyObject* module) {
  return MakePackage(module) && PyModule_AddIntConstant(module, "TAVOR_TARGET_DEBUG", 0) == 0 &&
         AddTypes(module, g_types) && AddModule(module, "bitmaps", "Module for color chooser", g_bitmapTypes) &&
         AddModule(module, "plugins", "Module for plugins.", g_pluginTypes);
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
