// Whole calls while memory lacks: every allocation fails once, of the interpreter, the module and the host.

#include <cstdlib>
#include <new>
#include <stdexcept>

#include "bitmaps/bitmaps.h"
#include "fake_scene.h"
#include "kit/i_pool.h"
#include "kit/i_row.h"
#include "scene/scene.h"
#include "values/values.h"

namespace {

bool g_newMayFail = false;  // in calls, not in what looks at them

void* New(size_t size) noexcept {
  if (g_newMayFail && FailingMemory::Fails()) return nullptr;
  void* made = std::malloc(size);
  FailingMemory::alive += made != nullptr;
  return made;
}

}  // namespace

void* operator new(size_t size) {
  if (void* made = New(size)) return made;
  throw std::bad_alloc();
}
void* operator new(size_t size, const std::nothrow_t&) noexcept { return New(size); }
void operator delete(void* made) noexcept {
  FailingMemory::alive -= made != nullptr;
  std::free(made);
}
void operator delete(void* made, size_t) noexcept { operator delete(made); }

namespace {

using qlx::g_wrapperTracker, qlx::Method, qlx::Row, qlx::StaticMethod;

constexpr int32_t kCube = 5159;

// A host that keeps each object while it lives only.
template <class Host>
Host* AllocHost() {
  auto* made = new (std::nothrow) FakeObject;
  return made ? made->As<Host>() : nullptr;
}
template <class Host>
void FreeHost(Host* self) {
  delete reinterpret_cast<FakeObject*>(self);
}

int32_t Sum(const BaseList2D&, int32_t a, int32_t b, int32_t c) { return a + b + c; }
BaseList2D* Clone(const BaseList2D&) { return BaseList2D::Alloc(kCube); }
BaseList2D* Itself(BaseList2D* self) { return self; }
int32_t IdOf(const BaseList2D&, qlx::ValueRecord<DescLevel>* level) { return level->value.id; }
bool Insert(const BaseList2D&, BaseList2D* child) { return child->Free(), true; }
bool Wait(const BaseList2D&, QLXAtom*, const String&) { return true; }
void Throw(const BaseList2D&, const String& text) { throw std::runtime_error(std::string(kelvar::View(text))); }
int32_t Open(const BaseList2D&, const Filename&) { return 1; }
void OnMain(const BaseList2D&) {}

PyMethodDef g_methods[] = {
    Method<&Sum, "(ii)|i", "a", "b=3">("Sum", ""),
    Method<Row<qlx::Gives>, &Clone>("Clone", ""),
    Method<&Itself>("Itself", ""),
    Method<&IdOf, "O!", "level">("IdOf", ""),
    Method<Row<qlx::Takes<"child">>, &Insert, "A!", "child">("Insert", ""),
    Method<Row<qlx::Waits>, &Wait, "A!N$", "op", "text">("Wait", ""),
    Method<Row<qlx::MainThreadOnly>, &OnMain>("OnMain", ""),
    Method<&Throw, "$", "text">("Throw", ""),
    Method<&Open, "%", "name">("Open", ""),
    StaticMethod<Row<qlx::Gives>, &BaseList2D::Alloc, "i", "type">("New", ""),
    {},
};

PyTypeObject g_elementType = qlx::MakeType<qlx::AtomWrapper>({.name = "test.Element",
                                                              .doc = "",
                                                              .base = &qlx::g_BaseList2DType,
                                                              .methods = g_methods,
                                                              .destroy = qlx::FreeElement});

// What is called, what comes of it, and what may come of it beside MemoryError: what the host's entry answers,
// or the interpreter.
struct MemoryCase {
  const char *call, *outcome, *instead = "MemoryError";
};

const MemoryCase kCases[] = {
    {"op.OnMain, (), {}", "RuntimeError"},
    {"op.Itself, (), {}", "qlx.BaseObject"},
    {"op.Clone, (), {}", "qlx.BaseObject", "NoneType"},
    {"op.New, (5159,), {}", "qlx.BaseObject", "NoneType"},
    {"op.New, (), {Name('type'): 5159}", "qlx.BaseObject", "NoneType"},
    {"op.Sum, ((1000, 2000), 3), {}", "int"},
    {"op.Sum, (range(1000, 1002),), {'b': 5}", "int", "TypeError"},  // an item that is not retrievable
    {"op.Sum, ((1, 'x'),), {}", "TypeError"},
    {"op.Sum, ((1, 2 ** 31),), {}", "OverflowError"},
    {"op.Sum, (), {'b': 1, 'c': 2}", "TypeError"},
    {"op.IdOf, (qlx.DescLevel(1000),), {}", "int"},
    {"op.IdOf, (), {Name('level'): qlx.DescLevel(1000)}", "int"},
    {"op.IdOf, (5,), {}", "TypeError"},
    {"op.Insert, (qlx.BaseList2D(5159),), {}", "bool"},
    {"op.Insert, (), {Name('child'): qlx.BaseList2D(5159)}", "bool"},
    {"op.Wait, (op, '\\xe9' * 50), {}", "bool"},
    {"op.Wait, (None,), {'text': 1000}", "bool"},
    {"op.Throw, ('\\xe9' * 50,), {}", "RuntimeError"},
    {"op.Open, ('/\\xe9',), {}", "int"},
    {"op.GetName, (), {}", "str", "str"},  // an empty one
    {"op.SetName, ('\\xe9' * 50,), {}", "NoneType"},
    {"op.SetName, (), {Name('name'): 1000}", "NoneType"},
    {"op.SetName, ('\\ud800',), {}", "UnicodeEncodeError", "LookupError"},
    {"op.GetDataInstance, (), {}", "qlx.BaseContainer"},
    {"op, (), {}", "test.Element"},
    {"dead.GetName, (), {}", "ReferenceError"},
    {"qlx.BaseList2D, (5159,), {}", "qlx.BaseObject", "BaseException"},
    {"qlx.BaseList2D, (), {'type': 1}", "BaseException"},
    {"qlx.BaseBitmap, (), {}", "qlx.bitmaps.BaseBitmap", "BaseException"},
    {"qlx.BaseBitmap().GetClone, (), {}", "qlx.bitmaps.BaseBitmap", "NoneType"},
    {"qlx.BaseContainer, (), {}", "qlx.BaseContainer", "BaseException"},
    {"qlx.Vector, (1.5, 2.5, 3.5), {}", "qlx.Vector"},
    {"qlx.Vector.GetDistance, (qlx.Vector(1), qlx.Vector(2)), {}", "float"},
    {"qlx.Vector.GetDistance, (qlx.Vector(1),), {'v2': qlx.Vector(2)}", "float"},
};

class RowMemoryTest : public SceneTest {
 protected:
  void SetUp() override {
    SceneTest::SetUp();
    ASSERT_EQ(PyType_Ready(&g_elementType), 0);
    tables::general.GeIsMainThread = [] { return int32_t(0); };
    tables::plugin.FindPlugin = [](int32_t, int32_t) { return static_cast<BasePlugin*>(nullptr); };
    tables::atom.GetType = [](const QLXAtom*) { return kCube; };
    tables::atom.IsInstanceOf = [](const QLXAtom*, int32_t id) { return HostBool(id == 5155); };
    tables::baselist.Alloc = [](int32_t id) { return id == kCube ? AllocHost<BaseList2D>() : nullptr; };
    tables::baselist.Free = FreeHost<BaseList2D>;
    tables::baselist.GetName = [](const BaseList2D*) { return TextHost::Make("element", 7); };
    tables::baselist.SetName = [](BaseList2D*, const HostString*) {};
    tables::baselist.GetDataInstance = [](BaseList2D* self) { return reinterpret_cast<BaseContainer*>(self); };
    tables::filename.FromString = [](const HostString* text) {
      const std::string& path = TextHost::Value(text);
      return HostFilename{TextHost::Make(path.data(), int64_t(path.size())).word};
    };
    tables::filename.Destroy = [](HostFilename* self) {
      HostString text{self->word};
      TextHost::Destroy(&text);
      self->word = nullptr;
    };
    tables::bitmap.Alloc = AllocHost<BaseBitmap>;
    tables::bitmap.GetClone = [](const BaseBitmap*) { return AllocHost<BaseBitmap>(); };
    tables::bitmap.Free = FreeHost<BaseBitmap>;
    tables::container.Alloc = [](int32_t) { return AllocHost<BaseContainer>(); };
    tables::container.Free = FreeHost<BaseContainer>;
    ASSERT_TRUE(Run("import gc, types\ngc.disable()\nqlx = types.SimpleNamespace()\nclass Name(str): pass"));
    for (PyTypeObject* type : {&qlx::g_BaseList2DType, &qlx::g_BaseBitmapType, &qlx::g_BaseContainerType,
                               &qlx::g_VectorType, &qlx::g_DescLevelType})
      PyObject_SetAttrString(Get("qlx"), std::strrchr(type->tp_name, '.') + 1,
                             reinterpret_cast<PyObject*>(type));
    for (const char* name : {"op", "dead"})
      Set(name, qlx::WrapAtom(&g_elementType, Make().As<QLXAtom>(), false));
    Behind(Get("dead")).alive = false;
  }
  void TearDown() override {
    qlx::g_trackLeaks = false;
    g_wrapperTracker.Restart();
    SceneTest::TearDown();
  }

  // The type of the result, or of the exception. `reached` tells whether the allocation came that fails.
  static std::string Call(const char* call, int failing, bool& reached) {
    PyObject* parts = PyRun_String(call, Py_eval_input, Names(), Names());
    if (!parts) return "bad case: " + Take(nullptr);
    qlx::ReleaseRecordPools();
    FailingMemory::countdown = failing;
    g_newMayFail = true;
    PyObject* result =
        PyObject_Call(PyTuple_GET_ITEM(parts, 0), PyTuple_GET_ITEM(parts, 1), PyTuple_GET_ITEM(parts, 2));
    g_newMayFail = false;
    reached = FailingMemory::countdown < 0;
    FailingMemory::countdown = -1;
    Py_DECREF(parts);
    const PyObject* type = result ? reinterpret_cast<PyObject*>(Py_TYPE(result)) : PyErr_Occurred();
    const std::string told = type ? reinterpret_cast<const PyTypeObject*>(type)->tp_name : "neither";
    if (!result) PyErr_Clear();
    Py_XDECREF(result);
    PyType_ClearCache();  // holds names of attributes, at other places in every call
    return told;
  }

  static void CheckAll() {
    for (const MemoryCase& c : kCases)
      for (int failing = 0;; ++failing) {
        ASSERT_LT(failing, 200) << c.call;
        std::string told;
        bool reached = false;
        constexpr int kRounds = 40;  // the interpreter's free lists fill in the first of them
        long alive[kRounds], linked[kRounds];
        for (int i = 0; i < kRounds; ++i) {
          told = Call(c.call, failing, reached);
          alive[i] = FailingMemory::alive;
          linked[i] = links;
        }
        EXPECT_EQ(alive[kRounds - 2], alive[kRounds - 1]) << c.call << " at " << failing;
        EXPECT_EQ(linked[kRounds - 2], linked[kRounds - 1]) << c.call << " at " << failing;
        if (!reached) {
          EXPECT_EQ(told, c.outcome) << c.call;
          break;
        }
        // An instance that can't be recorded works all the same.
        EXPECT_TRUE(told == "MemoryError" || told == c.instead || (qlx::g_trackLeaks && told == c.outcome))
            << c.call << " at " << failing << ": " << told;
      }
    EXPECT_EQ(Behind(Get("op")).pins, 0);
  }
};

TEST_F(RowMemoryTest, EveryAllocationOfACallMayFail) {
  const FailingMemory memory;
  // In a script's frame, whose line the record of leaks asks for.
  static PyMethodDef check = {"check", [](PyObject*, PyObject*) { return CheckAll(), qlx::NewNone(); },
                              METH_NOARGS, ""};
  Set("check", PyCFunction_New(&check, nullptr));
  for (const bool tracked : {false, true}) {
    qlx::g_trackLeaks = tracked;
    g_wrapperTracker.Restart();
    EXPECT_TRUE(Run("check()"));
  }
}

}  // namespace
