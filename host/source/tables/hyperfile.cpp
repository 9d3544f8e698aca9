// The entries for files of tagged values: each call on a file has its turn.

#include "files/hyperfile.h"

#include <cstdlib>
#include <memory>

#include "boundary/host.h"
#include "tables/values.h"

namespace host::hyperfile {
namespace {

template <class Call>
HostBool InTurn(HyperFile* self, Call&& call) {
  if (!self) return 0;
  std::lock_guard guard(self->turn);
  return call();
}

template <class Plain>
HostBool Write(HyperFile* self, int32_t tag, const Plain& value) {
  return InTurn(self, [&] { return self->Write(tag, value); });
}
template <class Plain>
HostBool Write(HyperFile* self, int32_t tag, const Plain* value) {
  return value && Write(self, tag, *value);
}

template <class Plain>
HostBool Read(HyperFile* self, int32_t tag, Plain* value) {
  return value && InTurn(self, [&] { return self->Read(tag, *value); });
}

HostBool WriteText(HyperFile* self, int32_t tag, std::string_view text) {
  return InTurn(self, [&] { return self->WriteSized(tag, text); });
}
HostBool ReadText(HyperFile* self, int32_t tag, std::string& text) {
  return InTurn(self, [&] { return self->ReadSized(tag, text); });
}

}  // namespace

HyperFile* Alloc() { return new HyperFile; }

void Free(HyperFile* self) { delete self; }

HostBool Open(HyperFile* self, int32_t ident, const HostFilename* path, int32_t mode, int32_t /*errorDialog*/) {
  return InTurn(self, [&] { return self->Open(ident, std::string(View(path)), mode); });
}

HostBool Close(HyperFile* self) {
  return InTurn(self, [&] { return self->Close(); });
}

HostBool WriteInt8(HyperFile* self, int8_t value) { return Write(self, HYPERFILE_VALUE_INT8, value); }
HostBool ReadInt8(HyperFile* self, int8_t* value) { return Read(self, HYPERFILE_VALUE_INT8, value); }

HostBool WriteUInt8(HyperFile* self, uint8_t value) { return Write(self, HYPERFILE_VALUE_UINT8, value); }
HostBool ReadUInt8(HyperFile* self, uint8_t* value) { return Read(self, HYPERFILE_VALUE_UINT8, value); }

HostBool WriteInt16(HyperFile* self, int16_t value) { return Write(self, HYPERFILE_VALUE_INT16, value); }
HostBool ReadInt16(HyperFile* self, int16_t* value) { return Read(self, HYPERFILE_VALUE_INT16, value); }

HostBool WriteUInt16(HyperFile* self, uint16_t value) { return Write(self, HYPERFILE_VALUE_UINT16, value); }
HostBool ReadUInt16(HyperFile* self, uint16_t* value) { return Read(self, HYPERFILE_VALUE_UINT16, value); }

HostBool WriteInt32(HyperFile* self, int32_t value) { return Write(self, HYPERFILE_VALUE_INT32, value); }
HostBool ReadInt32(HyperFile* self, int32_t* value) { return Read(self, HYPERFILE_VALUE_INT32, value); }

HostBool WriteUInt32(HyperFile* self, uint32_t value) { return Write(self, HYPERFILE_VALUE_UINT32, value); }
HostBool ReadUInt32(HyperFile* self, uint32_t* value) { return Read(self, HYPERFILE_VALUE_UINT32, value); }

HostBool WriteInt64(HyperFile* self, int64_t value) { return Write(self, HYPERFILE_VALUE_INT64, value); }
HostBool ReadInt64(HyperFile* self, int64_t* value) { return Read(self, HYPERFILE_VALUE_INT64, value); }

HostBool WriteUInt64(HyperFile* self, uint64_t value) { return Write(self, HYPERFILE_VALUE_UINT64, value); }
HostBool ReadUInt64(HyperFile* self, uint64_t* value) { return Read(self, HYPERFILE_VALUE_UINT64, value); }

HostBool WriteFloat32(HyperFile* self, float value) { return Write(self, HYPERFILE_VALUE_FLOAT32, value); }
HostBool ReadFloat32(HyperFile* self, float* value) { return Read(self, HYPERFILE_VALUE_FLOAT32, value); }

HostBool WriteFloat64(HyperFile* self, double value) { return Write(self, HYPERFILE_VALUE_FLOAT64, value); }
HostBool ReadFloat64(HyperFile* self, double* value) { return Read(self, HYPERFILE_VALUE_FLOAT64, value); }

HostBool WriteTime(HyperFile* self, const BaseTime* value) { return Write(self, HYPERFILE_VALUE_TIME, value); }
HostBool ReadTime(HyperFile* self, BaseTime* value) { return Read(self, HYPERFILE_VALUE_TIME, value); }

HostBool WriteVector(HyperFile* self, const Vector* value) {
  return Write(self, HYPERFILE_VALUE_VECTOR64, value);
}
HostBool ReadVector(HyperFile* self, Vector* value) { return Read(self, HYPERFILE_VALUE_VECTOR64, value); }

HostBool WriteVector32(HyperFile* self, const Vector32* value) {
  return Write(self, HYPERFILE_VALUE_VECTOR32, value);
}
HostBool ReadVector32(HyperFile* self, Vector32* value) { return Read(self, HYPERFILE_VALUE_VECTOR32, value); }

HostBool WriteVector64(HyperFile* self, const Vector* value) {
  return Write(self, HYPERFILE_VALUE_VECTOR64, value);
}
HostBool ReadVector64(HyperFile* self, Vector* value) { return Read(self, HYPERFILE_VALUE_VECTOR64, value); }

HostBool WriteMatrix(HyperFile* self, const Matrix* value) {
  return Write(self, HYPERFILE_VALUE_MATRIX64, value);
}
HostBool ReadMatrix(HyperFile* self, Matrix* value) { return Read(self, HYPERFILE_VALUE_MATRIX64, value); }

HostBool WriteMatrix32(HyperFile* self, const Matrix32* value) {
  return Write(self, HYPERFILE_VALUE_MATRIX32, value);
}
HostBool ReadMatrix32(HyperFile* self, Matrix32* value) { return Read(self, HYPERFILE_VALUE_MATRIX32, value); }

HostBool WriteMatrix64(HyperFile* self, const Matrix* value) {
  return Write(self, HYPERFILE_VALUE_MATRIX64, value);
}
HostBool ReadMatrix64(HyperFile* self, Matrix* value) { return Read(self, HYPERFILE_VALUE_MATRIX64, value); }

HostBool WriteBool(HyperFile* self, HostBool value) {
  return Write(self, HYPERFILE_VALUE_BOOL, uint8_t(value != 0));
}

HostBool ReadBool(HyperFile* self, HostBool* value) {
  uint8_t byte;
  if (!value || !Read(self, HYPERFILE_VALUE_BOOL, &byte)) return 0;
  *value = byte != 0;
  return 1;
}

HostBool WriteString(HyperFile* self, const HostString* value) {
  return WriteText(self, HYPERFILE_VALUE_STRING, View(value));
}

HostBool ReadString(HyperFile* self, HostString* value) {
  std::string text;
  if (!value || !ReadText(self, HYPERFILE_VALUE_STRING, text)) return 0;
  *value = MakeString(text);
  return 1;
}

HostBool WriteFilename(HyperFile* self, const HostFilename* value) {
  return WriteText(self, HYPERFILE_VALUE_FILENAME, View(value));
}

HostBool ReadFilename(HyperFile* self, HostFilename* value) {
  std::string path;
  if (!value || !ReadText(self, HYPERFILE_VALUE_FILENAME, path)) return 0;
  *value = MakeFilename(path);
  return 1;
}

HostBool WriteContainer(HyperFile* self, const BaseContainer* value) {
  return value && InTurn(self, [&] { return self->WriteContainer(*value); });
}

BaseContainer* ReadContainer(HyperFile* self) {
  auto made = std::make_unique<BaseContainer>();
  return InTurn(self, [&] { return self->ReadContainer(*made); }) ? made.release() : nullptr;
}

HostBool WriteData(HyperFile* self, const HostGeData* value) {
  return value && InTurn(self, [&] { return self->WriteData(*value); });
}

HostBool ReadData(HyperFile* self, HostGeData* value) {
  Value data;
  if (!value || !InTurn(self, [&] { return self->ReadData(data); })) return 0;
  *value = data.Release();
  return 1;
}

HostBool WriteMemory(HyperFile* self, const void* memory, int64_t bytes) {
  if (bytes < 0 || (!memory && bytes)) return 0;
  return WriteText(self, HYPERFILE_VALUE_MEMORY, {static_cast<const char*>(memory), size_t(bytes)});
}

void* ReadMemory(HyperFile* self, int64_t* bytes) {
  if (!bytes) return nullptr;
  std::unique_ptr<void, void (*)(void*)> memory(nullptr, std::free);
  const auto read = [&] {
    uint64_t size;
    if (!self->PeekSized(HYPERFILE_VALUE_MEMORY, size)) return false;
    memory.reset(std::malloc(size + 1));  // never null for an empty one
    if (!memory) return self->Fail(HYPERFILE_ERROR_MEMORY);
    *bytes = int64_t(size);
    return self->ReadSizedInto(HYPERFILE_VALUE_MEMORY, memory.get(), size);
  };
  return InTurn(self, read) ? memory.release() : nullptr;
}

void FreeMemory(void* memory) { std::free(memory); }

int32_t ReadValueHeader(HyperFile* self) {
  if (!self) return 0;
  std::lock_guard guard(self->turn);
  return self->NextTag();
}

HostBool SkipValue(HyperFile* self, int32_t header) {
  return InTurn(self, [&] { return self->Skip(header); });
}

HostBool WriteChunkStart(HyperFile* self, int32_t id, int32_t level) {
  return InTurn(self, [&] { return self->BeginChunk(id, level); });
}

HostBool WriteChunkEnd(HyperFile* self) {
  return InTurn(self, [&] { return self->EndChunk(); });
}

HostBool ReadChunkStart(HyperFile* self, int32_t* id, int32_t* level) {
  return id && level && InTurn(self, [&] { return self->EnterChunk(*id, *level); });
}

HostBool ReadChunkEnd(HyperFile* self) {
  return InTurn(self, [&] { return self->LeaveChunk(false); });
}

HostBool SkipToEndChunk(HyperFile* self) {
  return InTurn(self, [&] { return self->LeaveChunk(true); });
}

int32_t GetError(const HyperFile* self) { return self ? self->error.load() : 0; }

void SetError(HyperFile* self, int32_t error) {
  if (self) self->error = error;
}

BaseDocument* GetDocument(const HyperFile* self) {
  return self ? static_cast<BaseDocument*>(link::GetLink(self->Document())) : nullptr;
}

int32_t GetFileVersion(const HyperFile* self) { return self ? self->version.load() : 0; }

int32_t GetFilterFlags(const HyperFile* self) { return self ? self->filterFlags.load() : 0; }

}  // namespace host::hyperfile
