// The good order with a real interpreter, and what the module offers to other plug-ins then.
#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>

#include "session.h"

namespace {

using namespace std::literals;

// What a caller hands over for a result says nothing.
HostString Garbage() {
  HostString text;
  std::memset(&text, 0x5a, sizeof text);
  return text;
}

class InterpreterTest : public EntryTest {
 protected:
  int32_t Run(const std::string& source) {
    const Text text(source), name("entry-text");
    return Library().RunText(text, name);
  }
  int32_t AskSymbol(std::string_view name) {
    const Text text(name);
    return app.symbolHook(text);
  }
};

TEST_F(InterpreterTest, GoodOrder) {
  WatchErrors();
  const std::string trace = app.root / "trace";
  const auto traced = [&] {
    std::ifstream stream(trace);
    return std::string(std::istreambuf_iterator<char>(stream), {});
  };
  const std::string script =
      "with open(r'" + trace + "', 'a') as f: f.write(__file__ + ' ' + __name__ + '\\n')\n";
  WriteStartupScript(false, script);
  WriteStartupScript(true, script);
  const std::string first = app.PythonLibrariesFolder(false) + "/python_init.py __main__\n";
  const std::string second = app.PythonLibrariesFolder(true) + "/python_init.py __main__\n";
  std::vector<std::string> tracedAtStop;
  fake::general::StopAllThreads = [&](int32_t views, int32_t renderings, int32_t others) {
    EXPECT_TRUE(views == 1 && renderings == 1 && others == 1);
    app.Record("stop");
    tracedAtStop.push_back(traced());
  };

  StartWhole();
  EXPECT_EQ(tracedAtStop, (std::vector<std::string>{"", first}))
      << "background work stops ahead of each script";
  EXPECT_EQ(traced(), first + second);
  const std::vector<std::string> info = {"python37", "Python C-Interpreter", "3.7.7"};
  EXPECT_EQ(app.moduleInfos["net.tavor.moduleinfo.python2"], info);
  EXPECT_EQ(Message(HOST_MESSAGE_ACKNOWLEDGE), 1);
  EXPECT_EQ(Message(HOST_MESSAGE_RUN_APPLICATION), 1) << "another application's process";
  EXPECT_EQ(Message(12345), -1);
  int32_t word = -1;
  EXPECT_EQ(Message(HOST_MESSAGE_VERSION, &word), 1);
  EXPECT_EQ(word, 0);
  EndStages(1);
  EXPECT_FALSE(InterpreterUp());
  const std::vector<std::string> events = std::exchange(app.events, {});
  ExpectAbsent();
  app.pair.Shutdown();
  app.pair.Shutdown();
  EXPECT_EQ(Close(), 1);

  std::vector<std::string> spine;
  std::copy_if(events.begin(), events.end(), std::back_inserter(spine),
               [](const std::string& event) { return !event.starts_with("plugin "); });
  EXPECT_EQ(spine,
            (std::vector<std::string>{"initialization", "resource open " + app.startup + "/modules/qlx.res",
                                      "library 1025707 1000", "message 1027123", "message 1026661", "stop",
                                      "stop", "find 1001428 0", "message 300002146", "message 1026662"}));
  EXPECT_TRUE(app.Happened("resource close"));
  const auto ready = std::find(events.begin(), events.end(), "message 1026661");
  EXPECT_TRUE(std::none_of(ready, events.end(), [](const auto& event) { return event.starts_with("plugin "); }))
      << "what the module registers is there when others learn that Python is ready";
  EXPECT_EQ(Printed(), "") << "a good start and end is silent";
}

TEST_F(InterpreterTest, DoesNotComeBackInThisProcess) {
  StartWhole();
  End(1);
  RoundWithoutPython();
  Unload();
  Load();
  RoundWithoutPython();
}

TEST_F(InterpreterTest, EndsAnUnfinishedStart) {
  EXPECT_EQ(Open(), 1);
  EXPECT_EQ(BringUp(), "");
  ASSERT_TRUE(InterpreterUp()) << Printed();
  EXPECT_EQ(Call(QLX_ACTION_PLUGIN_START), 0) << "ahead of message 1";
  EXPECT_EQ(Message(HOST_MESSAGE_ALL_LOADED), 1) << "ahead of action 2";
  EXPECT_EQ(Message(HOST_MESSAGE_END_2), 1) << "ahead of stage 1";
  EXPECT_EQ(Message(HOST_MESSAGE_END_1), 1);
  EXPECT_EQ(Message(HOST_MESSAGE_END_1), 1) << "twice";
  EXPECT_EQ(Message(HOST_MESSAGE_END_3), 1);
  ExpectAbsent();
  EXPECT_EQ(Message(HOST_MESSAGE_INIT), 1);
  EXPECT_EQ(Call(QLX_ACTION_PLUGIN_START), 1) << "as without Python";
  app.pair.Shutdown();
  EXPECT_EQ(Close(), 1);
}

TEST_F(InterpreterTest, WorksWithoutAFolderThatCannotBeMade) {
  fake::general::CreateFolder = [](const HostFilename*) {
    return HostResult{HOST_RESULT_ERROR, 0, nullptr, fake::string::FromUtf8("no room", 7)};
  };
  StartWhole();
  EXPECT_NE(app.Output().find("no room"), std::string::npos) << app.Output();
  EXPECT_NE(app.Output().find(app.home), std::string::npos) << "which folder it is";
  End(1);
}

TEST_F(InterpreterTest, UnloadWithoutEndStages) {
  StartWhole();
  app.pair.Shutdown();
  EXPECT_FALSE(InterpreterUp());
  EXPECT_EQ(Close(), 1);
}

TEST_F(InterpreterTest, LibraryTable) {
  WatchErrors();
  StartWhole();
  const ModuleLibraryTable& library = Library();
  EXPECT_EQ(library.bytes, MODULE_LIBRARY_WORDS * sizeof(void*));
  EXPECT_EQ(library.version, uint64_t(MODULE_LIBRARY_VERSION));
  EXPECT_EQ(library.IsPythonRunning(), 1);
  EXPECT_EQ(library.GetVirtualMachine(), Machine());
  ASSERT_NE(library.GetLibrary(), nullptr);
  EXPECT_EQ(Run("import qlx\nassert qlx.TAVOR_TARGET_DEBUG == 0\n"), 1) << Printed();
  EXPECT_EQ(Run("left = 1\n"), 1);
  EXPECT_EQ(Run(""), 1);
  EXPECT_EQ(Printed(), "");
  for (const auto& [source, words] : std::initializer_list<std::pair<const char*, const char*>>{
           {"left\n", "NameError"}, {"def (\n", "SyntaxError"}, {"raise KeyError('\xC3\xA4')\n", "\xC3\xA4"}}) {
    ForgetPrinted();
    EXPECT_EQ(Run(source), 0) << source;
    EXPECT_NE(Printed().find(words), std::string::npos) << Printed();
    EXPECT_NE(Printed().find("entry-text"), std::string::npos) << Printed();
  }
  EXPECT_EQ(Run("import sys\nsys.exit(3)\n"), 0);
  EXPECT_TRUE(app.Happened("event 1026812")) << "an exit asks the application to end";
  EndStages(1);
  EXPECT_EQ(library.IsPythonRunning(), 0);
  EXPECT_EQ(library.GetVirtualMachine(), nullptr);
  EXPECT_EQ(library.GetLibrary(), nullptr);
  EXPECT_EQ(Run("1\n"), 0);
  app.pair.Shutdown();
  EXPECT_EQ(Close(), 1);
}

TEST_F(InterpreterTest, ResourceSymbols) {
  EXPECT_EQ(Open(), 1);
  EXPECT_EQ(BringUp(), "");
  EXPECT_EQ(app.symbolHook, nullptr);
  EXPECT_EQ(Message(HOST_MESSAGE_INIT), 1);
  ASSERT_NE(app.symbolHook, nullptr);
  EXPECT_EQ(app.strings.symbolCache, nullptr);
  EXPECT_EQ(AskSymbol("TAVOR_TARGET_DEBUG"), -1) << "there is no package yet";
  EXPECT_EQ(Call(QLX_ACTION_PLUGIN_START), 1);
  EXPECT_EQ(
      Run("import qlx\nqlx.great = 1 << 70\nqlx.less = -1\nqlx.truth = False\nqlx.half = 0.5\nqlx.none = None\n"
          "qlx.\xC3\xA4 = 1\nclass Sub(int): pass\nqlx.sub = Sub()\n"),
      1);
  for (const char* name : {"TAVOR_TARGET_DEBUG", "great", "less", "truth", "\xC3\xA4", "sub"})
    EXPECT_EQ(AskSymbol(name), HOST_SYMBOL_KNOWN) << name;
  for (std::string_view name : {"absent"sv, "__doc__"sv, "__name__"sv, "half"sv, "none"sv, ""sv,
                                "tavor_target_debug"sv, "TAVOR_TARGET_DEBUG\0x"sv, "\xFF"sv})
    EXPECT_EQ(AskSymbol(name), -1) << name;
  EXPECT_EQ(app.symbolHook(nullptr), -1);
  EndStages(1);
  ASSERT_NE(app.symbolHook, nullptr);
  EXPECT_EQ(AskSymbol("TAVOR_TARGET_DEBUG"), -1);
  app.pair.Shutdown();
  EXPECT_EQ(Close(), 1);
  EXPECT_EQ(app.symbolHook, nullptr) << "a closed module is not asked";
}

TEST_F(InterpreterTest, MachineThroughItsTable) {
  WatchErrors();
  StartWhole();
  VirtualMachine* machine = Machine();
  ASSERT_NE(machine, nullptr);
  const auto& table = TableOf<VirtualMachineInterface>(machine);
  EXPECT_STREQ(table.head.identity, "net.tavor.python.interface.virtualmachine");
  EXPECT_EQ(table.head.size, sizeof table);
  EXPECT_EQ(Take(table.GetName(machine)), "Python");
  EXPECT_EQ(Take(table.GetVersion(machine)).rfind(PYTHON_VERSION ".", 0), 0u);
  EXPECT_NE(Take(table.GetCopyright(machine)).find("Copyright"), std::string::npos);
  for (auto* text : {table.GetCompiler, table.GetBuildInfo, table.GetDocumentString})
    EXPECT_NE(Take(text(machine)), "");
  auto* library = reinterpret_cast<CPythonLibrary*>(table.GetLibraryRef(machine));
  ASSERT_EQ(library, Library().GetLibrary());
  const CPythonDll* dll = TableOf<CPythonLibraryInterface>(library).GetDll(library);
  const std::string libraries = Take(table.GetAllAvailableVirtualMachineLibraries(machine));
  EXPECT_EQ(libraries.substr(0, libraries.find('\n')), dll->file);
  EXPECT_EQ(std::to_string(dll->major) + "." + std::to_string(dll->minor), PYTHON_VERSION);
  EXPECT_EQ(Take(table.GetVersion(machine)), std::string(PYTHON_VERSION) + "." + std::to_string(dll->micro));

  const auto run = [&](const char* code) {
    const Text text(code);
    return TakeError(table.ExecuteCode(machine, text));
  };
  EXPECT_EQ(run("kept = 41\n"), "");
  EXPECT_EQ(run("kept += 1\nassert kept == 42 and __name__ == '__main__'\n"), "");
  EXPECT_EQ(Printed(), "");
  EXPECT_NE(run("raise ValueError('of the code')\n"), "");
  EXPECT_NE(Printed().find("ValueError: of the code"), std::string::npos) << Printed();
  const std::string file = app.root / "entry_module.py";
  std::ofstream(file) << "import sys\nsys.entryRuns = getattr(sys, 'entryRuns', '') + __name__ + ';'\n";
  const Path script(file), missing(file + "x");
  EXPECT_EQ(TakeError(table.ExecuteFile(machine, script)), "");
  EXPECT_NE(TakeError(table.ExecuteFile(machine, missing)), "");
  EXPECT_EQ(run(("import sys\nsys.path.insert(0, r'" + app.root.string() + "')\n").c_str()), "");
  const Text module("entry_module"), absent("entry_module_that_is_absent");
  EXPECT_EQ(TakeError(table.ExecuteModule(machine, module)), "");
  EXPECT_NE(TakeError(table.ExecuteModule(machine, absent)), "");
  EXPECT_EQ(run("import sys\nassert sys.entryRuns == '__main__;__main__;', sys.entryRuns\n"), "");
  End(1);
}

TEST_F(InterpreterTest, ScopeKeepsItsGlobals) {
  WatchErrors();
  StartWhole();
  VirtualMachine* machine = Machine();
  VirtualMachineScope* scope = TableOf<VirtualMachineInterface>(machine).CreateScope(machine);
  VirtualMachineScope* other = TableOf<VirtualMachineInterface>(machine).CreateScope(machine);
  ASSERT_TRUE(scope && other);
  const auto& table = TableOf<VirtualMachineScopeInterface>(scope);
  EXPECT_STREQ(table.head.identity, "net.tavor.python.interface.virtualmachinescope");
  const auto get = [&](VirtualMachineScope* from, const char* name) {
    const Text text(name);
    HostString value = Garbage();
    const std::string error = TakeError(table.Get(from, text, &value));
    return error.empty() ? Take(value) : "no " + std::string(name);
  };
  const Text name("scope.py"), given("given"), value("a text"), function("twice"), absent("absent");
  const Text code("n = globals().get('n', 0) + 1\ndef twice(): return 2 * n\n");
  EXPECT_NE(TakeError(table.Execute(scope)), "") << "ahead of Init";
  EXPECT_EQ(TakeError(table.Init(scope, name, code, ERRORHANDLING_CLEAR, nullptr)), "");
  EXPECT_EQ(TakeError(table.Init(other, name, code, ERRORHANDLING_REDIRECT, nullptr)), "");
  EXPECT_EQ(table.ErrorHandling(scope), ERRORHANDLING_CLEAR);
  EXPECT_EQ(get(scope, "n"), "no n");
  EXPECT_EQ(TakeError(table.Add(scope, given, value)), "");
  EXPECT_EQ(TakeError(table.Execute(scope)), "");
  EXPECT_EQ(TakeError(table.Execute(scope)), "");
  EXPECT_EQ(get(scope, "n"), "2");
  EXPECT_EQ(get(scope, "given"), "a text");
  EXPECT_EQ(get(other, "n"), "no n");
  EXPECT_EQ(get(other, "given"), "no given");
  HostString result = Garbage();
  EXPECT_EQ(TakeError(table.PrivateInvoke(scope, function, &result)), "");
  EXPECT_EQ(Take(result), "4");
  EXPECT_EQ(TakeError(table.PrivateInvoke(scope, function, nullptr)), "");
  EXPECT_NE(TakeError(table.PrivateInvoke(scope, absent, nullptr)), "");
  EXPECT_NE(TakeError(table.PrivateInvoke(scope, given, nullptr)), "") << "a text is not called";
  EXPECT_EQ(Printed(), "");
  const Text mortal("import sys, weakref\nclass D: pass\nd = D()\nsys.entryRef = weakref.ref(d)\n");
  EXPECT_EQ(TakeError(table.Init(other, name, mortal, ERRORHANDLING_PRINT, nullptr)), "");
  EXPECT_EQ(TakeError(table.Execute(other)), "");
  table.Release(other);
  EXPECT_EQ(Run("import sys\nassert sys.entryRef() is None\n"), 1) << "the last reference frees the globals";
  EndStages(1);
  EXPECT_NE(TakeError(table.Execute(scope)), "") << "after the interpreter's end";
  table.Release(scope);
  app.pair.Shutdown();
  EXPECT_EQ(Close(), 1);
}

TEST_F(InterpreterTest, ScopeErrorHandling) {
  WatchErrors();
  StartWhole();
  VirtualMachine* machine = Machine();
  const Text name("scope.py"), broken("x = (\n"),
      fine("def f(): raise ValueError('of f')\nraise KeyError('top')\n");
  const Text function("f");
  for (int32_t handling : {ERRORHANDLING_PRINT, ERRORHANDLING_CLEAR, ERRORHANDLING_REDIRECT}) {
    SCOPED_TRACE(handling);
    VirtualMachineScope* scope = TableOf<VirtualMachineInterface>(machine).CreateScope(machine);
    const auto& table = TableOf<VirtualMachineScopeInterface>(scope);
    const auto expect = [&](HostResult result, const std::string& words, const std::string& printed) {
      const std::string error = TakeError(result);
      EXPECT_NE(error.find(words), std::string::npos) << error;
      const std::string output = Printed();
      if (handling == ERRORHANDLING_PRINT)
        EXPECT_TRUE(output.find(printed) != std::string::npos && output.find("scope.py") != std::string::npos)
            << output;
      else
        EXPECT_EQ(output, "");
      ForgetPrinted();
    };
    expect(table.Init(scope, name, broken, handling, nullptr), "SyntaxError", "SyntaxError");
    EXPECT_EQ(TakeError(table.Init(scope, name, fine, handling, nullptr)), "");
    expect(table.Execute(scope), "KeyError: 'top'", "KeyError: 'top'");
    expect(table.PrivateInvoke(scope, function, nullptr), "ValueError: of f", "in f");
    table.Release(scope);
  }
  EXPECT_EQ(Run("import sys\nassert sys.exc_info() == (None, None, None)\n"), 1) << Printed();
  End(1);
}

TEST_F(InterpreterTest, LibraryThroughItsTable) {
  WatchErrors();
  StartWhole();
  CPythonLibrary* library = Library().GetLibrary();
  const auto& table = TableOf<CPythonLibraryInterface>(library);
  EXPECT_STREQ(table.head.identity, "net.tavor.python.interface.python.cpythonlibrary");
  EXPECT_EQ(TakeError(table.Init(library)), "") << "a second one does nothing";
  EXPECT_EQ(table.CPy_IsInitialized(library), 1);
  const int32_t state = table.CPyGilState_Ensure(library);
  CPyObject* qlx = table.CPyImport_ImportModule(library, "qlx");
  CPyObject* names = table.CPyModule_GetDict(library, qlx);
  EXPECT_EQ(table.CPyLong_Check(library, table.CPyDict_GetItemString(library, names, "TAVOR_TARGET_DEBUG")), 1);
  EXPECT_EQ(table.CPyLong_Check(library, table.CPyDict_GetItemString(library, names, "__name__")), 0);
  EXPECT_EQ(table.CPyDict_GetItemString(library, names, "absent"), nullptr);
  EXPECT_EQ(table.CPyErr_Occurred(library), nullptr);
  for (bool print : {false, true}) {
    EXPECT_EQ(table.CPyImport_ImportModule(library, "a_module_that_is_absent"), nullptr);
    EXPECT_NE(table.CPyErr_Occurred(library), nullptr);
    (print ? table.CPyErr_Print : table.CPyErr_Clear)(library);
    EXPECT_EQ(table.CPyErr_Occurred(library), nullptr);
    EXPECT_EQ(Printed().find("a_module_that_is_absent") != std::string::npos, print);
  }
  table.CPy_IncRef(library, qlx);
  table.CPy_DecRef(library, qlx);
  table.CPy_DecRef(library, qlx);
  table.CPy_IncRef(library, nullptr);
  table.CPy_DecRef(library, nullptr);
  // Entries that are no plain texts are left alone: a comparison would run code of theirs.
  EXPECT_EQ(Run("import sys\nclass Eq:\n  def __eq__(self, other): sys.path.clear(); return True\n"
                "  __hash__ = object.__hash__\nclass EqText(Eq, str): pass\n"
                "sys.path += [Eq(), EqText('text')]\n"),
            1);
  const Path entries[] = {Path("/entry/a"), Path("/entry/b")};
  static_assert(sizeof(Path) == sizeof(HostFilename));
  for (int32_t handle : {PATHHANDLE_APPEND_AT_END, PATHHANDLE_INSERT_AT_BEGINNING})
    EXPECT_EQ(TakeError(table.CPySys_SetPath(library, entries[0], 2, handle)), "");
  EXPECT_NE(TakeError(table.CPySys_SetPath(library, entries[0], 2, 7)), "");
  table.CPyGilState_Release(library, state);
  EXPECT_EQ(Run("import sys\nassert sys.path[:2] == ['/entry/a', '/entry/b'], sys.path\n"
                "path = [entry for entry in sys.path if type(entry) is str]\n"
                "assert path.count('/entry/a') == 1 and len(path) == len(sys.path) - 2 > 2, path\n"),
            1)
      << Printed();

  const auto special = [&](int32_t which) { return Take(table.GetSpecialPath(library, which)); };
  EXPECT_EQ(special(SPECIALPATH_PREFS_PYTHON_GLOBAL_LIBS), app.PythonLibrariesFolder(false));
  EXPECT_EQ(special(SPECIALPATH_PREFS_PYTHON_LOCAL_LIBS), app.PythonLibrariesFolder(true));
  for (int32_t which : {-1, 4, INT32_MAX}) {
    EXPECT_EQ(special(which), "");
    EXPECT_EQ(table.RegisterSpecialPath(library, which, entries[0]), 0);
  }
  EXPECT_EQ(table.RegisterSpecialPath(library, SPECIALPATH_TAVOR_MODULES, entries[0]), 1);
  EXPECT_EQ(special(SPECIALPATH_TAVOR_MODULES), "/entry/a");
  End(1);
}

}  // namespace
