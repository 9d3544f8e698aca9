#include "scene/parameters.h"

#include <cmath>
#include <limits>
#include <memory>

#include "app/settings.h"
#include "scene/atom.h"
#include "scene/extras.h"
#include "support.h"

namespace {

using namespace host;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr int64_t kLong = int64_t(1) << 40;

class Address {
 public:
  Address(std::initializer_list<int32_t> numbers) {
    for (const int32_t number : numbers) levels_.push_back({number, 0, 0});
  }
  explicit Address(size_t depth, int32_t number) : levels_(depth, {number, 0, 0}) {}
  operator const HostDescID*() const {
    id_ = {levels_.data(), int32_t(levels_.size()), 0};
    return &id_;
  }

 private:
  std::vector<DescLevel> levels_;
  mutable HostDescID id_{};
};

struct FreeNode {
  void operator()(BaseList2D* node) const { baselist::Free(node); }
};
using Node = std::unique_ptr<BaseList2D, FreeNode>;

Node Make(int32_t type) {
  GetSettings().startup = HOST_STARTUP;
  return Node(baselist::Alloc(type));
}

Value Int64(int64_t number) { return Value::Adopt({HOST_DATA_INT64, 0, {.integer = number}}); }
Value None() { return {}; }
Value Container(const BaseContainer& c) { return Value(std::make_unique<BaseContainer>(c)); }

std::string Number(double number) {
  char text[32];
  return {text, size_t(std::snprintf(text, sizeof text, "%g", number))};
}

std::string Show(const HostGeData& data) {
  switch (data.type) {
    case HOST_DATA_NONE:
      return "none";
    case HOST_DATA_INT32:
      return std::to_string(data.value.integer);
    case HOST_DATA_INT64:
      return std::to_string(data.value.integer) + "L";
    case HOST_DATA_FLOAT:
      return Number(data.value.real) + "f";
    case HOST_DATA_VECTOR:
      return "(" + Number(data.value.vector.x) + " " + Number(data.value.vector.y) + " " +
             Number(data.value.vector.z) + ")";
    case HOST_DATA_STRING:
      return "'" + std::string(View(&data.value.string)) + "'";
    case HOST_DATA_FILENAME:
      return "file " + std::string(View(&data.value.filename));
    default:
      return "type " + std::to_string(data.type);
  }
}

std::string Get(const Node& node, const Address& id) {
  HostGeData data{};
  data.type = HOST_DATA_STRING;  // what it holds is overwritten
  const bool found = atom::GetParameter(node.get(), id, &data, 0);
  const Value owned = Value::Adopt(data);
  EXPECT_EQ(found, data.type != HOST_DATA_NONE);
  return Show(owned.Data());
}

bool Set(const Node& node, const Address& id, const Value& value) {
  return atom::SetParameter(node.get(), id, &value.Data(), 0);
}

TEST(Parameters, WritesFitTheTypeAndTheRange) {
  const struct {
    int32_t type;
    Address id;
    Value value;
    bool result;
    const char* after;
  } cases[] = {
      {5159, {1106}, Value::Float(2.5), true, "2.5f"},
      {5159, {1106}, Value::Int32(3), true, "3f"},
      {5159, {1106}, Int64(3), true, "3f"},
      {5159, {1106}, Value::Float(-1), true, "0f"},
      {5159, {1106}, Value::Float(kInfinity), true, "inff"},
      {5159, {1106}, Value::Float(std::nan("")), false, "40f"},
      {5159, {1106}, Value::Text("3"), false, "40f"},
      {5159, {1106}, Value::Of({1, 2, 3}), false, "40f"},
      {5159, {1101}, Value::Int32(7), true, "7"},
      {5159, {1101}, Int64(kLong), true, "1000"},
      {5159, {1101}, Int64(-kLong), true, "1"},
      {5159, {1101}, Value::Float(2), false, "1"},
      {5159, {901}, Value::Int32(9), true, "2"},  // the range of a choice is that of its values
      {5159, {1100}, Value::Of({1, -2, 3}), true, "(1 0 3)"},
      {5159, {1100}, Value::Of({1, std::nan(""), 3}), false, "(200 200 200)"},
      {5159, {903}, Value::Of({1, -kInfinity, 3}), true, "(1 -inf 3)"},
      {5159, {1100}, Value::Float(1), false, "(200 200 200)"},
      {5159, {1100, VECTOR_Y}, Value::Int32(5), true, "5f"},
      {5159, {1100, VECTOR_Y}, Value::Float(-5), true, "0f"},
      {5159, {1100, VECTOR_Y}, Value::Text("5"), false, "200f"},
      {5159, {1100, 7}, Value::Float(5), false, "none"},
      {5159, {1100, VECTOR_Y, VECTOR_Y}, Value::Float(5), false, "none"},
      {5159, {103}, Value::Int32(1), false, "none"},
      {5159, {77777}, Value::Int32(1), false, "none"},
      {5159, {ID_USERDATA, 1}, Value::Int32(1), false, "none"},
      {5159, {}, Value::Int32(1), false, "none"},
      {110304,
       {1021},
       Value::Adopt({HOST_DATA_FILENAME, 0, {.filename = PathWord("/a/b")}}),
       true,
       "file /a/b"},
      {110304, {1021}, Value::Text("/a/b"), false, "file "},
      {5616, {1001}, Value::Text("S"), true, "'S'"},
      {110304, {1007}, Int64(int64_t(1) << 60), true, "2147483647"},  // no range but that of the type
  };
  for (const auto& c : cases) {
    const Node node = Make(c.type);
    EXPECT_EQ(Set(node, c.id, c.value), c.result) << Show(c.value.Data());
    EXPECT_EQ(Get(node, c.id), c.after) << Show(c.value.Data());
  }
  // Elements share their defaults, but not a change.
  const Node one = Make(5159), two = Make(5159);
  EXPECT_TRUE(Set(one, {1100, VECTOR_X}, Value::Float(5)));
  EXPECT_EQ(Get(one, {1100}), "(5 200 200)");
  EXPECT_EQ(Get(two, {1100}), "(200 200 200)");
  EXPECT_FALSE(atom::SetParameter(one.get(), Address{1100}, nullptr, 0));
}

TEST(Parameters, WhatScriptsStoredInTheContainer) {
  const Node cube = Make(5159);
  BaseContainer inner;
  Put(inner, 1, Value::Of({1, 2, 3}));
  Put(inner, 2, Value::Text("t"));
  BaseContainer outer;
  Put(outer, 9, Container(inner));
  Put(cube->data, 5000, Container(outer));
  const BaseContainer before = cube->data;
  EXPECT_EQ(Get(cube, {5000, 9, 1, VECTOR_Z}), "3f");
  EXPECT_TRUE(Set(cube, {5000, 9, 1, VECTOR_Z}, Value::Int32(7)));
  EXPECT_EQ(Get(cube, {5000, 9, 1}), "(1 2 7)");
  EXPECT_TRUE(Set(cube, {5000, 9, 2}, Value::Text("u")));
  EXPECT_EQ(Get(cube, {5000, 9, 2}), "'u'");
  EXPECT_FALSE(Set(cube, {5000, 9, 2}, Value::Int32(1)));
  EXPECT_FALSE(Set(cube, {5000, 9, 3}, Value::Int32(1)));
  EXPECT_FALSE(Set(cube, {5000, 8, 3}, Value::Int32(1)));
  EXPECT_TRUE(Set(cube, {5000, 9, 2}, None()));
  EXPECT_EQ(Get(cube, {5000, 9, 2}), "none");
  const Node other = Make(5159);
  other->data = before;
  EXPECT_EQ(Get(other, {5000, 9, 1}), "(1 2 3)");  // a copy keeps what it was

  // Values of a wrong type under a parameter's number.
  Put(cube->data, 1106, Value::Int32(4)), Put(cube->data, 1101, Value::Text("x"));
  Put(cube->data, 1100, Container(inner)), Put(cube->data, ID_USERDATA, Value::Int32(4));
  EXPECT_EQ(Get(cube, {1106}), "4f");
  EXPECT_EQ(Get(cube, {1101}), "1");
  EXPECT_EQ(Get(cube, {1100, VECTOR_X}), "200f");
  EXPECT_TRUE(Set(cube, {1100, VECTOR_X}, Value::Float(5)));
  EXPECT_EQ(Get(cube, {1100}), "(5 200 200)");

  constexpr size_t kDepth = 100000;
  BaseContainer deep;
  Put(deep, 3, Value::Of({1, 2, 3}));
  for (size_t i = 2; i < kDepth; ++i) {
    BaseContainer around;
    Put(around, 3, Container(deep));
    deep = around;
  }
  Put(cube->data, 3, Container(deep));
  EXPECT_TRUE(Set(cube, Address(kDepth, 3), Value::Of({4, 5, 6})));
  EXPECT_EQ(Get(cube, Address(kDepth, 3)), "(4 5 6)");
  EXPECT_FALSE(Set(cube, Address(kDepth + 1, 3), Value::Float(1)));
}

// The settings of a user's parameter.
BaseContainer Settings(int32_t dtype, const Value& standard = {}) {
  BaseContainer settings;
  Put(settings, DESC_DATATYPE, Value::Int32(dtype));
  if (standard.Data().type != HOST_DATA_NONE) Put(settings, DESC_DEFAULT, standard);
  return settings;
}

int32_t Add(const Node& node, const BaseContainer& settings) {
  HostDescID id{};
  if (!dynamicdescription::Alloc(baselist::GetDynamicDescription(node.get()), &settings, &id)) return 0;
  EXPECT_EQ(id.depth, 2);
  EXPECT_EQ(id.level[0].id, ID_USERDATA);
  return id.level[1].id;
}

TEST(UserData, ValuesFollowTheSettings) {
  const Node cube = Make(5159);
  BaseContainer bounded = Settings(DTYPE_REAL, Value::Int32(20));
  Put(bounded, DESC_MIN, Value::Float(0)), Put(bounded, DESC_MAX, Value::Int32(10));
  BaseContainer absurd = Settings(DTYPE_LONG);
  Put(absurd, DESC_MIN, Value::Float(1e300)), Put(absurd, DESC_MAX, Value::Float(kInfinity));
  BaseContainer crossed = Settings(DTYPE_LONG);
  Put(crossed, DESC_MIN, Value::Int32(5)), Put(crossed, DESC_MAX, Value::Int32(3));
  const struct {
    BaseContainer settings;
    const char* fresh;  // null: refused
    Value value;
    const char* after;
  } cases[] = {
      {bounded, "10f", Value::Float(-3), "0f"},
      {Settings(DTYPE_BOOL), "0", Value::Int32(1), "1"},
      {Settings(DTYPE_COLOR), "(0 0 0)", Value::Of({1, 2, 3}), "(1 2 3)"},
      {Settings(DTYPE_STRING, Value::Text("d")), "'d'", Value::Int32(3), "'d'"},
      {Settings(DTYPE_STRING), "''", Value::Text("e"), "'e'"},
      {Settings(DTYPE_MATRIX), "type 25", None(), "type 25"},
      {Settings(DTYPE_SUBCONTAINER), "type 132", Container(BaseContainer()), "type 132"},
      {Settings(DTYPE_GROUP), "none", Value::Int32(1), "none"},
      {absurd, "2147483647", Value::Int32(1), "2147483647"},
      {crossed, "0", Value::Int32(4), "4"},
      {Settings(DTYPE_REAL, Value::Text("d")), nullptr, None(), ""},
      {Settings(987654), nullptr, None(), ""},
      {BaseContainer(), nullptr, None(), ""},
  };
  for (const auto& c : cases) {
    const int32_t number = Add(cube, c.settings);
    EXPECT_EQ(number != 0, c.fresh != nullptr);
    if (number == 0) continue;
    EXPECT_EQ(Get(cube, {ID_USERDATA, number}), c.fresh);
    Set(cube, {ID_USERDATA, number}, c.value);
    EXPECT_EQ(Get(cube, {ID_USERDATA, number}), c.after);
    EXPECT_EQ(Set(cube, {ID_USERDATA, number}, None()), std::string_view(c.fresh) != "none");
    EXPECT_EQ(Get(cube, {ID_USERDATA, number}), c.fresh);
  }
  const int32_t vector = Add(cube, Settings(DTYPE_VECTOR));
  EXPECT_TRUE(Set(cube, {ID_USERDATA, vector, VECTOR_Y}, Value::Int32(2)));
  EXPECT_EQ(Get(cube, {ID_USERDATA, vector}), "(0 2 0)");
}

TEST(UserData, WalksAreUndisturbedByChanges) {
  const Node cube = Make(5159);
  for (int i = 0; i < 3; ++i) Add(cube, Settings(DTYPE_LONG));
  DynamicDescription* added = baselist::GetDynamicDescription(cube.get());
  const auto walk = [&](auto meanwhile) {
    std::string numbers;
    DynamicBrowse* browse = dynamicdescription::BrowseInit(added);
    HostDescID id{};
    const BaseContainer* settings = nullptr;
    while (dynamicdescription::GetNext(added, browse, &id, &settings)) {
      const int32_t number = id.level[1].id;
      meanwhile(number);
      // Still valid behind the change.
      EXPECT_EQ(id.level[1].id, number);
      EXPECT_EQ(container::FindData(settings, DESC_DATATYPE)->value.integer, DTYPE_LONG);
      numbers += std::to_string(number) + " ";
    }
    EXPECT_FALSE(dynamicdescription::GetNext(added, browse, &id, &settings));
    dynamicdescription::BrowseFree(added, browse);
    return numbers;
  };
  EXPECT_EQ(walk([&](int32_t number) {
              dynamicdescription::Remove(added, Address{ID_USERDATA, number});
              if (number == 2) Add(cube, Settings(DTYPE_LONG));
            }),
            "1 2 3 ");
  EXPECT_EQ(walk([](int32_t) {}), "4 ");
  EXPECT_EQ(walk([&](int32_t) { Add(cube, Settings(DTYPE_LONG)); }), "4 ");
  EXPECT_EQ(dynamicdescription::BrowseInit(nullptr), nullptr);
}

// A plug-in's type; what it does is told by the parameter's number.
enum { kAnswered = 1, kLeft = 2, kDestroyed = 3, kPassed = 4 };

NodeRecord PluginRecordOfParameters() {
  NodeRecord record{};
  record.GetDDescription = [](void* data, const GeListNode*, Description*, int32_t*) {
    return HostBool(!data);
  };
  record.GetDParameter = [](void*, const GeListNode* node, const HostDescID* id, HostGeData* value, int32_t*) {
    *value = Value::Text("plug-in").Release();
    if (id->level[0].id == kDestroyed) baselist::Free(static_cast<BaseList2D*>(const_cast<GeListNode*>(node)));
    return HostBool(id->level[0].id == kAnswered);
  };
  record.SetDParameter = [](void*, GeListNode* node, const HostDescID* id, const HostGeData*, int32_t*) {
    if (id->level[0].id == kDestroyed) baselist::Free(static_cast<BaseList2D*>(node));
    return HostBool(id->level[0].id == kAnswered);
  };
  return record;
}

TEST(Parameters, APluginAnswersFirstAndMayDestroyTheElement) {
  Make(5159);
  static const NodeRecord record = PluginRecordOfParameters();
  NodeType declared;
  declared.id = 987001, declared.base = 5155, declared.name = "Plug-in", declared.record = &record;
  const NodeType& type = *AllNodeTypes().Add(declared);
  Node node(new BaseList2D(type));
  node->isPlugin = true;
  Put(node->data, kAnswered, Value::Int32(1)), Put(node->data, kLeft, Value::Int32(2));
  EXPECT_EQ(Get(node, {kAnswered}), "'plug-in'");
  EXPECT_EQ(Get(node, {kLeft}), "2");
  EXPECT_EQ(Get(node, {905}), "(1 1 1)");
  EXPECT_EQ(Get(node, {kPassed}), "none");
  EXPECT_TRUE(Set(node, {kAnswered}, Value::Text("any")));
  EXPECT_TRUE(Set(node, {kLeft}, Value::Int32(3)));
  EXPECT_EQ(Get(node, {kLeft}), "3");
  EXPECT_FALSE(Set(node, {kPassed}, Value::Int32(3)));
  description::Free(atom::GetDescription(node.get(), 0));
  node->Extra().pluginData = &node;
  EXPECT_EQ(atom::GetDescription(node.get(), 0), nullptr);

  HostGeData data{};
  EXPECT_FALSE(atom::GetParameter(node.release(), Address{kDestroyed}, &data, 0));
  EXPECT_EQ(data.type, HOST_DATA_NONE);
  Node second(new BaseList2D(type));
  second->isPlugin = true;
  data = Value::Int32(1).Data();
  EXPECT_FALSE(atom::SetParameter(second.release(), Address{kDestroyed}, &data, 0));
}

}  // namespace
