// qlx.GeListHead: the head of a list of nodes.

#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "scene/scene.h"

namespace qlx {
namespace {

AtomWrapper* AsWrapper(PyObject* object) { return reinterpret_cast<AtomWrapper*>(object); }

PyObject* Construct(PyTypeObject* type, PyObject* args, PyObject* keywords) {
  Arguments<&Construct, TypeList<>, ""> none;
  if (!none.Parse(args, keywords)) return nullptr;
  GeListHead* host = GeListHead::Alloc();
  if (!host) return ReportAllocFailed(type, 0);
  PyObject* wrapper = WrapAtom(type, host, false);
  if (wrapper)
    AsWrapper(wrapper)->owned = true;  // the script's
  else
    host->Free();
  return wrapper;
}

void Free(PyObject* self) {
  if (AsWrapper(self)->owned)
    if (auto* host = static_cast<GeListHead*>(LookUp(AsWrapper(self)->link))) host->Free();
  FreeLinkOnly(self);
}

// The node is the list's when the host put it there.
PyObject* Settle(bool isInserted, AtomWrapper* node) {
  if (!isInserted) return RaiseInsertRefused();
  node->owned = false;  // the list's
  return NewNone();
}

PyObject* InsertFirst(GeListHead* self, WrapperOf<GeListNode>* node) {
  GeListNode* host;
  if (!node->Get(host)) return nullptr;
  return host == self ? RaiseHeadInsertOnItself() : Settle(self->InsertFirst(host), node);
}

PyObject* InsertLast(GeListHead* self, WrapperOf<GeListNode>* node) {
  GeListNode* host;
  if (!node->Get(host)) return nullptr;
  return host == self ? RaiseHeadInsertOnItself() : Settle(self->InsertLast(host), node);
}

bool GetOptional(WrapperOf<GeListNode>* node, GeListNode*& host) {
  host = nullptr;
  return !node || node->Get(host);
}

PyObject* Insert(GeListHead* self, WrapperOf<GeListNode>* node, WrapperOf<GeListNode>* parent,
                 WrapperOf<GeListNode>* prev) {
  GeListNode *host, *up, *pred;
  if (!node->Get(host) || !GetOptional(parent, up) || !GetOptional(prev, pred)) return nullptr;
  if (host == self || host == up || host == pred) return RaiseHeadInsertOnItself();
  if (up && up == pred) return RaiseSameParentAndPrevious();
  return Settle(self->Insert(host, up, pred), node);
}

PyObject* SetParent(GeListHead* self, WrapperOf<GeListNode>* parent) {
  GeListNode* host;
  if (!parent->Get(host)) return nullptr;
  return self->SetParent(host) ? NewNone() : RaiseInsertRefused();
}

PyMethodDef g_methods[] = {
    Method<&InsertFirst, "O!", "node">(
        "InsertFirst",
        "InsertFirst(node) -> None\n\nPuts a node first, out of where it was. Raises AssertionError when the "
        "list stands in the node, or is of nodes of another kind."),
    Method<&InsertLast, "O!", "node">("InsertLast", "InsertLast(node) -> None\n\nThe same, last."),
    Method<&Insert, "O!|O!NO!N", "node", "parent", "prev">(
        "Insert",
        "Insert(node, parent=None, prev=None) -> None\n\n"
        "Puts a node behind `prev`, or else as the first child of `parent`, or else first of the list. `prev` "
        "by name wants `parent` given too, which may be None."),
    Method<&SetParent, "O!", "parent">(
        "SetParent",
        "SetParent(parent) -> None\n\n"
        "Tells which node the list belongs to. Raises AssertionError for a list of an element, "
        "which has its node,\nand for a node that stands in the list."),
    Method<&GeListHead::GetParent>(
        "GetParent", "GetParent() -> qlx.GeListNode or None\n\nThe node that the list belongs to."),
    Method<&GeListHead::GetFirst>("GetFirst", "GetFirst() -> qlx.GeListNode or None\n\nThe first node."),
    Method<&GeListHead::GetLast>("GetLast", "GetLast() -> qlx.GeListNode or None\n\nThe last node."),
    Method<&GeListHead::FlushAll>(
        "FlushAll",
        "FlushAll() -> None\n\nDestroys all nodes of the list, but for what their owner can't be without."),
    {},
};

}  // namespace

PyTypeObject g_GeListHeadType = MakeType<AtomWrapper>({
    .name = "qlx.GeListHead",
    .doc = "A head for a 4D list.",
    .base = &g_GeListNodeType,
    .methods = g_methods,
    .create = Construct,
    .destroy = Free,
});

namespace {
const TypeQueueEntry g_entry(g_GeListHeadType);
}

}  // namespace qlx
