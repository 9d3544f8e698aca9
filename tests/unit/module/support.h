// What the module's tests share: a host's texts, and an interpreter for one test.
#ifndef TESTS_UNIT_MODULE_SUPPORT_H
#define TESTS_UNIT_MODULE_SUPPORT_H

#include <Python.h>
#include <gtest/gtest.h>

#include <atomic>
#include <new>
#include <string>
#include <vector>

#include "boundary/tables.h"
#include "interpreter/lib_python_lock.h"
#include "kelvar/text.h"
#include "kit/i_cpython.h"
#include "kit/i_package.h"
#include "python_interpreter.h"

// Texts as a host keeps them, and a record of what the module told the host.
struct TextHost {
  inline static std::vector<std::string> diagnostics;
  inline static std::vector<std::vector<uint64_t>> events;

  static HostString Make(const char* bytes, int64_t size) {
    try {
      return {new std::string(bytes, size_t(size))};
    } catch (const std::bad_alloc&) {
      return {};
    }
  }
  static const std::string& Value(const HostString* self) {
    static const std::string empty;
    return self->word ? *static_cast<const std::string*>(self->word) : empty;
  }
  static const char* GetUtf8(const HostString* self, int64_t* size) {
    if (size) *size = int64_t(Value(self).size());
    return Value(self).c_str();
  }
  static void Destroy(HostString* self) {
    delete static_cast<std::string*>(self->word);
    self->word = nullptr;
  }

  static void Install() {
    tables::string.FromUtf8 = tables::string.FromBytes = Make;
    tables::string.Copy = [](const HostString* self) {
      return Make(Value(self).data(), int64_t(Value(self).size()));
    };
    tables::string.Destroy = Destroy;
    tables::string.GetUtf8 = GetUtf8;
    tables::general.DiagnosticOutput = [](const HostString* text) { diagnostics.push_back(Value(text)); };
    tables::general.SpecialEventAdd = [](int32_t id, uint64_t p1, uint64_t p2) {
      events.push_back({uint64_t(id), p1, p2});
    };
  }
};

// The interpreter's memory while it lives: one allocation fails, and those that are alive are counted. A test
// may let a host's allocations, and its own, take part.
class FailingMemory {
 public:
  inline static int countdown = -1;  // allocations until the one that fails; negative: none will
  inline static std::atomic<long> alive = 0;

  static bool Fails() { return countdown >= 0 && countdown-- == 0; }

  FailingMemory() {
    for (const int i : {0, 1}) {
      PyMem_GetAllocator(kDomains[i], &real_[i]);
      PyMemAllocatorEx own = {&real_[i], Malloc, Calloc, Realloc, Free};
      PyMem_SetAllocator(kDomains[i], &own);
    }
  }
  ~FailingMemory() {
    for (const int i : {0, 1}) PyMem_SetAllocator(kDomains[i], &real_[i]);
  }
  FailingMemory(const FailingMemory&) = delete;
  FailingMemory& operator=(const FailingMemory&) = delete;

 private:
  static constexpr PyMemAllocatorDomain kDomains[] = {PYMEM_DOMAIN_MEM, PYMEM_DOMAIN_OBJ};
  inline static PyMemAllocatorEx real_[2];

  static void* Count(void* made, long change) {
    if (made) alive += change;
    return made;
  }
  static PyMemAllocatorEx& Of(void* context) { return *static_cast<PyMemAllocatorEx*>(context); }
  static void* Malloc(void* context, size_t size) {
    return Fails() ? nullptr : Count(Of(context).malloc(Of(context).ctx, size), 1);
  }
  static void* Calloc(void* context, size_t count, size_t size) {
    return Fails() ? nullptr : Count(Of(context).calloc(Of(context).ctx, count, size), 1);
  }
  static void* Realloc(void* context, void* old, size_t size) {
    return Fails() ? nullptr : Count(Of(context).realloc(Of(context).ctx, old, size), old ? 0 : 1);
  }
  static void Free(void* context, void* old) {
    if (old) --alive;
    Of(context).free(Of(context).ctx, old);
  }
};

// The lock is held in the test, and no error may be pending at its end.
class InterpreterTest : public testing::Test {
 protected:
  void SetUp() override {
    TextHost::Install();
    ASSERT_FALSE(qlx::BindInterpreterLibrary());
    qlx::StartSettings settings;
    settings.program = QLX_PYTHON_EXECUTABLE;
    ASSERT_EQ(qlx::StartInterpreter(settings), "");
  }
  void TearDown() override {
    EXPECT_FALSE(PyErr_Occurred());
    EXPECT_EQ(Py_FinalizeEx(), 0);
    qlx::ReleasePackage();
  }

  // Runs a text in __main__ as the file "part.py"; false leaves its error pending.
  static bool Run(const char* source) {
    PyObject* code = Py_CompileString(source, "part.py", Py_file_input);
    PyObject* done = code ? PyEval_EvalCode(code, Names(), Names()) : nullptr;
    Py_XDECREF(code);
    Py_XDECREF(done);
    return done != nullptr;
  }
  // Gives a name of __main__ to an object that the caller owns.
  static void Set(const char* name, PyObject* object) {
    ASSERT_TRUE(object) << name;
    PyDict_SetItemString(Names(), name, object);
    Py_DECREF(object);
  }
  // A name of __main__, borrowed.
  static PyObject* Get(const char* name) { return PyDict_GetItemString(Names(), name); }
  static std::string Eval(const char* expression) {
    return Str(PyRun_String(expression, Py_eval_input, Names(), Names()));
  }
  // The pending error, taken away.
  static std::string Take(PyObject* exception) {
    PyObject *type, *value, *traceback;
    PyErr_Fetch(&type, &value, &traceback);
    if (!type) return "(no error)";
    PyErr_NormalizeException(&type, &value, &traceback);
    std::string text =
        type == exception ? "" : std::string(reinterpret_cast<PyTypeObject*>(type)->tp_name) + ": ";
    text += Str(PyObject_Str(value));
    Py_XDECREF(type);
    Py_XDECREF(value);
    Py_XDECREF(traceback);
    return text;
  }

  static PyObject* Names() { return PyModule_GetDict(PyImport_AddModule("__main__")); }

 private:
  static std::string Str(PyObject* object) {
    PyObject* text = object ? PyObject_Str(object) : nullptr;
    const char* utf8 = text ? PyUnicode_AsUTF8(text) : nullptr;
    const std::string result = utf8 ? utf8 : "(no text)";
    Py_XDECREF(text);
    Py_XDECREF(object);
    return result;
  }
};

#endif
