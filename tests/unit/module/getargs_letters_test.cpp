// What every letter of the argument parser takes, stores and refuses.

#include "getargs_fixture.h"

namespace {

class GetargsLettersTest : public GetargsTest {
 protected:
  // Cases of one letter with one argument "a".
  void CheckLetter(const std::string& format,
                   const std::vector<std::pair<std::string, std::string>>& argumentsAndOutcomes) {
    std::vector<ParseCase> cases;
    for (const auto& [argument, outcome] : argumentsAndOutcomes)
      cases.push_back({format, "a", "call(" + argument + ")", outcome});
    Check(cases);
  }
};

const std::string kTooLarge = "OverflowError: Python int too large to convert to C long";

std::string Refused(const std::string& words) { return "TypeError: argument 1 must be " + words; }

TEST_F(GetargsLettersTest, IntegersOfALimitedRange) {
  const struct {
    std::string letter, kind;
    int64_t minimum, maximum;
  } cases[] = {
      {"b", "unsigned byte integer", 0, 255},
      {"h", "signed short integer", -32768, 32767},
      {"i", "signed integer", -2147483648, 2147483647},
      {"j", "unsigned short integer", 0, 65535},
  };
  for (const auto& c : cases)
    CheckLetter(c.letter,
                {
                    {std::to_string(c.minimum), std::to_string(c.minimum)},
                    {std::to_string(c.maximum), std::to_string(c.maximum)},
                    {std::to_string(c.minimum - 1), "OverflowError: " + c.kind + " is less than minimum"},
                    {std::to_string(c.maximum + 1), "OverflowError: " + c.kind + " is greater than maximum"},
                    {"2**63", kTooLarge},
                    {"-2**63 - 1", kTooLarge},
                    {"True", "1"},
                    {"7.9", "7"},
                    {"None", "TypeError: an integer is required (got type NoneType)"},
                });
}

TEST_F(GetargsLettersTest, IntegersOfAnyValue) {
  CheckLetter("B", {{"255", "-1"}, {"-1", "-1"}, {"0x17f", "127"}, {"2**70 + 3", "3"}, {"-2.5", "-2"}});
  CheckLetter("I", {{"-1", "4294967295"}, {"2**40 + 5", "5"}, {"2**70 + 3", "3"}, {"1.5", "1"}});
  CheckLetter("v", {{"-1", "18446744073709551615"}, {"2**64 + 9", "9"}, {"1e3", "1000"}});
  CheckLetter("l", {{"-2**63", "-9223372036854775808"},
                    {"2**63 - 1", "9223372036854775807"},
                    {"-1", "-1"},
                    {"2**63", "OverflowError: *"},
                    {"-7.9", "-7"}});
  CheckLetter("L", {{"2**64 - 1", "18446744073709551615"},
                    {"2**64", "OverflowError: *"},
                    {"-1", "OverflowError: *"},
                    {"7.9", "7"},
                    {"-7.9", "OverflowError: *"}});
}

TEST_F(GetargsLettersTest, WhatIsAnInteger) {
  ASSERT_TRUE(Run(R"(
class Int:
    def __init__(self, result): self.result = result
    def __int__(self):
        if isinstance(self.result, Exception): raise self.result
        return self.result
class Index:
    def __index__(self): return 3
class Both(Int):
    def __index__(self): return 3
class Number(int):
    def __int__(self): return 4
class Real(float): pass
)"));
  for (const std::string letter : {"B", "I", "L", "b", "h", "i", "j", "l", "v"})
    CheckLetter(letter, {
                            {"Int(7)", "7"},
                            {"Both(7)", "7"},
                            {"Number(7)", "7"},
                            {"Real(7.9)", "7"},
                            {"Int(True)", "1"},
                            {"Index()", "TypeError: an integer is required (got type Index)"},
                            {"Int('7')", "TypeError: __int__ returned non-int (type str)"},
                            {"Int(KeyError('x'))", "KeyError: 'x'"},
                            {"'7'", "TypeError: an integer is required (got type str)"},
                            {"b'7'", "TypeError: an integer is required (got type bytes)"},
                            {"float('nan')", "ValueError: cannot convert float NaN to integer"},
                            {"float('inf')", "OverflowError: cannot convert float infinity to integer"},
                        });
}

TEST_F(GetargsLettersTest, FloatsForIntegersWarn) {
  for (const std::string letter : {"B", "I", "L", "b", "h", "i", "j", "l", "v"}) {
    ASSERT_TRUE(
        Run("records = []\nwarnings.showwarning = lambda *a, **k: records.append(str(a[0]))\n"
            "warnings.simplefilter('always')"));
    CheckLetter(letter, {{"2.5", "2"}, {"2", "2"}, {"True", "1"}});
    EXPECT_EQ(Eval("records"), "['integer argument expected, got float']") << letter;
    ASSERT_TRUE(Run("warnings.simplefilter('error')"));
    CheckLetter(letter, {{"2.5", "DeprecationWarning: integer argument expected, got float"}, {"2", "2"}});
  }
}

TEST_F(GetargsLettersTest, RealsAndCharacters) {
  ASSERT_TRUE(Run("class Real:\n  def __float__(self): return -1.0\nclass Str(str): pass"));
  for (const std::string letter : {"d", "f", "r"})
    CheckLetter(letter, {{"1.5", "1.5"},
                         {"-1", "-1"},
                         {"-1.0", "-1"},
                         {"Real()", "-1"},
                         {"2**1024", "OverflowError: int too large to convert to float"},
                         {"'1.5'", "TypeError: *"},
                         {"None", "TypeError: *"}});
  CheckLetter("c", {{"'a'", "97"},
                    {"'\\0'", "0"},
                    {"'\\xe9'", "195"},
                    {"'\\u20ac'", "226"},
                    {"'\\U0001f600'", "240"},
                    {"Str('b')", "98"},
                    {"''", Refused("Char, not str")},
                    {"'ab'", Refused("Char, not str")},
                    {"b'a'", Refused("Char, not bytes")},
                    {"None", Refused("Char, not None")},
                    {"'\\ud800'", "UnicodeEncodeError: *"}});
}

TEST_F(GetargsLettersTest, Texts) {
  ASSERT_TRUE(Run(R"(
class Str(str):
    def __str__(self): return 'not asked'
class Odd:
    def __init__(self, result): self.result = result
    def __str__(self):
        if isinstance(self.result, Exception): raise self.result
        return self.result
)"));
  const std::string lone =
      "UnicodeEncodeError: 'utf-8' codec can't encode character '\\ud800' in position 0: surrogates not "
      "allowed";
  CheckLetter("$", {{"'a'", "'a'"},
                    {"'\\xe9\\u20ac'", "'\xc3\xa9\xe2\x82\xac'"},
                    {"'a\\0b'", std::string("'a\0b'", 5)},
                    {"Str('s')", "'s'"},
                    {"None", "'None'"},
                    {"thing", "'thing'"},
                    {"b'x'", "'b'x''"},
                    {"Odd('odd')", "'odd'"},
                    {"Odd(KeyError('x'))", "KeyError: 'x'"},
                    {"Odd(3)", "TypeError: __str__ returned non-string (type int)"},
                    {"'\\ud800'", lone},
                    {"Odd('\\ud800')", lone}});
  CheckLetter("%", {{"'a'", "'path a'"},
                    {"'a\\0b'", "ValueError: embedded null byte"},
                    {"Str('s')", "'path s'"},
                    {"Value('MemoryFile', 4)", "'path MemoryFile 4'"},
                    {"Value('Url', 5)", "'path Url 5'"},
                    {"Value('MemoryFile', 4, True)", "ReferenceError: the object 'Value' is not alive"},
                    {"Value('Url', 4, True)", "ReferenceError: the object 'Value' is not alive"},
                    {"None", Refused("str or qlx.storage.MemoryFileStruct, not None")},
                    {"b'a'", Refused("str or qlx.storage.MemoryFileStruct, not bytes")},
                    {"'\\ud800'", lone}});
}

// The letter counts as converted, so that what stands behind it is looked at; its exception stands.
TEST_F(GetargsLettersTest, TextsWithoutUtf8StayAtTheirLetter) {
  ASSERT_TRUE(Run(R"(
class Loud:
    def __str__(self): said.append(1); return 'loud'
said = []
)"));
  const std::string error = "UnicodeEncodeError: *";
  Check({{"|$i", "a b", "call('\\ud800')", "-, - & " + error},
         {"|%i", "a b", "call('\\ud800')", "-, - & " + error},
         {"$i", "a b", "call('\\ud800')", error},
         {"$i", "a b", "call('\\ud800', 5)", error},
         {"$$", "a b", "call('\\ud800', Loud())", error},
         {"$ii", "a b c", "call('\\ud800', Loud(), 5)", error},
         {"|$i", "a b", "call('\\ud800', b=5)", error},
         {"|%i", "a b", "call('\\ud800', 5)", error},
         {"$:f;x", "a", "call('\\ud800')", error}});
  EXPECT_EQ(Eval("len(said)"), "2");
}

TEST_F(GetargsLettersTest, ValuesWithATypeOfTheirOwn) {
  const std::string matrix = "3 4 5 6 7 8 9 10 11 12 13 14";
  const struct {
    std::string format, kind, stored, words;
  } cases[] = {
      {"M", "Matrix", matrix, "qlx.Matrix"},
      {"6", "Matrix", matrix, "qlx.Matrix"},
      {"4", "Matrix", matrix, "qlx.Matrix"},
      {"Q", "Quaternion", "3 4 5 6", "qlx.Quaternion"},
      {"T", "BaseTime", "3 4", "qlx.BaseTime"},
      {"G", "GeData", "3", "a valid type"},
      {"C", "Container", "3", "qlx.BaseContainer"},
      {"CN", "Container", "3", "qlx.BaseContainer or None"},
      {"|C", "Container", "3", "qlx.BaseContainer"},
      {"X", "Thread", "3", "qlx.threading.BaseThread or None"},
      {"V", "Vector", "3 4 5", "net.tavor.parametrictype.vec<3,float64>"},
      {"V6", "Vector", "3 4 5", "net.tavor.parametrictype.vec<3,float64>"},
      {"V3", "Vector4d", "3 4 5 6", "net.tavor.parametrictype.vec<4,float64>"},
      {"V36", "Vector4d", "3 4 5 6", "net.tavor.parametrictype.vec<4,float64>"},
      {"V4", "Vector4d", "3 4 5 6", "net.tavor.parametrictype.vec<4,float64>"},
      {"V46", "Vector4d", "3 4 5 6", "net.tavor.parametrictype.vec<4,float64>"},
      {"V33", "Vector4d32", "3 4 5 6", "net.tavor.parametrictype.vec<4,float32>"},
      {"V43", "Vector4d32", "3 4 5 6", "net.tavor.parametrictype.vec<4,float32>"},
      {"VC", "Color", "3 4 5", "net.tavor.parametrictype.col<3,float64>"},
      {"VC6", "Color", "3 4 5", "net.tavor.parametrictype.col<3,float64>"},
      {"VC3", "ColorA", "3 4 5 6", "net.tavor.parametrictype.col<4,float64>[A]"},
      {"VC36", "ColorA", "3 4 5 6", "net.tavor.parametrictype.col<4,float64>[A]"},
      {"VC4", "ColorA", "3 4 5 6", "net.tavor.parametrictype.col<4,float64>[A]"},
      {"VC46", "ColorA", "3 4 5 6", "net.tavor.parametrictype.col<4,float64>[A]"},
      {"VC33", "ColorA32", "3 4 5 6", "net.tavor.parametrictype.col<4,float32>[A]"},
      {"VC43", "ColorA32", "3 4 5 6", "net.tavor.parametrictype.col<4,float32>[A]"},
  };
  for (const auto& c : cases) {
    CheckLetter(c.format,
                {{"Value('" + c.kind + "', 3)", c.stored},
                 {"Value('" + c.kind + "', 3, True)", "ReferenceError: the object 'Value' is not alive"},
                 {"Value('Other', 3)", Refused(c.words + ", not Value")},
                 {"3", Refused(c.words + ", not int")}});
    const bool takesNone = c.format == "CN" || c.format == "X";
    CheckLetter(c.format, {{"None", takesNone ? "0" : Refused(c.words + ", not None")}});
  }
}

TEST_F(GetargsLettersTest, CheckedObjects) {
  ASSERT_TRUE(Run("class Long: pass\nLong.__name__ = 'L' * 60\nlong = Long()"));
  const struct {
    std::string letter, good, stored, type;
  } cases[] = {
      {"A!", "atom", "71", "qlx.TestAtom"},
      {"P!", "bitmap", "72", "qlx.TestBitmap"},
      {"O!", "thing", "thing", "Thing"},
      {"O!", "special", "thing", "Thing"},
  };
  for (const auto& c : cases) {
    const std::string three = Refused(c.type + ", not int");
    for (const std::string& form : {c.letter, c.letter + "N", "|" + c.letter, "|" + c.letter + "N"})
      CheckLetter(form, {{c.good, c.stored}});
    CheckLetter(c.letter, {{"None", Refused(c.type + ", not None")},
                           {"3", three},
                           {"long", Refused(c.type + ", not " + std::string(50, 'L'))}});
    CheckLetter(c.letter + "N", {{"None", "-"}, {"3", Refused(c.type + " or None, not int")}});
    CheckLetter("|" + c.letter, {{"None", "-"}, {"3", three}});
    CheckLetter("|" + c.letter + "N", {{"None", "-"}, {"3", three}});
  }
  for (const std::string form : {"", "|"}) {
    CheckLetter(form + "A!", {{"dead_atom", "ReferenceError: the object 'qlx.TestAtom' is not alive"}});
    CheckLetter(form + "P!", {{"dead_bitmap", "ReferenceError: the object 'qlx.TestBitmap' is not alive"}});
  }
  CheckLetter("O", {{"None", "None"}, {"thing", "thing"}});
  Check({{"AP", "a b", "call(1, 2)", ""},
         {"iAi", "a b c", "call(1, 'x', 3)", "1, 3"},
         // Inside a sequence nothing is optional.
         {"|(O!)", "a", "call([None])", "TypeError: argument 1, item 0 must be Thing, not None"}});
}

TEST_F(GetargsLettersTest, Gadgets) {
  ASSERT_TRUE(Run("class Number(int): pass\nclass Real(float): pass"));
  CheckLetter("#", {{"5", "5/0"},
                    {"-1", "-1/0"},
                    {"True", "1/0"},
                    {"Number(6)", "6/0"},
                    {"2**31 - 1", "2147483647/0"},
                    {"-2**31 - 1", "2147483647/0"},
                    {"-2**63", "0/0"},
                    {"2**31", "-1/0 & " + kTooLarge},
                    {"2**63", "-1/0 & " + kTooLarge},
                    {"-2**63 - 1", "-1/0 & " + kTooLarge},
                    {"Value('Gadget', 9)", "-1/9"},
                    {"Value('Gadget', 9, True)", "-1/0 & ReferenceError: the object 'Value' is not alive"},
                    {"5.0", Refused("qlx.gui.QLXGadget or int, not float")},
                    {"None", Refused("qlx.gui.QLXGadget or int, not None")}});
}

// What an exception that waits does to the rest of the call.
TEST_F(GetargsLettersTest, AnExceptionThatWaitsStands) {
  ASSERT_TRUE(Run(R"(
class Text:
    def __str__(self): return 'made'
class Broken:
    def __len__(self): return 1
    def __getitem__(self, i): raise KeyError(i)
class Key(str):
    def __eq__(self, other): return str.__eq__(self, other)
    __hash__ = str.__hash__
)"));
  Check({
      {"#i", "a b", "call(2**31, 5)", "-1/0, 5 & " + kTooLarge},
      {"#i", "a b", "call(2**31, 5.5)", "-1/0, 5 & " + kTooLarge},
      {"#i", "a b", "call(2**31, b=5)", "-1/0, 5 & " + kTooLarge},
      {"#i", "a b", "((2**31,), {Key('b'): 5})", "-1/0, 5 & " + kTooLarge},
      {"#$(d)V", "a b c d", "call(2**31, Text(), [2.5], Value('Vector', 1))",
       "-1/0, 'made', 2.5, 1 2 3 & " + kTooLarge},
      {"#|i", "a b", "call(2**31)", "-1/0, - & " + kTooLarge},
      // Minus one is a failure where an exception is pending.
      {"#i", "a b", "call(2**31, -1)", kTooLarge},
      {"#d", "a b", "call(2**31, -1.0)", kTooLarge},
      {"#j", "a b", "call(2**31, -1)", kTooLarge},
      // No composed text takes its place.
      {"#M", "a b", "call(2**31, 1)", kTooLarge},
      {"#(i)", "a b", "call(2**31, Broken())", kTooLarge},
      {"#i", "a b", "call(2**31)", kTooLarge},
      {"#", "a b", "call(2**31, 1)", kTooLarge},
      {"#i", "a", "call(2**31)", kTooLarge},
      {"#|ii", "a b c", "call(2**31, c=1)", kTooLarge},
      {"|i#", "a b", "call(b=2**31, x=1)", kTooLarge},
      {"#;custom", "a b", "call(2**31, 1)", kTooLarge},
      // A letter's own exception does.
      {"#i", "a b", "call(2**31, 'x')", "TypeError: an integer is required (got type str)"},
      {"##", "a b", "call(2**31, Value('Gadget', 1, True))",
       "-1/0, -1/0 & ReferenceError: the object 'Value' is not alive"},
  });
}

TEST_F(GetargsLettersTest, UniversallyUniqueIds) {
  ASSERT_TRUE(Run(R"(
import uuid
class Bytes:
    def __init__(self, data): self.bytes = data
class Data(bytes): pass
class Property:
    @property
    def bytes(self): raise KeyError('x')
)"));
  const std::string digits = "000102030405060708090a0b0c0d0e0f";
  CheckLetter("U", {{"uuid.UUID('" + digits + "')", digits},
                    {"Bytes(bytes(range(16)))", digits},
                    {"Bytes(Data(range(16)))", digits},
                    {"Bytes(bytes(15))", "TypeError: argument 1 "},
                    {"Bytes(bytes(17))", "TypeError: argument 1 "},
                    {"Bytes(bytearray(16))", "TypeError: *"},
                    {"Bytes(None)", "TypeError: *"},
                    {"Property()", "KeyError: 'x'"},
                    {"None", "AttributeError: 'NoneType' object has no attribute 'bytes'"}});
  Check({{"(U):f", "a", "call([Bytes(b'')])", "TypeError: f() argument 1, item 0 "},
         {"U;own words", "a", "call(Bytes(b''))", "TypeError: own words"}});
}

TEST_F(GetargsLettersTest, OtherCharactersAreNoLetters) {
  for (int c = 1; c < 256; ++c) {
    if (std::strchr("#$%46ABCGILMOPQTUVXbcdfhijlrv(|:;", c)) continue;
    CheckLetter(std::string(1, char(c)), {{"5", Refused("impossible<bad format char>, not int")},
                                          {"None", Refused("impossible<bad format char>, not None")}});
  }
  Check({{"O&", "a b", "call(1, 2)", "TypeError: argument 2 must be impossible<bad format char>, not int"},
         {"|si", "a b", "call('x')", "TypeError: argument 1 must be impossible<bad format char>, not str"},
         {"|si", "a b", "call()", "-, -"}});
}

}  // namespace
