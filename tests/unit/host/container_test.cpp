#include "scene/container.h"

#include <cmath>
#include <functional>
#include <memory>
#include <random>

#include "kelvar/descid.h"
#include "kelvar/value.h"
#include "scene/links.h"
#include "support.h"

// The class of values reaches the host as the module does: through tables.
extern "C" TavorRecord g_tavor;
TavorRecord g_tavor = {};

namespace {

using namespace host::container;

struct Object : host::Linkable {};

GeData LinkTo(host::Linkable& object) {
  HostLink link;
  object.Link(link);
  return GeData::Link(link);
}

class Container : public ::testing::Test {
 protected:
  Container() {
    HostTables offered;
    host::boundary_tables::Fill(offered, 23100);
    EXPECT_EQ(tables::Resolve(&offered), "");
  }
  ~Container() override { tables::Forget(); }
};

bool Set(BaseContainer& c, int32_t id, const GeData& value) { return SetData(&c, id, value.Data()); }
bool Set(BaseContainer& c, int32_t id, int32_t value) { return Set(c, id, GeData::Int32(value)); }
bool Set(BaseContainer& c, int32_t id, const BaseContainer& value) {
  return Set(c, id, GeData::Container(&value));
}
bool Ins(BaseContainer& c, int32_t id, int32_t value) { return InsData(&c, id, GeData::Int32(value).Data()); }

// "id=value" of every entry, sub-containers in braces.
std::string Show(const BaseContainer& c) {
  std::string shown;
  for (int32_t i = 0; i < GetCount(&c); ++i) {
    const GeData value = GeData::Copy(*GetIndexData(&c, i));
    const BaseContainer* sub = value.GetContainer();
    shown += (i ? " " : "") + std::to_string(GetIndexId(&c, i)) + "=";
    shown += sub ? "{" + Show(*sub) + "}" : std::to_string(value.GetInt32());
  }
  return shown;
}

// A container with the entries 1, 2, … of these values.
BaseContainer With(std::initializer_list<int32_t> values) {
  BaseContainer made;
  for (int32_t value : values) Ins(made, GetCount(&made) + 1, value);
  return made;
}

TEST_F(Container, EveryTypeIsCopiedComparedAndEnded) {
  const auto one = std::make_unique<Object>(), two = std::make_unique<Object>();
  const BaseContainer inner = With({1}), other = With({2});
  const auto text = [](std::string_view utf8) { return String::Adopt(host::MakeString(utf8)); };
  const auto path = [](std::string_view utf8) { return Filename::Adopt(host::MakeFilename(utf8)); };
  DescID deep, shallow;
  for (int32_t i = 0; i < 5; ++i) deep.PushId({i, i, i});
  for (int32_t i = 0; i < 4; ++i) shallow.PushId(deep[i]);
  const std::pair<GeData, GeData> values[] = {
      {GeData::Int32(-1), GeData::Int32(1)},
      {GeData::Int64(-1), GeData::Int64(int64_t(1) << 40)},
      {GeData::Float(0.5), GeData::Float(std::nan(""))},
      {GeData::Vector({1, 2, 3}), GeData::Vector({1, 2, 4})},
      {GeData::Time({1, 2}), GeData::Time({1, 3})},
      {GeData::String(text("a")), GeData::String(text(""))},
      {GeData::Filename(path("/a")), GeData::Filename(path("/b"))},
      {GeData::Uuid({{1}}), GeData::Uuid({{1, 2}})},
      {GeData::Pointer(one.get()), GeData::Pointer(nullptr)},
      {GeData::Matrix({{1}, {2}, {3}, {4}}), GeData::Matrix({{1}, {2}, {3}, {5}})},
      {GeData::Container(&inner), GeData::Container(&other)},
      {LinkTo(*one), LinkTo(*two)},
      {GeData::Custom(deep.Word()), GeData::Custom(shallow.Word())},
      {GeData::Custom(Vector4d{1, 2, 3, 4}), GeData::Custom(Vector4d{1, 2, 3, 5})},
      {GeData::Custom(ColorA{1, 2, 3, 4}), GeData::Custom(ColorA{1, 2, 3, 5})},
  };
  BaseContainer all;
  for (const auto& [value, different] : values) {
    auto original = std::make_unique<GeData>(value);
    const GeData copy = *original;
    original.reset();
    EXPECT_TRUE(copy == value) << value.Type();
    EXPECT_FALSE(value == different || value == GeData() || different == values[0].first) << value.Type();
    EXPECT_TRUE(Set(all, value.Type(), value));
    EXPECT_TRUE(GeData::Copy(*FindData(&all, value.Type())) == value) << value.Type();
  }
  EXPECT_TRUE(BaseContainer(all) == all);
  EXPECT_EQ(values[1].first.GetInt64(), -1);
  EXPECT_STREQ(values[5].first.GetString().GetUtf8(nullptr), "a");
  EXPECT_EQ(values[9].first.GetMatrix()->v3.x, 4);
  EXPECT_EQ(values[0].first.GetMatrix(), nullptr);
  EXPECT_EQ(values[12].first.GetCustom<HostDescID>()->level[4].id, 4);
  EXPECT_EQ(values[14].first.GetCustom<ColorA>()->a, 4);
  EXPECT_EQ(values[14].first.GetCustom<Vector4d>(), nullptr);
  EXPECT_EQ(values[0].first.GetString().Word()->word, nullptr);
}

TEST_F(Container, ValuesThatEqualNothingOrSayNothing) {
  const GeData nan = GeData::Float(std::nan(""));
  BaseContainer withNan;
  Set(withNan, 1, nan);
  EXPECT_FALSE(nan == nan || withNan == withNan || BaseContainer(withNan) == withNan);

  auto* object = new Object;
  const GeData link = LinkTo(*object), same = LinkTo(*object);
  EXPECT_TRUE(link == same);
  EXPECT_FALSE(link == GeData::Link({}));
  host::DestroyNow(object);
  EXPECT_TRUE(link == GeData::Link({}));

  const HostGeData unknown{1000055, 0, {.integer = 1}}, hollow{HOST_DATA_CONTAINER, 0, {.pointer = nullptr}};
  EXPECT_EQ(GeData::Copy(unknown).Type(), HOST_DATA_NONE);
  EXPECT_EQ(GeData::Copy(hollow).Type(), HOST_DATA_NONE);
  EXPECT_FALSE(host::gedata::IsEqual(&unknown, &unknown));
  EXPECT_TRUE(GeData() == GeData());
}

TEST_F(Container, CustomDataIsWholeOrNone) {
  using namespace host::gedata;
  const auto Made = [](int32_t type, const void* value) { return GeData::Adopt(FromCustom(type, value)); };
  const GeData empty = Made(HOST_CUSTOM_DESCID, nullptr);
  EXPECT_TRUE(empty == GeData::Custom(DescID().Word()));
  EXPECT_EQ(empty.GetCustom<HostDescID>()->depth, 0);
  for (const HostDescID& wrong : {HostDescID{nullptr, 1, 0}, HostDescID{nullptr, -1, 0}})
    EXPECT_EQ(Made(HOST_CUSTOM_DESCID, &wrong).Type(), HOST_DATA_NONE);
  for (const int32_t type : {int32_t(HOST_DATA_NONE), int32_t(HOST_DATA_MATRIX), 1000055})
    EXPECT_EQ(Made(type, nullptr).Type(), HOST_DATA_NONE) << type;
  const GeData matrix = GeData::Matrix({});
  EXPECT_EQ(GetCustom(matrix.Data(), HOST_DATA_MATRIX), nullptr);
  EXPECT_EQ(GetCustom(nullptr, HOST_CUSTOM_COLORA), nullptr);
}

TEST_F(Container, NullArgumentsFail) {
  BaseContainer c = With({1}), before = c;
  const GeData value = GeData::Int32(1);
  const HostGeData* v = value.Data();
  const auto expectZeros = [](auto... answers) {
    EXPECT_EQ((std::vector<bool>{answers != decltype(answers){}...}), std::vector<bool>(sizeof...(answers)));
  };
  expectZeros(SetData(nullptr, 1, v), SetData(&c, 1, nullptr), InsData(nullptr, 1, v), InsData(&c, 1, nullptr),
              InsDataAfter(nullptr, 1, v, -1), InsDataAfter(&c, 1, nullptr, -1), RemoveData(nullptr, 1),
              RemoveIndex(nullptr, 0), SetIndexData(nullptr, 0, v), SetIndexData(&c, 0, nullptr),
              CopyTo(nullptr, &c, 0), CopyTo(&c, nullptr, 0), MergeContainer(nullptr, &c),
              MergeContainer(&c, nullptr), IsEqual(&c, nullptr), IsEqual(nullptr, nullptr), GetCount(nullptr),
              1 + FindIndex(nullptr, 1), 1 + GetIndexId(nullptr, 0), GetDirty(nullptr));
  expectZeros(GetClone(nullptr), FindData(nullptr, 1), GetIndexData(nullptr, 0),
              GetContainerInstance(nullptr, 1), host::gedata::GetContainer(nullptr),
              host::gedata::GetMatrix(nullptr), host::gedata::FromMatrix(nullptr).type,
              host::gedata::FromContainer(nullptr).type, host::gedata::Copy(nullptr).type,
              host::gedata::IsEqual(nullptr, nullptr));
  Free(nullptr), FlushAll(nullptr), Sort(nullptr), SetId(nullptr, 1), host::gedata::Destroy(nullptr);
  EXPECT_TRUE(c == before && GetDirty(&c) == GetDirty(&before));
}

TEST_F(Container, RandomOperationsAgreeWithAVector) {
  std::mt19937 random(5);
  const auto below = [&](size_t n) { return int32_t(random() % n); };
  std::vector<int32_t> ids(60);
  for (int32_t& id : ids) id = int32_t(random());
  std::vector<std::pair<int32_t, int32_t>> model;
  std::string oldShown;
  BaseContainer c, old;
  const auto first = [&](int32_t id) {
    return std::find_if(model.begin(), model.end(), [id](auto& entry) { return entry.first == id; });
  };
  for (int32_t step = 0; step < 20000; ++step) {
    const GeData value = GeData::Int32(step);
    const int32_t id = ids[size_t(below(ids.size()))];
    const int32_t count = int32_t(model.size()),
                  at = below(size_t(count) + 3) - 1;  // also too low and too high
    const auto found = first(id);
    const bool isThere = found != model.end(), isPosition = at >= 0 && at < count;
    const uint32_t dirty = GetDirty(&c);
    // The count swings between few entries and many, so that the index has to be built again.
    const int32_t operation = below(step / 500 % 2 ? 6 : 8);
    const bool isPossible[] = {true, true, at >= 0 && at <= count, isPosition, isPosition, step % 20 == 0};
    const bool isExpected = operation < 6 ? isPossible[operation] : isThere;
    bool isDone = isExpected;
    if (operation == 0) {
      isDone = Set(c, id, value);
      isThere ? void(found->second = step) : model.push_back({id, step});
    } else if (operation == 1) {
      isDone = InsData(&c, id, value.Data());
      model.push_back({id, step});
    } else if (operation == 2) {
      isDone = InsDataAfter(&c, id, value.Data(), at - 1);
      if (isExpected) model.insert(model.begin() + at, {id, step});
    } else if (operation == 3) {
      isDone = SetIndexData(&c, at, value.Data());
      if (isExpected) model[size_t(at)].second = step;
    } else if (operation == 4) {
      isDone = RemoveIndex(&c, at);
      if (isExpected) model.erase(model.begin() + at);
    } else if (operation > 5) {
      isDone = RemoveData(&c, id);
      if (isExpected) model.erase(found);
    } else if (isExpected) {
      SetId(&c, step);
      CopyTo(&c, &old, 0);
      oldShown = Show(c);
      Sort(&c);
      std::stable_sort(model.begin(), model.end(), [](auto& a, auto& b) { return a.first < b.first; });
      if (step % 1000 == 0) FlushAll(&c), model.clear();
    }
    ASSERT_EQ(isDone, isExpected) << step;
    ASSERT_EQ(GetDirty(&c) > dirty, isDone) << step;
    for (int32_t any : ids) {
      const auto expected = first(any);
      ASSERT_EQ(FindIndex(&c, any), expected == model.end() ? -1 : expected - model.begin()) << step;
    }
    std::string shown;
    for (const auto& [id, held] : model) shown += std::to_string(id) + "=" + std::to_string(held) + " ";
    ASSERT_EQ(Show(c), shown.substr(0, shown.size() - !shown.empty())) << step;
    ASSERT_EQ(Show(old), oldShown) << step;
  }
}

TEST_F(Container, CopiesShareUntilOneChanges) {
  BaseContainer a = With({1, 2}), b(a);
  EXPECT_EQ(FindData(&a, 1), FindData(&b, 1));
  Set(b, 2, 3);
  EXPECT_EQ(Show(a) + ", " + Show(b), "1=1 2=2, 1=1 2=3");

  Set(a, 3, With({7}));
  const BaseContainer early(a);
  BaseContainer* instance = GetContainerInstance(&a, 3);
  BaseContainer late(a);
  Set(*instance, 1, 8);
  const BaseContainer later(a);
  Set(*GetContainerInstance(&late, 3), 1, 9);
  Set(*instance, 2, With({}));
  Set(*GetContainerInstance(instance, 2), 5, 5);
  EXPECT_EQ(Show(early), "1=1 2=2 3={1=7}");
  EXPECT_EQ(Show(late), "1=1 2=2 3={1=9}");
  EXPECT_EQ(Show(later), "1=1 2=2 3={1=8}");
  EXPECT_EQ(Show(BaseContainer(a)), "1=1 2=2 3={1=8 2={5=5}}");

  // Other changes leave the instance in its place.
  for (int32_t id = 100; id > 3; --id) Set(a, id, id);
  Sort(&a);
  RemoveIndex(&a, 0);
  EXPECT_TRUE(MergeContainer(&a, &early));
  EXPECT_EQ(GetContainerInstance(&a, 3), instance);
  EXPECT_EQ(Show(*instance), "1=7 2={5=5}");
  EXPECT_EQ(GetContainerInstance(&a, 4), nullptr);
  EXPECT_EQ(GetContainerInstance(&a, 101), nullptr);
}

TEST_F(Container, PartsAndWholesMayBeArguments) {
  const struct {
    const char* what;
    std::function<void(BaseContainer&, BaseContainer&)> change;
    std::string after;
  } cases[] = {
      {"into itself", [](auto& c, auto&) { Set(c, 3, c); }, "1=1 2={1=2} 3={1=1 2={1=2}}"},
      {"into its part", [](auto& c, auto& part) { Set(part, 1, c); }, "1=1 2={1={1=1 2={1=2}}}"},
      {"part in its own place", [](auto& c, auto&) { SetData(&c, 2, FindData(&c, 2)); }, "1=1 2={1=2}"},
      {"part as the whole", [](auto& c, auto& part) { CopyTo(&part, &c, -1); }, "1=2"},
      {"whole as the part", [](auto& c, auto& part) { CopyTo(&c, &part, 0); }, "1=1 2={1=1 2={1=2}}"},
      {"itself", [](auto& c, auto&) { CopyTo(&c, &c, 0); }, "1=1 2={1=2}"},
      {"merge itself", [](auto& c, auto&) { MergeContainer(&c, &c); }, "1=1 2={1=2}"},
      {"merge the part", [](auto& c, auto& part) { MergeContainer(&c, &part); }, "1=2 2={1=2}"},
      {"merge the whole", [](auto& c, auto& part) { MergeContainer(&part, &c); }, "1=1 2={1=1 2={1=2}}"},
  };
  for (const auto& c : cases) {
    BaseContainer whole = With({1});
    Set(whole, 2, With({2}));
    c.change(whole, *GetContainerInstance(&whole, 2));
    EXPECT_EQ(Show(whole), c.after) << c.what;
  }
}

TEST_F(Container, MergeTakesEntriesInTurn) {
  BaseContainer into = With({1, 2}), from(5), once;
  Set(into, 3, With({1, 2}));
  Ins(into, 1, 7);
  Set(from, 4, With({4})), Set(from, 1, 9), Set(from, 3, With({6, 7, 8})), Set(from, 2, With({}));
  const BaseContainer shared(into);
  EXPECT_TRUE(MergeContainer(&into, &from));
  EXPECT_EQ(Show(into), "1=9 2={} 3={1=6 2=7 3=8} 1=7 4={1=4}");
  EXPECT_EQ(GetId(&into), 0);
  EXPECT_EQ(Show(shared), "1=1 2=2 3={1=1 2=2} 1=7");
  // The later of two entries of one id is merged into what the first has made.
  FlushAll(&from);
  for (int32_t value : {1, 2}) {
    const BaseContainer sub = With({value, value});
    InsData(&from, 1, GeData::Container(&sub).Data());
  }
  EXPECT_TRUE(MergeContainer(&once, &from));
  EXPECT_EQ(Show(once), "1={1=2 2=2}");
  EXPECT_TRUE(CopyTo(&from, &once, 0) && once == from);
  EXPECT_EQ(GetId(&once), 5);
  // 2^60 parts, of which each level shares two.
  BaseContainer left = With({1}), right = With({2, 3});
  for (BaseContainer* c : {&left, &right})
    for (int32_t i = 0; i < 60; ++i) {
      BaseContainer outer;
      Set(outer, 1, *c), Set(outer, 2, *c);
      *c = outer;
    }
  EXPECT_TRUE(MergeContainer(&left, &right));
  EXPECT_TRUE(left == right);
}

TEST_F(Container, NestingHasNoLimit) {
  constexpr int32_t kDepth = 100000;
  BaseContainer outward, inward;
  for (int32_t i = 0; i < kDepth; ++i) {
    BaseContainer outer;
    Set(outer, 1, outward);
    outward = outer;
  }
  BaseContainer* deepest = &inward;
  for (int32_t i = 0; i < kDepth; ++i) {
    Set(*deepest, 1, BaseContainer());
    deepest = GetContainerInstance(deepest, 1);
  }
  const BaseContainer copy(inward);  // nothing of it is shared
  EXPECT_TRUE(inward == outward);
  Set(*deepest, 2, 2);
  EXPECT_TRUE(copy == outward);
  EXPECT_FALSE(inward == outward);
  EXPECT_TRUE(MergeContainer(&outward, &inward));
  EXPECT_TRUE(inward == outward);

  // Each holds all the ones before it: 2^60 containers to the eye.
  BaseContainer left, right;
  for (BaseContainer* c : {&left, &right})
    for (int32_t i = 0; i < 60; ++i) InsData(c, 1, GeData::Container(c).Data());
  EXPECT_TRUE(left == right);
}

TEST_F(Container, AMillionEntries) {
  std::vector<int32_t> ids(1000000);
  std::mt19937 random(7);
  for (int32_t& id : ids) id = int32_t(random());
  std::sort(ids.begin(), ids.end());
  ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
  std::shuffle(ids.begin(), ids.end(), random);
  BaseContainer c;
  for (int32_t id : ids) Set(c, id, id);
  ASSERT_EQ(GetCount(&c), int32_t(ids.size()));
  const BaseContainer copy(c);
  // From the front on, which leaves gaps, and with new entries at the end: no removal may move the others.
  size_t wrong = 0;
  for (const int32_t id : ids) {
    wrong += FindData(&copy, id)->value.integer != id || GetIndexId(&c, 0) != id;
    wrong += !RemoveData(&c, id) || (id % 2 && !Set(c, id, 0));
  }
  EXPECT_EQ(wrong, 0u);
  EXPECT_EQ(GetCount(&c), std::count_if(ids.begin(), ids.end(), [](int32_t id) { return id % 2 != 0; }));
}

}  // namespace
