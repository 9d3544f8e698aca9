// The argument parser's loop: positions, names, sequences, and the words of what is wrong.

#include "getargs_fixture.h"

namespace {

TEST_F(GetargsTest, PositionsAndNames) {
  Check({
      {"", "", "call()", ""},
      {"", "", "((), None)", ""},
      {"i", "a", "call(a=5)", "5"},
      {"ii", "a b", "call(1, b=2)", "1, 2"},
      {"ii", "a b", "call(b=1, a=2)", "2, 1"},
      {"i|ii", "a b c", "call(1)", "1, -, -"},
      {"i|ii", "a b c", "call(1, c=3)", "1, -, 3"},
      {"i|ii", "a b c", "((1, 2), None)", "1, 2, -"},
      {"|i", "a", "call()", "-"},
      {"i|", "a", "call(1)", "1"},
      {"|ii:f", "a b", "call(b=2)", "-, 2"},
      // A second mark moves the first one.
      {"|i|i", "a b", "call()", "-, -"},
      {"|i|i", "a b", "call(b=1)", "-, 1"},
      // Success comes with the last argument: the rest of the format isn't looked at.
      {"i|?", "a b", "call(1)", "1, -"},
      {"|", "", "call()", ""},
  });
}

TEST_F(GetargsTest, WhatIsWrongWithACall) {
  Check({
      {"", "", "call(1)", "TypeError: function takes at most 0 arguments (1 given)"},
      {"i", "a", "call(1, 2)", "TypeError: function takes at most 1 argument (2 given)"},
      {"i:f", "a", "call(1, b=2)", "TypeError: f() takes at most 1 argument (2 given)"},
      {"ii:f", "a b", "call(1, 2, 3)", "TypeError: f() takes at most 2 arguments (3 given)"},
      {"i;words", "a", "call(1, 2)", "TypeError: function takes at most 1 argument (2 given)"},
      {"ii", "a b", "call(1, a=2)", "TypeError: Argument given by name ('a') and position (1)"},
      {"ii", "a b", "call(1)", "TypeError: Required argument 'b' (pos 2) not found"},
      {"ii", "a b", "call(b=1)", "TypeError: Required argument 'a' (pos 1) not found"},
      {"i|ii", "a b c", "call(c=1)", "TypeError: Required argument 'a' (pos 1) not found"},
      {"|ii", "a b", "call(x=1)", "TypeError: 'x' is an invalid keyword argument for this function"},
      {"ii", "a b", "call(1, x=1)", "TypeError: Required argument 'b' (pos 2) not found"},
      {"i|i", "a b", "call(1, x=1)", "TypeError: 'x' is an invalid keyword argument for this function"},
      {"|i", "a", "((), {1: 2})", "TypeError: keywords must be strings"},
      {"|i", "a", "((), {None: 2})", "TypeError: keywords must be strings"},
      {"|ii", "a b", "((1,), {b'b': 2})", "TypeError: keywords must be strings"},
  });
}

TEST_F(GetargsTest, WhatIsWrongWithAFormat) {
  const std::string more = "RuntimeError: More keyword list entries ";
  const std::string remaining =
      "RuntimeError: more argument specifiers than keyword list entries (remaining format:";
  Check({
      {"i", "a b", "call(1, 2)", more + "(2) than format specifiers (1)"},
      {"i:f", "a b c", "call(1, 2, 3)", more + "(3) than format specifiers (1)"},
      {"i|", "a b", "call(1, 2)", more + "(2) than format specifiers (1)"},
      {"", "a", "call()", more + "(1) than format specifiers (0)"},
      {"ii:f", "a", "call(1)", remaining + "'i:f')"},
      {"(i$)", "a", "call([1])", remaining + "')')"},
      {"(i$)", "a", "call([1, 2])", "TypeError: argument 1 must be sequence of length 1, not 2"},
      {"(i", "a", "call([1])", "1"},
      {"|?i", "a b", "call(b=1)", "RuntimeError: impossible<bad format char>: '?i'"},
      {"|)i", "a b", "call(b=1)", "RuntimeError: Unmatched right paren in format string: ')i'"},
      {"|i(i", "a b c", "call(c=1)", "RuntimeError: Unmatched left paren in format string: '(i'"},
      {"|(i:i)", "a b", "call(b=1)", "RuntimeError: Unmatched left paren in format string: '(i:i)'"},
      {"|(i?)i", "a b", "call(b=1)", "RuntimeError: impossible<bad format char>: '(i?)i'"},
  });
}

TEST_F(GetargsTest, ItemsThatAreSteppedOver) {
  const std::string bad = "RuntimeError: impossible<bad format char>: '";
  for (const char letter : std::string("#$%6BCDGHIKLMOQSTUVXbcdfhijklmnrvwz"))
    Check({{std::string("|") + letter + "i", "a b", "call(b=7)", "-, 7"}});
  for (const std::string item : {"O!", "O&", "A!", "P!", "es", "et", "(ii)", "(i(A!)O!)", "()"}) {
    const std::string format = "|" + item + "i";
    const std::string outcome = Outcome({format, "a b", "call(b=7)", ""});
    EXPECT_EQ(outcome.find_first_not_of("-, "), outcome.size() - 1) << format << " " << outcome;
    EXPECT_EQ(outcome.back(), '7') << format;
  }
  Check({
      {"|Ai", "a b", "call(b=7)", "7"},
      {"|Pi", "a b", "call(b=7)", "7"},
      {"|ei", "a b", "call(b=7)", bad + "ei'"},
      {"|4i", "a b", "call(b=7)", bad + "4i'"},
      {"|Ni", "a b", "call(b=7)", bad + "Ni'"},
      {"|V6i", "a b", "call(b=7)", "TypeError: argument 2 must be qlx.Matrix, not int"},
      // What is left of an item that is only half stepped over is the next name's item.
      {"|CNA!", "a b", "call(b=atom)",
       "TypeError: argument 2 must be impossible<bad format char>, not qlx.TestAtom"},
      {"|CNA!", "a b", "call(None, b=atom)", "0, 71"},
      {"|A!Ni", "a b", "call(b=1)", "TypeError: argument 2 must be impossible<bad format char>, not int"},
      {"|V4i", "a b", "call(b=1)", "TypeError: argument 2 must be qlx.Matrix, not int"},
      {"|CNi", "a b c", "call(c=1)", bad + "Ni'"},
  });
}

TEST_F(GetargsTest, Sequences) {
  ASSERT_TRUE(Run(R"(
class Items:
    def __init__(self, size, items): self.size, self.items = size, items
    def __len__(self):
        if isinstance(self.size, Exception): raise self.size
        return self.size
    def __getitem__(self, i): return self.items[i]
)"));
  Check({
      {"(ii)", "a", "call((1, 2))", "1, 2"},
      {"(ii)", "a", "call([1, 2])", "1, 2"},
      {"(ii)", "a", "call(b'ab')", "97, 98"},
      {"(ii)", "a", "call(Items(2, [3, 4]))", "3, 4"},
      {"i(i(ii)i)i", "a b c", "call(1, [2, [3, 4], 5], 6)", "1, 2, 3, 4, 5, 6"},
      {"(A!VCN)", "a", "call([1, 2, 3])", "TypeError: argument 1 must be sequence of length 4, not 3"},
      {"(VA!)", "a", "call([Value('Vector', 1), atom])", "1 2 3, 71"},
      {"()", "a", "call([])", ""},
      {"(ii)", "a", "call('ab')", "TypeError: argument 1 must be 2-item sequence, not str"},
      {"(ii)", "a", "call(None)", "TypeError: argument 1 must be 2-item sequence, not None"},
      {"(ii)", "a", "call({1, 2})", "TypeError: argument 1 must be 2-item sequence, not set"},
      {"(i(ii)$4)", "a", "call(5)", "TypeError: argument 1 must be 2-item sequence, not int"},
      {"(ii)", "a", "call([1, 2, 3])", "TypeError: argument 1 must be sequence of length 2, not 3"},
      {"(ii)", "a", "call(Items(2, [1]))", "TypeError: argument 1, item 1 is not retrievable"},
      {"(ii)", "a", "call(Items(KeyError('x'), [1]))", "KeyError: 'x'"},
      {"i(M)", "a b", "call(1, ['x'])", "TypeError: argument 2, item 0 must be qlx.Matrix, not str"},
      {"i(i(Mi))", "a b", "call(1, [1, (2, 3)])",
       "TypeError: argument 2, item 1, item 0 must be qlx.Matrix, not int"},
      {"i(i(ii))", "a b", "call(1, [1, (2,)])",
       "TypeError: argument 2, item 1 must be sequence of length 2, not 1"},
      {"(i(i))", "a", "call([1, Items(1, [])])", "TypeError: argument 1, item 1, item 0 is not retrievable"},
      {"(ii)", "a", "call([1, 'x'])", "TypeError: an integer is required (got type str)"},
      // The targets that came first stay written.
      {"|i(ii)i", "a b c", "call(1, [2, 3])", "1, 2, 3, -"},
  });
}

std::string Levels(int count) {
  std::string text;
  while (count-- > 0) text += ", item 0";
  return text;
}

TEST_F(GetargsTest, SequencesInSequences) {
  ASSERT_TRUE(Run("def deep(n, x):\n  for i in range(n): x = [x]\n  return x"));
  const auto format = [](size_t depth, const std::string& item) {
    return std::string(depth, '(') + item + std::string(depth, ')');
  };
  const std::string words = " must be qlx.Matrix, not int";
  // The list of places ends with the buffer's 220 bytes, long before the 32 places.
  Check({{format(26, "M"), "a", "call(deep(26, 1))", "TypeError: argument 1" + Levels(26) + words},
         {format(27, "M"), "a", "call(deep(27, 1))", "TypeError: argument 1" + Levels(27) + words},
         {format(31, "M"), "a", "call(deep(31, 1))", "TypeError: argument 1" + Levels(27) + words},
         {format(32, "M"), "a", "call(deep(32, 1))", "TypeError: argument 1" + Levels(27) + words},
         {format(33, "M"), "a", "call(deep(33, 1))", "TypeError: argument 1" + Levels(27) + words},
         {format(80, "M"), "a", "call(deep(80, 1))", "TypeError: argument 1" + Levels(27) + words},
         {format(80, "(ii)"), "a", "call(deep(79, ()))",
          "TypeError: argument 1" + Levels(27) + " must be sequence of length 1, not 0"},
         {format(80, "i"), "a", "call(deep(80, 7))", "7"}});
}

TEST_F(GetargsTest, TheWordsOfARefusal) {
  const std::string words = "argument 1 must be qlx.Matrix, not int";
  const std::string a200(200, 'a'), x1200(1200, 'x');
  ASSERT_TRUE(Run("Wide = type('\\xe9' * 30, (), {})\nOdd = type('a' + '\\xe9' * 30, (), {})"));
  std::string accents, half;
  for (int i = 0; i < 25; ++i) accents += "\xc3\xa9";
  half = "a" + accents.substr(0, 48) + "\xef\xbf\xbd";
  Check({
      {"M:f", "a", "call(1)", "TypeError: f() " + words},
      {"M:", "a", "call(1)", "TypeError: () " + words},
      {"M: a b", "a", "call(1)", "TypeError:  a b() " + words},
      {"M:" + a200 + "b", "a", "call(1)", "TypeError: " + a200 + "() " + words},
      {"(M):" + a200, "a", "call([1])",
       "TypeError: " + a200 + "() argument 1, item 0 must be qlx.Matrix, not int"},
      {"M;own words", "a", "call(1)", "TypeError: own words"},
      {"M;", "a", "call(1)", "TypeError: "},
      {"M;" + x1200, "a", "call(1)", "TypeError: " + x1200},
      {"M;\xc3\xa9", "a", "call(1)", "TypeError: \xc3\xa9"},
      {"(M);own words", "a", "call([1])", "TypeError: own words"},
      {"i;own words", "a", "call(2**31)", "OverflowError: signed integer is greater than maximum"},
      // The name is looked for first, in the whole format.
      {"M;own: words", "a", "call(1)", "TypeError:  words() " + words},
      {"M:f;g", "a", "call(1)", "TypeError: f;g() " + words},
      {"M", "a", "call(Wide())", "TypeError: argument 1 must be qlx.Matrix, not " + accents},
      {"M", "a", "call(Odd())", "TypeError: argument 1 must be qlx.Matrix, not " + half},
      {"|i", "a", "call(**{'" + x1200 + "': 1})",
       "TypeError: '" + x1200 + "' is an invalid keyword argument for this function"},
  });
}

TEST_F(GetargsTest, NamesOfAllKinds) {
  ASSERT_TRUE(Run(R"(
class Str(str): pass
class Hostile(str):
    def __eq__(self, other): raise KeyError('compared')
    __hash__ = str.__hash__
class Other:
    def __eq__(self, other): return other == 'b'
    def __hash__(self): return hash('b')
)"));
  Check({
      {"ii", "a b", "((1,), {Str('b'): 2})", "1, 2"},
      {"ii", "a b", "((), {Str('b'): 2, 'a': 1})", "1, 2"},
      {"ii", "a \xc3\xa9", "((), {'a': 1, '\\xe9': 2})", "1, 2"},
      {"i", "\xc3\xa9", "((), {'\\xc3\\xa9': 2})", "TypeError: Required argument '\xc3\xa9' (pos 1) not found"},
      {"ii", "a b", "((1,), {Other(): 2})", "1, 2"},
      {"ii", "a b", "((1,), {Hostile('b'): 2})", "KeyError: 'compared'"},
      {"|i", "a", "((), {'aa': 2})", "TypeError: 'aa' is an invalid keyword argument for this function"},
      {"|i", "aa", "((), {'a': 2})", "TypeError: 'a' is an invalid keyword argument for this function"},
      {"|i", "a", "((), {'A': 2})", "TypeError: 'A' is an invalid keyword argument for this function"},
      {"|i", "a", "((), {'': 2})", "TypeError: '' is an invalid keyword argument for this function"},
      {"|i", "a", "((), {'\\xe9': 2})",
       "TypeError: '\xc3\xa9' is an invalid keyword argument for this function"},
      {"|i", "a", "((), {'\\ud800': 2})",
       "TypeError: '\xed\xa0\x80' is an invalid keyword argument for this function"},
      // Names end at a null byte for the last check, not for the look-up.
      {"|i", "a", "((), {'a\\0b': 2})", "-"},
      {"|i", "a", "((), {'b\\0b': 2})", "TypeError: 'b' is an invalid keyword argument for this function"},
  });
}

TEST_F(GetargsTest, WrongCallsOfTheParser) {
  PyObject* tuple = PyTuple_New(0);
  PyObject* list = PyList_New(0);
  PyObject* dict = PyDict_New();
  const char* const names[] = {nullptr};
  const struct {
    PyObject *args, *keywords;
    const char* format;
    const char* const* names;
  } cases[] = {
      {nullptr, dict, "", names},    {list, dict, "", names},    {tuple, tuple, "", names},
      {tuple, dict, nullptr, names}, {tuple, dict, "", nullptr}, {dict, nullptr, "", names},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(qlx::ParseTupleAndKeywords(c.args, c.keywords, c.format, c.names), 0);
    EXPECT_EQ(Take(PyExc_SystemError).find("modules/python/source/kit/i_getargs.cpp:"), 0u);
  }
  EXPECT_EQ(qlx::ParseTupleAndKeywords(tuple, dict, "", names), 1);
  Py_DECREF(tuple);
  Py_DECREF(list);
  Py_DECREF(dict);
}

TEST_F(GetargsTest, EveryAllocationMayFail) {
  // No Python code runs in these: the interpreter's own frames don't stand every failure.
  ASSERT_TRUE(Run(R"(
import gc, types
from decimal import Decimal
gc.disable()
class Str(str): pass
def data(): return types.SimpleNamespace(bytes=bytes(range(16)))
)"));
  const ParseCase cases[] = {
      {"$U(ii)f", "a b c d", "((1.5, data(), range(1000, 1002)), {Str('d'): 2})", ""},
      {"$%c", "a b c", "call('\\xe9' * 50, '\\xe8' * 50, '\\xe7')", ""},
      {"i#L", "a b c", "call(Decimal(5), 2**31, Decimal(7))", ""},
      {"|iU", "a b", "call(b=data())", ""},
      {"M:f", "a", "call(1)", ""},
      {"|i", "a", "call(b=1)", ""},
      {"|i", "a", "((), {'\\ud800': 1})", ""},
      {"(ii)", "a", "call(3)", ""},
      {"A!", "a", "call(dead_atom)", ""},
  };
  const FailingMemory memory;
  for (const ParseCase& c : cases) {
    // The text's cached UTF-8 form would spare the second parse its allocation: each takes new objects.
    const auto parse = [&](int failing, bool& reached) {
      PyObject* call = PyRun_String(c.call.c_str(), Py_eval_input, Main(), Main());
      getargs::TargetsOf targets(c.format, TestTypes());
      const std::vector<std::string> names = Names(c);
      FailingMemory::countdown = failing;
      const int32_t result =
          targets.Parse(PyTuple_GET_ITEM(call, 0), PyTuple_GET_ITEM(call, 1), c.format, names);
      reached = FailingMemory::countdown < 0;
      FailingMemory::countdown = -1;
      EXPECT_TRUE(result == 1 || PyErr_Occurred()) << c.format << " at " << failing;
      PyErr_Clear();
      Py_DECREF(call);
      // It holds names of attributes, at other places in every call.
      PyType_ClearCache();
    };
    bool reached = true;
    int failing = 0;
    for (; reached && failing < 500; ++failing) {
      // The interpreter's free lists fill first.
      long alive[140];
      for (long& count : alive) {
        parse(failing, reached);
        count = FailingMemory::alive;
      }
      EXPECT_EQ(alive[138], alive[139]) << c.format << " at " << failing;
      EXPECT_EQ(getargs::Host::alive, 0);
    }
    EXPECT_GT(failing, 1) << c.format;
    EXPECT_FALSE(reached) << c.format;
  }
}

}  // namespace
