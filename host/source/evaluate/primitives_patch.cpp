// Primitives of flat or bent patches that share the points of their edges.

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <numbers>
#include <utility>

#include "evaluate/primitives_shapes.h"
#include "kelvar/vector.h"

namespace host {
namespace {

constexpr double kPi = std::numbers::pi;

double& Component(Vector& vector, int axis) { return axis == 0 ? vector.x : axis == 1 ? vector.y : vector.z; }
double Component(const Vector& vector, int axis) { return Component(const_cast<Vector&>(vector), axis); }

constexpr std::array<Vector, 3> kWholePicture = {{{0, 1, 0}, {1, 1, 0}, {0.5, 0, 0}}};

class Patches {
 public:
  // The point of that number; patches that name the same numbers are joined along their edges.
  int32_t Corner(int32_t number, const Vector& position) {
    const auto [at, isNew] = corners_.try_emplace(number, int32_t(mesh.points.size()));
    if (isNew) mesh.points.push_back(position);
    return at->second;
  }

  // The next patch is joined to none of those before.
  void Separate() {
    corners_.clear();
    edges_.clear();
  }

  // A grid. Seen from outside its corners are at the left and right below, the right and left above; `at` tells
  // the place for how far to the right and up it is. One between edges that are the same has no width.
  template <class At>
  void Quad(const std::array<int32_t, 4>& corner, int32_t across, int32_t up, const At& at) {
    if (corner[0] == corner[1] || corner[0] == corner[3]) return;
    MakeRoom(size_t(across) * size_t(up));
    const auto& below = Edge(corner[0], corner[1], across, [&](double t) { return at(t, 0); });
    const auto& above = Edge(corner[3], corner[2], across, [&](double t) { return at(t, 1); });
    const auto& left = Edge(corner[0], corner[3], up, [&](double t) { return at(0, t); });
    const auto& right = Edge(corner[1], corner[2], up, [&](double t) { return at(1, t); });
    const int32_t inner = int32_t(mesh.points.size());
    for (int32_t j = 1; j < up; ++j)
      for (int32_t i = 1; i < across; ++i) mesh.points.push_back(at(double(i) / across, double(j) / up));
    const auto point = [&](int32_t i, int32_t j) {
      if (j == 0) return below[i];
      if (j == up) return above[i];
      if (i == 0) return left[j];
      return i == across ? right[j] : inner + (j - 1) * (across - 1) + i - 1;
    };
    const auto uv = [&](int32_t i, int32_t j) { return Vector{double(i) / across, 1 - double(j) / up, 0}; };
    for (int32_t j = 0; j < up; ++j)
      for (int32_t i = 0; i < across; ++i)
        Add({point(i, j), point(i, j + 1), point(i + 1, j + 1), point(i + 1, j)},
            {uv(i, j), uv(i, j + 1), uv(i + 1, j + 1), uv(i + 1, j)});
  }

  // Triangles in rows. Seen from outside its corners are at the left and right below, and above, as those of
  // the picture; `at` tells the place for how near to the right and the upper one it is.
  template <class At>
  void Triangle(const std::array<int32_t, 3>& corner, int32_t steps, const At& at,
                const std::array<Vector, 3>& picture = kWholePicture) {
    MakeRoom(size_t(steps) * size_t(steps));
    const auto& below = Edge(corner[0], corner[1], steps, [&](double t) { return at(t, 0); });
    const auto& left = Edge(corner[0], corner[2], steps, [&](double t) { return at(0, t); });
    const auto& right = Edge(corner[1], corner[2], steps, [&](double t) { return at(1 - t, t); });
    const int32_t inner = int32_t(mesh.points.size());
    for (int32_t j = 1; j < steps; ++j)
      for (int32_t i = 1; i + j < steps; ++i) mesh.points.push_back(at(double(i) / steps, double(j) / steps));
    const auto point = [&](int32_t i, int32_t j) {
      if (j == 0) return below[i];
      if (i == 0) return left[j];
      if (i + j == steps) return right[j];
      // The rows below have steps - 2, steps - 3, ... points inside.
      return inner + (j - 1) * (steps - 2) - (j - 1) * (j - 2) / 2 + i - 1;
    };
    const auto uv = [&](int32_t i, int32_t j) {
      return picture[0] + (picture[1] - picture[0]) * (double(i) / steps) +
             (picture[2] - picture[0]) * (double(j) / steps);
    };
    const auto add = [&](std::pair<int, int> a, std::pair<int, int> b, std::pair<int, int> c) {
      const int32_t last = point(c.first, c.second);
      const Vector at = uv(c.first, c.second);
      Add({point(a.first, a.second), point(b.first, b.second), last, last},
          {uv(a.first, a.second), uv(b.first, b.second), at, at});
    };
    for (int32_t j = 0; j < steps; ++j)
      for (int32_t i = 0; i + j < steps; ++i) {
        add({i, j}, {i, j + 1}, {i + 1, j});
        if (i + j + 1 < steps) add({i + 1, j}, {i, j + 1}, {i + 1, j + 1});
      }
  }

  void Add(const CPolygon& polygon, const UVWStruct& uvw) {
    mesh.polygons.push_back(polygon);
    mesh.uvw.push_back(uvw);
  }

  Mesh mesh;

 private:
  // For that many more polygons: large ones are not moved about.
  void MakeRoom(size_t polygons) {
    const size_t wanted = mesh.polygons.size() + polygons;
    if (wanted <= mesh.polygons.capacity()) return;
    const size_t room = std::max(wanted, 2 * mesh.polygons.capacity());
    mesh.points.reserve(room);
    mesh.polygons.reserve(room);
    mesh.uvw.reserve(room);
  }

  // The points from one corner to another one; `at` tells those between, unless a patch has made them already.
  template <class At>
  const std::vector<int32_t>& Edge(int32_t from, int32_t to, int32_t steps, const At& at) {
    const auto [found, isNew] = edges_.try_emplace({from, to});
    std::vector<int32_t>& points = found->second;
    if (!isNew) return points;
    if (const auto back = edges_.find({to, from}); back != edges_.end() && from != to)
      return points.assign(back->second.rbegin(), back->second.rend()), points;
    points.assign(size_t(steps) + 1, from);
    points.back() = to;
    for (int32_t i = 1; i < steps; ++i) {
      points[i] = int32_t(mesh.points.size());
      mesh.points.push_back(at(double(i) / steps));
    }
    return points;
  }

  std::map<int32_t, int32_t> corners_;
  std::map<std::pair<int32_t, int32_t>, std::vector<int32_t>> edges_;
};

// A side of a box: where it looks, and what is up and to the right for who looks at it.
struct Side {
  int axis;
  Vector normal, right, up;
};

constexpr Side kSides[] = {
    {0, {1, 0, 0}, {0, 0, 1}, {0, 1, 0}},  {0, {-1, 0, 0}, {0, 0, -1}, {0, 1, 0}},
    {1, {0, 1, 0}, {1, 0, 0}, {0, 0, 1}},  {1, {0, -1, 0}, {1, 0, 0}, {0, 0, -1}},
    {2, {0, 0, 1}, {-1, 0, 0}, {0, 1, 0}}, {2, {0, 0, -1}, {1, 0, 0}, {0, 1, 0}},
};
constexpr const Side& kTopSide = kSides[2];

Vector OnSide(const Side& side, double across, double up) {
  return side.normal + side.right * (2 * across - 1) + side.up * (2 * up - 1);
}

// A box with round edges: an inner box, and what is at most `radius` away from it. Where the inner box is flat,
// points that would fall together are one.
class RoundBox {
 public:
  RoundBox(Patches& patches, const Vector& half, double radius, const std::array<int32_t, 3>& segments,
           int32_t steps)
      : patches_(patches),
        inner_{half.x - radius, half.y - radius, half.z - radius},
        radius_(radius),
        segments_(segments),
        steps_(steps) {}

  void AddSide(const Side& side) {
    const auto corner = [&](double across, double up) { return CornerAt(OnSide(side, across, up), side.axis); };
    patches_.Quad({corner(0, 0), corner(1, 0), corner(1, 1), corner(0, 1)}, SegmentsAlong(side.right),
                  SegmentsAlong(side.up), [&](double across, double up) {
                    return Inner(OnSide(side, across, up)) + side.normal * radius_;
                  });
  }

  // The edge along an axis, at those signs of the next two axes.
  void AddEdge(int axis, double sign1, double sign2) {
    const int axis1 = (axis + 1) % 3, axis2 = (axis + 2) % 3;
    const double along = sign1 * sign2;  // so that it looks outwards
    const auto signs = [&](double t) {
      Vector made{};
      Component(made, axis) = (2 * t - 1) * along;
      Component(made, axis1) = sign1;
      Component(made, axis2) = sign2;
      return made;
    };
    patches_.Quad({CornerAt(signs(0), axis1), CornerAt(signs(1), axis1), CornerAt(signs(1), axis2),
                   CornerAt(signs(0), axis2)},
                  segments_[axis], steps_, [&](double t, double round) {
                    Vector away{};
                    Component(away, axis1) = sign1 * std::cos(round * kPi / 2);
                    Component(away, axis2) = sign2 * std::sin(round * kPi / 2);
                    return Inner(signs(t)) + away * radius_;
                  });
  }

  void AddCorner(const Vector& signs) {
    // Which of two ways round looks outwards.
    const int right = signs.x * signs.y * signs.z > 0 ? 2 : 1, up = 3 - right;
    patches_.Triangle({CornerAt(signs, 0), CornerAt(signs, right), CornerAt(signs, up)}, steps_,
                      [&](double toRight, double toUp) {
                        Vector away{};
                        Component(away, 0) = std::sin((1 - toRight - toUp) * kPi / 2);
                        Component(away, right) = std::sin(toRight * kPi / 2);
                        Component(away, up) = std::sin(toUp * kPi / 2);
                        away = kelvar::Normalized(away) * radius_;
                        return Inner(signs) + kelvar::ComponentProduct(signs, away);
                      });
  }

 private:
  Vector Inner(const Vector& signs) const { return kelvar::ComponentProduct(inner_, signs); }

  int32_t SegmentsAlong(const Vector& direction) const {
    return segments_[direction.x != 0 ? 0 : direction.y != 0 ? 1 : 2];
  }

  // The corner of the side across that axis; without a radius those of the three sides are one.
  int32_t CornerAt(const Vector& signs, int axis) {
    int32_t number = radius_ > 0 ? axis : 0;
    for (int i = 0; i < 3; ++i) {
      const bool isOne = radius_ > 0 && i != axis && Component(inner_, i) <= 0;
      number = 2 * number + (isOne || Component(signs, i) > 0);
    }
    Vector away{};
    Component(away, axis) = Component(signs, axis) * radius_;
    return patches_.Corner(number, Inner(signs) + away);
  }

  Patches& patches_;
  const Vector inner_;
  const double radius_;
  const std::array<int32_t, 3> segments_;
  const int32_t steps_;
};

// The corners of a solid, and where its faces look.
struct Solid {
  std::vector<Vector> corners, faces;
};

constexpr double kGolden = std::numbers::phi;

// Adds (x, y, z) and (y, z, x) and (z, x, y) with all signs.
void AddCycles(std::vector<Vector>& points, const Vector& of) {
  for (const Vector& turned : {of, Vector{of.y, of.z, of.x}, Vector{of.z, of.x, of.y}})
    for (int signs = 0; signs < 8; ++signs) {
      const Vector point{signs & 1 ? -turned.x : turned.x, signs & 2 ? -turned.y : turned.y,
                         signs & 4 ? -turned.z : turned.z};
      if (std::find(points.begin(), points.end(), point) == points.end()) points.push_back(point);
    }
}

// PRIM_PLATONIC_TYPE.
Solid SolidOf(int32_t type) {
  Solid solid;
  auto& [corners, faces] = solid;
  switch (type) {
    case 0: {  // stands on a face
      const double low = 1.0 / 3, wide = std::sqrt(8.0) / 3;
      corners = {{0, 1, 0}};
      for (int i = 0; i < 3; ++i) {
        const double angle = i * 2 * kPi / 3;
        corners.push_back({wide * std::cos(angle), -low, wide * std::sin(angle)});
      }
      for (const Vector& corner : corners) faces.push_back(-corner);
      break;
    }
    case 1:
      AddCycles(corners, {1, 1, 1});
      AddCycles(faces, {1, 0, 0});
      break;
    case 2:
      AddCycles(corners, {1, 0, 0});
      AddCycles(faces, {1, 1, 1});
      break;
    case 3:
      AddCycles(corners, {1, 1, 1});
      AddCycles(corners, {0, 1 / kGolden, kGolden});
      AddCycles(faces, {0, kGolden, 1});
      break;
    default:
      AddCycles(corners, {0, kGolden, 1});
      AddCycles(faces, {1, 1, 1});
      AddCycles(faces, {0, 1 / kGolden, kGolden});
      break;
  }
  for (Vector& corner : corners) corner = kelvar::Normalized(corner);
  return solid;
}

// The corners of the face that looks there, in the order of its front.
std::vector<int32_t> FaceOf(const Solid& solid, const Vector& normal) {
  double most = 0;
  for (const Vector& corner : solid.corners) most = std::max(most, kelvar::Dot(corner, normal));
  std::vector<std::pair<double, int32_t>> around;
  Vector first{};
  for (size_t i = 0; i < solid.corners.size(); ++i) {
    const Vector& corner = solid.corners[i];
    if (kelvar::Dot(corner, normal) < most - 1e-6) continue;
    if (around.empty()) first = corner - normal * (most / kelvar::LengthSquared(normal));
    const double angle = std::atan2(kelvar::Dot(kelvar::Cross(kelvar::Normalized(normal), first), corner),
                                    kelvar::Dot(first, corner));
    around.push_back({angle, int32_t(i)});
  }
  std::sort(around.begin(), around.end());
  std::vector<int32_t> face;
  for (const auto& [angle, corner] : around) face.push_back(corner);
  return face;
}

// Where the corner of a face of so many is in the picture.
Vector RoundPicture(size_t corner, size_t count) {
  const double angle = 2 * kPi * double(corner) / double(count);
  return {0.5 + 0.5 * std::sin(angle), 0.5 - 0.5 * std::cos(angle), 0};
}

// A face of more than four corners in one piece.
void AddNgon(Patches& patches, const std::vector<int32_t>& face) {
  const size_t count = face.size();
  const auto uv = [&](size_t i) { return RoundPicture(i, count); };
  for (size_t i = 1; i + 1 < count; i += 2) {
    const size_t last = std::min(i + 2, count - 1);
    patches.Add({face[0], face[i], face[i + 1], face[last]}, {uv(0), uv(i), uv(i + 1), uv(last)});
    patches.mesh.ngonEdges.resize(patches.mesh.polygons.size());
    patches.mesh.ngonEdges.back() = (i > 1 ? 1 : 0) | (last < count - 1 ? 8 : 0);
  }
}

// `place` is called with points of the solid of radius 1.
template <class Place>
void AddSolid(Patches& patches, const Solid& solid, int32_t steps, const Place& place) {
  std::vector<int32_t> points;
  for (const Vector& corner : solid.corners)
    points.push_back(patches.Corner(int32_t(points.size()), place(corner)));
  const auto addTriangle = [&](const std::array<Vector, 3>& at, const std::array<int32_t, 3>& corner,
                               const std::array<Vector, 3>& picture) {
    patches.Triangle(
        corner, steps,
        [&](double right, double up) { return place(at[0] * (1 - right - up) + at[1] * right + at[2] * up); },
        picture);
  };
  for (size_t i = 0; i < solid.faces.size(); ++i) {
    const std::vector<int32_t> face = FaceOf(solid, solid.faces[i]);
    std::vector<Vector> at;
    std::vector<int32_t> corner;
    for (const int32_t number : face) at.push_back(solid.corners[number]), corner.push_back(points[number]);
    const size_t count = face.size();
    if (count == 3) {
      addTriangle({at[0], at[2], at[1]}, {corner[0], corner[2], corner[1]}, kWholePicture);
    } else if (count == 4) {
      patches.Quad({corner[0], corner[3], corner[2], corner[1]}, steps, steps, [&](double right, double up) {
        return place((at[0] * (1 - right) + at[3] * right) * (1 - up) +
                     (at[1] * (1 - right) + at[2] * right) * up);
      });
    } else if (steps == 1) {
      AddNgon(patches, corner);
    } else {
      Vector middle{};
      for (const Vector& one : at) middle = middle + one * (1 / double(count));
      const int32_t center = patches.Corner(int32_t(solid.corners.size() + i), place(middle));
      for (size_t j = 0; j < count; ++j) {
        const size_t next = (j + 1) % count;
        addTriangle({middle, at[next], at[j]}, {center, corner[next], corner[j]},
                    {{{0.5, 0.5, 0}, RoundPicture(next, count), RoundPicture(j, count)}});
      }
    }
  }
}

// The picture of a ball goes round once, from its seam at +x as that of a ball of rings. Polygons across the
// seam go on beyond 0 or 1.
void WrapAround(Mesh& mesh) {
  for (size_t i = 0; i < mesh.polygons.size(); ++i) {
    const CPolygon& polygon = mesh.polygons[i];
    const int32_t corners[] = {polygon.a, polygon.b, polygon.c, polygon.d};
    Vector middle{};
    for (int corner = 0; corner < (polygon.c == polygon.d ? 3 : 4); ++corner)
      middle = middle + mesh.points[corners[corner]];
    double about = std::atan2(middle.z, middle.x) / (2 * kPi);
    if (about < 0) about += 1;
    Vector* uv[] = {&mesh.uvw[i].a, &mesh.uvw[i].b, &mesh.uvw[i].c, &mesh.uvw[i].d};
    for (int corner = 0; corner < 4; ++corner) {
      const Vector point = mesh.points[corners[corner]];
      double around = about;  // at a pole
      if (std::hypot(point.x, point.z) > 1e-9) {
        around = std::atan2(point.z, point.x) / (2 * kPi);
        around -= std::round(around - about);
      }
      *uv[corner] = {around, std::acos(std::clamp(point.y, -1.0, 1.0)) / kPi, 0};
    }
  }
}

}  // namespace

Mesh MakeCube(const Settings& settings) {
  const Vector half = settings.Size(1100) * 0.5;
  const double most = std::min({half.x, half.y, half.z});
  const double radius = settings.Flag(1105) ? std::min(settings.Length(1106), most) : 0;
  Patches patches;
  RoundBox box(patches, half, radius, {settings.Count(1101), settings.Count(1102), settings.Count(1103)},
               settings.Count(1107));
  const bool isSeparate = radius == 0 && settings.Flag(1104);
  for (const Side& side : kSides) {
    box.AddSide(side);
    if (isSeparate) patches.Separate();
  }
  if (radius > 0) {
    for (int axis = 0; axis < 3; ++axis)
      for (const double sign1 : {-1.0, 1.0})
        for (const double sign2 : {-1.0, 1.0}) box.AddEdge(axis, sign1, sign2);
    for (int signs = 0; signs < 8; ++signs)
      box.AddCorner({signs & 1 ? 1.0 : -1.0, signs & 2 ? 1.0 : -1.0, signs & 4 ? 1.0 : -1.0});
    patches.mesh.phong = kPhongStandard;
  }
  return std::move(patches.mesh);
}

Mesh MakePlane(const Settings& settings) {
  Patches patches;
  const Vector half{settings.Length(1120) / 2, 0, settings.Length(1121) / 2};
  RoundBox(patches, half, 0, {settings.Count(1122), 1, settings.Count(1123)}, 1).AddSide(kTopSide);
  patches.mesh.phong = kPhongStandard;  // deformers bend it
  return std::move(patches.mesh);
}

Mesh MakePyramid(const Settings& settings) {
  const Vector half = settings.Size(1170) * 0.5;
  const int32_t steps = settings.Count(1171);
  Patches patches;
  const auto at = [&](double x, double y, double z) { return kelvar::ComponentProduct(half, {x, y, z}); };
  // The base, from the left behind, seen from below; then the four sides.
  const Vector base[] = {at(-1, -1, 1), at(1, -1, 1), at(1, -1, -1), at(-1, -1, -1)}, tip = at(0, 1, 0);
  std::array<int32_t, 4> corner;
  for (int i = 0; i < 4; ++i) corner[i] = patches.Corner(i, base[i]);
  const int32_t top = patches.Corner(4, tip);
  patches.Quad(corner, steps, steps,
               [&](double across, double up) { return at(2 * across - 1, -1, 1 - 2 * up); });
  for (int i = 0; i < 4; ++i) {
    const int next = (i + 1) % 4;
    patches.Triangle({corner[next], corner[i], top}, steps, [&](double right, double up) {
      return base[next] * (1 - right - up) + base[i] * right + tip * up;
    });
  }
  return std::move(patches.mesh);
}

Mesh MakePlatonic(const Settings& settings) {
  const double radius = settings.Length(1200);
  Patches patches;
  AddSolid(patches, SolidOf(settings.Choice(1202)), settings.Count(1201),
           [radius](const Vector& point) { return point * radius; });
  return std::move(patches.mesh);
}

Mesh MakePatchSphere(double radius, int32_t segments, int32_t type) {
  Patches patches;
  patches.mesh.phong = kPhongStandard;
  // About as many around as were asked for. With an even number of squares on a side, and of triangles' threes,
  // there is a point at each pole, where the picture needs one.
  if (type == 2) {
    const int32_t steps = std::max(segments / 8, 1) * 2;
    for (const Side& side : kSides) {
      const auto corner = [&](double across, double up) {
        const Vector at = OnSide(side, across, up);
        return patches.Corner((at.x > 0) + 2 * (at.y > 0) + 4 * (at.z > 0), kelvar::Normalized(at));
      };
      // Each of the squares is seen under the same angle.
      const auto bent = [](double t) { return 0.5 + 0.5 * std::tan((2 * t - 1) * kPi / 4); };
      patches.Quad(
          {corner(0, 0), corner(1, 0), corner(1, 1), corner(0, 1)}, steps, steps,
          [&](double across, double up) { return kelvar::Normalized(OnSide(side, bent(across), bent(up))); });
    }
  } else {
    const int32_t steps = type == 1   ? std::max(segments / 9, 1) * 3
                          : type == 3 ? std::max(segments / 4, 1)
                                      : std::max(segments / 5, 1);
    AddSolid(patches,
             SolidOf(type == 1   ? 0
                     : type == 3 ? 2
                                 : 4),
             steps, [](const Vector& point) { return kelvar::Normalized(point); });
  }
  WrapAround(patches.mesh);
  for (Vector& point : patches.mesh.points) point = point * radius;
  return std::move(patches.mesh);
}

}  // namespace host
