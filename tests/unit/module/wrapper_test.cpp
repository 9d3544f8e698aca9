#include <algorithm>
#include <utility>
#include <vector>

#include "bitmaps/bitmaps.h"
#include "fake_scene.h"
#include "kit/i_pool.h"
#include "kit/i_wrapper.h"
#include "plugins/plugins.h"
#include "scene/scene.h"
#include "values/values.h"

namespace {

using qlx::g_wrapperTracker;

class WrapperTest : public SceneTest {
 protected:
  static PyObject* Wrap(PyTypeObject& type, FakeObject& object, bool owned) {
    return &type == &qlx::g_BaseBitmapType ? qlx::WrapBitmap(&type, object.As<BaseBitmap>(), owned)
                                           : qlx::WrapAtom(&type, object.As<QLXAtom>(), owned);
  }
};

PyTypeObject* const kTypes[] = {&qlx::g_QLXAtomType, &qlx::g_GeListNodeType, &qlx::g_BaseList2DType,
                                &qlx::g_BaseBitmapType};

TEST_F(WrapperTest, TheLastReferenceDestroysWhatIsOwnedAndAlive) {
  enum Change { kNone, kTaken, kGiven, kDead };
  const struct {
    bool owned;
    Change change;
    bool destroyed;
  } cases[] = {{true, kNone, true},   {false, kNone, false}, {true, kTaken, false},
               {false, kGiven, true}, {true, kDead, false},  {false, kDead, false}};
  for (PyTypeObject* type : kTypes) {
    const bool destroys = type != &qlx::g_QLXAtomType && type != &qlx::g_GeListNodeType;
    for (const auto& c : cases) {
      FakeObject& object = Make();
      PyObject* wrapper = Wrap(*type, object, c.owned);
      ASSERT_TRUE(wrapper);
      PyObject* second = Wrap(*type, object, false);
      if (c.change == kTaken || c.change == kGiven) OwnedBy(wrapper) = c.change == kGiven;
      if (c.change == kDead) object.alive = false;
      Py_DECREF(wrapper);
      EXPECT_EQ(object.freed, c.destroyed && destroys) << type->tp_name << c.owned << c.change;
      EXPECT_EQ(GetLink(reinterpret_cast<qlx::AtomWrapper*>(second)->link) != nullptr, object.alive);
      Py_DECREF(second);
    }
  }
}

// All allocations of objects fail from now on.
class NoMemory {
 public:
  NoMemory() {
    PyMem_GetAllocator(PYMEM_DOMAIN_OBJ, &old_);
    PyMemAllocatorEx failing = old_;
    failing.malloc = [](void*, size_t) -> void* { return nullptr; };
    failing.calloc = [](void*, size_t, size_t) -> void* { return nullptr; };
    qlx::ReleaseRecordPools();
    PyMem_SetAllocator(PYMEM_DOMAIN_OBJ, &failing);
  }
  ~NoMemory() { PyMem_SetAllocator(PYMEM_DOMAIN_OBJ, &old_); }

 private:
  PyMemAllocatorEx old_;
};

TEST_F(WrapperTest, AnOwnedObjectWithoutAWrapperIsDestroyed) {
  const auto container = [](PyTypeObject&, FakeObject& object, bool owned) {
    return qlx::NewBaseContainer(object.As<BaseContainer>(), owned, false, Make().As<QLXAtom>());
  };
  std::vector<std::pair<PyTypeObject*, PyObject* (*)(PyTypeObject&, FakeObject&, bool)>> makers;
  for (PyTypeObject* type : kTypes) makers.push_back({type, Wrap});
  makers.push_back({&qlx::g_BaseContainerType, container});
  for (const auto& [type, make] : makers)
    for (const bool owned : {true, false})
      for (const bool linkFails : {true, false}) {
        FakeObject& object = Make();
        linksFail = linkFails;
        PyObject* wrapper;
        if (linkFails) {
          wrapper = make(*type, object, owned);
        } else {
          const NoMemory lacking;
          wrapper = make(*type, object, owned);
        }
        linksFail = false;
        EXPECT_FALSE(wrapper);
        EXPECT_EQ(Take(PyExc_MemoryError), "");
        EXPECT_EQ(object.freed, owned) << type->tp_name << linkFails;
      }
}

TEST_F(WrapperTest, ARecordThatIsUsedAgainIsEmpty) {
  for (int round = 0; round < 3; ++round) {
    PyObject* object = qlx::AllocWrapper(g_wrapperTracker, &qlx::g_BaseContainerType);
    const auto* bytes = reinterpret_cast<const char*>(object);
    EXPECT_TRUE(std::all_of(bytes + sizeof(PyObject), bytes + sizeof(qlx::ContainerRecord),
                            [](char byte) { return byte == 0; }));
    EXPECT_EQ(Py_REFCNT(object), 1);
    auto& record = *reinterpret_cast<qlx::ContainerRecord*>(object);
    record.dead = record.owned = true;
    record.data = Make().As<BaseContainer>();
    record.hostLink = {&Make(), 7};
    Py_DECREF(object);
  }
}

TEST_F(WrapperTest, AScriptsSubclassHasADictionaryAndIsLetGo) {
  Py_INCREF(&qlx::g_BaseDataType);
  Set("BaseData", reinterpret_cast<PyObject*>(&qlx::g_BaseDataType));
  ASSERT_TRUE(Run("class Plain(BaseData): pass\nclass Slots(BaseData): __slots__ = ()"));
  for (const char* name : {"Plain", "Slots"}) {
    auto* type = reinterpret_cast<PyTypeObject*>(Get(name));
    const Py_ssize_t before = Py_REFCNT(type);
    for (int i = 0; i < 100; ++i) {
      PyObject* object = qlx::AllocWrapper(g_wrapperTracker, type);
      ASSERT_TRUE(object);
      EXPECT_EQ(PyObject_SetAttrString(object, "value", Py_None) == 0, type == Py_TYPE(object) && *name == 'P');
      PyErr_Clear();
      Py_DECREF(object);
    }
    EXPECT_EQ(Py_REFCNT(type), before) << name;
  }
  EXPECT_TRUE(Run("Plain().value = 1"));
  EXPECT_FALSE(Run("BaseData()"));
  EXPECT_EQ(Take(PyExc_NotImplementedError), "this type cannot be instantiated");
}

TEST_F(WrapperTest, ScriptsSeeTheDeathOfAnObject) {
  tables::baselist.GetDataInstance = [](BaseList2D*) { return Make().As<BaseContainer>(); };
  tables::baselist.GetName = [](const BaseList2D*) { return TextHost::Make("name", 4); };
  tables::container.GetId = [](const BaseContainer*) { return int32_t(5); };
  FakeObject& object = Make();
  Set("op", Wrap(qlx::g_BaseList2DType, object, false));
  Set("same", Wrap(qlx::g_GeListNodeType, object, false));
  Set("other", Wrap(qlx::g_QLXAtomType, Make(), false));
  Set("data", PyObject_CallMethod(Get("op"), "GetDataInstance", nullptr));
  Set("marked", PyObject_CallMethod(Get("op"), "GetDataInstance", nullptr));
  qlx::MarkContainerDead(Get("marked"));
  const char* const dead = "the object 'qlx.BaseList2D' is not alive";
  const char* const noHost = "the host object of 'qlx.BaseContainer' is not alive";
  const char* const noData = "the object 'qlx.BaseContainer' is not alive";
  const struct {
    const char *expression, *alive, *whenDead;  // a text with a space and "alive" is a ReferenceError's
  } cases[] = {
      {"op() is op", "True", "False"},
      {"op()", nullptr, "None"},
      {"op.IsAlive()", "True", "False"},
      {"op.GetName()", "name", dead},
      {"op.SetName()", nullptr, dead},  // wins over the missing argument
      {"op == same, same == op, op != same", "(True, True, False)", dead},
      {"op == other, op != other", "(False, True)", dead},
      {"other == op", "False", dead},
      {"same == other", "False", "the object 'qlx.GeListNode' is not alive"},
      {"op == 1, op == None", "(False, False)", "(False, False)"},
      {"data.GetId()", "5", noHost},
      {"data == data", nullptr, noHost},
      {"data == marked", noData, noHost},
      {"marked == data", noData, noData},
      {"marked.GetId()", noData, noData},
      {"data < data", "not supported", "not supported"},
      {"op < other", "not supported", dead},
      {"op()()()", nullptr, "not callable"},
      {"hash(op)", "unhashable", "unhashable"},
      {"hash(data)", "unhashable", "unhashable"},
      {"op(1)", "takes", "takes"},
      {"op(x=1)", "takes at most 0", "takes at most 0"},
  };
  for (const bool alive : {true, false}) {
    object.alive = alive;
    for (const auto& c : cases) {
      const char* const expected = alive ? c.alive : c.whenDead;
      if (!expected) continue;
      const std::string value = Eval(c.expression);
      const bool isDead = std::string_view(expected).ends_with(" alive");
      const std::string told =
          value == "(no text)" ? Take(isDead ? PyExc_ReferenceError : PyExc_TypeError) : value;
      if (value == "(no text)" && !isDead)
        EXPECT_NE(told.find(expected), std::string::npos) << c.expression << ": " << told;
      else
        EXPECT_EQ(told, expected) << c.expression;
    }
  }
}

// The chain of ids, with what can be told apart today: who owns the element.
TEST_F(WrapperTest, SomeElementsAreNeverOwned) {
  static int32_t own;
  tables::atom.IsInstanceOf = [](const QLXAtom*, int32_t id) { return HostBool(id == own); };
  tables::atom.GetType = [](const QLXAtom*) { return own; };
  for (const auto& [id, owned] :
       {std::pair(5155, true), {5694, true}, {1, true}, {110305, false}, {431000054, false}}) {
    own = id;
    FakeObject& object = Make();
    PyObject* wrapper = qlx::WrapHostObject(object.As<QLXAtom>(), true);
    ASSERT_TRUE(wrapper);
    EXPECT_EQ(Py_TYPE(wrapper), &qlx::g_BaseList2DType);
    EXPECT_EQ(OwnedBy(wrapper), owned) << id;
    Py_DECREF(wrapper);
    EXPECT_EQ(object.freed, owned) << id;
  }
}

}  // namespace
