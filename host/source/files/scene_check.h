// What is looked at ahead of a file's reader, and what behind it.
#ifndef HOST_FILES_SCENE_CHECK_H
#define HOST_FILES_SCENE_CHECK_H

#include "files/scene_data.h"
#include "files/scene_files.h"

namespace host {

constexpr size_t kDeepest = 1000;  // node below node

// What is told of a file.
FileFault FaultOf(const std::filesystem::path& file, std::string_view reason);

// Throws std::runtime_error for a path that is none of a file.
void CheckName(const std::filesystem::path& file);

// The format of a file that is there, is a regular one, is neither empty nor too large, and begins as its
// extension says. Throws std::runtime_error with the reason.
const SceneFormat& CheckFile(const std::filesystem::path& file);

// After it there is something in the scene, no number in it is out of range, each that places something is
// finite, and the objects of its nodes are no larger than is allowed. Throws std::runtime_error with the
// reason.
void CheckScene(const FileScene& scene);

}  // namespace host

#endif
