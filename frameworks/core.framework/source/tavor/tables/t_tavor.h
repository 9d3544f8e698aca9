/* The platform record `g_tavor` and the two shapes that hang on it.
 *
 * A service is a table of functions that the module looks up by its identity on first use.
 * An object of an interface carries its table in its first word. */
#ifndef TAVOR_T_TAVOR_H
#define TAVOR_T_TAVOR_H

#include "../../../../kelvar.framework/source/tables/t_host.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Every service table and every interface table starts like this. */
typedef struct TavorHead {
  uint32_t size;
  uint32_t version;     /* raised when an entry changes its meaning */
  const char* identity; /* reverse-dotted, lives as long as the table */
} TavorHead;

/* Exported by the module as "g_tavor", all zero. The host fills it before action 1 and may
 * fill its slots later; the module only reads it. */
typedef struct TavorRecord {
  uint32_t size; /* of the host's idea of this record */
  uint32_t version;

  /* The service table with that identity, or null. Called on any thread. The table stays
   * valid until the module is unloaded. */
  const TavorHead* (*ResolveService)(const char* identity);

  /* When not 0, a spin lock of the module yields once before its first turn. */
  int32_t yieldFirst;
  int32_t reserved;
} TavorRecord;

#ifdef __cplusplus
}
#endif
#endif
