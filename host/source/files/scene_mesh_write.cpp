#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <stdexcept>

#include "boundary/host.h"
#include "files/scene_ids.h"
#include "files/scene_mesh.h"
#include "files/scene_ngon.h"
#include "kelvar/vector.h"

namespace host {
namespace {

constexpr size_t kBetweenTurns = 4096;  // faces or points

struct GiveBack {
  void operator()(Vector32* items) const { general::Free(items); }
};

using PhongNormals = std::unique_ptr<Vector32[], GiveBack>;

struct Attributes {
  const VariableTag *uvw, *colors;
  PhongNormals normals;  // four a polygon, or null
  bool isColorOfPoints;
};

Vector FlatNormal(const PolygonObject& object, const CPolygon& polygon) {
  const auto points = object.Points();
  const auto at = [&](int32_t point) { return points[size_t(point)]; };
  return kelvar::Normalized(kelvar::Cross(at(polygon.c) - at(polygon.a), at(polygon.d) - at(polygon.b)) +
                            kelvar::Cross(at(polygon.b) - at(polygon.a), at(polygon.c) - at(polygon.a)));
}

// One mesh under way. A vertex is a point with all that is said of it at a corner.
class Writer {
 public:
  Writer(const PolygonObject& object, const Attributes& attributes, bool flatNormals, size_t corners)
      : object_(object), attributes_(attributes), flatNormals_(flatNormals && !attributes.normals) {
    vertices_.Reserve(corners);
  }

  void Add(const Corner& corner) {
    const CPolygon& polygon = object_.Polygons()[size_t(corner.polygon)];
    const int32_t point = CornerOf(polygon, corner.corner);
    Vertex vertex{.point = point};
    const auto slot = size_t(corner.corner);
    if (attributes_.uvw) {
      const auto& at = reinterpret_cast<const std::array<Vector, 4>&>(
          attributes_.uvw->Items<UVWStruct>()[size_t(corner.polygon)])[slot];
      vertex.uvw = {float(at.x), float(1 - at.y), float(at.z)};
    }
    if (attributes_.normals) {
      const Vector32& normal = attributes_.normals[4 * size_t(corner.polygon) + slot];
      vertex.normal = {normal.x, normal.y, float(Mirrored(normal.z))};
    } else if (flatNormals_) {
      const Vector normal = FlatNormal(object_, polygon);
      vertex.normal = {float(normal.x), float(normal.y), float(Mirrored(normal.z))};
    }
    if (attributes_.colors) {
      const auto colors = attributes_.colors->Items<std::array<ColorA32, 4>>();
      vertex.color =
          attributes_.isColorOfPoints ? colors[size_t(point)][0] : colors[size_t(corner.polygon)][slot];
    }
    Distinct<kWords>::Row row;
    std::memcpy(row.data(), &vertex, sizeof vertex);
    const int32_t number = vertices_.Add(row);
    if (size_t(number) == made_.size()) made_.push_back(vertex);
    corners_.push_back(uint32_t(number));
  }

  void EndFace(uint32_t size) { sizes_.push_back(size); }

  // Vertices stand in the order of their points, so that a reader finds that again.
  FileMesh Finish(const std::function<void()>& turn) {
    std::vector<Vector32> points, uvw, normals;
    std::vector<ColorA32> colors;
    std::vector<uint32_t> order(made_.size()), place(made_.size());
    for (size_t i = 0; i < order.size(); ++i) order[i] = uint32_t(i);
    std::ranges::stable_sort(order, {}, [&](uint32_t i) { return made_[i].point; });
    for (size_t i = 0; i < order.size(); ++i) {
      if (i % kBetweenTurns == 0) turn();
      const Vertex& vertex = made_[order[i]];
      place[order[i]] = uint32_t(i);
      const Vector& point = object_.Points()[size_t(vertex.point)];
      points.push_back({float(point.x), float(point.y), float(Mirrored(point.z))});
      if (attributes_.uvw) uvw.push_back(vertex.uvw);
      if (attributes_.normals || flatNormals_) normals.push_back(vertex.normal);
      if (attributes_.colors) colors.push_back(vertex.color);
    }
    for (uint32_t& corner : corners_) corner = place[corner];
    if (std::ranges::all_of(sizes_, [](uint32_t size) { return size == 3; })) sizes_ = {};
    FileMesh mesh;
    mesh.points = std::move(points);
    mesh.uvw = std::move(uvw);
    mesh.normals = std::move(normals);
    mesh.colors = std::move(colors);
    mesh.sizes = std::move(sizes_);
    mesh.corners = std::move(corners_);
    return mesh;
  }

 private:
  struct Vertex {
    int32_t point;
    Vector32 uvw, normal;
    ColorA32 color;
  };
  static constexpr size_t kWords = sizeof(Vertex) / sizeof(uint32_t);

  const PolygonObject& object_;
  const Attributes& attributes_;
  const bool flatNormals_;
  Distinct<kWords> vertices_;
  std::vector<Vertex> made_;
  std::vector<uint32_t> corners_, sizes_;
};

void Check(const PolygonObject& object) {
  const std::string_view name = object.name;
  for (const Vector& point : object.Points())
    if (!std::isfinite(float(point.x)) || !std::isfinite(float(point.y)) || !std::isfinite(float(point.z)))
      throw std::runtime_error(fmt::format("'{}' has a point at a place that no file can hold", name));
  const int32_t points = object.points.Count();
  for (const CPolygon& polygon : object.Polygons())
    for (int32_t corner = 0; corner < 4; ++corner)
      if (const int32_t point = CornerOf(polygon, corner); point < 0 || point >= points)
        throw std::runtime_error(fmt::format("'{}' has a polygon with a corner that is no point", name));
}

// Both ways to cut a quadrangle are fine unless one leaves a part that looks back.
void AddTriangles(const PolygonObject& object, int32_t number, std::vector<Corner>& corners,
                  std::vector<uint32_t>& sizes) {
  const CPolygon& polygon = object.Polygons()[size_t(number)];
  const auto add = [&](int32_t a, int32_t b, int32_t c) {
    corners.insert(corners.end(), {{number, a}, {number, b}, {number, c}});
    sizes.push_back(3);
  };
  if (CornerCount(polygon) == 3) return add(0, 1, 2);
  const auto points = object.Points();
  const Vector &a = points[size_t(polygon.a)], &b = points[size_t(polygon.b)], &c = points[size_t(polygon.c)],
               &d = points[size_t(polygon.d)];
  const bool isFolded = kelvar::Dot(kelvar::Cross(b - a, c - a), kelvar::Cross(c - a, d - a)) < 0;
  if (!isFolded) {
    add(0, 1, 2);
    add(0, 2, 3);
  } else {
    add(0, 1, 3);
    add(1, 2, 3);
  }
}

const VariableTag* BlockOf(const PolygonObject& object, int32_t type, int32_t count) {
  const VariableTag* block = FindBlock(object, type);
  return block && block->Count() >= count ? block : nullptr;
}

bool IsColorOfPoints(const VariableTag* colors) {
  if (!colors) return false;
  const HostGeData* value = container::FindData(&colors->data, id::kColorOfPoints);
  return value && value->type == HOST_DATA_INT32 && value->value.integer;
}

}  // namespace

std::vector<FileMesh> MakeMeshes(const PolygonObject& object, const std::vector<int32_t>& materials,
                                 MeshStyle style, const std::function<void()>& turn) {
  turn();
  Check(object);
  const int32_t count = object.polygons.Count();
  std::vector<Corner> corners;
  std::vector<uint32_t> sizes;
  if (style.triangles)
    for (int32_t i = 0; i < count; ++i) AddTriangles(object, i, corners, sizes);
  else
    JoinNgons(object.Polygons(), object.ngonEdges, corners, sizes);
  turn();

  Attributes attributes{.uvw = BlockOf(object, kDataUVW, count),
                        .colors = FindBlock(object, kDataVertexColor),
                        .normals = PhongNormals(polygonobject::CreatePhongNormals(&object)),
                        .isColorOfPoints = false};
  turn();
  attributes.isColorOfPoints = IsColorOfPoints(attributes.colors);
  if (attributes.colors &&
      attributes.colors->Count() < (attributes.isColorOfPoints ? object.points.Count() : count))
    attributes.colors = nullptr;

  std::map<int32_t, std::vector<std::pair<size_t, uint32_t>>> faces;  // by material: first corner and size
  size_t at = 0;
  for (const uint32_t size : sizes) {
    const auto polygon = size_t(corners[at].polygon);
    faces[polygon < materials.size() ? materials[polygon] : -1].emplace_back(at, size);
    at += size;
  }
  std::vector<FileMesh> meshes;
  for (const auto& [material, some] : faces) {
    size_t total = 0;
    for (const auto& [first, size] : some) total += size;
    Writer writer(object, attributes, style.normals, total);
    for (size_t done = 0; const auto& [first, size] : some) {
      if (++done % kBetweenTurns == 0) turn();
      writer.EndFace(size);
      // The other way round from the same corner.
      writer.Add(corners[first]);
      for (size_t i = size; i-- > 1;) writer.Add(corners[first + i]);
    }
    meshes.push_back(writer.Finish(turn));
    meshes.back().material = material;
  }
  return meshes;
}

}  // namespace host
