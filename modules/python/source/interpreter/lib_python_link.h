// How the module meets the interpreter's library.
//
// The module is not linked to it: its references to the library's symbols are weak and stay
// null when the host loads the module, so that a machine without an interpreter can load it
// too. Binding loads the library for the whole process and fills the references in.
#ifndef INTERPRETER_LIB_PYTHON_LINK_H
#define INTERPRETER_LIB_PYTHON_LINK_H

#include <string>

#include "tavor/error.h"

namespace qlx {

// Loads the library with global symbols and binds the module to it. A library that the
// process has already is used as it is. Otherwise it is the file that QLX_PYTHON_LIBRARY
// names, or without that variable the one of the build, then one that the system's loader
// finds under the same name. A library of another version is refused. Later calls repeat the
// first answer; any thread.
tavor::Error BindInterpreterLibrary();

// Never true before a successful BindInterpreterLibrary.
bool IsInterpreterLibraryBound();

// The file of the bound library and its loader handle; empty and null before.
const std::string& InterpreterLibraryFile();
void* InterpreterLibraryHandle();

}  // namespace qlx

#endif
