#include "scene/select.h"

#include <limits>
#include <memory>
#include <random>
#include <set>

#include "support.h"

namespace {

using namespace host::select;

constexpr int32_t kMax = std::numeric_limits<int32_t>::max();

std::string Show(const BaseSelect& selection) {
  std::string shown;
  for (const host::Run& run : selection.runs)
    shown += (shown.empty() ? "" : " ") + std::to_string(run.first) + "-" + std::to_string(run.last);
  return shown;
}

std::string Show(const std::set<int32_t>& numbers) {
  BaseSelect selection;
  for (int32_t number : numbers) host::Append(selection.runs, number, number);
  return Show(selection);
}

// Any operations do what they do to a set of numbers, and count as changes exactly where they are.
TEST(Select, IsASet) {
  constexpr int32_t kElements = 40;
  std::mt19937 random(5);
  const auto number = [&] { return int32_t(random() % kElements); };
  BaseSelect a, b;
  std::set<int32_t> setA, setB;
  for (int step = 0; step < 20000; ++step) {
    const std::set<int32_t> before = setA;
    const int32_t dirty = GetDirty(&a), one = number(), min = number(), max = number();
    const auto toggle = [&](int32_t i) { setA.erase(i) || setA.insert(i).second; };
    switch (random() % 11) {
      case 0:
        EXPECT_TRUE(Select(&a, one));
        setA.insert(one);
        break;
      case 1:
        EXPECT_TRUE(Deselect(&a, one));
        setA.erase(one);
        break;
      case 2:
        EXPECT_TRUE(Toggle(&a, one));
        toggle(one);
        break;
      case 3:
        ASSERT_EQ(ToggleAll(&a, min, max), min <= max);
        for (int32_t i = min; i <= max; ++i) toggle(i);
        break;
      case 4:
        EXPECT_TRUE(Merge(&a, &b));
        setA.insert(setB.begin(), setB.end());
        break;
      case 5:
        EXPECT_TRUE(DeselectOf(&a, &b));
        for (int32_t i : setB) setA.erase(i);
        break;
      case 6:
        EXPECT_TRUE(Cross(&a, &b));
        std::erase_if(setA, [&](int32_t i) { return !setB.count(i); });
        break;
      case 7: {
        uint8_t bytes[kElements], wanted[kElements];
        EXPECT_TRUE(ToArray(&a, bytes, kElements));
        for (int32_t i = 0; i < kElements; ++i) wanted[i] = uint8_t(setA.count(i));
        EXPECT_EQ(std::string(bytes, bytes + kElements), std::string(wanted, wanted + kElements));
        EXPECT_TRUE(FromArray(&a, bytes, kElements));
        break;
      }
      case 8:
        host::Cut(a, max);
        setA.erase(setA.lower_bound(max), setA.end());
        break;
      default:
        EXPECT_TRUE(CopyTo(&a, &b));
        setB = setA;
        if (random() % 8) break;
        DeselectAll(&a);
        setA.clear();
    }
    ASSERT_EQ(Show(a), Show(setA)) << step;
    EXPECT_EQ(GetDirty(&a) != dirty, before != setA);
    EXPECT_EQ(GetCount(&a), int32_t(setA.size()));
    EXPECT_EQ(IsSelected(&a, one), HostBool(setA.count(one)));
    EXPECT_EQ(GetLastElement(&a), setA.empty() ? -1 : *setA.rbegin());
  }
}

TEST(Select, HasRangesOfAnySize) {
  BaseSelect all;
  EXPECT_TRUE(SelectAll(&all, 0, kMax));
  EXPECT_EQ(GetCount(&all), kMax);  // there is one more
  EXPECT_TRUE(Deselect(&all, kMax));
  EXPECT_EQ(GetCount(&all), kMax);
  EXPECT_TRUE(Deselect(&all, 7));
  EXPECT_TRUE(Select(&all, kMax));
  EXPECT_EQ(Show(all), "0-6 8-2147483647");
  EXPECT_TRUE(ToggleAll(&all, 0, kMax));
  EXPECT_EQ(Show(all), "7-7");
  for (const auto& [min, max] : {std::pair{-1, 5}, {5, 4}, {-5, -4}}) {
    EXPECT_FALSE(SelectAll(&all, min, max));
    EXPECT_FALSE(ToggleAll(&all, min, max));
  }
  EXPECT_FALSE(Select(&all, -1));
  EXPECT_FALSE(Toggle(&all, -1));
  EXPECT_FALSE(IsSelected(&all, -1));
  EXPECT_EQ(Show(all), "7-7");
}

TEST(Select, TellsItsRuns) {
  const BaseSelect selection({{2, 5}, {8, 20}});
  const struct {
    int32_t segment, elements;
    const char* range;
  } kCases[] = {{0, 0, "none"}, {0, -1, "2-5"}, {1, -1, "8-20"}, {1, 15, "8-14"}, {1, 9, "8-8"},
                {1, 8, "none"}, {0, 3, "2-2"},  {2, 0, "none"},  {-1, 0, "none"}};
  for (const auto& one : kCases) {
    int32_t a = -7, b = -7;
    const bool isRange = GetRange(&selection, one.segment, one.elements, &a, &b);
    EXPECT_EQ(isRange ? std::to_string(a) + "-" + std::to_string(b) : "none", one.range);
  }
}

}  // namespace
