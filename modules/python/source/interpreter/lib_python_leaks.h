// The record of wrapper instances that are alive.
#ifndef INTERPRETER_LIB_PYTHON_LEAKS_H
#define INTERPRETER_LIB_PYTHON_LEAKS_H

namespace qlx {

// Reports the wrappers that are alive at the end. Lock held.
void ReportLeaks();

}  // namespace qlx

#endif
