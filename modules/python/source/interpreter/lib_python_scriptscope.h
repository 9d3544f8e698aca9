// The private globals in which a script of the scene, of a command or of a file runs.
#ifndef INTERPRETER_LIB_PYTHON_SCRIPTSCOPE_H
#define INTERPRETER_LIB_PYTHON_SCRIPTSCOPE_H

#include <Python.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "interpreter/lib_python_lock.h"
#include "kelvar/atom.h"
#include "kelvar/filename.h"
#include "kelvar/gedata.h"
#include "kelvar/resource.h"
#include "kelvar/string.h"
#include "kelvar/thread.h"
#include "tavor/error.h"

namespace qlx {

// One dictionary that is both globals and locals of a script, kept by value in its owner between runs.
// Lock held in all operations. A script that Run runs may do anything to its scope, even destroy it.
//
// Names are UTF-8. An empty scope, and a name that is not UTF-8, have no value and take none: false,
// with no error. Where the interpreter or a conversion fails its error is pending.
class ScriptScope {
 public:
  ScriptScope() = default;
  ScriptScope(const ScriptScope&) = delete;
  ScriptScope& operator=(const ScriptScope&) = delete;
  // An owner may go on any thread, with or without the lock, also after the interpreter's end.
  ~ScriptScope() noexcept(false);

  // Empty to live, with the names `__builtins__` and `__name__`. What the field held is not released.
  bool Init();
  bool Reset();
  void Free();

  bool Contains(std::string_view name) const { return Get(name) != nullptr; }
  // Borrowed; null for a name that isn't bound.
  PyObject* Get(std::string_view name) const;

  bool SetInt(std::string_view name, int32_t value);
  bool SetNone(std::string_view name) { return SetObject(name, Py_None); }
  bool SetData(std::string_view name, const HostGeData& data);
  // With `owned` the scope takes the resource over, also where it can't be bound.
  bool SetResource(std::string_view name, GeResource* resource, bool owned);
  // With `owned` the scope takes the node over, also where it can't be bound.
  bool SetNode(std::string_view name, QLXAtom* node, bool owned);
  bool SetThread(std::string_view name, BaseThread* thread);
  bool SetFilename(std::string_view name, const Filename& file);
  bool SetObject(std::string_view name, PyObject* object);
  bool SetObjectRef(std::string_view name, const KeptReference& object) {
    return SetObject(name, object.Get());
  }
  bool ImportPackage();

  // Compiles and runs; tracebacks show `fileName`. A text that does not compile leaves its error pending.
  // What the script raises is printed by PyErr_Print, which ends the process at a SystemExit.
  bool Run(const std::string& source, const std::string& fileName, int startMode = Py_file_input);

  // Both globals and locals; null in an empty scope. Borrowed.
  PyObject* Globals() const { return globals_; }

 private:
  bool Store(std::string_view name, PyObject* object) const;

  PyObject* globals_ = nullptr;
};

// Runs a text in a scope of its own, with `doc`, `op` and `tp` of the active document. Tracebacks show `name`
// in quotes; `file` becomes `__file__` unless it is null. Takes the lock. False leaves the error pending for a
// caller that holds it as well.
bool ExecuteScriptText(const std::string& source, const std::string& name, const Filename* file);

// The same for a script file. One that can't be read is logged, and no error is pending.
bool ExecuteScriptFile(const Filename& file);

// The text of a script file.
tavor::Error ReadScript(const Filename& file, String& text);

// Whether the function that runs belongs to the script of a scene node. Lock held.
bool IsScriptExecuting();

}  // namespace qlx

#endif
