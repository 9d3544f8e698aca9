// The wrapper types that wait to be made ready.

#include "kit/i_typequeue.h"

#include <vector>

namespace qlx {
namespace {

// A function, because entries are added while other files' objects are still being made.
std::vector<PyTypeObject*>& Queue() {
  static std::vector<PyTypeObject*> queue;
  return queue;
}

}  // namespace

TypeQueueEntry::TypeQueueEntry(PyTypeObject& type) { Queue().push_back(&type); }

std::string ReadyTypeQueue() {
  std::string failed;
  for (PyTypeObject* type : Queue()) {
    if (PyType_Ready(type) == 0) continue;
    PyErr_Clear();
    failed += std::string(failed.empty() ? "" : ", ") + type->tp_name;
  }
  FreeTypeQueue();
  return failed;
}

void FreeTypeQueue() { std::vector<PyTypeObject*>().swap(Queue()); }

}  // namespace qlx
