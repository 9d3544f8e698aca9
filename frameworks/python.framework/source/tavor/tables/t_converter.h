/* Converters between values of the host and Python objects, found by their ids in the registry
 * "net.tavor.python.registry.converters". */
#ifndef TAVOR_T_CONVERTER_H
#define TAVOR_T_CONVERTER_H

#include "t_cpythonlibrary.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A direction that a module does not offer is null. Lock held in both. */
typedef struct DataTypeConverter {
  uint32_t size;
  uint32_t reserved;
  const char* id;

  /* A new reference, owned by the caller; null with the Python error pending. */
  CPyObject* (*ToPython)(void* value);

  /* Writes what the object stands for to `value`; 0 with the Python error pending. */
  int32_t (*FromPython)(CPyObject* object, void* value);
} DataTypeConverter;

#ifdef __cplusplus
}
#endif
#endif
