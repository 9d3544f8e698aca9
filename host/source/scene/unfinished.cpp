// Entries that are still to come.

#include "boundary/host.h"

namespace host::aliastrans {
AliasTrans* Alloc() { return nullptr; }
void Free(AliasTrans*) {}
HostBool Init(AliasTrans*, BaseDocument*) { return HostBool(0); }
void Translate(AliasTrans*, HostBool) {}
}  // namespace host::aliastrans

namespace host::atom {
int32_t GetClassification(const QLXAtom*) { return int32_t(0); }
uint32_t GetDirty(const QLXAtom*, int32_t) noexcept { return uint32_t(0); }
void SetDirty(QLXAtom*, int32_t) {}
uint32_t GetHDirty(const QLXAtom*, int32_t) { return uint32_t(0); }
void SetHDirty(QLXAtom*, int32_t) {}
HostBool CopyTo(const QLXAtom*, QLXAtom*, int32_t, AliasTrans*) { return HostBool(0); }
QLXAtom* GetClone(const QLXAtom*, int32_t, AliasTrans*) { return nullptr; }
HostBool Message(QLXAtom*, int32_t, void*) { return HostBool(0); }
HostBool MultiMessage(QLXAtom*, int32_t, int32_t, void*) { return HostBool(0); }
void* FindUniqueID(const QLXAtom*, int32_t, int64_t*) { return nullptr; }
HostBool AddUniqueID(QLXAtom*, int32_t, const void*, int64_t) { return HostBool(0); }
int32_t GetUniqueIDCount(const QLXAtom*) { return int32_t(0); }
const void* GetUniqueIDIndex(const QLXAtom*, int32_t, int32_t*, int64_t*) { return nullptr; }
}  // namespace host::atom

namespace host::baselist {
BaseContainer* GetData(const BaseList2D*) { return nullptr; }
void SetData(BaseList2D*, const BaseContainer*, HostBool) {}
void SetBit(BaseList2D*, int32_t) {}
HostBool GetBit(const BaseList2D*, int32_t) { return HostBool(0); }
void DelBit(BaseList2D*, int32_t) {}
void ToggleBit(BaseList2D*, int32_t) {}
int32_t GetAllBits(const BaseList2D*) { return int32_t(0); }
void SetAllBits(BaseList2D*, int32_t) {}
HostString GetBubbleHelp(const BaseList2D*) { return HostString{}; }
HostString GetTypeName(const BaseList2D*) { return HostString{}; }
BaseList2D* GetMain(const BaseList2D*) { return nullptr; }
BaseList2D* GetFirstShader(const BaseList2D*) { return nullptr; }
void InsertShader(BaseList2D*, BaseList2D*, BaseList2D*) {}
BaseList2D* GetFirstCTrack(const BaseList2D*) { return nullptr; }
GeListHead* GetCTrackRoot(BaseList2D*) { return nullptr; }
GeListHead* GetNLARoot(BaseList2D*) { return nullptr; }
BaseList2D* FindCTrack(const BaseList2D*, const HostDescID*) { return nullptr; }
void InsertTrackSorted(BaseList2D*, BaseList2D*) {}
void GetIcon(const BaseList2D*, HostIcon*) {}
HostBool GetLayerData(const BaseList2D*, BaseDocument*, HostLayerData*, HostBool) { return HostBool(0); }
HostBool SetLayerData(BaseList2D*, BaseDocument*, const HostLayerData*) { return HostBool(0); }
BaseList2D* GetLayerObject(const BaseList2D*, BaseDocument*) { return nullptr; }
HostBool SetLayerObject(BaseList2D*, BaseList2D*) { return HostBool(0); }
HostBool TransferGoal(BaseList2D*, BaseList2D*, HostBool) { return HostBool(0); }
HostBool AddEventNotification(BaseList2D*, BaseList2D*, int32_t, int32_t, const BaseContainer*) {
  return HostBool(0);
}
HostBool RemoveEventNotification(BaseList2D*, BaseDocument*, BaseList2D*, int32_t) { return HostBool(0); }
HostBool FindEventNotification(const BaseList2D*, BaseDocument*, BaseList2D*, int32_t) { return HostBool(0); }
HostBool FindKeyframeSelection(const BaseList2D*, const HostDescID*) { return HostBool(0); }
HostBool SetKeyframeSelection(BaseList2D*, const HostDescID*, HostBool) { return HostBool(0); }
HostBool KeyframeSelectionContent(const BaseList2D*) { return HostBool(0); }
void ClearKeyframeSelection(BaseList2D*) {}
void Scale(BaseList2D*, double) {}
HostBool Edit(BaseList2D*) { return HostBool(0); }
int32_t GetInfo(const BaseList2D*) { return int32_t(0); }
HostString GetIconEx(const BaseList2D*) { return HostString{}; }
}  // namespace host::baselist

namespace host::layer {
LayerObject* Alloc(BaseDocument*) { return nullptr; }
}  // namespace host::layer

namespace host::listhead {
GeListHead* Alloc() { return nullptr; }
void Free(GeListHead*) {}
void InsertFirst(GeListHead*, GeListNode*) {}
void InsertLast(GeListHead*, GeListNode*) {}
void Insert(GeListHead*, GeListNode*, GeListNode*, GeListNode*) {}
void SetParent(GeListHead*, GeListNode*) {}
GeListNode* GetParent(const GeListHead*) { return nullptr; }
GeListNode* GetFirst(const GeListHead*) noexcept { return nullptr; }
GeListNode* GetLast(const GeListHead*) noexcept { return nullptr; }
void FlushAll(GeListHead*) {}
}  // namespace host::listhead

namespace host::listnode {
GeListNode* GetNext(const GeListNode*) noexcept { return nullptr; }
GeListNode* GetPred(const GeListNode*) noexcept { return nullptr; }
GeListNode* GetUp(const GeListNode*) noexcept { return nullptr; }
GeListNode* GetDown(const GeListNode*) noexcept { return nullptr; }
GeListNode* GetDownLast(const GeListNode*) noexcept { return nullptr; }
void InsertBefore(GeListNode*, GeListNode*) {}
void InsertAfter(GeListNode*, GeListNode*) {}
void InsertUnder(GeListNode*, GeListNode*) {}
void InsertUnderLast(GeListNode*, GeListNode*) {}
void Remove(GeListNode*) {}
GeListHead* GetListHead(const GeListNode*) { return nullptr; }
BaseDocument* GetDocument(const GeListNode*) { return nullptr; }
int32_t GetNBit(const GeListNode*, int32_t) { return int32_t(0); }
HostBool ChangeNBit(GeListNode*, int32_t, int32_t) { return HostBool(0); }
HostBool IsDocumentRelated(const GeListNode*) { return HostBool(0); }
int32_t GetBranchInfo(const GeListNode*, HostBranch*, int32_t, int32_t) { return int32_t(0); }
}  // namespace host::listnode

namespace host::material {
BaseMaterial* Alloc(int32_t) { return nullptr; }
}  // namespace host::material

namespace host::object {
BaseObject* Alloc(int32_t) { return nullptr; }
}  // namespace host::object

namespace host::plugin {
BasePlugin* RegisterNode(const NodeRecord*) { return nullptr; }
}  // namespace host::plugin

namespace host::shader {
BaseShader* Alloc(int32_t) { return nullptr; }
}  // namespace host::shader

namespace host::tag {
BaseTag* Alloc(int32_t) { return nullptr; }
}  // namespace host::tag

namespace host::track {
CTrack* Alloc(BaseList2D*, const HostDescID*) { return nullptr; }
HostBool GetDescriptionID(const CTrack*, HostDescID*) { return HostBool(0); }
}  // namespace host::track
