// What the tests of the scene share.
#ifndef TESTS_UNIT_HOST_SCENE_SUPPORT_H
#define TESTS_UNIT_HOST_SCENE_SUPPORT_H

#include <memory>
#include <vector>

#include "app/settings.h"
#include "documents/documents.h"
#include "scene/kinds.h"
#include "scene/object.h"
#include "scene/tree.h"
#include "support.h"

constexpr int32_t kNull = 5140, kCube = 5159, kTexture = 5616, kMaterial = 5703, kBitmap = 5833;

class Scene : public ::testing::Test {
 protected:
  Scene() { host::GetSettings().startup = HOST_STARTUP; }
};

inline BaseList2D* New(int32_t type = kNull) {
  BaseList2D* made = host::baselist::Alloc(type);
  EXPECT_NE(made, nullptr) << type;
  return made;
}

struct FreeElement {
  void operator()(BaseList2D* element) const { host::baselist::Free(element); }
};
using Element = std::unique_ptr<BaseList2D, FreeElement>;

inline void SetName(BaseList2D* element, const char* name) {
  Text word(Word(name));
  host::baselist::SetName(element, &word);
}

inline HostLink LinkTo(host::Linkable* object) {
  HostLink link{};
  object->Link(link);
  return link;
}

inline GeListHead* HeadFor(BaseList2D* element, int32_t branch) { return host::Branch(*element, branch); }

inline void SetLinkEntry(BaseContainer& container, int32_t id, host::Linkable* goal) {
  HostGeData data{};
  data.type = HOST_DATA_LINK;
  data.value.link = LinkTo(goal);
  host::container::SetData(&container, id, &data);
}

inline void* GoalOf(const BaseContainer& container, int32_t id) {
  const HostGeData* data = host::container::FindData(&container, id);
  return data ? host::link::GetLink(data->value.link) : nullptr;
}

#endif
