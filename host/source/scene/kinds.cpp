#include "scene/kinds.h"

#include <fmt/format.h>

#include <iterator>
#include <mutex>
#include <unordered_map>

#include "boundary/host.h"
#include "scene/object.h"
#include "scene/tree.h"
#include "tables/tables.h"

namespace host {
namespace {

constexpr KindInfo kKinds[] = {
    {Kind::kNone, 0, 0},
    {Kind::kObject, kTypeObject, HDIRTYFLAGS_OBJECT, "Object", true, "Objects", BRANCHINFOFLAGS_ANIMATE},
    {Kind::kTag, kTypeTag, HDIRTYFLAGS_TAG, "Tag", true, "Tags", BRANCHINFOFLAGS_ANIMATE},
    {Kind::kMaterial, kTypeMaterial, HDIRTYFLAGS_MATERIAL, "Material Base", true, "Materials",
     BRANCHINFOFLAGS_ANIMATE},
    {Kind::kShader, kTypeShader, HDIRTYFLAGS_SHADER, "Shader", true, "Shaders", BRANCHINFOFLAGS_ANIMATE},
    {Kind::kRenderData, kTypeRenderData, HDIRTYFLAGS_RENDERSETTINGS, "Render Settings", false,
     "Render Settings", BRANCHINFOFLAGS_ANIMATE},
    {Kind::kTrack, kTypeTrack, HDIRTYFLAGS_ANIMATION, "Track", false, "Tracks", BRANCHINFOFLAGS_HIDEINTIMELINE},
    {Kind::kCurve, 5351, HDIRTYFLAGS_ANIMATION},
    {Kind::kKey, 5352, HDIRTYFLAGS_ANIMATION},
    {Kind::kLayer, kTypeLayer, 0, "Layer", false, "Layers", BRANCHINFOFLAGS_HIDEINTIMELINE},
    {Kind::kVideoPost, 5709, HDIRTYFLAGS_RENDERSETTINGS},
    {Kind::kDocument, kTypeDocument, 0, "Document"},
    {Kind::kHead, kTypeHead, 0, "List", true},
};
static_assert(std::size(kKinds) == size_t(Kind::kHead) + 1);

template <class Node>
GeListNode* Make(const NodeType& type) {
  return new Node(type);
}

GeListNode* MakeHead(const NodeType&) { return new GeListHead; }

// The class of the nodes of a type, and of those that derive from it: the last one that fits.
struct NodeClass {
  int32_t base;
  GeListNode* (*make)(const NodeType& type);
};

constexpr NodeClass kClasses[] = {
    {kTypeObject, Make<BaseObject>},
    {kTypePointObject, Make<PointObject>},
    {kTypePolygonObject, Make<PolygonObject>},
    {kTypeSplineObject, Make<SplineObject>},
    {kTypeLineObject, Make<LineObject>},
    {kTypeTag, Make<BaseTag>},
    {kTypeVariableTag, Make<VariableTag>},
    {5673, Make<SelectionTag>},
    {5674, Make<SelectionTag>},
    {5701, Make<SelectionTag>},
    {kTypeMaterial, Make<BaseMaterial>},
    {kTypeShader, Make<BaseShader>},
    {kTypeTrack, Make<CTrack>},
    {kTypeLayer, Make<LayerObject>},
    {kTypeDocument, Make<BaseDocument>},
    {kTypeHead, MakeHead},
};

// The types of blocks that objects of this host's classes can't be without.
constexpr struct {
  int32_t id, base;
  const char* name;
} kNeeded[] = {
    {kTypeVariableTag, kTypeTag, "Variable Tag"},      {kDataPoint, kTypeVariableTag, "Point"},
    {kDataPolygon, kTypeVariableTag, "Polygon"},       {kDataSegment, kTypeVariableTag, "Segment"},
    {kDataTangent, kTypeVariableTag, "Tangent"},       {kTypePointObject, kTypeObject, "Point Object"},
    {kTypePolygonObject, kTypePointObject, "Polygon"}, {kTypeSplineObject, kTypePointObject, "Spline"},
    {kTypeLineObject, kTypePointObject, "Line"}};

// What every atom of a type shares.
struct Shared {
  Kind kind = Kind::kNone;
  GeListNode* (*make)(const NodeType& type) = Make<BaseList2D>;
  Text name;
};

const Shared& SharedOf(const NodeType& type) {
  struct All {
    std::mutex lock;
    std::unordered_map<const NodeType*, Shared> byType;
  };
  thread_local std::pair<const NodeType*, const Shared*> latest;
  if (latest.first == &type) return *latest.second;
  All& all = Lasting<All>();
  std::lock_guard guard(all.lock);
  const auto [at, isNew] = all.byType.try_emplace(&type);
  Shared& shared = at->second;
  if (isNew) {
    shared.name = type.name;
    for (const KindInfo& info : kKinds)
      if (info.base && AllNodeTypes().Derives(type, info.base)) shared.kind = info.kind;
    for (const NodeClass& one : kClasses)
      if (AllNodeTypes().Derives(type, one.base)) shared.make = one.make;
  }
  latest = {&type, &shared};
  return shared;
}

const NodeType& HeadType() {
  static const NodeType& type = *FindType(kTypeHead);
  return type;
}

}  // namespace

const KindInfo& InfoOf(Kind kind) { return kKinds[size_t(kind)]; }

Kind KindOf(const NodeType& type) { return SharedOf(type).kind; }

Kind KindOfBranch(int32_t branch) {
  for (const KindInfo& info : kKinds)
    if (info.branch && info.base == branch) return info.kind;
  return Kind::kNone;
}

const NodeType* FindType(int32_t id) {
  static std::once_flag once;
  // The classes of this host need their types, whatever files there are.
  std::call_once(once, [] {
    for (const KindInfo& info : kKinds) {
      if (!info.type || AllNodeTypes().Find(info.base)) continue;
      NodeType type;
      type.id = info.base;
      type.isAbstract = info.isAbstract;
      type.name = info.type;
      AllNodeTypes().Add(std::move(type));
    }
    for (const auto& needed : kNeeded) {
      if (AllNodeTypes().Find(needed.id)) continue;
      NodeType type;
      type.id = needed.id;
      type.base = needed.base;
      type.name = needed.name;
      AllNodeTypes().Add(std::move(type));
    }
  });
  return AllNodeTypes().Find(id);
}

GeListNode* NewNode(const NodeType& type) { return SharedOf(type).make(type); }

bool MakeReady(GeListNode& node) {
  const NodeRecord* record = node.type.record;
  if (!record) return true;
  const Hold hold(node);
  void* data = nullptr;
  if (record->Create) {
    data = record->Create(record->base.self);
    if (!data) return false;
    if (!hold.IsAlive()) {
      if (record->Destroy) record->Destroy(data);
      return false;
    }
  }
  node.Extra().pluginData = data;
  BeginPlugin(node);
  if (record->Init && !record->Init(data, &node)) {
    EndPlugin(node);
    return false;
  }
  return hold.IsAlive();
}

BaseList2D* MakeElement(int32_t id, int32_t base) {
  const NodeType* type = FindType(id);
  if (!type || type->isAbstract || !type->isElement || (base && !AllNodeTypes().Derives(*type, base)))
    return nullptr;
  auto* made = static_cast<BaseList2D*>(NewNode(*type));
  if (!type->record) return made;
  const Hold hold(*made);
  if (MakeReady(*made)) return made;
  if (hold.IsAlive()) DestroyNow(made);
  return nullptr;
}

void* PluginData(const QLXAtom& atom) { return atom.extras ? atom.extras->pluginData : nullptr; }

}  // namespace host

using host::Kind;

QLXAtom::QLXAtom(const host::NodeType& ofType) : QLXAtom(ofType, host::SharedOf(ofType).kind) {}

QLXAtom::QLXAtom(const host::NodeType& ofType, Kind ofKind) : kind(ofKind), type(ofType) {}

QLXAtom::~QLXAtom() {
  host::EndPlugin(*this);
  if (!extras || !extras->pluginData) return;
  if (type.record->Destroy) type.record->Destroy(extras->pluginData);
}

host::Extras& QLXAtom::Extra() {
  if (!extras) extras = std::make_unique<host::Extras>();
  return *extras;
}

BaseList2D::BaseList2D(const host::NodeType& ofType)
    : GeListNode(ofType), name(host::SharedOf(ofType).name), data(ofType.defaults) {}

bool BaseList2D::GetOwn(int32_t, host::Value&) const { return false; }
bool BaseList2D::SetOwn(int32_t, const HostGeData&) { return false; }
void BaseList2D::CopyOwn(BaseList2D&) const {}

GeListHead::GeListHead() : GeListNode(host::HeadType(), Kind::kNone), owner(nullptr), branch(0) {}

GeListHead::GeListHead(GeListNode& ofOwner, int32_t ofBranch)
    : GeListNode(host::HeadType(), host::KindOfBranch(ofBranch)), owner(&ofOwner), branch(ofBranch) {
  isFixed = true;
}

BaseDocument::BaseDocument(const host::NodeType& ofType) : BaseList2D(ofType) {
  for (const int32_t branch : {host::kTypeObject, host::kTypeMaterial, host::kTypeLayer, host::kTypeRenderData})
    host::Branch(*this, branch);
}

namespace host::tag {
BaseTag* Alloc(int32_t type) { return As<BaseTag>(MakeElement(type, kTypeTag)); }
}  // namespace host::tag

namespace host::material {
BaseMaterial* Alloc(int32_t type) { return As<BaseMaterial>(MakeElement(type, kTypeMaterial)); }
}  // namespace host::material

namespace host::shader {
BaseShader* Alloc(int32_t type) { return As<BaseShader>(MakeElement(type, kTypeShader)); }
}  // namespace host::shader
