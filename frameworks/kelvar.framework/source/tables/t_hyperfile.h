/* Group 10: files of tagged values.
 * group     HOST_GROUP_HYPER_FILE
 * class     HyperFile */
#ifndef KELVAR_T_HYPERFILE_H
#define KELVAR_T_HYPERFILE_H

#include "t_container.h"
#include "t_document.h"

#ifdef __cplusplus
extern "C" {
#endif

/* How a file is opened. */
enum HyperFileMode { HYPERFILE_READ = 1, HYPERFILE_WRITE = 2 };

/* Why an operation failed. */
enum HyperFileError {
  HYPERFILE_ERROR_NONE = 0,
  HYPERFILE_ERROR_OPEN = 1,    /* there is no such file, or no right to it */
  HYPERFILE_ERROR_FORMAT = 2,  /* no file of this format, or a damaged one */
  HYPERFILE_ERROR_VERSION = 3, /* of a later version */
  HYPERFILE_ERROR_IDENT = 4,   /* it holds something else */
  HYPERFILE_ERROR_READ = 5,    /* the medium */
  HYPERFILE_ERROR_WRITE = 6,   /* the medium; for good: the file can only be closed */
  HYPERFILE_ERROR_END = 7,     /* the end of the chunk or the file */
  HYPERFILE_ERROR_VALUE = 8,   /* something else is to be read next */
  HYPERFILE_ERROR_MEMORY = 9,
  HYPERFILE_ERROR_USE = 10, /* not open in that mode, no chunk to be ended, one left open */
  HYPERFILE_ERROR_NODE = 11 /* no element that can be stored, of another type, or refused by its plug-in */
};

/* What stands in a file, as ReadValueHeader tells it. A vector or matrix of the host's own precision is one of
 * the others. */
enum HyperFileValue {
  HYPERFILE_VALUE_CHUNK_START = 1,
  HYPERFILE_VALUE_CHUNK_END = 2,
  HYPERFILE_VALUE_BOOL = 3,
  HYPERFILE_VALUE_INT8 = 4,
  HYPERFILE_VALUE_UINT8 = 5,
  HYPERFILE_VALUE_INT16 = 6,
  HYPERFILE_VALUE_UINT16 = 7,
  HYPERFILE_VALUE_INT32 = 8,
  HYPERFILE_VALUE_UINT32 = 9,
  HYPERFILE_VALUE_INT64 = 10,
  HYPERFILE_VALUE_UINT64 = 11,
  HYPERFILE_VALUE_FLOAT32 = 12,
  HYPERFILE_VALUE_FLOAT64 = 13,
  HYPERFILE_VALUE_TIME = 14,
  HYPERFILE_VALUE_VECTOR32 = 15,
  HYPERFILE_VALUE_VECTOR64 = 16,
  HYPERFILE_VALUE_MATRIX32 = 17,
  HYPERFILE_VALUE_MATRIX64 = 18,
  HYPERFILE_VALUE_STRING = 19,
  HYPERFILE_VALUE_FILENAME = 20,
  HYPERFILE_VALUE_MEMORY = 21,
  HYPERFILE_VALUE_CONTAINER = 22,
  HYPERFILE_VALUE_DATA = 23
};

/* Values are read in the order in which they were written. Whatever fails leaves the place in the file as it
 * is. Calls of several threads on one file take turns: the interpreter's lock is not held by those that wait.
 */
typedef struct HostHyperFileGroup {
  uint32_t size;
  uint32_t reserved;

  /* A new file that is not open.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  HyperFile* (*Alloc)(void);

  /* Ends a file that the caller owns; one that is open is closed.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   nothing */
  void (*Free)(HyperFile* self);

  /* Opens the file of that path; `mode` is a HyperFileMode. A new file takes the place of one that is there
   * when it is closed, and not before. `ident` tells what the file holds: one with another is not read. With
   * `errorDialog` 1 the host may tell a fault in a dialog.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*Open)(HyperFile* self, int32_t ident, const HostFilename* path, int32_t mode, int32_t errorDialog);

  /* Closes the file. 0 where a written one is not complete, because a chunk is open or something could not be
   * written: what was there before stays. It is closed in any case, but for one that an element is just
   * written to or read from.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*Close)(HyperFile* self);

  /* Writes: an integer of 8 bits.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*WriteInt8)(HyperFile* self, int8_t value);

  /* Writes: an unsigned integer of 8 bits.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*WriteUInt8)(HyperFile* self, uint8_t value);

  /* Writes: an integer of 16 bits.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*WriteInt16)(HyperFile* self, int16_t value);

  /* Writes: an unsigned integer of 16 bits.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*WriteUInt16)(HyperFile* self, uint16_t value);

  /* Writes: an integer of 32 bits.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*WriteInt32)(HyperFile* self, int32_t value);

  /* Writes: an unsigned integer of 32 bits.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*WriteUInt32)(HyperFile* self, uint32_t value);

  /* Writes: an integer of 64 bits.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*WriteInt64)(HyperFile* self, int64_t value);

  /* Writes: an unsigned integer of 64 bits.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*WriteUInt64)(HyperFile* self, uint64_t value);

  /* Writes: a number of 32 bits.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*WriteFloat32)(HyperFile* self, float value);

  /* Writes: a number of 64 bits.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*WriteFloat64)(HyperFile* self, double value);

  /* Writes: a truth value.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*WriteBool)(HyperFile* self, HostBool value);

  /* Writes: a time.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*WriteTime)(HyperFile* self, const BaseTime* value);

  /* Writes: a vector in the precision that the host has for them.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*WriteVector)(HyperFile* self, const Vector* value);

  /* Writes: a vector of 32 bit numbers.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*WriteVector32)(HyperFile* self, const Vector32* value);

  /* Writes: a vector of 64 bit numbers.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*WriteVector64)(HyperFile* self, const Vector* value);

  /* Writes: a matrix in the precision that the host has for them.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*WriteMatrix)(HyperFile* self, const Matrix* value);

  /* Writes: a matrix of 32 bit numbers.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*WriteMatrix32)(HyperFile* self, const Matrix32* value);

  /* Writes: a matrix of 64 bit numbers.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*WriteMatrix64)(HyperFile* self, const Matrix* value);

  /* Writes: a text.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*WriteString)(HyperFile* self, const HostString* value);

  /* Writes: a path.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*WriteFilename)(HyperFile* self, const HostFilename* value);

  /* Reads what WriteInt8 wrote; on 0 `value` stays as it is.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*ReadInt8)(HyperFile* self, int8_t* value);

  /* Reads what WriteUInt8 wrote; on 0 `value` stays as it is.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*ReadUInt8)(HyperFile* self, uint8_t* value);

  /* Reads what WriteInt16 wrote; on 0 `value` stays as it is.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*ReadInt16)(HyperFile* self, int16_t* value);

  /* Reads what WriteUInt16 wrote; on 0 `value` stays as it is.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*ReadUInt16)(HyperFile* self, uint16_t* value);

  /* Reads what WriteInt32 wrote; on 0 `value` stays as it is.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*ReadInt32)(HyperFile* self, int32_t* value);

  /* Reads what WriteUInt32 wrote; on 0 `value` stays as it is.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*ReadUInt32)(HyperFile* self, uint32_t* value);

  /* Reads what WriteInt64 wrote; on 0 `value` stays as it is.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*ReadInt64)(HyperFile* self, int64_t* value);

  /* Reads what WriteUInt64 wrote; on 0 `value` stays as it is.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*ReadUInt64)(HyperFile* self, uint64_t* value);

  /* Reads what WriteFloat32 wrote; on 0 `value` stays as it is.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*ReadFloat32)(HyperFile* self, float* value);

  /* Reads what WriteFloat64 wrote; on 0 `value` stays as it is.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*ReadFloat64)(HyperFile* self, double* value);

  /* Reads what WriteBool wrote; on 0 `value` stays as it is.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*ReadBool)(HyperFile* self, HostBool* value);

  /* Reads what WriteTime wrote; on 0 `value` stays as it is.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*ReadTime)(HyperFile* self, BaseTime* value);

  /* Reads what WriteVector wrote; on 0 `value` stays as it is.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*ReadVector)(HyperFile* self, Vector* value);

  /* Reads what WriteVector32 wrote; on 0 `value` stays as it is.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*ReadVector32)(HyperFile* self, Vector32* value);

  /* Reads what WriteVector64 wrote; on 0 `value` stays as it is.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*ReadVector64)(HyperFile* self, Vector* value);

  /* Reads what WriteMatrix wrote; on 0 `value` stays as it is.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*ReadMatrix)(HyperFile* self, Matrix* value);

  /* Reads what WriteMatrix32 wrote; on 0 `value` stays as it is.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*ReadMatrix32)(HyperFile* self, Matrix32* value);

  /* Reads what WriteMatrix64 wrote; on 0 `value` stays as it is.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*ReadMatrix64)(HyperFile* self, Matrix* value);

  /* Reads what WriteString wrote; `value` is overwritten after a success only.
   * owner   the caller, of `value`
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*ReadString)(HyperFile* self, HostString* value);

  /* Reads what WriteFilename wrote; `value` is overwritten after a success only.
   * owner   the caller, of `value`
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*ReadFilename)(HyperFile* self, HostFilename* value);

  /* Writes a container with all below it. A link is written where it leads into what WriteObject writes, and
   * as an empty one elsewhere; a pointer becomes no value.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*WriteContainer)(HyperFile* self, const BaseContainer* value);

  /* Reads what WriteContainer wrote.
   * owner   the caller
   * thread  any
   * waits   disk
   * since   23100
   * fails   null */
  BaseContainer* (*ReadContainer)(HyperFile* self);

  /* Writes a tagged value, under the rules of WriteContainer.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*WriteData)(HyperFile* self, const HostGeData* value);

  /* Reads what WriteData wrote; `value` is overwritten after a success only.
   * owner   the caller, of `value`
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*ReadData)(HyperFile* self, HostGeData* value);

  /* Writes a block of bytes, which may be empty.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*WriteMemory)(HyperFile* self, const void* memory, int64_t bytes);

  /* Reads what WriteMemory wrote; never null, also for an empty block. Ended by FreeMemory.
   * owner   the caller
   * thread  any
   * waits   disk
   * since   23100
   * fails   null */
  void* (*ReadMemory)(HyperFile* self, int64_t* bytes);

  /* Ends a block of ReadMemory; null is allowed.
   * owner   the host
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*FreeMemory)(void* memory);

  /* The HyperFileValue of what is read next, which stays the next one; 0 at the end.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  int32_t (*ReadValueHeader)(HyperFile* self);

  /* Skips what is read next, if it is of that HyperFileValue; a chunk with all that is in it.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*SkipValue)(HyperFile* self, int32_t header);

  /* Begins a chunk, which can be skipped as a whole. `id` and `level` are the caller's own, such as what it
   * holds and in which version.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*WriteChunkStart)(HyperFile* self, int32_t id, int32_t level);

  /* Ends the innermost chunk.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*WriteChunkEnd)(HyperFile* self);

  /* Enters a chunk: its end is the end for all that is read in it. At the end of what there is to read 0,
   * which is no error.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*ReadChunkStart)(HyperFile* self, int32_t* id, int32_t* level);

  /* Leaves the innermost chunk, of which all was read.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*ReadChunkEnd)(HyperFile* self);

  /* Leaves the innermost chunk, whatever else is in it.
   * owner   -
   * thread  any
   * waits   disk
   * since   23100
   * fails   0 */
  HostBool (*SkipToEndChunk)(HyperFile* self);

  /* The HyperFileError of the latest failure since Open or SetError. Never waits for another thread's call.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetError)(const HyperFile* self);

  /* Sets what GetError answers, for the reason of whoever reads.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetError)(HyperFile* self, int32_t error);

  /* The document of the element that is just written or read; null when there is none. Never waits for another
   * thread's call.
   * owner   the host
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseDocument* (*GetDocument)(const HyperFile* self);

  /* The version of the format of the open file, 0 when none is open. Never waits for another thread's call.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetFileVersion)(const HyperFile* self);

  /* The flags by which a scene is loaded or saved; 0 for a file that Open opened. Never waits for another
   * thread's call.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetFilterFlags)(const HyperFile* self);
} HostHyperFileGroup;

#ifdef __cplusplus
}
#endif
#endif
