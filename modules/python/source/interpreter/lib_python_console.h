// The private module `_qlx`, through which the streams of the interpreter reach the host.
#ifndef INTERPRETER_LIB_PYTHON_CONSOLE_H
#define INTERPRETER_LIB_PYTHON_CONSOLE_H

#include <Python.h>

#include "kelvar/filename.h"
#include "tavor/error.h"

namespace qlx {

// Makes `_qlx` importable and runs `_qlx_init` of the framework folder, which lays the streams
// over it. Lock held. No Python error is pending afterwards.
tavor::Error ConnectStreams(const Filename& framework);

// Adds the functions that the package offers too. Lock held; false with an exception.
bool AddConsoleFunctions(PyObject* package);

}  // namespace qlx

#endif
