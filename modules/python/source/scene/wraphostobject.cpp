// Which Python type presents an element.

#include <cstddef>
#include <iterator>
#include <span>

#include "kit/i_row.h"
#include "scene/scene.h"

namespace qlx {
namespace {

// One step of the choice: the type for elements of that id, in this order, because ids derive from
// one another; a chain of its own behind it chooses among what is more special.
struct Choice {
  int32_t id;
  PyTypeObject* type;
  bool neverOwned = false;
  std::span<const Choice> special = {};
};

constexpr bool kNeverOwned = true;

const Choice kObjects[] = {
    {5101, &g_SplineObjectType},       {1019362, &g_CAJointObjectType},
    {5100, &g_PolygonObjectType},      {5137, &g_LineObjectType},
    {5156, &g_PointObjectType},        {5103, &g_CameraObjectType},
    {1017305, &g_HairObjectType},      {440000200, &g_FieldObjectType},
    {5126, &g_InstanceObjectType},     {1028393, &g_MotionTrackerObjectType},
    {1036557, &g_VoronoiFractureType}, {431000174, &g_LodObjectType},
    {1039858, &g_VolumeObjectType},    {1039859, &g_VolumeBuilderType},
};

const Choice kVariableTags[] = {
    {5672, &g_SegmentTagType}, {5617, &g_TangentTagType}, {5604, &g_PolygonTagType},
    {5600, &g_PointTagType},   {5711, &g_NormalTagType},  {431000045, &g_VertexColorTagType},
};

const Choice kTags[] = {
    {5671, &g_UVWTagType},
    {1018329, &g_HairVertexMapTagType},
    {1017746, &g_HairSelectionTagType},
    {1017671, &g_HairTangentTagType},
    {5695, &g_VariableTagType, false, kVariableTags},
    {1001149, &g_WireletTagType},
    {5616, &g_TextureTagType},
    {431000188, &g_CustomDataTagType},
    {5673, &g_SelectionTagType},
    {5701, &g_SelectionTagType},
    {5674, &g_SelectionTagType},
    {1024237, &g_CAPoseMorphTagType},
    {1019365, &g_CAWeightTagType},
    {1023800, &g_SculptTagType},
};

const Choice kPaintings[] = {
    {502, &g_PaintTextureType, kNeverOwned},
    {542, &g_PaintLayerFolderType, kNeverOwned},
    {544, &g_PaintLayerType, kNeverOwned},
};

const Choice kNodes[] = {
    {5352, &g_CKeyType},
    {110059, &g_BaseDocumentType},
    {5694, &g_BaseTagType, false, kTags},
    {100004801, &g_LayerObjectType},
    {5703, &g_MaterialType},
    {5702, &g_BaseMaterialType},
    {1011123, &g_LayerShaderType},
    {5707, &g_BaseShaderType},
    {24535345, &g_RenderJobType, kNeverOwned},
    {1001101, &g_GvNodeType},
    {110304, &g_RenderDataType},
    {5350, &g_CTrackType},
    {5351, &g_CCurveType},
    {1001428, &g_DMMasterSystemType},
    {1001381, &g_DMPGroupType},
    {1001103, &g_GvNodeMasterType},
    {542, &g_PaintBitmapType, kNeverOwned, kPaintings},
    {544, &g_PaintBitmapType, kNeverOwned, kPaintings},
    {543, &g_PaintBitmapType, kNeverOwned, kPaintings},
    {502, &g_PaintBitmapType, kNeverOwned, kPaintings},
    {501, &g_PaintBitmapType, kNeverOwned, kPaintings},
    {110305, &g_BaseDrawType, kNeverOwned},
    {431000054, &g_BaseTakeType, kNeverOwned},
    {431000051, &g_BaseOverrideType, kNeverOwned},
    {431000075, &g_BaseOverrideGroupType, kNeverOwned},
    {5155, &g_BaseObjectType, false, kObjects},
    {5709, &g_BaseVideoPostType},
    {440000249, &g_FieldLayerType},
};

// A head is one by its very type.
const Choice kHead = {110063, &g_GeListHeadType};
const Choice kOther = {0, &g_BaseList2DType};

const Choice* Choose(const QLXAtom* host, std::span<const Choice> choices, const Choice* fallback) {
  for (const Choice& choice : choices)
    if (host->IsInstanceOf(choice.id)) return Choose(host, choice.special, &choice);
  return fallback;
}

const Choice* Choose(const QLXAtom* host) {
  return host->GetType() == kHead.id ? &kHead : Choose(host, kNodes, &kOther);
}

// The word that the host has for the element's type, or 0.
uintptr_t TypeWordOf(const QLXAtom* host) {
  const auto* layout = static_cast<const HostLinkLayout*>(tables::link.layout);
  const bool has = layout && layout->size > offsetof(HostLinkLayout, typeInAtom) && layout->typeInAtom;
  return has ? ReadWord<uintptr_t>(host, layout->typeInAtom) : 0;
}

// What a type derives from doesn't change while the host runs: the choice is remembered by the
// type's word, or its id. Lock held.
struct alignas(32) Remembered {
  uintptr_t type;
  PyTypeObject* presents;
  bool mayBeOwned;
};

constinit Remembered g_remembered[64] = {};

Remembered& EntryOf(uintptr_t type) { return g_remembered[(type ^ type >> 5) % std::size(g_remembered)]; }

PyObject* Wrap(const Remembered& entry, QLXAtom* host, bool owned) {
  return WrapAtom(entry.presents, host, owned & entry.mayBeOwned);
}

// The choice may run the code of a plug-in's type, which may destroy the element; its memory stays meanwhile.
[[gnu::noinline]] PyObject* WrapChosen(QLXAtom* host, bool owned) {
  HostLink link{};
  bool hasMemory = SetLink(host, link);
  const uintptr_t word = TypeWordOf(host);
  const uintptr_t type = word ? word : uint32_t(host->GetType());
  Remembered entry = EntryOf(type);
  if (hasMemory && (entry.type != type || type == 0)) {  // 0: a host without types
    const Pin<QLXAtom> pin(host);
    hasMemory = pin.held;
    const Choice* choice = hasMemory ? Choose(host) : nullptr;
    if (choice) EntryOf(type) = entry = {type, choice->type, !choice->neverOwned};
  }
  if (!hasMemory) {
    FreeLink(link);
    if (owned) FreeUnlessListed(host);
    return PyErr_NoMemory();
  }
  return WrapLinkedAtom(entry.presents, link, owned & entry.mayBeOwned);
}

}  // namespace

PyObject* WrapHostObject(QLXAtom* host, bool owned) {
  const uintptr_t word = TypeWordOf(host);
  const Remembered& entry = EntryOf(word);
  return word && entry.type == word ? Wrap(entry, host, owned) : WrapChosen(host, owned);
}

}  // namespace qlx
