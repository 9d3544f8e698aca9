#include "scene/links.h"

#include <atomic>
#include <chrono>
#include <cstring>
#include <limits>
#include <thread>
#include <vector>

#include "boundary/host.h"
#include "images/bitmap.h"
#include "scene/atom.h"
#include "scene/nodetypes.h"
#include "support.h"

namespace {

using host::link::GetLink;
using host::link::PinLink;
using host::link::UnpinLink;
using Clock = std::chrono::steady_clock;

struct Counted : host::Linkable {
  explicit Counted(std::atomic<int>& count) : freed(count) {}
  ~Counted() override {
    value = -1;
    ++freed;
  }
  std::atomic<int>& freed;
  std::atomic<int> value{7};
};

HostLink LinkTo(host::Linkable* object) {
  HostLink link{};
  object->Link(link);
  return link;
}

TEST(Links, DieWithTheObjectAlsoWhenItsSlotHasAnother) {
  std::atomic<int> freed{0};
  auto* first = new Counted(freed);
  const HostLink link = LinkTo(first);
  EXPECT_EQ(GetLink(link), first);
  EXPECT_EQ(LinkTo(first).slot, link.slot);
  host::DestroyNow(first);
  EXPECT_EQ(freed, 1);
  EXPECT_EQ(GetLink(link), nullptr);
  EXPECT_EQ(PinLink(link), nullptr);

  auto* second = new Counted(freed);
  const HostLink next = LinkTo(second);
  ASSERT_EQ(next.slot, link.slot);
  EXPECT_EQ(GetLink(next), second);
  EXPECT_EQ(GetLink(link), nullptr);
  EXPECT_EQ(PinLink(link), nullptr);  // and its vain pin doesn't hold the second
  host::DestroyNow(second);
  EXPECT_EQ(freed, 2);
}

// The module reads an element's type without a call.
TEST(Links, TheLayoutLeadsToTheTypeOfAnAtom) {
  host::OfferLinkLayout();
  const auto& layout = *static_cast<const HostLinkLayout*>(host::boundary_tables::link.layout);
  const host::NodeType types[2];
  for (const host::NodeType& type : types) {
    const QLXAtom atom(type);
    const void* word;
    std::memcpy(&word, reinterpret_cast<const char*>(&atom) + layout.typeInAtom, sizeof word);
    EXPECT_EQ(word, &type);
  }
}

TEST(Links, EmptyOnesAndUnlinkedObjectsAreHarmless) {
  HostLink empty{};
  EXPECT_EQ(GetLink(empty), nullptr);
  EXPECT_EQ(PinLink(empty), nullptr);
  UnpinLink(empty);
  host::link::FreeLink(&empty);
  host::link::FreeLink(nullptr);
  host::DestroyNow(nullptr);
  host::DestroyLater(nullptr);
  std::atomic<int> freed{0};
  host::DestroyNow(new Counted(freed));
  EXPECT_EQ(freed, 1);
  auto* object = new Counted(freed);
  HostLink link = LinkTo(object);
  host::link::FreeLink(&link);
  EXPECT_EQ(GetLink(link), nullptr);
  host::DestroyNow(object);
}

TEST(Links, APinnedObjectStaysUntilItsLastPin) {
  std::atomic<int> freed{0};
  auto* object = new Counted(freed);
  const HostLink link = LinkTo(object);
  EXPECT_EQ(PinLink(link), object);
  EXPECT_EQ(PinLink(link), object);
  UnpinLink(link);
  host::DestroyNow(object);
  EXPECT_EQ(GetLink(link), nullptr);
  EXPECT_EQ(PinLink(link), nullptr);
  EXPECT_EQ(freed, 0);
  EXPECT_EQ(object->value, 7);
  // Who holds the pin may still link the dead object; that link finds neither it nor what follows it.
  const HostLink late = LinkTo(object);
  EXPECT_EQ(GetLink(late), nullptr);
  UnpinLink(link);
  EXPECT_EQ(freed, 1);
  auto* next = new Counted(freed);
  ASSERT_EQ(LinkTo(next).slot, link.slot);
  EXPECT_EQ(GetLink(late), nullptr);
  host::DestroyNow(next);
}

int g_quietCalls;
std::atomic<int> g_freed;

TEST(Links, TheHostsOwnDestructionWaitsForTheModule) {
  g_freed = g_quietCalls = 0;
  host::link::SetQuiet([] {
    ++g_quietCalls;
    EXPECT_EQ(g_freed, 0);
  });
  host::ReclaimDestroyed();
  EXPECT_EQ(g_quietCalls, 0);  // nothing to wait for
  auto *linked = new Counted(g_freed), *pinned = new Counted(g_freed);
  const HostLink link = LinkTo(linked), pin = LinkTo(pinned);
  PinLink(pin);
  for (auto* object : {linked, pinned, new Counted(g_freed)}) host::DestroyLater(object);
  EXPECT_EQ(GetLink(link), nullptr);
  EXPECT_EQ(GetLink(LinkTo(linked)), nullptr);
  EXPECT_EQ(g_freed, 0);
  host::ReclaimDestroyed();
  EXPECT_EQ(g_quietCalls, 1);
  EXPECT_EQ(g_freed, 2);
  UnpinLink(pin);
  EXPECT_EQ(g_freed, 3);
  host::link::SetQuiet(nullptr);
}

// A pin holds the object, however many come and go while it is destroyed and its slot is used again.
TEST(Links, ThreadsPinWhileAnotherDestroys) {
  std::atomic<int> freed{0}, broken{0};
  std::atomic<uint64_t> generation{0};
  std::atomic<void*> slot{nullptr};
  std::atomic<bool> ends{false};
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i)
    threads.emplace_back([&] {
      while (!ends) {
        const HostLink link{slot, generation};  // now and then of two objects: such a link finds none
        auto* object = static_cast<Counted*>(PinLink(link));
        if (!object) continue;
        HostLink own{};
        object->Link(own);
        for (int k = 0; k < 2; ++k, std::this_thread::yield()) broken += object->value != 7;
        UnpinLink(link);
      }
    });
  int rounds = 0;
  for (const auto end = Clock::now() + std::chrono::seconds(1); Clock::now() < end; ++rounds) {
    auto* object = new Counted(freed);
    const HostLink link = LinkTo(object);
    slot = link.slot;
    generation = link.generation;
    for (int k = 0; k < 500 && object->value == 7; ++k) continue;
    host::DestroyNow(object);
  }
  ends = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(broken, 0);
  EXPECT_EQ(freed, rounds);
}

// All threads that link an object first at the same time get links to it.
TEST(Links, ThreadsLinkOneObject) {
  for (int round = 0; round < 200; ++round) {
    std::atomic<int> freed{0}, wrong{0};
    auto* object = new Counted(freed);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) threads.emplace_back([&] { wrong += GetLink(LinkTo(object)) != object; });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
    host::DestroyNow(object);
  }
}

TEST(Bitmap, WrongAndHugeSizesLeaveItAsItIs) {
  BaseBitmap* bitmap = host::bitmap::Alloc();
  ASSERT_EQ(host::bitmap::Init(bitmap, 3, 2, 1, 0), IMAGE_RESULT_OK);
  EXPECT_EQ(bitmap->pixels, std::vector<uint8_t>(2));  // three bits a row, padded
  constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
  const struct {
    int32_t width, height, depth, result;
  } cases[] = {
      {0, 1, 24, IMAGE_RESULT_WRONG_TYPE},
      {1, 0, 24, IMAGE_RESULT_WRONG_TYPE},
      {-1, 1, 24, IMAGE_RESULT_WRONG_TYPE},
      {1, -kMost - 1, 24, IMAGE_RESULT_WRONG_TYPE},
      {1, 1, 0, IMAGE_RESULT_WRONG_TYPE},
      {1, 1, 25, IMAGE_RESULT_WRONG_TYPE},
      {1, 1, -24, IMAGE_RESULT_WRONG_TYPE},
      {kMost, kMost, 128, IMAGE_RESULT_OUT_OF_MEMORY},
      {kMost, kMost, 1, IMAGE_RESULT_OUT_OF_MEMORY},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(host::bitmap::Init(bitmap, c.width, c.height, c.depth, 0), c.result) << c.width << " " << c.depth;
    EXPECT_EQ(bitmap->width * 100 + bitmap->height * 10 + bitmap->depth, 321);
    EXPECT_EQ(bitmap->pixels.size(), 2U);
  }
  EXPECT_EQ(host::bitmap::Init(nullptr, 1, 1, 24, 0), IMAGE_RESULT_WRONG_TYPE);

  bitmap->pixels[1] = 5;
  EXPECT_EQ(host::bitmap::CopyTo(bitmap, bitmap), 1);
  EXPECT_EQ(bitmap->pixels, (std::vector<uint8_t>{0, 5}));
  BaseBitmap* clone = host::bitmap::GetClone(bitmap);
  ASSERT_EQ(host::bitmap::Init(bitmap, 1, 1, 24, 0), IMAGE_RESULT_OK);
  EXPECT_EQ(clone->pixels, (std::vector<uint8_t>{0, 5}));
  EXPECT_EQ(host::bitmap::CopyTo(bitmap, clone), 1);
  EXPECT_EQ(clone->pixels, std::vector<uint8_t>(3));
  EXPECT_EQ(clone->depth, 24);
  EXPECT_EQ(host::bitmap::CopyTo(bitmap, nullptr), 0);
  EXPECT_EQ(host::bitmap::GetClone(nullptr), nullptr);
  host::bitmap::Free(clone);
  host::bitmap::Free(bitmap);
}

}  // namespace
