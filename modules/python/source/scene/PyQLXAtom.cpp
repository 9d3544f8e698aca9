// qlx.QLXAtom: what all elements of a scene have in common.

#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "scene/messages.h"
#include "scene/parameters.h"
#include "scene/scene.h"
#include "storage/storage.h"

namespace qlx {
namespace {

bool IsAlive(AtomWrapper* self) { return LookUp(self->link) != nullptr; }

// `atom()` is the atom while it lives, and None afterwards.
PyObject* Call(PyObject* self, PyObject* args, PyObject* keywords) {
  Arguments<&Call, TypeList<>, ""> none;
  if (!none.Parse(args, keywords)) return nullptr;
  PyObject* result = IsAlive(reinterpret_cast<AtomWrapper*>(self)) ? self : Py_None;
  Py_INCREF(result);
  return result;
}

PyObject* CopyTo(QLXAtom* self, QLXAtom* dst, int32_t flags, AliasTransRecord* trn) {
  if (self->GetType() != dst->GetType()) return RaiseOtherInternalType();
  return ToPython(self->CopyTo(dst, flags, AliasTransOf(trn)));
}

PyObject* GetClone(QLXAtom* self, int32_t flags, AliasTransRecord* trn) {
  const int32_t type = self->GetType();
  QLXAtom* clone = self->GetClone(flags, AliasTransOf(trn));
  return clone ? WrapHostObject(clone, true) : ReportAllocFailed(&g_BaseList2DType, type);  // the script's
}

PyObject* GetParameter(AtomWrapper* self, PyObject* id, int32_t flags) {
  DescID read;
  QLXAtom* host;
  if (!DescIDFromPython(id, "QLXAtom.GetParameter", "DescID identifier", read) || !ResolveAtom(self, host))
    return nullptr;
  GeData data;
  const HostDescID word = read.Word();
  return host->GetParameter(&word, data.Out(), flags) ? ParameterToPython(self, data) : NewNone();
}

PyObject* SetParameter(QLXAtom* self, PyObject* id, const GeData& data, int32_t flags) {
  DescID read;
  if (!DescIDFromPython(id, "QLXAtom.SetParameter", "DescID identifier", read)) return nullptr;
  const bool isSet = SetParameterData(self, read, data, flags);
  return isSet || !PyErr_Occurred() ? ToPython(isSet) : nullptr;
}

// Making the view may start the collector of garbage, which may destroy the atom.
PyObject* FindUniqueID(AtomWrapper* self, int32_t appid) {
  QLXAtom* host = static_cast<QLXAtom*>(LookUp(self->link));
  int64_t bytes = 0;
  void* mem = host->FindUniqueID(appid, &bytes);
  if (!mem) return NewNone();
  PyObject* view = PyMemoryView_FromMemory(static_cast<char*>(mem), Py_ssize_t(bytes), PyBUF_WRITE);
  if (view && (!ResolveAtom(self, host) || host->FindUniqueID(appid, &bytes) != mem)) {
    if (!PyErr_Occurred()) ReportNotAlive(Py_TYPE(self));
    Py_CLEAR(view);
  }
  return view;
}

PyObject* AddUniqueID(QLXAtom* self, int32_t appid, PyObject* mem) {
  if (PyBytes_Check(mem))
    return ToPython(self->AddUniqueID(appid, PyBytes_AS_STRING(mem), PyBytes_GET_SIZE(mem)));
  if (!PyMemoryView_Check(mem)) {
    RaiseExpectedTypeFor("QLXAtom.AddUniqueID", "bytes or memoryview", mem);
    return nullptr;
  }
  if (PyMemoryView_GET_BUFFER(mem)->readonly) return RaiseReadOnlyMemory();
  Py_buffer view;
  if (PyObject_GetBuffer(mem, &view, PyBUF_SIMPLE) < 0) return nullptr;
  const bool added = self->AddUniqueID(appid, view.buf, view.len);
  PyBuffer_Release(&view);
  return ToPython(added);
}

PyObject* GetUniqueIDIndex(QLXAtom* self, int32_t idx) {
  int32_t appid = 0;
  int64_t bytes = 0;
  const void* mem = self->GetUniqueIDIndex(idx, &appid, &bytes);
  if (!mem) return NewNone();
  return Py_BuildValue("(iN)", appid,
                       PyBytes_FromStringAndSize(static_cast<const char*>(mem), Py_ssize_t(bytes)));
}

// The element's memory stays while the lock is free; whether it lives still, the host finds out.
template <class Call>
PyObject* WithoutLock(QLXAtom* self, Call&& call) {
  const Pin<QLXAtom> pin(self);
  if (!pin.held) return PyErr_NoMemory();
  bool done;
  {
    HostBlockingScope blocking;
    done = call();
  }
  return ToPython(done);
}

PyObject* Read(QLXAtom* self, HyperFileRecord* hf, int32_t id, int32_t level) {
  return WithoutLock(self, [&] { return self->Read(hf->data, id, level); });
}
PyObject* Write(QLXAtom* self, HyperFileRecord* hf) {
  return WithoutLock(self, [&] { return self->Write(hf->data); });
}
PyObject* ReadObject(QLXAtom* self, HyperFileRecord* hf, bool readHeader) {
  return WithoutLock(self, [&] { return self->ReadObject(hf->data, readHeader); });
}
PyObject* WriteObject(QLXAtom* self, HyperFileRecord* hf) {
  return WithoutLock(self, [&] { return self->WriteObject(hf->data); });
}

PyMethodDef g_methods[] = {
    Method<&QLXAtom::GetType>("GetType", "GetType() -> int\n\nThe id of the object's type."),
    Method<&QLXAtom::GetRealType>("GetRealType",
                                  "GetRealType() -> int\n\n"
                                  "The id of the type beneath what the object stands for."),
    Method<&QLXAtom::IsInstanceOf, "i", "id">("CheckType",
                                              "CheckType(id) -> bool\n\nThe same as IsInstanceOf."),
    Method<&QLXAtom::IsInstanceOf, "i", "id">(
        "IsInstanceOf",
        "IsInstanceOf(id) -> bool\n\n"
        "Whether the object is of that type or of one that derives from it."),
    Method<&QLXAtom::GetClassification>(
        "GetClassification",
        "GetClassification() -> int\n\nThe id of the base type: 5155 of objects, 5694 of tags and so on."),
    Method<&QLXAtom::GetDirty, "i", "flags">(
        "GetDirty", "GetDirty(flags) -> int\n\nHow often what the DIRTYFLAGS name has changed."),
    Method<&QLXAtom::SetDirty, "i", "flags">(
        "SetDirty", "SetDirty(flags) -> None\n\nCounts a change of what the DIRTYFLAGS name."),
    Method<&QLXAtom::GetHDirty, "i", "mask">(
        "GetHDirty",
        "GetHDirty(mask) -> int\n\nA number that is another one after each change of what the HDIRTYFLAGS "
        "name, in the object and all below it."),
    Method<&QLXAtom::SetHDirty, "i", "mask">("SetHDirty",
                                             "SetHDirty(mask) -> None\n\nCounts a change for GetHDirty."),
    Method<&CopyTo, "A!i|O!", "dst", "flags", "trn">(
        "CopyTo",
        "CopyTo(dst, flags, trn=None) -> bool\n\nMakes `dst`, of the same type, a copy; COPYFLAGS tell what "
        "is left out, a qlx.AliasTrans translates links. Raises TypeError for another type."),
    Method<&GetClone, "|iO!", "flags", "trn">(
        "GetClone",
        "GetClone(flags=0, trn=None) -> qlx.BaseList2D\n\nA copy, in no list, which is the caller's."),
    Method<&Read, "O!ii", "hf", "id", "level">(
        "Read",
        "Read(hf, id, level) -> bool\n\nReads what Write wrote into an object of the same type, alone or "
        "behind "
        "a ReadChunkStart, which told id and level. A False tells its reason by hf.GetError(). Other threads "
        "run "
        "meanwhile, as in the other three."),
    Method<&Write, "O!", "hf">(
        "Write", "Write(hf) -> bool\n\nWrites the object alone, as a chunk with the type for its id."),
    Method<&ReadObject, "O!b", "hf", "readheader">(
        "ReadObject",
        "ReadObject(hf, readheader) -> bool\n\nReads what WriteObject wrote, in place of what the object, of "
        "the "
        "same type, had. With readheader False a ReadChunkStart has told the type already."),
    Method<&WriteObject, "O!", "hf">(
        "WriteObject", "WriteObject(hf) -> bool\n\nWrites the object with all below it and in its branches."),
    Method<Row<Gives>, &QLXAtom::GetDescription, "i", "flags">(
        "GetDescription",
        "GetDescription(flags) -> qlx.Description or None\n\nThe description of the parameters as it is now."),
    Method<Row<WhileAlive>, &GetParameter, "Oi", "id", "flags">(
        "GetParameter",
        "GetParameter(id, flags) -> object or None\n\n"
        "The value of a parameter: by an int, a qlx.DescID, or a tuple of ints and qlx.DescLevel."),
    Method<&SetParameter, "OGi", "id", "data", "flags">(
        "SetParameter",
        "SetParameter(id, data, flags) -> bool\n\n"
        "Sets a parameter, if its type fits; numbers are brought into its range. None resets it to the "
        "default."),
    Method<Row<WhileAlive>, &Message, "i|O", "type", "data">(
        "Message",
        "Message(type, data=None) -> bool\n\n"
        "Sends a message to the object, with a dictionary or a value. 5, 1001077, 1023742 and 1026945 are the\n"
        "application's own: what scripts send goes without data."),
    Method<Row<WhileAlive>, &MultiMessage, "ii|O", "flags", "type", "data">(
        "MultiMessage",
        "MultiMessage(flags, type, data=None) -> bool\n\n"
        "Sends a message to the object and, by MULTIMSG flags, to those above and below it."),
    Method<Row<WhileAlive>, &FindUniqueID, "i", "appid">(
        "FindUniqueID",
        "FindUniqueID(appid) -> memoryview or None\n\n"
        "The mark of an application, to be changed in place. It is valid while the object lives and its marks "
        "stay."),
    Method<&AddUniqueID, "iO", "appid", "mem">(
        "AddUniqueID", "AddUniqueID(appid, mem) -> bool\n\nMarks the object with a copy of the bytes."),
    Method<&QLXAtom::GetUniqueIDCount>("GetUniqueIDCount", "GetUniqueIDCount() -> int\n\nThe number of marks."),
    Method<&GetUniqueIDIndex, "i", "idx">(
        "GetUniqueIDIndex", "GetUniqueIDIndex(idx) -> (int, bytes) or None\n\nA mark by its position."),
    Method<&IsAlive>(
        "IsAlive",
        "IsAlive() -> bool\n\n"
        "Whether the host still has the object. Raises nothing; all other methods raise ReferenceError "
        "for an object that has gone."),
    {},
};

}  // namespace

PyTypeObject g_QLXAtomType = MakeType<AtomWrapper>({
    .name = "qlx.QLXAtom",
    .doc = "Base class of many other classes.",
    .methods = g_methods,
    .create = RefuseInstance,
    .destroy = FreeLinkOnly,
    .compare = CompareHosts<QLXAtom>,
    .call = Call,
});

namespace {
const TypeQueueEntry g_entry(g_QLXAtomType);
}

}  // namespace qlx
