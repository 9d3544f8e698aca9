// What a document holds, and what of it is selected.

#include "kit/i_arrays.h"
#include "kit/i_errors.h"
#include "scene/documents.h"
#include "values/values.h"

namespace qlx {

HostAtoms ReadAtoms(PyObject* sequence, const char* name) {
  std::vector<QLXAtom*> atoms;
  if (!GetAtomArray(sequence, atoms, name)) return nullptr;
  HostAtoms array(AtomArray::Alloc());
  for (QLXAtom* atom : atoms)
    if (array && !array->Append(atom)) array = nullptr;
  if (!array) PyErr_NoMemory();
  return array;
}

}  // namespace qlx

namespace qlx::documents {
namespace {

// False with an exception.
bool AppendAtoms(PyObject* list, const AtomArray& array) {
  for (int32_t i = 0; i < array.GetCount(); ++i) {
    QLXAtom* atom = array.GetIndex(i);
    if (!atom) continue;
    PyObject* item = WrapHostObject(atom, false);
    const bool isAppended = item && PyList_Append(list, item) == 0;
    Py_XDECREF(item);
    if (!isAppended) return false;
  }
  return true;
}

// A list of the wrappers of the atoms that `fill` puts into an array. The list is made first: that may start
// the collector of garbage, which runs the code of scripts.
template <class Fill>
PyObject* Listed(AtomWrapper* self, Fill fill) {
  PyObject* list = PyList_New(0);
  QLXAtom* host;
  if (list && ResolveAtom(self, host)) {
    const HostAtoms array(AtomArray::Alloc());
    if (!array) PyErr_NoMemory();
    if (array) fill(static_cast<BaseDocument*>(host), array.get());
    if (array && AppendAtoms(list, *array)) return list;
  }
  Py_XDECREF(list);
  return nullptr;
}

// The node is the document's when the host put it there, out of where it was.
PyObject* Settle(bool isInserted, AtomWrapper* node) {
  if (!isInserted) return RaiseInsertRefused();
  node->owned = false;  // the document's
  return NewNone();
}

}  // namespace

PyObject* GetObjects(AtomWrapper* self) {
  return NodesFrom(
      self, [](QLXAtom* host) -> GeListNode* { return static_cast<BaseDocument*>(host)->GetFirstObject(); });
}

PyObject* GetMaterials(AtomWrapper* self) {
  return NodesFrom(
      self, [](QLXAtom* host) -> GeListNode* { return static_cast<BaseDocument*>(host)->GetFirstMaterial(); });
}

PyObject* InsertObject(BaseDocument* self, WrapperOf<BaseObject>* op, BaseObject* parent, BaseObject* pred,
                       bool checknames) {
  BaseObject* host;
  if (!op->Get(host)) return nullptr;
  if (host->GetNext()) return RaiseHasNext();
  return Settle(self->InsertObject(host, parent, pred, checknames), op);
}

PyObject* InsertMaterial(BaseDocument* self, WrapperOf<BaseMaterial>* mat, BaseMaterial* pred,
                         bool checknames) {
  BaseMaterial* host;
  return mat->Get(host) ? Settle(self->InsertMaterial(host, pred, checknames), mat) : nullptr;
}

PyObject* InsertRenderData(BaseDocument* self, WrapperOf<RenderData>* rd, RenderData* parent,
                           RenderData* pred) {
  RenderData* host;
  return rd->Get(host) ? Settle(self->InsertRenderData(host, parent, pred), rd) : nullptr;
}

PyObject* InsertRenderDataLast(BaseDocument* self, WrapperOf<RenderData>* rd) {
  RenderData* host;
  return rd->Get(host) ? Settle(self->InsertRenderDataLast(host), rd) : nullptr;
}

PyObject* GetAllTextures(AtomWrapper* self, bool isNet, PyObject* ar) {
  HostAtoms nodes;
  if (ar && ar != Py_None && !(nodes = ReadAtoms(ar, "BaseDocument.GetAllTextures"))) return nullptr;
  QLXAtom* host;
  if (!ResolveAtom(self, host)) return nullptr;
  BaseContainer* files = static_cast<BaseDocument*>(host)->GetAllTextures(isNet, nodes.get());
  return files ? Present<BaseContainer>::Wrap(files, true) : PyErr_NoMemory();
}

PyObject* GetParticleSystem(BaseDocument* self) {
  ParticleMasterSystem* system = self->GetParticleMasterSystem();
  return system ? WrapHostObject(reinterpret_cast<QLXAtom*>(system), false) : RaiseNoParticles();
}

PyObject* GetActiveObjects(AtomWrapper* self, int32_t flags) {
  return Listed(self, [=](BaseDocument* host, AtomArray* array) { host->GetActiveObjects(array, flags); });
}

PyObject* GetOrderedActiveObjects(AtomWrapper* self) {
  return Listed(self, [](BaseDocument* host, AtomArray* array) { host->GetOrderedActiveObjects(array); });
}

PyObject* GetActiveTags(AtomWrapper* self) {
  return Listed(self, [](BaseDocument* host, AtomArray* array) { host->GetActiveTags(array); });
}

PyObject* GetActiveMaterials(AtomWrapper* self) {
  return Listed(self, [](BaseDocument* host, AtomArray* array) { host->GetActiveMaterials(array); });
}

PyObject* GetSelection(AtomWrapper* self) {
  return Listed(self, [](BaseDocument* host, AtomArray* array) { host->GetSelection(array); });
}

PyObject* GetActiveObjectsFilter(AtomWrapper* self, bool children, int32_t type, int32_t instanceof) {
  return Listed(self, [=](BaseDocument* host, AtomArray* array) {
    host->GetActiveObjectsFilter(array, children, type, instanceof != 0);
  });
}

PyObject* GetRealActiveObject(AtomWrapper* self, PyObject* help) {
  HostAtoms objects;
  if (help && help != Py_None && !(objects = ReadAtoms(help, "BaseDocument.GetRealActiveObject")))
    return nullptr;
  QLXAtom* host;
  if (!ResolveAtom(self, host)) return nullptr;
  HostBool hasOthers = 0;
  BaseObject* active = static_cast<BaseDocument*>(host)->GetRealActiveObject(objects.get(), &hasOthers);
  if (!active) return NewNone();
  PyObject* wrapper = WrapHostObject(active, false);
  return wrapper ? Py_BuildValue("(NO)", wrapper, hasOthers ? Py_True : Py_False) : nullptr;
}

}  // namespace qlx::documents
