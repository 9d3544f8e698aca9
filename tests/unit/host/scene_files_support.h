// Documents of a few objects, and what is compared of documents.
#ifndef TESTS_UNIT_HOST_SCENE_FILES_SUPPORT_H
#define TESTS_UNIT_HOST_SCENE_FILES_SUPPORT_H

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#include "files/scene_check.h"
#include "files/scene_files.h"
#include "files/scene_ids.h"
#include "files/scene_ngon.h"
#include "kelvar/matrix.h"
#include "scene/geometry.h"
#include "scene/object.h"
#include "scene_support.h"

struct EndDocument {
  void operator()(BaseDocument* document) const { host::DestroyNow(document); }
};
using Document = std::unique_ptr<BaseDocument, EndDocument>;

inline Document EmptyDocument() {
  return Document(static_cast<BaseDocument*>(host::NewNode(*host::FindType(host::kTypeDocument))));
}

inline Document Import(const std::filesystem::path& file) {
  return Document(host::ImportScene(file, host::kFilterObjects | host::kFilterMaterials, nullptr));
}

// All objects below a node, parents first.
inline std::vector<BaseObject*> ObjectsOf(GeListNode& root) {
  std::vector<BaseObject*> objects;
  host::Walk(
      root,
      [&](GeListNode& node) {
        if (auto* object = host::As<BaseObject>(&node)) objects.push_back(object);
      },
      true, false);
  return objects;
}
inline std::vector<BaseObject*> ObjectsOf(BaseDocument& document) {
  return ObjectsOf(*host::FindBranch(document, host::kTypeObject));
}

inline std::string NameOf(const BaseList2D& element) { return std::string(std::string_view(element.name)); }

inline BaseObject* FindObject(BaseDocument& document, std::string_view name) {
  for (BaseObject* object : ObjectsOf(document))
    if (object->name == name) return object;
  return nullptr;
}

inline PolygonObject& AddPolygons(GeListNode& parent, const char* name, const std::vector<Vector>& points,
                                  const std::vector<CPolygon>& polygons) {
  PolygonObject& made = *host::NewPolygonObject(int32_t(points.size()), int32_t(polygons.size()));
  std::ranges::copy(points, made.Points().begin());
  std::ranges::copy(polygons, made.Polygons().begin());
  made.name = name;
  host::Append(made, parent);
  return made;
}

// The name of the material that lies on each polygon.
inline std::vector<std::string> MaterialsOf(const PolygonObject& object) {
  std::vector<std::string> materials(size_t(object.polygons.Count()));
  const GeListHead* tags = host::FindBranch(object, host::kTypeTag);
  for (const GeListNode* tag = tags ? tags->down : nullptr; tag; tag = tag->next) {
    if (tag->type.id != host::id::kTexture) continue;
    const auto& data = static_cast<const BaseTag*>(tag)->data;
    const auto* material = static_cast<const BaseMaterial*>(GoalOf(data, host::id::kTextureMaterial));
    const HostGeData* restriction = host::container::FindData(&data, host::id::kTextureRestriction);
    const std::string_view name = restriction ? host::View(&restriction->value.string) : "";
    std::vector<host::Run> runs{{0, object.polygons.Count() - 1}};
    if (!name.empty())
      for (const GeListNode* other = tags->down; other; other = other->next)
        if (const auto* selection = host::As<SelectionTag>(other); selection && selection->name == name)
          runs = selection->selection.runs;
    for (const host::Run& run : runs)
      for (int32_t i = run.first; i <= run.last; ++i) materials[size_t(i)] = NameOf(*material);
  }
  return materials;
}

struct Facets {
  bool names = true, materials = true, uvw = true, global = false;
};

// Each face as a text: whose it is, its material, and its corners from the least on. In any order they are
// another face.
inline std::multiset<std::string> FacesOf(BaseDocument& document, Facets with) {
  std::multiset<std::string> faces;
  const auto rounded = [](double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3f ", std::abs(number) < 5e-4 ? 0.0 : number);
    return std::string(text);
  };
  for (BaseObject* one : ObjectsOf(document)) {
    const auto* object = host::As<PolygonObject>(one);
    if (!object) continue;
    const Matrix matrix = with.global ? host::GlobalMatrix(*object) : kIdentityMatrix;
    const std::vector<std::string> materials = MaterialsOf(*object);
    const VariableTag* uvw = host::FindBlock(*object, host::kDataUVW);
    std::vector<host::Corner> corners;
    std::vector<uint32_t> sizes;
    host::JoinNgons(object->Polygons(), object->ngonEdges, corners, sizes);
    const host::Corner* corner = corners.data();
    for (const uint32_t size : sizes) {
      std::string head = with.names ? NameOf(*object) + ": " : "";
      if (with.materials) head += materials[size_t(corner->polygon)] + ": ";
      std::vector<std::string> texts;
      for (uint32_t i = 0; i < size; ++i, ++corner) {
        const int32_t point = host::CornerOf(object->Polygons()[size_t(corner->polygon)], corner->corner);
        const Vector at = kelvar::Transformed(matrix, object->Points()[size_t(point)]);
        std::string text = "(" + rounded(at.x) + rounded(at.y) + rounded(at.z);
        if (with.uvw && uvw) {
          const auto& all = uvw->Items<UVWStruct>()[size_t(corner->polygon)];
          const Vector& u = (&all.a)[corner->corner];
          text += "uv " + rounded(u.x) + rounded(u.y);
        }
        texts.push_back(text + ")");
      }
      std::ranges::rotate(texts, std::ranges::min_element(texts));
      for (const std::string& text : texts) head += text;
      faces.insert(head);
    }
  }
  return faces;
}

namespace scene_files {

using namespace host;
using namespace std::string_literals;
namespace fs = std::filesystem;

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

inline std::string FaultOf(const auto& work) {
  try {
    work();
  } catch (const FileFault& fault) {
    return fault.what();
  }
  return "no fault";
}

inline std::string ReadAll(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

inline const SceneFormat& Format(std::string_view extension) { return *FindFormat(extension); }

inline const PolygonObject& OnlyPolygons(BaseDocument& document) {
  const std::vector<BaseObject*> objects = ObjectsOf(document);
  EXPECT_EQ(objects.size(), 1u);
  return dynamic_cast<PolygonObject&>(*objects.at(0));
}

inline size_t CountPoints(BaseDocument& document) {
  size_t points = 0;
  for (BaseObject* object : ObjectsOf(document))
    if (const auto* mesh = As<PolygonObject>(object)) points += size_t(mesh->points.Count());
  return points;
}

inline size_t CountPolygons(BaseDocument& document) {
  size_t polygons = 0;
  for (BaseObject* object : ObjectsOf(document))
    if (const auto* mesh = As<PolygonObject>(object)) polygons += size_t(mesh->polygons.Count());
  return polygons;
}

inline Box WorldBox(BaseDocument& document) {
  Box box;
  for (BaseObject* object : ObjectsOf(document))
    if (const auto* mesh = As<PolygonObject>(object))
      for (const Vector& point : mesh->Points()) box.Add(kelvar::Transformed(GlobalMatrix(*object), point));
  return box;
}

inline std::set<std::string> TextureNames(BaseDocument& document) {
  std::set<std::string> names;
  Walk(*FindBranch(document, kTypeMaterial), [&](GeListNode& node) {
    if (node.type.id != id::kBitmap) return;
    const HostGeData* file = container::FindData(&static_cast<BaseShader&>(node).data, id::kBitmapFile);
    names.insert(fs::path(View(&file->value.filename)).filename());
  });
  return names;
}

inline std::vector<std::string> MaterialNames(BaseDocument& document) {
  std::vector<std::string> names;
  for (GeListNode* node = FindBranch(document, kTypeMaterial)->down; node; node = node->next)
    names.push_back(NameOf(static_cast<BaseMaterial&>(*node)));
  std::ranges::sort(names);
  return names;
}

inline double Number(const BaseList2D& element, int32_t parameter) {
  const HostGeData* value = container::FindData(&element.data, parameter);
  return value->type == HOST_DATA_FLOAT ? value->value.real : double(value->value.integer);
}

}  // namespace scene_files

#endif
