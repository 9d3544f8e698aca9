#include <algorithm>
#include <bit>
#include <cmath>
#include <memory>

#include "files/scene_mesh.h"
#include "files/scene_ngon.h"
#include "kelvar/vector.h"
#include "scene/links.h"

namespace host {
namespace {

Vector PointOf(const Vector32& point) { return {point.x, point.y, Mirrored(point.z)}; }

double Finite(float number) { return std::isfinite(number) ? double(number) : 0; }

int16_t Short(float number) { return int16_t(std::lround(std::clamp(Finite(number), -1.0, 1.0) * 32000)); }

// What is said of a corner, by the vertex of the file that it was.
class Corners {
 public:
  Corners(BaseObject& object, const FileScene& scene, const FileNode& node, int32_t polygons) : scene_(scene) {
    const auto say = [&](int32_t type, auto member) -> VariableTag* {
      const auto has = [&](int32_t mesh) { return !(scene.meshes[size_t(mesh)].*member).empty(); };
      return std::ranges::any_of(node.meshes, has) ? &AddBlock(object, type, polygons) : nullptr;
    };
    uvw_ = say(kDataUVW, &FileMesh::uvw);
    normals_ = say(kDataNormal, &FileMesh::normals);
    colors_ = say(kDataVertexColor, &FileMesh::colors);
  }

  void Set(const FileMesh& mesh, size_t polygon, const std::array<uint32_t, 4>& vertices) const {
    if (uvw_ && !mesh.uvw.empty()) {
      auto& uvw = reinterpret_cast<std::array<Vector, 4>&>(uvw_->Items<UVWStruct>()[polygon]);
      for (size_t i = 0; i < 4; ++i) {
        const Vector32& at = mesh.uvw[vertices[i]];
        uvw[i] = {Finite(at.x), 1 - Finite(at.y), Finite(at.z)};
      }
    }
    if (normals_ && !mesh.normals.empty()) {
      auto& normals = normals_->Items<std::array<int16_t, 12>>()[polygon];
      for (size_t i = 0; i < 4; ++i) {
        const Vector32& normal = mesh.normals[vertices[i]];
        normals[3 * i] = Short(normal.x);
        normals[3 * i + 1] = Short(normal.y);
        normals[3 * i + 2] = int16_t(-Short(normal.z));
      }
    }
    if (colors_ && !mesh.colors.empty()) {
      auto& colors = colors_->Items<std::array<ColorA32, 4>>()[polygon];
      for (size_t i = 0; i < 4; ++i) colors[i] = mesh.colors[vertices[i]];
    }
  }

 private:
  const FileScene& scene_;
  VariableTag *uvw_ = nullptr, *normals_ = nullptr, *colors_ = nullptr;
};

// How many polygons the faces of a mesh become at most.
size_t CountPolygons(const FileMesh& mesh) {
  if (mesh.sizes.empty()) return mesh.corners.size() / 3;
  size_t count = 0;
  for (const uint32_t size : mesh.sizes) count += size < 3 ? 0 : size < 5 ? 1 : size - 2;
  return count;
}

// The polygons of all meshes, with the vertices that their corners were.
struct Polygons {
  std::vector<CPolygon> polygons;
  std::vector<std::array<uint32_t, 4>> vertices;
  std::vector<uint8_t> inner;

  void Add(const std::array<uint32_t, 4>& of, const int32_t* points, uint8_t innerEdges = 0) {
    polygons.push_back({points[of[0]], points[of[1]], points[of[2]], points[of[3]]});
    vertices.push_back(of);
    inner.push_back(innerEdges);
  }

  // The corners of a face in the file's order; ours goes the other way round from the same one.
  void AddFace(std::span<const uint32_t> corners, const int32_t* points, std::span<const Vector> places) {
    if (corners.size() < 3) return;  // a line or a point
    if (corners.size() == 3) return Add({corners[0], corners[2], corners[1], corners[1]}, points);
    if (corners.size() == 4) return Add({corners[0], corners[3], corners[2], corners[1]}, points);
    const auto at = [&](int32_t i) { return corners[i == 0 ? 0 : corners.size() - size_t(i)]; };
    ring_.clear();
    parts_.clear();
    for (size_t i = 0; i < corners.size(); ++i) ring_.push_back(places[size_t(points[at(int32_t(i))])]);
    CutNgon(ring_, parts_);
    for (const NgonPart& part : parts_) {
      const CPolygon& cut = part.polygon;
      Add({at(cut.a), at(cut.b), at(cut.c), at(cut.d)}, points, part.inner);
    }
    hasInner = true;
  }

  bool hasInner = false;

 private:
  std::vector<Vector> ring_;
  std::vector<NgonPart> parts_;
};

struct EndObject {
  void operator()(PolygonObject* object) const { DestroyNow(object); }
};

size_t HashOf(const Vector32& point) {
  uint64_t hash = BitsOf(point.x);
  for (const float number : {point.y, point.z})
    hash = (hash * 0x9e3779b97f4a7c15 ^ (hash >> 31)) + BitsOf(number);
  hash *= 0x9e3779b97f4a7c15;
  return size_t(hash ^ (hash >> 32));
}

// Numbers the places of all vertices by when they first come.
void Weld(const FileScene& scene, const FileNode& node, std::vector<int32_t>& points,
          std::vector<const Vector32*>& firsts) {
  std::vector<int32_t> slots(std::bit_ceil(2 * points.size() + 1), -1);
  const size_t mask = slots.size() - 1;
  int32_t* to = points.data();
  for (const int32_t mesh : node.meshes) {
    for (const Vector32& point : scene.meshes[size_t(mesh)].points) {
      size_t at = HashOf(point) & mask;
      const auto isOther = [&](const Vector32& first) {
        return first.x != point.x || first.y != point.y || first.z != point.z;
      };
      while (slots[at] >= 0 && isOther(*firsts[size_t(slots[at])])) at = (at + 1) & mask;
      if (slots[at] < 0) {
        slots[at] = int32_t(firsts.size());
        firsts.push_back(&point);
      }
      *to++ = slots[at];
    }
  }
}

}  // namespace

PolygonObject* MakeObject(const FileScene& scene, const FileNode& node, std::vector<int32_t>& firstPolygons) {
  size_t vertices = 0, most = 0;
  for (const int32_t mesh : node.meshes) {
    vertices += scene.meshes[size_t(mesh)].points.size();
    most += CountPolygons(scene.meshes[size_t(mesh)]);
  }
  std::vector<int32_t> points(vertices);  // the point of each vertex
  std::vector<const Vector32*> firsts;    // the vertex that each point was first
  Weld(scene, node, points, firsts);

  std::unique_ptr<PolygonObject, EndObject> object(NewPolygonObject(int32_t(firsts.size()), 0));
  if (!object) throw std::bad_alloc();
  const std::span<Vector> places = object->Points();
  std::ranges::transform(firsts, places.begin(), [](const Vector32* point) { return PointOf(*point); });

  Polygons made;
  made.polygons.reserve(most);
  made.vertices.reserve(most);
  made.inner.reserve(most);
  const int32_t* pointsOfMesh = points.data();
  for (const int32_t number : node.meshes) {
    const FileMesh& mesh = scene.meshes[size_t(number)];
    firstPolygons.push_back(int32_t(made.polygons.size()));
    const std::span<const uint32_t> corners = mesh.corners;
    const size_t faces = mesh.sizes.empty() ? corners.size() / 3 : mesh.sizes.size();
    for (size_t face = 0, corner = 0; face < faces; ++face) {
      const size_t size = mesh.sizes.empty() ? 3 : mesh.sizes[face];
      made.AddFace(corners.subspan(corner, size), pointsOfMesh, places);
      corner += size;
    }
    pointsOfMesh += mesh.points.size();
  }
  firstPolygons.push_back(int32_t(made.polygons.size()));

  const auto count = int32_t(made.polygons.size());
  object->polygons.Resize(count);
  std::ranges::copy(made.polygons, object->Polygons().begin());
  if (made.hasInner) object->ngonEdges = std::move(made.inner);
  const Corners corners(*object, scene, node, count);
  for (size_t i = 0; i < node.meshes.size(); ++i) {
    const FileMesh& mesh = scene.meshes[size_t(node.meshes[i])];
    for (auto at = size_t(firstPolygons[i]); at < size_t(firstPolygons[i + 1]); ++at)
      corners.Set(mesh, at, made.vertices[at]);
  }
  return object.release();
}

}  // namespace host
