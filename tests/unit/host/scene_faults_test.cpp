// Model files that are refused, and saves that fail.
#include <sys/resource.h>

#include "files/scene_check.h"
#include "files/scene_mesh.h"
#include "scene_files_support.h"

using namespace scene_files;

namespace {

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
           "<scene><instance_visual_scene url=\"#s\"/></scene><extra><technique "
           "profile=\"x\"><p>-1</p></technique></extra></COLLADA>";
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
  std::string returns = ply + "0 0 0\n1 0 0\n1 1 0\n3 0 1 x\n";
  std::ranges::replace(returns, '\n', '\r');
  const std::string named =
      "solid a\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\nendloop\nendfacet\n"
      "endsolid facet\n";
  EXPECT_EQ(CountPolygons(*Import(folder_.Write("named.stl", named))), 1u);
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
      {"word.ply", ply + "0 0 0\n1 0 0\n1 1 0\n3 0 1 x\n", "it is no whole .ply file"},
      {"beyond.ply", ply + "0 0 0\n1 0 0\n1 1 0\n3 0 1 4294967298\n", "it is no whole .ply file"},
      {"row.ply", ply + "0 0 0\n1 0\n1 1 0\n3 0 1 2\n", "it is no whole .ply file"},
      {"returns.ply", returns, "it is no whole .ply file"},
      {"blank.ply", "ply \r" + returns.substr(4), "it is no whole .ply file"},
      {"strips.ply",
       points.substr(0, points.find("end_header")) +
           "element tristrips 1\nproperty list int int vertex_indices\nend_header\n",
       "triangle strips"},
      {"types.ply", "ply\nformat ascii 1.0\nelement vertex 1\nproperty int64 x\nend_header\n1\n",
       "type 'int64'"},
      {"version.glb", whole.substr(0, 4) + "\x09" + whole.substr(5), "it is no whole .glb file"},
      {"empty.stl", "solid x\nendsolid x\n", "there is nothing in it"},
      {"points.obj", "o One\nv 0 0 0\nv 1 0 0\n", "none of its objects has a face"},
      {"below.dae", collada("0 1 -1"), noPoint},
      {"beyond.dae", collada("0 1 4294967295"), noPoint},
      {"comment.dae", collada("<!-- x -->0 1 -1"), noPoint},
      {"data.dae", collada("<![CDATA[0 1 -1]]>"), noPoint},
      {"entity.dae", collada("0 1 &#45;1"), noPoint},
      {"word.dae", collada("0 1 x"), noPoint},
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
  const std::string longest(199, 'x');
  EXPECT_EQ(host::FaultOf("a", longest + "\u20ac").what(), "a: " + longest + "...");
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
  // While the scene is built, too: nobody comes to the fault in it.
  PolygonObject& large =
      AddPolygons(*Branch(*small, kTypeObject), "Large", {{std::nan(""), 0, 0}}, std::vector<CPolygon>(10000));
  EXPECT_THROW(ExportScene(*small, file, Format("dae").id, 0, &(progress = StopAt(1))), Stopped);
  large.Points()[0].x = 0;
  int turns = 0;
  MakeMeshes(large, {}, {}, [&] { ++turns; });
  EXPECT_GE(turns, 5);
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

}  // namespace
