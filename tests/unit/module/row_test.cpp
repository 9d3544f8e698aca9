#include <stdexcept>
#include <string>
#include <thread>

#include "bitmaps/bitmaps.h"
#include "fake_scene.h"
#include "kit/i_row.h"
#include "kit/i_type.h"
#include "scene/scene.h"
#include "values/values.h"

namespace {

// The host class of these tests. Each call leaves a word in the log.
struct Thing : FakeObject {
  inline static std::string log;
  inline static bool succeeds = true;
  inline static bool threadHadLock = false;
  inline static int pinsSeen = 0;

  bool SetLink(HostLink* link) {
    *link = {static_cast<FakeObject*>(this), 1};
    return true;
  }
  void Touch(int32_t a, const String& text) { log += std::to_string(a) + std::string(kelvar::View(text)); }
  int32_t Flags(int32_t a, int32_t flags) { return a * 100 + flags; }
  double Real(double number) { return number; }
  bool Flip(bool value) const { return !value; }
  bool HasTime(const BaseTime* time) { return time != nullptr; }
  void Take(BaseList2D*, int32_t) { log += "taken"; }
  void TakePicture(BaseBitmap*, const String&) { log += "taken"; }
  void TakeData(BaseContainer*, int32_t) { log += "taken"; }
  bool Insert(QLXAtom*) { return succeeds; }
  BaseBitmap* Picture() { return succeeds ? picture.As<BaseBitmap>() : nullptr; }
  Thing* Self() { return succeeds ? this : nullptr; }
  void Nothing() {}
  int32_t Count() const { return 3; }
  int32_t At(int32_t index) const { return index; }
  int32_t Throw(int32_t kind) {
    if (kind == 1) throw std::bad_alloc();
    if (kind == 2) throw std::runtime_error("100 % broken");
    return kind;
  }
  bool Wait(QLXAtom* atom, int32_t kind) {
    EXPECT_FALSE(PyGILState_Check());
    // Another thread runs Python meanwhile.
    std::thread([] {
      const qlx::GilScope lock;
      threadHadLock = PyRun_SimpleString("waited = True") == 0;
    }).join();
    pinsSeen = pins * 10 + (atom ? reinterpret_cast<FakeObject*>(atom)->pins : 0);
    return Throw(kind) == 0;
  }
  static int32_t StaticWait(QLXAtom*) { return 1; }

  FakeObject picture;
};

// Resolved behind its arguments, as values are.
struct Part : Thing {};

template <class Host, bool First>
struct PresentFake {
  static constexpr bool kResolvedFirst = First;
  static bool Get(PyObject* object, Host*& host) {
    auto* fake = static_cast<FakeObject*>(reinterpret_cast<qlx::AtomWrapper*>(object)->link.slot);
    if (!fake->alive) return qlx::ReportNotAlive(Py_TYPE(object)), false;
    host = static_cast<Host*>(fake);
    return true;
  }
  static PyObject* Wrap(Host*, bool owned) { return PyUnicode_FromString(owned ? "owned" : "borrowed"); }
};

}  // namespace

template <>
struct qlx::Present<Thing> : PresentFake<Thing, true> {};
template <>
struct qlx::Present<Part> : PresentFake<Part, false> {};

namespace {

using qlx::Method, qlx::Row, qlx::StaticMethod;

void TouchPart(Part* self, int32_t a, const String& text) { self->Touch(a, text); }
PyObject* OwnResult(PyObject* self, int32_t number) { return Py_BuildValue("(Oi)", self, number); }

PyMethodDef g_methods[] = {
    Method<&Thing::Touch, "i$", "a", "text">("Touch", ""),
    Method<&Thing::Flags, "i|i", "a", "flags=3">("Flags", ""),
    Method<&Thing::Real, "|d", "number=-2.5">("Real", ""),
    Method<&Thing::Flip, "|b", "value=true">("Flip", ""),
    Method<&Thing::HasTime, "|T", "time">("HasTime", ""),
    Method<&Thing::Take, "A!i", "op", "n">("Take", ""),
    Method<&Thing::TakePicture, "P!$", "bitmap", "text">("TakePicture", ""),
    Method<&Thing::TakeData, "Ci", "data", "n">("TakeData", ""),
    Method<Row<qlx::Takes<"op">>, &Thing::Insert, "A!N", "op">("Insert", ""),
    Method<Row<qlx::TakesSelf>, &Thing::Self>("TakesSelf", ""),
    Method<Row<qlx::GivesSelf>, &Thing::Self>("GivesSelf", ""),
    Method<Row<qlx::Gives>, &Thing::Picture>("NewPicture", ""),
    Method<&Thing::Picture>("Picture", ""),
    Method<Row<qlx::Gives>, &Thing::Self>("GiveThing", ""),
    Method<&Thing::Nothing>("Nothing", ""),
    Method<Row<qlx::InRange<"index", &Thing::Count>>, &Thing::At, "i", "index">("At", ""),
    Method<Row<qlx::InRange<"i", &Thing::Count, "point index">>, &Thing::At, "i", "i">("Point", ""),
    Method<Row<qlx::MainThreadOnly>, &Thing::Count>("OnMain", ""),
    Method<&Thing::Throw, "i", "kind">("Throw", ""),
    Method<Row<qlx::Waits, qlx::Takes<"op">>, &Thing::Wait, "A!N|i", "op", "kind">("Wait", ""),
    StaticMethod<Row<qlx::Waits>, &Thing::StaticWait, "A!", "op">("StaticWait", ""),
    Method<&OwnResult, "i", "number">("Own", ""),
    {},
};
PyMethodDef g_partMethods[] = {Method<&TouchPart, "i$", "a", "text">("Touch", ""), {}};

PyTypeObject g_thingType = qlx::MakeType<qlx::AtomWrapper>(
    {.name = "test.Thing", .doc = "", .methods = g_methods, .destroy = qlx::FreeLinkOnly});
PyTypeObject g_partType = qlx::MakeType<qlx::AtomWrapper>(
    {.name = "test.Part", .doc = "", .methods = g_partMethods, .destroy = qlx::FreeLinkOnly});

PyObject* Kill(PyObject*, PyObject* wrapper) {
  static_cast<FakeObject*>(reinterpret_cast<qlx::AtomWrapper*>(wrapper)->link.slot)->alive = false;
  return qlx::NewNone();
}
PyMethodDef g_kill = {"kill", Kill, METH_O, ""};

class RowTest : public SceneTest {
 protected:
  void SetUp() override {
    SceneTest::SetUp();
    ASSERT_EQ(PyType_Ready(&g_thingType) + PyType_Ready(&g_partType), 0);
    tables::general.GeIsMainThread = [] { return int32_t(0); };
    Set("kill", PyCFunction_New(&g_kill, nullptr));
    // Kill destroys `op` where an argument is converted; Drop empties a dictionary there.
    ASSERT_TRUE(
        Run("class Kill:\n"
            "  def __init__(self, op): self.op = op\n"
            "  def __int__(self): kill(self.op); return 1\n"
            "  def __str__(self): kill(self.op); return 'x'\n"
            "class Drop(dict):\n"
            "  def __int__(self): names.clear(); return 1\n"));
    Refresh();
  }
  // New names for objects that are alive.
  void Refresh() {
    Thing::log = "";
    Set("t", NewWrapper(g_thingType, thing = {}));
    Set("p", NewWrapper(g_partType, part = {}));
    Set("op", qlx::WrapAtom(&qlx::g_BaseList2DType, Make().As<QLXAtom>(), false));
    Set("bitmap", qlx::WrapBitmap(&qlx::g_BaseBitmapType, Make().As<BaseBitmap>(), false));
    Set("data",
        qlx::NewBaseContainer(Make().As<BaseContainer>(), false, false, Behind(Get("op")).As<QLXAtom>()));
  }
  static PyObject* NewWrapper(PyTypeObject& type, FakeObject& object) {
    PyObject* wrapper = qlx::AllocWrapper(qlx::g_wrapperTracker, &type);
    reinterpret_cast<qlx::AtomWrapper*>(wrapper)->link = {&object, 1};
    return wrapper;
  }
  // The value's text, or the exception's type and text.
  static std::string Try(const std::string& expression) {
    const std::string value = Eval(expression.c_str());
    return PyErr_Occurred() ? Take(nullptr) : value;
  }

  Thing thing;
  Part part;
};

TEST_F(RowTest, ADeadObjectIsNotTouched) {
  const std::string reference = "ReferenceError: the object '";
  const struct {
    const char *expression, *message;
  } cases[] = {
      {"(kill(t), t.Touch('bad'))", "test.Thing' is not alive"},
      {"(kill(t), t.Nothing())", "test.Thing' is not alive"},
      {"(kill(p), p.Touch(1, 'x'))", "test.Part' is not alive"},
      {"t.Touch(Kill(t), 'x')", "test.Thing' is not alive"},
      {"t.Touch(1, Kill(t))", "test.Thing' is not alive"},
      {"t.Touch(text=Kill(t), a=1)", "test.Thing' is not alive"},
      {"p.Touch(1, Kill(p))", "test.Part' is not alive"},
      {"t.Take(op, Kill(op))", "qlx.BaseList2D' is not alive"},
      {"t.Take(n=Kill(op), op=op)", "qlx.BaseList2D' is not alive"},
      {"t.TakePicture(bitmap, Kill(bitmap))", "qlx.bitmaps.BaseBitmap' is not alive"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Try(c.expression), reference + c.message) << c.expression;
    EXPECT_EQ(Thing::log, "") << c.expression;
    Refresh();
  }
  EXPECT_EQ(Try("t.TakeData(data, Kill(op))"),
            "ReferenceError: the host object of 'qlx.BaseContainer' is not alive");
  EXPECT_EQ(Thing::log, "");
  Refresh();
  EXPECT_EQ(Try("(kill(p), p.Touch('bad', ''))").substr(0, 10), "TypeError:");
  EXPECT_EQ(Try("(t.Take(op, 1), t.TakePicture(bitmap, 'x'), t.TakeData(data, 1), t.Touch(5, 6))"),
            "(None, None, None, None)");
  EXPECT_EQ(Thing::log, "takentakentaken56");
}

// The arguments of a call stay, also when a script's code empties the dictionary that they came in.
TEST_F(RowTest, ArgumentsStayForTheirCall) {
  ASSERT_TRUE(Run("names = {}"));
  Set("names",
      Py_BuildValue("{s:N,s:N}", "op", qlx::WrapAtom(&qlx::g_BaseList2DType, Make().As<QLXAtom>(), true), "n",
                    PyObject_CallObject(Get("Drop"), nullptr)));
  EXPECT_EQ(Try("t.Take(**names)"), "None");
  EXPECT_EQ(Thing::log, "taken");
  EXPECT_EQ(objects.back().freed, 1);
}

TEST_F(RowTest, ValuesGoInAndOut) {
  Set("time", qlx::NewBaseTime({-1, 0}));
  const struct {
    const char *expression, *result;
  } cases[] = {
      {"t.Flags(2), t.Flags(2, 5), t.Flags(flags=-1, a=1)", "(203, 205, 99)"},
      {"t.Real(), t.Real(1.5)", "(-2.5, 1.5)"},
      {"t.HasTime(), t.HasTime(time), t.HasTime(time=time)", "(False, True, True)"},
      {"t.Flip(), t.Flip(False), t.Flip(7), t.Flip(0)", "(False, True, False, True)"},
      {"t.Own(4)[0] is t, t.Own(4)[1]", "(True, 4)"},
      {"t.Nothing()", "None"},
      {"t.At(0), t.At(2)", "(0, 2)"},
      {"t.At(3)", "IndexError: index out of range"},
      {"t.At(-1)", "IndexError: index out of range"},
      {"t.Point(3)", "IndexError: point index out of range"},
      {"t.OnMain()", "RuntimeError: must be called from the main thread"},
      {"t.Throw(1)", "MemoryError: "},
      {"t.Throw(2)", "RuntimeError: 100 % broken"},
      {"t.Throw(3)", "3"},
      {"t.GiveThing()", "owned"},
  };
  for (const auto& c : cases) EXPECT_EQ(Try(c.expression), c.result) << c.expression;
  const std::string surrogate = Try("t.Touch(1, '\\ud800')");
  EXPECT_EQ(surrogate.substr(0, surrogate.find(':')), "UnicodeEncodeError");
  EXPECT_EQ(Thing::log, "");
}

TEST_F(RowTest, TheOwnerChangesWithASuccess) {
  for (const bool succeeds : {true, false})
    for (const bool owned : {true, false}) {
      Thing::succeeds = succeeds;
      OwnedBy(Get("op")) = OwnedBy(Get("t")) = owned;
      EXPECT_EQ(Try("t.Insert(op)"), succeeds ? "True" : "False");
      EXPECT_EQ(OwnedBy(Get("op")), owned && !succeeds);
      OwnedBy(Get("op")) = owned;
      EXPECT_EQ(Try("t.Insert(op=op)"), succeeds ? "True" : "False");
      EXPECT_EQ(OwnedBy(Get("op")), owned && !succeeds);
      EXPECT_EQ(Try("t.Insert(None)"), succeeds ? "True" : "False");
      EXPECT_EQ(Try("t.TakesSelf()"), succeeds ? "borrowed" : "None");
      EXPECT_EQ(OwnedBy(Get("t")), owned && !succeeds);
      OwnedBy(Get("t")) = owned;
      EXPECT_EQ(Try("t.GivesSelf()"), succeeds ? "borrowed" : "None");
      EXPECT_EQ(OwnedBy(Get("t")), owned || succeeds);
    }
  OwnedBy(Get("op")) = false;
  for (const char* name : {"NewPicture", "Picture"}) {
    Thing::succeeds = false;
    EXPECT_EQ(Try(std::string("t.") + name + "()"), "None");
    Thing::succeeds = true;
    PyObject* wrapper = PyObject_CallMethod(Get("t"), name, nullptr);
    ASSERT_TRUE(wrapper);
    EXPECT_EQ(OwnedBy(wrapper), *name == 'N');
    Py_DECREF(wrapper);
  }
  EXPECT_EQ(thing.picture.freed, 1);
}

TEST_F(RowTest, AWaitingCallFreesTheLockAndKeepsItsObjects) {
  FakeObject& atom = Behind(Get("op"));
  OwnedBy(Get("op")) = true;
  for (const char* expression : {"t.Wait(op, 1)", "t.Wait(op, 2)", "t.Wait(op, 5)", "t.Wait(op)"}) {
    Thing::threadHadLock = false;
    EXPECT_TRUE(OwnedBy(Get("op")));
    Thing::pinsSeen = 0;
    const std::string told = Try(expression);
    const std::string expected[] = {"MemoryError: ", "RuntimeError: 100 % broken", "False", "True"};
    EXPECT_NE(std::find(std::begin(expected), std::end(expected), told), std::end(expected)) << told;
    EXPECT_TRUE(Thing::threadHadLock);
    EXPECT_EQ(Thing::pinsSeen, 11);
    EXPECT_EQ(thing.pins + atom.pins, 0);
    EXPECT_TRUE(PyGILState_Check());
  }
  EXPECT_FALSE(OwnedBy(Get("op")));  // the last one was the success
  EXPECT_EQ(Try("t.Wait(None)"), "True");
  EXPECT_EQ(Thing::pinsSeen, 10);

  // Dead between its look-up and its pin: the one that died is named, and nothing is left pinned.
  Thing::pinsSeen = 0;
  const std::string element = "ReferenceError: the object 'qlx.BaseList2D' is not alive";
  atom.diesAtPin = true;
  EXPECT_EQ(Try("t.StaticWait(op)"), element);
  atom.alive = true;
  EXPECT_EQ(Try("t.Wait(op)"), element);
  EXPECT_EQ(thing.pins + atom.pins, 0);
  thing.diesAtPin = true;
  EXPECT_EQ(Try("t.Wait(None)"), "ReferenceError: the object 'test.Thing' is not alive");
  EXPECT_EQ(Thing::pinsSeen, 0);
}

}  // namespace
