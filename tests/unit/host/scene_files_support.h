// Documents of a few objects, and what is compared of documents.
#ifndef TESTS_UNIT_HOST_SCENE_FILES_SUPPORT_H
#define TESTS_UNIT_HOST_SCENE_FILES_SUPPORT_H

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#include "files/scene_files.h"
#include "files/scene_ids.h"
#include "files/scene_ngon.h"
#include "kelvar/matrix.h"
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

#endif
