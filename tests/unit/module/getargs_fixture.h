// A test of the argument parser: tables of calls and what comes of them.
#ifndef TESTS_UNIT_MODULE_GETARGS_FIXTURE_H
#define TESTS_UNIT_MODULE_GETARGS_FIXTURE_H

#include <sstream>
#include <string>
#include <vector>

#include "getargs_support.h"
#include "support.h"

// A format, its names, the arguments as an expression, and the outcome: the targets, an exception
// ("TypeError: ..."), or both where the parse succeeds with an exception pending ("5 & ...").
// Behind a '*' stand words of the interpreter, which differ between versions.
struct ParseCase {
  std::string format, names, call, outcome;
};

class GetargsTest : public InterpreterTest {
 protected:
  void SetUp() override {
    InterpreterTest::SetUp();
    getargs::Host::Install();
    getargs::InstallLetters();
    ASSERT_TRUE(Run(getargs::kClasses));
    ASSERT_TRUE(Run(R"(
import warnings
warnings.simplefilter('ignore')
def call(*args, **keywords): return args, keywords
class Thing:
    def __repr__(self): return 'thing'
class Special(Thing): pass
thing, special = Thing(), Special()
)"));
    types_ = {Make("qlx.TestAtom", "atom", 71), reinterpret_cast<PyTypeObject*>(Get("Thing")),
              Make("qlx.TestBitmap", "bitmap", 72)};
  }
  void TearDown() override {
    EXPECT_EQ(getargs::Host::alive, 0);
    InterpreterTest::TearDown();
  }

  std::string Outcome(const ParseCase& c) {
    PyObject* call = PyRun_String(c.call.c_str(), Py_eval_input, Main(), Main());
    if (!call) return "bad case: " + getargs::TakeError();
    PyObject* const keywords = PyTuple_GET_ITEM(call, 1);
    getargs::TargetsOf targets(c.format, types_);
    const int32_t result =
        targets.Parse(PyTuple_GET_ITEM(call, 0), keywords == Py_None ? nullptr : keywords, c.format, Names(c));
    EXPECT_TRUE(result == 1 || (result == 0 && PyErr_Occurred()));
    const std::string error = getargs::TakeError();
    const std::string text = result == 0 ? error : targets.Describe() + (error.empty() ? "" : " & " + error);
    Py_DECREF(call);
    return text;
  }

  void Check(const std::vector<ParseCase>& cases) {
    for (const ParseCase& c : cases) {
      const std::string outcome = Outcome(c);
      const size_t any = c.outcome.find('*');
      EXPECT_EQ(outcome.substr(0, any), c.outcome.substr(0, any)) << c.format << " " << c.call;
    }
  }

  static std::vector<std::string> Names(const ParseCase& c) {
    std::istringstream words(c.names);
    std::vector<std::string> names;
    for (std::string name; words >> name;) names.push_back(name);
    return names;
  }
  static PyObject* Main() { return PyModule_GetDict(PyImport_AddModule("__main__")); }
  const getargs::Types& TestTypes() const { return types_; }

 private:
  // A type of host objects with two instances, of which one is dead.
  static PyTypeObject* Make(const char* type, const std::string& name, uint64_t number) {
    PyTypeObject* made = getargs::MakeType(type);
    for (const bool dead : {false, true}) {
      PyObject* instance = getargs::MakeAtom(made, dead ? 0 : number);
      PyDict_SetItemString(Main(), ((dead ? "dead_" : "") + name).c_str(), instance);
      Py_DECREF(instance);
    }
    PyDict_SetItemString(Main(), (name + "_type").c_str(), reinterpret_cast<PyObject*>(made));
    Py_DECREF(made);
    return made;
  }

  getargs::Types types_{};
};

#endif
