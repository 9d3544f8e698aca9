// Which Python type presents an element.

#include <cstddef>
#include <iterator>

#include "scene/scene.h"

namespace qlx {
namespace {

// One step of the choice: the type for elements of that id, in this order, because ids derive from
// one another. A null type: not bound yet, so the last one stands in.
struct Choice {
  int32_t id;
  PyTypeObject* type;
  bool neverOwned = false;
};

constexpr Choice kChoices[] = {
    {110059, nullptr},           // qlx.documents.BaseDocument
    {5694, nullptr},             // qlx.BaseTag
    {100004801, nullptr},        // qlx.documents.LayerObject
    {5703, nullptr},             // qlx.Material
    {5702, nullptr},             // qlx.BaseMaterial
    {1011123, nullptr},          // qlx.LayerShader
    {5707, nullptr},             // qlx.BaseShader
    {24535345, nullptr, true},   // qlx.modules.net.RenderJob
    {1001101, nullptr},          // qlx.modules.graphview.GvNode
    {110304, nullptr},           // qlx.documents.RenderData
    {5350, nullptr},             // qlx.CTrack
    {5351, nullptr},             // qlx.CCurve
    {1001428, nullptr},          // qlx.modules.driftmotes.DM_MasterSystem
    {1001381, nullptr},          // qlx.modules.driftmotes.DM_PGroup
    {1001103, nullptr},          // qlx.modules.graphview.GvNodeMaster
    {542, nullptr, true},        // qlx.modules.frescoa.PaintLayerFolder
    {544, nullptr, true},        // qlx.modules.frescoa.PaintLayer
    {543, nullptr, true},        // qlx.modules.frescoa.PaintBitmap
    {502, nullptr, true},        // qlx.modules.frescoa.PaintTexture
    {501, nullptr, true},        // qlx.modules.frescoa.PaintBitmap
    {110305, nullptr, true},     // qlx.BaseDraw
    {431000054, nullptr, true},  // qlx.modules.takesystem.BaseTake
    {431000051, nullptr, true},  // qlx.modules.takesystem.BaseOverride
    {431000075, nullptr, true},  // qlx.modules.takesystem.BaseOverrideGroup
    {5155, nullptr},             // qlx.BaseObject
    {5709, nullptr},             // qlx.documents.BaseVideoPost
    {440000249, nullptr},        // qlx.FieldLayer
};

const Choice kOther = {0, &g_BaseList2DType};

const Choice* Choose(const QLXAtom* host) {
  for (const Choice& choice : kChoices)
    if (host->IsInstanceOf(choice.id)) return &choice;
  return &kOther;
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

[[gnu::noinline]] PyObject* WrapChosen(QLXAtom* host, bool owned) {
  const uintptr_t word = TypeWordOf(host);
  const uintptr_t type = word ? word : uint32_t(host->GetType());
  Remembered& entry = EntryOf(type);
  if (entry.type != type || type == 0) {  // 0: a host without types
    const Choice* choice = Choose(host);
    entry = {type, choice->type ? choice->type : kOther.type, !choice->neverOwned};
  }
  return Wrap(entry, host, owned);
}

}  // namespace

PyObject* WrapHostObject(QLXAtom* host, bool owned) {
  const uintptr_t word = TypeWordOf(host);
  const Remembered& entry = EntryOf(word);
  return word && entry.type == word ? Wrap(entry, host, owned) : WrapChosen(host, owned);
}

}  // namespace qlx
