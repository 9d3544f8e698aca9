// Arithmetic of affine transforms.
#ifndef KELVAR_MATRIX_H
#define KELVAR_MATRIX_H

#include "kelvar/vector.h"

inline constexpr Matrix kIdentityMatrix = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};

inline Matrix operator+(const Matrix& a, const Matrix& b) {
  return {a.off + b.off, a.v1 + b.v1, a.v2 + b.v2, a.v3 + b.v3};
}
inline Matrix operator-(const Matrix& a, const Matrix& b) {
  return {a.off - b.off, a.v1 - b.v1, a.v2 - b.v2, a.v3 - b.v3};
}
inline Matrix operator*(const Matrix& m, double factor) {
  return {m.off * factor, m.v1 * factor, m.v2 * factor, m.v3 * factor};
}
inline bool operator==(const Matrix& a, const Matrix& b) {
  return a.off == b.off && a.v1 == b.v1 && a.v2 == b.v2 && a.v3 == b.v3;
}

namespace kelvar {

// Without the offset, and with it.
inline Vector Rotated(const Matrix& m, const Vector& v) { return m.v1 * v.x + m.v2 * v.y + m.v3 * v.z; }
inline Vector Transformed(const Matrix& m, const Vector& v) { return m.off + Rotated(m, v); }

// First `b`, then `a`.
inline Matrix Product(const Matrix& a, const Matrix& b) {
  return {Transformed(a, b.off), Rotated(a, b.v1), Rotated(a, b.v2), Rotated(a, b.v3)};
}

// The cofactors of the axes, without an offset.
inline Matrix Tensor(const Matrix& m) { return {{}, Cross(m.v2, m.v3), Cross(m.v3, m.v1), Cross(m.v1, m.v2)}; }

inline Matrix Normalized(const Matrix& m) {
  return {m.off, Normalized(m.v1), Normalized(m.v2), Normalized(m.v3)};
}

// By cofactors; the identity for a determinant of zero.
inline Matrix Inverse(const Matrix& m) {
  const Vector a = Cross(m.v2, m.v3), b = Cross(m.v3, m.v1), c = Cross(m.v1, m.v2);
  const double determinant = Dot(m.v1, a);
  if (determinant == 0) return kIdentityMatrix;
  // Divided, since the reciprocal of a determinant near zero is out of range.
  Matrix inverse = {{},
                    {a.x / determinant, b.x / determinant, c.x / determinant},
                    {a.y / determinant, b.y / determinant, c.y / determinant},
                    {a.z / determinant, b.z / determinant, c.z / determinant}};
  inverse.off = -Rotated(inverse, m.off);
  return inverse;
}

}  // namespace kelvar

#endif
