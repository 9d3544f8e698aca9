// Threads that scripts started with the interpreter's own means. No lock held.
#ifndef INTERPRETER_LIB_PYTHON_THREADS_H
#define INTERPRETER_LIB_PYTHON_THREADS_H

namespace qlx {

// Waits for the threads that are no daemons, as `python` does at its end.
void JoinPythonThreads();

// Gives the threads that are no daemons two seconds to end. Names those that go on, and lets
// the interpreter's end treat them like daemons: a host's end waits for no script.
void LetGoOfPythonThreads();

}  // namespace qlx

#endif
