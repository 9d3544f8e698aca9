// qlx.documents.BaseDocument: a scene with its settings.

#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "scene/documents.h"
#include "values/values.h"

namespace qlx {
namespace {

void SetActiveRenderData(BaseDocument* self, RenderData* rd) { self->SetActiveRenderData(rd); }

PyMethodDef g_methods[] = {
    Method<&BaseDocument::GetFirstObject>(
        "GetFirstObject", "GetFirstObject() -> qlx.BaseObject or None\n\nThe first object at the top."),
    Method<&BaseDocument::GetFirstMaterial>(
        "GetFirstMaterial", "GetFirstMaterial() -> qlx.BaseMaterial or None\n\nThe first material."),
    Method<&BaseDocument::GetFirstRenderData>(
        "GetFirstRenderData",
        "GetFirstRenderData() -> qlx.documents.RenderData or None\n\nThe first render settings."),
    Method<Row<WhileAlive>, &documents::GetObjects>(
        "GetObjects", "GetObjects() -> list of qlx.BaseObject\n\nThe objects at the top, in their order."),
    Method<Row<WhileAlive>, &documents::GetMaterials>(
        "GetMaterials", "GetMaterials() -> list of qlx.BaseMaterial\n\nAll materials, in their order."),
    Method<&documents::InsertObject, "O!|A!A!b", "op", "parent", "pred", "checknames=false">(
        "InsertObject",
        "InsertObject(op, parent=None, pred=None, checknames=False) -> None\n\n"
        "Puts an object behind `pred`, or else as the first child of `parent`, or else first, out of where it "
        "was. With checknames it gets a name that no other object has. Raises AssertionError, and nothing has "
        "moved, for one that others follow, or that can't stand there."),
    Method<&documents::InsertMaterial, "O!|A!b", "mat", "pred", "checknames=false">(
        "InsertMaterial",
        "InsertMaterial(mat, pred=None, checknames=False) -> None\n\nThe same for a material; others may "
        "follow."),
    Method<&documents::InsertRenderData, "O!|A!A!", "rd", "parent", "pred">(
        "InsertRenderData",
        "InsertRenderData(rd, parent=None, pred=None) -> None\n\nThe same for render settings."),
    Method<&documents::InsertRenderDataLast, "O!", "rd">(
        "InsertRenderDataLast", "InsertRenderDataLast(rd) -> None\n\nPuts render settings behind all others."),
    Method<&BaseDocument::Flush>(
        "Flush", "Flush() -> None\n\nDestroys all objects, materials, layers and render settings."),
    Method<&BaseDocument::GetHighest, "ib", "type", "editor">(
        "GetHighest",
        "GetHighest(type, editor) -> qlx.BaseObject or None\n\n"
        "The first enabled object of that type that the editor shows; or renderings, with False."),
    Method<&BaseDocument::SearchMaterial, "$", "str">(
        "SearchMaterial",
        "SearchMaterial(str) -> qlx.BaseMaterial or None\n\nThe first material with that name."),
    Method<&BaseDocument::SearchMaterial, "$", "str">("SearchMaterialInc",
                                                      "SearchMaterialInc(str) -> As SearchMaterial."),
    Method<&BaseDocument::SearchObject, "$", "str">(
        "SearchObject", "SearchObject(str) -> qlx.BaseObject or None\n\nThe first object with that name."),
    Method<&BaseDocument::SearchObject, "$", "str">("SearchObjectInc",
                                                    "SearchObjectInc(str) -> As SearchObject."),
    Method<&BaseDocument::GetTargetObject>("GetTargetObject",
                                           "GetTargetObject() -> qlx.BaseObject or None\n\nThe target object."),
    Method<&BaseDocument::SetTargetObject, "A!", "op">(
        "SetTargetObject", "SetTargetObject(op) -> None\n\nSets the target object."),
    Method<Row<Gives>, &BaseDocument::Polygonize, "|b", "keepanimation=false">(
        "Polygonize",
        "Polygonize(keepanimation=False) -> qlx.documents.BaseDocument or None\n\n"
        "A new document with polygons and splines in place of generators and deformers. It is the script's."),
    Method<Row<WhileAlive>, &documents::GetAllTextures, "|bO", "isNet=true", "ar">(
        "GetAllTextures",
        "GetAllTextures(isNet=True, ar=None) -> qlx.BaseContainer\n\n"
        "The files of the pictures that materials and shaders use, each once, under the ids from 0 on; of "
        "those "
        "in the list `ar` and below them, when it is given."),

    Method<&BaseDocument::GetActiveObject>(
        "GetActiveObject",
        "GetActiveObject() -> qlx.BaseObject or None\n\nThe selected object; None when several are."),
    Method<&BaseDocument::GetActiveMaterial>(
        "GetActiveMaterial",
        "GetActiveMaterial() -> qlx.BaseMaterial or None\n\nThe selected material; None when several are."),
    Method<&BaseDocument::GetActiveTag>(
        "GetActiveTag", "GetActiveTag() -> qlx.BaseTag or None\n\nThe selected tag; None when several are."),
    Method<&BaseDocument::GetActiveRenderData>("GetActiveRenderData",
                                               "GetActiveRenderData() -> qlx.documents.RenderData or None\n\n"
                                               "The active render settings, or else the first ones."),
    Method<Row<WhileAlive>, &documents::GetActiveObjects, "i", "flags">(
        "GetActiveObjects",
        "GetActiveObjects(flags) -> list of qlx.BaseObject\n\n"
        "The selected objects. Those below other selected ones only with GETACTIVEOBJECTFLAGS_CHILDREN; in the "
        "order of their selection with GETACTIVEOBJECTFLAGS_SELECTIONORDER, else in that of the scene."),
    Method<Row<WhileAlive>, &documents::GetOrderedActiveObjects>(
        "GetOrderedActiveObjects",
        "GetOrderedActiveObjects() -> list of qlx.BaseObject\n\n"
        "All selected objects, in the order in which they were selected."),
    Method<Row<WhileAlive>, &documents::GetActiveTags>(
        "GetActiveTags", "GetActiveTags() -> list of qlx.BaseTag\n\nThe selected tags."),
    Method<Row<WhileAlive>, &documents::GetActiveMaterials>(
        "GetActiveMaterials", "GetActiveMaterials() -> list of qlx.BaseMaterial\n\nThe selected materials."),
    Method<Row<WhileAlive>, &documents::GetSelection>(
        "GetSelection",
        "GetSelection() -> list of qlx.BaseList2D\n\nThe selected objects, then tags, then materials."),
    Method<Row<WhileAlive>, &documents::GetActiveObjectsFilter, "bii", "children", "type", "instanceof">(
        "GetActiveObjectsFilter",
        "GetActiveObjectsFilter(children, type, instanceof) -> list of qlx.BaseObject\n\n"
        "The selected objects of a type, -1 for any; with instanceof also of types that derive from it, with "
        "children also those below other selected ones."),
    Method<Row<WhileAlive>, &documents::GetRealActiveObject, "|O", "help">(
        "GetRealActiveObject",
        "GetRealActiveObject(help=None) -> (qlx.BaseObject, bool) or None\n\n"
        "The first selected object, or the first of the list `help`, and whether there are others."),
    Method<&BaseDocument::SetActiveObject, "A!N|i", "op", "mode=0">(
        "SetActiveObject",
        "SetActiveObject(op, mode=qlx.SELECTION_NEW) -> None\n\n"
        "Selects an object and no other, or none for None; with SELECTION_ADD beside others, with "
        "SELECTION_SUB "
        "no longer. Nothing happens for one that isn't in the document."),
    Method<&BaseDocument::SetActiveTag, "A!N|i", "op", "mode=0">(
        "SetActiveTag", "SetActiveTag(op, mode=qlx.SELECTION_NEW) -> None\n\nThe same for a tag."),
    Method<&BaseDocument::SetActiveMaterial, "A!N|i", "mp", "mode=0">(
        "SetActiveMaterial",
        "SetActiveMaterial(mp, mode=qlx.SELECTION_NEW) -> None\n\nThe same for a material."),
    Method<&SetActiveRenderData, "A!", "rd">(
        "SetActiveRenderData", "SetActiveRenderData(rd) -> None\n\nMakes render settings the active ones."),
    Method<&BaseDocument::SetSelection, "A!|i", "bl", "mode=0">(
        "SetSelection",
        "SetSelection(bl, mode=qlx.SELECTION_NEW) -> None\n\n"
        "As SetActiveObject for anything of the document; nothing of any kind stays selected beside a new "
        "one."),

    Method<&BaseDocument::GetFps>("GetFps", "GetFps() -> int\n\nThe frames of a second."),
    Method<&BaseDocument::SetFps, "i", "fps">("SetFps", "SetFps(fps) -> None\n\nSets them, 1 to 2500."),
    Method<&BaseDocument::GetLOD>("GetLOD", "GetLOD() -> float\n\nThe level of detail of the editor, 0 to 1."),
    Method<&BaseDocument::SetLOD, "r", "lod">("SetLOD", "SetLOD(lod) -> None\n\nSets it."),
    Method<&BaseDocument::GetRenderLod>(
        "GetRenderLod", "GetRenderLod() -> float\n\nThe level of detail of renderings, 0 to 1."),
    Method<&BaseDocument::SetRenderLod, "r", "lod">("SetRenderLod", "SetRenderLod(lod) -> None\n\nSets it."),
    Method<&BaseDocument::GetMode>("GetMode",
                                   "GetMode() -> int\n\nWhat tools work on, a constant qlx.MODE_..."),
    Method<&BaseDocument::SetMode, "i", "mode">("SetMode", "SetMode(mode) -> None\n\nSets it."),
    Method<&BaseDocument::GetAction>("GetAction", "GetAction() -> int\n\nThe id of the tool."),
    Method<&BaseDocument::SetAction, "i", "id">("SetAction", "SetAction(id) -> None\n\nSets it."),
    Method<&BaseDocument::GetTime>("GetTime", "GetTime() -> qlx.BaseTime\n\nThe time."),
    Method<&BaseDocument::SetTime, "T", "time">("SetTime", "SetTime(time) -> None\n\nSets it."),
    Method<&BaseDocument::GetMinTime>("GetMinTime", "GetMinTime() -> qlx.BaseTime\n\nThe document's start."),
    Method<&BaseDocument::SetMinTime, "T", "t">("SetMinTime", "SetMinTime(t) -> None\n\nSets it."),
    Method<&BaseDocument::GetMaxTime>("GetMaxTime", "GetMaxTime() -> qlx.BaseTime\n\nThe document's end."),
    Method<&BaseDocument::SetMaxTime, "T", "t">("SetMaxTime", "SetMaxTime(t) -> None\n\nSets it."),
    Method<&BaseDocument::GetLoopMinTime>("GetLoopMinTime",
                                          "GetLoopMinTime() -> qlx.BaseTime\n\nThe start of what is played."),
    Method<&BaseDocument::SetLoopMinTime, "T", "t">("SetLoopMinTime", "SetLoopMinTime(t) -> None\n\nSets it."),
    Method<&BaseDocument::GetLoopMaxTime>("GetLoopMaxTime",
                                          "GetLoopMaxTime() -> qlx.BaseTime\n\nThe end of what is played."),
    Method<&BaseDocument::SetLoopMaxTime, "T", "t">("SetLoopMaxTime", "SetLoopMaxTime(t) -> None\n\nSets it."),
    Method<&BaseDocument::GetChanged>(
        "GetChanged", "GetChanged() -> bool\n\nWhether SetChanged was called since it was made or saved."),
    Method<&BaseDocument::SetChanged>("SetChanged", "SetChanged() -> None\n\nTells that the document changed."),
    Method<&BaseDocument::IsEditMode>(
        "IsEditMode", "IsEditMode() -> bool\n\nWhether the mode is that of points, edges or polygons."),
    Method<&BaseDocument::IsAxisEnabled>("IsAxisEnabled",
                                         "IsAxisEnabled() -> bool\n\nWhether the mode is that of axes."),
    Method<&BaseDocument::GetSplinePlane>("GetSplinePlane",
                                          "GetSplinePlane() -> int\n\n"
                                          "The plane that is chosen for drawing splines: qlx.PRIM_PLANE_XY, "
                                          "PRIM_PLANE_ZY or PRIM_PLANE_XZ. It is "
                                          "the parameter qlx.DOCUMENT_SPLINEPLANE."),
    Method<&BaseDocument::GetDocumentName>(
        "GetDocumentName", "GetDocumentName() -> str\n\nThe name of the file, or of what has none yet."),
    Method<&BaseDocument::SetDocumentName, "%", "fn">("SetDocumentName",
                                                      "SetDocumentName(fn) -> None\n\nSets it."),
    Method<&BaseDocument::GetDocumentPath>(
        "GetDocumentPath", "GetDocumentPath() -> str\n\nThe folder of the file; empty when there is none yet."),
    Method<&BaseDocument::SetDocumentPath, "%", "path">("SetDocumentPath",
                                                        "SetDocumentPath(path) -> None\n\nSets it."),
    Method<Row<Gives>, &BaseDocument::GetDocumentData, "|i", "type=-1">(
        "GetData",
        "GetData(type=-1) -> qlx.BaseContainer\n\n"
        "A copy of the settings of a type qlx.DOCUMENTSETTINGS_...; for -1 of all: the general ones, and in it "
        "the others under their types."),
    Method<Row<Gives>, &BaseDocument::GetDocumentData, "|i", "type=-1">(
        "GetDocumentData", "GetDocumentData(type=-1) -> As GetData."),
    Method<&BaseDocument::SetDocumentData, "iC", "type", "bc">(
        "SetDocumentData",
        "SetDocumentData(type, bc) -> None\n\nReplaces the settings of a type, or all for -1."),
    Method<Row<PartOfSelf>, &BaseDocument::GetSettingsInstance, "i", "type">(
        "GetSettingsInstance",
        "GetSettingsInstance(type) -> qlx.BaseContainer or None\n\n"
        "The settings of a type themselves, which die with the document; None for an unknown type."),
    Method<&BaseDocument::GetLayerObjectRoot>(
        "GetLayerObjectRoot", "GetLayerObjectRoot() -> qlx.GeListHead\n\nThe head of the layers."),
    Method<&BaseDocument::SetRewind, "|i", "flags=0">("SetRewind",
                                                      "SetRewind(flags=0) -> None\n\nGoes to the start."),
    Method<&documents::GetParticleSystem>(
        "GetParticleSystem",
        "GetParticleSystem() -> qlx.modules.driftmotes.DM_MasterSystem\n\n"
        "The particle system. Raises BaseException where the application has none."),
    Method<&documents::ExecutePasses, "Xbbbi", "bt", "animation", "expressions", "caches", "flags">(
        "ExecutePasses",
        "ExecutePasses(bt, animation, expressions, caches, flags) -> bool\n\n"
        "Evaluates the document: expressions in the order of their priorities, then the caches of generators\n"
        "and deformers. Tracks hold no keys yet, so animation does nothing. False when `bt`, a\n"
        "qlx.threading.BaseThread or None, is to stop. Other threads run meanwhile."),
    {},
};

}  // namespace

PyTypeObject g_BaseDocumentType = MakeType<AtomWrapper>({
    .name = "qlx.documents.BaseDocument",
    .doc = "A document: a scene and its settings.",
    .base = &g_BaseList2DType,
    .methods = g_methods,
    .create = Create<&BaseDocument::Alloc, "">,
    .destroy = FreeElement,
});

namespace {
const TypeQueueEntry g_entry(g_BaseDocumentType);
}

}  // namespace qlx
