// Arithmetic of vectors.
#ifndef KELVAR_VECTOR_H
#define KELVAR_VECTOR_H

#include <cmath>

#include "kelvar.framework/source/tables/t_values.h"

namespace kelvar {

inline Vector Difference(const Vector& a, const Vector& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline Vector Scaled(const Vector& v, double factor) { return {v.x * factor, v.y * factor, v.z * factor}; }
inline double Dot(const Vector& a, const Vector& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline Vector Cross(const Vector& a, const Vector& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline double LengthSquared(const Vector& v) { return Dot(v, v); }
inline double Length(const Vector& v) { return std::sqrt(LengthSquared(v)); }
inline double Distance(const Vector& a, const Vector& b) { return Length(Difference(a, b)); }

// The zero vector stays.
inline Vector Normalized(const Vector& v) {
  const double length = Length(v);
  return length == 0 ? Vector{} : Scaled(v, 1 / length);
}

inline bool IsEqual(const Vector& a, const Vector& b) { return a.x == b.x && a.y == b.y && a.z == b.z; }

}  // namespace kelvar

#endif
