// qlx.CPolygon: the corners of a polygon as numbers of points, held in the record.

#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "values/numbers.h"

namespace qlx {
namespace {

using Corner = int32_t CPolygon::*;
constexpr Corner kCorners[] = {&CPolygon::a, &CPolygon::b, &CPolygon::c, &CPolygon::d};

bool operator==(const CPolygon& left, const CPolygon& right) {
  return left.a == right.a && left.b == right.b && left.c == right.c && left.d == right.d;
}

PyObject* Construct(PyTypeObject*, PyObject* args, PyObject* keywords) {
  Arguments<&Construct, TypeList<int32_t, int32_t, int32_t, int32_t>, "iii|i", "t_a", "t_b", "t_c", "t_d=-1">
      arguments;
  if (!arguments.Parse(args, keywords)) return nullptr;
  return arguments.Apply([](int32_t a, int32_t b, int32_t c, int32_t d) {
    return NewCPolygon({a, b, c, d == -1 ? c : d});  // -1 is a triangle
  });
}

struct Attribute {
  const char* name;
  Corner corner;
};

PyObject* GetAttribute(PyObject* self, void* closure) {
  return PyLong_FromLong(ValueOf<CPolygon>(self).*static_cast<const Attribute*>(closure)->corner);
}

int SetAttribute(PyObject* self, PyObject* value, void* closure) {
  const Attribute& attribute = *static_cast<const Attribute*>(closure);
  if (!value) return RaiseAttributeNotRemovable(attribute.name);
  if (PyLong_Check(value)) return ReadInt32(value, ValueOf<CPolygon>(self).*attribute.corner) ? 0 : -1;
  RaiseExpectedType("int", value);
  return -1;
}

PyObject* Compare(PyObject* left, PyObject* right, int op) {
  if (!Present<CPolygon>::Is(left) || !Present<CPolygon>::Is(right)) return NewNotImplemented();
  if (op == Py_EQ || op == Py_NE)
    return ToPython((ValueOf<CPolygon>(left) == ValueOf<CPolygon>(right)) == (op == Py_EQ));
  ReportBadComparison(left, right, op);
  return nullptr;
}

bool IsTriangle(const CPolygon& self) { return self.c == self.d; }

PyObject* Text(PyObject* self) {
  const CPolygon& p = ValueOf<CPolygon>(self);
  return IsTriangle(p) ? PyUnicode_FromFormat("(a:%i, b:%i, c:%i)", p.a, p.b, p.c)
                       : PyUnicode_FromFormat("(a:%i, b:%i, c:%i, d:%i)", p.a, p.b, p.c, p.d);
}

// The constructor makes no polygon whose fourth corner is -1.
PyObject* Reduce(PyObject* self) {
  const CPolygon& p = ValueOf<CPolygon>(self);
  return Py_BuildValue("(O(iii)i)", Py_TYPE(self), p.a, p.b, p.c, p.d);
}

void SetState(CPolygon& self, int32_t d) { self.d = d; }

bool Find(const CPolygon& self, int32_t index) {
  for (const Corner corner : kCorners)
    if (self.*corner == index) return true;
  return false;
}

// An edge has the number of its first corner and ends at the next; a triangle has no edge 2.
int32_t FindEdge(const CPolygon& self, int32_t index1, int32_t index2) {
  for (int32_t edge = 0; edge < 4; ++edge) {
    if (edge == 2 && IsTriangle(self)) continue;
    const int32_t first = self.*kCorners[edge], second = self.*kCorners[(edge + 1) % 4];
    if ((first == index1 && second == index2) || (first == index2 && second == index1)) return edge;
  }
  return -1;
}

PyObject* EdgePoints(const CPolygon& self, int32_t edge) {
  if (edge < 0 || edge > 3) return RaiseOutOfRange("edge");
  return Py_BuildValue("{s:i,s:i}", "a", self.*kCorners[edge], "b", self.*kCorners[(edge + 1) % 4]);
}

Attribute g_a{"a", &CPolygon::a}, g_b{"b", &CPolygon::b}, g_c{"c", &CPolygon::c}, g_d{"d", &CPolygon::d};

PyGetSetDef g_attributes[] = {
    {g_a.name, GetAttribute, SetAttribute, "The first point, an int.", &g_a},
    {g_b.name, GetAttribute, SetAttribute, "The second point, an int.", &g_b},
    {g_c.name, GetAttribute, SetAttribute, "The third point, an int.", &g_c},
    {g_d.name, GetAttribute, SetAttribute, "The fourth point, an int; of a triangle the third one.", &g_d},
    {},
};

PyMethodDef g_methods[] = {
    Method<&IsTriangle>("IsTriangle", "IsTriangle() -> bool\n\nWhether c and d are the same point."),
    Method<&Find, "i", "index">("Find", "Find(index) -> bool\n\nWhether the point is one of the corners."),
    Method<&FindEdge, "ii", "index1", "index2">("FindEdge",
                                                "FindEdge(index1, index2) -> int\n\n"
                                                "The edge between two points, in either direction: 0 from a to "
                                                "b, 1 from b to c, 2 from c to d, 3 from d "
                                                "to a; -1 for none. A triangle has no edge 2."),
    Method<&EdgePoints, "i", "edge">(
        "EdgePoints",
        "EdgePoints(edge) -> dict\n\n"
        "The points \"a\" and \"b\" at the ends of an edge, 0 to 3. Raises IndexError for another number."),
    Method<&Reduce>("__reduce__", "__reduce__() -> tuple\n\nThe way to copy and to store it."),
    Method<&SetState, "i", "d">("__setstate__", "__setstate__(d) -> None\n\nFor copies."),
    {},
};

}  // namespace

PyTypeObject g_CPolygonType = MakeType<CPolygonRecord>({
    .name = "qlx.CPolygon",
    .doc = "CPolygon(t_a, t_b, t_c, t_d=-1)\n\n"
           "A polygon of the points with these numbers; a triangle, whose d is c, when t_d is -1.",
    .methods = g_methods,
    .create = Construct,
    .destroy = Present<CPolygon>::Free,
    .compare = Compare,
    .text = Text,
    .attributes = g_attributes,
});

namespace {
const TypeQueueEntry g_entry(g_CPolygonType);
}

}  // namespace qlx
