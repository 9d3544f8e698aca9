// The elements of the scene as scripts see them.
#ifndef SCENE_SCENE_H
#define SCENE_SCENE_H

#include <Python.h>

#include <vector>

#include "kelvar/aliastrans.h"
#include "kelvar/description.h"
#include "kelvar/document.h"
#include "kelvar/layer.h"
#include "kelvar/listhead.h"
#include "kelvar/material.h"
#include "kelvar/object.h"
#include "kelvar/shader.h"
#include "kelvar/tag.h"
#include "kelvar/track.h"
#include "kit/i_arguments.h"
#include "kit/i_present.h"

namespace qlx {

extern PyTypeObject g_QLXAtomType;
extern PyTypeObject g_GeListNodeType;
extern PyTypeObject g_GeListHeadType;
extern PyTypeObject g_BaseList2DType;

// The functions of the package for events of the scene; false with an exception.
bool AddEventFunctions(PyObject* package);

// Those of which only the place among the others is told: their rows come with what they are about.
extern PyTypeObject g_BaseDocumentType;
extern PyTypeObject g_LayerObjectType;
extern PyTypeObject g_RenderDataType;
extern PyTypeObject g_BaseVideoPostType;
extern PyTypeObject g_BaseMaterialType;
extern PyTypeObject g_MaterialType;
extern PyTypeObject g_BaseShaderType;
extern PyTypeObject g_LayerShaderType;
extern PyTypeObject g_CTrackType;
extern PyTypeObject g_CCurveType;
extern PyTypeObject g_CKeyType;
extern PyTypeObject g_BaseDrawType;
extern PyTypeObject g_FieldLayerType;
extern PyTypeObject g_RenderJobType;
extern PyTypeObject g_GvNodeType;
extern PyTypeObject g_GvNodeMasterType;
extern PyTypeObject g_DMMasterSystemType;
extern PyTypeObject g_DMPGroupType;
extern PyTypeObject g_PaintTextureType;
extern PyTypeObject g_PaintBitmapType;
extern PyTypeObject g_PaintLayerType;
extern PyTypeObject g_PaintLayerFolderType;
extern PyTypeObject g_BaseTakeType;
extern PyTypeObject g_BaseOverrideType;
extern PyTypeObject g_BaseOverrideGroupType;

extern PyTypeObject g_BaseObjectType;
extern PyTypeObject g_PointObjectType;
extern PyTypeObject g_PolygonObjectType;
extern PyTypeObject g_SplineObjectType;
extern PyTypeObject g_LineObjectType;
extern PyTypeObject g_CameraObjectType;
extern PyTypeObject g_InstanceObjectType;
extern PyTypeObject g_FieldObjectType;
extern PyTypeObject g_VoronoiFractureType;
extern PyTypeObject g_LodObjectType;
extern PyTypeObject g_VolumeObjectType;
extern PyTypeObject g_VolumeBuilderType;
extern PyTypeObject g_CAJointObjectType;
extern PyTypeObject g_HairObjectType;
extern PyTypeObject g_MotionTrackerObjectType;

extern PyTypeObject g_BaseTagType;
extern PyTypeObject g_TextureTagType;
extern PyTypeObject g_SelectionTagType;
extern PyTypeObject g_CustomDataTagType;
extern PyTypeObject g_VariableTagType;
extern PyTypeObject g_UVWTagType;
extern PyTypeObject g_SegmentTagType;
extern PyTypeObject g_TangentTagType;
extern PyTypeObject g_PolygonTagType;
extern PyTypeObject g_PointTagType;
extern PyTypeObject g_NormalTagType;
extern PyTypeObject g_VertexColorTagType;
extern PyTypeObject g_WireletTagType;
extern PyTypeObject g_HairVertexMapTagType;
extern PyTypeObject g_HairSelectionTagType;
extern PyTypeObject g_HairTangentTagType;
extern PyTypeObject g_CAPoseMorphTagType;
extern PyTypeObject g_CAWeightTagType;
extern PyTypeObject g_SculptTagType;

template <PyTypeObject& kType>
struct TypeIs {
  static PyTypeObject& Get() { return kType; }
};

template <>
struct TypeOf<QLXAtom> : TypeIs<g_QLXAtomType> {};
template <>
struct TypeOf<GeListNode> : TypeIs<g_GeListNodeType> {};
template <>
struct TypeOf<GeListHead> : TypeIs<g_GeListHeadType> {};
template <>
struct TypeOf<BaseList2D> : TypeIs<g_BaseList2DType> {};
template <>
struct TypeOf<BaseDocument> : TypeIs<g_BaseDocumentType> {};
template <>
struct TypeOf<LayerObject> : TypeIs<g_LayerObjectType> {};
template <>
struct TypeOf<BaseObject> : TypeIs<g_BaseObjectType> {};
template <>
struct TypeOf<BaseTag> : TypeIs<g_BaseTagType> {};
template <>
struct TypeOf<BaseMaterial> : TypeIs<g_BaseMaterialType> {};
template <>
struct TypeOf<BaseShader> : TypeIs<g_BaseShaderType> {};
template <>
struct TypeOf<CTrack> : TypeIs<g_CTrackType> {};

// The wrapper of an element as an argument by "O!"; what it stands for is resolved by the receiver.
template <class Host>
struct WrapperOf : AtomWrapper {
  bool Get(Host*& host) { return Present<Host>::Get(reinterpret_cast<PyObject*>(this), host); }
};

template <class Host>
struct RecordType<WrapperOf<Host>> : TypeOf<Host> {};

extern PyTypeObject g_CustomIconSettingsType;

// The description of an element's parameters, a copy of its own.

extern PyTypeObject g_DescriptionType;

PyObject* NewDescription(Description* data);  // takes it over

template <>
struct Present<Description> {
  static PyObject* Wrap(Description* host, bool) { return NewDescription(host); }
};

// The translation of links while elements are copied.

extern PyTypeObject g_AliasTransType;

struct AliasTransRecord {
  PyObject ob_base;
  AliasTrans* data;
};

template <>
struct RecordType<AliasTransRecord> : TypeIs<g_AliasTransType> {};

inline AliasTrans* AliasTransOf(AliasTransRecord* record) { return record ? record->data : nullptr; }

// Fills a list with wrappers of what the links point at, and takes both over; what has gone is left out. Null
// with an exception, also for no list.
PyObject* FillWithLinked(PyObject* list, std::vector<HostLink>& links);

// A list of the wrappers of what `getFirst` answers for the wrapper's element, and of what follows that; null
// with an exception.
PyObject* NodesFrom(AtomWrapper* wrapper, GeListNode* (*getFirst)(QLXAtom* host));

}  // namespace qlx

#endif
