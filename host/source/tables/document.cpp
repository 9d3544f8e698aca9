#include "boundary/host.h"

// This host has no documents yet: there is no active one, and none can be handed in.
namespace host::document {

BaseDocument* GetActiveDocument() { return nullptr; }

BaseObject* GetActiveObject(BaseDocument*) { return nullptr; }

ParticleMasterSystem* GetParticleMasterSystem(BaseDocument*) { return nullptr; }

}  // namespace host::document
