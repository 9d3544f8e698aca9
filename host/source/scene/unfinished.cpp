// Entries that are still to come.

#include "boundary/host.h"

namespace host::atom {
Description* GetDescription(const QLXAtom*, int32_t) { return nullptr; }
HostBool GetParameter(const QLXAtom*, const HostDescID*, HostGeData*, int32_t) { return HostBool(0); }
HostBool SetParameter(QLXAtom*, const HostDescID*, const HostGeData*, int32_t) { return HostBool(0); }
}  // namespace host::atom

namespace host::baselist {
HostBool SetAnimatedParameter(BaseList2D*, BaseList2D*, const HostDescID*, const HostGeData*, const HostGeData*,
                              double, int32_t) {
  return HostBool(0);
}
HostBool GetAnimatedParameter(const BaseList2D*, const HostDescID*, HostGeData*, HostGeData*, double*,
                              int32_t) {
  return HostBool(0);
}
DynamicDescription* GetDynamicDescription(BaseList2D*) { return nullptr; }
}  // namespace host::baselist

namespace host::description {
void Free(Description*) {}
int32_t GetCount(const Description*) { return int32_t(0); }
HostBool GetIndex(const Description*, int32_t, HostDescID*, HostDescID*) { return HostBool(0); }
const BaseContainer* GetSettings(const Description*, int32_t) { return nullptr; }
int32_t Find(const Description*, const HostDescID*) { return int32_t(-1); }
}  // namespace host::description

namespace host::dynamicdescription {
HostBool Alloc(DynamicDescription*, const BaseContainer*, HostDescID*) { return HostBool(0); }
HostBool Set(DynamicDescription*, const HostDescID*, const BaseContainer*, BaseList2D*) { return HostBool(0); }
HostBool Remove(DynamicDescription*, const HostDescID*) { return HostBool(0); }
const BaseContainer* Find(const DynamicDescription*, const HostDescID*) { return nullptr; }
DynamicBrowse* BrowseInit(DynamicDescription*) { return nullptr; }
HostBool GetNext(DynamicDescription*, DynamicBrowse*, HostDescID*, const BaseContainer**) {
  return HostBool(0);
}
void BrowseFree(DynamicDescription*, DynamicBrowse*) {}
}  // namespace host::dynamicdescription
