/* The plain values of the boundary: numbers side by side, copied as bytes, owned by nobody. */
#ifndef KELVAR_T_VALUES_H
#define KELVAR_T_VALUES_H

#include <stdint.h>

typedef struct Vector {
  double x, y, z;
} Vector;

typedef struct Vector4d {
  double x, y, z, w;
} Vector4d;

typedef struct Vector4d32 {
  float x, y, z, w;
} Vector4d32;

typedef struct Color {
  double r, g, b;
} Color;

typedef struct ColorA {
  double r, g, b, a;
} ColorA;

typedef struct ColorA32 {
  float r, g, b, a;
} ColorA32;

/* An affine transform: a point p goes to off + p.x*v1 + p.y*v2 + p.z*v3. */
typedef struct Matrix {
  Vector off, v1, v2, v3;
} Matrix;

typedef struct Matrix32 {
  float off[3], v1[3], v2[3], v3[3];
} Matrix32;

typedef struct Quaternion {
  Vector v;
  double w;
} Quaternion;

/* A time in seconds as a fraction, reduced, with a denominator above zero. */
typedef struct BaseTime {
  double numerator, denominator;
} BaseTime;

/* The bytes in the order of the text form. */
typedef struct Uuid {
  uint8_t bytes[16];
} Uuid;

#endif
