#include <algorithm>
#include <utility>

#include "bitmaps/bitmaps.h"
#include "fake_scene.h"
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
}

// The chain of ids, with what can be told apart today: who owns the element.
// Each element says yes to its own id and to those that stand behind it in the row: the first one counts.
TEST_F(WrapperTest, ElementsHaveTheTypesOfTheirIds) {
  static std::vector<int32_t> ids;
  tables::atom.IsInstanceOf = [](const QLXAtom*, int32_t id) {
    return HostBool(std::find(ids.begin(), ids.end(), id) != ids.end());
  };
  tables::atom.GetType = [](const QLXAtom*) { return ids[0]; };
  const struct {
    std::vector<int32_t> ids;
    const char* type;
    bool owned = true;
  } kCases[] = {
      {{1}, "qlx.BaseList2D"},
      {{110059}, "qlx.documents.BaseDocument"},
      {{5703, 5702}, "qlx.Material"},
      {{5702}, "qlx.BaseMaterial"},
      {{1011123, 5707}, "qlx.LayerShader"},
      {{1001428}, "qlx.modules.driftmotes.DM_MasterSystem"},
      {{110305}, "qlx.BaseDraw", false},
      {{431000054}, "qlx.modules.takesystem.BaseTake", false},
      {{24535345}, "qlx.modules.net.RenderJob", false},
      {{544, 542}, "qlx.modules.frescoa.PaintLayerFolder", false},
      {{543, 544, 502}, "qlx.modules.frescoa.PaintTexture", false},
      {{501}, "qlx.modules.frescoa.PaintBitmap", false},
      {{5155}, "qlx.BaseObject"},
      {{5100, 5155, 5101, 5156}, "qlx.SplineObject"},
      {{5156, 5155}, "qlx.PointObject"},
      {{1039859, 5155}, "qlx.VolumeBuilder"},
      {{5694}, "qlx.BaseTag"},
      {{5671, 5694, 5695}, "qlx.UVWTag"},
      {{431000045, 5694, 5695}, "qlx.VertexColorTag"},
      {{5695, 5694}, "qlx.VariableTag"},
      {{5701, 5694}, "qlx.SelectionTag"},
  };
  for (const auto& c : kCases) {
    ids = c.ids;
    FakeObject& object = Make();
    PyObject* wrapper = qlx::WrapHostObject(object.As<QLXAtom>(), true);
    ASSERT_TRUE(wrapper);
    EXPECT_STREQ(Py_TYPE(wrapper)->tp_name, c.type);
    EXPECT_EQ(OwnedBy(wrapper), c.owned) << c.type;
    Py_DECREF(wrapper);
    EXPECT_EQ(object.freed, c.owned) << c.type;
  }
}

}  // namespace
