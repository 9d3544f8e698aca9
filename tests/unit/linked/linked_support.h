// What the tests of the module and the host in one program share.
#ifndef TESTS_UNIT_LINKED_LINKED_SUPPORT_H
#define TESTS_UNIT_LINKED_LINKED_SUPPORT_H

#include <Python.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/settings.h"
#include "boundary/host.h"
#include "boundary/tables.h"
#include "interpreter/lib_python_lock.h"
#include "interpreter/main.h"
#include "kelvar/text.h"
#include "kit/i_cpython.h"
#include "kit/i_package.h"
#include "kit/i_wrapper.h"
#include "python_interpreter.h"
#include "scene/links.h"

extern "C" int32_t qlx_main(int32_t action, void* p1, void* p2, void* p3);
extern "C" TavorRecord g_tavor;

// The module is open, Python runs, and the test holds the lock. Each test has a process of its own.
class LinkedTest : public testing::Test {
 protected:
  inline static std::vector<std::string> diagnostics;

  void SetUp() override { Start(false); }
  void Start(bool trackLeaks) {
    host::GetSettings().startup = HOST_STARTUP;
    host::GetSettings().configuration.Set("g_trackLeaks", trackLeaks);
    host::OfferLinkLayout();
    host::boundary_tables::Fill(host_, HOST_VERSION_MINIMUM);
    g_tavor = {sizeof(TavorRecord), 1, host::boundary_tables::ResolveService, 0, 0};
    ASSERT_EQ(tables::Resolve(&host_), "");
    Filename module = Filename::FromString(kelvar::Text(HOST_STARTUP "/qlx.so"));
    ASSERT_EQ(qlx_main(QLX_ACTION_OPEN, &host_, nullptr, &module), 1);
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the id travels as a number
    ASSERT_EQ(
        qlx_main(QLX_ACTION_MESSAGE, reinterpret_cast<void*>(intptr_t(HOST_MESSAGE_INIT)), nullptr, nullptr),
        1);
    tables::general.DiagnosticOutput = [](const HostString* text) {
      int64_t size;
      const char* bytes = tables::string.GetUtf8(text, &size);
      diagnostics.emplace_back(bytes, size_t(size));
    };
    ASSERT_FALSE(qlx::BindInterpreterLibrary());
    PyImport_AppendInittab("qlx", qlx::InitPackage);
    qlx::StartSettings settings;
    settings.program = QLX_PYTHON_EXECUTABLE;
    ASSERT_EQ(qlx::StartInterpreter(settings), "");
    kelvar::SetQuiet(qlx::WaitForCalls);
    ASSERT_FALSE(qlx::ImportPackage());
  }
  void TearDown() override {
    qlx::ReleasePackage();
    EXPECT_EQ(Py_FinalizeEx(), 0);
    qlx_main(QLX_ACTION_CLOSE, nullptr, nullptr, nullptr);
  }

  // Runs a text in __main__ as the file "scene.py".
  static void Run(const char* source) {
    PyObject* code = Py_CompileString(source, "scene.py", Py_file_input);
    PyObject* done = code ? PyEval_EvalCode(code, Names(), Names()) : nullptr;
    if (!done) PyErr_Print();
    EXPECT_TRUE(done);
    Py_XDECREF(code);
    Py_XDECREF(done);
  }
  static PyObject* Names() { return PyModule_GetDict(PyImport_AddModule("__main__")); }
  static void Set(const char* name, PyObject* object) {
    ASSERT_TRUE(object);
    PyDict_SetItemString(Names(), name, object);
    Py_DECREF(object);
  }

 private:
  HostTables host_{};
};

#endif
