#include <fcntl.h>
#include <fmt/format.h>
#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <unordered_map>
#include <unordered_set>

#include "boundary/host.h"
#include "evaluate/evaluate.h"
#include "files/files.h"
#include "files/scene_check.h"
#include "files/scene_ids.h"
#include "files/scene_mesh.h"
#include "files/scene_names.h"
#include "files/scene_worker.h"
#include "kelvar/matrix.h"
#include "scene/kinds.h"
#include "scene/tree.h"

namespace host {
namespace fs = std::filesystem;
namespace {

constexpr int32_t kSeconds = 600;  // of work of the writer, and one more for each MiB

[[noreturn]] void Refuse(const std::string& reason) { throw std::runtime_error(reason); }
[[noreturn]] void RefuseSystem(int error) { Refuse(std::strerror(error)); }

Matrix32 MatrixOf(const Matrix& m) {
  const auto finite = [](const Vector& v) { return std::isfinite(float(v.x + v.y + v.z)); };
  if (!finite(m.off) || !finite(m.v1) || !finite(m.v2) || !finite(m.v3))
    Refuse("an object stands at a place that no file can hold");
  const auto mirrored = [](const Vector& v, float(&to)[3]) {
    to[0] = float(v.x), to[1] = float(v.y), to[2] = float(Mirrored(v.z));
  };
  Matrix32 made;
  mirrored(m.off, made.off);
  mirrored(m.v1, made.v1);
  mirrored(m.v2, made.v2);
  mirrored({Mirrored(m.v3.x), Mirrored(m.v3.y), Mirrored(m.v3.z)}, made.v3);
  return made;
}

// What an element says for a parameter.
double NumberOf(const BaseList2D& element, int32_t parameter, double otherwise = 0) {
  const HostGeData* value = container::FindData(&element.data, parameter);
  if (!value) return otherwise;
  if (value->type == HOST_DATA_FLOAT) return value->value.real;
  return value->type == HOST_DATA_INT32 || value->type == HOST_DATA_INT64 ? double(value->value.integer)
                                                                          : otherwise;
}

Vector32 ColorOf(const BaseList2D& element, int32_t parameter) {
  const HostGeData* value = container::FindData(&element.data, parameter);
  if (!value || value->type != HOST_DATA_VECTOR) return {};
  const Vector& color = value->value.vector;
  return {float(color.x), float(color.y), float(color.z)};
}

template <class Node>
const Node* LinkedOf(const BaseList2D& element, int32_t parameter) {
  const HostGeData* value = container::FindData(&element.data, parameter);
  if (!value || value->type != HOST_DATA_LINK) return nullptr;
  return dynamic_cast<const Node*>(static_cast<Linkable*>(link::GetLink(value->value.link)));
}

// A name as a line of a text file can have it.
std::string LineOf(std::string_view name) {
  std::string line(name);
  std::ranges::replace_if(
      line, [](char c) { return uint8_t(c) < ' ' || c == 127; }, '_');
  return line;
}

// One that readers keep: neither blank nor longer than their buffers, nor with blanks at its ends.
std::string NameOf(std::string_view name, const char* otherwise) {
  constexpr size_t kLongest = 255;
  std::string line = LineOf(name);
  line.erase(0, line.find_first_not_of(' '));
  line.resize(FirstOf(line, kLongest).size());
  line.erase(line.find_last_not_of(' ') + 1);
  return line.empty() ? otherwise : line;
}

// In files names are what tells objects apart, and materials. The first one of a name keeps it, unless that is
// the library's own.
template <class Item>
void TellApart(std::vector<Item>& items, std::unordered_set<std::string> seen = {}) {
  TakenNames names(items);
  for (Item& item : items)
    if (!seen.insert(item.name).second) item.name = names.Take(item.name);
}

struct EndObject {
  void operator()(BaseObject* object) const { DestroyNow(object); }
};

class Builder {
 public:
  Builder(const SceneFormat& format, const fs::path& folder, Progress* progress)
      : format_(format), folder_(folder), progress_(progress) {
    const std::string_view extension = format.extension;
    style_.triangles = extension == "glb" || extension == "stl";
    style_.normals = extension == "obj";
    isFlat_ = extension == "obj" || extension == "ply" || extension == "stl";
  }

  FileScene Build(const BaseDocument& document) {
    const GeListHead* materials = FindBranch(document, kTypeMaterial);
    for (const GeListNode* node = materials ? materials->down : nullptr; node; node = node->next) {
      if (node->type.id != id::kMaterial) continue;
      numbers_.emplace(node, int32_t(scene_.materials.size()));
      AddMaterial(static_cast<const BaseMaterial&>(*node));
    }
    const GeListHead* objects = FindBranch(document, kTypeObject);
    for (const GeListNode* node = objects ? objects->down : nullptr; node; node = node->next) {
      const auto& root = static_cast<const BaseObject&>(*node);
      if (IsDeformer(root)) continue;
      const std::unique_ptr<BaseObject, EndObject> shape(NewShape(root, true));
      if (!shape) throw std::bad_alloc();
      AddNodes(*shape);
    }
    if (!std::strcmp(format_.extension, "obj")) EndLines();
    TellApart(scene_.materials, {"DefaultMaterial"});
    TellApart(scene_.nodes);
    for (const FileNode& node : scene_.nodes)
      for (const int32_t mesh : node.meshes) scene_.meshes[size_t(mesh)].name = node.name;
    if (!std::strcmp(format_.extension, "ply")) Even();
    return std::move(scene_);
  }

 private:
  void Report() const {
    if (progress_ && !progress_->Report(0, "writing")) throw Stopped("stopped");
  }

  void AddNodes(const BaseObject& root) {
    struct Pending {
      const GeListNode* node;
      int32_t parent;
      uint32_t depth;
      const BaseObject* textured;  // the nearest above that has a texture
      Matrix system;               // of what is above
    };
    std::vector<Pending> pending{{&root, -1, 1, nullptr, kIdentityMatrix}};
    while (!pending.empty()) {
      const auto [node, parent, depth, above, system] = pending.back();
      pending.pop_back();
      Report();
      if (node->next) pending.push_back({node->next, parent, depth, above, system});
      const auto& object = static_cast<const BaseObject&>(*node);
      const BaseObject* textured = HasTexture(object) ? &object : above;
      const auto number = isFlat_ ? -1 : int32_t(scene_.nodes.size());
      if (!isFlat_ && depth > kDeepest) Refuse("its hierarchy is too deep");
      const Matrix matrix = isFlat_ ? kelvar::Product(system, object.place.Local()) : object.place.Local();
      AddNode(object, parent, textured, matrix);
      if (object.down) pending.push_back({object.down, number, depth + 1, textured, isFlat_ ? matrix : system});
    }
  }

  // There a line goes on behind a backslash at its end.
  void EndLines() {
    const auto end = [](auto& items) {
      for (auto& item : items)
        if (item.name.ends_with('\\')) item.name.back() = '_';
    };
    end(scene_.materials);
    end(scene_.nodes);
  }

  template <class Item>
  static std::vector<Item> Zeros(const Rows<Item>&, size_t count) {
    return std::vector<Item>(count);
  }

  // A file of one mesh has what any of them has, and no pictures: it would show one of them all over.
  void Even() {
    for (FileMaterial& material : scene_.materials) material.textures.assign(kTextureSlots, {});
    const auto fill = [&](auto member) {
      const auto has = [&](const FileMesh& mesh) { return !(mesh.*member).empty(); };
      if (std::ranges::any_of(scene_.meshes, has))
        for (FileMesh& mesh : scene_.meshes)
          if ((mesh.*member).empty()) mesh.*member = Zeros(mesh.*member, mesh.points.size());
    };
    fill(&FileMesh::normals);
    fill(&FileMesh::uvw);
    fill(&FileMesh::colors);
  }

  void AddNode(const BaseObject& object, int32_t parent, const BaseObject* textured, const Matrix& matrix) {
    const auto number = int32_t(scene_.nodes.size());
    FileNode& node = scene_.nodes.emplace_back();
    node.parent = parent;
    node.name = NameOf(object.name, "Object");
    node.matrix = MatrixOf(matrix);
    if (object.type.id == id::kCamera) {
      const double aperture = std::max(1.0, NumberOf(object, id::kCameraSensor, id::kAperture));
      const double focus = std::max(1.0, NumberOf(object, id::kCameraFocus, id::kAperture));
      scene_.cameras.push_back({.node = number,
                                .angle = float(2 * std::atan(aperture / 2 / focus)),
                                .nearest = float(std::max(0.001, NumberOf(object, id::kCameraNear, 0.1))),
                                .farthest = float(NumberOf(object, id::kCameraFar, 10000))});
    } else if (object.type.id == id::kLight) {
      const Vector32 color = ColorOf(object, id::kLightColor);
      const auto brightness = float(NumberOf(object, id::kLightBrightness, 1));
      scene_.lights.push_back({.node = number,
                               .type = int32_t(NumberOf(object, id::kLightType)),
                               .color = {color.x * brightness, color.y * brightness, color.z * brightness},
                               .inner = float(NumberOf(object, id::kLightInner)),
                               .outer = float(NumberOf(object, id::kLightOuter))});
    } else if (const auto* polygons = As<PolygonObject>(&object)) {
      std::vector<int32_t> materials;
      if (textured) materials = MaterialsOf(*polygons, *textured);
      for (FileMesh& mesh : MakeMeshes(*polygons, materials, style_, [this] { Report(); })) {
        node.meshes.push_back(int32_t(scene_.meshes.size()));
        scene_.meshes.push_back(std::move(mesh));
      }
    }
  }

  static bool HasTexture(const BaseObject& object) {
    const GeListHead* tags = FindBranch(object, kTypeTag);
    for (const GeListNode* tag = tags ? tags->down : nullptr; tag; tag = tag->next)
      if (tag->type.id == id::kTexture) return true;
    return false;
  }

  static const BaseSelect* FindSelection(const BaseObject& object, std::string_view name) {
    const GeListHead* tags = FindBranch(object, kTypeTag);
    for (const GeListNode* tag = tags ? tags->down : nullptr; tag; tag = tag->next)
      if (tag->type.id == id::kPolygonSelection)
        if (const auto* selection = As<SelectionTag>(tag); selection && selection->name == name)
          return &selection->selection;
    return nullptr;
  }

  // Of each polygon; a later tag lies above an earlier one.
  std::vector<int32_t> MaterialsOf(const PolygonObject& object, const BaseObject& textured) const {
    const int32_t count = object.polygons.Count();
    std::vector<int32_t> materials(size_t(count), -1);
    for (const GeListNode* node = FindBranch(textured, kTypeTag)->down; node; node = node->next) {
      if (node->type.id != id::kTexture) continue;
      const auto& tag = static_cast<const BaseTag&>(*node);
      const auto material = numbers_.find(LinkedOf<GeListNode>(tag, id::kTextureMaterial));
      if (material == numbers_.end()) continue;
      const HostGeData* restriction = container::FindData(&tag.data, id::kTextureRestriction);
      const std::string_view name =
          restriction && restriction->type == HOST_DATA_STRING ? View(&restriction->value.string) : "";
      if (name.empty()) {
        std::ranges::fill(materials, material->second);
      } else if (const BaseSelect* selection = FindSelection(object, name)) {
        for (const Run& run : selection->runs)
          for (int32_t i = std::max(run.first, 0); i <= std::min(run.last, count - 1); ++i)
            materials[size_t(i)] = material->second;
      }
    }
    return materials;
  }

  void AddMaterial(const BaseMaterial& material) {
    FileMaterial& made = scene_.materials.emplace_back();
    const auto uses = [&](int32_t parameter) { return NumberOf(material, parameter) != 0; };
    made.name = NameOf(material.name, "Material");
    made.color = ColorOf(material, id::kMaterialColor);
    if (uses(id::kMaterialUseLuminance)) made.emissive = ColorOf(material, id::kMaterialLuminanceColor);
    if (uses(id::kMaterialUseSpecular)) made.specular = ColorOf(material, id::kMaterialSpecularColor);
    made.roughness = float(NumberOf(material, id::kMaterialSpecularWidth));
    if (uses(id::kMaterialUseTransparency))
      made.opacity = float(1 - std::clamp(NumberOf(material, id::kMaterialTransparencyBrightness), 0.0, 1.0));
    made.refraction = float(NumberOf(material, id::kMaterialRefraction, 1));
    if (uses(id::kMaterialUseReflection))
      made.metallic = float(std::clamp(NumberOf(material, id::kMaterialReflectionBrightness), 0.0, 1.0));
    for (size_t slot = 0; slot < kTextureSlots; ++slot) {
      const auto* shader = LinkedOf<BaseShader>(material, id::kMaterialSlots[slot].shader);
      if (!shader || shader->type.id != id::kBitmap || !uses(id::kMaterialSlots[slot].use)) continue;
      const HostGeData* file = container::FindData(&shader->data, id::kBitmapFile);
      if (!file || file->type != HOST_DATA_FILENAME) continue;
      const fs::path path = View(&file->value.filename);
      std::string& texture = made.textures[slot];
      texture = LineOf(path.is_absolute() ? path.lexically_proximate(folder_).native() : path.native());
      // These would be a picture of the scene itself or within its file, an option, or left out.
      if (texture.find_first_of("*- ") == 0 || texture.starts_with("data:")) texture.insert(0, "./");
    }
  }

  const SceneFormat& format_;
  const fs::path folder_;
  Progress* const progress_;
  MeshStyle style_;
  bool isFlat_;  // the format has no hierarchy
  FileScene scene_;
  std::unordered_map<const GeListNode*, int32_t> numbers_;
};

// A folder beside the file, which goes with all that is left in it.
class NewFiles {
 public:
  explicit NewFiles(const fs::path& file) : file_(file) {
    std::string pattern = (file.parent_path() / ".save-XXXXXX").native();
    if (!mkdtemp(pattern.data())) RefuseSystem(errno);
    folder_ = pattern;
  }
  NewFiles(const NewFiles&) = delete;
  NewFiles& operator=(const NewFiles&) = delete;
  ~NewFiles() {
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
  }

  // To write. The library calls an OBJ's materials by what stands ahead of the last dot, which is the folder's
  // where the name has none, with .mtl behind it.
  fs::path File() const {
    const fs::path file = folder_ / file_.filename();
    const bool isTaken = !file.has_extension() || !strcasecmp(file.extension().c_str(), ".mtl");
    return isTaken ? fs::path(file).concat(".file") : file;
  }

  // Their contents are on the disk; the file itself comes last, because it names the others.
  void Publish() const {
    fs::rename(File(), folder_ / file_.filename());
    std::vector<fs::path> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder_))
      if (entry.path().filename() != file_.filename()) names.push_back(entry.path().filename());
    names.push_back(file_.filename());
    fs::create_directory(Old());
    for (size_t i = 0; i < names.size(); ++i) {
      KeepMode(names[i]);
      if (KeepOld(names[i]) && !rename((folder_ / names[i]).c_str(), Place(names[i]).c_str())) continue;
      const int error = errno;
      for (size_t k = 0; k < i; ++k) BringBack(names[k]);
      RefuseSystem(error);
    }
    const int folder = open(file_.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0) return;
    fsync(folder);
    close(folder);
  }

 private:
  fs::path Place(const fs::path& name) const { return file_.parent_path() / name; }
  fs::path Old() const { return folder_ / "old"; }

  // Who may read and write a file that was there stays so.
  void KeepMode(const fs::path& name) const {
    std::error_code error;
    const fs::file_status status = fs::status(Place(name), error);
    if (!error && fs::is_regular_file(status)) fs::permissions(folder_ / name, status.permissions(), error);
  }

  // What another file of the same save may fail behind. False, with errno, when it can't be kept.
  bool KeepOld(const fs::path& name) const {
    std::error_code error;
    if (name == file_.filename() || !fs::is_regular_file(Place(name), error)) return true;
    fs::create_hard_link(Place(name), Old() / name, error);
    if (error) fs::copy_file(Place(name), Old() / name, error);
    errno = error.value();
    return !error;
  }
  void BringBack(const fs::path& name) const {
    std::error_code ignored;
    if (fs::exists(Old() / name, ignored))
      fs::rename(Old() / name, Place(name), ignored);
    else
      fs::remove(Place(name), ignored);
  }

  fs::path file_, folder_;
};

}  // namespace

void ExportScene(const BaseDocument& document, const fs::path& to, int32_t formatId, int32_t,
                 Progress* progress) {
  try {
    const SceneFormat* format = FindFormat(formatId);
    if (!format || !format->exports) Refuse(fmt::format("there is no format {} to save in", formatId));
    CheckName(to);
    std::error_code error;
    const fs::path file = FollowLinks(to, error);
    if (error) Refuse(error.message());
    if (fs::exists(file) && !fs::is_regular_file(file)) Refuse("there is something else of that name");
    if (fs::exists(file) && access(file.c_str(), W_OK)) RefuseSystem(errno);
    FileScene scene = Builder(*format, file.parent_path(), progress).Build(document);
    if (scene.meshes.empty()) Refuse("there are no polygons to save");
    const NewFiles files(file);
    const FileRequest request{.path = files.File().native(),
                              .exporter = format->assimpId,
                              .seconds = kSeconds,
                              .scene = std::move(scene)};
    RunWorker(request, progress, "writing");
    if (progress && !progress->Report(1, "writing")) throw Stopped("stopped");
    files.Publish();
  } catch (const Stopped&) {
    throw;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    throw FaultOf(to, ReasonOf(error));
  }
}

}  // namespace host
