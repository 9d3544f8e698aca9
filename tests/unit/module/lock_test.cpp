#include <gtest/gtest.h>

#include <chrono>
#include <thread>
#include <utility>
#include <vector>

#include "interpreter/lib_python_lock.h"
#include "interpreter/lib_python_output.h"
#include "kit/i_cpython.h"
#include "python_interpreter.h"

namespace {

using qlx::GilScope;
using qlx::HostBlockingScope;
using qlx::KeptReference;

// An interpreter for one test; each test has a process of its own.
class LockTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_FALSE(qlx::BindInterpreterLibrary());
    ASSERT_FALSE(qlx::IsPythonRunning());
    qlx::StartSettings settings;
    settings.program = QLX_PYTHON_EXECUTABLE;
    ASSERT_EQ(qlx::StartInterpreter(settings), "");
    qlx::FreeLockOfStart();
  }
  void TearDown() override {
    if (qlx::IsPythonRunning()) End();
  }
  static void End() {
    qlx::TakeLockForEnd();
    EXPECT_EQ(Py_FinalizeEx(), 0);
  }
};

TEST_F(LockTest, KeptReferencesGoUnderTheLockOrNotAtAll) {
  PyObject* list = nullptr;
  KeptReference early, late;
  {
    GilScope lock;
    list = PyList_New(0);
    Py_INCREF(list);
    early = KeptReference::Adopt(list);
    late = KeptReference::Adopt(PyList_New(0));
  }
  std::thread([&] { early.Drop(); }).join();
  EXPECT_FALSE(early);
  {
    GilScope lock;
    EXPECT_EQ(Py_REFCNT(list), 1);
    Py_DECREF(list);
  }
  End();
  EXPECT_FALSE(qlx::IsPythonRunning());
  late.Drop();  // must not touch the object or the lock
  EXPECT_FALSE(late);
}

TEST_F(LockTest, TheEndFindsAThreadThatDropsAReference) {
  KeptReference kept;
  {
    GilScope lock;
    kept = KeptReference::Adopt(PyList_New(0));
    // The end goes through this destructor, and lets others at the lock there.
    const char* source =
        "import time\n"
        "class D:\n  def __del__(self, sleep=time.sleep): sleep(0.1)\n"
        "d = D()\n";
    ASSERT_EQ(PyRun_SimpleString(source), 0);
  }
  bool returned = false;
  qlx::TakeLockForEnd();
  std::thread other([&] {
    { const KeptReference last(std::move(kept)); }
    returned = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  EXPECT_EQ(Py_FinalizeEx(), 0);
  other.join();
  EXPECT_FALSE(returned) << "the interpreter ends a thread that waits for it";
}

TEST_F(LockTest, AWindowLetsAnotherThreadIn) {
  GilScope lock;
  bool entered = false;
  std::thread other;
  {
    HostBlockingScope window;
    other = std::thread([&] {
      GilScope inner;
      GilScope nested;
      entered = true;
    });
    other.join();
  }
  EXPECT_TRUE(entered);
  EXPECT_TRUE(PyGILState_Check());
}

TEST_F(LockTest, ExceptionsLeaveTheLockFree) {
  for (int i = 0; i < 3; ++i) {
    try {
      GilScope lock;
      throw i;
    } catch (int) {
    }
    EXPECT_FALSE(PyGILState_Check());
  }
}

TEST_F(LockTest, PendingErrorsBecomeTexts) {
  GilScope lock;
  struct Case {
    const char* source;
    const char* text;
  };
  const Case cases[] = {
      {"raise ValueError('bad value')", "ValueError: bad value"},
      {"raise KeyError", "KeyError"},
      {"raise ValueError('\\ud800')", "ValueError: \\ud800"},
      {"class E(Exception):\n  def __str__(self): raise TypeError\nraise E", "E"},
  };
  PyObject* globals = PyModule_GetDict(PyImport_AddModule("__main__"));
  for (const Case& c : cases) {
    EXPECT_EQ(PyRun_String(c.source, Py_file_input, globals, globals), nullptr) << c.source;
    EXPECT_EQ(qlx::TakePendingErrorText(), c.text);
    EXPECT_FALSE(PyErr_Occurred());
  }
  EXPECT_EQ(qlx::TakePendingErrorText(), "");
}

TEST_F(LockTest, ExitCodesAreThoseOfTheInterpreter) {
  GilScope lock;
  struct Case {
    const char* argument;
    int code;
  };
  const Case cases[] = {{"", 0},       {"None", 0},   {"7", 7},     {"True", 1},
                        {"'text'", 1}, {"2**70", -1}, {"(1, 2)", 1}};
  PyObject* globals = PyModule_GetDict(PyImport_AddModule("__main__"));
  for (const Case& c : cases) {
    const std::string source = std::string("raise SystemExit(") + c.argument + ")";
    EXPECT_EQ(PyRun_String(source.c_str(), Py_file_input, globals, globals), nullptr);
    int code = -99;
    EXPECT_TRUE(qlx::TakeSystemExit(code)) << source;
    EXPECT_EQ(code, c.code) << source;
    EXPECT_FALSE(PyErr_Occurred());
  }
  int code = -99;
  PyErr_SetString(PyExc_ValueError, "stays");
  EXPECT_FALSE(qlx::TakeSystemExit(code));
  EXPECT_TRUE(PyErr_ExceptionMatches(PyExc_ValueError));
  PyErr_Clear();
}

TEST_F(LockTest, WhatAnUncaughtErrorHoldsIsFreedAndTheHookRestored) {
  GilScope lock;
  PyObject* globals = PyModule_GetDict(PyImport_AddModule("__main__"));
  const auto run = [&](const char* source) {
    PyObject* done = PyRun_String(source, Py_file_input, globals, globals);
    Py_XDECREF(done);
    return done != nullptr;
  };
  EXPECT_FALSE(
      run("import sys, weakref\nclass Held: pass\nsys.excepthook = lambda *error: None\n"
          "def fail():\n  held = Held()\n  sys.held = weakref.ref(held)\n  1/0\nfail()"));
  qlx::PrintPendingError();
  EXPECT_TRUE(run("assert sys.held() and sys.last_traceback"));
  qlx::ResetExceptHook();
  EXPECT_TRUE(run("assert sys.held() is None and not hasattr(sys, 'last_traceback')"));
  EXPECT_TRUE(run("assert sys.excepthook is sys.__excepthook__"));
}

}  // namespace
