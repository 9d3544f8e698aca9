// The wrapper types that wait to be made ready. Each type's file adds its record when the
// module is loaded; the interpreter does not run yet then.
#ifndef KIT_I_TYPEQUEUE_H
#define KIT_I_TYPEQUEUE_H

#include <Python.h>

#include <string>

namespace qlx {

// A static object of this kind beside a type record puts it into the queue. Types are made
// ready in the order in which they were added.
struct TypeQueueEntry {
  explicit TypeQueueEntry(PyTypeObject& type);
};

// Makes the waiting types ready and empties the queue. Lock held. The text names the types
// that failed; no Python error is pending.
std::string ReadyTypeQueue();

void FreeTypeQueue();

}  // namespace qlx

#endif
