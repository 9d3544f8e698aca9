// The types of elements whose rows come with what they are about: each has its place in the hierarchy, and
// every element of the host gets its own type.

#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "scene/parameters.h"
#include "scene/scene.h"

namespace qlx {
namespace {

PyTypeObject Shell(const char* name, const char* doc, PyTypeObject& base, newfunc create = RefuseInstance,
                   destructor destroy = FreeElement) {
  return MakeType<AtomWrapper>({.name = name, .doc = doc, .base = &base, .create = create, .destroy = destroy});
}

constexpr int32_t kMaterial = 5703;

BaseMaterial* AllocMaterial() { return BaseMaterial::Alloc(kMaterial); }

PyObject* ConstructTrack(PyTypeObject* type, PyObject* args, PyObject* keywords) {
  return Guarded([&]() -> PyObject* {
    Arguments<&ConstructTrack, TypeList<BaseList2D*, PyObject*>, "A!O", "bl", "id"> arguments;
    if (!arguments.Parse(args, keywords)) return nullptr;
    return arguments.Apply([&](BaseList2D* node, PyObject* id) -> PyObject* {
      DescID read;
      if (!ReadDescID(id, "CTrack.__init__", read)) return nullptr;
      const HostDescID word = read.Word();
      CTrack* track = CTrack::Alloc(node, &word);
      return track ? WrapHostObject(track, true) : ReportAllocFailed(type, 0);  // the script's
    });
  });
}

}  // namespace

PyTypeObject g_LayerObjectType = Shell("qlx.documents.LayerObject", "A layer of a document.", g_BaseList2DType);
PyTypeObject g_RenderDataType =
    Shell("qlx.documents.RenderData", "The settings of a rendering.", g_BaseList2DType);
PyTypeObject g_BaseVideoPostType =
    Shell("qlx.documents.BaseVideoPost", "An effect of a rendering.", g_BaseList2DType);
PyTypeObject g_BaseMaterialType = Shell("qlx.BaseMaterial", "Material base class.", g_BaseList2DType,
                                        Create<&BaseMaterial::Alloc, "i", "type">);
PyTypeObject g_MaterialType =
    Shell("qlx.Material", "Material class.", g_BaseMaterialType, Create<&AllocMaterial, "">);
PyTypeObject g_BaseShaderType =
    Shell("qlx.BaseShader", "Shader base class.", g_BaseList2DType, Create<&BaseShader::Alloc, "i", "type">);
PyTypeObject g_LayerShaderType = Shell("qlx.LayerShader", "LayerShader class.", g_BaseShaderType);
PyTypeObject g_CTrackType =
    Shell("qlx.CTrack", "Animation track base class.", g_BaseList2DType, ConstructTrack);
PyTypeObject g_CCurveType = Shell("qlx.CCurve", "Animation curve base class.", g_BaseList2DType);
PyTypeObject g_CKeyType =
    Shell("qlx.CKey", "Key animation base class.", g_GeListNodeType, RefuseInstance, FreeLinkOnly);
PyTypeObject g_BaseDrawType = Shell("qlx.BaseDraw", "A view of the scene.", g_BaseList2DType);
PyTypeObject g_FieldLayerType = Shell("qlx.FieldLayer", "A layer of a list of fields.", g_BaseList2DType);
PyTypeObject g_RenderJobType =
    Shell("qlx.modules.net.RenderJob", "A job of the render farm.", g_BaseList2DType);
PyTypeObject g_GvNodeType = Shell("qlx.modules.graphview.GvNode", "A node of a graph.", g_BaseList2DType);
PyTypeObject g_GvNodeMasterType =
    Shell("qlx.modules.graphview.GvNodeMaster", "A graph of nodes.", g_BaseList2DType);
PyTypeObject g_DMMasterSystemType =
    Shell("qlx.modules.driftmotes.DM_MasterSystem", "The particle system of a document.", g_BaseList2DType);
PyTypeObject g_DMPGroupType =
    Shell("qlx.modules.driftmotes.DM_PGroup", "A group of particles.", g_BaseList2DType);
PyTypeObject g_PaintTextureType =
    Shell("qlx.modules.frescoa.PaintTexture", "A texture that is painted on.", g_BaseList2DType);
PyTypeObject g_PaintBitmapType =
    Shell("qlx.modules.frescoa.PaintBitmap", "What a painted texture is made of.", g_BaseList2DType);
PyTypeObject g_PaintLayerType =
    Shell("qlx.modules.frescoa.PaintLayer", "A layer of a painted texture.", g_PaintBitmapType);
PyTypeObject g_PaintLayerFolderType =
    Shell("qlx.modules.frescoa.PaintLayerFolder", "A folder of layers.", g_PaintLayerType);
PyTypeObject g_BaseTakeType = Shell("qlx.modules.takesystem.BaseTake", "A take.", g_BaseList2DType);
PyTypeObject g_BaseOverrideType =
    Shell("qlx.modules.takesystem.BaseOverride", "What a take changes of an object.", g_BaseList2DType);
PyTypeObject g_BaseOverrideGroupType = Shell("qlx.modules.takesystem.BaseOverrideGroup",
                                             "A group of objects that a take changes.", g_BaseList2DType);

PyTypeObject g_CameraObjectType = Shell("qlx.CameraObject", "A camera.", g_BaseObjectType);
PyTypeObject g_InstanceObjectType =
    Shell("qlx.InstanceObject", "An object that shows another one.", g_BaseObjectType);
PyTypeObject g_FieldObjectType = Shell("qlx.FieldObject", "A field.", g_BaseObjectType);
PyTypeObject g_VoronoiFractureType =
    Shell("qlx.VoronoiFracture", "An object that breaks others.", g_BaseObjectType);
PyTypeObject g_LodObjectType = Shell("qlx.LodObject", "An object with levels of detail.", g_BaseObjectType);
PyTypeObject g_VolumeObjectType = Shell("qlx.VolumeObject", "A volume.", g_BaseObjectType);
PyTypeObject g_VolumeBuilderType =
    Shell("qlx.VolumeBuilder", "An object that makes a volume of others.", g_BaseObjectType);
PyTypeObject g_CAJointObjectType = Shell("qlx.modules.character.CAJointObject", "A joint.", g_BaseObjectType);
PyTypeObject g_HairObjectType = Shell("qlx.modules.hair.HairObject", "Hair.", g_BaseObjectType);
PyTypeObject g_MotionTrackerObjectType =
    Shell("qlx.modules.motiontracker.MotionTrackerObject", "A tracked movie.", g_BaseObjectType);

PyTypeObject g_BaseTagType =
    Shell("qlx.BaseTag", "Base class for tags.", g_BaseList2DType, Create<&BaseTag::Alloc, "i", "type">);
PyTypeObject g_TextureTagType = Shell("qlx.TextureTag", "Tag for texture informations.", g_BaseTagType);
PyTypeObject g_SelectionTagType = Shell("qlx.SelectionTag", "Tag for holding selections.", g_BaseTagType);
PyTypeObject g_CustomDataTagType = Shell("qlx.CustomDataTag", "Tag for values of one's own.", g_BaseTagType);
PyTypeObject g_VariableTagType = Shell("qlx.VariableTag", "Tag which handles variable buffers.", g_BaseTagType);
PyTypeObject g_UVWTagType = Shell("qlx.UVWTag", "Tag which handles UVW coordinates.", g_VariableTagType);
PyTypeObject g_SegmentTagType =
    Shell("qlx.SegmentTag", "Tag which handles segment buffers.", g_VariableTagType);
PyTypeObject g_TangentTagType =
    Shell("qlx.TangentTag", "Tag which handles tangent buffers.", g_VariableTagType);
PyTypeObject g_PolygonTagType =
    Shell("qlx.PolygonTag", "Tag which handles polygon buffers.", g_VariableTagType);
PyTypeObject g_PointTagType = Shell("qlx.PointTag", "Tag which handles point buffers.", g_VariableTagType);
PyTypeObject g_NormalTagType = Shell("qlx.NormalTag", "Tag which handles normal buffers.", g_VariableTagType);
PyTypeObject g_VertexColorTagType =
    Shell("qlx.VertexColorTag", "Tag which handles vertex colour buffers.", g_VariableTagType);
PyTypeObject g_WireletTagType =
    Shell("qlx.modules.graphview.WireletTag", "Tag that holds a graph of nodes.", g_BaseTagType);
PyTypeObject g_HairVertexMapTagType =
    Shell("qlx.modules.hair.HairVertexMapTag", "Tag of weights of hair.", g_BaseTagType);
PyTypeObject g_HairSelectionTagType =
    Shell("qlx.modules.hair.HairSelectionTag", "Tag of a selection of hair.", g_BaseTagType);
PyTypeObject g_HairTangentTagType =
    Shell("qlx.modules.hair.HairTangentTag", "Tag of tangents of hair.", g_BaseTagType);
PyTypeObject g_CAPoseMorphTagType =
    Shell("qlx.modules.character.CAPoseMorphTag", "Tag of morphs between poses.", g_BaseTagType);
PyTypeObject g_CAWeightTagType =
    Shell("qlx.modules.character.CAWeightTag", "Tag of the weights of joints.", g_BaseTagType);
PyTypeObject g_SculptTagType =
    Shell("qlx.modules.sculpting.SculptTag", "Tag of sculpted layers.", g_BaseTagType);

namespace {

const TypeQueueEntry g_entries[] = {
    TypeQueueEntry(g_LayerObjectType),      TypeQueueEntry(g_RenderDataType),
    TypeQueueEntry(g_BaseVideoPostType),    TypeQueueEntry(g_BaseMaterialType),
    TypeQueueEntry(g_MaterialType),         TypeQueueEntry(g_BaseShaderType),
    TypeQueueEntry(g_LayerShaderType),      TypeQueueEntry(g_CTrackType),
    TypeQueueEntry(g_CCurveType),           TypeQueueEntry(g_CKeyType),
    TypeQueueEntry(g_BaseDrawType),         TypeQueueEntry(g_FieldLayerType),
    TypeQueueEntry(g_RenderJobType),        TypeQueueEntry(g_GvNodeType),
    TypeQueueEntry(g_GvNodeMasterType),     TypeQueueEntry(g_DMMasterSystemType),
    TypeQueueEntry(g_DMPGroupType),         TypeQueueEntry(g_PaintTextureType),
    TypeQueueEntry(g_PaintBitmapType),      TypeQueueEntry(g_PaintLayerType),
    TypeQueueEntry(g_PaintLayerFolderType), TypeQueueEntry(g_BaseTakeType),
    TypeQueueEntry(g_BaseOverrideType),     TypeQueueEntry(g_BaseOverrideGroupType),
    TypeQueueEntry(g_CameraObjectType),     TypeQueueEntry(g_InstanceObjectType),
    TypeQueueEntry(g_FieldObjectType),      TypeQueueEntry(g_VoronoiFractureType),
    TypeQueueEntry(g_LodObjectType),        TypeQueueEntry(g_VolumeObjectType),
    TypeQueueEntry(g_VolumeBuilderType),    TypeQueueEntry(g_CAJointObjectType),
    TypeQueueEntry(g_HairObjectType),       TypeQueueEntry(g_MotionTrackerObjectType),
    TypeQueueEntry(g_BaseTagType),          TypeQueueEntry(g_TextureTagType),
    TypeQueueEntry(g_SelectionTagType),     TypeQueueEntry(g_CustomDataTagType),
    TypeQueueEntry(g_VariableTagType),      TypeQueueEntry(g_UVWTagType),
    TypeQueueEntry(g_SegmentTagType),       TypeQueueEntry(g_TangentTagType),
    TypeQueueEntry(g_PolygonTagType),       TypeQueueEntry(g_PointTagType),
    TypeQueueEntry(g_NormalTagType),        TypeQueueEntry(g_VertexColorTagType),
    TypeQueueEntry(g_WireletTagType),       TypeQueueEntry(g_HairVertexMapTagType),
    TypeQueueEntry(g_HairSelectionTagType), TypeQueueEntry(g_HairTangentTagType),
    TypeQueueEntry(g_CAPoseMorphTagType),   TypeQueueEntry(g_CAWeightTagType),
    TypeQueueEntry(g_SculptTagType),
};

}  // namespace

}  // namespace qlx
