#include <functional>
#include <memory>
#include <optional>
#include <thread>

#include "fake_scene.h"
#include "interpreter/lib_python_scriptscope.h"
#include "kelvar/value.h"
#include "kit/i_wrapper.h"
#include "scene/scene.h"

namespace {

using qlx::ScriptScope;

class ScriptScopeTest : public SceneTest {
 protected:
  // What the host has open, and the refreshes that it was asked for.
  inline static FakeObject *document, *object, *particles;
  inline static std::vector<int32_t> refreshes;
  // What `end()` does in a script.
  inline static std::function<void()> atEnd;

  std::optional<ScriptScope> scope;

  void SetUp() override {
    SceneTest::SetUp();
    document = object = particles = nullptr;
    refreshes.clear();
    TextHost::events.clear();
    tables::document.GetActiveDocument = [] { return reinterpret_cast<BaseDocument*>(document); };
    tables::document.GetActiveObject = [](BaseDocument*) { return reinterpret_cast<BaseObject*>(object); };
    tables::document.GetParticleMasterSystem = [](BaseDocument*) {
      return reinterpret_cast<ParticleMasterSystem*>(particles);
    };
    tables::general.EventAdd = [](int32_t flags) { refreshes.push_back(flags); };
    tables::filename.GetString = [](const HostFilename* self) {
      const HostString text{self->word};
      return tables::string.Copy(&text);
    };
    tables::filename.Destroy = [](HostFilename* self) {
      delete static_cast<std::string*>(self->word);
      self->word = nullptr;
    };
    static PyMethodDef end = {"end",
                              [](PyObject*, PyObject*) -> PyObject* {
                                if (atEnd) std::exchange(atEnd, nullptr)();
                                Py_RETURN_TRUE;
                              },
                              METH_NOARGS, nullptr};
    Set("end", PyCFunction_New(&end, nullptr));
    PyObject* package = PyModule_New("qlx");
    ASSERT_TRUE(package && qlx::AddEventFunctions(package));
    ASSERT_EQ(PyDict_SetItemString(PyImport_GetModuleDict(), "qlx", package), 0);
    Py_DECREF(package);
    ASSERT_TRUE(SceneTest::Run("import io, sys\nsys.stderr = io.StringIO()"));
    ASSERT_TRUE(scope.emplace().Init());
  }
  void TearDown() override {
    if (scope) scope->Free();
    scope.reset();
    PyGC_Collect();
    SceneTest::TearDown();
  }

  static Filename Path(const char* path) { return Filename::Adopt({new std::string(path)}); }
  static std::string Printed() {
    return Eval(
        "(sys.stderr.getvalue(), sys.stderr.__init__())[0].encode('ascii', "
        "'backslashreplace').decode().replace('\\0', '')");
  }

  // An expression with the names of the scope.
  std::string In(const char* expression) {
    PyObject* value = PyRun_String(expression, Py_eval_input, scope->Globals(), scope->Globals());
    if (!value) return Take(nullptr);
    Set("answer", value);
    return Eval("answer");
  }
};

TEST_F(ScriptScopeTest, EveryOperationBinds) {
  const HostGeData real = {HOST_DATA_FLOAT, 0, {.real = 2.5}}, none = {};
  PyObject* list = PyList_New(0);
  Set("list", list);
  const struct {
    std::function<bool()> bind;
    const char *name, *expression;
  } cases[] = {
      {[&] { return scope->SetInt("x", INT32_MIN); }, "x", "type(x) is int and x == -2147483648"},
      {[&] { return scope->SetNone("x"); }, "x", "x is None"},
      {[&] { return scope->SetData("x", real); }, "x", "x == 2.5"},
      {[&] { return scope->SetData("x", none); }, "x", "x is None"},
      {[&] { return scope->SetNode("op", Make().As<QLXAtom>(), false); }, "op",
       "type(op).__name__ == 'BaseList2D'"},
      {[&] { return scope->SetResource("__res__", Make().As<GeResource>(), false); }, "__res__",
       "type(__res__).__name__ == 'GeResource'"},
      {[&] { return scope->SetFilename("__file__", Path("/a/\xff.py")); }, "__file__",
       "__file__ == '/a/\\udcff.py'"},
      {[&] { return scope->SetObject("l", list); }, "l", "l == []"},
      {[&] {
         Py_INCREF(list);
         return scope->SetObjectRef("l", qlx::KeptReference::Adopt(list));
       },
       "l", "l == []"},
      {[&] { return scope->ImportPackage(); }, "qlx", "qlx.__name__ == 'qlx'"},
      {[&] { return scope->SetInt("\xc3\xa9", 3); }, "\xc3\xa9", "\xc3\xa9 == 3"},
      {[&] { return scope->SetInt(std::string_view("a\0b", 3), 3); }, std::string_view("a\0b", 3).data(),
       "'a' not in globals() and globals()['a\\0b'] == 3"},
  };
  for (const auto& c : cases) {
    ASSERT_TRUE(scope->Reset());
    EXPECT_TRUE(c.bind()) << c.expression;
    EXPECT_EQ(In(c.expression), "True") << c.expression;
    if (c.name[0] != 'a') {
      EXPECT_TRUE(scope->Contains(c.name)) << c.name;
      EXPECT_EQ(scope->Get(c.name), PyDict_GetItemString(scope->Globals(), c.name)) << c.name;
    }
  }
  scope->Free();
  EXPECT_EQ(Py_REFCNT(list), 1) << "the scope has released what it stored";
}

TEST_F(ScriptScopeTest, WhatCantBeBoundIsRefused) {
  const auto operations = [&](std::string_view name) {
    const std::initializer_list<std::pair<const char*, bool>> answers = {
        {"Contains", scope->Contains(name)},
        {"Get", scope->Get(name) != nullptr},
        {"SetInt", scope->SetInt(name, 1)},
        {"SetNone", scope->SetNone(name)},
        {"SetData", scope->SetData(name, HostGeData{})},
        {"SetNode", scope->SetNode(name, Make().As<QLXAtom>(), false)},
        {"SetResource", scope->SetResource(name, Make().As<GeResource>(), true)},
        {"SetFilename", scope->SetFilename(name, Path("/a"))},
        {"SetObject", scope->SetObject(name, Py_None)}};
    for (const auto& [operation, answer] : answers) EXPECT_FALSE(answer) << operation;
    EXPECT_FALSE(PyErr_Occurred());
  };
  operations("\xff");
  operations("\xed\xa0\x80");  // half of a pair of surrogates
  EXPECT_FALSE(scope->Contains("missing"));
  EXPECT_EQ(scope->Get("missing"), nullptr);
  EXPECT_FALSE(scope->SetNode("op", nullptr, false));
  EXPECT_FALSE(scope->SetObject("x", nullptr));
  EXPECT_FALSE(scope->SetObjectRef("x", {}));
  EXPECT_FALSE(PyErr_Occurred());
  EXPECT_EQ(In("sorted(globals())"), "['__builtins__', '__name__']");

  const HostGeData unknown = {123456789, 0, {}};
  EXPECT_FALSE(scope->SetData("x", unknown));
  EXPECT_NE(Take(nullptr), "(no error)");
  EXPECT_TRUE(SceneTest::Run("sys.modules['qlx'] = None"));
  EXPECT_FALSE(scope->ImportPackage());
  EXPECT_NE(Take(nullptr).find("qlx"), std::string::npos);
  EXPECT_FALSE(scope->Contains("qlx"));

  scope->Free();
  operations("x");
  EXPECT_FALSE(scope->Run("1", "empty"));
  EXPECT_EQ(Take(PyExc_SystemError), "the scope of the script is empty");
}

TEST_F(ScriptScopeTest, OwnedNodesGoWithTheScope) {
  FakeObject &kept = Make(), &given = Make(), &unbound = Make();
  EXPECT_TRUE(scope->SetNode("op", kept.As<QLXAtom>(), false));
  EXPECT_TRUE(scope->SetNode("own", given.As<QLXAtom>(), true));
  EXPECT_FALSE(scope->SetNode("\xff", unbound.As<QLXAtom>(), true));
  EXPECT_EQ(unbound.freed, 1);
  given.alive = false;
  EXPECT_EQ(In("own.GetName()"), "ReferenceError: the object 'qlx.BaseList2D' is not alive");
  given.alive = true;
  scope->Free();
  EXPECT_EQ(given.freed, 1);
  EXPECT_EQ(kept.freed, 0);
}

TEST_F(ScriptScopeTest, FreeAndReset) {
  PyObject* old = scope->Globals();
  Py_INCREF(old);
  EXPECT_TRUE(scope->SetInt("x", 1));
  EXPECT_TRUE(scope->Reset());
  EXPECT_FALSE(scope->Contains("x"));
  EXPECT_EQ(Py_REFCNT(old), 1);
  Py_DECREF(old);
  for (int i = 0; i < 10000; ++i) ASSERT_TRUE(scope->SetInt("name" + std::to_string(i), i));
  EXPECT_EQ(In("sum(v for k, v in globals().items() if k.startswith('name'))"), "49995000");
  // A pending error is the caller's.
  PyErr_SetString(PyExc_ValueError, "mine");
  scope->Free();
  scope->Free();
  EXPECT_EQ(Take(PyExc_ValueError), "mine");
  EXPECT_EQ(scope->Globals(), nullptr);
  EXPECT_TRUE(scope->Reset());
  EXPECT_EQ(In("__name__"), "__main__");

  // The destructor of what the scope held uses the scope.
  ASSERT_TRUE(SceneTest::Run("class D:\n  def __del__(self): end()"));
  for (const bool reset : {false, true}) {
    EXPECT_TRUE(SceneTest::Run("d = D()"));
    EXPECT_TRUE(scope->SetObject("d", Get("d")) && SceneTest::Run("del d"));
    atEnd = [&] { EXPECT_TRUE(scope->Reset() && scope->SetInt("later", 1)); };
    reset ? void(scope->Reset()) : scope->Free();
    EXPECT_FALSE(atEnd);
    EXPECT_TRUE(scope->Contains("later"));
  }

  const qlx::HostBlockingScope window;
  std::thread([&] { scope.reset(); }).join();
}

TEST_F(ScriptScopeTest, RunningTexts) {
  const struct {
    std::string source;
    bool good;
    const char* pending = "";  // the error that the caller finds
    const char* printed = "";  // the last line of the output; "-": anything
    const char* expression = "True";
  } cases[] = {
      {"", true},
      {"# nothing", true},
      {"if __name__ == '__main__': x = 1", true, "", "", "x == 1"},
      {"def main(): return len('abc')", true, "", "", "main() == 3"},
      {"x = 1\nx y", false, "SyntaxError"},
      {"\n\nreturn", false, "SyntaxError"},
      {std::string("x = 1\0", 6), false, "ValueError", "", "'x' not in globals()"},
      {"x = '\xff'", false, "SyntaxError"},
      {"x = 1\ny = z\nx = 2", false, "", "NameError: name 'z' is not defined", "x == 1"},
      {"raise KeyboardInterrupt", false, "", "KeyboardInterrupt"},
      {"def f(): f()\nf()", false, "", "RecursionError: maximum recursion depth exceeded"},
      {"class E(Exception):\n  def __str__(self): raise E\nraise E", false, "", "-"},
      {"del __builtins__", true, "", "", "'x' not in globals()"},
      {"__builtins__ = 5", true},
      {"globals().clear()", true},
      {"qlx = 1; __exec__ = None; doc = qlx", true, "", "", "doc == 1"},
      {"def g():\n  try: yield 1\n  finally: closed.append(1)\nit = g(); next(it)", true, "", "",
       "next(it, 0) == 0"},
      {"import sys\ntry: 1 / 0\nexcept Exception: kept = sys.exc_info()", true, "", "",
       "kept[2].tb_frame.f_globals is globals()"},
      {"import sys\nsys.excepthook = lambda *a: 1 / 0\n1 / 0", false, "", "-"},
  };
  for (const auto& c : cases) {
    TextHost::events.clear();
    ASSERT_TRUE(scope->Reset() && scope->SetObject("closed", Py_None)) << c.source;
    EXPECT_EQ(scope->Run(c.source, "file.py"), c.good) << c.source;
    EXPECT_EQ(PyErr_Occurred() ? reinterpret_cast<PyTypeObject*>(PyErr_Occurred())->tp_name : "",
              std::string(c.pending))
        << c.source;
    PyErr_Clear();
    std::string printed = Printed();
    if (*c.printed != '-') {
      EXPECT_EQ(printed.empty(), !*c.printed) << c.source << printed;
      EXPECT_NE(printed.find(c.printed), std::string::npos) << c.source << printed;
    }
    EXPECT_TRUE(TextHost::events.empty()) << c.source;
    EXPECT_TRUE(SceneTest::Run("sys.excepthook = sys.__excepthook__"));
    if (c.source.find("next(it)") != std::string::npos) {
      Set("list", PyList_New(0));
      EXPECT_TRUE(scope->SetObject("closed", Get("list")));
    }
    // A script that spoils its builtins spoils no other scope.
    if (c.source.find("clear()") == std::string::npos && c.source.find("__builtins__") == std::string::npos) {
      EXPECT_EQ(In(c.expression), "True") << c.source;
    }
  }
  ASSERT_TRUE(scope->Reset());
  EXPECT_EQ(In("len('abc')"), "3");
}

TEST_F(ScriptScopeTest, TracebacksShowTheFileNameAsGiven) {
  const std::pair<std::string, const char*> names[] = {{"my script", "File \"my script\", line 2"},
                                                       {"", "File \"\", line 2"},
                                                       {"/\xff.py", ".py\", line 2"},
                                                       {{"a\0b", 3}, "line 2"}};
  for (const auto& [name, words] : names) {
    EXPECT_FALSE(scope->Run("x = 1\nx.y", name));
    const std::string printed = Printed();
    EXPECT_NE(printed.find(words), std::string::npos) << printed;
    EXPECT_FALSE(scope->Run("\nx y", name));
    EXPECT_TRUE(PyErr_Occurred() && PyErr_ExceptionMatches(PyExc_SyntaxError));
    PyErr_Clear();
  }
}

TEST_F(ScriptScopeTest, AScriptEndsItsOwnScope) {
  ASSERT_TRUE(SceneTest::Run("import warnings\nwarnings.showwarning = lambda *a, **k: end()"));
  const std::function<void()> ends[] = {[&] { scope->Free(); }, [&] { EXPECT_TRUE(scope->Reset()); },
                                        [&] { scope.reset(); }, [&] { EXPECT_TRUE(scope->Run("x = 7", "")); }};
  const std::pair<const char*, bool> sources[] = {
      {"x = 1\nend()\nassert len('abc') == 3 and end", true},
      {"x = 1\nend()\nx.y", false},
      {"import warnings\nwarnings.simplefilter('always')\ndef f(): return 1\nend()\nassert f() == 1", true},
      {"x = '\\d'\nassert x", true},  // ends while it is compiled
  };
  for (const auto& end : ends)
    for (const auto& [source, good] : sources) {
      ASSERT_TRUE(scope.emplace().Init() && scope->SetObject("end", Get("end")));
      atEnd = end;
      EXPECT_EQ(scope->Run(source, "self"), good) << source << Printed();
      EXPECT_FALSE(atEnd) << source;
      PyGC_Collect();
    }
  Printed();
}

TEST_F(ScriptScopeTest, KeysOfAScriptFreeTheScope) {
  ASSERT_TRUE(
      SceneTest::Run("class K:\n"
                     "  def __hash__(self): return hash('main')\n"
                     "  def __eq__(self, other): end(); return False\n"
                     "key = K()"));
  for (const bool setting : {false, true}) {
    ASSERT_TRUE(scope->Reset());
    ASSERT_EQ(PyDict_SetItem(scope->Globals(), Get("key"), Py_None), 0);
    ASSERT_TRUE(scope->SetObject("main", Get("key")));
    atEnd = [&] { scope->Free(); };
    if (setting)
      scope->SetInt("main", 1);
    else
      EXPECT_EQ(scope->Get("main"), nullptr);
    EXPECT_EQ(scope->Globals(), nullptr);
  }
}

TEST_F(ScriptScopeTest, RefreshesAreAskedForOutsideOfNodeScriptsOnly) {
  EXPECT_FALSE(qlx::IsScriptExecuting());
  const struct {
    const char *mark, *call;
    std::vector<int32_t> refreshes;
  } cases[] = {
      {"", "main()", {0}},
      {"__exec__ = 1", "main()", {}},
      {"__exec__ = 0", "main()", {}},
      {"__exec__ = None", "main()", {0}},
      {"__exec__ = 1\ndel __exec__", "main()", {0}},
      {"__exec__ = 1", "qlx.EventAdd(flags=3)", {}},
      {"", "qlx.EventAdd(3)", {3}},
      // A function of another module is not the node's.
      {"__exec__ = 1", "other()", {5}},
  };
  ASSERT_TRUE(SceneTest::Run("import qlx\ndef other(): qlx.EventAdd(5)"));
  for (const auto& c : cases) {
    refreshes.clear();
    ASSERT_TRUE(scope->Reset() && scope->ImportPackage() && scope->SetObject("other", Get("other")));
    const std::string source = std::string("def main(): qlx.EventAdd()\n") + c.mark + "\n" + c.call;
    EXPECT_TRUE(scope->Run(source, "node")) << Printed();
    EXPECT_EQ(refreshes, c.refreshes) << source;
  }
  EXPECT_FALSE(qlx::IsScriptExecuting());
}

TEST_F(ScriptScopeTest, TextsSeeTheActiveDocument) {
  const char* source =
      "import __main__\n"
      "__main__.seen = [type(x).__name__ for x in (doc, op, tp)], __name__, globals().get('__file__')\n"
      "__main__.owned = [x for x in (doc, op, tp) if x]";
  FakeObject &aDocument = Make(), &anObject = Make(), &aSystem = Make();
  const struct {
    FakeObject *document, *object, *particles;
    const char *file, *seen;
  } cases[] = {
      {nullptr, &anObject, &aSystem, nullptr, "(['NoneType', 'NoneType', 'NoneType'], '__main__', None)"},
      {&aDocument, nullptr, nullptr, "/a.py", "(['BaseList2D', 'NoneType', 'NoneType'], '__main__', '/a.py')"},
      {&aDocument, &anObject, nullptr, "", "(['BaseList2D', 'BaseList2D', 'NoneType'], '__main__', '')"},
      {&aDocument, nullptr, &aSystem, nullptr, "(['BaseList2D', 'NoneType', 'BaseList2D'], '__main__', None)"},
  };
  for (const auto& c : cases) {
    document = c.document, object = c.object, particles = c.particles;
    const Filename file = Path(c.file ? c.file : "");
    EXPECT_TRUE(qlx::ExecuteScriptText(source, "my script", c.file ? &file : nullptr)) << c.seen;
    EXPECT_EQ(Eval("seen"), c.seen);
    EXPECT_TRUE(SceneTest::Run("del owned"));
  }
  EXPECT_EQ(aDocument.freed + anObject.freed + aSystem.freed, 0);

  FailingMemory::countdown = 0;  // the first link
  EXPECT_FALSE(qlx::ExecuteScriptText("1", "", nullptr)) << "no wrapper of the document";
  FailingMemory::countdown = -1;
  EXPECT_EQ(Take(PyExc_MemoryError), "");
}

TEST_F(ScriptScopeTest, ErrorsOfTextsStayPending) {
  const struct {
    std::string source;
    const char* error;
  } cases[] = {{"x = 1\nx y", "SyntaxError: invalid syntax ('my script', line 2)"},
               {std::string("\0", 1), "ValueError: source code string cannot contain null bytes"},
               {"1 / 0", "ZeroDivisionError: division by zero"},
               {"raise SystemExit(3)", "SystemExit: 3"}};
  for (const auto& c : cases) {
    EXPECT_FALSE(qlx::ExecuteScriptText(c.source, "my script", nullptr));
    EXPECT_EQ(Take(nullptr), c.error);
  }
  EXPECT_EQ(Printed(), "");
  EXPECT_TRUE(TextHost::events.empty());
  EXPECT_FALSE(qlx::ExecuteScriptText("x.y", "my script", nullptr));
  PyErr_Print();
  const std::string printed = Printed();
  EXPECT_NE(printed.find("File \"'my script'\", line 1"), std::string::npos) << printed;
}

}  // namespace
