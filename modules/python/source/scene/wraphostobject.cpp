// Which Python type presents an element.

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

// What a type derives from doesn't change while the host runs: the choice is remembered by the
// type's id. Lock held.
const Choice& ChoiceFor(const QLXAtom* host) {
  struct Remembered {
    int32_t id;
    const Choice* choice;
  };
  static Remembered remembered[64];
  const int32_t id = host->GetType();
  if (id == 0) return *Choose(host);  // a host without types
  Remembered& entry = remembered[uint32_t(id) % std::size(remembered)];
  if (!entry.choice || entry.id != id) entry = {id, Choose(host)};
  return *entry.choice;
}

}  // namespace

PyObject* WrapHostObject(QLXAtom* host, bool owned) {
  const Choice& choice = ChoiceFor(host);
  return WrapAtom(choice.type ? choice.type : &g_BaseList2DType, host, owned && !choice.neverOwned);
}

}  // namespace qlx
