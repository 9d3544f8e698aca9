// A scene as files hold it: right-handed, Y up, the front of a face where its corners turn to the left, texture
// coordinates from the picture's bottom, numbers in single precision. The host and the program that reads and
// writes files hand it to one another.
#ifndef HOST_FILES_SCENE_DATA_H
#define HOST_FILES_SCENE_DATA_H

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "kelvar.framework/source/tables/t_values.h"

namespace host {

// Items that lie in a vector of its own, or where others keep them.
template <class Item>
class Rows {
 public:
  Rows() = default;
  Rows(std::vector<Item> items) : own_(std::move(items)), items_(own_) {}
  Rows(std::initializer_list<Item> items) : Rows(std::vector<Item>(items)) {}
  explicit Rows(std::span<const Item> items) : items_(items) {}
  Rows(const Rows& other) : Rows(std::vector<Item>(other.begin(), other.end())) {}
  Rows(Rows&& other) noexcept = default;  // what a vector holds stays in its place
  Rows& operator=(Rows other) noexcept {
    own_.swap(other.own_);
    items_ = other.items_;
    return *this;
  }

  size_t size() const { return items_.size(); }
  bool empty() const { return items_.empty(); }
  const Item* data() const { return items_.data(); }
  const Item* begin() const { return items_.data(); }
  const Item* end() const { return items_.data() + items_.size(); }
  const Item& operator[](size_t at) const { return items_[at]; }

 private:
  std::vector<Item> own_;
  std::span<const Item> items_;
};

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
  Rows<Vector32> points;
  Rows<Vector32> normals, uvw;  // one a point, or empty
  Rows<ColorA32> colors;
  Rows<uint32_t> sizes;  // how many corners each face has; empty: faceSize each
  uint32_t faceSize = 3;
  int32_t isInOrder = 0;   // each point is a corner once, in order: there are no others
  Rows<uint32_t> corners;  // points

  size_t CornerCount() const { return isInOrder ? points.size() : corners.size(); }
  size_t FaceCount() const { return sizes.empty() ? CornerCount() / faceSize : sizes.size(); }

  static auto Fields(auto& of) {
    return std::tie(of.name, of.material, of.points, of.normals, of.uvw, of.colors, of.sizes, of.faceSize,
                    of.isInOrder, of.corners);
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
  std::shared_ptr<const void> memory;  // where the rows are that have no vector of their own

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
  kAnswerScene,     // nothing: so many bytes of a packed scene are in the file that is its standard output
  kAnswerDone
};

struct FileAnswerHead {
  int32_t answer;
  int32_t reserved;
  uint64_t bytes;  // that follow, or of the scene
};

// Takes bytes as they come.
struct ByteSink {
  virtual void Take(const void* bytes, size_t size) = 0;

 protected:
  ~ByteSink() = default;
};

struct ByteText final : ByteSink {
  void Take(const void* bytes, size_t size) override { text.append(static_cast<const char*>(bytes), size); }
  std::string text;
};

void Pack(const FileScene& scene, ByteSink& sink);
void Pack(const FileRequest& request, ByteSink& sink);

// Rows stay in the bytes, which begin as a double may. Both throw std::runtime_error for bytes that are none.
FileScene UnpackScene(std::string_view bytes);
FileRequest UnpackRequest(std::string_view bytes);

}  // namespace host

#endif
