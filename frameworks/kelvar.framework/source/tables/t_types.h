/* The vocabulary of the boundary: fixed-width integers, one-word host values, results.
 *
 * Plain C99. No entry of any table throws, longjmps or keeps a pointer that it was given
 * beyond the call, unless its comment says so. Truth values are int32_t, 0 or 1. */
#ifndef KELVAR_T_TYPES_H
#define KELVAR_T_TYPES_H

#include <stdint.h>

/* A host value of one word. The word belongs to the host; all zero is the empty value and
 * needs no destruction. A value may be moved as bytes; it is copied and destroyed by its
 * group (5 for HostString, 9 for HostFilename). */
typedef struct HostString {
  void* word;
} HostString;

typedef struct HostFilename {
  void* word;
} HostFilename;

/* A truth value in an answer or an argument, 0 or 1. */
typedef int32_t HostBool;

/* A weak reference to an object of the host: it answers null as soon as the object was
 * destroyed, by whomever. The words belong to the host; all zero is the empty link. A link
 * may be moved as bytes, and is ended by FreeLink of group 17. */
typedef struct HostLink {
  void* slot;
  uint64_t generation;
} HostLink;

enum HostResultCode {
  HOST_RESULT_OK = 0,
  HOST_RESULT_ERROR = 1,
  HOST_RESULT_OUT_OF_MEMORY = 2,
  HOST_RESULT_NOT_FOUND = 3,
  HOST_RESULT_ILLEGAL_ARGUMENT = 4,
  HOST_RESULT_NOT_OFFERED = 5, /* the table lacks the entry */
  HOST_RESULT_EXIT = 6         /* a script asked the application to end */
};

/* What an operation that can fail in several ways answers. With HOST_RESULT_OK all other
 * fields are zero. `file` is a text with the lifetime of the program, or null; `text` is
 * owned by whoever receives the result. */
typedef struct HostResult {
  int32_t code;
  int32_t line;
  const char* file;
  HostString text;
} HostResult;

#endif
