#include "scene_files_support.h"

using namespace host;
namespace fs = std::filesystem;

namespace {

class SceneFiles : public Scene {
 protected:
  // A null with a box below it, whose sides have two materials, a plate with an even and a bent face of many
  // corners below that, a camera and a light.
  Document Small() {
    Document document = NewDocument();
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
    file.value.filename = MakeFilename((folder_.Path() / "pictures/wood.png").native());
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
    const std::vector<Vector> places{{0, 0, 0}, {0, 4, 0}, {1, 4, 0}, {1, 1, 0},  {4, 1, 0},  {4, 0, 0},
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

TEST_F(SceneFiles, Explore) {
  Document small = Small();
  auto print = [](const char* title, BaseDocument& d) {
    printf("==== %s\n", title);
    for (BaseObject* o : ObjectsOf(d)) {
      int depth = 0;
      for (GeListNode* n = o->up; n; n = n->up) ++depth;
      const Matrix& m = o->place.Local();
      printf("%*s%s %d off %g %g %g v1 %g %g %g v3 %g %g %g", depth * 2, "", NameOf(*o).c_str(), o->type.id, m.off.x, m.off.y, m.off.z, m.v1.x, m.v1.y, m.v1.z, m.v3.x, m.v3.y, m.v3.z);
      if (auto* p = As<PolygonObject>(o)) printf(" points %d polys %d", p->points.Count(), p->polygons.Count());
      printf("\n");
    }
    GeListHead* mats = FindBranch(d, kTypeMaterial);
    for (auto* m = mats->down; m; m = m->next) printf("  mat %s\n", NameOf(*(BaseList2D*)m).c_str());
    for (auto& f : FacesOf(d, {})) printf("   %s\n", f.c_str());
  };
  print("original", *small);
  for (const SceneFormat& format : SceneFormats()) {
    if (!format.exports) continue;
    try {
      fs::path file = Save(*small, format);
      for (auto& e : fs::directory_iterator(folder_.Path())) printf("%s %d\n", e.path().c_str(), (int)fs::file_size(e.path()));
      Document again = Import(file);
      print(format.extension, *again);
    } catch (const std::exception& e) { printf("%s FAILED %s\n", format.extension, e.what()); }
  }
}

}  // namespace
