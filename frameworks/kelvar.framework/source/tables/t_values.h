/* The plain values of the boundary: numbers side by side, copied as bytes, owned by nobody; and the tagged
 * value, which may hold more. */
#ifndef KELVAR_T_VALUES_H
#define KELVAR_T_VALUES_H

#include "t_types.h"

typedef struct Vector {
  double x, y, z;
} Vector;

typedef struct Vector32 {
  float x, y, z;
} Vector32;

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

/* A time in seconds as a fraction, reduced; the denominator is above zero, unless it is zero. */
typedef struct BaseTime {
  double numerator, denominator;
} BaseTime;

/* One level of the address of a parameter. */
typedef struct DescLevel {
  int32_t id, dtype, creator;
} DescLevel;

/* The address of a parameter, from its first level on. The levels belong to whoever is told. */
typedef struct HostDescID {
  const DescLevel* level;
  int32_t depth;
  int32_t reserved;
} HostDescID;

/* The tangents of a spline's point, to the left and to the right. */
typedef struct Tangent {
  Vector vl, vr;
} Tangent;

/* The corners of a polygon, as numbers of points; a triangle has c and d the same. */
typedef struct CPolygon {
  int32_t a, b, c, d;
} CPolygon;

/* So many of a spline's points, in their order. */
typedef struct HostSegment {
  int32_t cnt;
  HostBool closed;
} HostSegment;

/* The texture coordinates of a polygon's four points. */
typedef struct UVWStruct {
  Vector a, b, c, d;
} UVWStruct;

/* The bytes in the order of the text form. */
typedef struct Uuid {
  uint8_t bytes[16];
} Uuid;

/* The types of tagged values that are no custom data. */
enum HostDataType {
  HOST_DATA_NONE = 0,
  HOST_DATA_POINTER = 14,
  HOST_DATA_INT32 = 15,
  HOST_DATA_FLOAT = 19,
  HOST_DATA_TIME = 22,
  HOST_DATA_VECTOR = 23,
  HOST_DATA_MATRIX = 25,
  HOST_DATA_INT64 = 26,
  HOST_DATA_STRING = 130,
  HOST_DATA_FILENAME = 131,
  HOST_DATA_CONTAINER = 132,
  HOST_DATA_LINK = 133,
  HOST_DATA_UUID = 258
};

/* The types of tagged values that are custom data, each with the struct of its value. */
enum HostCustomType {
  HOST_CUSTOM_DESCID = 1000486,   /* HostDescID */
  HOST_CUSTOM_VECTOR4D = 1040682, /* Vector4d */
  HOST_CUSTOM_COLORA = 400007013  /* ColorA */
};

/* A value with its type. All zero is no value. The values of the types 0, 14, 15, 19, 22, 23, 26 and 258 lie
 * in it, and are copied as bytes; all others own something of the host's: Copy and Destroy of this group are
 * for those. A value may be moved as bytes. */
typedef struct HostGeData {
  int32_t type;
  int32_t reserved;
  union {
    int64_t integer;
    double real;
    void* pointer; /* 14 the script's own; 25, 132 and custom data the host's */
    Vector vector;
    BaseTime time;
    Uuid uuid;
    HostString string;
    HostFilename filename;
    HostLink link;
  } value;
} HostGeData;

#endif
