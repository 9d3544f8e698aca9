// qlx.utils.Neighbor: which polygons and edges of an object lie side by side.

#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "scene/geometry.h"

namespace qlx {
namespace {

NeighborRecord* AsRecord(PyObject* object) { return reinterpret_cast<NeighborRecord*>(object); }

void Unlink(NeighborRecord* self) {
  FreeLink(self->linked);
  self->linked = {};
}

void Free(PyObject* self) {
  AsRecord(self)->data->Free();
  Unlink(AsRecord(self));
  FreeWrapper(g_wrapperTracker, self);
}

// Also of one whose object has gone: it gets another.
PyObject* Init(NeighborRecord* self, PolygonObject* op, SelectRecord* bs) {
  BaseSelect* selection;
  HostLink link{};
  if (!SelectionOf(bs, selection)) return nullptr;
  if (!SetLink(op, link)) return PyErr_NoMemory();
  Unlink(self);
  const bool isMade = self->data->Init(op, selection);
  if (isMade)
    self->linked = link;
  else
    FreeLink(link);
  return ToPython(isMade);
}

void Flush(NeighborRecord* self) {
  self->data->Flush();
  Unlink(self);
}

PyObject* GetEdgePolys(Neighbor* self, int32_t a, int32_t b) {
  int32_t first = -1, second = -1;
  return self->GetEdgePolys(a, b, &first, &second) ? Py_BuildValue("(ii)", first, second) : NewNone();
}

// A list may start the collector of garbage, whose scripts may make the neighbourhood another one.
PyObject* GetPointPolys(Neighbor* self, int32_t pnt) {
  const int32_t* first = nullptr;
  const int32_t count = self->GetPointPolys(pnt, &first);
  const std::vector<int32_t> polygons(first, first + count);
  return Int32ArrayToList(polygons.data(), count);
}

PyObject* GetPolyInfo(Neighbor* self, int32_t poly) {
  HostPolyInfo info;
  if (!self->GetPolyInfo(poly, &info)) return NewNone();
  PyObject* mark = PyTuple_New(4);
  for (Py_ssize_t i = 0; mark && i < 4; ++i) PyTuple_SET_ITEM(mark, i, ToPython(info.mark[i] != 0));
  const int32_t *face = info.face, *edge = info.edge;
  return mark ? Py_BuildValue("{s:(iiii),s:(iiii),s:N}", "face", face[0], face[1], face[2], face[3], "edge",
                              edge[0], edge[1], edge[2], edge[3], "mark", mark)
              : nullptr;
}

PyMethodDef g_methods[] = {
    Method<&Init, "A!|O!", "op", "bs">(
        "Init",
        "Init(op, bs=None) -> bool\n\n"
        "Makes it the neighbourhood of a polygon object as it is now, or of the polygons of it that a "
        "qlx.BaseSelect selects."),
    Method<&Flush>("Flush", "Flush() -> None\n\nMakes it that of no object."),
    Method<&Neighbor::GetEdgeCount>("GetEdgeCount",
                                    "GetEdgeCount() -> int\n\nHow many edges there are, each counted once."),
    Method<&GetEdgePolys, "ii", "a", "b">("GetEdgePolys",
                                          "GetEdgePolys(a, b) -> (int, int) or None\n\n"
                                          "The polygons at the edge of two points; -1 for a missing second "
                                          "one. None when there is no such edge."),
    Method<&GetPointPolys, "i", "pnt">("GetPointPolys",
                                       "GetPointPolys(pnt) -> list of int\n\nThe polygons that have a point."),
    Method<&Neighbor::GetNeighbor, "iii", "a", "b", "poly">(
        "GetNeighbor",
        "GetNeighbor(a, b, poly) -> int\n\n"
        "The polygon on the other side of the edge of two points of `poly`; -1 without one."),
    Method<&GetPolyInfo, "i", "poly">(
        "GetPolyInfo",
        "GetPolyInfo(poly) -> dict or None\n\n"
        "For the edges from a to b, b to c, c to d and d to a of a polygon: \"face\", the polygon on the other "
        "side or -1; \"edge\", the number of the edge, each counted once, or -1 for the missing one of a "
        "triangle; \"mark\", whether this is the edge's first polygon. None out of range."),
    {},
};

}  // namespace

PyTypeObject g_NeighborType = MakeType<NeighborRecord>({
    .name = "qlx.utils.Neighbor",
    .doc = "Neighbor()\n\nWhich polygons and edges of an object lie side by side. Call Init first.",
    .methods = g_methods,
    .create = Create<&Neighbor::Alloc, "">,
    .destroy = Free,
});

namespace {
const TypeQueueEntry g_entry(g_NeighborType);
}

PyObject* Present<Neighbor>::Wrap(Neighbor* host, bool) {
  PyObject* object = AllocWrapper(g_wrapperTracker, &g_NeighborType);
  if (object)
    AsRecord(object)->data = host;
  else
    host->Free();
  return object;
}

bool Present<Neighbor>::Get(PyObject* object, Neighbor*& host) {
  if (Py_TYPE(object) != &g_NeighborType) {
    _PyErr_BadInternalCall(__FILE__, __LINE__);
    return false;
  }
  const NeighborRecord* record = AsRecord(object);
  if (record->linked.slot && !LookUp(record->linked)) {
    ReportLinkedNotAlive(&g_NeighborType);
    return false;
  }
  host = record->data;
  return true;
}

}  // namespace qlx
