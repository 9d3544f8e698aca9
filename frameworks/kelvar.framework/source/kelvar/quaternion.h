// Rotations as quaternions.
#ifndef KELVAR_QUATERNION_H
#define KELVAR_QUATERNION_H

#include "kelvar/matrix.h"

inline constexpr Quaternion kIdentityQuaternion = {{0, 0, 0}, 1};

namespace kelvar {

// K. Shoemake, "Animating rotation with quaternion curves" (1985). The length does not count.
inline Matrix RotationOf(const Quaternion& q) {
  const double norm = LengthSquared(q.v) + q.w * q.w;
  const double s = norm == 0 ? 0.0 : 2 / norm;
  const Vector a = q.v * s, w = a * q.w;
  const double xx = a.x * q.v.x, xy = a.x * q.v.y, xz = a.x * q.v.z;
  const double yy = a.y * q.v.y, yz = a.y * q.v.z, zz = a.z * q.v.z;
  return {{},
          {1 - (yy + zz), xy + w.z, xz - w.y},
          {xy - w.z, 1 - (xx + zz), yz + w.x},
          {xz + w.y, yz - w.x, 1 - (xx + yy)}};
}

// S. W. Shepperd, "Quaternion from rotation matrix" (1978): divides by the largest of the four.
inline Quaternion QuaternionOfRotation(const Matrix& m) {
  const double x = m.v1.x, y = m.v2.y, z = m.v3.z, trace = x + y + z;
  Quaternion q;
  if (trace >= x && trace >= y && trace >= z)
    q = {{m.v2.z - m.v3.y, m.v3.x - m.v1.z, m.v1.y - m.v2.x}, 1 + trace};
  else if (x >= y && x >= z)
    q = {{1 + x - y - z, m.v1.y + m.v2.x, m.v3.x + m.v1.z}, m.v2.z - m.v3.y};
  else if (y >= z)
    q = {{m.v1.y + m.v2.x, 1 + y - x - z, m.v2.z + m.v3.y}, m.v3.x - m.v1.z};
  else
    q = {{m.v3.x + m.v1.z, m.v2.z + m.v3.y, 1 + z - x - y}, m.v1.y - m.v2.x};
  // Each is four times its product with the largest: the same ratios.
  const double length = std::sqrt(LengthSquared(q.v) + q.w * q.w);
  const double scale = q.w < 0 ? -length : length;
  return {{q.v.x / scale, q.v.y / scale, q.v.z / scale}, q.w / scale};
}

// Heading about y, times pitch about x, times bank about z.
inline Quaternion QuaternionOfHpb(const Vector& hpb) {
  const double ch = std::cos(hpb.x / 2), sh = std::sin(hpb.x / 2);
  const double cp = std::cos(hpb.y / 2), sp = std::sin(hpb.y / 2);
  const double cb = std::cos(hpb.z / 2), sb = std::sin(hpb.z / 2);
  return {{ch * sp * cb + sh * cp * sb, sh * cp * cb - ch * sp * sb, ch * cp * sb - sh * sp * cb},
          ch * cp * cb + sh * sp * sb};
}

}  // namespace kelvar

#endif
