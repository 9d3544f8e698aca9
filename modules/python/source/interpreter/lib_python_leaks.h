// The record of wrapper instances that are alive, with the line that made each one.
#ifndef INTERPRETER_LIB_PYTHON_LEAKS_H
#define INTERPRETER_LIB_PYTHON_LEAKS_H

#include <Python.h>

#include <map>

#include "interpreter/main.h"
#include "kelvar/string.h"

namespace qlx {

// Lock held for all of it.
class LeakTracker {
 public:
  // Every instance is recorded while the module's LanguageInfo says so.
  static bool IsOn() { return g_trackLeaks; }

  void Add(PyObject* object, int32_t line, const char* file);
  void Remove(PyObject* object);

  // Forgets an earlier run of the module in this process. Follows each change of what IsOn tells.
  void Restart();

  // Tells the host's diagnostic output which instances are alive at the end.
  void Report();

 private:
  struct Record {
    int32_t line;
    String file;
    String typeName;
  };

  bool reported_ = false;
  std::map<const PyObject*, Record> records_;
};

extern LeakTracker& g_wrapperTracker;

// An instance of a wrapper type, all fields zero; null with an exception. The line and file are
// those of the code that wants it, and stand in for the script's where no script runs.
inline PyObject* AllocWrapper(LeakTracker& tracker, PyTypeObject* type, int32_t line = __builtin_LINE(),
                              const char* file = __builtin_FILE()) {
  PyObject* object = type->tp_alloc(type, 0);
  if (object && LeakTracker::IsOn()) tracker.Add(object, line, file);
  return object;
}

// The last step of every deallocation.
inline void FreeWrapper(LeakTracker& tracker, PyObject* object) {
  if (LeakTracker::IsOn()) tracker.Remove(object);
  Py_TYPE(object)->tp_free(object);
}

void ReportLeaks();

}  // namespace qlx

#endif
