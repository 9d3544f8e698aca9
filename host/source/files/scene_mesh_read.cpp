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

// What is said of corners, in tags with so many places.
class Corners {
 public:
  Corners(BaseObject& object, const FileScene& scene, const FileNode& node, int32_t polygons) {
    const auto say = [&](int32_t type, auto member) -> VariableTag* {
      const auto has = [&](int32_t mesh) { return !(scene.meshes[size_t(mesh)].*member).empty(); };
      return std::ranges::any_of(node.meshes, has) ? &AddBlock(object, type, polygons) : nullptr;
    };
    uvw_ = say(kDataUVW, &FileMesh::uvw);
    normals_ = say(kDataNormal, &FileMesh::normals);
    colors_ = say(kDataVertexColor, &FileMesh::colors);
  }

  // By the vertices of the file that the corners were.
  void Set(const FileMesh& mesh, size_t polygon, const std::array<uint32_t, 4>& vertices) const {
    if (!mesh.uvw.empty()) {
      auto& uvw = reinterpret_cast<std::array<Vector, 4>&>(uvw_->Items<UVWStruct>()[polygon]);
      for (size_t i = 0; i < 4; ++i) {
        const Vector32& at = mesh.uvw[vertices[i]];
        uvw[i] = {Finite(at.x), 1 - Finite(at.y), Finite(at.z)};
      }
    }
    if (!mesh.normals.empty()) {
      auto& normals = normals_->Items<std::array<int16_t, 12>>()[polygon];
      for (size_t i = 0; i < 4; ++i) {
        const Vector32& normal = mesh.normals[vertices[i]];
        normals[3 * i] = Short(normal.x);
        normals[3 * i + 1] = Short(normal.y);
        normals[3 * i + 2] = int16_t(-Short(normal.z));
      }
    }
    if (!mesh.colors.empty()) {
      auto& colors = colors_->Items<std::array<ColorA32, 4>>()[polygon];
      for (size_t i = 0; i < 4; ++i) colors[i] = mesh.colors[vertices[i]];
    }
  }

  void Resize(int32_t polygons) const {
    for (VariableTag* tag : {uvw_, normals_, colors_})
      if (tag) tag->Resize(polygons);
  }

 private:
  VariableTag *uvw_ = nullptr, *normals_ = nullptr, *colors_ = nullptr;
};

// How many polygons the faces of a mesh become at most.
size_t CountPolygons(const FileMesh& mesh) {
  const auto polygonsOf = [](size_t size) { return size < 3 ? 0 : size < 5 ? 1 : size - 2; };
  if (mesh.sizes.empty()) return mesh.FaceCount() * polygonsOf(mesh.faceSize);
  size_t count = 0;
  for (const uint32_t size : mesh.sizes) count += polygonsOf(size);
  return count;
}

// Fills an object that has its points with the polygons of meshes.
class Polygons {
 public:
  Polygons(PolygonObject& object, const FileScene& scene, const FileNode& node, size_t most)
      : object_(object), most_(most), corners_(object, scene, node, int32_t(most)) {
    object.polygons.Resize(int32_t(most));
  }

  // `points` has the point of each of the mesh's vertices; null: that of the same number.
  void AddMesh(const FileMesh& mesh, const int32_t* points) {
    mesh_ = &mesh;
    points_ = points;
    const size_t faces = mesh.FaceCount();
    for (size_t face = 0, corner = 0; face < faces; ++face) {
      const size_t size = mesh.sizes.empty() ? mesh.faceSize : mesh.sizes[face];
      if (mesh.isInOrder)
        AddFace(size, [&](size_t i) { return uint32_t(corner + i); });
      else
        AddFace(size, [at = mesh.corners.data() + corner](size_t i) { return at[i]; });
      corner += size;
    }
  }

  int32_t Count() const { return int32_t(count_); }

  void Finish() {
    object_.polygons.Resize(Count());
    corners_.Resize(Count());
    inner_.resize(inner_.empty() ? 0 : count_);
    object_.ngonEdges = std::move(inner_);
  }

 private:
  int32_t PointOf(uint32_t vertex) const { return points_ ? points_[vertex] : int32_t(vertex); }

  void Add(const std::array<uint32_t, 4>& of, uint8_t inner = 0) {
    object_.Polygons()[count_] = {PointOf(of[0]), PointOf(of[1]), PointOf(of[2]), PointOf(of[3])};
    corners_.Set(*mesh_, count_, of);
    if (!inner_.empty()) inner_[count_] = inner;
    ++count_;
  }

  // A face of so many vertices, in the file's order; ours goes the other way round from the same one.
  template <class VertexOf>
  void AddFace(size_t size, VertexOf vertexOf) {
    if (size < 3) return;  // a line or a point
    if (size == 3) return Add({vertexOf(0), vertexOf(2), vertexOf(1), vertexOf(1)});
    if (size == 4) return Add({vertexOf(0), vertexOf(3), vertexOf(2), vertexOf(1)});
    const auto at = [&](int32_t i) { return vertexOf(i == 0 ? 0 : size - size_t(i)); };
    ring_.clear();
    parts_.clear();
    for (size_t i = 0; i < size; ++i) ring_.push_back(object_.Points()[size_t(PointOf(at(int32_t(i))))]);
    CutNgon(ring_, parts_);
    if (inner_.empty()) inner_.resize(most_);
    for (const NgonPart& part : parts_) {
      const CPolygon& cut = part.polygon;
      Add({at(cut.a), at(cut.b), at(cut.c), at(cut.d)}, part.inner);
    }
  }

  PolygonObject& object_;
  const size_t most_;
  const Corners corners_;
  std::vector<uint8_t> inner_;
  const FileMesh* mesh_ = nullptr;
  const int32_t* points_ = nullptr;
  size_t count_ = 0;
  std::vector<Vector> ring_;
  std::vector<NgonPart> parts_;
};

struct EndObject {
  void operator()(PolygonObject* object) const { DestroyNow(object); }
};

uint32_t HashOf(const Vector32& point) {
  uint64_t hash = BitsOf(point.x);
  for (const float number : {point.y, point.z})
    hash = (hash * 0x9e3779b97f4a7c15 ^ (hash >> 31)) + BitsOf(number);
  hash *= 0x9e3779b97f4a7c15;
  return uint32_t(hash ^ (hash >> 32));
}

// Numbers places by when they first come.
class Places {
 public:
  // For about so many points, each of which comes a few times.
  explicit Places(size_t points) : slots_(std::bit_ceil(points / 2 + kAtOnce)) {}

  void Number(const Rows<Vector32>& points, int32_t* numbers) {
    std::array<uint32_t, kAtOnce> hashes;
    for (size_t begin = 0; begin < points.size(); begin += kAtOnce) {
      const size_t count = std::min(kAtOnce, points.size() - begin);
      if (2 * (firsts_.size() + count) > slots_.size()) Grow();
      for (size_t i = 0; i < count; ++i)
        __builtin_prefetch(&slots_[(hashes[i] = HashOf(points[begin + i])) & (slots_.size() - 1)]);
      for (size_t i = 0; i < count; ++i) numbers[begin + i] = Find(points[begin + i], hashes[i]);
    }
  }

  // The first point at each place.
  const std::vector<const Vector32*>& Firsts() const { return firsts_; }

 private:
  struct Slot {
    int32_t number = -1;
    uint32_t hash = 0;
  };
  static constexpr size_t kAtOnce = 32;  // memory is told of so many slots ahead of the first look

  int32_t Find(const Vector32& point, uint32_t hash) {
    const auto isOther = [&](const Slot& slot) {
      const Vector32& first = *firsts_[size_t(slot.number)];
      return slot.hash != hash || first.x != point.x || first.y != point.y || first.z != point.z;
    };
    size_t at = hash & (slots_.size() - 1);
    while (slots_[at].number >= 0 && isOther(slots_[at])) at = (at + 1) & (slots_.size() - 1);
    if (slots_[at].number < 0) {
      slots_[at] = {int32_t(firsts_.size()), hash};
      firsts_.push_back(&point);
    }
    return slots_[at].number;
  }

  void Grow() {
    std::vector<Slot> slots(2 * slots_.size());
    for (const Slot& slot : slots_) {
      if (slot.number < 0) continue;
      size_t at = slot.hash & (slots.size() - 1);
      while (slots[at].number >= 0) at = (at + 1) & (slots.size() - 1);
      slots[at] = slot;
    }
    slots_.swap(slots);
  }

  std::vector<Slot> slots_;  // half of them are empty
  std::vector<const Vector32*> firsts_;
};

// Whether a file's points are an object's: its faces share them, and nothing is said of them that a point can't
// have twice.
bool ArePointsOwn(const FileScene& scene, const FileNode& node) {
  if (node.meshes.size() != 1) return false;
  const FileMesh& mesh = scene.meshes[size_t(node.meshes[0])];
  if (mesh.isInOrder || !mesh.normals.empty() || !mesh.uvw.empty() || !mesh.colors.empty()) return false;
  // Lines share points in any case.
  std::vector<bool> isUsed(mesh.points.size());
  bool hasFaces = false;
  size_t first = 0;
  for (size_t face = 0; face < mesh.FaceCount(); ++face) {
    const size_t size = mesh.sizes.empty() ? mesh.faceSize : mesh.sizes[face];
    for (size_t i = first; size > 2 && i < first + size; ++i) {
      if (isUsed[mesh.corners[i]]) return true;
      hasFaces = isUsed[mesh.corners[i]] = true;
    }
    first += size;
  }
  return !hasFaces;
}

}  // namespace

PolygonObject* MakeObject(const FileScene& scene, const FileNode& node, std::vector<int32_t>& firstPolygons) {
  size_t vertices = 0, most = 0;
  for (const int32_t mesh : node.meshes) {
    vertices += scene.meshes[size_t(mesh)].points.size();
    most += CountPolygons(scene.meshes[size_t(mesh)]);
  }
  const bool arePointsOwn = ArePointsOwn(scene, node);
  std::vector<int32_t> numbers(arePointsOwn ? 0 : vertices);  // the point of each vertex
  Places distinct(numbers.size());
  int32_t* ofMesh = numbers.data();
  for (const int32_t mesh : arePointsOwn ? std::span<const int32_t>() : node.meshes) {
    const Rows<Vector32>& points = scene.meshes[size_t(mesh)].points;
    distinct.Number(points, ofMesh);
    ofMesh += points.size();
  }

  const size_t count = arePointsOwn ? vertices : distinct.Firsts().size();
  std::unique_ptr<PolygonObject, EndObject> object(NewPolygonObject(int32_t(count), 0));
  if (!object) throw std::bad_alloc();
  if (arePointsOwn)
    std::ranges::transform(scene.meshes[size_t(node.meshes[0])].points, object->Points().begin(), PointOf);
  else
    std::ranges::transform(distinct.Firsts(), object->Points().begin(),
                           [](const Vector32* point) { return PointOf(*point); });

  Polygons polygons(*object, scene, node, most);
  ofMesh = numbers.data();
  for (const int32_t number : node.meshes) {
    const FileMesh& mesh = scene.meshes[size_t(number)];
    firstPolygons.push_back(polygons.Count());
    polygons.AddMesh(mesh, arePointsOwn ? nullptr : ofMesh);
    ofMesh += arePointsOwn ? 0 : mesh.points.size();
  }
  firstPolygons.push_back(polygons.Count());
  polygons.Finish();
  return object.release();
}

}  // namespace host
