// A scope of the virtual machine: a compiled text with globals that live between its runs.

#include <Python.h>

#include <atomic>
#include <new>
#include <string>

#include "interpreter/lib_python_lock.h"
#include "interpreter/lib_python_machine.h"
#include "interpreter/lib_python_output.h"
#include "interpreter/lib_python_scriptscope.h"
#include "interpreter/lib_python_syntax.h"
#include "kelvar/text.h"
#include "tavor/datadictionary.h"

namespace qlx {
namespace {

class CPythonScope : public VirtualMachineScope {
 public:
  CPythonScope();

  void Retain() { ++references_; }
  void Release() {
    if (--references_ == 0) delete this;
  }

  HostResult Init(const HostString* name, const HostString* code, int32_t errorHandling,
                  const DataDictionary* settings) {
    if (errorHandling < ERRORHANDLING_PRINT || errorHandling > ERRORHANDLING_REDIRECT)
      return tavor::Error("there is no error handling " + std::to_string(errorHandling),
                          HOST_RESULT_ILLEGAL_ARGUMENT)
          .ToHost();
    if (!IsPythonRunning()) return NotRunning();
    GilScope lock;
    const bool redirect = settings && settings->GetInt(MOVE_ERRORS_TO_RESULT, 0);
    errorHandling_ = redirect ? ERRORHANDLING_REDIRECT : errorHandling;
    const std::string text(kelvar::View(*reinterpret_cast<const String*>(code)));
    const std::string file(kelvar::View(*reinterpret_cast<const String*>(name)));
    code_ = KeptReference::Adopt(scope_.Reset() ? Compile(text, file, Py_file_input) : nullptr);
    return code_ ? HostResult{} : Failure();
  }

  HostResult Add(const HostString* name, const HostString* value) {
    if (!IsPythonRunning() || !scope_.Globals()) return NotRunning();
    GilScope lock;
    PyObject* object = TextObject(value);
    PyObject* key = TextObject(name);
    const bool ok = object && key && PyDict_SetItem(scope_.Globals(), key, object) == 0;
    Py_XDECREF(key);
    Py_XDECREF(object);
    return ok ? HostResult{} : Failure();
  }

  HostResult Get(const HostString* name, HostString* result) {
    if (!IsPythonRunning() || !scope_.Globals()) return NotRunning();
    GilScope lock;
    PyObject* object = Lookup(name);
    return object ? GiveText(object, result) : NameError(name);
  }

  HostResult Execute() {
    if (!IsPythonRunning() || !code_) return NotRunning();
    GilScope lock;
    PyObject* result = PyEval_EvalCode(code_.Get(), scope_.Globals(), scope_.Globals());
    if (!result) return Failure();
    Py_DECREF(result);
    return {};
  }

  HostResult PrivateInvoke(const HostString* function, HostString* result) {
    if (!IsPythonRunning() || !scope_.Globals()) return NotRunning();
    GilScope lock;
    PyObject* callable = Lookup(function);
    if (!callable) return NameError(function);
    PyObject* returned = PyObject_CallObject(callable, nullptr);
    if (!returned) return Failure();
    const HostResult answer = result ? GiveText(returned, result) : HostResult{};
    Py_DECREF(returned);
    return answer;
  }

  int32_t ErrorHandling() { return errorHandling_; }

 private:
  static HostResult NotRunning() {
    return tavor::Error("the scope has no text, or the interpreter does not run").ToHost();
  }

  // Texts of the host may come from file names: their bytes survive.
  static PyObject* TextObject(const HostString* text) {
    const std::string_view bytes = kelvar::View(*reinterpret_cast<const String*>(text));
    return PyUnicode_DecodeUTF8(bytes.data(), Py_ssize_t(bytes.size()), "surrogateescape");
  }

  PyObject* Lookup(const HostString* name) {
    PyObject* key = TextObject(name);
    PyObject* object = key ? PyDict_GetItem(scope_.Globals(), key) : nullptr;
    Py_XDECREF(key);
    return object;
  }

  HostResult NameError(const HostString* name) {
    PyErr_Format(PyExc_NameError, "name '%s' is not defined",
                 std::string(kelvar::View(*reinterpret_cast<const String*>(name))).c_str());
    return Failure();
  }

  HostResult GiveText(PyObject* object, HostString* result) {
    PyObject* text = PyObject_Str(object);
    PyObject* bytes = text ? PyUnicode_AsEncodedString(text, "utf-8", "surrogateescape") : nullptr;
    if (bytes) {
      const std::string_view view(PyBytes_AS_STRING(bytes), size_t(PyBytes_GET_SIZE(bytes)));
      *result = kelvar::Bytes(view).Release();
    }
    Py_XDECREF(bytes);
    Py_XDECREF(text);
    return bytes ? HostResult{} : Failure();
  }

  // Deals with the pending error as the scope was told to.
  HostResult Failure() {
    const int32_t code = IsSystemExitPending() ? HOST_RESULT_EXIT : HOST_RESULT_ERROR;
    if (errorHandling_ == ERRORHANDLING_REDIRECT) return tavor::Error(TakePendingTraceback(), code).ToHost();
    if (errorHandling_ == ERRORHANDLING_CLEAR) return tavor::Error(TakePendingErrorText(), code).ToHost();
    const std::string line = PendingErrorText();
    PrintAndClearError();
    return tavor::Error(line, code).ToHost();
  }

  std::atomic<int> references_{1};
  int32_t errorHandling_ = ERRORHANDLING_PRINT;
  ScriptScope scope_;
  KeptReference code_;
};

CPythonScope::CPythonScope() { table = &kVirtualMachineScopeTable<CPythonScope>; }

}  // namespace

VirtualMachineScope* CreateCPythonScope() { return new (std::nothrow) CPythonScope; }

}  // namespace qlx
