// The module without Python, and messages out of order.
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <fstream>
#include <set>
#include <thread>

#include "session.h"

namespace {

// A virtual machine of another plug-in: its start can fail or wait, and its library is of
// an interface that nobody knows.
struct ForeignMachine {
  const VirtualMachineInterface* table;
  std::atomic<int> references{0}, starts{0}, ends{0};
  std::atomic<int64_t> flags{0};
  std::atomic<int32_t> runtime{0};
  bool fails = false;
  void (*whileStarting)() = nullptr;
} foreign;

struct ForeignLibrary {
  const TavorHead* table;
} foreignLibrary;

ForeignMachine* Self(VirtualMachine* self) { return reinterpret_cast<ForeignMachine*>(self); }

constexpr TavorHead kForeignLibraryTable = {sizeof(TavorHead), 1, "org.example.library"};
// Says that its interpreter runs, which is none that the module knows.
const CPythonLibraryInterface kPretendingTable = [] {
  CPythonLibraryInterface table{};
  table.head = {sizeof table, 1, "net.tavor.python.interface.python.cpythonlibrary"};
  table.CPy_IsInitialized = [](CPythonLibrary*) { return int32_t(1); };
  table.CPyGilState_Ensure = [](CPythonLibrary*) { return int32_t(0); };
  return table;
}();
// The table ends behind GetLibraryRef, as that of an older machine does.
const VirtualMachineInterface kForeignTable = [] {
  VirtualMachineInterface table{};
  table.head = {offsetof(VirtualMachineInterface, GetAllAvailableVirtualMachineLibraries), 1,
                "net.tavor.python.interface.virtualmachine"};
  table.Retain = [](VirtualMachine* self) { ++Self(self)->references; };
  table.Release = [](VirtualMachine* self) { --Self(self)->references; };
  table.Init = [](VirtualMachine* self, const DataDictionary* settings, int32_t runtime) -> HostResult {
    ++Self(self)->starts;
    Self(self)->flags = fake::datadictionary::GetInt(settings, CPYTHON_INTERPRETERFLAGS, -1);
    Self(self)->runtime = runtime;
    if (Self(self)->whileStarting) Self(self)->whileStarting();
    if (Self(self)->fails)
      return {HOST_RESULT_ERROR, 7, "foreign.c", fake::string::FromUtf8("foreign words", 13)};
    return {};
  };
  table.Free = [](VirtualMachine* self) { ++Self(self)->ends; };
  table.GetLibraryRef = [](VirtualMachine*) { return reinterpret_cast<TavorObject*>(&foreignLibrary); };
  return table;
}();
VirtualMachineClass foreignClass = {sizeof(VirtualMachineClass), 0, [] {
                                      ++foreign.references;
                                      return reinterpret_cast<VirtualMachine*>(&foreign);
                                    }};

class AbsentTest : public EntryTest {
 public:
  void UseForeignMachine(bool fails, void (*whileStarting)() = nullptr,
                         const TavorHead* library = &kForeignLibraryTable) {
    foreign.table = &kForeignTable;
    foreignLibrary.table = library;
    foreign.fails = fails;
    foreign.whileStarting = whileStarting;
    app.registry[kMachineClasses][kMachineClass] = &foreignClass;
  }
  bool Logged(const std::string& words) {
    for (const LogLine& line : app.log)
      if (line.level == LOGGER_LEVEL_ALL && line.text.find(words) != std::string::npos) return true;
    return false;
  }
  // Runs at the start of the interpreter.
  void Customize(const std::string& source) {
    std::ofstream(app.root / "sitecustomize.py") << source;
    setenv("PYTHONPATH", app.root.c_str(), 1);
  }
};

struct Reason {
  const char* name;
  void (*arrange)(AbsentTest& test);
  std::vector<const char*> words;  // what the log tells at level 14
};

void PrintTo(const Reason& reason, std::ostream* stream) { *stream << reason.name; }

class ReasonTest : public AbsentTest, public testing::WithParamInterface<Reason> {};

constexpr HostResult kRefused = {HOST_RESULT_ERROR, 7, "registry.c"};

const Reason kReasons[] = {
    {"NoLibrary", [](auto&) { WithoutInterpreter(); }, {"/nonexistent/lib.so"}},
    {"NotALibrary", [](auto&) { setenv("QLX_PYTHON_LIBRARY", "/etc/passwd", 1); }, {"/etc/passwd"}},
    {"AnotherLibrary", [](auto&) { setenv("QLX_PYTHON_LIBRARY", "libm.so.6", 1); }, {"libm.so.6"}},
    {"AnotherVersion",
     [](auto&) { setenv("QLX_PYTHON_LIBRARY", OTHER_PYTHON, 1); },
     {OTHER_PYTHON, PYTHON_VERSION, "3.99.0"}},
    {"NoSearchPath", [](auto& test) { test.Customize("import sys\nsys.path = ()\n"); }, {"sys.path"}},
    {"BrokenHome",
     [](auto&) { setenv("PYTHONHOME", "/nonexistent/home", 1); },
     {"/nonexistent/home", "standard library"}},
    {"RegistryRefuses",
     [](auto&) { fake::registry::Insert = [](auto...) { return kRefused; }; },
     {"the operation failed", "no virtual machine is registered"}},
    {"RegistryRefusesTheMachine",
     [](auto&) {
       fake::registry::Insert = [insert = fake::registry::Insert](const char* name, const char* id,
                                                                  void* object) {
         return name == std::string(kMachines) ? kRefused : insert(name, id, object);
       };
     },
     {"the operation failed"}},
    {"NoDictionary",
     [](auto&) { fake::datadictionary::Create = [] { return nullptr; }; },
     {"no settings for the virtual machine"}},
    {"ForeignMachineFails", [](auto& test) { test.UseForeignMachine(true); }, {"foreign words"}},
    {"ForeignLibrary", [](auto& test) { test.UseForeignMachine(false); }, {}},
    {"ForeignLibraryPretends",
     [](auto& test) {
       WithoutInterpreter();
       test.UseForeignMachine(false, nullptr, &kPretendingTable.head);
     },
     {}},
};

TEST_P(ReasonTest, TheModuleStaysLoadedWithoutPython) {
  GetParam().arrange(*this);
  RoundWithoutPython();
  for (const char* words : GetParam().words) EXPECT_TRUE(Logged(words)) << words << " not in: " << app.Output();
  EXPECT_EQ(Logged(""), !GetParam().words.empty()) << app.Output();
  for (const LogLine& line : app.log)
    EXPECT_TRUE(line.line > 0 && line.file[0] != '-' && line.file[0] != '/')
        << line.file << ":" << line.line << " of " << line.text;
  EXPECT_EQ(foreign.references, 0);
}

INSTANTIATE_TEST_SUITE_P(Reasons, ReasonTest, testing::ValuesIn(kReasons),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(AbsentTest, ForeignMachineIsStartedAndEndedOnce) {
  UseForeignMachine(false);
  *yieldDelegate = [](CpuYieldRecord*, void*) { ADD_FAILURE() << "nobody waits"; };
  RoundWithoutPython();
  EXPECT_EQ(foreign.starts, 1);
  EXPECT_EQ(foreign.ends, 1);
  EXPECT_EQ(foreign.flags, 21008 | 1 << 29);
  EXPECT_EQ(foreign.runtime, DEFAULTRUNTIME_DEFAULT_37);
}

TEST_F(AbsentTest, TwiceAndAfterReloading) {
  WithoutInterpreter();
  RoundWithoutPython();
  RoundWithoutPython();
  Unload();
  Load();
  RoundWithoutPython();
}

TEST_F(AbsentTest, ApplicationRunNeedsAMachine) {
  WithoutInterpreter();
  EXPECT_EQ(Message(HOST_MESSAGE_RUN_APPLICATION), -1) << "ahead of action 1";
  for (const char* identity : {"net.tavor.application.test", "net.tavor.application.python"}) {
    app.identity = identity;
    EXPECT_EQ(Start(), 1);
    EXPECT_EQ(Message(HOST_MESSAGE_RUN_APPLICATION), -1) << identity;
    EXPECT_NE(app.Output().find("no python vm found"), std::string::npos) << identity;
    app.log.clear();
    End(-1);
  }
}

TEST_F(AbsentTest, MessagesOutOfOrder) {
  WithoutInterpreter();
  EXPECT_EQ(Open(), 1);
  EXPECT_EQ(Call(QLX_ACTION_PLUGIN_START), 0) << "ahead of message 1";
  EXPECT_EQ(BringUp(), "");
  EXPECT_EQ(Call(QLX_ACTION_PLUGIN_START), 0) << "ahead of message 1";
  EXPECT_FALSE(app.Happened("message 1026661"));
  ExpectAbsent();
  EXPECT_EQ(Message(HOST_MESSAGE_INIT), 1);
  EXPECT_EQ(Message(HOST_MESSAGE_INIT), 1) << "a second one opens nothing that stays open";
  app.pair.Shutdown();
  app.pair.Shutdown();
  EXPECT_EQ(Close(), 1);
  EXPECT_EQ(Call(QLX_ACTION_PLUGIN_START), 0) << "after action 3";
  EXPECT_EQ(Message(HOST_MESSAGE_ACKNOWLEDGE), 1);
}

TEST_F(AbsentTest, FailuresOfSingleEntries) {
  WithoutInterpreter();
  fake::resource::Open = [](const HostFilename*) { return nullptr; };
  EXPECT_EQ(Open(), 1);
  EXPECT_EQ(Message(HOST_MESSAGE_INIT), -1) << "no resource";
  EXPECT_EQ(Call(QLX_ACTION_PLUGIN_START), 0);
  EXPECT_EQ(Close(), 1);
  fake::application::RegisterModuleInfo = [](auto...) {
    return HostResult{HOST_RESULT_ERROR, 0, nullptr, fake::string::FromUtf8("no list", 7)};
  };
  EXPECT_EQ(Open(), 1);
  EXPECT_NE(BringUp().find("no list"), std::string::npos);
  fake::application::RegisterModuleInfo = nullptr;
  app.pair.Shutdown();
  EXPECT_EQ(Close(), 1);
}

// Each round has a process of its own, since an interpreter starts once in a process.
TEST_F(AbsentTest, AnyAllocationOfTheHostMayFail) {
  for (const bool python : {true, false}) {
    app.identity = python ? "net.tavor.application.python" : "net.tavor.application.test";
    if (!python) WithoutInterpreter();
    bool failed = true;
    for (int failing = 0; failed; ++failing) {
      ASSERT_LT(failing, 500);
      SCOPED_TRACE(failing);
      const pid_t child = fork();
      if (child == 0) {
        app.ledger.FailAt(failing);
        EXPECT_EQ(Open(), 1);
        TakeError(app.pair.BringUp());
        Message(HOST_MESSAGE_INIT);
        Call(QLX_ACTION_PLUGIN_START);
        End(InterpreterUp() ? 1 : -1);
        TearDown();
        std::fflush(nullptr);
        _exit(HasFailure() ? 2 : app.ledger.Failed());
      }
      int status = 0;
      ASSERT_EQ(waitpid(child, &status, 0), child);
      ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) < 2) << status;
      failed = WEXITSTATUS(status);
      EXPECT_TRUE(failed || failing > 5) << "the module hardly asks the host for anything";
    }
  }
}

TEST_F(AbsentTest, LoggerOutput) {
  WithoutInterpreter();
  const std::string python = "net.tavor.application.python", other = "net.tavor.application.test";
  struct Case {
    std::string identity;
    std::vector<std::string> arguments;
    int32_t output;
  };
  for (const Case& c :
       {Case{other, {"p"}, LOGGER_OUTPUT_DEFAULT}, Case{other, {}, LOGGER_OUTPUT_DEFAULT},
        Case{other, {"p", "-nogui", "x"}, LOGGER_OUTPUT_APPLICATION},
        Case{other, {"p", "x", "y", "-nogui"}, LOGGER_OUTPUT_APPLICATION},
        Case{other, {"p", "-noguix", "nogui", "--nogui", "-NOGUI", "-nogui "}, LOGGER_OUTPUT_DEFAULT},
        Case{python, {"p"}, LOGGER_OUTPUT_APPLICATION}, Case{python + "x", {"p"}, LOGGER_OUTPUT_DEFAULT}}) {
    app.identity = c.identity;
    app.arguments = c.arguments;
    EXPECT_EQ(Open(), 1);
    EXPECT_EQ(BringUp(), "");
    const auto outputs = std::vector{std::pair{c.output, int32_t(LOGGER_LEVEL_ALL)}};
    EXPECT_EQ(app.loggers[kLogger].outputs, outputs)
        << c.identity << " " << testing::PrintToString(c.arguments);
    app.pair.Shutdown();
    EXPECT_EQ(Close(), 1);
  }
  // Without an output of its own the default logger takes the place, which is nobody's to remove.
  fake::logger::AddOutput = [](auto...) { return HostResult{HOST_RESULT_ERROR}; };
  EXPECT_EQ(Open(), 1);
  EXPECT_NE(BringUp(), "");
  app.pair.Shutdown();
  EXPECT_EQ(Close(), 1);
}

std::mutex yieldsMutex;
std::vector<std::pair<CpuYieldRecord, void*>> yields;

bool Yielded(auto&& condition) {
  const std::lock_guard lock(yieldsMutex);
  return std::any_of(yields.begin(), yields.end(), [&](const auto& y) { return condition(y.first.count); });
}
bool YieldedLong() {
  return Yielded([](int32_t count) { return count > 4096 && count < INT32_MAX; });
}

TEST_F(AbsentTest, BringUpOnTwoThreadsYields) {
  // The start takes as long as the other thread needs to come, and to wait in turns.
  UseForeignMachine(false, [] {
    for (int i = 0; i < 30000 && !YieldedLong(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  });
  *yieldDelegate = [](CpuYieldRecord* record, void* address) {
    {
      const std::lock_guard lock(yieldsMutex);
      yields.emplace_back(*record, address);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  };
  tavor->yieldFirst = 1;
  EXPECT_EQ(Open(), 1);
  std::thread second([this] { EXPECT_EQ(BringUp(), ""); });
  EXPECT_EQ(BringUp(), "");
  second.join();
  EXPECT_EQ(foreign.starts, 1);
  EXPECT_TRUE(YieldedLong());
  EXPECT_TRUE(Yielded([](int32_t count) { return count == INT32_MAX; })) << "the unlock wakes the waiter";
  std::set<void*> locks;  // there are others, which are held for a moment only
  for (const auto& [record, address] : yields) {
    EXPECT_EQ(record.address, uint32_t(uintptr_t(address)));
    EXPECT_LE(record.step, 512);
    const bool isFirst = record.count != INT32_MAX && locks.insert(address).second;
    EXPECT_TRUE(!isFirst || record.count == 0) << "the host's flag asks for one call ahead of the first turn";
  }
  End(-1);
}

}  // namespace
