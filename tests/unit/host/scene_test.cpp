// Lists, branches and lives of nodes.

#include <algorithm>
#include <functional>
#include <random>
#include <thread>

#include "scene_support.h"

namespace {

using namespace host::listnode;
namespace listhead = host::listhead;
namespace atom = host::atom;

// What a list is thought to be: nodes with their children in order, and nothing else.
struct Model {
  GeListNode* node;
  Model* parent = nullptr;
  std::vector<Model*> children;

  bool IsHead() const { return node && host::IsHead(*node); }
  bool IsInChain() const { return parent && !parent->node; }  // which no list holds
  bool IsInside(const Model* outer) const {
    for (const Model* at = this; at; at = at->parent)
      if (at == outer) return true;
    return false;
  }
  void Detach() {
    if (parent) std::erase(parent->children, this);
    parent = nullptr;
  }
  void Put(Model* under, size_t at) {
    parent = under;
    under->children.insert(under->children.begin() + ptrdiff_t(at), this);
  }
  size_t Place() const {
    return size_t(std::find(parent->children.begin(), parent->children.end(), this) - parent->children.begin());
  }
};

class Lists {
 public:
  explicit Lists(unsigned seed) : random_(seed) {
    for (int i = 0; i < 3; ++i) Add(listhead::Alloc());
  }
  ~Lists() {
    for (size_t i = 3; i < all_.size(); ++i)
      if (!all_[i]->parent || all_[i]->IsInChain())
        host::baselist::Free(static_cast<BaseList2D*>(all_[i]->node));
    for (size_t i = 0; i < 3; ++i) listhead::Free(static_cast<GeListHead*>(all_[i]->node));
  }

  void Step() {
    Model *self = Any(), *other = Any();
    const int action = Number(12);
    if (self->IsHead() && action < 10) {
      EXPECT_FALSE(InsertUnder(self->node, other->node));
      return;
    }
    switch (action) {
      case 0:
      case 1: {
        const bool can = !other->IsHead() && !other->IsInside(self);
        EXPECT_EQ(action ? InsertAfter(self->node, other->node) : InsertBefore(self->node, other->node), can);
        if (!can) return;
        self->Detach();
        if (!other->parent) other->Put(chains_.emplace_back(std::make_unique<Model>(Model{})).get(), 0);
        return self->Put(other->parent, other->Place() + size_t(action));
      }
      case 2:
      case 3: {
        const bool can = !other->IsInside(self), last = action == 3;
        EXPECT_EQ(last ? InsertUnderLast(self->node, other->node) : InsertUnder(self->node, other->node), can);
        if (!can) return;
        self->Detach();
        return self->Put(other, last ? other->children.size() : 0);
      }
      case 4:
      case 5:
      case 6: {
        Model* head = all_[size_t(Number(3))].get();
        auto* list = static_cast<GeListHead*>(head->node);
        if (action == 6)
          return InsertAt(list, head, self, Number(2) ? Any() : nullptr, Number(2) ? Any() : nullptr);
        EXPECT_TRUE(action == 4 ? listhead::InsertFirst(list, self->node)
                                : listhead::InsertLast(list, self->node));
        self->Detach();
        return self->Put(head, action == 4 ? 0 : head->children.size());
      }
      case 7:
        Remove(self->node);
        return self->Detach();
      case 8:
        if (all_.size() < 60) AddClone(self);
        return;
      case 9: {
        host::baselist::Free(static_cast<BaseList2D*>(self->node));
        self->Detach();
        return Forget([&](const auto& one) { return one->IsInside(self); });
      }
      case 10:
        return Flush();
      default:
        for (int i = 0; i < 3; ++i) Add(New(Number(2) ? kNull : kCube));
    }
  }

  void Check() const {
    for (const auto& chain : chains_) CheckChildren(*chain);
    for (const auto& one : all_) {
      const GeListNode* node = one->node;
      const auto& children = one->children;
      ASSERT_EQ(GetDown(node), children.empty() ? nullptr : children.front()->node);
      ASSERT_EQ(GetDownLast(node), children.empty() ? nullptr : children.back()->node);
      CheckChildren(*one);
      const Model* top = one.get();
      while (top->parent && !top->IsInChain()) top = top->parent;
      ASSERT_EQ(GetListHead(node), top->IsHead() && top != one.get() ? top->node : nullptr);
      ASSERT_TRUE(one->parent || (!GetNext(node) && !GetPred(node) && !GetUp(node)));
    }
  }

 private:
  static void CheckChildren(const Model& one) {
    const auto& children = one.children;
    for (size_t i = 0; i < children.size(); ++i) {
      const GeListNode* child = children[i]->node;
      ASSERT_EQ(GetPred(child), i ? children[i - 1]->node : nullptr);
      ASSERT_EQ(GetNext(child), i + 1 < children.size() ? children[i + 1]->node : nullptr);
      ASSERT_EQ(GetUp(child), one.IsHead() ? nullptr : one.node);
    }
  }

  void Add(GeListNode* node) { all_.push_back(std::make_unique<Model>(Model{node})); }
  int Number(int below) { return int(random_() % unsigned(below)); }
  Model* Any() { return all_[size_t(Number(int(all_.size())))].get(); }

  void InsertAt(GeListHead* list, Model* head, Model* self, Model* parent, Model* pred) {
    const auto isBelow = [&](const Model* one) { return one != head && one->IsInside(head); };
    Model* under = pred ? pred->parent : parent ? parent : head;
    bool can = (!parent || isBelow(parent)) && (!pred || isBelow(pred)) && under && !under->IsInside(self);
    can = can && pred != self && parent != self && (!pred || !parent || pred->parent == parent);
    EXPECT_EQ(listhead::Insert(list, self->node, parent ? parent->node : nullptr, pred ? pred->node : nullptr),
              can);
    if (!can) return;
    self->Detach();
    self->Put(under, pred ? pred->Place() + 1 : 0);
  }

  // The clone's children are found in the order of the model's.
  void AddClone(const Model* of) {
    std::vector<std::pair<const Model*, Model*>> pending;
    const auto add = [&](GeListNode* node, const Model* original, Model* parent) {
      ASSERT_TRUE(node && node != original->node);
      ASSERT_EQ(atom::GetType(node), atom::GetType(original->node));
      Add(node);
      Model* made = all_.back().get();
      if (parent) made->Put(parent, parent->children.size());
      pending.emplace_back(original, made);
    };
    add(static_cast<GeListNode*>(atom::GetClone(of->node, 0, nullptr)), of, nullptr);
    while (!pending.empty()) {
      const auto [original, made] = pending.back();
      pending.pop_back();
      GeListNode* child = made->node->down;
      for (const Model* one : original->children) {
        add(child, one, made);
        child = child->next;
      }
    }
  }

  void Flush() {
    Model* head = all_[size_t(Number(3))].get();
    if (Number(4)) return;
    listhead::FlushAll(static_cast<GeListHead*>(head->node));
    Forget([&](const auto& one) { return one.get() != head && one->IsInside(head); });
    head->children.clear();
  }

  // Only when all of them are found: each is found through those above it.
  template <class Ends>
  void Forget(Ends ends) {
    std::vector<bool> gone;
    for (const auto& one : all_) gone.push_back(ends(one));
    std::vector<std::unique_ptr<Model>> kept;
    for (size_t i = 0; i < all_.size(); ++i)
      if (!gone[i]) kept.push_back(std::move(all_[i]));
    all_.swap(kept);
  }

  std::minstd_rand random_;
  std::vector<std::unique_ptr<Model>> all_;
  std::vector<std::unique_ptr<Model>> chains_;
};

TEST_F(Scene, ListsAreWhatTheirModelSays) {
  for (unsigned seed = 1; seed <= 4; ++seed) {
    Lists lists(seed);
    for (int step = 0; step < 4000; ++step) {
      lists.Step();
      lists.Check();
      if (HasFatalFailure() || HasNonfatalFailure()) FAIL() << "seed " << seed << ", step " << step;
    }
  }
}

TEST_F(Scene, NothingComesBelowItself) {
  const Element outer(New()), free(New());
  BaseList2D *inner = New(), *tag = New(kTexture), *shader = New(kTexture);
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
  BaseList2D *root = New(), *child = New(), *tag = New(kTexture), *shader = New(kTexture), *outside = New();
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

TEST_F(Scene, DocumentsAndBranches) {
  const Element owned(New(host::kTypeDocument));
  auto* document = static_cast<BaseDocument*>(owned.get());
  BaseList2D *object = New(kCube), *child = New(), *tag = New(kTexture), *material = New(kMaterial);
  InsertUnder(child, object);
  EXPECT_EQ(GetDocument(object), nullptr);
  listhead::InsertLast(HeadFor(document, host::kTypeObject), object);
  listhead::InsertLast(HeadFor(document, host::kTypeMaterial), material);
  HostBranch found[20];
  const auto tell = [&](const GeListNode* node, int32_t count, int32_t flags = 0) {
    std::string told;
    const int32_t filled = GetBranchInfo(node, found, count, flags);
    for (int32_t i = 0; i < filled; ++i) {
      const Text name(found[i].name);
      told += (i ? " " : "") + std::to_string(found[i].id) + "=" + name.Text();
      EXPECT_EQ(listhead::GetParent(found[i].head), node);
    }
    return told;
  };
  EXPECT_EQ(tell(document, 20), "5155=Objects 5702=Materials 100004801=Layers 110304=Render Settings");
  EXPECT_EQ(tell(document, 1), "5155=Objects");
  EXPECT_EQ(tell(document, -1), "");
  EXPECT_EQ(tell(document, 20, GETBRANCHINFO_ONLYWITHCHILDREN), "5155=Objects 5702=Materials");
  EXPECT_EQ(tell(child, 20, GETBRANCHINFO_ONLYWITHCHILDREN), "");
  EXPECT_EQ(tell(child, 20), "5694=Tags");
  EXPECT_EQ(tell(tag, 20), "");
  listhead::InsertLast(found[0].head, tag);
  host::baselist::GetCTrackRoot(tag);
  EXPECT_EQ(tell(tag, 20), "5350=Tracks");

  for (const GeListNode* node : {object, child, tag, material}) EXPECT_EQ(GetDocument(node), document);
  EXPECT_EQ(host::baselist::GetMain(tag), child);
  EXPECT_EQ(host::baselist::GetMain(child), document);
  EXPECT_EQ(host::baselist::GetMain(document), nullptr);
  EXPECT_EQ(GetDocument(document), document);

  const auto active = [&] { return host::document::GetActiveObject(document); };
  EXPECT_EQ(active(), nullptr);
  host::baselist::SetBit(tag, 2);
  host::baselist::SetBit(child, 2);
  EXPECT_EQ(static_cast<BaseList2D*>(active()), child);
  host::baselist::SetBit(object, 2);
  EXPECT_EQ(active(), nullptr);
  // A plug-in may say that it is a document; the host knows what it made.
  EXPECT_EQ(host::document::GetActiveObject(reinterpret_cast<BaseDocument*>(child)), nullptr);
}

TEST_F(Scene, TypesAreMadeByTheirGroups) {
  const struct {
    int32_t type, kind;
    bool all, object, tag, material, shader;
  } cases[] = {
      {kCube, 5155, true, true, false, false, false},
      {kTexture, 5694, true, false, true, false, false},
      {kMaterial, 5702, true, false, false, true, false},
      {host::kTypeDocument, 110059, true, false, false, false, false},
      {host::kTypeLayer, 100004801, true, false, false, false, false},
      {host::kTypeTrack, 5350, true, false, false, false, false},
      {host::kTypeRenderData, 110304, true, false, false, false, false},
      {host::kTypeHead, 0, false, false, false, false, false},
      {5155, 0, false, false, false, false, false},
      {host::kTypeShader, 0, false, false, false, false, false},
      {12345, 0, false, false, false, false, false},
  };
  for (const auto& c : cases) {
    const auto check = [&](auto* made, bool is) {
      ASSERT_EQ(made != nullptr, is) << c.type;
      if (!made) return;
      EXPECT_EQ(atom::GetType(made), c.type);
      EXPECT_EQ(atom::GetClassification(made), c.kind);
      EXPECT_TRUE(atom::IsInstanceOf(made, c.kind));
      EXPECT_TRUE(IsDocumentRelated(made));
      host::baselist::Free(made);
    };
    check(host::baselist::Alloc(c.type), c.all);
    check(host::object::Alloc(c.type), c.object);
    check(host::tag::Alloc(c.type), c.tag);
    check(host::material::Alloc(c.type), c.material);
    check(host::shader::Alloc(c.type), c.shader);
  }
  GeListHead* head = listhead::Alloc();
  EXPECT_EQ(atom::GetType(head), 110063);
  listhead::Free(head);
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

TEST_F(Scene, MarksAndBits) {
  const Element node(New());
  BaseList2D* self = node.get();
  int64_t bytes = 0;
  int32_t application = 0;
  EXPECT_EQ(atom::FindUniqueID(self, 7, &bytes), nullptr);
  EXPECT_TRUE(atom::AddUniqueID(self, 7, "seven", 5));
  EXPECT_TRUE(atom::AddUniqueID(self, 8, nullptr, 0));
  EXPECT_TRUE(atom::AddUniqueID(self, 7, "7", 1));
  EXPECT_FALSE(atom::AddUniqueID(self, 9, "x", -1));
  EXPECT_FALSE(atom::AddUniqueID(self, 9, nullptr, 4));
  EXPECT_EQ(atom::GetUniqueIDCount(self), 2);
  ASSERT_NE(atom::FindUniqueID(self, 7, &bytes), nullptr);
  EXPECT_EQ(bytes, 1);
  *static_cast<char*>(atom::FindUniqueID(self, 7, &bytes)) = '!';
  EXPECT_EQ(*static_cast<const char*>(atom::GetUniqueIDIndex(self, 0, &application, &bytes)), '!');
  EXPECT_EQ(application, 7);
  EXPECT_NE(atom::GetUniqueIDIndex(self, 1, &application, &bytes), nullptr);
  EXPECT_EQ(bytes, 0);
  EXPECT_EQ(atom::GetUniqueIDIndex(self, 2, &application, &bytes), nullptr);
  EXPECT_EQ(atom::GetUniqueIDIndex(self, -1, &application, &bytes), nullptr);

  for (const int32_t bit : {0, 31, 32, 63}) {
    EXPECT_EQ(GetNBit(self, bit), 0);
    EXPECT_TRUE(ChangeNBit(self, bit, NBITCONTROL_TOGGLE));
    EXPECT_EQ(GetNBit(self, bit), 1);
    EXPECT_TRUE(ChangeNBit(self, bit, NBITCONTROL_CLEAR));
    EXPECT_TRUE(ChangeNBit(self, bit, NBITCONTROL_CLEAR));
    EXPECT_EQ(GetNBit(self, bit), 0);
    EXPECT_TRUE(ChangeNBit(self, bit, NBITCONTROL_SET));
    EXPECT_EQ(GetNBit(self, bit), 1);
  }
  for (const int32_t bit : {-1, 64}) EXPECT_FALSE(ChangeNBit(self, bit, NBITCONTROL_SET) || GetNBit(self, bit));
  for (const int32_t mode : {0, 4}) EXPECT_FALSE(ChangeNBit(self, 1, mode));

  host::baselist::SetAllBits(self, 5);
  EXPECT_TRUE(host::baselist::GetBit(self, 4));
  EXPECT_FALSE(host::baselist::GetBit(self, 6));
  host::baselist::DelBit(self, 4);
  host::baselist::ToggleBit(self, 3);
  EXPECT_EQ(host::baselist::GetAllBits(self), 2);
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
