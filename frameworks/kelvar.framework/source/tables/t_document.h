/* Group 21: documents.
 * group     HOST_GROUP_DOCUMENT
 * class     BaseDocument : BaseList2D */
#ifndef KELVAR_T_DOCUMENT_H
#define KELVAR_T_DOCUMENT_H

#include "t_object.h"

#ifdef __cplusplus
extern "C" {
#endif

/* An element like every other of the scene: what takes a QLXAtom takes it. */
typedef struct ParticleMasterSystem ParticleMasterSystem;

typedef struct HostDocumentGroup {
  uint32_t size;
  uint32_t reserved;

  /* The active document.
   * owner   the host
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseDocument* (*GetActiveDocument)(void);

  /* The document's active object; null when none or more than one is selected.
   * owner   the document
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  BaseObject* (*GetActiveObject)(BaseDocument* self);

  /* The document's particle master system, when it has one.
   * owner   the document
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  ParticleMasterSystem* (*GetParticleMasterSystem)(BaseDocument* self);
} HostDocumentGroup;

#ifdef __cplusplus
}
#endif
#endif
