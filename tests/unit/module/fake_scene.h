// A host's objects as the module sees them. Their memory stays, so that a test can tell what was
// done to a dead one.
#ifndef TESTS_UNIT_MODULE_FAKE_SCENE_H
#define TESTS_UNIT_MODULE_FAKE_SCENE_H

#include <deque>

#include "kelvar/resource.h"
#include "kit/i_typequeue.h"
#include "kit/i_wrapper.h"
#include "support.h"

struct FakeObject {
  bool alive = true;
  bool diesAtPin = false;
  int freed = 0;
  int pins = 0;

  template <class Host>
  Host* As() {
    return reinterpret_cast<Host*>(this);
  }
};

// The lock is held, the wrapper types are ready.
class SceneTest : public InterpreterTest {
 protected:
  inline static std::deque<FakeObject> objects;
  inline static int links = 0;

  static FakeObject& Make() { return objects.emplace_back(); }
  static FakeObject& Behind(PyObject* wrapper) {
    return *static_cast<FakeObject*>(reinterpret_cast<qlx::AtomWrapper*>(wrapper)->link.slot);
  }
  static bool& OwnedBy(PyObject* wrapper) { return reinterpret_cast<qlx::AtomWrapper*>(wrapper)->owned; }

  // A wrapper's link, whatever the class of its host object.
  template <class Host>
  static HostBool SetLink(Host* self, HostLink* link) {
    if (FailingMemory::Fails()) return false;
    *link = {self, 1};
    ++links;
    return true;
  }
  static void* GetLink(HostLink link) {
    auto* object = static_cast<FakeObject*>(link.slot);
    return object && object->alive ? object : nullptr;
  }
  template <class Host>
  static void Free(Host* self) {
    auto* object = reinterpret_cast<FakeObject*>(self);
    object->alive = false;
    ++object->freed;
  }

  void SetUp() override {
    InterpreterTest::SetUp();
    tables::link.GetLink = GetLink;
    tables::link.FreeLink = [](HostLink* link) {
      links -= link->slot != nullptr;
      *link = {};
    };
    tables::link.PinLink = [](HostLink link) {
      auto* object = static_cast<FakeObject*>(link.slot);
      if (object && object->diesAtPin) object->alive = false;
      if (!GetLink(link)) return static_cast<void*>(nullptr);
      ++object->pins;
      return link.slot;
    };
    tables::link.UnpinLink = [](HostLink link) { --static_cast<FakeObject*>(link.slot)->pins; };
    tables::atom.SetLink = SetLink<QLXAtom>;
    tables::bitmap.SetLink = SetLink<BaseBitmap>;
    tables::bitmap.Free = Free<BaseBitmap>;
    tables::baselist.Free = Free<BaseList2D>;
    tables::container.Free = Free<BaseContainer>;
    tables::resource.SetLink = SetLink<GeResource>;
    tables::resource.Close = Free<GeResource>;
    ASSERT_EQ(qlx::ReadyTypeQueue(), "");
  }
};

#endif
