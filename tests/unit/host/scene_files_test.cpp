// How model files are read and saved.
#include <cstdlib>
#include <map>
#include <numeric>

#include "evaluate/evaluate.h"
#include "scene/geometry.h"
#include "scene_files_support.h"

using namespace scene_files;

namespace {

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
      {"with a line", "obj", "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nf 1 2 3\nf 1 3 4\nl 1 2 3\n", 4},
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
  for (const std::string& name :
       {"Twin"s, "Twin"s, "Twin.1"s, "a\nv 9 9 9"s, " "s, ""s, longest, " Twin "s, "Box\\"s})
    AddPolygons(*Branch(*document, kTypeObject), name.c_str(), {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}},
                {{0, 1, 2, 2}});
  Document again = Import(Save(*document, Format("obj")));
  std::vector<std::string> names;
  for (const BaseObject* object : ObjectsOf(*again)) names.push_back(NameOf(*object));
  EXPECT_EQ(names, (std::vector<std::string>{"Twin", "Twin.2", "Twin.1", "a_v 9 9 9", "Object", "Object.1",
                                             longest.substr(0, 1 + 84 * 3), "Twin.3", "Box_"}));
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
      {"mark.obj", "\xef\xbb\xbf" + triangle + "f 1 2 3\n", {"mark"}, 3},
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
  folder_.Write("back\\slash.png");
  for (const char* name : {"*0", "-s 3 1 1.jpg", " leading.jpg", "data:x.png", "back\\slash.png"}) {
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
  EXPECT_EQ(save("named.mtl"), "no fault");
  for (const char* words : {"\nv ", "mtllib named.mtl.mtl"})
    EXPECT_NE(ReadAll(folder_.Path() / "named.mtl").find(words), std::string::npos) << words;
  EXPECT_TRUE(fs::is_regular_file(folder_.Path() / "named.mtl.mtl"));
  EXPECT_NE(save("other/").find("ends in a slash"), std::string::npos);
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

}  // namespace
