#include <sys/resource.h>

#include <cstdlib>
#include <map>
#include <numeric>

#include "app/symbols.h"
#include "evaluate/evaluate.h"
#include "files/scene_check.h"
#include "scene/geometry.h"
#include "scene_files_support.h"

using namespace host;
using namespace std::string_literals;
namespace fs = std::filesystem;

namespace {

class SceneFiles : public Scene {
 protected:
  // A null with a box below it, whose sides have two materials, a plate with an even and a bent face of many
  // corners below that, a camera and a light.
  Document Small() {
    Document document = EmptyDocument();
    GeListHead& objects = *Branch(*document, kTypeObject);
    BaseObject& stand = *New<BaseObject>(objects, id::kNull, "Stand");
    stand.place.SetLocal({{10, 2, -3}, {0, 0, -1}, {0, 1, 0}, {1, 0, 0}});

    const std::vector<Vector> corners{{-1, -1, -1}, {1, -1, -1}, {1, 1, -1}, {-1, 1, -1},
                                      {-1, -1, 1},  {1, -1, 1},  {1, 1, 1},  {-1, 1, 1}};
    PolygonObject& box =
        AddPolygons(stand, "Box", corners,
                    {{0, 3, 2, 1}, {5, 6, 7, 4}, {1, 2, 6, 5}, {4, 7, 3, 0}, {3, 7, 6, 2}, {4, 0, 1, 5}});
    box.place.SetLocal({{0, 5, 0.5}, {2, 0, 0}, {0, 2, 0}, {0, 0, 2}});
    auto uvw = AddBlock(box, kDataUVW, 6).Items<UVWStruct>();
    for (size_t i = 0; i < uvw.size(); ++i)
      uvw[i] = {{0.125 * double(i), 0, 0}, {0.125 * double(i), 1, 0}, {1, 1, 0}, {1, 0.25, 0}};

    // A bent face of six corners, an even one of six, and a triangle.
    PolygonObject& plate = AddPolygons(box, "Plate", {}, {});
    FillPlate(plate);
    plate.place.SetLocal({{0, 1, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}});

    BaseMaterial& wood = AddMaterial(*document, "Wood", {0.5, 0.25, 0.125});
    BaseMaterial& steel = AddMaterial(*document, "Steel", {0.25, 0.5, 0.75});
    Put(steel.data, id::kMaterialUseTransparency, Value::Int32(1));
    Put(steel.data, id::kMaterialTransparencyBrightness, Value::Float(0.25));
    auto& shader = *New<BaseShader>(*Branch(wood, kTypeShader), id::kBitmap, "Picture");
    HostGeData file{};
    file.type = HOST_DATA_FILENAME;
    file.value.filename = MakeFilename((folder_.Path() / "pictures/wo od%20.png").native());
    Put(shader.data, id::kBitmapFile, Value::Adopt(file));
    SetLinkEntry(wood.data, id::kMaterialSlots[0].shader, &shader);

    AddTexture(box, wood, "");
    AddTexture(box, steel, "Two");
    auto& two = *New<SelectionTag>(*Branch(box, kTypeTag), id::kPolygonSelection, "Two");
    two.selection.runs = {{1, 1}, {3, 3}};
    AddTexture(plate, steel, "");

    BaseObject& camera = *New<BaseObject>(objects, id::kCamera, "View");
    camera.place.SetLocal({{0, 0, -50}, {0, 0, -1}, {0, 1, 0}, {1, 0, 0}});
    Put(camera.data, id::kCameraFocus, Value::Float(50));
    BaseObject& light = *New<BaseObject>(objects, id::kLight, "Lamp");
    light.place.SetLocal({{5, 50, 5}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
    Put(light.data, id::kLightColor, Value::Of({1, 0.5, 0.25}));
    return document;
  }

  template <class Node>
  static Node* New(GeListNode& parent, int32_t type, const char* name) {
    Node* made = As<Node>(MakeElement(type));
    EXPECT_NE(made, nullptr) << type;
    made->name = name;
    Append(*made, parent);
    return made;
  }

  static void FillPlate(PolygonObject& plate) {
    const std::vector<Vector> places{{0, 0, 0}, {0, 4, 0}, {1, 4, 0},  {1, 1, 0}, {4, 1, 0}, {4, 0, 0},
                                     {8, 0, 0}, {9, 0, 0}, {10, 1, 0}, {9, 2, 0}, {8, 2, 0}, {7, 1, 0}};
    plate.points.Resize(int32_t(places.size()));
    std::ranges::copy(places, plate.Points().begin());
    std::vector<CPolygon> polygons;
    for (const int32_t first : {0, 6}) {
      std::vector<NgonPart> parts;
      CutNgon(std::span(places).subspan(size_t(first), 6), parts);
      for (const NgonPart& part : parts) {
        const CPolygon& cut = part.polygon;
        polygons.push_back({first + cut.a, first + cut.b, first + cut.c, first + cut.d});
        plate.ngonEdges.push_back(part.inner);
      }
    }
    polygons.push_back({2, 3, 4, 4});
    plate.ngonEdges.push_back(0);
    plate.polygons.Resize(int32_t(polygons.size()));
    std::ranges::copy(polygons, plate.Polygons().begin());
  }

  static BaseMaterial& AddMaterial(BaseDocument& document, const char* name, const Vector& color) {
    auto& made = *New<BaseMaterial>(*Branch(document, kTypeMaterial), id::kMaterial, name);
    Put(made.data, id::kMaterialColor, Value::Of(color));
    return made;
  }

  static void AddTexture(BaseObject& object, BaseMaterial& material, const char* restriction) {
    auto& tag = *New<BaseTag>(*Branch(object, kTypeTag), id::kTexture, "");
    SetLinkEntry(tag.data, id::kTextureMaterial, &material);
    Put(tag.data, id::kTextureRestriction, Value::Text(restriction));
  }

  fs::path Save(BaseDocument& document, const SceneFormat& format, const char* name = "scene") {
    const fs::path file = folder_.Path() / (std::string(name) + "." + format.extension);
    ExportScene(document, file, format.id, 0, nullptr);
    return file;
  }

  TempFolder folder_;
};

struct StopAt final : Progress {
  explicit StopAt(int call) : left(call) {}
  bool Report(double fraction, const char*) override {
    EXPECT_GE(fraction, 0);
    EXPECT_LE(fraction, 1);
    return --left > 0;
  }
  int left;
};

std::string FaultOf(const auto& work) {
  try {
    work();
  } catch (const FileFault& fault) {
    return fault.what();
  }
  return "no fault";
}

std::string ReadAll(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

const SceneFormat& Format(std::string_view extension) { return *FindFormat(extension); }

const PolygonObject& OnlyPolygons(BaseDocument& document) {
  const std::vector<BaseObject*> objects = ObjectsOf(document);
  EXPECT_EQ(objects.size(), 1u);
  return dynamic_cast<PolygonObject&>(*objects.at(0));
}

size_t CountPoints(BaseDocument& document) {
  size_t points = 0;
  for (BaseObject* object : ObjectsOf(document))
    if (const auto* mesh = As<PolygonObject>(object)) points += size_t(mesh->points.Count());
  return points;
}

size_t CountPolygons(BaseDocument& document) {
  size_t polygons = 0;
  for (BaseObject* object : ObjectsOf(document))
    if (const auto* mesh = As<PolygonObject>(object)) polygons += size_t(mesh->polygons.Count());
  return polygons;
}

Box WorldBox(BaseDocument& document) {
  Box box;
  for (BaseObject* object : ObjectsOf(document))
    if (const auto* mesh = As<PolygonObject>(object))
      for (const Vector& point : mesh->Points()) box.Add(kelvar::Transformed(GlobalMatrix(*object), point));
  return box;
}

std::set<std::string> TextureNames(BaseDocument& document) {
  std::set<std::string> names;
  Walk(*FindBranch(document, kTypeMaterial), [&](GeListNode& node) {
    if (node.type.id != id::kBitmap) return;
    const HostGeData* file = container::FindData(&static_cast<BaseShader&>(node).data, id::kBitmapFile);
    names.insert(fs::path(View(&file->value.filename)).filename());
  });
  return names;
}

std::vector<std::string> MaterialNames(BaseDocument& document) {
  std::vector<std::string> names;
  for (GeListNode* node = FindBranch(document, kTypeMaterial)->down; node; node = node->next)
    names.push_back(NameOf(static_cast<BaseMaterial&>(*node)));
  std::ranges::sort(names);
  return names;
}

double Number(const BaseList2D& element, int32_t parameter) {
  const HostGeData* value = container::FindData(&element.data, parameter);
  return value->type == HOST_DATA_FLOAT ? value->value.real : double(value->value.integer);
}

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
  const Vector colors[] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
  for (const Vector& color : colors) {
    BaseMaterial& material = AddMaterial(*document, color.z > 0 ? " " : "Paint", color);
    Put(material.data, id::kMaterialUseTransparency, Value::Int32(1));
    Put(material.data, id::kMaterialTransparencyBrightness, Value::Float(0.25));
    const double x = color.x + 2 * color.y;
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
  EXPECT_EQ(found, (std::map<std::string, Vector>{
                       {"Paint", colors[0]}, {"Paint.1", colors[1]}, {"Material", colors[2]}}));
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

// Corners of one point with other texture coordinates or normals stay one point.
TEST_F(SceneFiles, SeamsDoNotSplitPoints) {
  const fs::path file = folder_.Write("seam.obj",
                                      "mtllib ../outside.mtl\no Roof\n"
                                      "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 0.5 2 -1\n"
                                      "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\nvt 0.5 0.25\n"
                                      "vn 0 0 1\nvn 0 1 0\n"
                                      "f 1/1/1 2/2/1 3/3/1 4/4/1\nf 4/1/2 3/2/2 5/5/2\n");
  Document document = Import(file);
  const PolygonObject& roof = OnlyPolygons(*document);
  EXPECT_EQ(NameOf(roof), "Roof");
  ASSERT_EQ(roof.points.Count(), 5);
  EXPECT_EQ(roof.Points()[4], (Vector{0.5, 2, 1}));
  ASSERT_EQ(roof.polygons.Count(), 2);
  const CPolygon& quad = roof.Polygons()[0];
  EXPECT_EQ((std::array{quad.a, quad.b, quad.c, quad.d}), (std::array{0, 3, 2, 1}));
  const CPolygon& gable = roof.Polygons()[1];
  EXPECT_EQ((std::array{gable.a, gable.b, gable.c, gable.d}), (std::array{3, 4, 2, 2}));
  const auto uvw = FindBlock(roof, kDataUVW)->Items<UVWStruct>();
  EXPECT_EQ(uvw[0].a, (Vector{0, 1, 0}));
  EXPECT_EQ(uvw[1].a, (Vector{0, 1, 0}));
  EXPECT_EQ(uvw[1].b, (Vector{0.5, 0.75, 0}));
  const auto normals = FindBlock(roof, kDataNormal)->Items<std::array<int16_t, 12>>();
  EXPECT_EQ(normals[0][2], -32000);
  EXPECT_EQ(normals[1][1], 32000);
}

// The fronts of closed solids point outwards, so that their volume is above zero.
TEST_F(SceneFiles, TheTableIsWhatItsFileSays) {
  Document document = Import(fs::path(EXAMPLES) / "assets/table.obj");
  std::map<std::string, double> volumes;
  for (const BaseObject* one : ObjectsOf(*document)) {
    const auto* object = As<PolygonObject>(one);
    double& volume = volumes[NameOf(*object)];
    const auto at = [&](int32_t point) { return object->Points()[size_t(point)]; };
    for (const CPolygon& polygon : object->Polygons())
      volume += kelvar::Dot(at(polygon.a), kelvar::Cross(at(polygon.b), at(polygon.c)) +
                                               kelvar::Cross(at(polygon.c), at(polygon.d))) /
                6;
  }
  const std::map<std::string, double> expected{{"Leg_1", 2520}, {"Leg_2", 2520}, {"Leg_3", 2520},
                                               {"Leg_4", 2520}, {"Top", 38400},  {"Plate", 653.15}};
  ASSERT_EQ(volumes.size(), expected.size());
  for (const auto& [name, volume] : expected) EXPECT_NEAR(volumes[name], volume, 0.01) << name;
  const auto* plate = As<PolygonObject>(FindObject(*document, "Plate"));
  EXPECT_EQ(plate->polygons.Count(), 8 + 2 * 3);  // each face of eight corners is three polygons
  EXPECT_EQ(MaterialsOf(*plate)[0], "Glaze");
}

// What reads a file may cut its mesh for what is said of corners, or for nothing.
TEST_F(SceneFiles, PointsAtOnePlaceAreOneUnlessTheFacesShareThem) {
  const std::string head = "ply\nformat ascii 1.0\nelement vertex 5\n",
                    list = "property list uchar int vertex_indices\n";
  const std::string xyz = "property float x\nproperty float y\nproperty float z\n";
  const std::string faces = "element face 2\n" + list + "end_header\n";
  const struct {
    const char *name, *extension;
    std::string text;
    size_t points;
  } cases[] = {
      {"shared", "ply", head + xyz + faces + "0 0 0\n1 0 0\n1 1 0\n0 1 0\n0 0 0\n3 0 1 2\n3 4 2 3\n", 5},
      {"coloured", "ply",
       head + xyz + "property uchar red\nproperty uchar green\nproperty uchar blue\n" + faces +
           "0 0 0 1 2 3\n1 0 0 4 5 6\n1 1 0 7 8 9\n0 1 0 1 1 1\n0 0 0 9 9 9\n3 0 1 2\n3 4 2 3\n",
       4},
      {"numbered", "obj", "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nf 1 2 3\nf 1 3 4\n", 4},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.name);
    const fs::path file = folder_.Write(std::string(one.name) + "." + one.extension, one.text);
    const Document document = Import(file);
    const auto* object = As<PolygonObject>(ObjectsOf(*document).at(0));
    EXPECT_EQ(object->Points().size(), one.points);
    EXPECT_EQ(object->polygons.Count(), 2);
  }
}

// Of formats that are not written; their files start the fuzzer, too.
TEST_F(SceneFiles, FormatsThatAreOnlyReadAreRead) {
  const struct {
    const char *file, *extension, *object;
    int32_t points, polygons;
    Vector place;
  } cases[] = {{"house_fbx", "fbx", "House", 5, 2, {10, 20, -30}},
               {"house75_fbx", "fbx", "House", 5, 2, {10, 20, -30}},
               {"triangle_gltf", "gltf", "a", 3, 1, {0, 0, 0}},
               {"quad_3ds", "3ds", "Box_Box_0", 5, 3, {0, 0, 0}}};
  for (const auto& one : cases) {
    const std::string content = ReadAll(fs::path(FUZZ_CORPUS) / "scene_import" / one.file).substr(1);
    Document document = Import(folder_.Write(std::string("a.") + one.extension, content));
    const auto* object = As<PolygonObject>(FindObject(*document, one.object));
    ASSERT_TRUE(object) << one.file;
    EXPECT_EQ(object->points.Count(), one.points);
    EXPECT_EQ(object->polygons.Count(), one.polygons) << one.file;
    EXPECT_EQ(object->place.Local().off, one.place) << one.file;
  }
}

TEST_F(SceneFiles, UrisAreUnescaped) {
  const float points[9] = {0, 0, 0, 1, 0, 0, 1, 1, 0};
  folder_.Write("sub/a b.bin", {reinterpret_cast<const char*>(points), sizeof points});
  const auto read = [&](const std::string& uri, const std::string& picture = "my%20picture.png") {
    const std::string text =
        R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],"nodes":[{"mesh":0}],)"
        R"("meshes":[{"primitives":[{"attributes":{"POSITION":0},"material":0}]}],)"
        R"("materials":[{"name":"M","normalTexture":{"index":0}}],"textures":[{"source":0}],)"
        R"("images":[{"uri":")" +
        picture +
        R"("}],)"
        R"("accessors":[{"bufferView":0,"componentType":5126,"count":3,"type":"VEC3"}],)"
        R"("bufferViews":[{"buffer":0,"byteLength":36}],"buffers":[{"byteLength":36,"uri":")" +
        uri + R"("}]})";
    return Import(folder_.Write("a.gltf", text));
  };
  Document document = read("sub/a%20b.bin");
  EXPECT_EQ(CountPoints(*document), 3u);
  EXPECT_EQ(TextureNames(*document), std::set<std::string>{"my picture.png"});
  EXPECT_NE(FaultOf([&] { read("%2e%2e/a%20b.bin"); }), "no fault");
  // A picture without a name gets one.
  document = read("sub/a%20b.bin", "data:image/png;base64,AAAA");
  document = Import(Save(*document, Format("dae")));
  EXPECT_EQ(TextureNames(*document), std::set<std::string>{"picture 0"});
}

// What a file names outside of its folder is not read.
TEST_F(SceneFiles, FilesStayInTheirFolder) {
  folder_.Write("outside.mtl", "newmtl Red\nKd 1 0 0\n");
  folder_.Write("scene/inside.mtl", "newmtl Red\nKd 1 0 0\n");
  const std::string triangle = "v 0 0 0\nv 1 0 0\nv 1 1 0\n";
  const auto isRead = [&](const std::string& library) {
    const std::string text = "mtllib " + library + "\n" + triangle + "usemtl Red\nf 1 2 3\n";
    Document document = Import(folder_.Write("scene/a.obj", text));
    const auto& material = static_cast<BaseMaterial&>(*FindBranch(*document, kTypeMaterial)->down);
    return container::FindData(&material.data, id::kMaterialColor)->value.vector == Vector{1, 0, 0};
  };
  EXPECT_TRUE(isRead("inside.mtl"));
  EXPECT_FALSE(isRead("../outside.mtl"));
  EXPECT_FALSE(isRead((folder_.Path() / "outside.mtl").native()));
  fs::create_symlink("../outside.mtl", folder_.Path() / "scene/link.mtl");
  EXPECT_FALSE(isRead("link.mtl"));
}

// What belongs to a model is found beside a link to it, or else beside the model.
TEST_F(SceneFiles, LinksHaveWhatTheirGoalHas) {
  const auto library = [](const char* color) {
    return std::string("newmtl One\nKd ") + color + "\nmap_Kd picture.png\n";
  };
  folder_.Write("goal/one.mtl", library("1 0 0"));
  folder_.Write("goal/picture.png");
  folder_.Write("secret.mtl", library("0 1 0"));
  fs::create_directory(folder_.Path() / "links");
  const fs::path link = folder_.Path() / "links/a.obj";
  fs::create_symlink("../goal/a.obj", link);
  const auto materialOf = [&](const std::string& name) {
    folder_.Write("goal/a.obj", "mtllib " + name + "\nv 0 0 0\nv 1 0 0\nv 1 1 0\nusemtl One\nf 1 2 3\n");
    Document document = Import(link);
    const auto& material = static_cast<BaseMaterial&>(*FindBranch(*document, kTypeMaterial)->down);
    const Vector& color = container::FindData(&material.data, id::kMaterialColor)->value.vector;
    const GeListHead* shaders = FindBranch(material, kTypeShader);
    std::string picture;
    if (shaders && shaders->down)
      picture = View(&container::FindData(&static_cast<BaseShader&>(*shaders->down).data, id::kBitmapFile)
                          ->value.filename);
    return std::pair(color, fs::path(picture).lexically_relative(folder_.Path()).native());
  };
  EXPECT_EQ(materialOf("one.mtl"), std::pair(Vector(1, 0, 0), std::string("goal/picture.png")));
  EXPECT_NE(materialOf("../secret.mtl").first, (Vector{0, 1, 0}));
  EXPECT_NE(materialOf("../links/../secret.mtl").first, (Vector{0, 1, 0}));
  folder_.Write("links/one.mtl", library("0 0 1"));
  EXPECT_EQ(materialOf("one.mtl").first, (Vector{0, 0, 1}));
}

TEST_F(SceneFiles, PartsOfAFileCanBeLeftOut) {
  Document small = Small();
  const fs::path file = Save(*small, Format("dae"));
  const Document materials(ImportScene(file, kFilterMaterials, nullptr));
  EXPECT_TRUE(ObjectsOf(*materials).empty());
  EXPECT_EQ(MaterialNames(*materials).size(), 2u);
  const Document objects(ImportScene(file, kFilterObjects, nullptr));
  EXPECT_EQ(ObjectsOf(*objects).size(), 5u);
  EXPECT_TRUE(MaterialNames(*objects).empty());
}

TEST_F(SceneFiles, GeneratorsAreSavedAsWhatTheyMake) {
  Document document = EmptyDocument();
  New<BaseObject>(*Branch(*document, kTypeObject), kCube, "Cube");
  ASSERT_TRUE(Evaluate(*document, {}));
  Document again = Import(Save(*document, Format("obj")));
  const PolygonObject& cube = OnlyPolygons(*again);
  EXPECT_EQ(NameOf(cube), "Cube");
  EXPECT_EQ(cube.points.Count(), 8);
  EXPECT_EQ(cube.polygons.Count(), 6);
  EXPECT_EQ(cube.OwnBox().high, (Vector{100, 100, 100}));
}

TEST_F(SceneFiles, NamesThatAFileCannotTellApartAreChanged) {
  Document document = EmptyDocument();
  std::string longest = ".";
  for (int i = 0; i < 100; ++i) longest += "\u20ac";
  for (const std::string& name : {"Twin"s, "Twin"s, "Twin.1"s, "a\nv 9 9 9"s, " "s, ""s, longest})
    AddPolygons(*Branch(*document, kTypeObject), name.c_str(), {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}},
                {{0, 1, 2, 2}});
  Document again = Import(Save(*document, Format("obj")));
  std::vector<std::string> names;
  for (const BaseObject* object : ObjectsOf(*again)) names.push_back(NameOf(*object));
  EXPECT_EQ(names, (std::vector<std::string>{"Twin", "Twin.2", "Twin.1", "a_v 9 9 9", "Object", "Object.1",
                                             longest.substr(0, 1 + 84 * 3)}));
}

// Where a file has no names, the library makes some up, and for Collada without meshes those, too.
TEST_F(SceneFiles, WhatTheLibraryMakesUpIsLeftOut) {
  const std::string triangle = "v 0 0 0\nv 1 0 0\nv 1 1 0\n";
  const struct {
    const char* name;
    std::string content;
    std::vector<std::string> names;
    size_t points;
  } cases[] = {
      {"a.obj", triangle + "f 1 2 3\n", {"a"}, 3},
      {"b.obj", triangle, {"b"}, 3},
      {"c.dae",
       "<COLLADA version=\"1.4.1\"><asset/><library_visual_scenes><visual_scene id=\"s\"><node><node "
       "name=\"c.1\"/><node/></node></visual_scene></library_visual_scenes><scene>"
       "<instance_visual_scene url=\"#s\"/></scene></COLLADA>",
       {"c", "c.1", "c.2"},
       0},
      {"d.gltf",
       R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0,1]}],"nodes":[{},{"name":"nodes[x]"}]})",
       {"d", "nodes[x]"},
       0},
  };
  for (const auto& one : cases) {
    Document document = Import(folder_.Write(one.name, one.content));
    std::vector<std::string> names;
    for (const BaseObject* object : ObjectsOf(*document)) names.push_back(NameOf(*object));
    EXPECT_EQ(names, one.names) << one.name;
    EXPECT_EQ(CountPoints(*document), one.points) << one.name;
    EXPECT_TRUE(MaterialNames(*document).empty()) << one.name;
  }
}

// Names that mean something else to the library, or to a format.
TEST_F(SceneFiles, PicturesKeepTheirNames) {
  for (const char* name : {"*0", "-s 3 1 1.jpg", " leading.jpg"}) {
    Document small = Small();
    Walk(*FindBranch(*small, kTypeMaterial), [&](GeListNode& node) {
      if (node.type.id != id::kBitmap) return;
      HostGeData file{};
      file.type = HOST_DATA_FILENAME;
      file.value.filename = MakeFilename(name);
      Put(static_cast<BaseShader&>(node).data, id::kBitmapFile, Value::Adopt(file));
    });
    for (const char* extension : {"obj", "dae", "glb"})
      EXPECT_EQ(TextureNames(*Import(Save(*small, Format(extension)))), (std::set<std::string>{name}))
          << extension;
    // One picture would lie on all that was joined.
    EXPECT_EQ(ReadAll(Save(*small, Format("ply"))).find("TextureFile"), std::string::npos);
  }
  const auto picturesOf = [&](const std::string& comments) {
    return TextureNames(*Import(
        folder_.Write("a.ply", "ply\nformat ascii 1.0\n" + comments +
                                   "element vertex 3\nproperty float x\nproperty float y\nproperty float z\n"
                                   "element face 1\nproperty list uchar int vertex_index\nend_header\n"
                                   "0 0 0\n1 0 0\n1 1 0\n3 0 1 2\n")));
  };
  EXPECT_EQ(picturesOf("comment TextureFile one.png\n"), (std::set<std::string>{"one.png"}));
  EXPECT_EQ(picturesOf("comment TextureFile one.png\ncomment TextureFile two.png\n"), std::set<std::string>());
}

TEST_F(SceneFiles, SavingFollowsLinksAndTakesNamesWithoutExtension) {
  Document small = Small();
  const auto save = [&](const char* name) {
    return FaultOf([&] { ExportScene(*small, folder_.Path() / name, Format("obj").id, 0, nullptr); });
  };
  fs::create_directories(folder_.Path() / "goal");
  fs::create_symlink("goal/second.obj", folder_.Path() / "first.obj");
  fs::create_symlink("../new", folder_.Path() / "goal/second.obj");
  EXPECT_EQ(save("first.obj"), "no fault");
  EXPECT_TRUE(fs::is_symlink(folder_.Path() / "first.obj"));
  EXPECT_TRUE(fs::is_symlink(folder_.Path() / "goal/second.obj"));
  EXPECT_NE(ReadAll(folder_.Path() / "new").find("mtllib new.mtl"), std::string::npos);
  EXPECT_TRUE(fs::is_regular_file(folder_.Path() / "new.mtl"));
  fs::create_symlink("loop.obj", folder_.Path() / "loop.obj");
  fs::create_symlink("missing/a.obj", folder_.Path() / "nowhere.obj");
  for (const char* name : {"loop.obj", "nowhere.obj", "goal/"}) EXPECT_NE(save(name), "no fault") << name;
  EXPECT_NE(save("other/").find("ends in a slash"), std::string::npos);
}

TEST_F(SceneFiles, WrongFilesAreRefused) {
  Document small = Small();
  const std::string whole = ReadAll(Save(*small, Format("glb")));
  const std::string solid = ReadAll(Save(*small, Format("stl")));
  const std::string obj = "v 0 0 0\nv 1 0 0\nv 1 1 0\n";
  const std::string ply =
      "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
      "property float z\nelement face 1\nproperty list uchar int vertex_index\nend_header\n";
  const std::string gltf = R"({"asset":{"version":"2.0"},"scenes":[{"nodes":[0]}],"scene":0,"nodes":[)";
  std::string deep = "<COLLADA version=\"1.4.1\"><library_visual_scenes><visual_scene id=\"s\">";
  for (int i = 0; i < 100000; ++i) deep += "<node>";
  const auto collada = [](const char* corners) {
    return std::string(
               "<COLLADA version=\"1.4.1\"><asset/><library_geometries><geometry id=\"g\"><mesh><source "
               "id=\"s\">"
               "<float_array id=\"f\" count=\"9\">0 0 0 1 0 0 0 1 0</float_array><technique_common><accessor "
               "source=\"#f\" count=\"3\" stride=\"3\"><param name=\"X\" type=\"float\"/><param name=\"Y\" "
               "type=\"float\"/><param name=\"Z\" type=\"float\"/></accessor></technique_common></source>"
               "<vertices id=\"v\"><input semantic=\"POSITION\" source=\"#s\"/></vertices><triangles "
               "count=\"1\"><input semantic=\"VERTEX\" source=\"#v\" offset=\"0\"/><!-- <p>-1</p> --><p>") +
           corners +
           "</p></triangles></mesh></geometry></library_geometries><library_visual_scenes><visual_scene "
           "id=\"s\">"
           "<node name=\"n\"><instance_geometry url=\"#g\"/></node></visual_scene></library_visual_scenes>"
           "<scene><instance_visual_scene url=\"#s\"/></scene></COLLADA>";
  };
  EXPECT_EQ(CountPolygons(*Import(folder_.Write("right.dae", collada("0 1 2")))), 1u);
  // Two faces, of which the second has one corner that is no point.
  const float places[9] = {0, 0, 0, 1, 0, 0, 1, 1, 0};
  const uint32_t corners[6] = {0, 1, 2, 0, 1, UINT32_MAX};
  folder_.Write("faces.bin", std::string(reinterpret_cast<const char*>(places), sizeof places) +
                                 std::string(reinterpret_cast<const char*>(corners), sizeof corners));
  const std::string faces =
      R"({"mesh":0}],"meshes":[{"primitives":[{"attributes":{"POSITION":0},"indices":1}]}],"accessors":[)"
      R"({"bufferView":0,"componentType":5126,"count":3,"type":"VEC3"},)"
      R"({"bufferView":1,"componentType":5125,"count":6,"type":"SCALAR"}],)"
      R"("bufferViews":[{"buffer":0,"byteLength":36},{"buffer":0,"byteOffset":36,"byteLength":24}],)"
      R"("buffers":[{"byteLength":60,"uri":"faces.bin"}]})";
  const std::string noPoint = "a face with a corner that is no point";
  std::string points = ply.substr(0, ply.find("element face")) + "end_header\n";
  points.replace(points.find("ascii"), 5, "binary_little_endian");
  points.append(3 * sizeof(Vector32), '\0');
  EXPECT_EQ(CountPoints(*Import(folder_.Write("points.ply", points))), 3u);
  const struct {
    const char* name;
    std::string content, reason;
  } cases[] = {
      {"empty.obj", "", "it is empty"},
      {"unknown.xyz", "x",
       "its format is not known; these are: .obj, .dae, .stl, .ply, .glb, .gltf, .fbx, .3ds"},
      {"noextension", "x", "its format is not known"},
      {"misnamed.obj", whole, "it is no whole .obj file"},
      {"misnamed.ply", obj, "it is no whole .ply file"},
      {"endless.ply", ply.substr(0, ply.size() - 4), "it is no whole .ply file"},
      {"other.ply", "ply\nelephant\nend_header\n", "it is no whole .ply file"},
      {"misnamed.3ds", obj, "it is no whole .3ds file"},
      {"cut.glb", whole.substr(0, whole.size() / 2), "it is no whole .glb file"},
      {"chunk.glb", whole.substr(0, 12) + "\xff\xff\xff\xbf" + whole.substr(16), "it is no whole .glb file"},
      {"cut line.ply", ply + "0 0 0\n1 0 0\n1 1 0\n3 0 1", "it is no whole .ply file"},
      {"missing line.ply", ply + "0 0 0\n1 0 0\n1 1 0\n\n", "it is no whole .ply file"},
      {"cut points.ply", points.substr(0, points.size() - 1), "it is no whole .ply file"},
      {"empty.stl", "solid x\nendsolid x\n", "there is nothing in it"},
      {"points.obj", "o One\nv 0 0 0\nv 1 0 0\n", "none of its objects has a face"},
      {"below.dae", collada("0 1 -1"), noPoint},
      {"beyond.dae", collada("0 1 4294967295"), noPoint},
      {"faces.gltf", gltf + faces, noPoint},
      {"text.obj", "hello world, this is a text", "there is nothing in it"},
      {"cut text.stl", "solid a\n facet normal 0 0 1\n  outer loop\n   vertex 0 0 0\n",
       "it is no whole .stl file"},
      {"cut.stl", solid.substr(0, solid.size() - 1), "it is no whole .stl file"},
      {"text.dae", "no markup", "it is no whole .dae file"},
      {"cut.dae", "<COLLADA", ""},
      {"deep.dae", deep, ""},
      {"nan.ply", ply + "0 0 0\n1 0 0\nnan 1 0\n3 0 1 2\n", "a point at a place that is no number"},
      {"index.ply", ply + "0 0 0\n1 0 0\n1 1 0\n3 0 1 7\n", ""},
      {"index.obj", obj + "f 1 2 2000000000\n", ""},
      {"cycle.gltf", gltf + R"({"children":[1]},{"children":[0]}]})", ""},
      {"huge.gltf",
       gltf + R"({"mesh":0}],"meshes":[{"primitives":[{"attributes":{"POSITION":0}}]}],"accessors":[)" +
           R"({"componentType":5126,"count":2000000000,"type":"VEC3"}]})",
       ""},
      {"fifo.obj", "", "it is no file"},
  };
  for (const auto& one : cases) {
    fs::path file = folder_.Path() / one.name;
    if (one.reason == "it is no file")
      fs::create_directory(file);
    else
      file = folder_.Write(one.name, one.content);
    const std::string fault = FaultOf([&] { Import(file); });
    EXPECT_TRUE(fault.starts_with(file.native() + ": ")) << fault;
    EXPECT_NE(fault.find(one.reason), fault.npos) << fault;
  }
  EXPECT_EQ(FaultOf([&] { Import("/missing.obj"); }), "/missing.obj: there is no such file");
}

// The program that reads files may be wrong as well.
TEST_F(SceneFiles, ScenesOfTheReaderAreChecked) {
  const auto faultOf = [](auto change) -> std::string {
    FileScene scene;
    scene.nodes.resize(2);
    scene.materials.resize(1);
    scene.meshes.resize(1);
    scene.nodes[1].meshes = {0};
    scene.meshes[0].points = std::vector<Vector32>(3);
    scene.meshes[0].corners = {0, 1, 2};
    change(scene);
    try {
      ByteText packed;
      Pack(scene, packed);
      CheckScene(UnpackScene(packed.text));
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "";
  };
  const float nan = std::nanf("");
  EXPECT_EQ(faultOf([](FileScene&) {}), "");
  EXPECT_NE(faultOf([](FileScene& scene) { scene.nodes[0].parent = 0; }), "");
  EXPECT_NE(faultOf([](FileScene& scene) { scene.nodes[1].parent = -2; }), "");
  EXPECT_NE(faultOf([](FileScene& scene) { scene.nodes[0].meshes = {1}; }), "");
  EXPECT_NE(faultOf([&](FileScene& scene) { scene.nodes[0].matrix.v3[2] = nan; }), "");
  EXPECT_NE(faultOf([](FileScene& scene) { scene.meshes[0].corners = {0, 1, 3}; }), "");
  EXPECT_NE(faultOf([](FileScene& scene) { scene.meshes[0].sizes = {4}; }), "");
  EXPECT_NE(faultOf([](FileScene& scene) { scene.meshes[0].sizes = {UINT32_MAX, 4}; }), "");
  EXPECT_NE(faultOf([](FileScene& scene) { scene.meshes[0].uvw = {Vector32{}, Vector32{}}; }), "");
  EXPECT_NE(faultOf([](FileScene& scene) { scene.meshes[0].material = 1; }), "");
  EXPECT_NE(faultOf([](FileScene& scene) { scene.materials[0].textures.clear(); }), "");
  EXPECT_NE(faultOf([](FileScene& scene) { scene.cameras.push_back({.node = 2}); }), "");
  EXPECT_NE(faultOf([&](FileScene& scene) { scene.lights.push_back({.view = {{nan, 0, 0}}}); }), "");
  EXPECT_NE(faultOf([](FileScene& scene) {
              scene.meshes[0].points = std::vector<Vector32>(1 << 20);
              scene.nodes[0].meshes.assign(1 << 10, 0);
            }),
            "");
  EXPECT_NE(faultOf([](FileScene& scene) {
              scene.nodes.resize(5000);
              for (int32_t i = 1; i < 5000; ++i) scene.nodes[size_t(i)].parent = i - 1;
            }),
            "");
  ByteText packed;
  Pack(FileScene{.nodes = {{.name = "a"}}}, packed);
  const std::string& bytes = packed.text;
  for (size_t size = 0; size < bytes.size(); ++size)
    EXPECT_THROW(UnpackScene(std::string_view(bytes).substr(0, size)), std::runtime_error);
}

TEST_F(SceneFiles, LoadingAndSavingCanBeStopped) {
  Document small = Small();
  const fs::path file = Save(*small, Format("dae"));
  const std::string before = ReadAll(file);
  int most = 0;
  for (; most < 1000; ++most) {
    StopAt progress(most + 1);
    try {
      Document(ImportScene(file, kFilterObjects | kFilterMaterials, &progress));
      break;
    } catch (const Stopped&) {
    }
  }
  EXPECT_GT(most, 2);
  EXPECT_LT(most, 1000);
  StopAt progress(1);
  EXPECT_THROW(ExportScene(*small, file, Format("dae").id, 0, &progress), Stopped);
  EXPECT_EQ(ReadAll(file), before);
}

// A disk that is full, told by a limit of this process that the writer inherits.
TEST_F(SceneFiles, WhatCannotBeWrittenLeavesTheOldFile) {
  Document small = Small();
  for (const char* extension : {"obj", "dae", "glb", "ply", "stl"}) {
    const fs::path file = folder_.Write(std::string("old.") + extension, "old");
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    rlimit small_{300, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small_);
    const std::string fault = FaultOf([&] { ExportScene(*small, file, Format(extension).id, 0, nullptr); });
    setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_NE(fault.find("File too large"), fault.npos) << fault;
    EXPECT_EQ(ReadAll(file), "old");
    for (const fs::directory_entry& entry : fs::directory_iterator(folder_.Path()))
      EXPECT_TRUE(entry.path().filename().native().starts_with("old.")) << entry.path();
  }
}

// Two faces of a roof: with a phong tag that is not sharp their normals meet half-way.
TEST_F(SceneFiles, SmoothSurfacesAreSavedWithTheirNormals) {
  for (const char* extension : {"obj", "dae", "glb", "ply"}) {
    SCOPED_TRACE(extension);
    Document document = EmptyDocument();
    PolygonObject& roof = AddPolygons(*Branch(*document, kTypeObject), "Roof",
                                      {{0, 0, -1}, {0, 0, 1}, {1, 1, 1}, {1, 1, -1}, {2, 0, 1}, {2, 0, -1}},
                                      {{0, 1, 2, 3}, {3, 2, 4, 5}});
    auto& phong = *New<BaseTag>(*Branch(roof, kTypeTag), kTypePhong, "Phong");
    Put(phong.data, kPhongLimit, Value::Int32(0));
    Document again = Import(Save(*document, Format(extension)));
    const VariableTag* tag = FindBlock(OnlyPolygons(*again), kDataNormal);
    ASSERT_TRUE(tag);
    int upright = 0;
    for (const auto& normals : tag->Items<std::array<int16_t, 12>>())
      for (size_t i = 0; i < 4; ++i) upright += normals[3 * i] == 0 && std::abs(normals[3 * i + 1]) == 32000;
    EXPECT_GE(upright, 4);
    EXPECT_EQ(OnlyPolygons(*again).points.Count(), 6);
  }
}

// Where a format has no hierarchy, any depth is saved; elsewhere none that could not be read again.
TEST_F(SceneFiles, DeepHierarchiesAreRefusedOrFlattened) {
  Document document = EmptyDocument();
  GeListNode* parent = Branch(*document, kTypeObject);
  for (int i = 0; i < 1100; ++i) {
    parent = New<BaseObject>(*parent, id::kNull, "Level");
    static_cast<BaseObject*>(parent)->place.SetLocal({{0, 1, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
  }
  AddPolygons(*parent, "One", {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}}, {{0, 1, 2, 2}});
  for (const char* extension : {"dae", "glb"})
    EXPECT_NE(FaultOf([&] { Save(*document, Format(extension)); }).find("too deep"), std::string::npos);
  Document again = Import(Save(*document, Format("obj")));
  EXPECT_EQ(OnlyPolygons(*again).Points()[0], (Vector{0, 1100, 0}));
}

TEST_F(SceneFiles, WhatNoFileHoldsIsRefused) {
  const auto faultOf = [&](auto change, int32_t format = Format("obj").id, const char* name = "new.obj") {
    Document document = EmptyDocument();
    PolygonObject& object =
        AddPolygons(*Branch(*document, kTypeObject), "One", {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}}, {{0, 1, 2, 2}});
    change(object);
    return FaultOf([&] { ExportScene(*document, folder_.Path() / name, format, 0, nullptr); });
  };
  EXPECT_EQ(faultOf([](PolygonObject&) {}), "no fault");
  EXPECT_NE(faultOf([](PolygonObject& one) { one.Points()[0].x = std::nan(""); }).find("'One'"),
            std::string::npos);
  EXPECT_NE(faultOf([](PolygonObject& one) { one.Points()[0].x = 1e300; }).find("'One'"), std::string::npos);
  EXPECT_NE(faultOf([](PolygonObject& one) { one.Polygons()[0].b = 3; }).find("'One'"), std::string::npos);
  EXPECT_NE(faultOf([](PolygonObject& one) { one.Polygons()[0].c = -1; }).find("'One'"), std::string::npos);
  EXPECT_NE(faultOf([](PolygonObject& one) {
              one.place.SetLocal({{std::nan(""), 0, 0}, {}, {}, {}});
            }),
            "no fault");
  EXPECT_NE(faultOf([](PolygonObject& one) { host::DestroyNow(&one); }).find("no polygons"), std::string::npos);
  EXPECT_NE(faultOf([](PolygonObject&) {}, 1).find("no format 1"), std::string::npos);
  EXPECT_NE(faultOf([](PolygonObject&) {}, Format("obj").id, "missing/new.obj"), "no fault");
}

TEST_F(SceneFiles, NgonsAreCutAndJoined) {
  const auto area = [](const std::vector<Vector>& points, const CPolygon& cut) {
    const auto at = [&](int32_t i) { return points[size_t(i)]; };
    return 0.5 * (kelvar::Cross(at(cut.b) - at(cut.a), at(cut.c) - at(cut.a)).z +
                  kelvar::Cross(at(cut.c) - at(cut.a), at(cut.d) - at(cut.a)).z);
  };
  std::vector<Vector> circle, comb;
  for (int i = 0; i < 2000; ++i) circle.push_back({std::cos(i * M_PI / 1000), std::sin(i * M_PI / 1000), 0});
  for (int i = 0; i < 50; ++i) comb.insert(comb.end(), {{double(i), 0, 0}, {i + 0.9, 0, 0}, {i + 0.95, 9, 0}});
  comb.insert(comb.end(), {{50, 0, 0}, {50, 10, 0}, {0, 10, 0}});
  const std::vector<Vector> same(7), line{{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {3, 0, 0}, {1.5, 0, 0}};
  const std::vector<Vector> star{{0, 3, 0}, {2, -3, 0}, {-3, 1, 0}, {3, 1, 0}, {-2, -3, 0}};
  for (const std::vector<Vector>& corners : {circle, comb, same, line, star}) {
    std::vector<NgonPart> parts;
    CutNgon(corners, parts);
    std::vector<CPolygon> polygons;
    std::vector<uint8_t> inner;
    double sum = 0, whole = 0;
    for (const NgonPart& part : parts) {
      polygons.push_back(part.polygon);
      inner.push_back(part.inner);
      const double one = area(corners, part.polygon);
      if (&corners != &star) {
        EXPECT_TRUE(corners == star || one >= 0) << one;
      }
      sum += one;
    }
    for (size_t i = 0; i < corners.size(); ++i)
      whole += 0.5 * kelvar::Cross(corners[i], corners[(i + 1) % corners.size()]).z;
    EXPECT_NEAR(sum, whole, 1e-9);
    std::vector<Corner> joined;
    std::vector<uint32_t> sizes;
    JoinNgons(polygons, inner, joined, sizes);
    EXPECT_EQ(sizes, std::vector{uint32_t(corners.size())});
  }
}

// Edges that are said to lie inside but don't join polygons leave these alone.
TEST_F(SceneFiles, WrongNgonsStayPolygons) {
  const std::vector<CPolygon> polygons{{0, 1, 2, 3}, {3, 2, 4, 5}, {0, 1, 2, 3}};
  for (const std::vector<uint8_t>& inner :
       {std::vector<uint8_t>{15, 15, 15}, {1, 1, 1}, {4, 0, 0}, {}, {4, 1, 4}, {4, 1}}) {
    std::vector<Corner> corners;
    std::vector<uint32_t> sizes;
    JoinNgons(polygons, inner, corners, sizes);
    EXPECT_EQ(corners.size(), std::accumulate(sizes.begin(), sizes.end(), size_t(0)));
    EXPECT_EQ(sizes.size(), inner.size() > 1 && inner[1] == 1 && inner[0] == 4 ? 2u : 3u);
  }
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
