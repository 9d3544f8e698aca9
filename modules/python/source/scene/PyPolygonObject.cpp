// qlx.PolygonObject: an object with polygons.

#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "scene/geometry.h"

namespace qlx {
namespace {

PyObject* GetAllPolygons(AtomWrapper* self) { return ElementsToList<CPolygon>(self, kDataPolygon); }

PyObject* GetPolygon(PolygonObject* self, int32_t id) {
  const auto* polygons = static_cast<const CPolygon*>(self->GetTagDataR(kDataPolygon));
  return polygons ? NewCPolygon(polygons[id]) : nullptr;
}

PyObject* SetPolygon(PolygonObject* self, int32_t id, CPolygonRecord* polygon) {
  const CPolygon& corners = polygon->value;
  const int32_t count = self->GetPointCount();
  for (const int32_t corner : {corners.a, corners.b, corners.c, corners.d})
    if (corner < 0 || corner >= count) return RaiseOutOfRange("Point index of polygon");
  auto* polygons = static_cast<CPolygon*>(self->GetTagDataW(kDataPolygon));
  if (!polygons) return nullptr;
  polygons[id] = corners;
  return NewNone();
}

// The address alone, for other calls of the host: no name, and nothing to free.
PyObject* AddressToPython(const void* address) {
  return address ? PyCapsule_New(const_cast<void*>(address), nullptr, nullptr) : NewNone();
}
PyObject* GetPolygonR(PolygonObject* self) { return AddressToPython(self->GetTagDataR(kDataPolygon)); }
PyObject* GetPolygonW(PolygonObject* self) { return AddressToPython(self->GetTagDataW(kDataPolygon)); }

// -1 stands for what is not given, also when a script gives it. Scripts get a number and no bool.
int32_t ResizeObject(PolygonObject* self, int32_t pcnt, int32_t vcnt, int32_t nvcnt, int32_t vc_flags) {
  if (vcnt == -1 && nvcnt == -1 && vc_flags == -1) return self->ResizeObject(pcnt);
  if (nvcnt == -1 && vc_flags == -1) return self->ResizePolygons(pcnt, vcnt);
  const bool isWhole = vcnt != -1 && nvcnt != -1 && vc_flags != -1;
  return isWhole && self->ResizeNgons(pcnt, vcnt, nvcnt, vc_flags);
}

PyMethodDef g_methods[] = {
    Method<Row<PartOfSelf>, &PolygonObject::GetPolygonS>(
        "GetPolygonS", "GetPolygonS() -> qlx.BaseSelect\n\nThe selected polygons: the object's own selection."),
    Method<Row<PartOfSelf>, &PolygonObject::GetPolygonH>(
        "GetPolygonH", "GetPolygonH() -> qlx.BaseSelect\n\nThe hidden polygons: the object's own selection."),
    Method<Row<PartOfSelf>, &PolygonObject::GetEdgeS>(
        "GetEdgeS",
        "GetEdgeS() -> qlx.BaseSelect\n\nThe selected edges: the object's own selection. The number of an edge "
        "is "
        "4 times its polygon, plus 0 from a to b, 1 from b to c, 2 from c to d, 3 from d to a."),
    Method<Row<PartOfSelf>, &PolygonObject::GetEdgeH>(
        "GetEdgeH", "GetEdgeH() -> qlx.BaseSelect\n\nThe hidden edges, as of GetEdgeS."),
    Method<Row<PartOfSelf>, &PolygonObject::GetPhongBreak>(
        "GetPhongBreak",
        "GetPhongBreak() -> qlx.BaseSelect\n\nThe edges across which shading is not smooth, as of GetEdgeS."),
    Method<Row<WhileAlive>, &GetAllPolygons>(
        "GetAllPolygons", "GetAllPolygons() -> list of qlx.CPolygon\n\nCopies of all polygons."),
    Method<Row<InRange<"id", &PolygonObject::GetPolygonCount, "Polygon index">>, &GetPolygon, "i", "id">(
        "GetPolygon",
        "GetPolygon(id) -> qlx.CPolygon\n\nA copy of a polygon, by its number from 0. Raises IndexError out of "
        "range."),
    Method<Row<InRange<"id", &PolygonObject::GetPolygonCount, "Polygon index">>, &SetPolygon, "iO!", "id",
           "polygon">(
        "SetPolygon",
        "SetPolygon(id, polygon) -> None\n\nReplaces a polygon. Raises IndexError for a number, or "
        "a corner of the polygon, that is out of range."),
    Method<&PolygonObject::GetPolygonCount>("GetPolygonCount",
                                            "GetPolygonCount() -> int\n\nHow many polygons there are."),
    Method<&GetPolygonR>(
        "GetPolygonR",
        "GetPolygonR() -> PyCapsule or None\n\nThe address of the polygons to be read, for other "
        "calls. It is valid until their number changes. None without polygons."),
    Method<&GetPolygonW>("GetPolygonW", "GetPolygonW() -> PyCapsule or None\n\nThe same, to be written."),
    Method<&ResizeObject, "i|iii", "pcnt", "vcnt=-1", "nvcnt=-1", "vc_flags=-1">(
        "ResizeObject",
        "ResizeObject(pcnt, vcnt=-1, nvcnt=-1, vc_flags=-1) -> int\n\n"
        "Gives the object that many points and polygons, and room for edges inside n-gons; new ones are zero. "
        "-1 "
        "leaves the polygons as they are; the last two go together. 1, or 0 when nothing has changed."),
    Method<Row<WhileAlive>, &polygons::GetSelectedEdges, "OO", "e", "sel">(
        "GetSelectedEdges",
        "GetSelectedEdges(e, sel) -> qlx.BaseSelect or None\n\n"
        "Edges by the numbers of a qlx.utils.Neighbor, each once: the selected (0), the hidden (1) or those "
        "where "
        "shading breaks (2), or those of a selection as of GetEdgeS."),
    Method<&polygons::SetSelectedEdges, "OOi", "e", "pSel", "ltype">(
        "SetSelectedEdges",
        "SetSelectedEdges(e, pSel, ltype) -> bool\n\n"
        "Selects edges by the numbers of a qlx.utils.Neighbor; kinds as of GetSelectedEdges."),
    Method<&polygons::CreatePhongNormals>(
        "CreatePhongNormals",
        "CreatePhongNormals() -> list of qlx.Vector or None\n\n"
        "Four normals of length 1 for each polygon, of its corners; zero where there is no direction. None "
        "without a phong tag and normals."),
    Method<&polygons::GetPolygonTranslationMap>(
        "GetPolygonTranslationMap",
        "GetPolygonTranslationMap() -> (int, list of int) or None\n\n"
        "How many n-gons and single polygons there are, and for each polygon which of them it is part of."),
    Method<Row<WhileAlive>, &polygons::GetNGonTranslationMap, "iO", "ngoncnt", "polymap">(
        "GetNGonTranslationMap",
        "GetNGonTranslationMap(ngoncnt, polymap) -> list of lists of int or None\n\n"
        "The polygons of each n-gon, of what GetPolygonTranslationMap gave. Raises IndexError for a list of "
        "another length than the number of polygons."),
    Method<&PolygonObject::GetNgonCount>(
        "GetNgonCount", "GetNgonCount() -> int\n\nHow many n-gons of more than one polygon there are."),
    Method<&polygons::GetSelectedNgons, "O!", "sel">(
        "GetSelectedNgons",
        "GetSelectedNgons(sel) -> bool\n\n"
        "Fills a selection with the n-gons of which all polygons are selected, by GetPolygonTranslationMap."),
    Method<&polygons::GetHiddenNgons, "O!", "sel">(
        "GetHiddenNgons", "GetHiddenNgons(sel) -> bool\n\nThe same of those that are hidden."),
    Method<&polygons::ValidateEdgeSelection, "|O", "sel">(
        "ValidateEdgeSelection",
        "ValidateEdgeSelection(sel=None) -> bool\n\n"
        "Selects an edge of two polygons in both or neither, and none inside an n-gon; in the object's own "
        "selection for None."),
    Method<&polygons::GetEdgeSelection, "Oi", "sel", "type">(
        "GetEdgeSelection",
        "GetEdgeSelection(sel, type) -> bool\n\n"
        "Fills a selection with edges as of GetEdgeS; kinds as of GetSelectedEdges."),
    Method<&polygons::GetNgonEdgesCompact>(
        "GetNgonEdgesCompact",
        "GetNgonEdgesCompact() -> list of int or None\n\n"
        "For each polygon which of its four edges lie inside an n-gon, as bits from 1 for a to b."),
    Method<Row<Gives>, &PolygonObject::GetShadingBreak, "bbb|ff", "includeBorderEdges", "includeUserBreak",
           "includeUserNormals", "autoNormalsAngle=0.6981317007977318",
           "userNormalsAngle=0.017453292519943295">(
        "GetShadingBreak",
        "GetShadingBreak(includeBorderEdges, includeUserBreak, includeUserNormals, autoNormalsAngle=40 "
        "degrees, "
        "userNormalsAngle=1 degree) -> qlx.BaseSelect or None\n\n"
        "The edges across which shading breaks, as of GetEdgeS: borders, the object's own breaks, those where "
        "its own normals differ by more than the second angle, and those where the polygons differ by more "
        "than "
        "the first. Angles in radians."),
    {},
};

}  // namespace

PyTypeObject g_PolygonObjectType = MakeType<AtomWrapper>({
    .name = "qlx.PolygonObject",
    .doc = "PolygonObject(pcnt, vcnt)\n\nAn object with polygons; a new one has that many points and polygons, "
           "all zero.",
    .base = &g_PointObjectType,
    .methods = g_methods,
    .create = CreateKind<&PolygonObject::Alloc, 5100, "ii", "pcnt", "vcnt">,
    .destroy = FreeElement,
});

namespace {
const TypeQueueEntry g_entry(g_PolygonObjectType);
}

}  // namespace qlx
