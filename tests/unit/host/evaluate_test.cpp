// Caches, deformers, instances, and plug-ins that make objects.

#include "evaluate/evaluate.h"

#include <functional>
#include <string>

#include "kelvar.framework/source/tables/t_messages.h"
#include "scene_support.h"

namespace {

namespace object = host::object;
using host::listnode::InsertUnderLast;

constexpr int32_t kInstance = 5126, kBend = 5128, kTwist = 5134, kMaker = 2000101, kMover = 2000102,
                  kLast = 2000103;
constexpr int32_t kCubeSize = 1100, kTwistAngle = 1002, kInstanceLink = 1000;

// What the plug-ins of the tests do, and how often they were asked.
struct Plugins {
  std::function<BaseObject*(BaseObject*)> make;
  int made = 0, moved = 0;
  std::string executed;
};
Plugins g_plugins;

class Evaluation : public Scene {
 protected:
  Evaluation() {
    g_plugins = {};
    if (!host::plugin::FindPlugin(kMaker, 0)) Register();
    document = static_cast<BaseDocument*>(New(110059));
  }
  ~Evaluation() override { host::DestroyNow(document); }

  static void Register() {
    for (const int32_t id : {kMaker, kMover, kLast}) {
      Text name(Word("Plug-in"));
      NodeRecord record{};
      record.base = {sizeof record, PLUGIN_KIND_OBJECT, id, 0, &name, nullptr, nullptr, nullptr};
      record.baseType = 5155;
      if (id == kMaker)
        record.GetVirtualObjects = [](void*, BaseObject* op, HierarchyHelp*) {
          ++g_plugins.made;
          return g_plugins.make ? g_plugins.make(op) : nullptr;
        };
      if (id == kMover)
        record.ModifyObject = [](void*, BaseObject*, BaseDocument*, BaseObject* op, const Matrix*,
                                 const Matrix*, double, int32_t, BaseThread*) -> HostBool {
          ++g_plugins.moved;
          for (Vector& point : static_cast<PointObject*>(op)->Points()) point.y += 1;
          return 1;
        };
      record.Execute = [](void*, GeListNode* node, BaseDocument*, BaseThread* thread, int32_t priority,
                          int32_t flags) {
        EXPECT_TRUE(thread && thread == host::thread::GeGetCurrentThread());
        g_plugins.executed += std::to_string(node->type.id % 10) + ":" + std::to_string(priority) + " ";
        return flags;
      };
      if (id == kLast)
        record.AddToExecution = [](void*, GeListNode* node, PriorityList* list) -> HostBool {
          host::prioritylist::Add(list, node, 100, 0);
          return host::prioritylist::Add(list, node, -100, 0);
        };
      EXPECT_NE(host::plugin::RegisterNode(&record), nullptr);
    }
  }

  BaseObject* Add(int32_t type, GeListNode* under = nullptr) {
    auto* made = static_cast<BaseObject*>(New(type));
    EXPECT_TRUE(host::Place(*made, under ? *under : *HeadFor(document, 5155), nullptr));
    return made;
  }
  void Evaluate() { EXPECT_TRUE(host::Evaluate(*document, {})); }
  static void SetNumber(BaseObject* object, int32_t id, double value) {
    Set(object, id, host::Value::Float(value));
  }
  static void Set(BaseObject* object, int32_t id, const host::Value& value) {
    const DescLevel level{id, 0, 0};
    const HostDescID key{&level, 1, 0};
    EXPECT_TRUE(host::atom::SetParameter(object, &key, &value.Data(), 0));
  }
  static std::string Printed(const std::function<void()>& run) {
    ::testing::internal::CaptureStderr();
    run();
    return ::testing::internal::GetCapturedStderr();
  }
  static BaseObject* CacheOf(BaseObject* of) { return object::GetCache(of, nullptr); }
  static PolygonObject* MeshOf(BaseObject* of) { return host::As<PolygonObject>(CacheOf(of)); }

  BaseDocument* document;
};

TEST_F(Evaluation, GeneratorsAreBuiltOnceForEachChange) {
  BaseObject* cube = Add(kCube);
  EXPECT_EQ(CacheOf(cube), nullptr);
  EXPECT_TRUE(object::IsDirty(cube, DIRTYFLAGS_DATA));
  Evaluate();
  PolygonObject* mesh = MeshOf(cube);
  ASSERT_NE(mesh, nullptr);
  EXPECT_EQ(mesh->Points().size(), 8u);
  EXPECT_EQ(object::GetRad(cube), (Vector{100, 100, 100}));
  EXPECT_EQ(object::GetCacheParent(mesh), cube);
  EXPECT_EQ(host::listnode::GetDocument(mesh), document);
  EXPECT_FALSE(object::IsDirty(cube, DIRTYFLAGS_DATA | DIRTYFLAGS_CACHE));
  const Vector place{5, 0, 0};
  object::SetAbsPos(cube, &place);  // no part of what the cube is
  Evaluate();
  EXPECT_EQ(MeshOf(cube), mesh);
  EXPECT_EQ(object::GetMg(mesh).off, place);
  const HostLink link = LinkTo(mesh);
  Set(cube, kCubeSize, host::Value::Of({2, 4, 6}));
  EXPECT_FALSE(object::CheckCache(cube, nullptr));
  Evaluate();
  EXPECT_EQ(host::link::GetLink(link), nullptr);
  EXPECT_EQ(object::GetRad(cube), (Vector{1, 2, 3}));
  object::SetDeformMode(cube, 0);
  Evaluate();
  EXPECT_EQ(CacheOf(cube), nullptr);
  object::SetDeformMode(cube, 1);
  Evaluate();
  object::Touch(cube);
  EXPECT_EQ(CacheOf(cube), nullptr);
  Evaluate();
  Element copy(static_cast<BaseList2D*>(host::atom::GetClone(cube, 0, nullptr)));
  EXPECT_EQ(CacheOf(static_cast<BaseObject*>(copy.get())), nullptr);
}

TEST_F(Evaluation, DeformersActOnWhatIsAboveAndBesideThem) {
  BaseObject* cube = Add(kCube);
  auto* mesh = host::NewPolygonObject(1, 0);
  mesh->Points()[0] = {100, 125, 0};
  host::Place(*mesh, *cube, nullptr);
  BaseObject* twist = Add(kTwist, cube);
  SetNumber(twist, kTwistAngle, 1.5707963267948966);
  Evaluate();
  auto* deformed = host::As<PolygonObject>(object::GetDeformCache(mesh));
  ASSERT_NE(deformed, nullptr);
  EXPECT_NEAR(deformed->Points()[0].x, 0, 1e-9);
  EXPECT_NEAR(deformed->Points()[0].z, -100, 1e-9);
  EXPECT_EQ(mesh->Points()[0], (Vector{100, 125, 0}));
  ASSERT_NE(object::GetDeformCache(CacheOf(cube)), nullptr);
  Evaluate();
  EXPECT_EQ(object::GetDeformCache(mesh), deformed);
  const Vector above{0, 1000, 0};
  object::SetAbsPos(twist, &above);
  Evaluate();
  EXPECT_EQ(host::As<PolygonObject>(object::GetDeformCache(mesh))->Points()[0], (Vector{100, 125, 0}));
  object::SetDeformMode(twist, 0);
  Evaluate();
  EXPECT_EQ(object::GetDeformCache(mesh), nullptr);
  EXPECT_EQ(object::GetDeformCache(CacheOf(cube)), nullptr);
  Add(kMover, mesh);
  Evaluate();
  ASSERT_NE(object::GetDeformCache(mesh), nullptr);
  EXPECT_EQ(static_cast<PolygonObject*>(object::GetDeformCache(mesh))->Points()[0].y, 126);
  EXPECT_EQ(g_plugins.moved, 1);
}

TEST_F(Evaluation, DeformersThatChangeTheirLevelAreSeen) {
  BaseObject *outer = Add(kNull), *inner = Add(kNull, outer);
  auto* mesh = host::NewPolygonObject(1, 0);
  mesh->Points()[0] = {10, 125, 0};
  host::Place(*mesh, *inner, nullptr);
  BaseObject *bend = Add(kBend, outer), *twist = Add(kTwist, inner);
  for (BaseObject* deformer : {bend, twist}) SetNumber(deformer, kTwistAngle, 1);
  const auto deformed = [&] {
    Evaluate();
    return static_cast<PolygonObject*>(object::GetDeformCache(mesh))->Points()[0];
  };
  const Vector twistedFirst = deformed();
  host::Place(*bend, *inner, nullptr);
  const Vector bentFirst = deformed();
  EXPECT_NE(bentFirst.z, twistedFirst.z);
  object::Touch(mesh);
  EXPECT_EQ(deformed(), bentFirst);
}

TEST_F(Evaluation, DeformersTakeTangentsAndNormalsAlong) {
  BaseObject *group = Add(kNull), *twist = Add(kTwist, group);
  SetNumber(twist, kTwistAngle, 1.5707963267948966);
  auto* spline = host::NewSplineObject(1, host::kSplineBezier);
  auto* mesh = host::NewPolygonObject(4, 1);
  host::Place(*spline, *group, nullptr);
  host::Place(*mesh, *group, nullptr);
  spline->Points()[0] = {100, 125, 0};
  host::FindBlock(*spline, host::kDataTangent)->Items<Tangent>()[0] = {{-5, 0, 0}, {50, 5, 0}};
  const Vector corners[] = {{0, -125, 0}, {0, 125, 0}, {0, 125, 10}, {0, -125, 10}};
  std::copy(std::begin(corners), std::end(corners), mesh->Points().begin());
  mesh->Polygons()[0] = {0, 1, 2, 3};
  const auto normals = host::AddBlock(*mesh, host::kDataNormal, 1).Items<int16_t>();
  for (size_t corner = 0; corner < 4; ++corner) normals[3 * corner] = 32000;
  for (const int mode : {0, 1, 2}) {  // of all modes the point is in the box, and what stands at it turns
    Set(twist, 1001, host::Value::Int32(mode));
    Evaluate();
    const auto* shape = static_cast<SplineObject*>(object::GetDeformCache(spline));
    const Tangent& tangent = host::FindBlock(*shape, host::kDataTangent)->Items<Tangent>()[0];
    EXPECT_LT(kelvar::Distance(tangent.vl, {0, 0, 5}), 1e-9);
    EXPECT_NEAR(kelvar::Length(tangent.vr), std::hypot(50, 5), mode == 1 ? 10 : 1e-9);
    auto* deformed = static_cast<PolygonObject*>(object::GetDeformCache(mesh));
    auto* tag = host::FindBlock(*deformed, host::kDataNormal);
    ASSERT_NE(tag, nullptr);
    const auto turned = tag->Items<int16_t>();
    EXPECT_EQ(std::vector(turned.begin(), turned.begin() + 6),
              (std::vector<int16_t>{32000, 0, 0, 0, 0, -32000}));
  }
  EXPECT_EQ(normals[3], 32000);
  Add(kMover, group);
  Evaluate();
  EXPECT_EQ(object::GetTag(object::GetDeformCache(mesh), host::kDataNormal, 0), nullptr);
}

TEST_F(Evaluation, InstancesShowWhatTheirTargetsShow) {
  BaseObject* group = Add(kNull);
  BaseObject* cube = Add(kCube, group);
  BaseObject* instance = Add(kInstance);
  const auto aim = [](BaseObject* from, BaseObject* at) { SetLinkEntry(from->data, kInstanceLink, at); };
  aim(instance, group);
  Evaluate();
  ASSERT_NE(CacheOf(instance), nullptr);
  auto* shown = host::As<PolygonObject>(CacheOf(instance)->down);
  ASSERT_NE(shown, nullptr);
  EXPECT_EQ(object::GetRad(instance), (Vector{100, 100, 100}));
  Set(cube, kCubeSize, host::Value::Of({2, 2, 2}));
  Evaluate();
  EXPECT_EQ(object::GetRad(instance), (Vector{1, 1, 1}));
  // There is an end to what instances of instances may show.
  EXPECT_EQ(host::NewShape(*group, true, 1), nullptr);
  Element two(host::NewShape(*group, true, 2));
  EXPECT_NE(two, nullptr);
}

TEST_F(Evaluation, InstancesAreBuiltBehindWhatTheyShow) {
  constexpr int kMany = 300;
  for (const bool isBackwards : {false, true}) {
    BaseObject* shown = Add(kCube);
    std::vector<BaseObject*> chain;
    for (int i = 0; i < kMany; ++i) {
      auto* group = static_cast<BaseObject*>(New(kNull));
      GeListHead& objects = *HeadFor(document, 5155);
      host::Place(*group, objects, isBackwards ? nullptr : objects.downLast);
      chain.push_back(Add(kInstance, group));
      SetLinkEntry(chain.back()->data, kInstanceLink, shown);
      shown = group;
    }
    EXPECT_EQ(Printed([&] { Evaluate(); }), "");
    for (BaseObject* instance : chain) ASSERT_EQ(object::GetRad(instance), (Vector{100, 100, 100}));
    const HostLink first = LinkTo(CacheOf(chain.front())), last = LinkTo(CacheOf(chain.back()));
    Evaluate();
    EXPECT_TRUE(host::link::GetLink(first) && host::link::GetLink(last));
  }
}

TEST_F(Evaluation, WhatWouldShowItselfShowsNothingAndIsToldOnce) {
  BaseObject *a = Add(kNull), *b = Add(kNull), *x = Add(kInstance, a), *y = Add(kInstance, b),
             *out = Add(kInstance);
  const auto aim = [](BaseObject* from, BaseObject* at) {
    host::container::RemoveData(&from->data, kInstanceLink);
    if (at) SetLinkEntry(from->data, kInstanceLink, at);
  };
  Add(kCube, a);
  const auto lines = [&] {
    const std::string text = Printed([&] { Evaluate(); });
    return std::count(text.begin(), text.end(), '\n');
  };
  struct {
    BaseObject *x, *y;  // what they are linked with
    bool showsX, showsY;
    int lines;
  } const cases[] = {{b, a, false, false, 1}, {b, a, false, false, 0}, {b, nullptr, true, false, 0},
                     {b, a, false, false, 1}, {b, b, true, false, 0},  {a, a, false, true, 1},
                     {x, y, false, false, 1}, {y, x, false, false, 0}, {nullptr, out, false, false, 1}};
  aim(out, b);  // leads to the circles
  for (const auto& one : cases) {
    aim(x, one.x);
    aim(y, one.y);
    EXPECT_EQ(lines(), one.lines) << &one - cases;
    EXPECT_EQ(CacheOf(x) != nullptr, one.showsX) << &one - cases;
    EXPECT_EQ(CacheOf(y) != nullptr, one.showsY) << &one - cases;
    EXPECT_EQ(CacheOf(out) != nullptr, one.y != out) << &one - cases;
    const HostLink kept = CacheOf(out) ? LinkTo(CacheOf(out)) : HostLink{};
    EXPECT_EQ(lines(), 0);
    EXPECT_EQ(host::link::GetLink(kept), CacheOf(out)) << "settled " << &one - cases;
  }
}

TEST_F(Evaluation, OnlyWhatShapesAreMadeOfBuildsThemAnew) {
  BaseObject *group = Add(kNull), *outer = Add(kTwist, group), *off = Add(kTwist, group);
  BaseObject* cube = Add(kCube, group);
  BaseObject* twist = Add(kTwist, cube);
  auto* mesh = host::NewPolygonObject(4, 1);
  host::Place(*mesh, *cube, nullptr);
  BaseObject* instance = Add(kInstance);
  SetLinkEntry(instance->data, kInstanceLink, mesh);
  SetNumber(twist, kTwistAngle, 1);
  auto* tag = static_cast<SelectionTag*>(static_cast<BaseList2D*>(object::MakeTag(mesh, 5674, nullptr)));
  object::SetDeformMode(off, 0);
  Evaluate();
  HostLink links[4]{};
  const auto caches = [&] {
    std::string same;
    BaseObject* now[] = {CacheOf(cube), object::GetDeformCache(CacheOf(cube)), object::GetDeformCache(mesh),
                         CacheOf(instance)};
    for (int i = 0; i < 4; ++i) {
      same += now[i] && host::link::GetLink(links[i]) == now[i] ? '=' : '!';
      links[i] = now[i] ? LinkTo(now[i]) : HostLink{};
    }
    return same;
  };
  EXPECT_EQ(caches(), "!!!!");
  const auto select = [](BaseSelect& selection, int32_t number) { host::select::Select(&selection, number); };
  struct {
    const char* kept;  // the cube's cache, what deformers made of it and of the mesh, and the instance's cache
    std::function<void()> change;
  } const cases[] = {
      {"====", [] {}},
      {"====", [&] { SetName(cube, "Box"); }},
      {"====", [&] { SetName(twist, "Screw"); }},
      {"====", [&] { SetName(outer, "Wind"); }},
      {"====", [&] { host::DestroyNow(off); }},
      {"===!", [&] { SetName(mesh, "Face"); }},
      {"====", [&] { object::SetEditorMode(cube, 1), object::SetRenderMode(twist, 1); }},
      {"===!", [&] { object::SetEditorMode(mesh, 1); }},
      {"====", [&] { object::SetEditorMode(mesh, 1); }},
      {"====",
       [&] {
         Set(cube, kCubeSize, host::Value::Of({200, 200, 200}));
       }},
      {"====", [&] { SetNumber(twist, kTwistAngle, 1); }},
      {"====", [&] { host::atom::Message(cube, HOST_MSG_CHANGE, nullptr); }},
      {"====", [&] { host::baselist::SetBit(mesh, 2); }},
      {"!!==",
       [&] {
         Set(cube, kCubeSize, host::Value::Of({200, 200, 100}));
       }},
      {"=!!!", [&] { SetNumber(twist, kTwistAngle, 2); }},
      {"=!!!", [&] { SetNumber(outer, kTwistAngle, 2); }},
      {"!!==", [&] { host::atom::SetDirty(cube, DIRTYFLAGS_CACHE); }},
      {"==!!", [&] { object::SetPhong(mesh, 1, 1, 1); }},
      {"==!!", [&] { select(mesh->selectedPolygons, 0); }},
      {"==!!", [&] { select(tag->selection, 0); }},
      {"==!!", [&] { object::KillTag(mesh, 5612, 0), object::MakeTag(mesh, kTexture, nullptr); }},
      {"==!!", [&] { static_cast<Vector*>(object::GetTagDataW(mesh, 5600))->x = 1; }},
      {"==!!", [&] { static_cast<CPolygon*>(object::GetTagDataW(mesh, 5604))->b = 1; }},
  };
  for (const auto& one : cases) {
    one.change();
    Evaluate();
    EXPECT_EQ(caches(), one.kept) << &one - cases;
  }
  BaseObject* deformed = object::GetDeformCache(mesh);
  EXPECT_EQ(std::string_view(deformed->name), "Face");
  EXPECT_EQ(object::GetEditorMode(deformed), 1);
}

TEST_F(Evaluation, PluginsMakeObjectsAndAreExecutedInTheirOrder) {
  BaseObject* maker = Add(kMaker);
  g_plugins.make = [](BaseObject*) -> BaseObject* { return host::NewPolygonObject(3, 1); };
  Evaluate();
  Evaluate();
  EXPECT_EQ(g_plugins.made, 1);
  ASSERT_NE(MeshOf(maker), nullptr);
  EXPECT_EQ(MeshOf(maker)->Points().size(), 3u);
  host::atom::SetDirty(maker, DIRTYFLAGS_DATA);
  g_plugins.make = [](BaseObject* op) { return object::GetCache(op, nullptr); };
  const HostLink link = LinkTo(MeshOf(maker));
  Evaluate();
  EXPECT_EQ(g_plugins.made, 2);
  EXPECT_EQ(host::link::GetLink(link), CacheOf(maker));
  // An object of the scene is not taken out of it.
  BaseObject* stays = Add(kNull);
  host::atom::SetDirty(maker, DIRTYFLAGS_DATA);
  g_plugins.make = [&](BaseObject*) { return stays; };
  EXPECT_NE(Printed([&] { Evaluate(); }), "");
  EXPECT_EQ(CacheOf(maker), nullptr);
  EXPECT_EQ(host::listnode::GetDocument(stays), document);
  // The generator may go while it is asked.
  host::atom::SetDirty(maker, DIRTYFLAGS_DATA);
  g_plugins.make = [](BaseObject* op) -> BaseObject* {
    host::DestroyNow(op);
    return host::NewPolygonObject(1, 0);
  };
  Evaluate();
  g_plugins.executed.clear();
  Add(kLast);
  Add(kMover);
  EXPECT_TRUE(host::Evaluate(*document, {.caches = false}));
  EXPECT_EQ(g_plugins.executed, "3:-100 2:0 3:100 ");
}

TEST_F(Evaluation, ClonesTellWhetherTheirOriginalsHaveChanged) {
  BaseObject* generator = Add(kMaker);
  BaseObject* cube = Add(kCube, generator);
  HostBool dirty = 0;
  const auto clone = [&] {
    return Element(object::GetHierarchyClone(generator, nullptr, cube, HIERARCHYCLONEFLAGS_ASPOLY, &dirty,
                                             nullptr, DIRTYFLAGS_DATA));
  };
  Element first = clone();
  EXPECT_TRUE(dirty);
  EXPECT_NE(host::As<PolygonObject>(first.get()), nullptr);
  EXPECT_EQ(cube->inputOf, generator->number);
  dirty = 0;
  EXPECT_EQ(clone(), nullptr);
  EXPECT_FALSE(dirty);
  Set(cube, kCubeSize, host::Value::Of({1, 1, 1}));
  EXPECT_NE(clone(), nullptr);
  EXPECT_EQ(object::GetHierarchyClone(cube, nullptr, cube, 0, &dirty, nullptr, 0), nullptr);
  object::NewDependenceList(generator);
  object::AddDependence(generator, nullptr, cube, DIRTYFLAGS_DATA);
  EXPECT_FALSE(object::CompareDependenceList(generator));
  EXPECT_TRUE(object::CompareDependenceList(generator));
  object::TouchDependenceList(generator);
  EXPECT_FALSE(object::CompareDependenceList(generator));
}

TEST_F(Evaluation, MovesWithinATreeAreChangesOfIt) {
  BaseObject *root = Add(kNull), *cube = Add(kCube, root), *group = Add(kNull, root);
  const Vector place{1000, 0, 0};
  object::SetAbsPos(group, &place);
  BaseObject *instance = Add(kInstance), *generator = Add(kMaker);
  SetLinkEntry(instance->data, kInstanceLink, root);
  const auto changes = [&] {
    HostBool isDirty = 0;
    object::NewDependenceList(generator);
    object::AddDependence(generator, nullptr, root, DIRTYFLAGS_DATA);
    Element(object::GetHierarchyClone(generator, nullptr, root, 0, &isDirty, nullptr, DIRTYFLAGS_DATA));
    Evaluate();
    return std::tuple(object::GetMp(instance).x, object::CompareDependenceList(generator), isDirty);
  };
  EXPECT_EQ(changes(), std::tuple(0, 0, 1));
  EXPECT_EQ(changes(), std::tuple(0, 1, 0));
  InsertUnderLast(cube, group);  // the next of the tree's objects as before
  EXPECT_EQ(changes(), std::tuple(1000, 0, 1));
}

TEST_F(Evaluation, OnlyGeneratorsThatAreOnHideTheirInput) {
  const auto shown = [](const BaseObject* root) {
    size_t count = 0;
    Element(host::NewShape(*root, true, SIZE_MAX, &count));
    return count;
  };
  BaseObject *null = Add(kNull), *cube = Add(kCube, null);
  object::AddDependence(null, nullptr, cube, DIRTYFLAGS_DATA);
  EXPECT_EQ(shown(null), 2u);
  BaseObject *maker = Add(kMaker), *input = Add(kCube, Add(kNull, maker));
  g_plugins.make = [&](BaseObject* op) -> BaseObject* {
    object::AddDependence(op, nullptr, input, DIRTYFLAGS_DATA);
    return nullptr;
  };
  for (const bool isOn : {true, false, true}) {
    object::SetDeformMode(maker, isOn);
    Evaluate();
    EXPECT_EQ(shown(maker), isOn ? 2u : 3u);
  }
  InsertUnderLast(input, null);
  EXPECT_EQ(shown(null), 3u);
  InsertUnderLast(input, maker->down);
  g_plugins.make = nullptr;
  host::atom::SetDirty(maker, DIRTYFLAGS_DATA);
  Evaluate();
  EXPECT_EQ(shown(maker), 3u);
}

TEST_F(Evaluation, ADocumentOfShapesHasNothingLeftToEvaluate) {
  BaseObject* cube = Add(kCube);
  SetName(cube, "Box");
  const Vector place{1, 2, 3};
  object::SetAbsPos(cube, &place);
  host::Place(*New(kTexture), *HeadFor(cube, 5694), nullptr);
  BaseObject* child = Add(kNull, cube);
  Add(kTwist, child);
  BaseDocument* made = host::Polygonize(*document, false);
  ASSERT_NE(made, nullptr);
  auto* mesh = host::As<PolygonObject>(HeadFor(made, 5155)->down);
  ASSERT_NE(mesh, nullptr);
  EXPECT_EQ(mesh->next, nullptr);
  EXPECT_EQ(std::string_view(mesh->name), "Box");
  EXPECT_EQ(mesh->place.Local().off, place);
  EXPECT_NE(object::GetTag(mesh, kTexture, 0), nullptr);
  ASSERT_NE(mesh->down, nullptr);
  EXPECT_EQ(mesh->down->down, nullptr);
  EXPECT_EQ(CacheOf(cube), nullptr) << "the original is as it was";
  host::DestroyNow(made);
}

}  // namespace
