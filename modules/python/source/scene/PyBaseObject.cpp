// qlx.BaseObject: an object of the scene, with its place, its tags and its caches.

#include <cmath>
#include <initializer_list>

#include "kit/i_cpython.h"
#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "scene/geometry.h"
#include "scene/parameters.h"
#include "values/containers.h"

namespace qlx {
namespace {

// Classes of which nothing but the type is told yet.
struct View : BaseList2D {};
struct Curve : BaseList2D {};

}  // namespace

template <>
struct TypeOf<View> : TypeIs<g_BaseDrawType> {};
template <>
struct TypeOf<Curve> : TypeIs<g_CCurveType> {};

namespace {

PyObject* GetTags(AtomWrapper* self) {
  return NodesFrom(self,
                   [](QLXAtom* host) -> GeListNode* { return static_cast<BaseObject*>(host)->GetFirstTag(); });
}

PyObject* GetTagDataCount(BaseObject* self, int32_t type) {
  for (const int32_t known : {4, 5600, 5604, 5630, 5671, 5672, 5680, 5682, 5690})
    if (type == known) return ToPython(self->GetTagDataCount(type));
  return RaiseWrongValue();
}

// The new tag is the object's.
PyObject* WrapMade(BaseTag* made, int32_t id) {
  return made ? WrapHostObject(made, false) : ReportAllocFailed(&g_BaseTagType, id);
}

PyObject* MakeTag(BaseObject* self, int32_t type, BaseTag* pred) {
  return WrapMade(self->MakeTag(type, pred), type);
}

// Scripts know the failure by a message with the count in it, where that of MakeTag has the type.
PyObject* MakeVariableTag(BaseObject* self, int32_t type, int32_t count, BaseTag* pred) {
  return WrapMade(self->MakeVariableTag(type, count, pred), count);
}

// A tag that the host refuses stays where it is, and whose it is.
PyObject* InsertTag(BaseObject* self, WrapperOf<BaseTag>* tp, BaseTag* pred) {
  BaseTag* tag;
  if (!tp->Get(tag)) return nullptr;
  if (!self->InsertTag(tag, pred)) return RaiseInsertRefused();
  tp->owned = false;  // the object's
  return NewNone();
}

// The pointer of a capsule without a name, null for no capsule; false with an exception.
bool ReadHelp(CapsuleRecord* capsule, HierarchyHelp*& hh) {
  hh = capsule ? static_cast<HierarchyHelp*>(PyCapsule_GetPointer(&capsule->ob_base, nullptr)) : nullptr;
  return hh || !capsule;
}

PyObject* GetCache(BaseObject* self, CapsuleRecord* hh) {
  HierarchyHelp* help;
  if (!ReadHelp(hh, help)) return nullptr;
  BaseObject* cache = self->GetCache(help);
  return cache ? WrapHostObject(cache, false) : NewNone();
}

PyObject* CheckCache(BaseObject* self, CapsuleRecord* hh) {
  HierarchyHelp* help;
  return ReadHelp(hh, help) ? ToPython(self->CheckCache(help)) : nullptr;
}

PyObject* SetIsoparm(BaseObject* self, WrapperOf<LineObject>* op) {
  LineObject* lines;
  if (!op->Get(lines)) return nullptr;
  self->SetIsoparm(lines);
  return NewNone();
}

int32_t GetHighlightHandle(BaseObject* self, View* bd) {
  return self->GetHighlightHandle(reinterpret_cast<BaseDraw*>(bd));
}

// The clone is the script's, unless it is the generator's own cache: what stands in a list stays the list's.
PyObject* CloneToPython(BaseObject* clone, bool dirty) {
  PyObject* wrapper = clone ? WrapHostObject(clone, true) : NewNone();
  return wrapper ? Py_BuildValue("{s:N,s:N}", "clone", wrapper, "dirty", ToPython(dirty)) : nullptr;
}

// What `dirty` of GetHierarchyClone says; false with an exception. Runs the code of its `__int__`.
bool ReadDirty(PyObject* dirty, HostBool& value) {
  value = 0;
  if (!dirty || dirty == Py_None) return true;
  // What has no integer raises others than TypeError.
  const bool isFloat =
      PyFloat_Check(dirty) && Py_TYPE(dirty)->tp_as_number->nb_int == PyFloat_Type.tp_as_number->nb_int;
  const bool isNone = isFloat && !std::isfinite(PyFloat_AsDouble(dirty));
  const Reference number(isNone ? nullptr : ToInteger(dirty));
  if (number) {
    value = PyObject_IsTrue(number.get());
    return true;
  }
  if (isNone || PyErr_ExceptionMatches(PyExc_TypeError))
    RaiseExpectedTypeFor("BaseObject.GetHierarchyClone", "bool 'dirty' argument", dirty);
  return false;
}

// An object has no clone for itself: scripts know this by the interpreter's SystemError for null alone.
PyObject* GetHierarchyClone(AtomWrapper* self, CapsuleRecord* hh, WrapperOf<BaseObject>* op, int32_t flags,
                            PyObject* dirty, AliasTransRecord* trans, int32_t dirtyflags) {
  HierarchyHelp* help;
  BaseObject *host, *source;
  HostBool isDirty;
  if (!op->Get(source)) return nullptr;
  if (LookUp(self->link) == source) return nullptr;
  if (!ReadHelp(hh, help) || !ReadDirty(dirty, isDirty)) return nullptr;
  if (!Present<BaseObject>::Get(&self->ob_base, host) || !op->Get(source)) return nullptr;
  BaseObject* clone = host->GetHierarchyClone(help, source, flags, &isDirty, AliasTransOf(trans), dirtyflags);
  return CloneToPython(clone, isDirty);
}

PyObject* GetAndCheckHierarchyClone(BaseObject* self, CapsuleRecord* hh, BaseObject* op, int32_t flags,
                                    bool dirty, bool allchildren, AliasTransRecord* trans) {
  HierarchyHelp* help;
  if (self == op || !ReadHelp(hh, help)) return nullptr;
  HostBool isDirty = dirty;
  BaseObject* clone =
      self->GetAndCheckHierarchyClone(help, op, flags, &isDirty, allchildren, AliasTransOf(trans));
  return CloneToPython(clone, isDirty);
}

PyObject* AddDependence(BaseObject* self, CapsuleRecord* hh, BaseObject* op, int32_t dirtyflags) {
  HierarchyHelp* help;
  if (!ReadHelp(hh, help)) return nullptr;
  self->AddDependence(help, op, dirtyflags);
  return NewNone();
}

// A list of wrappers, which may start the collector of garbage: the elements are linked ahead.
PyObject* ListOf(std::initializer_list<QLXAtom*> nodes) {
  std::vector<HostLink> links;
  for (QLXAtom* node : nodes)
    if (!SetLink(node, links.emplace_back())) PyErr_NoMemory();
  return FillWithLinked(PyErr_Occurred() ? nullptr : PyList_New(0), links);
}

PyObject* GetVectorTracks(BaseObject* self, PyObject* id) {
  DescID read;
  if (!ReadDescID(id, "BaseObject.GetVectorTracks", read)) return nullptr;
  const HostDescID word = read.Word();
  CTrack* tracks[3] = {};
  if (!self->GetVectorTracks(&word, tracks)) return NewNone();
  const Reference list(ListOf({tracks[0], tracks[1], tracks[2]}));
  return list ? PyList_AsTuple(list.get()) : nullptr;
}

PyObject* GetVectorCurves(BaseObject* self, Curve* curveToSearch) {
  BaseList2D* curves[3] = {};
  if (!self->GetVectorCurves(curveToSearch, curves)) return PyList_New(0);
  return ListOf({curves[0], curves[1], curves[2]});
}

PyMethodDef g_methods[] = {
    // Places.
    Method<&BaseObject::GetAbsPos>(
        "GetAbsPos",
        "GetAbsPos() -> qlx.Vector\n\nThe place in the parent's system, the frozen part included."),
    Method<&BaseObject::SetAbsPos, "V", "v">("SetAbsPos", "SetAbsPos(v) -> None\n\nSets it."),
    Method<&BaseObject::GetAbsScale>(
        "GetAbsScale", "GetAbsScale() -> qlx.Vector\n\nThe lengths of the axes, the frozen part included."),
    Method<&BaseObject::SetAbsScale, "V", "v">("SetAbsScale", "SetAbsScale(v) -> None\n\nSets it."),
    Method<&BaseObject::GetAbsRot>(
        "GetAbsRot",
        "GetAbsRot() -> qlx.Vector\n\n"
        "The rotation, the frozen part included: heading, pitch and bank in radians, in the object's order."),
    Method<&BaseObject::SetAbsRot, "V", "v">("SetAbsRot", "SetAbsRot(v) -> None\n\nSets it."),
    Method<&BaseObject::GetFrozenPos>("GetFrozenPos",
                                      "GetFrozenPos() -> qlx.Vector\n\nThe frozen part of the place."),
    Method<&BaseObject::SetFrozenPos, "V", "v">("SetFrozenPos", "SetFrozenPos(v) -> None\n\nSets it."),
    Method<&BaseObject::GetFrozenScale>("GetFrozenScale",
                                        "GetFrozenScale() -> qlx.Vector\n\nThe frozen part of the scale."),
    Method<&BaseObject::SetFrozenScale, "V", "v">("SetFrozenScale", "SetFrozenScale(v) -> None\n\nSets it."),
    Method<&BaseObject::GetFrozenRot>(
        "GetFrozenRot", "GetFrozenRot() -> qlx.Vector\n\nThe frozen part of the rotation, in radians."),
    Method<&BaseObject::SetFrozenRot, "V", "v">("SetFrozenRot", "SetFrozenRot(v) -> None\n\nSets it."),
    Method<&BaseObject::GetRelPos>("GetRelPos", "GetRelPos() -> qlx.Vector\n\nThe place in the frozen system."),
    Method<&BaseObject::SetRelPos, "V", "v">("SetRelPos", "SetRelPos(v) -> None\n\nSets it."),
    Method<&BaseObject::GetRelScale>("GetRelScale",
                                     "GetRelScale() -> qlx.Vector\n\nThe scale in the frozen system."),
    Method<&BaseObject::SetRelScale, "V", "v">("SetRelScale", "SetRelScale(v) -> None\n\nSets it."),
    Method<&BaseObject::GetRelRot>(
        "GetRelRot", "GetRelRot() -> qlx.Vector\n\nThe rotation in the frozen system, in radians."),
    Method<&BaseObject::SetRelRot, "V", "v">("SetRelRot", "SetRelRot(v) -> None\n\nSets it."),
    Method<&BaseObject::GetMl>("GetMl",
                               "GetMl() -> qlx.Matrix\n\nThe local matrix: from the object to its parent."),
    Method<&BaseObject::SetMl, "M", "m">("SetMl", "SetMl(m) -> None\n\nSets it; the frozen part stays."),
    Method<&BaseObject::GetFrozenMln>(
        "GetFrozenMln", "GetFrozenMln() -> qlx.Matrix\n\nThe frozen part of it, with axes of length 1."),
    Method<&BaseObject::GetRelMln>(
        "GetRelMln",
        "GetRelMln() -> qlx.Matrix\n\nThe local matrix without its frozen part, axes of length 1."),
    Method<&BaseObject::GetRelMl>("GetRelMl",
                                  "GetRelMl() -> qlx.Matrix\n\nThe local matrix without its frozen part."),
    Method<&BaseObject::SetRelMl, "M", "m">("SetRelMl", "SetRelMl(m) -> None\n\nSets it."),
    Method<&BaseObject::GetMg>("GetMg",
                               "GetMg() -> qlx.Matrix\n\nThe global matrix: from the object to the "
                               "world."),
    Method<&BaseObject::SetMg, "M", "m">("SetMg", "SetMg(m) -> None\n\nSets it, where the object stands now."),
    Method<&BaseObject::GetMln>("GetMln", "GetMln() -> qlx.Matrix\n\nThe local matrix, axes of length 1."),
    Method<&BaseObject::GetMgn>("GetMgn", "GetMgn() -> qlx.Matrix\n\nThe global matrix, axes of length 1."),
    Method<&BaseObject::GetUpMg>(
        "GetUpMg", "GetUpMg() -> qlx.Matrix\n\nThe global matrix of the parent; the identity without one."),
    Method<&BaseObject::GetMp>(
        "GetMp",
        "GetMp() -> qlx.Vector\n\nThe middle of the bounding box, of splines of the curve, in the object's "
        "system."),
    Method<&BaseObject::GetRad>("GetRad", "GetRad() -> qlx.Vector\n\nHalf of the sides of the bounding box."),
    Method<&BaseObject::GetVisibility, "f", "parent">("GetVisibility",
                                                      "GetVisibility(parent) -> float\n\nHow visible it is, 0 "
                                                      "to 1, where its parent is as visible as given."),
    Method<&BaseObject::CopyMatrixTo, "A!", "dst">(
        "CopyMatrixTo",
        "CopyMatrixTo(dst) -> None\n\nGives another object the same place, scale and rotation."),
    // Modes.
    Method<&BaseObject::GetEditorMode>(
        "GetEditorMode",
        "GetEditorMode() -> int\n\nWhether the editor shows it: 0 yes, 1 no, 2 as its parent."),
    Method<&BaseObject::SetEditorMode, "i", "mode">("SetEditorMode", "SetEditorMode(mode) -> None\n\nSets it."),
    Method<&BaseObject::GetRenderMode>(
        "GetRenderMode", "GetRenderMode() -> int\n\nWhether renderings show it, as of GetEditorMode."),
    Method<&BaseObject::SetRenderMode, "i", "mode">("SetRenderMode", "SetRenderMode(mode) -> None\n\nSets it."),
    Method<&BaseObject::GetDeformMode>(
        "GetDeformMode", "GetDeformMode() -> bool\n\nWhether the generator or deformer is enabled."),
    Method<&BaseObject::SetDeformMode, "b", "mode">("SetDeformMode", "SetDeformMode(mode) -> None\n\nSets it."),
    Method<&BaseObject::GetUniqueIP>(
        "GetUniqueIP", "GetUniqueIP() -> int\n\nBy which a generator knows an object of its cache."),
    Method<&BaseObject::SetUniqueIP, "i", "ip">("SetUniqueIP", "SetUniqueIP(ip) -> None\n\nSets it."),
    // Tags.
    Method<&BaseObject::GetFirstTag>("GetFirstTag", "GetFirstTag() -> qlx.BaseTag or None\n\nThe first tag."),
    Method<&BaseObject::GetLastTag>("GetLastTag", "GetLastTag() -> qlx.BaseTag or None\n\nThe last tag."),
    Method<Row<WhileAlive>, &GetTags>("GetTags", "GetTags() -> list of qlx.BaseTag\n\nAll tags."),
    Method<&BaseObject::GetTag, "i|i", "type", "nr=0">(
        "GetTag",
        "GetTag(type, nr=0) -> qlx.BaseTag or None\n\nA tag of that type, number `nr` of them from 0."),
    Method<&GetTagDataCount, "i", "type">(
        "GetTagDataCount",
        "GetTagDataCount(type) -> int\n\n"
        "How many elements of a data type there are: points for 5600, polygons for 5604, segments for 5672. "
        "Raises ValueError for a number that is no data type."),
    Method<&MakeTag, "i|A!", "type", "pred">("MakeTag",
                                             "MakeTag(type, pred=None) -> qlx.BaseTag\n\nA new tag on the "
                                             "object, behind another one or first. Raises "
                                             "BaseException when there can be none."),
    Method<&MakeVariableTag, "ii|A!", "type", "count", "pred">(
        "MakeVariableTag",
        "MakeVariableTag(type, count, pred=None) -> qlx.BaseTag\n\nThe same with that many elements, all "
        "zero."),
    Method<&InsertTag, "O!|A!", "tp", "pred">(
        "InsertTag",
        "InsertTag(tp, pred=None) -> None\n\nPuts a tag onto the object, behind another one or first, out of "
        "where it was. Raises AssertionError when it can't stand there."),
    Method<&BaseObject::KillTag, "i|i", "type", "nr=0">(
        "KillTag", "KillTag(type, nr=0) -> None\n\nDestroys the tag that GetTag finds."),
    Method<&BaseObject::CopyTagsTo, "A!iii", "dest", "visible", "variable", "hierarchical">(
        "CopyTagsTo",
        "CopyTagsTo(dest, visible, variable, hierarchical) -> bool\n\n"
        "Copies tags to another object: by `visible` those that users see, by `variable` those with data for "
        "each point or polygon, by `hierarchical` those that act on what is below. 0 for none of them, NOTOK "
        "for those of whose type the other object has none, any other number for all."),
    Method<&BaseObject::SetPhong, "bbf", "on", "anglelimit", "angle">(
        "SetPhong",
        "SetPhong(on, anglelimit, angle) -> bool\n\n"
        "Gives the object a phong tag, with a limit in radians, or takes it away."),
    // Caches.
    Method<&GetCache, "|O!", "hh">(
        "GetCache", "GetCache(hh=None) -> qlx.BaseObject or None\n\nWhat the generator made last."),
    Method<&BaseObject::GetDeformCache>(
        "GetDeformCache", "GetDeformCache() -> qlx.BaseObject or None\n\nThe object as it was deformed last."),
    Method<&BaseObject::GetCacheParent>(
        "GetCacheParent", "GetCacheParent() -> qlx.BaseObject or None\n\nThe object whose cache it stands in."),
    Method<&CheckCache, "O!", "hh">(
        "CheckCache", "CheckCache(hh) -> bool\n\nWhether the cache is that of the object as it is now."),
    Method<&BaseObject::GetIsoparm>(
        "GetIsoparm",
        "GetIsoparm() -> qlx.LineObject or None\n\nThe lines that stand for the object in views."),
    Method<&SetIsoparm, "O!", "op">("SetIsoparm", "SetIsoparm(op) -> None\n\nGives it a copy of those lines."),
    Method<&BaseObject::GetRealSpline>("GetRealSpline",
                                       "GetRealSpline() -> qlx.SplineObject or None\n\nThe spline that it is, "
                                       "or that it made last, as deformers left it."),
    Method<&BaseObject::IsDirty, "i", "flags">(
        "IsDirty",
        "IsDirty(flags) -> bool\n\nWhether what the DIRTYFLAGS name has changed since the caches were built."),
    Method<&BaseObject::SetDirty, "i", "flags">(
        "SetDirty", "SetDirty(flags) -> None\n\nCounts a change of what the DIRTYFLAGS name."),
    Method<&BaseObject::Touch>("Touch", "Touch() -> None\n\nDrops the caches."),
    Method<&GetHighlightHandle, "A!", "bd">(
        "GetHighlightHandle",
        "GetHighlightHandle(bd) -> int\n\nThe handle under the pointer in that view; -1 without one."),
    // Clones for generators.
    Method<Row<WhileAlive>, &GetHierarchyClone, "O!O!i|OO!Ni", "hh", "op", "flags", "dirty", "trans",
           "dirtyflags=6">(
        "GetHierarchyClone",
        "GetHierarchyClone(hh, op, flags, dirty=None, trans=None, dirtyflags=6) -> dict\n\n"
        "For a generator: \"clone\", a clone of what another object and those below it make, or None, by "
        "HIERARCHYCLONEFLAGS (ASLINE as ASPOLY in this host); and \"dirty\", whether what the DIRTYFLAGS name "
        "of them has changed. They are "
        "cloned "
        "in any case where dirty is true, else when they have changed. Raises SystemError for the object "
        "itself."),
    Method<&GetAndCheckHierarchyClone, "O!A!ib|bO!N", "hh", "op", "flags", "dirty", "allchildren=false",
           "trans">(
        "GetAndCheckHierarchyClone",
        "GetAndCheckHierarchyClone(hh, op, flags, dirty, allchildren=False, trans=None) -> dict\n\n"
        "The same with a dependence list of the generator's own: \"clone\" is the cache, which stays the "
        "generator's, while \"dirty\" is False. With allchildren also for the objects behind the other one."),
    Method<&BaseObject::NewDependenceList>(
        "NewDependenceList",
        "NewDependenceList() -> None\n\nBegins a new list of what the generator depends on."),
    Method<&BaseObject::CompareDependenceList>(
        "CompareDependenceList",
        "CompareDependenceList() -> bool\n\n"
        "Whether the list, and all in it, is as it was when the caches were built."),
    Method<&BaseObject::TouchDependenceList>("TouchDependenceList",
                                             "TouchDependenceList() -> None\n\nLets the next comparison fail."),
    Method<&AddDependence, "O!A!|i", "hh", "op", "dirtyflags=22">(
        "AddDependence",
        "AddDependence(hh, op, dirtyflags=DIRTYFLAGS_MATRIX|DIRTYFLAGS_DATA|DIRTYFLAGS_CACHE) -> None\n\n"
        "Adds an object, with all below it, and what of it matters, to the list. Where what is below stands, "
        "and what "
        "deformers make of it, matters in any case."),
    // Rotations.
    Method<&BaseObject::SetRotationOrder, "i", "order">("SetRotationOrder",
                                                        "SetRotationOrder(order) -> None\n\nSets the order of "
                                                        "the angles, ROTATIONORDER from 0 to 6; the matrices "
                                                        "stay. What is out of range is brought to its end."),
    Method<&BaseObject::GetRotationOrder>("GetRotationOrder", "GetRotationOrder() -> int\n\nThe order."),
    Method<&BaseObject::SetQuaternionRotationMode, "bb", "active", "undo">(
        "SetQuaternionRotationMode",
        "SetQuaternionRotationMode(active, undo) -> None\n\n"
        "Lets animations turn the object by the shortest way between keys."),
    Method<&BaseObject::IsQuaternionRotationMode>("IsQuaternionRotationMode",
                                                  "IsQuaternionRotationMode() -> bool\n\nWhether they do."),
    Method<&BaseObject::SynchronizeVectorTrackKeys, "ib|TT", "vectorTrackID", "bUndo", "startRange",
           "endRange">(
        "SynchronizeVectorTrackKeys",
        "SynchronizeVectorTrackKeys(vectorTrackID, bUndo, startRange, endRange) -> bool\n\n"
        "Gives the three tracks of a vector keys at the same times, from start to end where they are given."),
    Method<&BaseObject::FindBestEulerAngle, "ibb|TT", "rotationTrackID", "bAdjustTangent", "bUndo",
           "startRange", "endRange">(
        "FindBestEulerAngle",
        "FindBestEulerAngle(rotationTrackID, bAdjustTangent, bUndo, startRange, endRange) -> bool\n\n"
        "Turns the keys of a rotation by whole turns, each to be nearest to the one before."),
    Method<&BaseObject::EvaluateSynchronizedRotation, "Ti|b", "time", "flags", "applyRotation=false">(
        "EvaluateSynchronizedRotation",
        "EvaluateSynchronizedRotation(time, flags, applyRotation=False) -> qlx.Vector\n\n"
        "The rotation that the tracks give at a time, in radians; sets it with True."),
    Method<&GetVectorTracks, "O", "id">(
        "GetVectorTracks",
        "GetVectorTracks(id) -> (qlx.CTrack, qlx.CTrack, qlx.CTrack) or None\n\nThe tracks of a vector's "
        "components."),
    Method<&GetVectorCurves, "A!", "curveToSearch">(
        "GetVectorCurves",
        "GetVectorCurves(curveToSearch) -> list of qlx.CCurve\n\n"
        "The curves of the three components of the vector that the curve belongs to; none when there is none."),
    // Others.
    Method<&BaseObject::GetGUID>("GetGUID", "GetGUID() -> int\n\nA number that no other object has."),
    Method<&BaseObject::SearchHierarchy, "A!", "op">(
        "SearchHierarchy",
        "SearchHierarchy(op) -> bool\n\nWhether the other object is this one, or stands below it."),
    Method<&BaseObject::GetModelingAxis, "A!", "doc">(
        "GetModelingAxis",
        "GetModelingAxis(doc) -> qlx.Matrix\n\nThe axes that tools work along, in the world."),
    Method<&BaseObject::SetModelingAxis, "M", "m">("SetModelingAxis",
                                                   "SetModelingAxis(m) -> None\n\nSets them."),
    {},
};

}  // namespace

PyTypeObject g_BaseObjectType = MakeType<AtomWrapper>({
    .name = "qlx.BaseObject",
    .doc = "Object base class.",
    .base = &g_BaseList2DType,
    .methods = g_methods,
    .create = Create<&BaseObject::Alloc, "i", "type">,
    .destroy = FreeElement,
});

namespace {
const TypeQueueEntry g_entry(g_BaseObjectType);
}

}  // namespace qlx
