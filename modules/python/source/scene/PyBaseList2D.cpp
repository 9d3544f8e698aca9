// qlx.BaseList2D: an element with a name and parameters.

#include "bitmaps/bitmaps.h"
#include "kelvar.framework/source/tables/t_messages.h"
#include "kit/i_conversion.h"
#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "scene/layers.h"
#include "scene/parameters.h"
#include "scene/scene.h"
#include "scene/userdata.h"
#include "values/values.h"

namespace qlx {
namespace {

BaseList2D* HostOf(PyObject* self) {
  return static_cast<BaseList2D*>(LookUp(reinterpret_cast<AtomWrapper*>(self)->link));
}

PyObject* Text(PyObject* self) {
  return Guarded([&]() -> PyObject* {
    const char* name = Py_TYPE(self)->tp_name;
    BaseList2D* host = HostOf(self);
    if (!host) return PyUnicode_FromFormat("<dead %s object at %p>", name, static_cast<void*>(self));
    PyObject* called = ToPython(host->GetName());
    PyObject* type = called ? ToPython(host->GetTypeName()) : nullptr;
    PyObject* text = nullptr;
    if (type)
      text = PyUnicode_FromFormat("<%s object called %U%s%U with ID %d at %p>", name, called,
                                  PyUnicode_GET_LENGTH(type) ? "/" : "", type, int(host->GetType()),
                                  static_cast<void*>(host));
    Py_XDECREF(called);
    Py_XDECREF(type);
    return text;
  });
}

void SetData(BaseList2D* self, BaseContainer* bc, bool add) { self->SetData(bc, add); }

PyObject* GetMain(BaseList2D* self) {
  BaseList2D* main = self->GetMain();
  return main ? WrapHostObject(main, false) : NewNone();
}

PyObject* InsertShader(BaseList2D* self, WrapperOf<BaseShader>* shader, BaseShader* pred) {
  BaseShader* host;
  if (!shader->Get(host)) return nullptr;
  if (host->GetNext()) return RaiseHasNext();
  if (!self->InsertShader(host, pred)) return RaiseInsertRefused();
  shader->owned = false;  // the node's
  return NewNone();
}

PyObject* InsertTrackSorted(BaseList2D* self, WrapperOf<CTrack>* track) {
  CTrack* host;
  if (!track->Get(host)) return nullptr;
  if (!self->InsertTrackSorted(host)) return RaiseInsertRefused();
  track->owned = false;  // the node's
  return NewNone();
}

PyObject* GetCTracks(AtomWrapper* self) {
  return NodesFrom(
      self, [](QLXAtom* host) -> GeListNode* { return static_cast<BaseList2D*>(host)->GetFirstCTrack(); });
}

PyObject* FindCTrack(BaseList2D* self, PyObject* id) {
  DescID read;
  if (!ReadDescID(id, "BaseList2D.FindCTrack", read)) return nullptr;
  const HostDescID word = read.Word();
  BaseList2D* track = self->FindCTrack(&word);
  return track ? WrapHostObject(track, false) : NewNone();
}

PyObject* GetIcon(BaseList2D* self) {
  HostIcon icon{};
  self->GetIcon(&icon);
  if (!icon.bmp) return NewNone();
  PyObject* bmp = Present<BaseBitmap>::Wrap(icon.bmp, false);
  return bmp ? Py_BuildValue("{s:N,s:i,s:i,s:i,s:i}", "bmp", bmp, "x", icon.x, "y", icon.y, "w", icon.w, "h",
                             icon.h)
             : nullptr;
}

PyObject* GetNodeData(BaseList2D* self) {
  HostPythonInstance instance{};
  self->Message(HOST_MSG_PYTHON_INSTANCE, &instance);
  return instance.object ? static_cast<PyObject*>(instance.object) : NewNone();
}

PyObject* SetAnimatedParameter(AtomWrapper* self, PyObject* track, PyObject* id, PyObject* t_data1,
                               PyObject* t_data2, double mix, int32_t flags) {
  if (!PyObject_TypeCheck(track, &g_CTrackType)) return RaiseAttributeIsNo("Ctrack");
  if (!IsDescID(id)) return RaiseAttributeIsNo("DescID");
  GeData first, second;
  if (!GeDataFromPython(t_data1, first) || !GeDataFromPython(t_data2, second)) return nullptr;
  // The values' own code may have destroyed both.
  QLXAtom* host;
  CTrack* of;
  if (!ResolveAtom(self, host) || !Present<CTrack>::Get(track, of)) return nullptr;
  const HostDescID word = ValueOf<DescID>(id).Word();
  return ToPython(
      static_cast<BaseList2D*>(host)->SetAnimatedParameter(of, &word, first.Data(), second.Data(), mix, flags));
}

PyObject* GetAnimatedParameter(AtomWrapper* self, PyObject* id, int32_t flags) {
  if (!IsDescID(id)) return RaiseAttributeIsNo("DescID");
  GeData first, second;
  double mix = 0;
  const HostDescID word = ValueOf<DescID>(id).Word();
  BaseList2D* host = HostOf(&self->ob_base);
  if (!host->GetAnimatedParameter(&word, first.Out(), second.Out(), &mix, flags)) return ToPython(false);
  PyObject* before = ParameterToPython(self, first);
  PyObject* after = before ? ParameterToPython(self, second) : nullptr;
  if (after) return Py_BuildValue("(NNd)", before, after, mix);
  Py_XDECREF(before);
  return nullptr;
}

PyObject* FindKeyframeSelection(BaseList2D* self, PyObject* id) {
  DescID read;
  if (!ReadDescID(id, "BaseList2D.FindKeyframeSelection", read)) return nullptr;
  const HostDescID word = read.Word();
  return ToPython(self->FindKeyframeSelection(&word));
}

PyObject* SetKeyframeSelection(BaseList2D* self, PyObject* id, bool selection) {
  DescID read;
  if (!ReadDescID(id, "BaseList2D.SetKeyframeSelection", read)) return nullptr;
  const HostDescID word = read.Word();
  return ToPython(self->SetKeyframeSelection(&word, selection));
}

void SetLayerObject(BaseList2D* self, LayerObject* layer) { self->SetLayerObject(layer); }

PyMethodDef g_methods[] = {
    Method<Row<Gives>, &BaseList2D::GetData>("GetData",
                                             "GetData() -> qlx.BaseContainer\n\nA copy of the container."),
    Method<&SetData, "C|b", "bc", "add=true">(
        "SetData",
        "SetData(bc, add=True) -> None\n\nMerges a container into that of the object; replaces it with False."),
    Method<Row<PartOfSelf>, &BaseList2D::GetDataInstance>(
        "GetDataInstance",
        "GetDataInstance() -> qlx.BaseContainer or None\n\n"
        "The object's own container: a change of it is a change of the object. It dies with the object."),
    Method<&BaseList2D::GetName>("GetName", "GetName() -> str\n\nThe name."),
    Method<&BaseList2D::SetName, "$", "name">(
        "SetName", "SetName(name) -> None\n\nSets the name; any object, by its text."),
    Method<&BaseList2D::SetBit, "i", "mask">("SetBit", "SetBit(mask) -> None\n\nSets bits."),
    Method<&BaseList2D::GetBit, "i", "mask">("GetBit", "GetBit(mask) -> bool\n\nWhether the bits are set."),
    Method<&BaseList2D::DelBit, "i", "mask">("DelBit", "DelBit(mask) -> None\n\nClears bits."),
    Method<&BaseList2D::ToggleBit, "i", "mask">("ToggleBit", "ToggleBit(mask) -> None\n\nTurns bits over."),
    Method<&BaseList2D::GetAllBits>("GetAllBits", "GetAllBits() -> int\n\nAll bits."),
    Method<&BaseList2D::SetAllBits, "i", "mask">("SetAllBits",
                                                 "SetAllBits(mask) -> None\n\nReplaces all bits."),
    Method<&BaseList2D::GetBubbleHelp>("GetBubbleHelp",
                                       "GetBubbleHelp() -> str\n\nThe help text of the object's type."),
    Method<&BaseList2D::GetTypeName>("GetTypeName", "GetTypeName() -> str\n\nThe name of the object's type."),
    Method<&GetMain>("GetMain",
                     "GetMain() -> qlx.BaseList2D or None\n\n"
                     "The object in whose list this stands: of a tag its object, of an object its document."),
    Method<&BaseList2D::GetFirstShader>("GetFirstShader",
                                        "GetFirstShader() -> qlx.BaseShader or None\n\nThe first shader."),
    Method<&InsertShader, "O!|A!", "shader", "pred">(
        "InsertShader",
        "InsertShader(shader, pred=None) -> None\n\n"
        "Puts a shader behind another one, or first. Raises AssertionError for one that others follow."),
    Method<&InsertTrackSorted, "O!", "track">(
        "InsertTrackSorted", "InsertTrackSorted(track) -> None\n\nPuts a track among the others, by its id."),
    Method<&BaseList2D::GetFirstCTrack>("GetFirstCTrack",
                                        "GetFirstCTrack() -> qlx.CTrack or None\n\nThe first track."),
    Method<&BaseList2D::GetCTrackRoot>("GetCTrackRoot",
                                       "GetCTrackRoot() -> qlx.GeListHead or None\n\nThe head of the tracks."),
    Method<&BaseList2D::GetNLARoot>("GetNLARoot",
                                    "GetNLARoot() -> qlx.GeListHead or None\n\nThe head of the motion layers."),
    Method<Row<WhileAlive>, &GetCTracks>("GetCTracks", "GetCTracks() -> list of qlx.CTrack\n\nAll tracks."),
    Method<&FindCTrack, "O", "id">("FindCTrack",
                                   "FindCTrack(id) -> qlx.CTrack or None\n\nThe track of a parameter."),
    Method<&GetIcon>("GetIcon",
                     "GetIcon() -> dict or None\n\n"
                     "The icon: a part of the picture \"bmp\" at \"x\" and \"y\", \"w\" by \"h\" pixels."),
    Method<&BaseList2D::GetIconEx>("GetIconEx", "GetIconEx() -> str\n\nThe icon's id or file."),
    Method<&GetNodeData>("GetNodeData",
                         "GetNodeData() -> object or None\n\nThe Python object that implements the node."),
    Method<&layers::GetData, "A!|b", "doc", "rawdata=false">(
        "GetLayerData",
        "GetLayerData(doc, rawdata=False) -> dict or None\n\n"
        "What the object's layer says: \"solo\", \"view\", \"render\", \"manager\", \"locked\", "
        "\"generators\", "
        "\"deformers\", \"expressions\", \"animation\", \"xref\" and \"color\". With rawdata the layer's own "
        "word, without those above it."),
    Method<&layers::SetData, "A!O", "doc", "data">(
        "SetLayerData",
        "SetLayerData(doc, data) -> bool\n\nChanges what the dictionary names of the object's layer."),
    Method<&BaseList2D::GetLayerObject, "A!", "doc">(
        "GetLayerObject", "GetLayerObject(doc) -> qlx.documents.LayerObject or None\n\nThe object's layer."),
    Method<&SetLayerObject, "A!N", "layer">("SetLayerObject",
                                            "SetLayerObject(layer) -> None\n\nPuts the object onto a layer."),
    Method<&BaseList2D::TransferGoal, "A!b", "dst", "undolink">(
        "TransferGoal",
        "TransferGoal(dst, undolink) -> bool\n\n"
        "Points the links of the document's elements and settings that point here at `dst`; those to a layer\n"
        "only at a layer. False without a document, and where `dst` stands in another one."),
    Method<Row<WhileAlive>, &SetAnimatedParameter, "OOOOri", "track", "id", "t_data1", "t_data2", "mix",
           "flags">(
        "SetAnimatedParameter",
        "SetAnimatedParameter(track, id, t_data1, t_data2, mix, flags) -> bool\n\n"
        "Sets a parameter to the value between both at mix, 0 to 1. Raises TypeError for what is no track."),
    Method<Row<WhileAlive>, &GetAnimatedParameter, "Oi", "id", "flags">(
        "GetAnimatedParameter",
        "GetAnimatedParameter(id, flags) -> (object, object, float) or False\n\nThe values and the mix."),
    Method<&userdata::Add, "C", "datadescription">(
        "AddUserData",
        "AddUserData(datadescription) -> qlx.DescID or None\n\n"
        "Adds a parameter with these settings; None without a DESC_DATATYPE that parameters may have."),
    Method<&userdata::Remove, "O", "descid">(
        "RemoveUserData", "RemoveUserData(descid) -> bool\n\nRemoves a user's parameter, by its number or id."),
    Method<&userdata::Set, "OC|A!", "descid", "datadescription", "bl">(
        "SetUserDataContainer",
        "SetUserDataContainer(descid, datadescription, bl=None) -> bool\n\n"
        "Replaces the settings of a user's parameter, or adds one of that number, which is 1 at least. The\n"
        "value that `bl` has for it is reset when its type changes."),
    Method<Row<WhileAlive>, &userdata::GetAll>(
        "GetUserDataContainer",
        "GetUserDataContainer() -> list of (qlx.DescID, qlx.BaseContainer)\n\n"
        "The ids and settings of the parameters that a user added."),
    Method<&BaseList2D::AddEventNotification, "A!iiC", "bl", "eventid", "flags", "data">(
        "AddEventNotification",
        "AddEventNotification(bl, eventid, flags, data) -> bool\n\n"
        "Sends this object a message whenever the event happens to `bl`."),
    Method<&BaseList2D::RemoveEventNotification, "A!A!i", "doc", "bl", "eventid">(
        "RemoveEventNotification", "RemoveEventNotification(doc, bl, eventid) -> bool\n\nEnds that."),
    Method<&BaseList2D::FindEventNotification, "A!A!i", "doc", "bl", "eventid">(
        "FindEventNotification",
        "FindEventNotification(doc, bl, eventid) -> bool\n\nWhether the object is notified."),
    Method<&FindKeyframeSelection, "O", "id">(
        "FindKeyframeSelection",
        "FindKeyframeSelection(id) -> bool\n\nWhether the parameter is selected for keyframes."),
    Method<&SetKeyframeSelection, "Ob", "id", "selection">(
        "SetKeyframeSelection",
        "SetKeyframeSelection(id, selection) -> bool\n\n"
        "Selects a parameter for keyframes, or no longer. False for an id of none."),
    Method<&BaseList2D::KeyframeSelectionContent>(
        "KeyframeSelectionContent",
        "KeyframeSelectionContent() -> bool\n\nWhether any parameter is selected for keyframes."),
    Method<&BaseList2D::ClearKeyframeSelection>(
        "ClearKeyframeSelection", "ClearKeyframeSelection() -> None\n\nSelects no parameter for keyframes."),
    Method<&BaseList2D::Scale, "r", "scale">("Scale", "Scale(scale) -> None\n\nMultiplies what is a length."),
    Method<&BaseList2D::Edit>("Edit", "Edit() -> bool\n\nOpens the object's editor."),
    Method<&BaseList2D::GetInfo>("GetInfo",
                                 "GetInfo() -> int\n\nThe flags with which the type was registered."),
    {},
};

}  // namespace

PyTypeObject g_BaseList2DType = MakeType<AtomWrapper>({
    .name = "qlx.BaseList2D",
    .doc = "BaseList2D class.",
    .base = &g_GeListNodeType,
    .methods = g_methods,
    .create = Create<&BaseList2D::Alloc, "i", "type">,
    .destroy = FreeElement,
    .text = Text,
});

namespace {
const TypeQueueEntry g_entry(g_BaseList2DType);
}

}  // namespace qlx
