// Copies of elements, and their links.

#include "kelvar.framework/source/tables/t_messages.h"
#include "scene/gedata.h"
#include "scene_support.h"

namespace {

using namespace host::baselist;
using host::listnode::InsertUnderLast;
namespace atom = host::atom;
namespace listhead = host::listhead;

Element Clone(const BaseList2D* of, int32_t flags = 0, AliasTrans* trans = nullptr) {
  return Element(static_cast<BaseList2D*>(atom::GetClone(of, flags, trans)));
}

DescLevel Level(int32_t id) { return {id, 19, 0}; }

BaseList2D* NewTrack(BaseList2D* node, int32_t id) {
  const DescLevel level = Level(id);
  const HostDescID address{&level, 1, 0};
  return host::track::Alloc(node, &address);
}

BaseList2D* FindTrack(const BaseList2D* node, int32_t id) {
  const DescLevel level{id, 0, 0};  // types of levels aren't looked at
  const HostDescID address{&level, 1, 0};
  return FindCTrack(node, &address);
}

std::string NameOf(const BaseList2D* element) { return Text(GetName(element)).Text(); }

// "name(children)[branch:contents]" of an element and all that it has.
std::string Show(const GeListNode* node) {
  std::string shown = NameOf(static_cast<const BaseList2D*>(node));
  const auto list = [&](const GeListNode* of, const std::string& before, const char* behind) {
    if (!of->down) return;
    shown += before;
    for (const GeListNode* child = of->down; child; child = child->next) shown += Show(child);
    shown += behind;
  };
  list(node, "(", ")");
  if (node->extras)
    for (const GeListHead* head : node->extras->branches)
      list(head, "[" + std::to_string(head->branch) + ":", "]");
  return shown;
}

TEST_F(Scene, CopiesHaveWhatTheFlagsLeave) {
  const Element owned(New(kCube));
  BaseList2D *self = owned.get(), *child = New(), *tag = New(kTexture), *shader = New(kBitmap);
  for (const auto& [node, name] : {std::pair{self, "A"}, {child, "B"}, {tag, "T"}, {shader, "S"}})
    SetName(node, name);
  InsertUnderLast(child, self);
  listhead::InsertLast(HeadFor(self, host::kTypeTag), tag);
  InsertShader(tag, shader, nullptr);
  InsertTrackSorted(self, NewTrack(self, 1));
  SetName(GetFirstCTrack(self), "K");
  SetAllBits(self, 6);
  host::listnode::ChangeNBit(self, 40, NBITCONTROL_SET);
  atom::AddUniqueID(self, 1, "id", 2);
  const HostGeData number{HOST_DATA_INT32, 0, {.integer = 9}};
  host::container::SetData(GetDataInstance(self), 1000, &number);
  const struct {
    int32_t flags;
    const char* shown;
    int32_t bits;
  } cases[] = {
      {0, "A(B)[5694:T[5707:S]][5350:K]", 6},
      {COPYFLAGS_NO_HIERARCHY, "A[5694:T[5707:S]][5350:K]", 6},
      {COPYFLAGS_NO_ANIMATION, "A(B)[5694:T[5707:S]]", 6},
      {COPYFLAGS_NO_BRANCHES, "A(B)", 6},
      {COPYFLAGS_NO_BITS, "A(B)[5694:T[5707:S]][5350:K]", 0},
  };
  for (const auto& c : cases) {
    const auto check = [&](const BaseList2D* copy) {
      EXPECT_EQ(Show(copy), c.shown);
      EXPECT_EQ(GetAllBits(copy), c.bits);
      EXPECT_EQ(host::listnode::GetNBit(copy, 40), c.bits ? 1 : 0);
      EXPECT_EQ(atom::GetUniqueIDCount(copy), 0);
      EXPECT_TRUE(self->data == copy->data);
      EXPECT_EQ(FindTrack(copy, 1), GetFirstCTrack(copy));
    };
    check(Clone(self, c.flags).get());
    const Element target(New(kCube));
    EXPECT_TRUE(atom::CopyTo(self, target.get(), c.flags, nullptr));
    check(target.get());
  }
  // What was there goes, but for what isn't copied.
  const Element target(New(kCube));
  BaseList2D *old = New(), *oldTag = New(kTexture);
  for (const auto& [node, name] : {std::pair{old, "o"}, {oldTag, "t"}}) SetName(node, name);
  InsertUnderLast(old, target.get());
  listhead::InsertLast(HeadFor(target.get(), host::kTypeTag), oldTag);
  EXPECT_TRUE(atom::CopyTo(self, target.get(), COPYFLAGS_NO_BRANCHES, nullptr));
  EXPECT_EQ(Show(target.get()), "A(B)[5694:t]");
  EXPECT_TRUE(atom::CopyTo(self, target.get(), COPYFLAGS_NO_HIERARCHY, nullptr));
  EXPECT_EQ(Show(target.get()), "A(B)[5694:T[5707:S]][5350:K]");
  const Element other(New());
  EXPECT_FALSE(atom::CopyTo(self, other.get(), 0, nullptr));
  EXPECT_TRUE(atom::CopyTo(self, self, 0, nullptr));
}

// Either way one is gone, or another, when the copy is there.
TEST_F(Scene, CopiesBetweenParentAndChild) {
  for (const bool upwards : {false, true}) {
    const Element root(New());
    BaseList2D *middle = New(), *leaf = New();
    for (const auto& [node, name] : {std::pair{root.get(), "A"}, {middle, "B"}, {leaf, "C"}})
      SetName(node, name);
    InsertUnderLast(middle, root.get());
    InsertUnderLast(leaf, middle);
    EXPECT_TRUE(upwards ? atom::CopyTo(middle, root.get(), 0, nullptr)
                        : atom::CopyTo(root.get(), middle, 0, nullptr));
    EXPECT_EQ(Show(root.get()), upwards ? "B(C)" : "A(A(B(C)))");
  }
}

TEST_F(Scene, LinksAmongCopiesAreTranslated) {
  for (const bool outside : {false, true}) {
    const Element owned(New()), stranger(New());
    BaseList2D *a = owned.get(), *b = New(), *tag = New(kTexture), *layer = New(host::kTypeLayer);
    InsertUnderLast(b, a);
    listhead::InsertLast(HeadFor(b, host::kTypeTag), tag);
    SetLinkEntry(a->data, 1, b);
    SetLinkEntry(a->data, 2, a);
    SetLinkEntry(b->data, 1, a);  // a cycle
    SetLinkEntry(b->data, 3, stranger.get());
    BaseContainer inner, twice;
    SetLinkEntry(inner, 1, tag);
    HostGeData nested = host::gedata::FromContainer(&inner);
    for (const int32_t id : {1, 2}) host::container::SetData(&twice, id, &nested);
    HostGeData shared = host::gedata::FromContainer(&twice);
    for (const int32_t id : {1, 2}) host::container::SetData(&tag->data, id, &shared);
    for (HostGeData* data : {&nested, &shared}) host::gedata::Destroy(data);
    const Element layers(New(host::kTypeDocument));
    listhead::InsertLast(HeadFor(layers.get(), host::kTypeLayer), layer);
    SetLayerObject(a, layer);

    AliasTrans* trans = host::aliastrans::Alloc();
    EXPECT_TRUE(host::aliastrans::Init(trans, nullptr));
    const Element copy = Clone(a, 0, trans);
    auto* copyB = static_cast<BaseList2D*>(copy->down);
    auto* copyTag = static_cast<BaseList2D*>(HeadFor(copyB, host::kTypeTag)->down);
    EXPECT_EQ(GoalOf(copy->data, 1), b);
    host::aliastrans::Translate(trans, outside);
    host::aliastrans::Free(trans);
    EXPECT_EQ(GoalOf(copy->data, 1), copyB);
    EXPECT_EQ(GoalOf(copy->data, 2), copy.get());
    EXPECT_EQ(GoalOf(copyB->data, 1), copy.get());
    EXPECT_EQ(GoalOf(copyB->data, 3), outside ? stranger.get() : nullptr);
    EXPECT_EQ(GetLayerObject(copy.get(), nullptr), outside ? layer : nullptr);
    for (const int32_t id : {1, 2}) {
      const auto sub = [](const BaseContainer& c, int32_t at) {
        return host::ContainerOf(*host::container::FindData(&c, at));
      };
      EXPECT_EQ(GoalOf(*sub(*sub(copyTag->data, 1), id), 1), copyTag);
      EXPECT_EQ(GoalOf(*sub(*sub(tag->data, id), 1), 1), tag);  // the original is as it was
    }
    EXPECT_EQ(GoalOf(a->data, 1), b);
  }
}

// Twice as many places in each level: only sharing makes it finish.
TEST_F(Scene, TransferredGoalsReachEveryLinkOfTheDocument) {
  const Element owned(New(host::kTypeDocument)), far(New());
  BaseList2D *document = owned.get(), *from = New(), *to = New(), *holder = New(),
             *layer = New(host::kTypeLayer);
  for (BaseList2D* node : {from, holder, to}) listhead::InsertLast(HeadFor(document, host::kTypeObject), node);
  listhead::InsertLast(HeadFor(document, host::kTypeLayer), layer);
  EXPECT_TRUE(TransferGoal(from, to, 0));
  BaseContainer nested;
  SetLinkEntry(nested, 1, from);
  for (int i = 0; i < 60; ++i) {
    BaseContainer outer;
    HostGeData data = host::gedata::FromContainer(&nested);
    for (const int32_t id : {1, 2}) host::container::SetData(&outer, id, &data);
    host::gedata::Destroy(&data);
    nested = outer;
  }
  HostGeData data = host::gedata::FromContainer(&nested);
  host::container::SetData(&holder->data, 1, &data);
  host::gedata::Destroy(&data);
  SetLinkEntry(holder->data, 2, from);
  SetLinkEntry(far->data, 1, from);
  // A part that was given away stays where it is, with the new goal.
  BaseContainer own;
  SetLinkEntry(own, 1, from);
  data = host::gedata::FromContainer(&own);
  host::container::SetData(&holder->data, 3, &data);
  host::gedata::Destroy(&data);
  BaseContainer* lent = host::container::GetContainerInstance(&holder->data, 3);
  const uint32_t dirty = atom::GetDirty(holder, DIRTYFLAGS_DATA);
  EXPECT_TRUE(TransferGoal(from, to, 0));
  EXPECT_EQ(host::container::GetContainerInstance(&holder->data, 3), lent);
  EXPECT_EQ(GoalOf(*lent, 1), to);
  EXPECT_EQ(GoalOf(holder->data, 2), to);
  EXPECT_GT(atom::GetDirty(holder, DIRTYFLAGS_DATA), dirty);
  const BaseContainer* at = &holder->data;
  for (int i = 0; i <= 60; ++i) at = host::ContainerOf(*host::container::FindData(at, i ? 2 : 1));
  EXPECT_EQ(GoalOf(*at, 1), to);
  EXPECT_EQ(GoalOf(far->data, 1), from);
  EXPECT_TRUE(SetLayerObject(holder, layer));
  BaseList2D* second = New(host::kTypeLayer);
  listhead::InsertLast(HeadFor(document, host::kTypeLayer), second);
  EXPECT_TRUE(TransferGoal(layer, second, 1));
  EXPECT_EQ(GetLayerObject(holder, nullptr), second);
  EXPECT_TRUE(TransferGoal(second, to, 1));
  EXPECT_EQ(GetLayerObject(holder, nullptr), second) << "what is no layer takes no layer's place";
  BaseContainer& settings = host::As<BaseDocument>(document)->settings[DOCUMENTSETTINGS_MODELING];
  SetLinkEntry(settings, 1, to);
  EXPECT_TRUE(TransferGoal(to, from, 0));
  EXPECT_EQ(GoalOf(settings, 1), from);
  const Element another(New(host::kTypeDocument));
  listhead::InsertLast(HeadFor(another.get(), host::kTypeObject), to);
  EXPECT_FALSE(TransferGoal(from, to, 0)) << "an element of another document";
  EXPECT_EQ(GoalOf(settings, 1), from);
  EXPECT_FALSE(TransferGoal(far.get(), to, 0));
  EXPECT_FALSE(TransferGoal(from, nullptr, 0));
}

}  // namespace
