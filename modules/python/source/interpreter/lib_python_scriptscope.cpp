// The private globals in which a script of the scene, of a command or of a file runs.

#include "interpreter/lib_python_scriptscope.h"

#include <memory>
#include <new>
#include <utility>

#include "interpreter/lib_python.h"
#include "interpreter/lib_python_output.h"
#include "interpreter/lib_python_syntax.h"
#include "kelvar/basefile.h"
#include "kelvar/document.h"
#include "kelvar/general.h"
#include "kelvar/object.h"
#include "kelvar/particles.h"
#include "kelvar/text.h"
#include "kit/i_conversion.h"
#include "kit/i_errors.h"
#include "kit/i_present.h"
#include "kit/i_wrapper.h"
#include "plugins/plugins.h"
#include "threading/threads.h"

namespace qlx {
namespace {

// The key of a name; null, and no error, for bytes that are not UTF-8.
PyObject* Key(std::string_view name) {
  PyObject* key = PyUnicode_DecodeUTF8(name.data(), Py_ssize_t(name.size()), nullptr);
  if (!key) PyErr_Clear();
  return key;
}

void Release(PyObject* globals) {
  const PreservedError pending;
  // A script that miscounts references may have ended the dictionary already.
  if (globals && Py_REFCNT(globals) >= 1) Py_DECREF(globals);
}

bool Evaluate(PyObject* code, PyObject* globals) {
  PyObject* result = PyEval_EvalCode(code, globals, globals);
  Py_XDECREF(result);
  return result != nullptr;
}

bool SetNodeOrNone(ScriptScope& scope, const char* name, QLXAtom* node) {
  return node ? scope.SetNode(name, node, false) : scope.SetNone(name);
}

bool BindScene(ScriptScope& scope) {
  BaseDocument* document = BaseDocument::GetActiveDocument();
  return SetNodeOrNone(scope, "doc", document) &&
         SetNodeOrNone(scope, "op", document ? document->GetActiveObject() : nullptr) &&
         SetNodeOrNone(scope, "tp", document ? document->GetParticleMasterSystem() : nullptr);
}

struct CloseFile {
  void operator()(BaseFile* file) const { file->Close(); }
};

}  // namespace

ScriptScope::~ScriptScope() noexcept(false) {
  if (!globals_ || !IsPythonRunning()) return;
  GilScope lock;
  Free();
}

bool ScriptScope::Init() {
  PyObject* globals = PyDict_New();
  if (!globals) return false;
  PyObject* name = PyUnicode_FromString("__main__");
  const bool ok = name && PyDict_SetItemString(globals, "__builtins__", PyEval_GetBuiltins()) == 0 &&
                  PyDict_SetItemString(globals, "__name__", name) == 0;
  Py_XDECREF(name);
  if (ok) {
    globals_ = globals;
    return true;
  }
  PrintAndClearError();
  Py_DECREF(globals);
  return false;
}

// What the old names destroy may use the scope: it has the new ones by then.
bool ScriptScope::Reset() {
  PyObject* old = std::exchange(globals_, nullptr);
  const bool ok = Init();
  Release(old);
  return ok;
}

void ScriptScope::Free() { Release(std::exchange(globals_, nullptr)); }

PyObject* ScriptScope::Get(std::string_view name) const {
  PyObject* globals = globals_;
  PyObject* key = globals ? Key(name) : nullptr;
  if (!key) return nullptr;
  // Keys that a script made compare themselves in its own code, which may free the scope.
  Py_INCREF(globals);
  PyObject* object = PyDict_GetItem(globals, key);
  if (Py_REFCNT(globals) == 1) object = nullptr;
  Py_DECREF(key);
  Py_DECREF(globals);
  return object;
}

// Takes the object over.
bool ScriptScope::Store(std::string_view name, PyObject* object) const {
  PyObject* globals = globals_;
  PyObject* key = globals && object ? Key(name) : nullptr;
  bool ok = false;
  if (key) {
    Py_INCREF(globals);
    ok = PyDict_SetItem(globals, key, object) == 0;
    Py_DECREF(key);
    Py_DECREF(globals);
  }
  Py_XDECREF(object);
  return ok;
}

bool ScriptScope::SetInt(std::string_view name, int32_t value) { return Store(name, PyLong_FromLong(value)); }

bool ScriptScope::SetData(std::string_view name, const HostGeData& data) {
  return Store(name, GeDataToPython(data, nullptr));
}

bool ScriptScope::SetResource(std::string_view name, GeResource* resource, bool owned) {
  return resource && Store(name, Present<GeResource>::Wrap(resource, owned));
}

bool ScriptScope::SetNode(std::string_view name, QLXAtom* node, bool owned) {
  return node && Store(name, WrapHostObject(node, owned));
}

bool ScriptScope::SetThread(std::string_view name, BaseThread* thread) {
  return thread && Store(name, Present<BaseThread>::Wrap(thread));
}

bool ScriptScope::SetFilename(std::string_view name, const Filename& file) {
  return Store(name, FilenameToPython(file));
}

bool ScriptScope::SetObject(std::string_view name, PyObject* object) {
  Py_XINCREF(object);
  return Store(name, object);
}

bool ScriptScope::ImportPackage() { return Store("qlx", PyImport_ImportModule("qlx")); }

bool ScriptScope::Run(const std::string& source, const std::string& fileName, int startMode) {
  if (!globals_) {
    RaiseEmptyScope();
    return false;
  }
  // The script, and a warning of the compiler, may free the scope or destroy it.
  PyObject* globals = globals_;
  Py_INCREF(globals);
  PyObject* code = Compile(source, fileName, startMode);
  const bool ok = code && Evaluate(code, globals);
  // Unlike elsewhere a SystemExit is not the host's: it ends the process here, as it ends `python`.
  if (code && !ok) {
    PyErr_Print();
    FlushStreams();
  }
  Py_XDECREF(code);
  Py_DECREF(globals);
  return ok;
}

bool ExecuteScriptText(const std::string& source, const std::string& name, const Filename* file) {
  GilScope lock;
  ScriptScope scope;
  if (!scope.Init() || (file && !scope.SetFilename("__file__", *file)) || !BindScene(scope)) return false;
  PyObject* code = Compile(source, "'" + name + "'", Py_file_input);
  const bool ok = code && Evaluate(code, scope.Globals());
  Py_XDECREF(code);
  return ok;
}

bool ExecuteScriptFile(const Filename& file) {
  String text;
  if (tavor::Error error = ReadScript(file, text)) {
    LogError(error);
    return false;
  }
  const String path = file.GetString();
  return ExecuteScriptText(std::string(kelvar::View(text)), std::string(kelvar::View(path)), &file);
}

tavor::Error ReadScript(const Filename& path, String& text) {
  BaseFile* opened = nullptr;
  if (tavor::Error error = BaseFile::OpenForReading(path, &opened)) return error;
  const std::unique_ptr<BaseFile, CloseFile> file(opened);
  const std::string name(kelvar::View(path.GetString()));
  const int64_t length = file->GetLength();
  if (length < 0) return tavor::Error("'" + name + "' can't be read");
  const std::unique_ptr<char[]> bytes(new (std::nothrow) char[size_t(length) + 1]);
  if (!bytes) return tavor::Error("'" + name + "' does not fit into memory", HOST_RESULT_OUT_OF_MEMORY);
  const int64_t read = file->ReadBytes(bytes.get(), length);
  if (read < 0) return tavor::Error("'" + name + "' can't be read");
  if (tavor::Error error = String::Decode(bytes.get(), read, text))
    return tavor::Error("'" + name + "': " + error.Text());
  return {};
}

bool IsScriptExecuting() {
  PyObject* globals = PyEval_GetGlobals();
  if (!globals) return false;
  PyObject* mark = PyDict_GetItemString(globals, "__exec__");
  return mark && mark != Py_None;
}

}  // namespace qlx
