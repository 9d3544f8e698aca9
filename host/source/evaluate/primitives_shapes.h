// What the files of the primitives share.
#ifndef HOST_EVALUATE_PRIMITIVES_SHAPES_H
#define HOST_EVALUATE_PRIMITIVES_SHAPES_H

#include "evaluate/primitives.h"
#include "scene/geometry.h"

namespace host {

// An object's parameters, in their types and ranges whatever its container holds.
class Settings {
 public:
  explicit Settings(const BaseObject& object) : object_(object) {}

  bool Has(int32_t id) const { return object_.type.Find(id); }
  bool Flag(int32_t id) const { return Integer(id) != 0; }
  int32_t Choice(int32_t id) const { return int32_t(Integer(id)); }
  int32_t Count(int32_t id, int32_t least = 1) const;
  double Number(int32_t id) const;  // finite
  double Length(int32_t id) const;  // not below 0
  Vector Size(int32_t id) const;    // each of them not below 0

 private:
  HostGeData Value(int32_t id) const;
  int64_t Integer(int32_t id) const;

  const BaseObject& object_;
};

// In primitives_patch.cpp.
Mesh MakeCube(const Settings& settings);
Mesh MakePlane(const Settings& settings);
Mesh MakePyramid(const Settings& settings);
Mesh MakePlatonic(const Settings& settings);
// The types 1 to 4: a solid that is blown up.
Mesh MakePatchSphere(double radius, int32_t segments, int32_t type);

// In primitives_lathe.cpp.
Mesh MakeSphere(const Settings& settings);
Mesh MakeCylinder(const Settings& settings);
Mesh MakeCone(const Settings& settings);
Mesh MakeTorus(const Settings& settings);
Mesh MakeDisc(const Settings& settings);
Mesh MakeTube(const Settings& settings);
Mesh MakeCapsule(const Settings& settings);
Mesh MakeOilTank(const Settings& settings);

}  // namespace host

#endif
