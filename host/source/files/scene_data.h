// A scene as files hold it: right-handed, Y up, the front of a face where its corners turn to the left, texture
// coordinates from the picture's bottom, numbers in single precision. The host and the program that reads and
// writes files hand it to one another.
#ifndef HOST_FILES_SCENE_DATA_H
#define HOST_FILES_SCENE_DATA_H

#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "kelvar.framework/source/tables/t_values.h"

namespace host {

struct FileNode {
  std::string name;
  int32_t parent = -1;  // an earlier one
  Matrix32 matrix{{}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
  std::vector<int32_t> meshes;

  static auto Fields(auto& of) { return std::tie(of.name, of.parent, of.matrix, of.meshes); }
};

struct FileMesh {
  std::string name;
  int32_t material = -1;
  std::vector<Vector32> points;
  std::vector<Vector32> normals, uvw;  // one a point, or empty
  std::vector<ColorA32> colors;
  std::vector<uint32_t> sizes;  // how many corners each face has; empty: three each
  std::vector<uint32_t> corners;

  static auto Fields(auto& of) {
    return std::tie(of.name, of.material, of.points, of.normals, of.uvw, of.colors, of.sizes, of.corners);
  }
};

enum TextureSlot : int32_t {
  kTextureColor,
  kTextureLuminance,
  kTextureSpecular,
  kTextureAlpha,
  kTextureBump,
  kTextureNormal,
  kTextureSlots
};

struct FileMaterial {
  std::string name;
  Vector32 color{0.8f, 0.8f, 0.8f}, specular{}, emissive{};
  float opacity = 1, refraction = 1, metallic = 0;
  float roughness = -1;                                                         // 0 to 1; below 0: not said
  std::vector<std::string> textures = std::vector<std::string>(kTextureSlots);  // empty: none
  std::vector<int32_t> embedded = std::vector<int32_t>(kTextureSlots);  // whether the picture is in the file

  static auto Fields(auto& of) {
    return std::tie(of.name, of.color, of.specular, of.emissive, of.opacity, of.refraction, of.metallic,
                    of.roughness, of.textures, of.embedded);
  }
};

// In the system of its node.
struct FileView {
  Vector32 position{}, direction{0, 0, -1}, up{0, 1, 0};
};

struct FileCamera {
  int32_t node = 0;
  FileView view;
  float angle = 0.9272952f;  // the width of what it sees
  float nearest = 0.1f, farthest = 1000;
  int32_t isParallel = 0;

  static auto Fields(auto& of) {
    return std::tie(of.node, of.view, of.angle, of.nearest, of.farthest, of.isParallel);
  }
};

// As LIGHT_TYPE counts them.
enum FileLightType : int32_t { kLightOmni, kLightSpot, kLightDistant, kLightArea };

struct FileLight {
  int32_t node = 0;
  int32_t type = kLightOmni;
  FileView view;
  Vector32 color{1, 1, 1};
  float inner = 0, outer = 0;  // angles of the whole cone

  static auto Fields(auto& of) { return std::tie(of.node, of.type, of.view, of.color, of.inner, of.outer); }
};

struct FileScene {
  std::vector<FileNode> nodes;
  std::vector<FileMesh> meshes;
  std::vector<FileMaterial> materials;
  std::vector<FileCamera> cameras;
  std::vector<FileLight> lights;

  static auto Fields(auto& of) { return std::tie(of.nodes, of.meshes, of.materials, of.cameras, of.lights); }
};

// What the program is to do.
struct FileRequest {
  std::string path;      // to read, or to write
  std::string loader;    // the extension, when it reads
  std::string exporter;  // what the library calls the format, when it writes
  int32_t seconds = 0;   // of work, after which it ends
  FileScene scene;       // to write

  static auto Fields(auto& of) { return std::tie(of.path, of.loader, of.exporter, of.seconds, of.scene); }
};

// What it answers: any number of kAnswerProgress, then one of the others.
enum FileAnswer : int32_t {
  kAnswerProgress,  // a double
  kAnswerFault,     // a text
  kAnswerScene,     // a packed scene
  kAnswerDone
};

struct FileAnswerHead {
  int32_t answer;
  int32_t reserved;
  uint64_t bytes;  // that follow
};

std::string Pack(const FileScene& scene);
std::string Pack(const FileRequest& request);

// Throw std::runtime_error for bytes that are none.
FileScene UnpackScene(std::string_view bytes);
FileRequest UnpackRequest(std::string_view bytes);

}  // namespace host

#endif
