// Objects that change the points of others.
#ifndef HOST_EVALUATE_DEFORMERS_H
#define HOST_EVALUATE_DEFORMERS_H

#include "scene/object.h"

namespace host {

bool IsBuiltInDeformer(int32_t type);

// Moves the points of a shape with that global matrix as the deformer wants, its tangents and its own normals
// with them.
void Deform(const BaseObject& deformer, const Matrix& deformerGlobal, const Matrix& global, PointObject& shape);

}  // namespace host

#endif
