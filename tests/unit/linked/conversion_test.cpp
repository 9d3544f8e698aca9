// Values between the real host and Python: every type against every object, arrays, and the views of dicts,
// lists and tuples.
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <optional>

#include "app/settings.h"
#include "boundary/host.h"
#include "kelvar/baselist.h"
#include "kit/i_arrays.h"
#include "kit/i_collections.h"
#include "kit/i_conversion.h"
#include "kit/i_typequeue.h"
#include "scene/geometry.h"
#include "scene/links.h"
#include "support.h"

namespace {

constexpr int32_t kCube = 5159;

class ConversionTest : public InterpreterTest {
 protected:
  void SetUp() override {
    InterpreterTest::SetUp();
    host::GetSettings().startup = HOST_STARTUP;
    host::OfferLinkLayout();
    host::boundary_tables::Fill(host_, HOST_VERSION_MINIMUM);
    ASSERT_EQ(tables::Resolve(&host_), "");
    ASSERT_EQ(qlx::ReadyTypeQueue(), "");
    for (PyTypeObject* type : {&qlx::g_VectorType, &qlx::g_Vector4dType, &qlx::g_MatrixType,
                               &qlx::g_BaseTimeType, &qlx::g_DescIDType, &qlx::g_DescLevelType,
                               &qlx::g_BaseContainerType, &qlx::g_CPolygonType, &qlx::g_BaseSelectType}) {
      Py_INCREF(type);
      Set(std::strrchr(type->tp_name, '.') + 1, reinterpret_cast<PyObject*>(type));
    }
    Set("element", qlx::WrapHostObject(BaseList2D::Alloc(kCube), true));
    BaseList2D* dead = BaseList2D::Alloc(kCube);
    Set("dead", qlx::WrapHostObject(dead, false));
    dead->Free();
    Set("capsule", PyCapsule_New(this, nullptr, nullptr));
    ASSERT_TRUE(Run(R"(
import uuid
class Int(int):
    def __int__(self): return 99
class Angry(int):
    def __float__(self): raise KeyError('float')
class Float(float): pass
class Str(str): pass
class Id(uuid.UUID): pass
class BadId(uuid.UUID):
    bytes = property(lambda self: 1 // 0)
class Items:
    def __init__(self, size, *items): self.size, self.items = size, items
    def __len__(self): return self.size
    def __iter__(self):
        for item in self.items:
            yield item() if callable(item) else item
def fail(): raise KeyError('item')
)"));
  }
  // The texts of the host end ahead of its tables.
  void TearDown() override {
    ASSERT_TRUE(
        Run("for name in list(globals()):\n"
            "    if name[:2] != '__': del globals()[name]\n"
            "del name"));
    InterpreterTest::TearDown();
  }

  static PyObject* Make(const std::string& expression) {
    PyObject* names = PyModule_GetDict(PyImport_AddModule("__main__"));
    PyObject* made = PyRun_String(expression.c_str(), Py_eval_input, names, names);
    EXPECT_TRUE(made) << expression;
    return made;
  }
  // What a script sees; the object is given up. The pending error for none.
  static std::string Show(PyObject* object) {
    if (!object) return Take(nullptr);
    PyObject* text = PyObject_Repr(object);
    const std::string shown = text ? PyUnicode_AsUTF8(text) : Take(nullptr);
    Py_XDECREF(text);
    Py_DECREF(object);
    return shown;
  }
  static GeData Text(const char* text) { return GeData::String(kelvar::Text(text)); }

 private:
  HostTables host_{};
};

TEST_F(ConversionTest, ATypeTakesWhatFitsAndNothingElse) {
  BaseContainer* container = BaseContainer::Alloc(1);
  DescID id;
  id.PushId({1, 2, 3});
  const std::vector<GeData> targets = {
      GeData(),
      GeData::Pointer(this),
      GeData::Int32(1),
      GeData::Float(1),
      GeData::Time({1, 2}),
      GeData::Vector({1}),
      GeData::Matrix({}),
      GeData::Int64(1),
      Text("old"),
      GeData::Filename(Filename::FromString(kelvar::Text("old"))),
      GeData::Container(container),
      GeData::Link({}),
      GeData::Uuid({}),
      GeData::Custom(id.Word()),
      GeData::Custom(Vector4d{1}),
      GeData::Custom(ColorA{1}),
  };
  container->Free();

  // The types that the object fits, with what they become: itself, where nothing else is told.
  struct Fit {
    int32_t from;
    int32_t to = from;
    const char* shown = nullptr;  // the object's own text for none
  };
  const struct {
    const char* object;
    std::vector<Fit> fits;
  } cases[] = {
      {"None", {{0}, {133}}},
      {"Vector(1, 2, 3)", {{0, 23}, {23}}},
      {"Vector4d(1, 2, 3, 4)", {{0, 1040682}, {1040682}, {400007013}}},
      {"5", {{0, 15}, {15}, {26, 15}, {19, 19, "5.0"}}},
      {"True", {{0, 15, "1"}, {15, 15, "1"}, {26, 15, "1"}, {19, 19, "1.0"}}},
      {"Int(5)", {{0, 15}, {15}, {26, 15}, {19, 19, "5.0"}}},
      {"2**40", {{0, 26}, {15, 26}, {26}, {19, 19, "1099511627776.0"}}},
      {"1.5", {{0, 19}, {19}}},
      {"Float(1.5)", {{0, 19}, {19}}},
      {"BaseTime(1, 30)", {{0, 22}, {22}}},
      {"'text\\u20ac'", {{0, 130}, {130}, {131}}},
      {"Str('/a')", {{0, 130}, {130}, {131}}},
      {"Matrix(Vector(1))", {{0, 25}, {25}}},
      {"uuid.UUID(int=7)", {{0, 258}, {258}}},
      {"Id(int=7)",
       {{0, 258, "UUID('00000000-0000-0000-0000-000000000007')"},
        {258, 258, "UUID('00000000-0000-0000-0000-000000000007')"}}},
      {"DescID()", {{0, 1000486}, {1000486}}},
      {"DescID(1, DescLevel(2, 3, 4), DescLevel(5))", {{0, 1000486}, {1000486}}},
      {"capsule", {}},
      {"[Vector()]", {}},
      {"DescLevel(1)", {}},
      {"object", {}},
  };
  for (const auto& c : cases)
    for (const GeData& target : targets) {
      SCOPED_TRACE(c.object + std::string(" for ") + std::to_string(target.Type()));
      PyObject* object = Make(c.object);
      GeData data = target;
      const bool done = qlx::GeDataFromPython(object, data);
      std::optional<Fit> fit;
      for (const Fit& one : c.fits)
        if (one.from == target.Type()) fit = one;
      EXPECT_EQ(done, fit.has_value());
      if (fit) {
        EXPECT_EQ(data.Type(), fit->to);
        EXPECT_EQ(Show(qlx::GeDataToPython(*data.Data(), nullptr)),
                  fit->shown ? fit->shown : Show(Make(c.object)));
      } else {
        EXPECT_EQ(Take(PyExc_TypeError), "could not convert '" + std::string(Py_TYPE(object)->tp_name) + "'");
        EXPECT_TRUE(data == target);
      }
      Py_DECREF(object);
    }
}

TEST_F(ConversionTest, ASelectionGoesAsItsAddress) {
  PyObject* object = Make("BaseSelect()");
  for (const GeData& target : {GeData(), GeData::Pointer(this)}) {
    GeData data = target;
    EXPECT_TRUE(qlx::GeDataFromPython(object, data));
    EXPECT_EQ(data.GetPointer(), reinterpret_cast<qlx::SelectRecord*>(object)->data);
    EXPECT_EQ(Show(qlx::GeDataToPython(*data.Data(), nullptr)).substr(0, 24), "<capsule object NULL at ");
  }
  GeData data = GeData::Int32(7);
  EXPECT_FALSE(qlx::GeDataFromPython(object, data));
  EXPECT_EQ(Take(nullptr), "TypeError: could not convert 'qlx.BaseSelect'");
  Py_DECREF(object);
}

TEST_F(ConversionTest, IntegersByTheirSize) {
  const struct {
    const char* expression;
    int32_t type;
    int64_t value;
  } cases[] = {
      {"0", 15, 0},
      {"-1", 15, -1},
      {"2**31 - 1", 15, 2147483647},
      {"-2**31", 15, -2147483647 - 1},
      {"2**31", 26, 2147483648},
      {"2**32 - 1", 26, 4294967295},
      {"2**32", 26, 4294967296},
      {"2**40 + 2**32 - 1", 26, 1103806595071},
      {"2**63 - 1", 26, INT64_MAX},
      {"-2**31 - 1", 15, 2147483647},  // cut
      {"-2**32 - 1", 15, -1},
      {"-2**63", 15, 0},
  };
  for (const auto& c : cases)
    for (GeData data : {GeData(), GeData::Int32(7), GeData::Int64(7)}) {
      PyObject* object = Make(c.expression);
      EXPECT_TRUE(qlx::GeDataFromPython(object, data)) << c.expression;
      EXPECT_EQ(data.Type(), c.type) << c.expression;
      EXPECT_EQ(data.Data()->value.integer, c.value) << c.expression;
      Py_DECREF(object);
    }
}

TEST_F(ConversionTest, WhatRaisesLeavesTheValue) {
  const struct {
    const char* object;
    GeData target;
    const char* error;
  } cases[] = {
      {"2**70", GeData(), "OverflowError: int too big to convert"},
      {"-2**70", GeData::Int64(7), "OverflowError: int too big to convert"},
      {"10**400", GeData::Float(7), "OverflowError: int too large to convert to float"},
      {"Angry(1)", GeData::Float(7), "KeyError: 'float'"},
      {"'\\ud800'", GeData(),
       "UnicodeEncodeError: 'utf-8' codec can't encode character '\\ud800' in position 0: "
       "surrogates not allowed"},
      {"'a\\0b'", GeData::Filename(Filename::FromString(kelvar::Text("old"))),
       "ValueError: embedded null byte"},
      {"dead", GeData(), "ReferenceError: the object 'qlx.BaseObject' is not alive"},
      {"BadId(int=1)", GeData(), "ZeroDivisionError: integer division or modulo by zero"},
  };
  for (const auto& c : cases) {
    PyObject* object = Make(c.object);
    GeData data = c.target;
    EXPECT_FALSE(qlx::GeDataFromPython(object, data)) << c.object;
    EXPECT_EQ(Take(nullptr), c.error);
    EXPECT_TRUE(data == c.target) << c.object;
    Py_DECREF(object);
  }
  GeData data = GeData::Int32(7);
  EXPECT_FALSE(qlx::GeDataFromPython(nullptr, data));
  EXPECT_FALSE(PyErr_Occurred());
}

TEST_F(ConversionTest, WhatHasNoObject) {
  // A type without a wrapper, and one that nobody knows.
  for (const int32_t type : {1000481, 440000246, 99})
    EXPECT_EQ(Show(qlx::GeDataToPython({type, 0, {.pointer = this}}, nullptr)),
              "AttributeError: Parameter value not accessible (object unknown in Python)");
  for (const int32_t type : {HOST_CUSTOM_DESCID, HOST_CUSTOM_VECTOR4D, HOST_CUSTOM_COLORA}) {
    EXPECT_EQ(qlx::GeDataToPython({type, 0, {.pointer = nullptr}}, nullptr), nullptr);
    EXPECT_FALSE(PyErr_Occurred()) << type;
  }
  GeData link;
  EXPECT_TRUE(qlx::GeDataFromPython(Get("element"), link));
  EXPECT_EQ(link.Type(), HOST_DATA_LINK);
  EXPECT_EQ(Show(qlx::GeDataToPython(*link.Data(), nullptr)).substr(0, 5), "<qlx.");
  ASSERT_TRUE(Run("del element"));
  EXPECT_EQ(Show(qlx::GeDataToPython(*link.Data(), nullptr)), "None");
}

// What a converter makes of an expression: the list of the array, the pending error behind it, or the error
// alone.
template <auto Get, auto ToList>
std::string Through(PyObject* sequence, std::string (*show)(PyObject*)) {
  Py_ssize_t count = -1;
  const auto array = Get(sequence, count, "points");
  std::string error = PyErr_Occurred() ? show(nullptr) : "";
  if (!array) return error;
  return show(ToList(array.get(), count)) + (error.empty() ? "" : " & " + error);
}

TEST_F(ConversionTest, ArraysOfSequences) {
  using namespace qlx;
  const std::map<std::string, std::string (*)(PyObject*, std::string(*)(PyObject*))> converters = {
      {"Int32", Through<GetInt32Array, Int32ArrayToList>},
      {"Float64", Through<GetFloat64Array, Float64ArrayToList>},
      {"Float32", Through<GetFloat32Array, Float32ArrayToList>},
      {"Vector32", Through<GetVector32Array, Vector32ArrayToList>},
      {"Vector64", Through<GetVector64Array, Vector64ArrayToList>},
      {"Matrix", Through<GetMatrixArray, MatrixArrayToList>},
      {"Tangent", Through<GetTangentArray, TangentArrayToList>},
      {"CPolygon", Through<GetCPolygonArray, CPolygonArrayToList>},
      {"UVW", Through<GetUVWArray, UVWArrayToList>},
  };
  const std::string noLength = "ValueError: Invalid object length.";
  const std::string tooLarge = "OverflowError: Python int too large to convert to C long";
  const std::string noTangent =
      "TypeError: points expected list of tangents(dict('vl':Vector,'vr':Vector)), not ";
  const std::string noUVW = "TypeError: points expected dict('a', 'b', 'c', 'd'), not ";
  const std::string vector = "Vector(1, 2, 3)";
  const struct {
    const char *kind, *object;
    std::string outcome;
  } cases[] = {
      {"Int32", "(1, True, Int(-3), 2**31 - 1, -2**31)", "[1, 1, -3, 2147483647, -2147483648]"},
      {"Int32", "{7: 'a dict has keys'}", "[7]"},
      {"Int32", "[1, 2**31, -2**31 - 1, 2**70, 4]", "[1, -1, -1, -1, 4] & " + tooLarge},
      {"Int32", "Items(3, 2**70, lambda: 2, lambda: 3)", "[-1, 2, 3] & " + tooLarge},
      {"Int32", "[2**70, None]", "TypeError: points expected int or long, not None"},
      {"Int32", "[1.0]", "TypeError: points expected int or long, not float"},
      {"Int32", "[]", noLength},
      {"Int32", "5", noLength},
      {"Int32", "Items(-1)", noLength},
      {"Int32", "Items(2**63 - 1, 1)", "MemoryError: "},
      {"Int32", "type('Sized', (), {'__len__': lambda self: 1})()",
       "TypeError: 'Sized' object is not iterable"},
      {"Int32", "Items(2, 1, 2, 3, fail)", "[1, 2]"},
      {"Int32", "Items(3, 1, 2)", "TypeError: points expected int or long, not None"},
      {"Int32", "Items(3, 1, fail)", "KeyError: 'item'"},
      {"Float64", "[1.5, 2, Float(3)]", "[1.5, 2.0, 3.0]"},
      {"Float64", "[1, 'a']", "TypeError: points expected int or float, not str"},
      {"Float64", "[Angry(1)]", "KeyError: 'float'"},
      {"Float64", "[10**400]", "OverflowError: int too large to convert to float"},
      {"Float32", "[0.1, 2]", "[0.10000000149011612, 2.0]"},
      {"Float32", "[None]", "TypeError: points expected float, not None"},
      {"Vector32", "[Vector(1, 2, 3)]", "[" + vector + "]"},
      {"Vector32", "[1]", "TypeError: points expected qlx.Vector, not int"},
      {"Vector64", "[Vector(1, 2, 3), Vector(0.1, 0, 0)]", "[" + vector + ", Vector(0.1, 0, 0)]"},
      {"Vector64", "[Vector4d()]", "TypeError: points expected qlx.Vector, not qlx.Vector4d"},
      {"Matrix", "[Matrix()]", "[" + Show(Make("Matrix()")) + "]"},
      {"Matrix", "[Vector()]", "TypeError: points expected qlx.Matrix, not qlx.Vector"},
      {"Tangent", "[{'vr': Vector(1, 2, 3), 'vl': Vector(4), 'more': 1}]",
       "[{'vl': Vector(4, 4, 4), 'vr': " + vector + "}]"},
      {"Tangent", "[{'vl': Vector()}]", noTangent + "dict"},
      {"Tangent", "[{'vl': Vector(), 'vr': 1}]", noTangent + "dict"},
      {"Tangent", "[Vector()]", noTangent + "qlx.Vector"},
      {"CPolygon", "(CPolygon(1, 2, 3), CPolygon(4, 5, 6, 7))", "[(a:1, b:2, c:3), (a:4, b:5, c:6, d:7)]"},
      {"CPolygon", "[CPolygon(1, 2, 3), (1, 2, 3)]", "TypeError: points expected qlx.CPolygon, not tuple"},
      {"UVW", "[dict(a=Vector(1, 2, 3), b=Vector(0), c=Vector(0), d=Vector(1, 2, 3))]",
       "[{'a': " + vector + ", 'b': Vector(0, 0, 0), 'c': Vector(0, 0, 0), 'd': " + vector + "}]"},
      {"UVW", "[dict(a=Vector(), b=Vector(), c=Vector())]", noUVW + "dict"},
      {"UVW", "[None]", noUVW + "None"},
  };
  for (const auto& c : cases) {
    PyObject* object = Make(c.object);
    EXPECT_EQ(converters.at(c.kind)(object, Show), c.outcome) << c.kind << " " << c.object;
    Py_XDECREF(object);
  }
}

TEST_F(ConversionTest, ArraysOfAtoms) {
  const struct {
    const char *object, *error;
    size_t count;
  } cases[] = {
      {"[element, element]", "", 2},
      {"[element, 1]", "TypeError: points expected qlx.QLXAtom, not int", 0},
      {"[element, dead]", "ReferenceError: the object 'qlx.BaseObject' is not alive", 0},
      {"Items(2, element)", "TypeError: points expected qlx.QLXAtom, not None", 0},
      {"[]", "ValueError: Invalid object length.", 0},
  };
  std::vector<QLXAtom*> atoms;
  for (const auto& c : cases) {
    PyObject* object = Make(c.object);
    const bool done = qlx::GetAtomArray(object, atoms, "points");
    EXPECT_EQ(done ? "" : Take(nullptr), c.error) << c.object;
    EXPECT_TRUE(!done || atoms.size() == c.count);
    Py_DECREF(object);
  }
  // One that the sequence's own code destroys while it is read.
  BaseList2D* victim = BaseList2D::Alloc(kCube);
  Set("victim", qlx::WrapHostObject(victim, false));
  Set("kill", PyCapsule_New(victim, nullptr, nullptr));
  static PyMethodDef destroy = {"destroy",
                                [](PyObject* capsule, PyObject*) {
                                  static_cast<BaseList2D*>(PyCapsule_GetPointer(capsule, nullptr))->Free();
                                  return qlx::NewNone();
                                },
                                METH_NOARGS, nullptr};
  Set("destroy", PyCFunction_New(&destroy, Get("kill")));
  PyObject* object = Make("Items(2, victim, lambda: (destroy(), element)[1])");
  EXPECT_FALSE(qlx::GetAtomArray(object, atoms, "points"));
  EXPECT_EQ(Take(PyExc_ReferenceError), "the object 'qlx.BaseObject' is not alive");
  Py_DECREF(object);
}

// What a getter of that type answers for an item.
template <class T>
std::string Asked(PyObject* item) {
  PyObject* dict = PyDict_New();
  PyDict_SetItemString(dict, "key", item);
  T value{};
  const qlx::PyDictRef view(dict);
  EXPECT_EQ(view.Get("other", value), qlx::kMissing);
  EXPECT_FALSE(PyErr_Occurred());
  const qlx::Lookup answer = view.Get("key", value);
  EXPECT_EQ(PyErr_Occurred() != nullptr, answer == qlx::kRefused);
  Py_DECREF(dict);
  return answer == qlx::kFound ? "2" : "1";
}

TEST_F(ConversionTest, DictsAreReadByType) {
  using namespace qlx;
  const std::string dead = "ReferenceError: the object 'qlx.BaseObject' is not alive";
  const struct {
    std::string (*ask)(PyObject*);
    const char *fits, *other;
    std::string error;
  } cases[] = {
      {Asked<bool>, "True", "1", "TypeError: Expected bool, not int"},
      {Asked<int32_t>, "5", "1.0", "TypeError: Expected int, not float"},
      {Asked<int32_t>, "-2**31", "2**31", "OverflowError: Python int too large to convert to C long"},
      {Asked<int64_t>, "2**63 - 1", "2**63", "OverflowError: int too big to convert"},
      {Asked<double>, "1.5", "1", "TypeError: Expected float, not int"},
      {Asked<String>, "'text'", "b'text'", "TypeError: Expected str, not bytes"},
      {Asked<Filename>, "'/a'", "None", "TypeError: Expected str, not None"},
      {Asked<Filename>, "'/\\udcff'", "'\\ud800'",
       "UnicodeEncodeError: 'utf-8' codec can't encode character '\\ud800' in position 0: surrogates not "
       "allowed"},
      {Asked<Vector>, "Vector()", "Vector4d()", "TypeError: Expected qlx.Vector, not qlx.Vector4d"},
      {Asked<Matrix>, "Matrix()", "1", "TypeError: Expected qlx.Matrix, not int"},
      {Asked<BaseTime>, "BaseTime()", "1", "TypeError: Expected qlx.BaseTime, not int"},
      {Asked<DescLevel>, "DescLevel(1)", "1", "TypeError: Expected qlx.DescLevel, not int"},
      {Asked<DescID>, "DescID(1)", "1", "TypeError: Expected qlx.DescID, not int"},
      {Asked<BaseContainer*>, "BaseContainer()", "{}", "TypeError: Expected qlx.BaseContainer, not dict"},
      {Asked<BaseBitmap*>, nullptr, "1", "TypeError: Expected qlx.bitmaps.BaseBitmap, not int"},
      {Asked<GeListNode*>, "element", "1", "TypeError: Expected qlx.GeListNode, not int"},
      {Asked<GeListNode*>, "element", "dead", dead},
      {Asked<void*>, "capsule", "1", "TypeError: Expected PyCapsule, not int"},
      {Asked<PyListRef>, "[1]", "(1,)", "TypeError: Expected list, not tuple"},
      {Asked<PyTupleRef>, "(1,)", "[1]", "TypeError: Expected tuple, not list"},
      {Asked<char>, nullptr, "'c'", "TypeError: Expected float, not str"},
      {Asked<char>, nullptr, "1.0", "TypeError: bad argument type for built-in operation"},
  };
  for (const auto& c : cases) {
    PyObject* fits = c.fits ? Make(c.fits) : nullptr;
    PyObject* other = Make(c.other);
    EXPECT_TRUE(!fits || c.ask(fits) == "2") << c.other;
    EXPECT_EQ(c.ask(other), "1") << c.other;
    EXPECT_EQ(Take(nullptr), c.error);
    Py_XDECREF(fits);
    Py_DECREF(other);
  }
  // The text step of a character, which no item passes the test of.
  char letter = 'x';
  PyObject *empty = Make("''"), *two = Make("'ab'");
  EXPECT_TRUE(KindOf<char>::Read(empty, letter) && letter == 0);
  EXPECT_FALSE(KindOf<char>::Read(two, letter));
  EXPECT_EQ(Take(PyExc_TypeError), "The lenght of the string is greater than 1");
  Py_DECREF(empty);
  Py_DECREF(two);
}

TEST_F(ConversionTest, DictsListsAndTuplesAreFilled) {
  using namespace qlx;
  PyObject *object = Make("{}"), *list = Make("[]"), *tuple = PyTuple_New(2);
  PyDictRef dict(object);
  BaseContainer* container = BaseContainer::Alloc(3);
  DescID id;
  id.PushId({1, 2, 3});
  EXPECT_TRUE(dict.Set("none", nullptr) && dict.Set("bool", true) && dict.Set("int", int32_t{-5}) &&
              dict.Set("long", int64_t{1} << 40) && dict.Set("float", 0.5) && dict.Set("char", '\xe4') &&
              dict.Set("text", kelvar::Text("t")) && dict.Set("vector", Vector{1, 2, 3}) &&
              dict.Set("time", BaseTime{1, 2}) && dict.Set("data", Text("t")) && dict.Set("id", id) &&
              dict.Set("level", DescLevel{1, 2, 3}) && dict.Set("uuid", Uuid{}) &&
              dict.Set<BaseBitmap*>("picture", nullptr) && dict.Set<GeListNode*>("node", nullptr) &&
              dict.Set("object", Get("capsule")) && dict.Set("container", container) &&
              dict.Set("int", int32_t{6}));
  EXPECT_FALSE(dict.Set("data", GeData::Adopt({99, 0, {.pointer = this}})));
  EXPECT_EQ(Take(PyExc_AttributeError), "Parameter value not accessible (object unknown in Python)");
  container->SetId(4);  // the dict has a copy
  container->Free();
  Set("filled", object);
  EXPECT_EQ(Eval("filled.pop('container').GetId(), filled.pop('object') is capsule, filled.pop('time').Get()"),
            "(3, True, 0.5)");
  EXPECT_EQ(Eval("filled"),
            "{'none': None, 'bool': True, 'int': 6, 'long': 1099511627776, 'float': 0.5, 'char': '\u00e4', "
            "'text': 't', 'vector': Vector(1, 2, 3), 'data': 't', 'id': ((1, 2, 3)), "
            "'level': " +
                Show(Make("DescLevel(1, 2, 3)")) +
                ", 'uuid': UUID('00000000-0000-0000-0000-000000000000'), 'picture': None, 'node': None}");

  PyListRef items(list);
  PyTupleRef places(tuple);
  GeListNode* node = nullptr;
  PyObject* wrapper = Get("element");
  ASSERT_TRUE(qlx::Present<GeListNode>::Get(wrapper, node));
  EXPECT_TRUE(items.Append(int32_t{1}) && items.Append(node) && places.Set(2.5) && places.Set(wrapper));
  EXPECT_FALSE(places.Set(true));
  EXPECT_EQ(Take(PyExc_IndexError), "tuple assignment index out of range");
  GeListNode* found = nullptr;
  PyObject* own = nullptr;
  double number = 0;
  EXPECT_EQ(items.Get(1, found), kFound);
  EXPECT_EQ(found, node);
  EXPECT_EQ(places.Get(0, number), kFound);
  EXPECT_EQ(number, 2.5);
  EXPECT_EQ(places.Get(1, own), kFound);
  EXPECT_EQ(own, wrapper);
  EXPECT_EQ(items.Get(2, number), kMissing);
  EXPECT_EQ(places.Get(-1, number), kMissing);
  EXPECT_EQ(items.Get(0, number), kRefused);
  EXPECT_EQ(Take(PyExc_TypeError), "Expected float, not int");
  std::vector<int32_t> numbers{9};  // what is read is added
  PyObject* more = Make("[7, 8]");
  EXPECT_TRUE(KindOf<std::vector<int32_t>>::Read(more, numbers));
  EXPECT_EQ(numbers, (std::vector<int32_t>{9, 7, 8}));
  Py_DECREF(more);
  Py_DECREF(own);
  Py_DECREF(tuple);
  Py_DECREF(list);
}

}  // namespace
