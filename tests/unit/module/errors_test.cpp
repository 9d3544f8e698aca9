#include <functional>
#include <string>

#include "kit/i_errors.h"
#include "support.h"

namespace {

constexpr int32_t kInstalled = 1000500;

using ErrorsTest = InterpreterTest;

std::string Times(int count, const std::string& part) {
  std::string text;
  while (count-- > 0) text += part;
  return text;
}

PyTypeObject* Type(PyObject* object) { return reinterpret_cast<PyTypeObject*>(object); }

// Those that no script meets yet.
TEST_F(ErrorsTest, TextsHaveTheirTypeAndTheirAnswer) {
  tables::plugin.FindPlugin = [](int32_t id, int32_t kind) {
    static int plugin;
    return reinterpret_cast<BasePlugin*>(id == kInstalled && kind == 0 ? &plugin : nullptr);
  };
  ASSERT_TRUE(Run("class Node: pass"));
  PyTypeObject* const type = Type(Get("Node"));
  const auto null = [](PyObject* answer) { return answer ? 99 : 0; };
  const struct {
    std::function<int()> raise;
    PyObject* exception;
    std::string text;
    int answer;
  } cases[] = {
      {[&] { return null(qlx::ReportAllocFailed(type, kInstalled)); }, PyExc_BaseException,
       "could not allocate 'Node (ID 1000500)' instance", 0},
      {[&] { return qlx::ReportLinkedNotAlive(type), 0; }, PyExc_ReferenceError,
       "the linked object of 'Node' is not alive", 0},
      {[&] { return qlx::RaiseReadOnlyAttribute(); }, PyExc_AttributeError, "the attribute is read-only", -1},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.raise(), c.answer) << c.text;
    EXPECT_EQ(Take(c.exception), c.text);
  }
}

TEST_F(ErrorsTest, LongTextsAreCutAndStayTexts) {
  const std::string a = Times(70, "a"), e = "\xc3\xa9", mark = "\xef\xbf\xbd", half = Times(50, "a");
  ASSERT_TRUE(
      Run("Long = type('L' * 120, (), {})\nlong = Long()\nAccents = type('\\xe9' * 60, (), {})\n"
          "Odd = type('a' + '\\xe9' * 60, (), {})\naccents, odd = Accents(), Odd()"));
  const auto formatted = [](const std::string& text) {
    qlx::RaiseFormatted(PyExc_TypeError, "%s", text.c_str());
  };
  const struct {
    std::function<void()> raise;
    std::string text;
  } cases[] = {
      {[&] { formatted(Times(999, "x")); }, Times(999, "x")},
      {[&] { formatted(Times(1000, "x")); }, Times(999, "x")},
      {[&] { formatted(Times(997, "x") + e + "x"); }, Times(997, "x") + e},
      {[&] { formatted(Times(998, "x") + e); }, Times(998, "x") + mark},
      {[&] { formatted(Times(997, "x") + "\xf0\x9f\x98\x80"); }, Times(997, "x") + mark},
      {[&] { formatted("not \xff UTF-8"); }, "not " + mark + " UTF-8"},
      {[&] { qlx::RaiseExpectedType(a.c_str(), Get("long")); }, "Expected " + half + ", not " + Times(50, "L")},
      {[&] { qlx::RaiseExpectedType("int", Get("accents")); }, "Expected int, not " + Times(25, e)},
      {[&] { qlx::RaiseExpectedType("int", Get("odd")); }, "Expected int, not a" + Times(24, e) + mark},
      // All three names at their limit pass the 149 bytes of the whole.
      {[&] { qlx::RaiseExpectedTypeFor(a.c_str(), a.c_str(), Get("long")); },
       (half + " expected " + half + ", not " + Times(50, "L")).substr(0, 149)},
      {[&] { qlx::ReportBadComparison(Get("long"), Py_None, Py_LT); },
       "unsupported comparison operator ( '<' ) for '" + Times(100, "L") + "' and 'NoneType'"},
  };
  for (const auto& c : cases) {
    c.raise();
    EXPECT_EQ(Take(PyExc_TypeError), c.text);
  }
}

TEST_F(ErrorsTest, ComparisonsWithoutAnOrder) {
  const struct {
    int op;
    std::string words;
  } cases[] = {{0, "<"}, {1, "<="}, {4, ">"}, {5, ">="}, {2, "??"}, {3, "??"}, {-1, "??"}, {6, "??"}};
  PyObject* number = PyLong_FromLong(1);
  for (const auto& c : cases) {
    TextHost::diagnostics.clear();
    qlx::ReportBadComparison(number, Py_None, c.op);
    EXPECT_EQ(Take(PyExc_TypeError),
              "unsupported comparison operator ( '" + c.words + "' ) for 'int' and 'NoneType'");
    EXPECT_EQ(TextHost::diagnostics.size(), c.words == "??" ? 1u : 0u) << c.op;
  }
  Py_DECREF(number);
}

}  // namespace
