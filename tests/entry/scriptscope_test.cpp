// Script scopes and conversions as another plug-in of the host uses them, by the module's library.
#include <filesystem>
#include <fstream>
#include <thread>

#include "session.h"

namespace {

class ScriptScopeTest : public EntryTest {
 protected:
  void SetUp() override {
    WatchErrors();
    StartWhole();
    words = &Library().scriptScope;
  }

  int32_t Run(ModuleScriptScope* scope, const char* source, int32_t syntaxError = SCRIPT_SYNTAX_ERROR_PRINT) {
    const Text text(source), name("a node");
    return words->Run(scope, text, name, 257, syntaxError);
  }
  std::string WriteScript(const std::string& text) {
    const std::string file = app.root / "script.py";
    std::ofstream(file, std::ios::binary) << text;
    return file;
  }

  const ScriptScopeTable* words = nullptr;
};

TEST_F(ScriptScopeTest, OperationsOnAThreadThatPythonHasNeverSeen) {
  std::thread([&] {
    const Text x("x"), file("file"), value("value"), broken("\xff");
    const Path path("/a.py");
    const HostGeData real = {HOST_DATA_FLOAT, 0, {.real = 2.5}};
    ModuleScriptScope* scope = words->Create();
    EXPECT_EQ(words->SetInt(scope, x, 1), 0) << "an empty scope";
    EXPECT_EQ(Run(scope, "x"), 0);
    EXPECT_EQ(words->Init(scope), 1);
    EXPECT_EQ(words->SetInt(scope, x, 7), 1);
    EXPECT_EQ(words->SetData(scope, value, &real), 1);
    EXPECT_EQ(words->SetFilename(scope, file, path), 1);
    EXPECT_EQ(words->ImportPackage(scope), 1);
    ForgetPrinted();
    EXPECT_EQ(Run(scope, "assert (x, value, file, qlx.__name__) == (7, 2.5, '/a.py', 'qlx')"), 1) << Printed();
    EXPECT_EQ(words->Contains(scope, x), 1);
    EXPECT_EQ(words->Contains(scope, broken), 0);
    EXPECT_EQ(words->SetNone(scope, x), 1);
    EXPECT_EQ(words->SetNode(scope, x, nullptr, 0), 0);
    EXPECT_EQ(words->SetObject(scope, x, nullptr), 0);
    EXPECT_EQ(Run(scope, "assert x is None"), 1);
    EXPECT_EQ(words->IsExecuting(), 0);
    EXPECT_EQ(words->Reset(scope), 1);
    EXPECT_EQ(words->Contains(scope, x), 0);
    words->Free(scope);
    words->Free(scope);
    words->Destroy(scope);
    words->Destroy(nullptr);
  }).join();
  EXPECT_EQ(Printed(), "");
  for (const auto& [source, answer] :
       std::initializer_list<std::pair<const char*, int32_t>>{{"x", 1}, {"if x:", 0}, {"x = 'a", -1}})
    EXPECT_EQ(words->IsComplete(Text(source)), answer) << source;
  End(1);
}

TEST_F(ScriptScopeTest, ErrorsArePrintedOrCleared) {
  const struct {
    const char* source;
    int32_t syntaxError;
    const char* words;  // empty: nothing is printed
  } cases[] = {{"x y", SCRIPT_SYNTAX_ERROR_PRINT, "File \"a node\", line 1"},
               {"x y", SCRIPT_SYNTAX_ERROR_CLEAR, ""},
               {"1 / 0", SCRIPT_SYNTAX_ERROR_CLEAR, "ZeroDivisionError"}};
  ModuleScriptScope* scope = words->Create();
  EXPECT_EQ(words->Init(scope), 1);
  auto* pending = Python<void*()>("PyErr_Occurred");
  CPythonLibrary* library = Library().GetLibrary();
  const auto& table = TableOf<CPythonLibraryInterface>(library);
  for (const auto& c : cases) {
    ForgetPrinted();
    const int32_t state = table.CPyGilState_Ensure(library);
    EXPECT_EQ(Run(scope, c.source, c.syntaxError), 0) << c.source;
    EXPECT_EQ(pending(), nullptr) << c.source;
    table.CPyGilState_Release(library, state);
    EXPECT_EQ(Printed().empty(), !*c.words) << Printed();
    EXPECT_NE(Printed().find(c.words), std::string::npos) << Printed();
  }
  words->Destroy(scope);
  End(1);
}

TEST_F(ScriptScopeTest, AnExitOfAScriptEndsTheProcess) {
  LeaveErrors();
  ModuleScriptScope* scope = words->Create();
  EXPECT_EQ(words->Init(scope), 1);
  const std::string left = app.home + "/left";
  const std::string atExit = "import atexit, sys\natexit.register(lambda: open('" + left + "', 'w').close())\n";
  for (const auto& [source, code] : std::initializer_list<std::pair<std::string, int>>{
           {"raise SystemExit", 0}, {"raise SystemExit(3)", 3}, {atExit + "sys.exit('no more')", 1}})
    EXPECT_EXIT(Run(scope, source.c_str()), testing::ExitedWithCode(code), "") << source;
  EXPECT_TRUE(std::filesystem::exists(left)) << "the interpreter ends in its own order";
  words->Destroy(scope);
  End(1);
}

TEST_F(ScriptScopeTest, ObjectsUnderTheLock) {
  const ConversionTable& conversion = Library().conversion;
  CPythonLibrary* library = Library().GetLibrary();
  const auto& table = TableOf<CPythonLibraryInterface>(library);
  const Text main("main"), copy("copy"), missing("missing");
  ModuleScriptScope* scope = words->Create();
  EXPECT_EQ(words->Init(scope), 1);
  EXPECT_EQ(Run(scope, "main = 2.5"), 1);
  const int32_t state = table.CPyGilState_Ensure(library);
  CPyObject* object = words->Get(scope, main);
  ASSERT_NE(object, nullptr);
  EXPECT_EQ(words->SetObject(scope, copy, object), 1);
  EXPECT_EQ(words->Get(scope, copy), object);
  EXPECT_EQ(words->Get(scope, missing), nullptr);
  HostGeData data = {};
  EXPECT_EQ(conversion.GeDataFromPython(object, &data), 1);
  EXPECT_EQ(data.type, HOST_DATA_FLOAT);
  EXPECT_EQ(data.value.real, 2.5);
  data = {HOST_DATA_VECTOR, 0, {.vector = {1, 2, 3}}};
  EXPECT_EQ(conversion.GeDataFromPython(object, &data), 0) << "a typed value takes what fits it";
  EXPECT_EQ(data.type, HOST_DATA_VECTOR);
  EXPECT_EQ(data.value.vector.y, 2);
  EXPECT_EQ(conversion.GeDataFromPython(nullptr, &data), 0);
  CPyObject* vector = conversion.GeDataToPython(&data, nullptr);
  EXPECT_NE(vector, nullptr);
  table.CPy_DecRef(library, vector);
  data = {123456789, 0, {}};
  EXPECT_EQ(conversion.GeDataToPython(&data, nullptr), nullptr);
  EXPECT_EQ(Python<void*()>("PyErr_Occurred")(), nullptr);
  table.CPyGilState_Release(library, state);
  EXPECT_EQ(Printed(), "");

  // A scope that outlives Python has nothing to release, and takes nothing.
  EndStages(1);
  EXPECT_EQ(words->Get(scope, main), nullptr);
  EXPECT_EQ(words->Reset(scope), 0);
  EXPECT_EQ(Run(scope, "1"), 0);
  words->Free(scope);
  words->Destroy(scope);
  app.pair.Shutdown();
  EXPECT_EQ(Close(), 1);
}

TEST_F(ScriptScopeTest, FilesAndTexts) {
  const struct {
    std::string text;
    int32_t answer;
    const char* words;  // empty: nothing is told
  } cases[] = {
      {"assert (doc, op, tp, __name__) == (None, None, None, '__main__')\nassert "
       "__file__.endswith('script.py')",
       1, ""},
      {"", 1, ""},
      {"\xEF\xBB\xBFx = 1", 1, ""},
      {"x = 1\nx.y", 0, "script.py'\", line 2"},
      {"x y", 0, "SyntaxError"},
      {std::string("x\0", 2), 0, "null bytes"},
      {"x = '\xff'", 0, "not UTF-8"},
  };
  const auto& execute = *Library().ExecuteScriptFile;
  for (const auto& c : cases) {
    ForgetPrinted();
    EXPECT_EQ(execute(Path(WriteScript(c.text))), c.answer) << c.text;
    EXPECT_EQ(Printed().empty(), !*c.words) << Printed();
    EXPECT_NE(Printed().find(c.words), std::string::npos) << Printed();
  }
  for (const std::string& path : {app.root.string(), app.root.string() + "/missing.py", std::string()}) {
    ForgetPrinted();
    EXPECT_EQ(execute(Path(path)), 0) << path;
    EXPECT_NE(Printed().find("can't open"), std::string::npos) << Printed();
  }
  ForgetPrinted();
  EXPECT_EQ(words->ExecuteText(Text("assert '__file__' not in globals()"), Text("my script"), nullptr), 1);
  EXPECT_EQ(words->ExecuteText(Text("1 / 0"), Text("my script"), nullptr), 0);
  EXPECT_NE(Printed().find("File \"'my script'\", line 1"), std::string::npos) << Printed();
  EXPECT_EQ(words->ExecuteText(Text("raise SystemExit"), Text("my script"), nullptr), 0);
  EXPECT_TRUE(app.Happened("event 1026812"));
  End(1);
}

}  // namespace
