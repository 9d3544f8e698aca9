// Between scenes of files and documents.
#ifndef HOST_FILES_SCENE_MESH_H
#define HOST_FILES_SCENE_MESH_H

#include <array>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "files/scene_data.h"
#include "files/scene_files.h"
#include "scene/object.h"

namespace host {

// Numbers rows of so many words, the same ones once, by when they first came.
template <size_t kWords>
class Distinct {
 public:
  using Row = std::array<uint32_t, kWords>;

  void Reserve(size_t rows) {
    size_t wanted = 16;
    while (wanted < 2 * rows) wanted *= 2;
    slots_.assign(wanted, -1);
    rows_.reserve(rows);
  }
  // Of no more than were reserved.
  int32_t Add(const Row& row) {
    size_t at = Hash(row) & (slots_.size() - 1);
    for (; slots_[at] >= 0; at = (at + 1) & (slots_.size() - 1))
      if (rows_[size_t(slots_[at])] == row) return slots_[at];
    slots_[at] = int32_t(rows_.size());
    rows_.push_back(row);
    return slots_[at];
  }
  size_t Count() const { return rows_.size(); }

 private:
  static size_t Hash(const Row& row) {
    uint64_t hash = 0;
    for (const uint32_t word : row) hash = (hash ^ word) * 0x9e3779b97f4a7c15 + (hash >> 29);
    return size_t(hash ^ (hash >> 32));
  }

  std::vector<int32_t> slots_;
  std::vector<Row> rows_;
};

inline uint32_t BitsOf(float number) {
  number += 0.0f;  // both zeros are one place
  uint32_t bits;
  std::memcpy(&bits, &number, sizeof bits);
  return bits;
}

// Files have the third axis the other way round. A zero stays a plain one.
inline double Mirrored(double z) { return 0.0 - z; }

// The object of a node's meshes, without a name: points at exactly one place become one, unless a file has the
// object's own; normals, colours and texture coordinates go to tags of the corners. `firstPolygons` gets the
// first polygon of each mesh, and their number at the end. Throws std::bad_alloc.
PolygonObject* MakeObject(const FileScene& scene, const FileNode& node, std::vector<int32_t>& firstPolygons);

// A new document of a scene that was checked; the file is what it came from. Throws as ImportScene.
BaseDocument* MakeDocument(const FileScene& scene, const std::filesystem::path& file, int32_t loadFlags,
                           Progress* progress);

// How a mesh is written.
struct MeshStyle {
  bool triangles = false;  // the format has no other faces
  bool normals = false;    // its writer makes some up where there are none
};

// The meshes of an object, one for each of the materials that its polygons have: `materials` has one a polygon,
// or is empty for -1. `turn` is called every now and then and may throw. Throws std::runtime_error with the
// reason.
std::vector<FileMesh> MakeMeshes(
    const PolygonObject& object, const std::vector<int32_t>& materials, MeshStyle style,
    const std::function<void()>& turn = [] {});

}  // namespace host

#endif
