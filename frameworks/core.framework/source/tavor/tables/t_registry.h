/* Registries: named lists of objects, each object under an id.
 * service   registry net.tavor.interface.registry */
#ifndef TAVOR_T_REGISTRY_H
#define TAVOR_T_REGISTRY_H

#include "t_tavor.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct TavorRegistryService {
  TavorHead head;

  /* Puts an object under `id`. The registry keeps the pointer; an id that is taken is an
   * error.
   * owner   the caller, who erases it before the object goes
   * thread  any
   * waits   no
   * since   23100
   * fails   error */
  HostResult (*Insert)(const char* registry, const char* id, void* object);

  /* The object under `id`.
   * owner   who inserted it
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  void* (*Find)(const char* registry, const char* id);

  /* Takes the object under `id` out; 1 when there was one.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*Erase)(const char* registry, const char* id);
} TavorRegistryService;

#ifdef __cplusplus
}
#endif
#endif
