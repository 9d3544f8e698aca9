/* Dictionaries of settings that one side hands to the other.
 * service   data_dictionary net.tavor.interface.datadictionary
 * class     DataDictionary */
#ifndef TAVOR_T_DATADICTIONARY_H
#define TAVOR_T_DATADICTIONARY_H

#include "t_tavor.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct DataDictionary DataDictionary;

typedef struct TavorDataDictionaryService {
  TavorHead head;

  /* A new, empty dictionary.
   * owner   the caller, until Free
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  DataDictionary* (*Create)(void);

  /* Ends a dictionary; null is allowed.
   * owner   the host
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Free)(DataDictionary* self);

  /* Sets an integer. Keys are texts such as "net.tavor.python.vminit.interpreterflags".
   * owner   -
   * thread  one at a time
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*SetInt)(DataDictionary* self, const char* key, int64_t value);

  /* The integer under `key`; `fallback` when there is none.
   * owner   -
   * thread  any, while nobody sets
   * waits   no
   * since   23100
   * fails   fallback */
  int64_t (*GetInt)(const DataDictionary* self, const char* key, int64_t fallback);

  /* Sets a text.
   * owner   -
   * thread  one at a time
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*SetString)(DataDictionary* self, const char* key, const HostString* value);

  /* The text under `key`.
   * owner   the caller
   * thread  any, while nobody sets
   * waits   no
   * since   23100
   * fails   empty */
  HostString (*GetString)(const DataDictionary* self, const char* key);
} TavorDataDictionaryService;

#ifdef __cplusplus
}
#endif
#endif
