#include <strings.h>

#include <algorithm>
#include <string>

#include "files/scene_files.h"

namespace host {
namespace {

// Only what comes back as it went is offered for saving. The library's FBX, as text, keeps six digits of a
// number; as bytes, it can't be read again; and its 3DS loses names and places.
constexpr SceneFormat kFormats[] = {
    {1030178, "FORMAT_OBJEXPORT", "obj", "obj", true, true},
    {1025755, "FORMAT_DAEEXPORT", "dae", "collada", true, true},
    {1023868, "FORMAT_STLEXPORT", "stl", "stlb", true, true},
    {1041130, "FORMAT_PLYEXPORT", "ply", "plyb", true, true},
    {1041129, "FORMAT_GLBEXPORT", "glb", "glb2", true, true},
    {1041128, nullptr, "gltf", nullptr, true, false},
    {1026370, nullptr, "fbx", nullptr, true, false},
    {1001010, nullptr, "3ds", nullptr, true, false},
};

}  // namespace

std::span<const SceneFormat> SceneFormats() { return kFormats; }

const SceneFormat* FindFormat(int32_t id) {
  const auto* at = std::ranges::find(kFormats, id, &SceneFormat::id);
  return at == std::end(kFormats) ? nullptr : at;
}

const SceneFormat* FindFormat(std::string_view extension) {
  if (extension.starts_with('.')) extension.remove_prefix(1);
  const std::string text(extension);
  const auto* at = std::ranges::find_if(
      kFormats, [&](const SceneFormat& format) { return !strcasecmp(format.extension, text.c_str()); });
  return at == std::end(kFormats) ? nullptr : at;
}

}  // namespace host
