// The calls of objects, but for what follows from their evaluation.

#include <algorithm>
#include <cmath>

#include "boundary/host.h"
#include "scene/geometry.h"
#include "scene/kinds.h"
#include "scene/object.h"
#include "scene/tree.h"

namespace host {
namespace {

enum Parameter : int32_t { kEditorMode = 901, kRenderMode = 902, kDeformMode = 909 };
constexpr int32_t kWhereMissing = 2;  // of CopyTagsTo
constexpr int32_t kModeOn = 0, kModeOff = 1, kModeUndefined = 2;

// The list of tags; null while there are none.
GeListHead* Tags(const BaseObject* object) { return object ? FindBranch(*object, kTypeTag) : nullptr; }

BaseTag* TagAt(GeListNode* node) { return As<BaseTag>(node); }

int32_t ModeOf(const BaseObject* object, int32_t parameter) {
  const double mode = object ? NumberOf(*object, parameter, kModeUndefined) : kModeUndefined;
  return mode == kModeOn ? kModeOn : mode == kModeOff ? kModeOff : kModeUndefined;
}

void SetNumber(BaseList2D* node, int32_t parameter, int32_t number) {
  if (!node) return;
  const HostGeData* present = container::FindData(&node->data, parameter);
  if (present && present->type == HOST_DATA_INT32 && present->value.integer == number) return;
  Put(node->data, parameter, Value::Int32(number));
  Touch(*node, DIRTYFLAGS_DATA);
}

// Every change of the place goes through here.
template <class Change>
void Move(BaseObject* object, Change change) {
  const ChangeScene changes;
  change(object->place);
  Touch(*object, DIRTYFLAGS_MATRIX);
}

using Part = Vector Placement::*;

Vector AbsoluteOf(const BaseObject* self, Part part) { return self ? self->place.Absolute().*part : Vector{}; }
Vector FrozenOf(const BaseObject* self, Part part) { return self ? self->place.Frozen().*part : Vector{}; }
Vector RelativeOf(const BaseObject* self, Part part) { return self ? self->place.Relative().*part : Vector{}; }

void SetAbsolute(BaseObject* self, Part part, const Vector* value) {
  if (!self || !value) return;
  Move(self, [&](ObjectPlace& place) {
    if (part == &Placement::position) return place.SetPosition(*value);
    Placement changed = place.IsFrozenUpright() ? place.Relative() : place.Absolute();
    changed.*part = *value;
    place.IsFrozenUpright() ? place.SetRelative(changed) : place.SetAbsolute(changed);
  });
}

void SetFrozen(BaseObject* self, Part part, const Vector* value) {
  if (!self || !value) return;
  Move(self, [&](ObjectPlace& place) {
    Placement changed = place.Frozen();
    changed.*part = *value;
    place.SetFrozen(changed);
  });
}

void SetRelative(BaseObject* self, Part part, const Vector* value) {
  if (!self || !value) return;
  Move(self, [&](ObjectPlace& place) {
    Placement changed = place.Relative();
    changed.*part = *value;
    place.SetRelative(changed);
  });
}

// Puts a tag into the object's list, which becomes its owner.
bool PlaceTag(BaseObject& self, BaseTag& tag, BaseTag* pred) {
  GeListHead* list = Branch(self, kTypeTag);
  return list && (!pred || pred->list == list) && Place(tag, *list, pred);
}

// What a tag is to those who copy tags.
bool IsVisible(const BaseTag& tag) { return !As<VariableTag>(&tag); }

}  // namespace
}  // namespace host

namespace host::object {

BaseObject* Alloc(int32_t type) { return As<BaseObject>(MakeElement(type, kTypeObject)); }

Vector GetAbsPos(const BaseObject* self) { return self ? self->place.Local().off : Vector{}; }
void SetAbsPos(BaseObject* self, const Vector* value) { SetAbsolute(self, &Placement::position, value); }
Vector GetAbsScale(const BaseObject* self) { return AbsoluteOf(self, &Placement::scale); }
void SetAbsScale(BaseObject* self, const Vector* value) { SetAbsolute(self, &Placement::scale, value); }
Vector GetAbsRot(const BaseObject* self) { return AbsoluteOf(self, &Placement::rotation); }
void SetAbsRot(BaseObject* self, const Vector* value) { SetAbsolute(self, &Placement::rotation, value); }

Vector GetFrozenPos(const BaseObject* self) { return FrozenOf(self, &Placement::position); }
void SetFrozenPos(BaseObject* self, const Vector* value) { SetFrozen(self, &Placement::position, value); }
Vector GetFrozenScale(const BaseObject* self) { return FrozenOf(self, &Placement::scale); }
void SetFrozenScale(BaseObject* self, const Vector* value) { SetFrozen(self, &Placement::scale, value); }
Vector GetFrozenRot(const BaseObject* self) { return FrozenOf(self, &Placement::rotation); }
void SetFrozenRot(BaseObject* self, const Vector* value) { SetFrozen(self, &Placement::rotation, value); }

Vector GetRelPos(const BaseObject* self) { return RelativeOf(self, &Placement::position); }
void SetRelPos(BaseObject* self, const Vector* value) { SetRelative(self, &Placement::position, value); }
Vector GetRelScale(const BaseObject* self) { return RelativeOf(self, &Placement::scale); }
void SetRelScale(BaseObject* self, const Vector* value) { SetRelative(self, &Placement::scale, value); }
Vector GetRelRot(const BaseObject* self) { return RelativeOf(self, &Placement::rotation); }
void SetRelRot(BaseObject* self, const Vector* value) { SetRelative(self, &Placement::rotation, value); }

Matrix GetMl(const BaseObject* self) { return self ? self->place.Local() : kIdentityMatrix; }
void SetMl(BaseObject* self, const Matrix* value) {
  if (self && value) Move(self, [&](ObjectPlace& place) { place.SetLocal(*value); });
}
Matrix GetRelMl(const BaseObject* self) { return self ? self->place.RelativeMatrix() : kIdentityMatrix; }
void SetRelMl(BaseObject* self, const Matrix* value) {
  if (self && value) Move(self, [&](ObjectPlace& place) { place.SetRelativeMatrix(*value); });
}
Matrix GetMg(const BaseObject* self) { return self ? GlobalMatrix(*self) : kIdentityMatrix; }
void SetMg(BaseObject* self, const Matrix* value) {
  if (!self || !value) return;
  const Matrix local = kelvar::Product(kelvar::Inverse(UpMatrix(*self)), *value);
  SetMl(self, &local);
}
Matrix GetFrozenMln(const BaseObject* self) {
  return self ? kelvar::Normalized(self->place.FrozenMatrix()) : kIdentityMatrix;
}
Matrix GetRelMln(const BaseObject* self) { return kelvar::Normalized(GetRelMl(self)); }
Matrix GetMln(const BaseObject* self) { return kelvar::Normalized(GetMl(self)); }
Matrix GetMgn(const BaseObject* self) { return kelvar::Normalized(GetMg(self)); }
Matrix GetUpMg(const BaseObject* self) { return self ? UpMatrix(*self) : kIdentityMatrix; }

Vector GetMp(const BaseObject* self) {
  const Box box = self ? BoxOf(*self) : Box();
  return box.IsEmpty() ? Vector{} : box.low * 0.5 + box.high * 0.5;
}

Vector GetRad(const BaseObject* self) {
  const Box box = self ? BoxOf(*self) : Box();
  return box.IsEmpty() ? Vector{} : box.high * 0.5 - box.low * 0.5;
}

double GetVisibility(const BaseObject* self, double parent) {
  const int32_t mode = GetEditorMode(self);
  return mode == kModeOn ? 1 : mode == kModeOff || !(parent > 0) ? 0 : std::min(parent, 1.0);
}

void CopyMatrixTo(const BaseObject* self, BaseObject* dst) {
  if (self && dst && self != dst) Move(dst, [&](ObjectPlace& place) { place = self->place; });
}

int32_t GetEditorMode(const BaseObject* self) { return ModeOf(self, kEditorMode); }
void SetEditorMode(BaseObject* self, int32_t mode) {
  SetNumber(self, kEditorMode, mode == kModeOn || mode == kModeOff ? mode : kModeUndefined);
}
int32_t GetRenderMode(const BaseObject* self) { return ModeOf(self, kRenderMode); }
void SetRenderMode(BaseObject* self, int32_t mode) {
  SetNumber(self, kRenderMode, mode == kModeOn || mode == kModeOff ? mode : kModeUndefined);
}
HostBool GetDeformMode(const BaseObject* self) { return !self || NumberOf(*self, kDeformMode, 1) != 0; }
void SetDeformMode(BaseObject* self, HostBool mode) { SetNumber(self, kDeformMode, mode != 0); }

int32_t GetUniqueIP(const BaseObject* self) { return self ? int32_t(self->uniqueIP) : 0; }
void SetUniqueIP(BaseObject* self, int32_t ip) {
  if (self) self->uniqueIP = uint32_t(ip);
}

BaseTag* GetFirstTag(const BaseObject* self) {
  const GeListHead* tags = Tags(self);
  return tags ? TagAt(tags->down) : nullptr;
}

BaseTag* GetLastTag(const BaseObject* self) {
  const GeListHead* tags = Tags(self);
  return tags ? TagAt(tags->downLast) : nullptr;
}

BaseTag* GetTag(const BaseObject* self, int32_t type, int32_t nr) {
  const GeListHead* tags = Tags(self);
  for (GeListNode* tag = tags ? tags->down : nullptr; tag && nr >= 0; tag = tag->next)
    if (NodeTypes::Derives(tag->type, type) && nr-- == 0) return TagAt(tag);
  return nullptr;
}

int32_t GetTagDataCount(const BaseObject* self, int32_t type) {
  const VariableTag* block = self ? FindBlock(*self, type) : nullptr;
  return block ? block->Count() : 0;
}

const void* GetTagDataR(const BaseObject* self, int32_t type) {
  const VariableTag* block = self ? FindBlock(*self, type) : nullptr;
  return block && block->Count() ? block->bytes.data() : nullptr;
}

void* GetTagDataW(BaseObject* self, int32_t type) {
  VariableTag* block = self ? FindBlock(*self, type) : nullptr;
  if (!block || !block->Count()) return nullptr;
  Touch(*self, DIRTYFLAGS_DATA);
  return block->bytes.data();
}

BaseTag* MakeTag(BaseObject* self, int32_t type, BaseTag* pred) {
  if (!self || (pred && pred->list != Branch(*self, kTypeTag))) return nullptr;
  const Hold hold(*self);
  auto* made = As<BaseTag>(MakeElement(type, kTypeTag));
  if (made && hold.IsAlive() && PlaceTag(*self, *made, pred)) return made;
  DestroyNow(made);
  return nullptr;
}

BaseTag* MakeVariableTag(BaseObject* self, int32_t type, int32_t count, BaseTag* pred) {
  const NodeType* known = FindType(type);
  if (!known || count < 0 || !NodeTypes::Derives(*known, kTypeVariableTag)) return nullptr;
  BaseTag* made = MakeTag(self, type, pred);
  auto* block = As<VariableTag>(made);
  if (!block) return made;
  try {
    block->Resize(count);
  } catch (const std::bad_alloc&) {
    DestroyNow(block);
    return nullptr;
  }
  return made;
}

HostBool InsertTag(BaseObject* self, BaseTag* tag, BaseTag* pred) {
  return self && tag && As<BaseTag>(tag) && PlaceTag(*self, *tag, pred);
}

void KillTag(BaseObject* self, int32_t type, int32_t nr) {
  BaseTag* tag = GetTag(self, type, nr);
  if (tag && !IsKept(*tag)) DestroyNow(tag);
}

LineObject* GetIsoparm(const BaseObject* self) {
  const GeListHead* lines = self ? FindBranch(*self, kIsoparmBranch) : nullptr;
  return lines ? As<LineObject>(lines->down) : nullptr;
}

void SetIsoparm(BaseObject* self, LineObject* lines) {
  if (!self) return;
  const Hold hold(*self);
  auto* copy =
      lines ? static_cast<GeListNode*>(atom::GetClone(lines, COPYFLAGS_NO_HIERARCHY, nullptr)) : nullptr;
  GeListHead* list = hold.IsAlive() ? Branch(*self, kIsoparmBranch) : nullptr;
  if (list) DestroyNow(list->down);
  if (!list || !hold.IsAlive()) return DestroyNow(copy);
  if (copy) Append(*copy, *list);
}

// None of this host's tags acts on what is below its object.
HostBool CopyTagsTo(const BaseObject* self, BaseObject* dest, int32_t visible, int32_t variable, int32_t) {
  if (!self || !dest) return 0;
  if (self == dest) return 1;
  const Hold hold(*const_cast<BaseObject*>(self)), destHold(*dest);
  std::vector<HostLink> links;
  for (GeListNode* tag = GetFirstTag(self); tag; tag = tag->next) {
    const int32_t wanted = IsVisible(static_cast<BaseTag&>(*tag)) ? visible : variable;
    const bool isThere = GetTag(dest, tag->type.id, 0);
    if (tag->isFixed || !wanted || (wanted == kWhereMissing && isThere)) continue;
    tag->Link(links.emplace_back());
  }
  for (const HostLink& link : links) {
    const Hold tag(link);
    auto* copy = tag.Object() ? atom::GetClone(static_cast<QLXAtom*>(tag.Object()), 0, nullptr) : nullptr;
    if (!copy) continue;
    if (!destHold.IsAlive() || !PlaceTag(*dest, static_cast<BaseTag&>(*copy), GetLastTag(dest))) {
      DestroyNow(copy);
      return 0;
    }
  }
  return hold.IsAlive();
}

HostBool SetPhong(BaseObject* self, HostBool on, HostBool anglelimit, double angle) {
  if (!self || std::isnan(angle)) return 0;
  BaseTag* phong = GetTag(self, kTypePhong, 0);
  if (!on) {
    KillTag(self, kTypePhong, 0);
    return 1;
  }
  if (!phong) phong = MakeTag(self, kTypePhong, GetLastTag(self));
  if (!phong) return 0;
  Put(phong->data, kPhongLimit, Value::Int32(anglelimit != 0));
  Put(phong->data, kPhongAngle, Value::Float(angle));
  Touch(*phong, DIRTYFLAGS_DATA);
  return 1;
}

// Nothing has handles where there are no views.
int32_t GetHighlightHandle(const BaseObject*, BaseDraw*) { return -1; }

void SetRotationOrder(BaseObject* self, int32_t order) {
  if (self) Move(self, [&](ObjectPlace& place) { place.SetOrder(order); });
}
int32_t GetRotationOrder(const BaseObject* self) { return self ? self->place.Order() : kOrderHPB; }

void SetQuaternionRotationMode(BaseObject* self, HostBool active, HostBool) {
  if (self) self->turnsShortest = active != 0;
}
HostBool IsQuaternionRotationMode(const BaseObject* self) { return self && self->turnsShortest; }

int64_t GetGUID(const BaseObject* self) { return self ? self->number : 0; }

HostBool SearchHierarchy(const BaseObject* self, const BaseObject* op) {
  for (const GeListNode* at = self ? op : nullptr; at; at = at->up)
    if (at == self) return 1;
  return 0;
}

Matrix GetModelingAxis(const BaseObject* self, BaseDocument*) {
  if (!self) return kIdentityMatrix;
  const Matrix global = GlobalMatrix(*self);
  return self->axis ? kelvar::Product(global, *self->axis) : global;
}

void SetModelingAxis(BaseObject* self, const Matrix* axis) {
  if (!self || !axis) return;
  self->axis = std::make_unique<Matrix>(kelvar::Product(kelvar::Inverse(GlobalMatrix(*self)), *axis));
}

}  // namespace host::object
