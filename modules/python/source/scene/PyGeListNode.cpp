// qlx.GeListNode: an atom in a list of the scene.

#include <vector>

#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "scene/parameters.h"
#include "scene/scene.h"

namespace qlx {
namespace {

GeListNode* HostOf(AtomWrapper* wrapper) { return static_cast<GeListNode*>(LookUp(wrapper->link)); }

PyObject* GetChildren(AtomWrapper* self) {
  return NodesFrom(self, [](QLXAtom* host) { return static_cast<GeListNode*>(host)->GetDown(); });
}

void Remove(AtomWrapper* self) {
  HostOf(self)->Remove();
  self->owned = true;  // the script's
}

// The host refuses, and changes nothing, where the node would come to stand in itself or can't stand.
using Reference = WrapperOf<GeListNode>;
using HostInsert = bool (GeListNode::*)(GeListNode*);

GeListNode* Insert(AtomWrapper* self, Reference* reference, HostInsert insert) {
  GeListNode *node = HostOf(self), *other;
  if (!reference->Get(other)) return nullptr;
  if (node != other && (node->*insert)(other)) return other;
  node == other ? RaiseInsertOnItself() : RaiseInsertRefused();
  return nullptr;
}

PyObject* InsertBeside(AtomWrapper* self, Reference* reference, HostInsert insert) {
  const GeListNode* other = Insert(self, reference, insert);
  if (!other) return nullptr;
  self->owned = !other->GetUp() && !other->GetDocument();  // a chain outside of documents stays the script's
  return NewNone();
}

PyObject* InsertBelow(AtomWrapper* self, Reference* reference, HostInsert insert) {
  if (!Insert(self, reference, insert)) return nullptr;
  self->owned = false;  // the parent's
  return NewNone();
}

PyObject* InsertBefore(AtomWrapper* self, Reference* obj) {
  return InsertBeside(self, obj, &GeListNode::InsertBefore);
}
PyObject* InsertAfter(AtomWrapper* self, Reference* obj) {
  return InsertBeside(self, obj, &GeListNode::InsertAfter);
}
PyObject* InsertUnder(AtomWrapper* self, Reference* obj) {
  return InsertBelow(self, obj, &GeListNode::InsertUnder);
}
PyObject* InsertUnderLast(AtomWrapper* self, Reference* obj) {
  return InsertBelow(self, obj, &GeListNode::InsertUnderLast);
}

PyObject* BranchToPython(PyObject* head, const HostBranch& branch) {
  PyObject* name = StringToPython(reinterpret_cast<const String&>(branch.name));
  return name ? Py_BuildValue("{s:O,s:N,s:i,s:i}", "head", head, "name", name, "id", branch.id, "flags",
                              branch.flags)
              : nullptr;
}

// Scripts are told of 20 branches at most. Lists and dictionaries may start the collector of garbage: all heads
// are wrapped between the one and the others.
PyObject* GetBranchInfo(AtomWrapper* self, int32_t flags) {
  constexpr int32_t kMost = 20;
  PyObject* list = PyList_New(0);
  QLXAtom* host;
  if (!list || !ResolveAtom(self, host)) {
    Py_XDECREF(list);
    return nullptr;
  }
  HostBranch branches[kMost] = {};
  PyObject* heads[kMost] = {};
  const int32_t count = static_cast<GeListNode*>(host)->GetBranchInfo(branches, kMost, flags);
  for (int32_t i = 0; i < count; ++i)
    heads[i] = branches[i].head ? WrapHostObject(branches[i].head, false) : NewNone();
  for (int32_t i = 0; i < count; ++i) {
    PyObject* branch = list && heads[i] ? BranchToPython(heads[i], branches[i]) : nullptr;
    if (!branch || PyList_Append(list, branch) < 0) Py_CLEAR(list);
    Py_XDECREF(branch);
    Py_XDECREF(heads[i]);
    String::Adopt(branches[i].name);  // ends it
  }
  if (count > 0 || !list) return list;
  Py_DECREF(list);
  return NewNone();
}

Py_ssize_t Length(PyObject*) { return 1; }

PyMappingMethods g_mapping = {Length, GetParameterItem, SetParameterItem};

PyMethodDef g_methods[] = {
    Method<&GeListNode::GetNext>("GetNext",
                                 "GetNext() -> qlx.GeListNode or None\n\nThe next node of the list."),
    Method<&GeListNode::GetPred>("GetPred", "GetPred() -> qlx.GeListNode or None\n\nThe node before."),
    Method<&GeListNode::GetUp>("GetUp",
                               "GetUp() -> qlx.GeListNode or None\n\nThe node that this is a child of."),
    Method<&GeListNode::GetDown>("GetDown", "GetDown() -> qlx.GeListNode or None\n\nThe first child."),
    Method<&GeListNode::GetDownLast>("GetDownLast",
                                     "GetDownLast() -> qlx.GeListNode or None\n\nThe last child."),
    Method<Row<WhileAlive>, &GetChildren>("GetChildren",
                                          "GetChildren() -> list of qlx.GeListNode\n\nThe direct children."),
    Method<Row<WhileAlive>, &InsertBefore, "O!", "obj">(
        "InsertBefore",
        "InsertBefore(obj) -> None\n\nPuts the node before another one, out of where it was. Raises "
        "AssertionError when that is the node itself or stands in it, or where such a node can't stand."),
    Method<Row<WhileAlive>, &InsertAfter, "O!", "obj">(
        "InsertAfter", "InsertAfter(obj) -> None\n\nAs InsertBefore, behind the other node."),
    Method<Row<WhileAlive>, &InsertUnder, "O!", "obj">(
        "InsertUnder", "InsertUnder(obj) -> None\n\nAs InsertBefore, as the first child of the other node."),
    Method<Row<WhileAlive>, &InsertUnderLast, "O!", "obj">(
        "InsertUnderLast", "InsertUnderLast(obj) -> None\n\nAs InsertUnder, as the last child."),
    Method<Row<WhileAlive>, &Remove>(
        "Remove", "Remove() -> None\n\nTakes the node out of its list. It is the script's then."),
    Method<&GeListNode::GetListHead>("GetListHead",
                                     "GetListHead() -> qlx.GeListHead or None\n\nThe head of the node's list."),
    Method<&GeListNode::GetDocument>(
        "GetDocument",
        "GetDocument() -> qlx.documents.BaseDocument or None\n\nThe document that the node belongs to."),
    Method<&GeListNode::GetNBit, "i", "bit">("GetNBit",
                                             "GetNBit(bit) -> int\n\n1 when the bit is set, else 0."),
    Method<&GeListNode::ChangeNBit, "ii", "bit", "bitmode">(
        "ChangeNBit", "ChangeNBit(bit, bitmode) -> bool\n\nSets, clears or toggles a bit, by NBITCONTROL."),
    Method<&GeListNode::IsDocumentRelated>(
        "IsDocumentRelated", "IsDocumentRelated() -> bool\n\nWhether nodes of this kind belong to documents."),
    Method<Row<WhileAlive>, &GetBranchInfo, "|i", "flags=0">(
        "GetBranchInfo",
        "GetBranchInfo(flags=0) -> list of dict or None\n\n"
        "The lists that the node has beside its children: \"head\", \"name\", \"id\" and \"flags\" of each."),
    {},
};

}  // namespace

// It owns no element, also where the flag says so: only what derives from it destroys one.
PyTypeObject g_GeListNodeType = MakeType<AtomWrapper>({
    .name = "qlx.GeListNode",
    .doc = "An atom in a 4D list.",
    .base = &g_QLXAtomType,
    .methods = g_methods,
    .create = RefuseInstance,
    .destroy = FreeLinkOnly,
    .mapping = &g_mapping,
});

namespace {
const TypeQueueEntry g_entry(g_GeListNodeType);
}

// A list may start the collector of garbage, which runs the code of scripts: nothing of the host's is read
// ahead of it, and all of it is linked before wrappers are made.
PyObject* NodesFrom(AtomWrapper* wrapper, GeListNode* (*getFirst)(QLXAtom* host)) {
  PyObject* list = PyList_New(0);
  QLXAtom* host;
  if (!list || !ResolveAtom(wrapper, host)) {
    Py_XDECREF(list);
    return nullptr;
  }
  std::vector<HostLink> links;
  for (GeListNode* node = getFirst(host); node; node = node->GetNext())
    if (!SetLink(node, links.emplace_back())) PyErr_NoMemory();
  return FillWithLinked(list, links);
}

PyObject* FillWithLinked(PyObject* list, std::vector<HostLink>& links) {
  for (HostLink& link : links) {
    auto* node = static_cast<QLXAtom*>(LookUp(link));
    PyObject* item = list && node && !PyErr_Occurred() ? WrapHostObject(node, false) : nullptr;
    if (item ? PyList_Append(list, item) < 0 : PyErr_Occurred() != nullptr) Py_CLEAR(list);
    Py_XDECREF(item);
    FreeLink(link);
  }
  return list;
}

}  // namespace qlx
