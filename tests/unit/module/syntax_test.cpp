#include "interpreter/lib_python_syntax.h"
#include "support.h"

namespace {

using SyntaxTest = InterpreterTest;

// Every version has its own.
constexpr int32_t kOwnColumn = -100;

TEST_F(SyntaxTest, TheFaultHasAPlace) {
  const struct {
    std::string source;
    bool good;
    int32_t line, column;
    std::string text;
  } cases[] = {
      {"", true, -7, -7, "-"},
      {"x = 1", true, -7, -7, "-"},
      {"# \xc3\xa9\nx = '\xc3\xa9'\n", true, -7, -7, "-"},
      {"x = 1\ny = 2\nz = )\n", false, 3, 5, "z = )\n"},
      {"x = 1\n\nx y\n", false, 3, 3, "x y\n"},
      {"x\n'a", false, 2, kOwnColumn, "'a\n"},
      {std::string("x\0y", 3), false, -7, -7, "-"},
  };
  for (const auto& c : cases) {
    qlx::SyntaxFault fault{-7, -7, "-"};
    EXPECT_EQ(qlx::SyntaxCheck(c.source, fault), c.good) << c.source;
    EXPECT_EQ(fault.line, c.line) << c.source;
    if (c.column != kOwnColumn) {
      EXPECT_EQ(fault.column, c.column) << c.source;
    }
    EXPECT_EQ(fault.text, c.text) << c.source;
    EXPECT_FALSE(PyErr_Occurred()) << c.source;
  }
}

TEST_F(SyntaxTest, EveryKindOfErrorIsAFault) {
  const struct {
    const char* source;
    int32_t line;
  } cases[] = {
      {"if 1:\nx\n", 2},   {"x\n  y\n", 2}, {"if 1:\n\tx\n        y\n", 3},
      {"\n\nreturn\n", 3}, {"x\n'a\n", 2},  {"x\n\nf(1=2)", 3},
  };
  for (const auto& c : cases) {
    qlx::SyntaxFault fault;
    PyObject* code = qlx::CompileForCheck(c.source, "name", fault);
    EXPECT_EQ(code, nullptr) << c.source;
    Py_XDECREF(code);
    EXPECT_TRUE(PyErr_Occurred() && PyErr_ExceptionMatches(PyExc_SyntaxError)) << c.source;
    EXPECT_EQ(fault.line, c.line) << c.source;
    // The error is still whole.
    EXPECT_NE(Take(PyExc_SyntaxError).find("('name', line " + std::to_string(c.line)), std::string::npos);
  }
  qlx::SyntaxFault fault;
  EXPECT_EQ(qlx::CompileForCheck(std::string("\0", 1), "name", fault), nullptr);
  EXPECT_EQ(Take(PyExc_ValueError), "source code string cannot contain null bytes");
}

TEST_F(SyntaxTest, TracebacksShowTheNameInQuotes) {
  qlx::SyntaxFault fault;
  PyObject* code = qlx::CompileForCheck("x = 1", "my script", fault);
  ASSERT_NE(code, nullptr);
  PyObject* name = PyObject_GetAttrString(code, "co_filename");
  EXPECT_STREQ(PyUnicode_AsUTF8(name), "'my script'");
  Py_DECREF(name);
  Py_DECREF(code);
}

TEST_F(SyntaxTest, NamesOfScripts) {
  const struct {
    std::string source, name;
  } cases[] = {
      {"'''Tidy up'''\nx = 1", "Tidy up"},
      {"# a comment\n\"G\xc3\xa9o\"", "G\xc3\xa9o"},
      {"'a\\0b'", {"a\0b", 3}},
      {"x = 1", ""},
      {"", ""},
      {"b'bytes'", ""},
      {"'open", ""},
      {"'doc'\nx = (", ""},
      {std::string("'a'\0", 4), ""},
      {"'\\ud800'", ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(qlx::ExtractScriptName(c.source), c.name) << c.source;
    EXPECT_FALSE(PyErr_Occurred()) << c.source;
  }
}

TEST_F(SyntaxTest, CompletenessOfAStatement) {
  const struct {
    std::string source;
    int answer;
  } cases[] = {
      {"", 0},
      {"\n", 0},
      {"# only a comment", 0},
      {"x", 1},
      {"x\n", 1},
      {"x;", 1},
      {"x; y", 1},
      {"(", 0},
      {"[1,\n2", 0},
      {"[1,\n2]", 1},
      {"f(a,\n  b)", 1},
      {"1+", 0},
      {"x =", 0},
      {"if 1:", 0},
      {"if 1:\n", 0},
      {"if 1:\n  x", 1},
      {"if 1:\n  x\n", 1},
      {"if 1: x", 0},
      {"if 1:\nx", 0},
      {"def f():\n  return 1\n", 1},
      {"class C:\n  def f(self):\n    pass\n\n", 1},
      {"@d\n", 0},
      {"@d\ndef f(): pass\n", 1},
      {"try:\n  x\n", 0},
      {"try:\n  x\nexcept E:\n  y\n", 1},
      {"'a", -1},
      {"'''a", -1},
      {"'''a\nb'''", 1},
      {"a\\", -1},
      {"a\\\n", 1},
      {"a\\\nb", 0},
      {"a + \\\nb", 1},
      {"x\ny", -1},
      {"\tx", -1},
      {"  x", -1},
      {")", 0},
      {"x y", 0},
      {"x y\n", -1},
      {"return", 1},
      {"\xc3\xa9 = '\xe2\x82\xac'", 1},
      {"'\\d'", 1},
      {"?", 0},
      {std::string("x\0", 2), -1},
      {std::string(50, '('), 0},
      // Assignments to what is no target are found only after parsing, the same anywhere in a text.
      {"1 = x", 1},
      {"1 =", 0},
      {"1 = 2 = (", 0},
      {"1 = x )", 0},
      {"1 = x y\n", -1},
      {"'\xc3\xa9' = 1", 1},
      {"f() += 1", 1},
      {"(a, b) += if", 0},
      {"1: int", 1},
      {"1 : =", 0},
      {"del f()\n", 1},
      {"for 1 in x:\n", 0},
      // As is the order of arguments, and stars.
      {"f(1=2)", 1},
      {"f(None=1,", 0},
      {"f(a=1, b)", 1},
      {"f(a=1, g(b, c), d=2, e)(", 0},
      {"f(**k, *a)", 1},
      {"f(x for x in y, 1)", 1},
      {"def f(a=1, b):\n", 0},
      {"def f(a=1, b): pass\n", 1},
      {"def f(*): pass\n", 1},
      {"lambda *: 1", 1},
      {"[*a for a in b]", 1},
      {"{**a for a in b}", 1},
      {"(*a)", 1},
      {"{a: *b}", -1},
      {"from a import b,", 1},
      {"from a import b,\n", 1},
      // As is the inside of texts.
      {"'\\x'", 1},
      {"'C:\\Users' +", 0},
      {"'\\x' y\n", -1},
      {"f'{'", 1},
      {"Rf'{a b}', (", 0},
      {"b'\xc3\xa9'", 1},
      {"'a' b'b'", 1},
      // A name behind a number is a word of its own, part of a number isn't.
      {"1x", 0},
      {"1x\n", -1},
      {"0xg", -1},
      {"1_", -1},
      // What the parser doesn't reach is no matter.
      {"= )", -1},
      {"(]", 0},
      {"(] x", -1},
      {"x \\\n\\\n", 1},
      {std::string(20000, '-') + "1", -1},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(qlx::IsComplete(c.source), c.answer) << c.source.substr(0, 80);
    EXPECT_FALSE(PyErr_Occurred()) << c.source.substr(0, 80);
  }
}

TEST_F(SyntaxTest, CompletenessGivesNoWarnings) {
  for (const char* mode : {"always", "error"}) {
    ASSERT_TRUE(Run(("import io, sys, warnings\nsys.stderr = io.StringIO()\nwarnings.simplefilter('" +
                     std::string(mode) + "')")
                        .c_str()));
    for (const char* source : {"'\\d'", "1if x else y"})
      EXPECT_EQ(qlx::IsComplete(source), 1) << mode << source;
    EXPECT_EQ(Eval("sys.stderr.getvalue()"), "") << mode;
  }
}

}  // namespace
