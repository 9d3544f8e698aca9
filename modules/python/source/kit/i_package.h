// The package `qlx`.
#ifndef KIT_I_PACKAGE_H
#define KIT_I_PACKAGE_H

#include <Python.h>

#include "tavor/error.h"

namespace qlx {

// The init function that `import qlx` calls. Keeps the module and its dictionary.
PyObject* InitPackage();

// Imports the package for the module's own use, and keeps a reference. Lock held. No Python
// error is pending afterwards.
tavor::Error ImportPackage();

// The package's dictionary, borrowed; null before the first import. Lock held.
PyObject* PackageDictionary();

// Drops the references to the package. Lock held.
void ReleasePackage();

// Fills in the constants of the host's symbol table; with `onlyIfChanged`, only when the
// host says that they changed. Takes the lock itself.
tavor::Error RegisterSymbols(bool onlyIfChanged);

// Fills them into a package that is built anew; nothing ahead of the first registration. Lock held.
void AddKnownSymbols(PyObject* module);

}  // namespace qlx

#endif
