// Start-up scripts with faults, threads that they leave, and threads that Python has never seen.
#include <atomic>
#include <barrier>
#include <chrono>
#include <thread>

#include "session.h"

namespace {

struct Script {
  const char* name;
  std::string text;
  const char* words = "";  // what the output tells; empty: nothing
  const char* event = nullptr;
  int seconds = 20;  // that the end may take
};

void PrintTo(const Script& script, std::ostream* stream) { *stream << script.name; }

std::string Name(const testing::TestParamInfo<std::tuple<Script, bool>>& info) {
  return std::get<0>(info.param).name + std::string(std::get<1>(info.param) ? "Local" : "Global");
}

class StartupScriptTest : public EntryTest, public testing::WithParamInterface<std::tuple<Script, bool>> {
 protected:
  static bool Faulty() {
    const Script& script = std::get<0>(GetParam());
    return !script.words || *script.words;
  }
};

const Script kFaults[] = {
    {"Raises", "raise ValueError('of the script')\n", "ValueError: of the script"},
    {"Syntax", "x = 1\ndef broken(:\n", "SyntaxError"},
    {"NotUtf8", "x = 1\ny = '\xFF\xFE'\n", "python_init.py"},
    {"Nul", std::string("x = 1\0\n", 7), "python_init.py"},
    {"Folder", "", "prefs/python37/python_init.py"},
    {"Empty", ""},
    {"ByteOrderMark", "\xEF\xBB\xBFx = 1\n"},
    {"Exits", "import sys\nsys.exit(3)\n", "", "event 1026812"},
    {"HookExits", "import sys\nsys.excepthook = lambda *a: sys.exit(5)\n1 / 0\n", nullptr, "event 1026812"},
    {"HookRaises", "import sys\nsys.excepthook = lambda: 0\n1 / 0\n", "Original exception was:"},
    {"Interrupts", "raise KeyboardInterrupt\n", "KeyboardInterrupt"},
    {"UnprintableError", "class E(Exception):\n  def __str__(self): return 1 / 0\nraise E()\n", "E"},
    {"NoStreams", "import sys\nsys.stdout = sys.stderr = None\nraise ValueError('unseen')\n", "python_init.py"},
    {"BrokenHook", "import sys\nsys.excepthook = None\nraise ValueError('hookless')\n", "hookless"},
    {"TooDeep", "def f(): f()\nf()\n", "RecursionError"},
};

TEST_P(StartupScriptTest, FaultsAreReportedAndTheStartGoesOn) {
  const auto& [script, local] = GetParam();
  WriteStartupScript(!local, "import sys\nsys.entryOther = 1\n");
  if (std::string_view(script.name) == "Folder")
    std::filesystem::create_directories(app.PythonLibrariesFolder(local) + "/python_init.py");
  else
    WriteStartupScript(local, script.text);
  WatchErrors();
  StartWhole(Faulty() && local ? 0 : 1);
  const std::string output = Printed();
  EXPECT_TRUE(!script.words || output.find(script.words) != std::string::npos) << output;
  EXPECT_TRUE(Faulty() || output.empty()) << output;
  EXPECT_TRUE(!script.event || app.Happened(script.event));
  const Text other("import sys\nassert sys.entryOther == 1\n"), name("other");
  EXPECT_EQ(Library().RunText(other, name), 1) << "the other script has run";
  End(1);
}

INSTANTIATE_TEST_SUITE_P(Faults, StartupScriptTest,
                         testing::Combine(testing::ValuesIn(kFaults), testing::Bool()), Name);

class LeftoverTest : public EntryTest, public testing::WithParamInterface<Script> {};

const std::string kThread =
    "import threading, time\n"
    "def start(run, daemon): threading.Thread(target=run, daemon=daemon).start()\n"
    "def sleep():\n  while True: time.sleep(0.01)\n"
    "def spin():\n  while True: pass\n"
    "def deaf():\n"
    "  while True:\n"
    "    try:\n      while True: time.sleep(0.01)\n"
    "    except BaseException: pass\n";

const Script kLeftovers[] = {
    {"DaemonSleeps", kThread + "start(sleep, True)\n"},
    {"DaemonSpins", kThread + "for i in range(4): start(spin, True)\n"},
    {"DaemonWaits", kThread + "lock = threading.Lock(); lock.acquire(); start(lock.acquire, True)\n"},
    {"ThreadEndsByItself", kThread + "start(lambda: time.sleep(0.3), False)\n"},
    {"ThreadSpins", kThread + "start(spin, False)\n"},
    {"ThreadDoesNotListen", kThread + "start(deaf, False)\n"},
    {"ThreadWaits", kThread + "lock = threading.Lock(); lock.acquire(); start(lock.acquire, False)\n"},
    {"PoolIsIdle",
     "from concurrent.futures import ThreadPoolExecutor\npool = "
     "ThreadPoolExecutor(1)\npool.submit(int).result()\n",
     "", nullptr, 2},
    {"ExitAtExit", "import atexit, sys\natexit.register(sys.exit, 3)\n"},
    {"DestructorAtEnd", "import qlx\nclass D:\n  def __del__(self): raise ValueError\nqlx.kept = D()\n"},
};

TEST_P(LeftoverTest, TheEndStagesRunInBoundedTime) {
  WriteStartupScript(false, GetParam().text);
  StartWhole();
  const auto begin = std::chrono::steady_clock::now();
  End(1);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(GetParam().seconds));
}

INSTANTIATE_TEST_SUITE_P(Leftovers, LeftoverTest, testing::ValuesIn(kLeftovers),
                         [](const auto& info) { return std::string(info.param.name); });

using CrossingTest = EntryTest;

TEST_F(CrossingTest, AThreadOfTheHostThatIsInsideAScriptIsEnded) {
  // The end waits in this destructor, and the thread finds it there.
  WriteStartupScript(false,
                     "import sys, time\nclass D:\n  def __del__(self, sleep=time.sleep): sleep(0.1)\n"
                     "sys.kept = D()\n");
  StartWhole();
  bool returned = false;
  std::thread inside([&] {
    const Text source("import qlx\nqlx.inside = 1\nwhile True: pass\n"), name("endless");
    Library().RunText(source, name);
    returned = true;
  });
  for (const Text name("inside"); app.symbolHook(name) != HOST_SYMBOL_KNOWN;) std::this_thread::yield();
  EndStages(1);
  inside.join();
  EXPECT_FALSE(returned);
  app.pair.Shutdown();
  EXPECT_EQ(Close(), 1);
}

TEST_F(CrossingTest, ThreadsThatPythonHasNeverSeen) {
  constexpr int kThreads = 8, kCrossings = 100000, kWork = 1000;
  StartWhole();
  CPythonLibrary* library = Library().GetLibrary();
  const auto& table = TableOf<CPythonLibraryInterface>(library);
  struct Object;
  auto* newList = Python<Object*(intptr_t)>("PyList_New");
  auto* append = Python<int(Object*, Object*)>("PyList_Append");
  auto* size = Python<intptr_t(Object*)>("PyList_Size");
  auto* newInt = Python<Object*(long)>("PyLong_FromLong");
  auto* isHeld = Python<int()>("PyGILState_Check");
  const auto drop = [&](Object* object) { table.CPy_DecRef(library, reinterpret_cast<CPyObject*>(object)); };
  int32_t state = table.CPyGilState_Ensure(library);
  Object* list = newList(0);
  table.CPyGilState_Release(library, state);

  std::atomic<int> faults{0};
  std::barrier together(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([&] {
      together.arrive_and_wait();
      for (int i = 1; i <= kCrossings; ++i) {
        const int32_t outer = table.CPyGilState_Ensure(library);
        if (i % kWork == 0) {
          const int32_t inner = table.CPyGilState_Ensure(library);
          Object* number = newInt(1000000L + i);
          faults += !number || append(list, number) != 0;
          drop(number);
          table.CPyGilState_Release(library, inner);
          faults += !isHeld();
        }
        table.CPyGilState_Release(library, outer);
      }
      faults += isHeld();
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(faults, 0);
  state = table.CPyGilState_Ensure(library);
  EXPECT_EQ(size(list), kThreads * kCrossings / kWork);
  drop(list);
  table.CPyGilState_Release(library, state);
  End(1);
}

}  // namespace
