// Primitives that turn about an axis.

#include <algorithm>
#include <cmath>
#include <numbers>

#include "evaluate/primitives_shapes.h"

namespace host {
namespace {

constexpr double kPi = std::numbers::pi;

// How a part of a surface takes its picture: around and up; the same from within; or flat, seen from above or
// from below.
enum class Picture : uint8_t { kSide, kInside, kTop, kBottom };

struct Ring {
  double radius, height;
  bool isPole = false;   // a single point
  bool isSharp = false;  // the shading breaks
};

// What turns about the axis, from its lower end along the outside to its upper one. It may come back to its
// start; then the last ring is the first one.
class Profile {
 public:
  Profile(double radius, double height) : rings{{radius, height}} {}

  // In that many equal steps.
  Profile& Line(double radius, double height, int32_t steps, Picture picture) {
    const Ring from = rings.back();
    for (int32_t i = 1; i <= steps; ++i) {
      const double t = double(i) / steps;
      Add({std::lerp(from.radius, radius, t), std::lerp(from.height, height, t)}, picture);
    }
    return *this;
  }

  // A quarter of an ellipse, which leaves the present end level or upright.
  Profile& Quarter(double radius, double height, int32_t steps, bool isLevel,
                   Picture picture = Picture::kSide) {
    const Ring from = rings.back();
    for (int32_t i = 1; i < steps; ++i) {
      const double angle = kPi / 2 * i / steps;
      const double part = std::sin(angle), rest = 1 - std::cos(angle);
      Add({std::lerp(from.radius, radius, isLevel ? part : rest),
           std::lerp(from.height, height, isLevel ? rest : part)},
          picture);
    }
    Add({radius, height}, picture);
    return *this;
  }

  void Add(const Ring& ring, Picture picture) {
    rings.push_back(ring);
    pictures.push_back(picture);
  }

  // Of the ring that was added last.
  Profile& Pole() {
    rings.back().radius = 0;
    rings.back().isPole = true;
    return *this;
  }
  Profile& Sharp(bool isSharp = true) {
    rings.back().isSharp = isSharp;
    return *this;
  }
  Profile& Close() {
    isClosed = true;
    return *this;
  }

  // What is all in one place, or on the axis, has none.
  bool HasSurface() const {
    const auto isAway = [&](const Ring& ring) {
      return ring.radius != rings[0].radius || ring.height != rings[0].height;
    };
    return std::any_of(rings.begin(), rings.end(), [](const Ring& ring) { return ring.radius != 0; }) &&
           std::any_of(rings.begin(), rings.end(), isAway);
  }
  bool IsSolid() const { return isClosed || (rings.front().isPole && rings.back().isPole); }

  std::vector<Ring> rings;
  std::vector<Picture> pictures;  // of what lies between a ring and the next one
  bool isClosed = false;
};

// Where a ring is in the picture: for sides how far up, for flat ones how far from the middle. Each for the
// part that begins with that ring, and for the one that ends with it.
struct Heights {
  explicit Heights(const Profile& profile) : begins(profile.rings.size()), ends(profile.rings.size()) {
    const auto& [rings, pictures, isClosed] = profile;
    for (size_t from = 0, to; from < pictures.size(); from = to) {
      for (to = from + 1; to < pictures.size() && pictures[to] == pictures[from];) ++to;
      const bool isFlat = pictures[from] == Picture::kTop || pictures[from] == Picture::kBottom;
      std::vector<double> at(to - from + 1);
      if (isFlat) {
        const double most = std::max(rings[from].radius, rings[to].radius);
        for (size_t i = from; i <= to; ++i) at[i - from] = most > 0 ? rings[i].radius / most : 0;
      } else {
        for (size_t i = from; i < to; ++i)
          at[i - from + 1] = at[i - from] + std::hypot(rings[i + 1].radius - rings[i].radius,
                                                       rings[i + 1].height - rings[i].height);
        const double length = at.back();
        for (size_t i = 0; i < at.size(); ++i)
          at[i] = length > 0 ? at[i] / length : double(i) / double(at.size() - 1);
      }
      for (size_t i = from; i < to; ++i) begins[i] = at[i - from], ends[i + 1] = at[i - from + 1];
    }
  }

  std::vector<double> begins, ends;
};

// How far a profile turns, in how many steps.
struct Turn {
  // Of the parameters Slice, From and To, with the number of steps in the parameter `steps`.
  Turn(const Settings& settings, int32_t stepsId) : steps(settings.Count(stepsId, 3)) {
    if (!settings.Flag(1001)) return;
    const auto [least, most] = std::minmax({settings.Number(1002), settings.Number(1003)});
    if (most - least >= 2 * kPi - 1e-9) return;
    from = least;
    to = most;
    isWhole = false;
  }
  explicit Turn(int32_t ofSteps) : steps(ofSteps) {}

  double Angle(int32_t step) const { return from + (to - from) * step / steps; }
  int32_t Columns() const { return isWhole ? steps : steps + 1; }

  int32_t steps;
  double from = 0, to = 2 * kPi;
  bool isWhole = true;
};

class Lathe {
 public:
  Lathe(const Profile& profile, const Turn& turn) : profile_(profile), turn_(turn), heights_(profile) {
    mesh_.phong = kPhongStandard;
    const size_t expected = profile.pictures.size() * size_t(turn.steps);
    mesh_.points.reserve(expected + profile.rings.size());
    mesh_.polygons.reserve(expected);
    mesh_.uvw.reserve(expected);
    for (int32_t i = 0; i < turn.Columns(); ++i)
      directions_.push_back({std::cos(turn.Angle(i)), 0, std::sin(turn.Angle(i))});
    AddPoints();
    if (!profile.HasSurface()) return;
    for (size_t i = 0; i < profile.pictures.size(); ++i) AddBand(i);
    if (!turn.isWhole && profile.IsSolid()) {
      AddCut(false);
      AddCut(true);
    }
  }

  Mesh Take() { return std::move(mesh_); }

 private:
  size_t Rings() const { return profile_.rings.size() - profile_.isClosed; }
  size_t Wrapped(size_t ring) const { return ring < Rings() ? ring : 0; }

  int32_t Point(size_t ring, int32_t column) const {
    ring = Wrapped(ring);
    if (profile_.rings[ring].isPole) return first_[ring];
    return first_[ring] + (turn_.isWhole && column == turn_.steps ? 0 : column);
  }

  void AddPoints() {
    for (size_t i = 0; i < Rings(); ++i) {
      const Ring& ring = profile_.rings[i];
      first_.push_back(int32_t(mesh_.points.size()));
      for (int32_t column = 0; column < (ring.isPole ? 1 : turn_.Columns()); ++column) {
        const Vector& direction = directions_[column];
        mesh_.points.push_back({ring.radius * direction.x, ring.height, ring.radius * direction.z});
      }
    }
  }

  // The corner of a part at one of its rings; `column` is a half for a pole on a side.
  Vector PictureAt(Picture picture, double height, double column) const {
    const double around = column / turn_.steps;
    if (picture == Picture::kSide) return {around, 1 - height, 0};
    if (picture == Picture::kInside) return {1 - around, height, 0};
    const Vector& direction = directions_[size_t(column) % directions_.size()];
    const double up = picture == Picture::kTop ? -direction.z : direction.z;
    return {0.5 + 0.5 * height * direction.x, 0.5 + 0.5 * height * up, 0};
  }

  void AddBand(size_t ring) {
    const Ring &lower = profile_.rings[ring], &upper = profile_.rings[ring + 1];
    if (lower.isPole && upper.isPole) return;
    const Picture picture = profile_.pictures[ring];
    const double low = heights_.begins[ring], high = heights_.ends[ring + 1];
    const bool isSharp[] = {lower.isSharp && !lower.isPole,
                            profile_.rings[Wrapped(ring + 1)].isSharp && !upper.isPole};
    for (int32_t i = 0; i < turn_.steps; ++i) {
      const int32_t polygon = int32_t(mesh_.polygons.size());
      const int32_t a = Point(ring, i), b = Point(ring + 1, i), c = Point(ring + 1, i + 1),
                    d = Point(ring, i + 1);
      const auto at = [&](double height, const Ring& of, int32_t column) {
        return PictureAt(picture, height, of.isPole ? i + 0.5 : column);
      };
      const Vector ua = at(low, lower, i), ub = at(high, upper, i), uc = at(high, upper, i + 1),
                   ud = at(low, lower, i + 1);
      if (upper.isPole) {
        Add({a, b, d, d}, {ua, ub, ud, ud});
      } else if (lower.isPole) {
        Add({a, b, c, c}, {ua, ub, uc, uc});
      } else {
        Add({a, b, c, d}, {ua, ub, uc, ud});
      }
      if (isSharp[0]) mesh_.breaks.push_back(4 * polygon + 3);
      if (isSharp[1]) mesh_.breaks.push_back(4 * polygon + 1);
    }
  }

  // The face where a slice was cut: a fan, whose middle is inside since profiles are convex.
  void AddCut(bool isEnd) {
    const std::vector<Ring>& rings = profile_.rings;
    const int32_t column = isEnd ? turn_.steps : 0;
    double least = rings[0].radius, most = least, low = rings[0].height, high = low, radius = 0, height = 0;
    for (size_t i = 0; i < Rings(); ++i) {
      least = std::min(least, rings[i].radius);
      most = std::max(most, rings[i].radius);
      low = std::min(low, rings[i].height);
      high = std::max(high, rings[i].height);
      radius += rings[i].radius / double(Rings());
      height += rings[i].height / double(Rings());
    }
    const auto picture = [&](double r, double h) {
      const double across = most > least ? (r - least) / (most - least) : 0;
      return Vector{isEnd ? 1 - across : across, high > low ? (high - h) / (high - low) : 0, 0};
    };
    const int32_t middle = int32_t(mesh_.points.size());
    const Vector& direction = directions_[column];
    mesh_.points.push_back({radius * direction.x, height, radius * direction.z});
    // Back to the first ring: along the axis, where the profile isn't closed.
    for (size_t i = 0; i < Rings(); ++i) {
      size_t from = i, to = (i + 1) % Rings();
      if (!isEnd) std::swap(from, to);
      const Vector uv = picture(rings[to].radius, rings[to].height);
      Add({middle, Point(from, column), Point(to, column), Point(to, column)},
          {picture(radius, height), picture(rings[from].radius, rings[from].height), uv, uv});
    }
  }

  void Add(const CPolygon& polygon, const UVWStruct& uvw) {
    mesh_.polygons.push_back(polygon);
    mesh_.uvw.push_back(uvw);
  }

  const Profile& profile_;
  const Turn& turn_;
  const Heights heights_;
  std::vector<Vector> directions_;  // of each column
  std::vector<int32_t> first_;      // point of each ring
  Mesh mesh_;
};

Mesh Turned(const Profile& profile, const Turn& turn) { return Lathe(profile, turn).Take(); }

}  // namespace

Mesh MakeSphere(const Settings& settings) {
  const double radius = settings.Length(1110);
  const int32_t segments = settings.Count(1111, 3), type = settings.Choice(1112);
  const bool isHalf = type == 5;
  if (type != 0 && !isHalf) return MakePatchSphere(radius, segments, type);
  const int32_t quarter = std::max(segments / 4, 1);
  if (isHalf)
    return Turned(Profile(0, 0)
                      .Pole()
                      .Line(radius, 0, 1, Picture::kBottom)
                      .Sharp()
                      .Quarter(0, radius, quarter, false)
                      .Pole(),
                  Turn(segments));
  Profile profile = Profile(0, -radius).Pole();
  const int32_t steps = std::max(segments / 2, 2);
  for (int32_t i = 1; i < steps; ++i)
    profile.Add({radius * std::sin(kPi * i / steps), -radius * std::cos(kPi * i / steps)}, Picture::kSide);
  profile.Add({0, radius}, Picture::kSide);
  return Turned(profile.Pole(), Turn(segments));
}

Mesh MakeCylinder(const Settings& settings) {
  const double radius = settings.Length(1130), half = settings.Length(1131) / 2;
  const int32_t sides = settings.Count(1132), caps = settings.Count(1135), rounds = settings.Count(1137);
  const Turn turn(settings, 1133);
  if (!settings.Flag(1134))
    return Turned(Profile(radius, -half).Line(radius, half, sides, Picture::kSide), turn);
  const double fillet = settings.Flag(1136) ? std::min({settings.Length(1138), radius, half}) : 0;
  const double flat = radius - fillet;
  Profile profile = Profile(0, -half).Pole();
  if (flat > 0 || fillet == 0) profile.Line(flat, -half, caps, Picture::kBottom).Sharp(fillet == 0);
  if (fillet > 0) profile.Quarter(radius, fillet - half, rounds, true);
  if (fillet < half || fillet == 0)
    profile.Line(radius, half - fillet, sides, Picture::kSide).Sharp(fillet == 0);
  if (fillet > 0) profile.Quarter(flat, half, rounds, false);
  if (flat > 0 || fillet == 0) profile.Line(0, half, caps, Picture::kTop);
  return Turned(profile.Pole(), turn);
}

Mesh MakeCone(const Settings& settings) {
  const double top = settings.Length(1140), bottom = settings.Length(1141), half = settings.Length(1142) / 2;
  const int32_t sides = settings.Count(1143), caps = settings.Count(1146);
  const Turn turn(settings, 1144);
  // At most one end is a tip: a line has no surface.
  const bool hasTop = top > 0, hasBottom = bottom > 0 || !hasTop, hasCaps = settings.Flag(1145);
  Profile profile(hasCaps ? 0 : bottom, -half);
  if (hasCaps || !hasBottom) profile.Pole();
  if (hasCaps && hasBottom) profile.Line(bottom, -half, caps, Picture::kBottom).Sharp();
  profile.Line(top, half, sides, Picture::kSide);
  if (hasCaps && hasTop) profile.Sharp().Line(0, half, caps, Picture::kTop);
  if (hasCaps || !hasTop) profile.Pole();
  return Turned(profile, turn);
}

Mesh MakeTorus(const Settings& settings) {
  const double ring = settings.Length(1150), pipe = settings.Length(1151);
  const int32_t steps = settings.Count(1153, 3);
  // The picture's seam is on the inside.
  Profile profile(ring - pipe, 0);
  for (int32_t i = 1; i <= steps; ++i) {
    const double angle = 2 * kPi * i / steps;
    profile.Add({ring - pipe * std::cos(angle), -pipe * std::sin(angle)}, Picture::kSide);
  }
  return Turned(profile.Close(), Turn(settings, 1152));
}

Mesh MakeDisc(const Settings& settings) {
  const double outer = settings.Length(1161), inner = std::min(settings.Length(1160), outer);
  Profile profile = Profile(outer, 0).Line(inner, 0, settings.Count(1162), Picture::kTop);
  if (inner == 0) profile.Pole();
  return Turned(profile, Turn(settings, 1163));
}

Mesh MakeTube(const Settings& settings) {
  const double outer = settings.Length(1181), inner = std::min(settings.Length(1180), outer);
  const double half = settings.Length(1182) / 2;
  const int32_t sides = settings.Count(1183), caps = settings.Count(1185), rounds = settings.Count(1187);
  const double fillet = settings.Flag(1186) ? std::min({settings.Length(1188), (outer - inner) / 2, half}) : 0;
  const bool hasSides = fillet < half || fillet == 0, hasCaps = fillet < (outer - inner) / 2 || fillet == 0;
  const double high = half - fillet, far = outer - fillet, near = inner + fillet;
  const bool isFilled = inner == 0;
  Profile profile =
      isFilled ? Profile(0, -half).Pole().Line(far, -half, caps, Picture::kBottom) : Profile(far, -half);
  profile.Sharp(fillet == 0);
  if (fillet > 0) profile.Quarter(outer, -high, rounds, true);
  if (hasSides) profile.Line(outer, high, sides, Picture::kSide).Sharp(fillet == 0);
  if (fillet > 0) profile.Quarter(far, half, rounds, false);
  if (isFilled) return Turned(profile.Line(0, half, caps, Picture::kTop).Pole(), Turn(settings, 1184));
  if (hasCaps) profile.Line(near, half, caps, Picture::kTop).Sharp(fillet == 0);
  if (fillet > 0) profile.Quarter(inner, high, rounds, true, Picture::kInside);
  if (hasSides) profile.Line(inner, -high, sides, Picture::kInside).Sharp(fillet == 0);
  if (fillet > 0) profile.Quarter(near, -half, rounds, false, Picture::kInside);
  if (hasCaps) profile.Line(far, -half, caps, Picture::kBottom);
  return Turned(profile.Close(), Turn(settings, 1184));
}

Mesh MakeCapsule(const Settings& settings) {
  const double half = settings.Length(1191) / 2, radius = std::min(settings.Length(1190), half);
  const int32_t rounds = settings.Count(1193);
  const double high = half - radius;
  Profile profile = Profile(0, -half).Pole().Quarter(radius, -high, rounds, true);
  if (high > 0) profile.Line(radius, high, settings.Count(1192), Picture::kSide);
  return Turned(profile.Quarter(0, half, rounds, false).Pole(), Turn(settings, 1194));
}

Mesh MakeOilTank(const Settings& settings) {
  const double radius = settings.Length(1210), half = settings.Length(1211) / 2;
  const double dome = std::min({settings.Length(1212), radius, half});
  const int32_t rounds = settings.Count(1214);
  const double high = half - dome;
  // A dome is a part of a ball, up to this angle from its middle. Written so that flat ones are exact as well.
  const double end = std::max(2 * std::atan2(dome, radius), 1e-6);
  const auto at = [&](int32_t step) {
    const double angle = end * step / rounds, part = std::sin(angle / 2) / std::sin(end / 2);
    return Ring{radius * std::sin(angle) / std::sin(end), high + dome * (1 - part * part)};
  };
  Profile profile = Profile(0, -half).Pole();
  for (int32_t i = 1; i <= rounds; ++i) profile.Add({at(i).radius, -at(i).height}, Picture::kSide);
  profile.Sharp();
  if (high > 0 || dome == 0) profile.Line(radius, high, settings.Count(1213), Picture::kSide).Sharp();
  for (int32_t i = rounds; i-- > 0;) profile.Add(at(i), Picture::kSide);
  return Turned(profile.Pole(), Turn(settings, 1215));
}

}  // namespace host
