// Threads of scripts on threads of the real host, and handles to them.
#include "threading/threads.h"

#include <algorithm>
#include <string>

#include "interpreter/lib_python_scriptscope.h"
#include "linked_support.h"

namespace {

class ThreadsTest : public LinkedTest {
 protected:
  void SetUp() override {
    Start(true);
    kelvar::SetTurn(qlx::TakeTurn, qlx::GiveTurn);
    qlx::RegisterThreadNode();
    Run("import time\n"
        "from qlx.threading import *\n"
        "ran, faults = [], []\n"
        "class Patient(QLXThread):\n"
        "  def Main(self):\n"
        "    while not self.TestBreak(): time.sleep(0.001)\n"
        "    ran.append(1)\n");
  }
  void TearDown() override {
    qlx::StopPythonThreads();
    qlx::FreeThreadList();
    qlx::FreeEnded();
    kelvar::SetTurn(nullptr, nullptr);
    LinkedTest::TearDown();
  }

  static bool Told(const std::string& words) {
    return std::any_of(diagnostics.begin(), diagnostics.end(),
                       [&](const std::string& line) { return line.find(words) != std::string::npos; });
  }
};

TEST_F(ThreadsTest, ScopesBindHandles) {
  Run("t = Patient(); t.Start(); handle = t.Get()");
  BaseThread* host;
  ASSERT_TRUE(qlx::Present<BaseThread>::Get(PyDict_GetItemString(Names(), "handle"), host));
  qlx::ScriptScope scope;
  ASSERT_TRUE(scope.Init());
  EXPECT_FALSE(scope.SetThread("none", nullptr));
  EXPECT_FALSE(scope.SetThread("\xff", host));
  EXPECT_TRUE(scope.SetThread("bt", host));
  EXPECT_TRUE(scope.Run("assert bt.IsRunning(); bt.End()", "scope"));
  EXPECT_FALSE(PyErr_Occurred());
  Run("assert ran and not t.IsRunning()\ndel t, handle");
  EXPECT_TRUE(scope.Run("try: bt.IsRunning(); fault\nexcept ReferenceError as e: assert 'not alive' in str(e)",
                        "scope"));
  EXPECT_FALSE(scope.Contains("none"));
}

// The wrappers go with the frames of Main, or ahead of it: those threads never run.
TEST_F(ThreadsTest, EightAreStartedAndDroppedAtOnce) {
  Run("import io, sys\nsys.stderr = io.StringIO()\n"
      "class Brief(QLXThread):\n"
      "  def Main(self): time.sleep(0.05); ran.append(1)\n"
      "for i in range(8): assert Brief().Start()\n"
      "for i in range(8): QLXThread().Start()\n");
  qlx::StopPythonThreads();
  Run("dead = sys.stderr.getvalue().count('TypeError: thread object is dead')\n"
      "assert len(ran) + dead == 8, (ran, dead)");
  EXPECT_TRUE(Told("Stop: a script let go of the running thread 'Brief'"));
}

TEST_F(ThreadsTest, TheEndStopsWhatRunsAndNothingBegins) {
  Run("threads = [Patient() for i in range(4)]\n"
      "for t in threads: assert t.Start()\n");
  qlx::StopPythonThreads();
  Run("assert len(ran) == 4 and not any(t.IsRunning() or t.Start() for t in threads)\n"
      "try: Patient()\n"
      "except BaseException as e: assert str(e) == \"could not allocate 'Patient (ID 1026947)' instance\", e\n"
      "else: assert 0\n"
      "del threads, t\n");
}

}  // namespace
