// The tracks of an object's vectors. Tracks hold no curves with keys: what needs those finds none.

#include <vector>

#include "boundary/host.h"
#include "scene/object.h"

namespace host::object {

HostBool GetVectorTracks(const BaseObject* self, const HostDescID* id, CTrack** tracks) {
  if (!self || !id || !id->level || id->depth <= 0 || !tracks) return 0;
  std::vector<DescLevel> levels(id->level, id->level + id->depth);
  levels.push_back({});
  for (int32_t i = 0; i < 3; ++i) {
    levels.back() = {VECTOR_X + i, HOST_DATA_FLOAT, 0};
    const HostDescID component{levels.data(), int32_t(levels.size()), 0};
    tracks[i] = As<CTrack>(baselist::FindCTrack(self, &component));
    if (!tracks[i]) return 0;
  }
  return 1;
}

HostBool GetVectorCurves(const BaseObject*, const BaseList2D*, BaseList2D**) { return 0; }

HostBool SynchronizeVectorTrackKeys(BaseObject*, int32_t, HostBool, const BaseTime*, const BaseTime*) {
  return 0;
}

HostBool FindBestEulerAngle(BaseObject*, int32_t, HostBool, HostBool, const BaseTime*, const BaseTime*) {
  return 0;
}

Vector EvaluateSynchronizedRotation(BaseObject* self, const BaseTime*, int32_t, HostBool) {
  return self ? self->place.Relative().rotation : Vector{};
}

}  // namespace host::object
