// Threads of the package. The package has no thread class yet, so that none can run.

#include "threading/threads.h"

namespace qlx {

void RegisterThreadNode() {}
void StopPythonThreads() {}
void FreeThreadList() {}

}  // namespace qlx
