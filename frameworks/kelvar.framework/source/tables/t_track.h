/* Group 32: animation tracks.
 * group     HOST_GROUP_TRACK
 * class     CTrack : BaseList2D */
#ifndef KELVAR_T_TRACK_H
#define KELVAR_T_TRACK_H

#include "t_baselist.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct CTrack CTrack;

typedef struct HostTrackGroup {
  uint32_t size;
  uint32_t reserved;

  /* A new track for a parameter of the node, which it is not yet in.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  CTrack* (*Alloc)(BaseList2D* node, const HostDescID* id);

  /* The id of the track's parameter.
   * owner   the track, of the levels
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  HostBool (*GetDescriptionID)(const CTrack* self, HostDescID* id);
} HostTrackGroup;

#ifdef __cplusplus
}
#endif
#endif
