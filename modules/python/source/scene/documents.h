// The module qlx.documents, the documents' methods with logic of their own, and what the host calls back when
// documents change.
#ifndef SCENE_DOCUMENTS_H
#define SCENE_DOCUMENTS_H

#include <Python.h>

#include <memory>

#include "kelvar/atomarray.h"
#include "kelvar/thread.h"
#include "scene/scene.h"

namespace qlx {

extern PyMethodDef g_documentsFunctions[];

void AllocDocumentCallbacks();
void FreeDocumentCallbacks();

// The boundary has no operations of its own for render settings.
struct RenderData : BaseList2D {};
template <>
struct TypeOf<RenderData> : TypeIs<g_RenderDataType> {};

struct FreeAtomArray {
  void operator()(AtomArray* array) const { array->Free(); }
};
using HostAtoms = std::unique_ptr<AtomArray, FreeAtomArray>;

// The atoms of a sequence, which errors call `name`; null with an exception. Runs the sequence's own code.
HostAtoms ReadAtoms(PyObject* sequence, const char* name);

}  // namespace qlx

namespace qlx::documents {

// Contents.
PyObject* GetObjects(AtomWrapper* self);
PyObject* GetMaterials(AtomWrapper* self);
PyObject* InsertObject(BaseDocument* self, WrapperOf<BaseObject>* op, BaseObject* parent, BaseObject* pred,
                       bool checknames);
PyObject* InsertMaterial(BaseDocument* self, WrapperOf<BaseMaterial>* mat, BaseMaterial* pred, bool checknames);
PyObject* InsertRenderData(BaseDocument* self, WrapperOf<RenderData>* rd, RenderData* parent, RenderData* pred);
PyObject* InsertRenderDataLast(BaseDocument* self, WrapperOf<RenderData>* rd);
PyObject* GetAllTextures(AtomWrapper* self, bool isNet, PyObject* ar);
PyObject* GetParticleSystem(BaseDocument* self);

// Active elements.
PyObject* GetActiveObjects(AtomWrapper* self, int32_t flags);
PyObject* GetOrderedActiveObjects(AtomWrapper* self);
PyObject* GetActiveTags(AtomWrapper* self);
PyObject* GetActiveMaterials(AtomWrapper* self);
PyObject* GetSelection(AtomWrapper* self);
PyObject* GetActiveObjectsFilter(AtomWrapper* self, bool children, int32_t type, int32_t instanceof);
PyObject* GetRealActiveObject(AtomWrapper* self, PyObject* help);

// Calls that take long: the lock is free, and Ctrl-C ends them.
PyObject* ExecutePasses(BaseDocument* self, BaseThread* bt, bool animation, bool expressions, bool caches,
                        int32_t flags);
PyObject* LoadFile(PyObject* module, const Filename& name);
PyObject* LoadDocument(PyObject* module, const Filename& name, int32_t loadflags, BaseThread* thread);
PyObject* MergeDocument(PyObject* module, BaseDocument* doc, const Filename& name, int32_t loadflags,
                        BaseThread* thread);
PyObject* SaveDocument(PyObject* module, BaseDocument* doc, const Filename& name, int32_t saveflags,
                       int32_t format);

}  // namespace qlx::documents

#endif
