// Arithmetic of vectors.
#ifndef KELVAR_VECTOR_H
#define KELVAR_VECTOR_H

#include <cmath>

#include "kelvar.framework/source/tables/t_values.h"

inline Vector operator+(const Vector& a, const Vector& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline Vector operator-(const Vector& a, const Vector& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline Vector operator-(const Vector& v) { return {-v.x, -v.y, -v.z}; }
inline Vector operator*(const Vector& v, double factor) { return {v.x * factor, v.y * factor, v.z * factor}; }
inline Vector operator*(double factor, const Vector& v) { return v * factor; }
inline bool operator==(const Vector& a, const Vector& b) { return a.x == b.x && a.y == b.y && a.z == b.z; }

inline Vector4d operator+(const Vector4d& a, const Vector4d& b) {
  return {a.x + b.x, a.y + b.y, a.z + b.z, a.w + b.w};
}
inline Vector4d operator-(const Vector4d& a, const Vector4d& b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z, a.w - b.w};
}
inline Vector4d operator*(const Vector4d& v, double factor) {
  return {v.x * factor, v.y * factor, v.z * factor, v.w * factor};
}
inline bool operator==(const Vector4d& a, const Vector4d& b) {
  return a.x == b.x && a.y == b.y && a.z == b.z && a.w == b.w;
}

namespace kelvar {

inline double Dot(const Vector& a, const Vector& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline double Dot4d(const Vector4d& a, const Vector4d& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z + a.w * b.w;
}
inline Vector Cross(const Vector& a, const Vector& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline Vector ComponentProduct(const Vector& a, const Vector& b) { return {a.x * b.x, a.y * b.y, a.z * b.z}; }
inline Vector4d ComponentProduct4d(const Vector4d& a, const Vector4d& b) {
  return {a.x * b.x, a.y * b.y, a.z * b.z, a.w * b.w};
}
inline Vector Absolute(const Vector& v) { return {std::abs(v.x), std::abs(v.y), std::abs(v.z)}; }
inline double LengthSquared(const Vector& v) { return Dot(v, v); }
inline double Length(const Vector& v) { return std::sqrt(LengthSquared(v)); }
inline double Distance(const Vector& a, const Vector& b) { return Length(a - b); }

// The zero vector stays.
inline Vector Normalized(const Vector& v) {
  const double length = Length(v);
  return length == 0 ? Vector{} : v * (1 / length);
}

// The point of space with w 1; a direction, with w 0, stays.
inline Vector4d NormalizedW(const Vector4d& v) {
  return v.w == 0 ? v : Vector4d{v.x / v.w, v.y / v.w, v.z / v.w, 1};
}

}  // namespace kelvar

#endif
