// Objects, what they are made of, and the tags and selections that hold it.
#ifndef HOST_SCENE_OBJECT_H
#define HOST_SCENE_OBJECT_H

#include <array>
#include <cstddef>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "scene/atom.h"
#include "scene/placement.h"
#include "scene/select.h"

namespace host {

// The data types of blocks, which are the types of their tags.
enum DataType : int32_t {
  kDataPoint = 5600,            // Vector
  kDataPolygon = 5604,          // CPolygon
  kDataTangent = 5617,          // Tangent
  kDataUVW = 5671,              // UVWStruct
  kDataSegment = 5672,          // HostSegment
  kDataVertexMap = 5682,        // float
  kDataNormal = 5711,           // four corners of three int16_t, 32000 for 1
  kDataVertexColor = 431000045  // four ColorA32, or of points the first of each
};

enum ObjectType : int32_t {
  kTypePolygonObject = 5100,
  kTypeSplineObject = 5101,
  kTypeLineObject = 5137,
  kTypePointObject = 5156
};

enum SplineParameter : int32_t { kSplineType = 1000, kSplineClosed = 1001 };
constexpr int32_t kSplineBezier = 4;

// The list of what an object made when it was evaluated. No one but the host looks into it.
constexpr int32_t kCacheBranch = -1;
constexpr int32_t kDeformBranch = -2;  // what deformers made of its points
constexpr int32_t kIsoparmBranch = -3;

// An axis-aligned box; empty while `low` is above `high`.
struct Box {
  Vector low{1, 1, 1}, high{-1, -1, -1};
  bool IsEmpty() const { return low.x > high.x; }
  void Add(const Vector& point);
  void Add(const Box& box, const Matrix& matrix);
};

struct Evaluation;  // evaluate/evaluation.h

}  // namespace host

struct VariableTag : BaseTag {
  explicit VariableTag(const host::NodeType& ofType);

  int32_t Count() const { return int32_t(bytes.size() / elementSize); }
  // New elements are all zero. Throws std::bad_alloc without a change.
  void Resize(int32_t count);
  // Of the type's own elements.
  template <class Item>
  std::span<Item> Items() {
    return {reinterpret_cast<Item*>(bytes.data()), bytes.size() / sizeof(Item)};
  }
  template <class Item>
  std::span<const Item> Items() const {
    return {reinterpret_cast<const Item*>(bytes.data()), bytes.size() / sizeof(Item)};
  }

  void CopyOwn(BaseList2D& to) const override;
  bool WriteOwn(HyperFile& file) const override;
  bool ReadOwn(HyperFile& file) override;

  const uint32_t elementSize;
  std::vector<std::byte> bytes;
};

struct SelectionTag : BaseTag {
  using BaseTag::BaseTag;
  void CopyOwn(BaseList2D& to) const override;
  bool WriteOwn(HyperFile& file) const override;
  bool ReadOwn(HyperFile& file) override;

  BaseSelect selection;
};

struct BaseObject : BaseList2D {
  explicit BaseObject(const host::NodeType& ofType);
  ~BaseObject() override;

  bool GetOwn(int32_t parameter, host::Value& value) const override;
  bool SetOwn(int32_t parameter, const HostGeData& value) override;
  void CopyOwn(BaseList2D& to) const override;
  bool WriteOwn(HyperFile& file) const override;
  bool ReadOwn(HyperFile& file) override;

  // The box of the geometry that the object itself has; empty for none.
  virtual host::Box OwnBox() const { return {}; }
  // How often its selections were changed by others.
  virtual uint32_t SelectionChanges() const { return 0; }

  host::ObjectPlace place;
  std::unique_ptr<Matrix> axis;  // of tools, in the object's system
  uint32_t uniqueIP = 0;
  int64_t inputOf = 0;         // the generator above that it is the input of, in place of being seen; 0: none
  bool turnsShortest = false;  // IsQuaternionRotationMode
  const int64_t number;        // GetGUID
  std::unique_ptr<host::Evaluation> evaluation;  // null while it was not evaluated
};

struct PointObject : BaseObject {
  explicit PointObject(const host::NodeType& ofType);

  host::Box OwnBox() const override;
  uint32_t SelectionChanges() const override { return uint32_t(selected.dirty) + uint32_t(hidden.dirty); }
  void CopyOwn(BaseList2D& to) const override;
  bool WriteOwn(HyperFile& file) const override;
  bool ReadOwn(HyperFile& file) override;

  std::span<Vector> Points() { return points.Items<Vector>(); }
  std::span<const Vector> Points() const { return std::as_const(points).Items<Vector>(); }

  VariableTag& points;  // stands in the list of tags and stays there
  BaseSelect selected, hidden;
};

struct PolygonObject : PointObject {
  explicit PolygonObject(const host::NodeType& ofType);

  uint32_t SelectionChanges() const override;
  void CopyOwn(BaseList2D& to) const override;
  bool WriteOwn(HyperFile& file) const override;
  bool ReadOwn(HyperFile& file) override;

  std::span<CPolygon> Polygons() { return polygons.Items<CPolygon>(); }
  std::span<const CPolygon> Polygons() const { return std::as_const(polygons).Items<CPolygon>(); }

  VariableTag& polygons;
  BaseSelect selectedPolygons, hiddenPolygons, selectedEdges, hiddenEdges, phongBreak;
  std::vector<uint8_t> ngonEdges;  // which edges of each polygon lie inside an n-gon; empty: none of them
};

// The tangents are a tag of the type kDataTangent that is there for a Bezier spline only.
struct SplineObject : PointObject {
  explicit SplineObject(const host::NodeType& ofType);

  host::Box OwnBox() const override;  // of the curve

  bool WriteOwn(HyperFile& file) const override;
  bool ReadOwn(HyperFile& file) override;

  std::span<HostSegment> Segments() { return segments.Items<HostSegment>(); }
  std::span<const HostSegment> Segments() const { return std::as_const(segments).Items<HostSegment>(); }

  VariableTag& segments;
};

struct LineObject : PointObject {
  explicit LineObject(const host::NodeType& ofType);

  bool WriteOwn(HyperFile& file) const override;
  bool ReadOwn(HyperFile& file) override;

  VariableTag& segments;
};

namespace host {

// The block of an object; null where it has none. The const one of a const object.
VariableTag* FindBlock(const BaseObject& object, int32_t type);

// Whether objects like that have a block of the type which stays with them: there is no other of it then.
bool HasFixedBlock(const QLXAtom& owner, int32_t type);

// A new tag of that type with so many zero elements, behind the object's last one.
VariableTag& AddBlock(BaseObject& object, int32_t type, int32_t count);

// A new object of those types, which are always there.
PolygonObject* NewPolygonObject(int32_t points, int32_t polygons);
SplineObject* NewSplineObject(int32_t points, int32_t interpolation);
LineObject* NewLineObject(int32_t points, int32_t segments);

// From the object to the world. The cache of a generator stands in the generator.
Matrix GlobalMatrix(const BaseObject& object);
Matrix UpMatrix(const BaseObject& object);

// The object as deformers left it, or itself.
const BaseObject& ShapeOf(const BaseObject& object);

// The box of the object's own geometry and, of a generator, of what it made last; in the object's system.
Box BoxOf(const BaseObject& object);

}  // namespace host

#endif
