// Triangles between closed lines.
#ifndef HOST_SCENE_TRIANGULATE_H
#define HOST_SCENE_TRIANGULATE_H

#include <array>
#include <span>
#include <vector>

#include "kelvar.framework/source/tables/t_values.h"

namespace host {

// The triangles between closed lines that lie about in a plane, that of the largest: numbers of points. What is
// inside of an odd number of lines is filled. Lines that cross one another or themselves give some triangles;
// those with points that are no numbers, none. `ends` has for each line the number behind its last point; it
// begins at the end of the line before.
std::vector<std::array<size_t, 3>> Triangulate(std::span<const Vector> points, std::span<const size_t> ends);

}  // namespace host

#endif
