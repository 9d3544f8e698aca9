// Objects that change the points of others.
#ifndef HOST_EVALUATE_DEFORMERS_H
#define HOST_EVALUATE_DEFORMERS_H

#include <span>

#include "scene/object.h"

namespace host {

bool IsBuiltInDeformer(int32_t type);

// Moves points of an object with that global matrix as the deformer wants.
void Deform(const BaseObject& deformer, const Matrix& deformerGlobal, const Matrix& global,
            std::span<Vector> points);

}  // namespace host

#endif
