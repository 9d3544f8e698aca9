// qlx.storage.HyperFile: a file of tagged values. What waits for the file does so without the lock; the record
// is held by the call, and several threads take turns in the host.

#include "interpreter/lib_python_leaks.h"
#include "kelvar/value.h"
#include "kit/i_conversion.h"
#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "scene/scene.h"
#include "storage/storage.h"
#include "values/values.h"

namespace qlx {
namespace {

HyperFileRecord* AsRecord(PyObject* object) { return reinterpret_cast<HyperFileRecord*>(object); }

template <class Call>
auto WithoutLock(Call&& call) {
  HostBlockingScope blocking;
  return call();
}

void Free(PyObject* self) {
  HyperFileRecord* record = AsRecord(self);
  if (record->data) {
    WithoutLock([&] {
      if (record->isOpen) record->data->Close();
      record->data->Free();
    });
  }
  FreeWrapper(g_wrapperTracker, self);
}

// The flag is set ahead of the call: another thread's one is told so meanwhile.
PyObject* Open(HyperFileRecord* self, int32_t ident, const Filename& path, int32_t mode, int32_t dialog) {
  if (self->isOpen) return RaiseFileInUse();
  self->isOpen = true;
  const bool isOpen = WithoutLock([&] { return self->data->Open(ident, path, mode, dialog); });
  if (!isOpen) self->isOpen = false;
  return ToPython(isOpen);
}

PyObject* Close(HyperFileRecord* self) {
  if (!self->isOpen) return RaiseFileNotOpen();
  self->isOpen = false;
  return ToPython(WithoutLock([&] { return self->data->Close(); }));
}

template <auto kCall>
bool Do(HyperFileRecord* self) {
  return WithoutLock([&] { return (self->data->*kCall)(); });
}

// Writing. What the row gives becomes what the host takes.

template <class Method>
struct Taken;
template <class Value>
struct Taken<bool (HyperFile::*)(Value)> {
  using Type = Value;
};
template <auto kWrite>
using TakenBy = typename Taken<decltype(kWrite)>::Type;

template <auto kWrite, class Given = TakenBy<kWrite>>
bool Write(HyperFileRecord* self, Given value) {
  return WithoutLock([&] { return (self->data->*kWrite)(static_cast<TakenBy<kWrite>>(value)); });
}

Vector32 Narrow(const auto& v) { return {float(v.x), float(v.y), float(v.z)}; }

template <class Given>
bool WriteNarrow(HyperFileRecord* self, const Given& value) {
  const Vector32 narrow = Narrow(value);
  return WithoutLock([&] { return self->data->WriteVector32(&narrow); });
}

// The letter is the one of four components, of which three are written; a vector of three serves as well.
PyObject* WriteVector32(PyObject* self, PyObject* args, PyObject* keywords) {
  Arguments<&WriteVector32, TypeList<PyObject*>, "O", "v"> any;
  if (!any.Parse(args, keywords)) return nullptr;
  const bool isVector = any.Apply([](PyObject* v) { return IsVector(v); });
  return isVector ? BoundRow<Row<>, &WriteNarrow<Vector>, "V", "v">::Call(self, args, keywords)
                  : BoundRow<Row<>, &WriteNarrow<Vector4d>, "V3", "v">::Call(self, args, keywords);
}

// No letter of the parser takes such a matrix: every value is refused, as scripts have always met it.
PyObject* WriteMatrix32(PyObject*, PyObject* args, PyObject* keywords) {
  static constexpr const char* kKeywords[] = {"v", nullptr};
  void* none = nullptr;
  ParseTupleAndKeywords(args, keywords, "m", kKeywords, &none);
  return nullptr;
}

// Of a copy, which shares the entries: the container may change meanwhile.
PyObject* WriteContainer(HyperFileRecord* self, BaseContainer* value) {
  BaseContainer* copy = value->GetClone();
  if (!copy) return PyErr_NoMemory();
  return ToPython(WithoutLock([&] {
    const bool isWritten = self->data->WriteContainer(copy);
    copy->Free();
    return isWritten;
  }));
}

bool WriteData(HyperFileRecord* self, const GeData& value) {
  return WithoutLock([&] { return self->data->WriteData(value.Data()); });
}

// A path is a text here, which may have no null byte.
PyObject* WriteFilename(HyperFileRecord* self, const String& value) {
  Filename path;
  if (!FilenameFromText(value, path)) return nullptr;
  return ToPython(Write<&HyperFile::WriteFilename>(self, path));
}

// The array can't change its size while its memory is looked at.
PyObject* WriteMemory(HyperFileRecord* self, PyObject* data) {
  if (!PyByteArray_Check(data) && !PyMemoryView_Check(data)) return RaiseNoMemoryBlock(data);
  if (PyMemoryView_Check(data) && PyMemoryView_GET_BUFFER(data)->readonly) return RaiseReadOnlyMemory();
  Py_buffer view;
  if (PyObject_GetBuffer(data, &view, PyBUF_SIMPLE) < 0) return nullptr;
  const bool isWritten = WithoutLock([&] { return self->data->WriteMemory(view.buf, view.len); });
  PyBuffer_Release(&view);
  return ToPython(isWritten);
}

// Reading.

PyObject* Show(const Vector32& v) { return NewVector({double(v.x), double(v.y), double(v.z)}); }

PyObject* Show(const Matrix32& m) {
  const auto widen = [](const float* v) { return Vector{double(v[0]), double(v[1]), double(v[2])}; };
  return NewMatrix({widen(m.off), widen(m.v1), widen(m.v2), widen(m.v3)});
}

template <class Value>
PyObject* Show(const Value& value) {
  if constexpr (requires { ToPython(value); })
    return ToPython(value);
  else
    return Present<Value>::Wrap(value);
}

// `Shown` is the value's type where the host's is not what Python gets.
template <auto kRead, class Value, class Shown = Value>
PyObject* Read(HyperFileRecord* self) {
  Value value{};
  const bool isRead = WithoutLock([&] {
    if constexpr (requires { (self->data->*kRead)(value); })
      return (self->data->*kRead)(value);
    else
      return (self->data->*kRead)(&value);
  });
  return isRead ? Show(static_cast<const Shown&>(value)) : NewNone();
}

PyObject* ReadContainer(HyperFileRecord* self) {
  BaseContainer* made = WithoutLock([&] { return self->data->ReadContainer(); });
  return made ? Present<BaseContainer>::Wrap(made, true) : NewNone();  // the record frees it
}

PyObject* ReadData(HyperFileRecord* self) {
  GeData data;
  const bool isRead = WithoutLock([&] { return self->data->ReadData(data.Out()); });
  return isRead ? GeDataToPython(*data.Data(), nullptr) : NewNone();
}

PyObject* ReadMemory(HyperFileRecord* self) {
  int64_t bytes = 0;
  void* memory = WithoutLock([&] { return self->data->ReadMemory(&bytes); });
  if (!memory) return NewNone();
  PyObject* result = PyBytes_FromStringAndSize(static_cast<const char*>(memory), Py_ssize_t(bytes));
  HyperFile::FreeMemory(memory);
  return result;
}

// Structure and state.

PyObject* ReadValueHeader(HyperFileRecord* self) {
  const int32_t header = WithoutLock([&] { return self->data->ReadValueHeader(); });
  return header ? ToPython(header) : NewNone();
}

bool WriteChunkStart(HyperFileRecord* self, int32_t id, int32_t level) {
  return WithoutLock([&] { return self->data->WriteChunkStart(id, level); });
}

PyObject* ReadChunkStart(HyperFileRecord* self) {
  int32_t id = 0, level = 0;
  const bool isRead = WithoutLock([&] { return self->data->ReadChunkStart(&id, &level); });
  return isRead ? Py_BuildValue("{s:i,s:i}", "id", id, "level", level) : NewNone();
}

int32_t GetError(HyperFileRecord* self) { return self->data->GetError(); }
void SetError(HyperFileRecord* self, int32_t err) { self->data->SetError(err); }
BaseDocument* GetDocument(HyperFileRecord* self) { return self->data->GetDocument(); }
int32_t GetFileVersion(HyperFileRecord* self) { return self->data->GetFileVersion(); }
int32_t GetFilterFlags(HyperFileRecord* self) { return self->data->GetFilterFlags(); }

PyMethodDef g_methods[] = {
    Method<&Open, "i%ii", "ident", "filename", "mode", "error_dialog">(
        "Open",
        "Open(ident, filename, mode, error_dialog) -> bool\n\n"
        "Opens a file: mode is qlx.HYPERFILE_READ or qlx.HYPERFILE_WRITE, ident tells what it holds, and a "
        "file with "
        "another one is not read. A new file takes the place of an older one at Close. No dialogs are shown. "
        "Raises "
        "IOError for one that is open."),
    Method<&Close>(
        "Close",
        "Close() -> bool\n\n"
        "False where a written file is not complete: then it is not put into its place. Raises IOError "
        "for one that is not open."),
    Method<&Write<&HyperFile::WriteInt8, char>, "c", "v">(
        "WriteChar", "WriteChar(v) -> bool\n\nWrites an integer of 8 bits, by its character."),
    Method<&Read<&HyperFile::ReadInt8, int8_t>>("ReadChar",
                                                "ReadChar() -> int or None\n\nReads what WriteChar wrote."),
    Method<&Write<&HyperFile::WriteUInt8>, "b", "v">(
        "WriteUChar", "WriteUChar(v) -> bool\n\nWrites an unsigned integer of 8 bits."),
    Method<&Read<&HyperFile::ReadUInt8, uint8_t>>("ReadUChar",
                                                  "ReadUChar() -> int or None\n\nReads what WriteUChar wrote."),
    Method<&Write<&HyperFile::WriteInt16>, "h", "v">("WriteWord",
                                                     "WriteWord(v) -> bool\n\nWrites an integer of 16 bits."),
    Method<&Write<&HyperFile::WriteInt16>, "h", "v">("WriteInt16",
                                                     "WriteInt16(v) -> bool\n\nThe same as WriteWord."),
    Method<&Read<&HyperFile::ReadInt16, int16_t>>("ReadWord",
                                                  "ReadWord() -> int or None\n\nReads what WriteWord wrote."),
    Method<&Read<&HyperFile::ReadInt16, int16_t>>("ReadInt16",
                                                  "ReadInt16() -> int or None\n\nThe same as ReadWord."),
    Method<&Write<&HyperFile::WriteUInt16>, "j", "v">(
        "WriteUWord", "WriteUWord(v) -> bool\n\nWrites an unsigned integer of 16 bits."),
    Method<&Write<&HyperFile::WriteUInt16>, "j", "v">("WriteUInt16",
                                                      "WriteUInt16(v) -> bool\n\nThe same as WriteUWord."),
    Method<&Read<&HyperFile::ReadUInt16, uint16_t>>(
        "ReadUWord", "ReadUWord() -> int or None\n\nReads what WriteUWord wrote."),
    Method<&Read<&HyperFile::ReadUInt16, uint16_t>>("ReadUInt16",
                                                    "ReadUInt16() -> int or None\n\nThe same as ReadUWord."),
    Method<&Write<&HyperFile::WriteInt32>, "i", "v">("WriteLong",
                                                     "WriteLong(v) -> bool\n\nWrites an integer of 32 bits."),
    Method<&Write<&HyperFile::WriteInt32>, "i", "v">("WriteInt32",
                                                     "WriteInt32(v) -> bool\n\nThe same as WriteLong."),
    Method<&Read<&HyperFile::ReadInt32, int32_t>>("ReadLong",
                                                  "ReadLong() -> int or None\n\nReads what WriteLong wrote."),
    Method<&Read<&HyperFile::ReadInt32, int32_t>>("ReadInt32",
                                                  "ReadInt32() -> int or None\n\nThe same as ReadLong."),
    Method<&Write<&HyperFile::WriteUInt32>, "I", "v">(
        "WriteULong", "WriteULong(v) -> bool\n\nWrites the low 32 bits of an integer, unsigned."),
    Method<&Write<&HyperFile::WriteUInt32>, "I", "v">("WriteUInt32",
                                                      "WriteUInt32(v) -> bool\n\nThe same as WriteULong."),
    Method<&Read<&HyperFile::ReadUInt32, uint32_t>>(
        "ReadULong", "ReadULong() -> int or None\n\nReads what WriteULong wrote."),
    Method<&Read<&HyperFile::ReadUInt32, uint32_t>>("ReadUInt32",
                                                    "ReadUInt32() -> int or None\n\nThe same as ReadULong."),
    Method<&Write<&HyperFile::WriteInt64>, "l", "v">("WriteLLong",
                                                     "WriteLLong(v) -> bool\n\nWrites an integer of 64 bits."),
    Method<&Write<&HyperFile::WriteInt64>, "l", "v">("WriteInt64",
                                                     "WriteInt64(v) -> bool\n\nThe same as WriteLLong."),
    Method<&Read<&HyperFile::ReadInt64, int64_t>>("ReadLLong",
                                                  "ReadLLong() -> int or None\n\nReads what WriteLLong wrote."),
    Method<&Read<&HyperFile::ReadInt64, int64_t>>("ReadInt64",
                                                  "ReadInt64() -> int or None\n\nThe same as ReadLLong."),
    Method<&Write<&HyperFile::WriteUInt64>, "L", "v">(
        "WriteUInt64", "WriteUInt64(v) -> bool\n\nWrites an unsigned integer of 64 bits."),
    Method<&Read<&HyperFile::ReadUInt64, uint64_t>>(
        "ReadUInt64", "ReadUInt64() -> int or None\n\nReads what WriteUInt64 wrote."),
    Method<&Write<&HyperFile::WriteFloat32, double>, "f", "v">(
        "WriteFloat32", "WriteFloat32(v) -> bool\n\nWrites a float, narrowed to 32 bits."),
    Method<&Read<&HyperFile::ReadFloat32, float>>(
        "ReadFloat32", "ReadFloat32() -> float or None\n\nReads what WriteFloat32 wrote."),
    Method<&Write<&HyperFile::WriteFloat64>, "d", "v">("WriteReal",
                                                       "WriteReal(v) -> bool\n\nWrites a float of 64 bits."),
    Method<&Write<&HyperFile::WriteFloat64>, "d", "v">("WriteLReal",
                                                       "WriteLReal(v) -> bool\n\nThe same as WriteReal."),
    Method<&Write<&HyperFile::WriteFloat64>, "d", "v">("WriteLFloat",
                                                       "WriteLFloat(v) -> bool\n\nThe same as WriteReal."),
    Method<&Write<&HyperFile::WriteFloat64>, "d", "v">("WriteFloat64",
                                                       "WriteFloat64(v) -> bool\n\nThe same as WriteReal."),
    Method<&Read<&HyperFile::ReadFloat64, double>>(
        "ReadReal", "ReadReal() -> float or None\n\nReads what WriteReal wrote."),
    Method<&Read<&HyperFile::ReadFloat64, double>>("ReadLReal",
                                                   "ReadLReal() -> float or None\n\nThe same as ReadReal."),
    Method<&Read<&HyperFile::ReadFloat64, double>>("ReadFloat",
                                                   "ReadFloat() -> float or None\n\nThe same as ReadReal."),
    Method<&Read<&HyperFile::ReadFloat64, double>>("ReadFloat64",
                                                   "ReadFloat64() -> float or None\n\nThe same as ReadReal."),
    Method<&Write<&HyperFile::WriteBool>, "b", "v">("WriteBool",
                                                    "WriteBool(v) -> bool\n\nWrites a truth value."),
    Method<&Read<&HyperFile::ReadBool, HostBool, bool>>(
        "ReadBool", "ReadBool() -> bool or None\n\nReads what WriteBool wrote."),
    Method<&Write<&HyperFile::WriteTime>, "T", "v">("WriteTime",
                                                    "WriteTime(v) -> bool\n\nWrites a qlx.BaseTime."),
    Method<&Read<&HyperFile::ReadTime, BaseTime>>(
        "ReadTime", "ReadTime() -> qlx.BaseTime or None\n\nReads what WriteTime wrote."),
    Method<&Write<&HyperFile::WriteVector>, "V", "v">(
        "WriteVector", "WriteVector(v) -> bool\n\nWrites a qlx.Vector in the host's precision."),
    Method<&Read<&HyperFile::ReadVector, Vector>>(
        "ReadVector", "ReadVector() -> qlx.Vector or None\n\nReads what WriteVector wrote."),
    {"WriteVector32", AsMethod(WriteVector32), METH_VARARGS | METH_KEYWORDS,
     "WriteVector32(v) -> bool\n\nWrites a qlx.Vector, or the first three of a qlx.Vector4d, narrowed to 32 "
     "bits each."},
    Method<&Read<&HyperFile::ReadVector32, Vector32>>(
        "ReadVector32", "ReadVector32() -> qlx.Vector or None\n\nReads what WriteVector32 wrote."),
    Method<&Write<&HyperFile::WriteVector64>, "V6", "v">(
        "WriteVector64", "WriteVector64(v) -> bool\n\nWrites a qlx.Vector with 64 bits each."),
    Method<&Write<&HyperFile::WriteVector64>, "V6", "v">(
        "WriteLVector", "WriteLVector(v) -> bool\n\nThe same as WriteVector64."),
    Method<&Read<&HyperFile::ReadVector64, Vector>>(
        "ReadVector64", "ReadVector64() -> qlx.Vector or None\n\nReads what WriteVector64 wrote."),
    Method<&Read<&HyperFile::ReadVector64, Vector>>(
        "ReadLVector", "ReadLVector() -> qlx.Vector or None\n\nThe same as ReadVector64."),
    Method<&Write<&HyperFile::WriteMatrix>, "M", "v">(
        "WriteMatrix", "WriteMatrix(v) -> bool\n\nWrites a qlx.Matrix in the host's precision."),
    Method<&Read<&HyperFile::ReadMatrix, Matrix>>(
        "ReadMatrix", "ReadMatrix() -> qlx.Matrix or None\n\nReads what WriteMatrix wrote."),
    {"WriteMatrix32", AsMethod(WriteMatrix32), METH_VARARGS | METH_KEYWORDS,
     "WriteMatrix32(v) -> bool\n\nWrites nothing: raises TypeError for every value."},
    Method<&Read<&HyperFile::ReadMatrix32, Matrix32>>(
        "ReadMatrix32", "ReadMatrix32() -> qlx.Matrix or None\n\nReads what WriteMatrix32 wrote."),
    Method<&Write<&HyperFile::WriteMatrix64>, "6", "v">(
        "WriteMatrix64", "WriteMatrix64(v) -> bool\n\nWrites a qlx.Matrix with 64 bits each."),
    Method<&Write<&HyperFile::WriteMatrix64>, "6", "v">(
        "WriteLMatrix", "WriteLMatrix(v) -> bool\n\nThe same as WriteMatrix64."),
    Method<&Read<&HyperFile::ReadMatrix64, Matrix>>(
        "ReadMatrix64", "ReadMatrix64() -> qlx.Matrix or None\n\nReads what WriteMatrix64 wrote."),
    Method<&Read<&HyperFile::ReadMatrix64, Matrix>>(
        "ReadLMatrix", "ReadLMatrix() -> qlx.Matrix or None\n\nThe same as ReadMatrix64."),
    Method<&Write<&HyperFile::WriteString>, "$", "v">(
        "WriteString", "WriteString(v) -> bool\n\nWrites a text; other objects by their str()."),
    Method<&Read<&HyperFile::ReadString, String>>(
        "ReadString", "ReadString() -> str or None\n\nReads what WriteString wrote."),
    Method<&WriteFilename, "$", "v">("WriteFilename", "WriteFilename(v) -> bool\n\nWrites a path."),
    Method<&Read<&HyperFile::ReadFilename, Filename>>(
        "ReadFilename", "ReadFilename() -> str or None\n\nReads what WriteFilename wrote."),
    Method<&WriteContainer, "C", "v">(
        "WriteContainer",
        "WriteContainer(v) -> bool\n\nWrites a qlx.BaseContainer; its links and pointers are not."),
    Method<&ReadContainer>("ReadContainer",
                           "ReadContainer() -> qlx.BaseContainer or None\n\nReads what WriteContainer wrote."),
    Method<&WriteData, "G", "v">("WriteData",
                                 "WriteData(v) -> bool\n\nWrites any value that a container can hold."),
    Method<&ReadData>("ReadData", "ReadData() -> object or None\n\nReads what WriteData wrote."),
    Method<&WriteMemory, "O", "data">("WriteMemory",
                                      "WriteMemory(data) -> bool\n\nWrites the bytes of a bytearray, or of a "
                                      "memoryview of what can be changed."),
    Method<&ReadMemory>("ReadMemory", "ReadMemory() -> bytes or None\n\nReads what WriteMemory wrote."),
    Method<&GetError>(
        "GetError",
        "GetError() -> int\n\nWhy the latest call that failed did so: one of qlx.HYPERFILE_ERROR_*."),
    Method<&SetError, "i", "err">("SetError", "SetError(err) -> None\n\nSets what GetError answers."),
    Method<&ReadValueHeader>("ReadValueHeader",
                             "ReadValueHeader() -> int or None\n\n"
                             "What is to be read next, one of qlx.HYPERFILE_VALUE_*; it stays the next one."),
    Method<&Write<&HyperFile::SkipValue>, "i", "hf">("SkipValue",
                                                     "SkipValue(hf) -> bool\n\nSkips what is to be read next, "
                                                     "if ReadValueHeader would answer `hf`; a chunk with "
                                                     "all that is in it."),
    Method<&WriteChunkStart, "ii", "id", "level">("WriteChunkStart",
                                                  "WriteChunkStart(id, level) -> bool\n\nBegins a chunk, which "
                                                  "readers can skip; both numbers are yours."),
    Method<&Do<&HyperFile::WriteChunkEnd>>("WriteChunkEnd",
                                           "WriteChunkEnd() -> bool\n\nEnds the innermost chunk."),
    Method<&ReadChunkStart>("ReadChunkStart",
                            "ReadChunkStart() -> dict or None\n\nEnters a chunk: its \"id\" and \"level\"."),
    Method<&Do<&HyperFile::ReadChunkEnd>>(
        "ReadChunkEnd", "ReadChunkEnd() -> bool\n\nLeaves the innermost chunk, of which all was read."),
    Method<&Do<&HyperFile::SkipToEndChunk>>(
        "SkipToEndChunk", "SkipToEndChunk() -> bool\n\nLeaves the innermost chunk, whatever else is in it."),
    Method<&GetDocument>("GetDocument",
                         "GetDocument() -> qlx.documents.BaseDocument or None\n\n"
                         "The document of the element that is just written or read."),
    Method<&GetFileVersion>("GetFileVersion",
                            "GetFileVersion() -> int\n\nThe version of the open file's format; 0 for none."),
    Method<&GetFilterFlags>("GetFilterFlags",
                            "GetFilterFlags() -> int\n\nHow a scene is loaded or saved; 0 for a file of Open."),
    {},
};

}  // namespace

PyTypeObject g_HyperFileType = MakeType<HyperFileRecord>({
    .name = "qlx.storage.HyperFile",
    .doc = "Hyper files are used to store data.",
    .methods = g_methods,
    .create = Create<&HyperFile::Alloc, "">,
    .destroy = Free,
});

namespace {
const TypeQueueEntry g_entry(g_HyperFileType);
}

PyObject* Present<HyperFile>::Wrap(HyperFile* host, bool) {
  PyObject* object = AllocWrapper(g_wrapperTracker, &g_HyperFileType);
  if (object)
    AsRecord(object)->data = host;
  else
    host->Free();
  return object;
}

}  // namespace qlx
