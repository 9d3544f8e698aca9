// What comes back of a scene in each format, and of real models.
#include <cstdlib>
#include <map>

#include "app/symbols.h"
#include "files/scene_check.h"
#include "scene_files_support.h"

using namespace scene_files;

namespace {

// What each format keeps.
struct Keeps {
  const char* extension;
  bool hierarchy, faces, names, uvw, views;
};

class SceneFormats : public SceneFiles, public ::testing::WithParamInterface<Keeps> {};

TEST_P(SceneFormats, ComesBackAsItWent) {
  const Keeps keeps = GetParam();
  Document small = Small();
  Document again = Import(Save(*small, Format(keeps.extension)));
  const Facets with{keeps.names, keeps.names, keeps.uvw, !keeps.hierarchy};
  if (keeps.faces) {
    EXPECT_EQ(FacesOf(*again, with), FacesOf(*small, with));
  }
  EXPECT_EQ(CountPoints(*again), CountPoints(*small));
  // A side of the box is two triangles; the even face of six corners, four, and the bent one, too.
  EXPECT_EQ(CountPolygons(*again), keeps.faces ? 13u : 21u);
  if (keeps.names) {
    EXPECT_EQ(MaterialNames(*again), MaterialNames(*small));
  }
  if (keeps.names) {
    EXPECT_EQ(TextureNames(*again), (std::set<std::string>{"wo od%20.png"}));
  }
  if (keeps.hierarchy) {
    for (const BaseObject* object : ObjectsOf(*small)) {
      const BaseObject* other = FindObject(*again, object->name);
      ASSERT_TRUE(other) << NameOf(*object);
      EXPECT_EQ(other->place.Local(), object->place.Local()) << NameOf(*object);
      EXPECT_EQ(other->up ? NameOf(*As<BaseObject>(other->up)) : "",
                object->up ? NameOf(*As<BaseObject>(object->up)) : "");
      if (keeps.views) {
        EXPECT_EQ(other->type.id, object->type.id);
      }
    }
  }
  if (keeps.views) {
    EXPECT_NEAR(Number(*FindObject(*again, "View"), id::kCameraFocus), 50, 1e-4);
    const HostGeData* color = container::FindData(&FindObject(*again, "Lamp")->data, id::kLightColor);
    EXPECT_EQ(color->value.vector, (Vector{1, 0.5, 0.25}));
  }
  // What a format changed, such as faces into triangles, stays from then on.
  Document third = Import(Save(*again, Format(keeps.extension), "again"));
  const Facets all{keeps.names, keeps.names, true, false};
  EXPECT_EQ(FacesOf(*third, all), FacesOf(*again, all));
  EXPECT_EQ(ObjectsOf(*third).size(), ObjectsOf(*again).size());
}

// Materials of one name are told apart, and what they are doesn't change from one save to the next.
TEST_P(SceneFormats, KeepsMaterials) {
  if (!GetParam().names) return;
  Document document = EmptyDocument();
  const std::pair<const char*, Vector> materials[] = {{"Paint", {1, 0, 0}},
                                                      {" Paint ", {0, 1, 0}},
                                                      {" ", {0, 0, 1}},
                                                      {"DefaultMaterial", {1, 1, 0}},
                                                      {"Wood\\", {1, 0, 1}}};
  for (const auto& [name, color] : materials) {
    BaseMaterial& material = AddMaterial(*document, name, color);
    Put(material.data, id::kMaterialUseTransparency, Value::Int32(1));
    Put(material.data, id::kMaterialTransparencyBrightness, Value::Float(0.25));
    const double x = color.x + 2 * color.y + 4 * color.z;
    AddTexture(AddPolygons(*Branch(*document, kTypeObject), "One", {{x, 0, 0}, {x + 1, 0, 0}, {x, 1, 0}},
                           {{0, 1, 2, 2}}),
               material, "");
  }
  Document again = Import(
      Save(*Import(Save(*document, Format(GetParam().extension))), Format(GetParam().extension), "again"));
  std::map<std::string, Vector> found;
  const GeListHead* head = FindBranch(*again, kTypeMaterial);
  for (const GeListNode* node = head->down; node; node = node->next) {
    const auto& material = *As<BaseMaterial>(node);
    found[NameOf(material)] = container::FindData(&material.data, id::kMaterialColor)->value.vector;
    EXPECT_EQ(Number(material, id::kMaterialTransparencyBrightness), 0.25) << NameOf(material);
  }
  const char* wood = GetParam().extension == "obj"s ? "Wood_" : "Wood\\";
  EXPECT_EQ(found, (std::map<std::string, Vector>{{"Paint", {1, 0, 0}},
                                                  {"Paint.1", {0, 1, 0}},
                                                  {"Material", {0, 0, 1}},
                                                  {"DefaultMaterial.1", {1, 1, 0}},
                                                  {wood, {1, 0, 1}}}));
  EXPECT_EQ(CountPolygons(*again), std::size(materials));
}

// Numbers of any size are kept in single precision, and points that are close together stay apart.
TEST_P(SceneFormats, KeepsNumbers) {
  for (const double scale : {1e-6, 1.0, 1e6}) {
    Document document = EmptyDocument();
    std::vector<Vector> points;
    std::vector<CPolygon> polygons;
    uint32_t seed = 1;
    const auto random = [&] {
      return scale * (double(seed = seed * 1664525 + 1013904223) / 4294967296.0 - 0.5);
    };
    for (int32_t i = 0; i < 300; ++i) {
      points.push_back({double(float(random())), double(float(random())), double(float(random()))});
      if (i % 3 == 2) polygons.push_back({i - 2, i - 1, i, i});
    }
    AddPolygons(*Branch(*document, kTypeObject), "Cloud", points, polygons);
    Document again = Import(Save(*document, Format(GetParam().extension)));
    const PolygonObject& object = OnlyPolygons(*again);
    ASSERT_EQ(object.points.Count(), 300);
    ASSERT_EQ(object.polygons.Count(), 100);
    for (size_t i = 0; i < polygons.size(); ++i)
      for (int32_t corner = 0; corner < 3; ++corner) {
        const Vector is = object.Points()[size_t(CornerOf(object.Polygons()[i], corner))];
        const Vector was = points[size_t(CornerOf(polygons[i], corner))];
        ASSERT_LE(kelvar::Distance(is, was), 1e-7 * scale) << i;
      }
  }
}

INSTANTIATE_TEST_SUITE_P(All, SceneFormats,
                         ::testing::Values(Keeps{"obj", false, true, true, true, false},
                                           Keeps{"dae", true, true, true, true, true},
                                           Keeps{"glb", true, false, true, true, false},
                                           Keeps{"ply", false, true, false, false, false},
                                           Keeps{"stl", false, false, false, false, false}),
                         [](const auto& info) { return std::string(info.param.extension); });

TEST_F(SceneFiles, AllFormatsThatSaveHaveTheirConstant) {
  const SymbolTable table = ReadSymbols(fs::path(HOST_STARTUP) / "resources/symbols");
  for (const SceneFormat& format : host::SceneFormats()) {
    EXPECT_EQ(FindFormat(format.id), &format);
    if (!format.exports) continue;
    const auto symbol = std::ranges::find(table.symbols, std::string(format.symbol), &Symbol::name);
    ASSERT_NE(symbol, table.symbols.end()) << format.symbol;
    EXPECT_EQ(symbol->value, format.id);
  }
  EXPECT_EQ(FindFormat(".OBJ"), FindFormat("obj"));
  EXPECT_EQ(FindFormat("blend"), nullptr);
}

// Of the library's own test models. Objects, materials and textures as `assimp info` counts them, but for the
// root and the material that it adds; the rest was found by a script that reads the files by itself: faces, the
// distinct places of each node's points, and the box of all.
struct Model {
  const char* file;
  size_t objects, points, polygons, materials, textures;
  Vector low, high;
};

void PrintTo(const Model& model, std::ostream* out) { *out << model.file; }

class RealModels : public SceneFiles, public ::testing::WithParamInterface<Model> {};

TEST_P(RealModels, LoadAndComeBack) {
  const Model& model = GetParam();
  const char* folder = std::getenv("QLX_MODELS");
  if (!folder) GTEST_SKIP() << "QLX_MODELS names no folder with " << model.file;
  const fs::path file = fs::path(folder) / model.file;
  Document document = Import(file);
  EXPECT_EQ(ObjectsOf(*document).size(), model.objects);
  EXPECT_EQ(CountPoints(*document), model.points);
  EXPECT_EQ(CountPolygons(*document), model.polygons);
  EXPECT_EQ(MaterialNames(*document).size(), model.materials);
  EXPECT_EQ(TextureNames(*document).size(), model.textures);
  const Box box = WorldBox(*document);
  EXPECT_LE(kelvar::Distance(box.low, model.low), 1e-3);
  EXPECT_LE(kelvar::Distance(box.high, model.high), 1e-3);
  for (const char* extension : {"glb", "dae", "obj", "ply", "stl"}) {
    Document again = Import(Save(*document, Format(extension)));
    EXPECT_EQ(CountPolygons(*again), model.polygons) << extension;
    const bool keepsObjects = *extension == 'g' || *extension == 'd';
    const Facets with{true, false, true, false};  // materials of one name get others in Collada
    if (keepsObjects) {
      EXPECT_EQ(CountPoints(*again), model.points) << extension;
      EXPECT_EQ(FacesOf(*again, with), FacesOf(*document, with)) << extension;
    }
    const Box other = WorldBox(*again);
    EXPECT_LE(kelvar::Distance(box.low, other.low), 1e-3) << extension;
    EXPECT_LE(kelvar::Distance(box.high, other.high), 1e-3) << extension;
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, RealModels,
    ::testing::Values(Model{"spider.obj",
                            19,
                            734,
                            1368,
                            5,
                            5,
                            {-92.655235, -42.233826, -86.691200},
                            {57.936218, 37.503952, 106.691200}},
                      Model{"2CylinderEngine.glb",
                            82,
                            60041,
                            121496,
                            34,
                            0,
                            {-371.692263, -180.971558, -127.999996},
                            {371.692169, 92.041562, 139.999993}}),
    [](const auto& info) {
      return std::string(info.param.file).substr(0, std::string(info.param.file).find('.'));
    });

}  // namespace
