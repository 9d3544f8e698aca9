// Lists, branches and lives of nodes.

#include <functional>
#include <thread>

#include "scene_support.h"

namespace {

using namespace host::listnode;
namespace listhead = host::listhead;
namespace atom = host::atom;

TEST_F(Scene, NothingComesBelowItself) {
  const Element outer(New()), free(New());
  BaseList2D *inner = New(), *tag = New(kTexture), *shader = New(kBitmap);
  EXPECT_TRUE(InsertUnder(inner, outer.get()));
  EXPECT_TRUE(listhead::InsertLast(HeadFor(inner, host::kTypeTag), tag));
  EXPECT_TRUE(host::baselist::InsertShader(tag, shader, nullptr));
  GeListHead* own = listhead::Alloc();  // a free head that calls a node of the tree its parent
  EXPECT_TRUE(listhead::SetParent(own, shader));
  GeListNode* const goals[] = {
      outer.get(), inner, tag, shader, HeadFor(inner, host::kTypeTag), HeadFor(outer.get(), host::kTypeTrack),
      own};
  for (GeListNode* goal : goals) {
    EXPECT_FALSE(InsertUnder(outer.get(), goal));
    EXPECT_FALSE(InsertUnderLast(outer.get(), goal));
    EXPECT_FALSE(InsertBefore(outer.get(), goal));
  }
  EXPECT_FALSE(InsertUnder(shader, own));  // a leaf, but a head is below it
  EXPECT_FALSE(listhead::SetParent(HeadFor(inner, host::kTypeTag), free.get()));
  EXPECT_FALSE(listhead::SetParent(own, own));
  EXPECT_TRUE(InsertUnder(free.get(), own));
  EXPECT_FALSE(listhead::SetParent(own, free.get()));
  EXPECT_EQ(listhead::GetParent(own), shader);
  EXPECT_EQ(host::baselist::GetMain(free.get()), shader);
  host::baselist::Free(shader);
  EXPECT_EQ(listhead::GetParent(own), nullptr);
  EXPECT_EQ(host::baselist::GetMain(free.get()), nullptr);
  Remove(free.get());
  listhead::Free(own);
  for (GeListNode* node : {static_cast<GeListNode*>(outer.get()), static_cast<GeListNode*>(inner)})
    EXPECT_FALSE(InsertUnder(HeadFor(inner, host::kTypeTag), node));
}

TEST_F(Scene, ListsTakeWhatTheyAreFor) {
  const Element documentOwner(New(host::kTypeDocument)), meshOwner(New(host::kTypePolygonObject));
  BaseList2D *document = documentOwner.get(), *mesh = meshOwner.get(), *cube = New(kCube), *made = New();
  GeListHead *own = listhead::Alloc(), *cache = HeadFor(cube, host::kCacheBranch);
  listhead::InsertLast(HeadFor(document, host::kTypeObject), cube);
  host::PutIn(*made, *cache, nullptr);
  made->isFixed = true;
  constexpr int32_t kPoints = host::kDataPoint, kTrack = host::kTypeTrack, kLayer = host::kTypeLayer,
                    kRender = host::kTypeRenderData, kDocument = host::kTypeDocument;
  const std::vector<int32_t> all{kNull,  kPoints, kTexture, kMaterial, kBitmap,
                                 kTrack, kLayer,  kRender,  kDocument};
  const auto but = [&](std::vector<int32_t> others) {
    std::vector<int32_t> types = all;
    for (int32_t other : others) std::erase(types, other);
    return types;
  };
  const struct {
    const char* what;
    GeListNode* parent;
    std::vector<int32_t> taken;
  } cases[] = {
      {"objects", HeadFor(document, host::kTypeObject), {kNull}},
      {"materials", HeadFor(document, host::kTypeMaterial), {kMaterial}},
      {"layers", HeadFor(document, kLayer), {kLayer}},
      {"render data", HeadFor(document, kRender), {kRender}},
      {"tags", HeadFor(cube, host::kTypeTag), {kPoints, kTexture}},
      {"tags of a mesh", HeadFor(mesh, host::kTypeTag), {kTexture}},
      {"shaders", HeadFor(cube, host::kTypeShader), {kBitmap}},
      {"tracks", HeadFor(cube, kTrack), {kTrack}},
      {"motion layers", HeadFor(cube, host::kTypeNLA), but({kDocument})},
      {"a cache", cache, {}},
      {"made", made, {}},
      {"a free list", own, all},
      {"a node", cube, but({kDocument})},
      {"a document", document, {}},
  };
  for (const auto& c : cases) {
    std::vector<int32_t> taken[4];
    for (const int32_t type : all) {
      const Element element(New(type));
      BaseList2D* node = element.get();
      if (InsertUnder(node, c.parent)) taken[0].push_back(type);
      Remove(node);
      if (InsertUnderLast(node, c.parent)) taken[1].push_back(type);
      Remove(node);
      auto* head = host::As<GeListHead>(c.parent);
      if (head ? listhead::InsertFirst(head, node)
               : listhead::Insert(HeadOf(*c.parent), node, c.parent, nullptr))
        taken[2].push_back(type);
      Remove(node);
      if (c.parent->down ? InsertBefore(node, c.parent->down) : InsertUnder(node, c.parent))
        taken[3].push_back(type);
      Remove(node);
    }
    for (const auto& types : taken) EXPECT_EQ(types, c.taken) << c.what;
  }
  const Element loose(New()), stranger(New(kDocument));
  EXPECT_FALSE(InsertAfter(stranger.get(), loose.get()));
  listhead::FlushAll(cache);
  EXPECT_EQ(cache->down, made);
  GeListHead* tags = HeadFor(mesh, host::kTypeTag);
  listhead::InsertFirst(tags, New(kTexture));
  listhead::FlushAll(tags);
  EXPECT_EQ(tags->down->type.id, kPoints);
  EXPECT_EQ(tags->downLast->type.id, host::kDataPolygon);
  listhead::Free(own);
}

TEST_F(Scene, DeepAndWideTreesNeedNoStack) {
  constexpr int kDepth = 100000, kWidth = 1000000;
  for (const bool upwards : {false, true}) {
    Element root(New());
    BaseList2D* end = root.get();
    for (int i = 0; i < kDepth; ++i) {
      BaseList2D* next = New();
      if (upwards) {
        ASSERT_TRUE(InsertUnder(root.release(), next));
        root.reset(next);
      } else {
        ASSERT_TRUE(InsertUnder(next, end));
        end = next;
      }
      if (i % 1000 == 0) listhead::InsertLast(HeadFor(next, host::kTypeTag), New(kTexture));
    }
    const uint32_t before = atom::GetHDirty(root.get(), HDIRTYFLAGS_OBJECT);
    atom::SetDirty(end, DIRTYFLAGS_DATA);
    EXPECT_NE(atom::GetHDirty(root.get(), HDIRTYFLAGS_OBJECT), before);
    EXPECT_TRUE(atom::MultiMessage(end, MULTIMSG_UP, 5, nullptr));
    EXPECT_EQ(GetDocument(end), nullptr);
    const Element clone(static_cast<BaseList2D*>(atom::GetClone(root.get(), 0, nullptr)));
    int depth = 0;
    for (GeListNode* node = clone.get(); node->down; node = node->down) ++depth;
    EXPECT_EQ(depth, kDepth);
  }
  const Element root(New());
  for (int i = 0; i < kWidth; ++i) ASSERT_TRUE(InsertUnderLast(New(i % 2 ? kCube : kNull), root.get()));
  const Element clone(static_cast<BaseList2D*>(atom::GetClone(root.get(), 0, nullptr)));
  int width = 0;
  for (GeListNode* node = clone->down; node; node = node->next) ++width;
  EXPECT_EQ(width, kWidth);
  EXPECT_TRUE(atom::MultiMessage(clone.get(), MULTIMSG_DOWN, 5, nullptr));
}

TEST_F(Scene, AllLinksOfASubtreeDieAtOnceAndPinsHoldSingleNodes) {
  BaseList2D *root = New(), *child = New(), *tag = New(kTexture), *shader = New(kBitmap), *outside = New();
  InsertUnder(root, outside);
  InsertUnder(child, root);
  listhead::InsertLast(HeadFor(child, host::kTypeTag), tag);
  host::baselist::InsertShader(tag, shader, nullptr);
  GeListHead* head = HeadFor(child, host::kTypeTag);
  const HostLink links[] = {LinkTo(root), LinkTo(child), LinkTo(tag), LinkTo(shader), LinkTo(head)};
  const HostLink pinned[] = {links[1], links[4]};
  for (const HostLink& link : pinned) ASSERT_NE(host::link::PinLink(link), nullptr);
  host::baselist::Free(root);
  for (const HostLink& link : links) EXPECT_EQ(host::link::GetLink(link), nullptr);
  EXPECT_EQ(GetDown(outside), nullptr);
  // Who holds them meets neither what has gone nor a list to put something into.
  for (const GeListNode* node : {static_cast<GeListNode*>(child), static_cast<GeListNode*>(head)})
    EXPECT_TRUE(!GetNext(node) && !GetPred(node) && !GetUp(node) && !GetDown(node) && !GetListHead(node));
  EXPECT_EQ(GetBranchInfo(child, nullptr, 0, 0), 0);
  EXPECT_FALSE(InsertUnder(outside, child));
  EXPECT_FALSE(InsertUnder(outside, head));
  EXPECT_FALSE(InsertUnder(child, outside));
  EXPECT_EQ(host::baselist::GetCTrackRoot(child), nullptr);
  for (const HostLink& link : pinned) host::link::UnpinLink(link);

  BaseList2D* last = New();
  InsertUnder(last, outside);
  const HostLink link = LinkTo(last);
  host::DestroyLater(outside);
  EXPECT_EQ(host::link::GetLink(link), nullptr);
  host::ReclaimDestroyed();
}

TEST_F(Scene, WhatTheHostKeepsIsNotTaken) {
  BaseDocument* document = host::document::GetActiveDocument();
  ASSERT_NE(document, nullptr);
  EXPECT_EQ(host::document::GetActiveDocument(), document);
  const Element other(New());
  GeListHead* objects = HeadFor(document, host::kTypeObject);
  host::baselist::Free(document);
  EXPECT_FALSE(InsertUnder(document, other.get()));
  Remove(document);
  Remove(objects);
  listhead::Free(objects);
  EXPECT_EQ(host::document::GetActiveDocument(), document);
  EXPECT_EQ(HeadFor(document, host::kTypeObject), objects);
  EXPECT_EQ(GetDocument(objects), document);
  // A document of a script's own stands where it is put.
  const Element copy(static_cast<BaseList2D*>(atom::GetClone(document, 0, nullptr)));
  ASSERT_NE(copy, nullptr);
  EXPECT_NE(static_cast<BaseDocument*>(copy.get()), document);
  EXPECT_EQ(atom::GetClone(objects, 0, nullptr), nullptr);
  EXPECT_FALSE(atom::CopyTo(objects, HeadFor(copy.get(), host::kTypeObject), 0, nullptr));
}

TEST_F(Scene, TheActiveObjectIsTheOnlyOne) {
  const Element owned(New(host::kTypeDocument));
  auto* document = static_cast<BaseDocument*>(owned.get());
  BaseList2D *object = New(kCube), *child = New(), *tag = New(kTexture);
  InsertUnder(child, object);
  listhead::InsertLast(HeadFor(document, host::kTypeObject), object);
  listhead::InsertLast(HeadFor(child, host::kTypeTag), tag);
  const auto active = [&] { return host::document::GetActiveObject(document); };
  EXPECT_EQ(active(), nullptr);
  host::baselist::SetBit(tag, 2);
  host::baselist::SetBit(child, 2);
  EXPECT_EQ(static_cast<BaseList2D*>(active()), child);
  host::baselist::SetBit(object, 2);
  EXPECT_EQ(active(), nullptr);
  // A plug-in may say that it is a document; the host knows what it made.
  EXPECT_EQ(host::document::GetActiveObject(reinterpret_cast<BaseDocument*>(child)), nullptr);
  HostBranch found[1];
  EXPECT_EQ(GetBranchInfo(document, found, 1, 0), 1);
  const Text name(found[0].name);
  EXPECT_EQ(GetBranchInfo(document, nullptr, -1, 0), 0);
}

TEST_F(Scene, ChangesAreSeenFromAboveByTheirKind) {
  const Element owned(New(host::kTypeDocument));
  BaseList2D *document = owned.get(), *object = New(kCube), *child = New(), *tag = New(kTexture);
  listhead::InsertLast(HeadFor(document, host::kTypeObject), object);
  InsertUnder(child, object);
  listhead::InsertLast(HeadFor(child, host::kTypeTag), tag);
  constexpr int32_t kObject = HDIRTYFLAGS_OBJECT, kTag = HDIRTYFLAGS_TAG, kMatrix = HDIRTYFLAGS_OBJECT_MATRIX,
                    kHierarchy = HDIRTYFLAGS_OBJECT_HIERARCHY, kMaterialKind = HDIRTYFLAGS_MATERIAL;
  BaseList2D* added = New();
  const HostGeData data{HOST_DATA_INT32, 0, {}};
  const struct {
    const char* what;
    std::function<void()> change;
    int32_t seen, unseen;
  } cases[] = {
      {"name", [&] { SetName(child, "x"); }, kObject, kTag | kMatrix | kHierarchy},
      {"matrix", [&] { atom::SetDirty(child, DIRTYFLAGS_MATRIX); }, kMatrix, kTag | kObject | kHierarchy},
      {"view", [&] { host::container::SetData(host::baselist::GetDataInstance(tag), 1, &data); }, kTag,
       kObject},
      {"active", [&] { host::baselist::ToggleBit(child, 2); }, kObject, kTag},
      {"forced", [&] { atom::SetHDirty(tag, kMaterialKind); }, kMaterialKind, kTag | kObject},
      {"insert", [&] { InsertUnder(added, child); }, kHierarchy, kTag | kMaterialKind},
      {"remove leaf", [&] { Remove(added); }, kHierarchy | kObject, kTag | kMaterialKind},
      {"remove subtree", [&] { Remove(child); }, kHierarchy | kObject | kTag, 0},
      {"nothing", [] {}, 0, 255},
  };
  for (const auto& c : cases) {
    uint32_t before[8];
    for (int bit = 0; bit < 8; ++bit) before[bit] = atom::GetHDirty(document, 1 << bit);
    c.change();
    for (int bit = 0; bit < 8; ++bit) {
      const uint32_t now = atom::GetHDirty(document, 1 << bit);
      EXPECT_GE(now, before[bit]) << c.what;
      const bool isSeen = now > before[bit];
      EXPECT_TRUE(isSeen ? !(c.unseen >> bit & 1) : !(c.seen >> bit & 1)) << c.what << " " << bit;
    }
  }
  host::baselist::Free(child);
  host::baselist::Free(added);

  const uint32_t before = atom::GetDirty(object, DIRTYFLAGS_DATA), all = atom::GetDirty(object, -1);
  host::container::SetData(host::baselist::GetDataInstance(object), 1, &data);
  atom::SetDirty(object, DIRTYFLAGS_DATA | DIRTYFLAGS_CACHE);
  EXPECT_EQ(atom::GetDirty(object, DIRTYFLAGS_DATA), before + 2);
  EXPECT_EQ(atom::GetDirty(object, -1), all + 3);
  EXPECT_EQ(atom::GetDirty(object, 1), 0U);
}

// The first thread stays inside until the second has tried.
TEST_F(Scene, ThreadsThatOverlapAreCaught) {
  ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
  const auto overlap = [](auto* first, auto* second) {
    const std::remove_pointer_t<decltype(first)> outer, nested;
    std::thread([] { const std::remove_pointer_t<decltype(second)> other; }).join();
  };
  host::WatchedRead* read = nullptr;
  host::WatchedChange* change = nullptr;
  overlap(read, read);
  {
    const host::WatchedRead outer;
    const host::WatchedChange nested;
    const host::WatchedRead inner;
  }
  EXPECT_DEATH(overlap(read, change), "a scene changes while it is used");
  EXPECT_DEATH(overlap(change, read), "a scene is read while it changes");
  EXPECT_DEATH(overlap(change, change), "a scene changes while it is used");
}

}  // namespace
