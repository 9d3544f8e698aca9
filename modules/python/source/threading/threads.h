// Threads of the package, which run on threads of the host.
#ifndef THREADING_THREADS_H
#define THREADING_THREADS_H

namespace qlx {

void RegisterThreadNode();

// Lock held in both.
void StopPythonThreads();
void FreeThreadList();

}  // namespace qlx

#endif
