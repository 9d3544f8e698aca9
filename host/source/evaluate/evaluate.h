// Evaluation: from parameters to the geometry that is seen.
#ifndef HOST_EVALUATE_EVALUATE_H
#define HOST_EVALUATE_EVALUATE_H

#include <cstdint>
#include <functional>

#include "scene/object.h"

namespace host {

struct Passes {
  bool animation = true, expressions = true, caches = true;
};

// Runs the expressions in the order of their priorities, then builds all caches that are not up to date. It
// takes turns with scripts, and takes up what they changed meanwhile at the next call. False when `isStopped`
// said so.
bool Evaluate(BaseDocument& document, const Passes& passes, const std::function<bool()>& isStopped = {});

// The expressions alone. They may do anything: the document may be gone behind them.
bool Execute(const HostLink& document, const std::function<bool()>& isStopped);

// Brings the caches of an object and of all below it up to date; the caller has the turn.
void EvaluateTree(BaseObject& root);

// A new object that is what the object shows, without anything left to evaluate: polygons, splines and lines as
// deformers left them, what generators made in their place; cameras, lights and the like as they are. With
// `children` what stands below it too, but for deformers and what generators took as their input. Null for one
// of more than `most` objects, and where memory lacks.
BaseObject* NewShape(const BaseObject& object, bool children, size_t most = SIZE_MAX, size_t* count = nullptr);

// A copy of the document with the shapes of all objects in their places; null where memory lacks.
BaseDocument* Polygonize(BaseDocument& document, bool keepAnimation);

// A hash of what the object, and with `below` all below it, looks like: changes of those DIRTYFLAGS, and of
// caches. Without MATRIX the place of the object itself doesn't count; with `selections` those of its points
// and polygons do.
uint64_t StateOf(const BaseObject& object, int32_t dirtyFlags, bool below, bool selections = false);

// Whether the object makes others, or changes their points, by its type.
bool IsGenerator(const BaseObject& object);
bool IsDeformer(const BaseObject& object);

// Whether there ever was one that does; told by the constructor of objects.
bool HaveDeformers();
void MeetObject(const NodeType& type);

}  // namespace host

#endif
