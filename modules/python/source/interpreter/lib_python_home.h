// Where the interpreter finds its standard library.
#ifndef INTERPRETER_LIB_PYTHON_HOME_H
#define INTERPRETER_LIB_PYTHON_HOME_H

#include <string>

#include "tavor/error.h"

namespace qlx {

// The interpreter's executable, from which it finds its home, after a look whether the
// standard library is there: an interpreter that starts without it may end the process. The
// error names what is missing and where it was looked for.
tavor::Result<std::string> FindInterpreterHome(bool useEnvironment);

}  // namespace qlx

#endif
