// The module's own virtual machine over CPython.
#ifndef INTERPRETER_LIB_PYTHON_MACHINE_H
#define INTERPRETER_LIB_PYTHON_MACHINE_H

#include "tavor/cpythonlibrary.h"
#include "tavor/virtualmachine.h"
#include "tavor/virtualmachinescope.h"

namespace qlx {

// Registers the machine's class as the default one, unless the host brings another.
void ProvideMachineClass();

// Whether the object's table tells that identity; null does not.
bool Implements(const TavorObject* object, const char* identity);

// A new scope with one reference.
VirtualMachineScope* CreateCPythonScope();

// The one library object. It lives as long as the module.
CPythonLibrary* CPythonLibraryObject();

}  // namespace qlx

#endif
