// The particle master system of a document: an element of the scene that has no group of its own.
#ifndef KELVAR_PARTICLES_H
#define KELVAR_PARTICLES_H

#include "kelvar/baselist.h"

struct ParticleMasterSystem : BaseList2D {};

#endif
