#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <set>

#include "boundary/host.h"
#include "files/files.h"
#include "files/scene_check.h"
#include "files/scene_ids.h"
#include "files/scene_mesh.h"
#include "files/scene_names.h"
#include "files/scene_worker.h"
#include "kelvar/matrix.h"
#include "scene/kinds.h"
#include "scene/tree.h"
#include "tables/utf8.h"

namespace host {
namespace fs = std::filesystem;
namespace {

constexpr int32_t kSeconds = 20;  // of work of the reader, and one more for each MiB

Vector PlaceOf(const float (&v)[3]) { return {v[0], v[1], Mirrored(v[2])}; }
Vector PlaceOf(const Vector32& v) { return {v.x, v.y, Mirrored(v.z)}; }

// With the third axis the other way round on both sides.
Matrix MatrixOf(const Matrix32& m) {
  const Vector third = PlaceOf(m.v3);
  return {
      PlaceOf(m.off), PlaceOf(m.v1), PlaceOf(m.v2), {Mirrored(third.x), Mirrored(third.y), Mirrored(third.z)}};
}

// Where a camera or light looks along its third axis, in the system of its node.
Matrix MatrixOf(const FileView& view) {
  Vector front = kelvar::Normalized(PlaceOf(view.direction));
  if (kelvar::LengthSquared(front) == 0) front = {0, 0, 1};
  Vector side = kelvar::Cross(PlaceOf(view.up), front);
  if (kelvar::Length(side) < 1e-6) side = kelvar::Cross(Vector{0, 1, 0}, front);
  if (kelvar::Length(side) < 1e-6) side = {1, 0, 0};
  side = kelvar::Normalized(side);
  return {PlaceOf(view.position), side, kelvar::Cross(front, side), front};
}

std::string Clean(std::string_view text) {
  std::string clean = ReplaceIllFormedUtf8(text);
  std::erase(clean, '\0');
  return clean;
}

void Link(BaseContainer& data, int32_t id, Linkable& goal) {
  HostGeData link{};
  link.type = HOST_DATA_LINK;
  goal.Link(link.value.link);
  Put(data, id, Value::Adopt(link));
}

template <class Node>
Node& Made(int32_t type) {
  auto* made = As<Node>(MakeElement(type));
  if (!made) throw std::runtime_error(fmt::format("the host has no elements of the type {}", type));
  return *made;
}

class Importer {
 public:
  Importer(const FileScene& scene, const fs::path& file, Progress* progress)
      : scene_(scene), folder_(file.parent_path()), stem_(Clean(file.stem().native())), progress_(progress) {
    std::error_code error;
    const fs::path goal = fs::canonical(file, error);
    goalFolder_ = error ? folder_ : goal.parent_path();
  }

  void AddMaterials(BaseDocument& document) {
    for (const FileMaterial& material : scene_.materials) {
      auto& made = Made<BaseMaterial>(id::kMaterial);
      Append(made, *Branch(document, kTypeMaterial));
      materials_.push_back(&made);
      SetMaterial(made, material);
    }
  }

  void AddObjects(BaseDocument& document) {
    std::vector<GeListNode*> objects;
    TakenNames names(scene_.nodes);
    size_t done = 0;
    for (const FileNode& node : scene_.nodes) {
      Report(double(done++) / double(scene_.nodes.size()));
      GeListNode& parent = node.parent < 0 ? *Branch(document, kTypeObject) : *objects[size_t(node.parent)];
      BaseObject& object = node.meshes.empty() ? Made<BaseObject>(id::kNull) : Mesh(node, parent);
      if (node.meshes.empty()) Append(object, parent);
      object.name = node.name.empty() ? names.Take(stem_) : Clean(node.name);
      object.place.SetLocal(MatrixOf(node.matrix));
      objects.push_back(&object);
    }
    std::vector<bool> hasChildren(objects.size());
    for (const FileNode& node : scene_.nodes)
      if (node.parent >= 0) hasChildren[size_t(node.parent)] = true;
    const auto add = [&](const auto& item, int32_t type, auto set) {
      BaseObject& at = static_cast<BaseObject&>(*objects[size_t(item.node)]);
      auto& made = Made<BaseObject>(type);
      made.name = at.name;
      Append(made, at);
      made.place.SetLocal(MatrixOf(item.view));
      (this->*set)(made, item);
      // A node that is nothing else becomes it.
      const bool isFree = !hasChildren[size_t(item.node)] && at.type.id == id::kNull && at.down == &made &&
                          at.downLast == &made;
      if (!isFree) return;
      made.place.SetLocal(kelvar::Product(at.place.Local(), made.place.Local()));
      Place(made, *ParentOf(at), &at);
      objects[size_t(item.node)] = &made;
      DestroyNow(&at);
    };
    for (const FileCamera& camera : scene_.cameras) add(camera, id::kCamera, &Importer::SetCamera);
    for (const FileLight& light : scene_.lights) add(light, id::kLight, &Importer::SetLight);
  }

 private:
  void Report(double fraction) const {
    if (progress_ && !progress_->Report(fraction, "building objects")) throw Stopped("stopped");
  }

  BaseObject& Mesh(const FileNode& node, GeListNode& parent) {
    std::vector<int32_t> first;
    PolygonObject& object = *MakeObject(scene_, node, first);
    Append(object, parent);
    if (materials_.empty()) return object;

    std::vector<int32_t> used;  // each material once
    for (const int32_t mesh : node.meshes)
      if (const int32_t one = scene_.meshes[size_t(mesh)].material; std::ranges::find(used, one) == used.end())
        used.push_back(one);
    std::set<std::string> names;
    for (const int32_t material : used) {
      if (material < 0) continue;
      std::string restriction;
      if (used.size() > 1) {
        restriction = materials_[size_t(material)]->name;
        for (int i = 2; !names.insert(restriction).second; ++i)
          restriction = fmt::format("{} {}", std::string_view(materials_[size_t(material)]->name), i);
        auto& selection = Made<SelectionTag>(id::kPolygonSelection);
        Append(selection, *Branch(object, kTypeTag));
        selection.name = restriction;
        selection.selection = BaseSelect(RunsOf(node, material, first));
      }
      auto& texture = Made<BaseTag>(id::kTexture);
      Append(texture, *Branch(object, kTypeTag));
      Link(texture.data, id::kTextureMaterial, *materials_[size_t(material)]);
      if (!restriction.empty()) Put(texture.data, id::kTextureRestriction, Value::Text(restriction));
    }
    return object;
  }

  std::vector<Run> RunsOf(const FileNode& node, int32_t material, const std::vector<int32_t>& first) const {
    std::vector<Run> runs;
    for (size_t i = 0; i < node.meshes.size(); ++i) {
      if (scene_.meshes[size_t(node.meshes[i])].material != material || first[i] == first[i + 1]) continue;
      if (!runs.empty() && runs.back().last + 1 == first[i])
        runs.back().last = first[i + 1] - 1;
      else
        runs.push_back({first[i], first[i + 1] - 1});
    }
    return runs;
  }

  void SetMaterial(BaseMaterial& made, const FileMaterial& material) {
    made.name = Clean(material.name);
    BaseContainer& data = made.data;
    const auto finite = [](float number, double otherwise) {
      return std::isfinite(number) ? double(number) : otherwise;
    };
    const auto color = [&](int32_t number, const Vector32& color) {
      const Vector clean = {std::max(0.0, finite(color.x, 0)), std::max(0.0, finite(color.y, 0)),
                            std::max(0.0, finite(color.z, 0))};
      Put(data, number, Value::Of(clean));
      return clean.x + clean.y + clean.z > 0;
    };
    color(id::kMaterialColor, material.color);
    const bool glows = color(id::kMaterialLuminanceColor, material.emissive);
    if (glows || !material.textures[kTextureLuminance].empty())
      Put(data, id::kMaterialUseLuminance, Value::Int32(1));
    const bool shines = color(id::kMaterialSpecularColor, material.specular);
    Put(data, id::kMaterialUseSpecular, Value::Int32(shines || !material.textures[kTextureSpecular].empty()));
    if (material.roughness >= 0)
      Put(data, id::kMaterialSpecularWidth, Value::Float(std::min(finite(material.roughness, 0), 1.0)));
    const double opacity = std::clamp(finite(material.opacity, 1), 0.0, 1.0);
    if (opacity < 1) {
      Put(data, id::kMaterialUseTransparency, Value::Int32(1));
      Put(data, id::kMaterialTransparencyBrightness, Value::Float(1 - opacity));
    }
    Put(data, id::kMaterialRefraction, Value::Float(std::clamp(finite(material.refraction, 1), 0.25, 4.0)));
    if (const double metallic = std::clamp(finite(material.metallic, 0), 0.0, 1.0); metallic > 0) {
      Put(data, id::kMaterialUseReflection, Value::Int32(1));
      Put(data, id::kMaterialReflectionBrightness, Value::Float(metallic));
    }
    for (int32_t slot = 0; slot < kTextureSlots; ++slot)
      SetTexture(made, id::kMaterialSlots[size_t(slot)], material, size_t(slot));
  }

  void SetTexture(BaseMaterial& made, const id::MaterialSlot& to, const FileMaterial& material, size_t slot) {
    if (material.textures[slot].empty()) return;
    auto& shader = Made<BaseShader>(id::kBitmap);
    Append(shader, *Branch(made, kTypeShader));
    HostGeData file{};
    file.type = HOST_DATA_FILENAME;
    const fs::path path =
        material.embedded[slot] ? fs::path(material.textures[slot]) : PathOf(material.textures[slot]);
    file.value.filename = MakeFilename(path.native());
    Put(shader.data, id::kBitmapFile, Value::Adopt(file));
    Link(made.data, to.shader, shader);
    Put(made.data, to.use, Value::Int32(1));
  }

  // In the file's folder, or that of the file that it is a link to, also where the file names a place on
  // another machine.
  fs::path PathOf(std::string text) const {
    std::erase(text, '\0');
    std::string plain = text;  // a backslash may be a name's own
    std::ranges::replace(text, '\\', '/');
    if (text.starts_with("file://"))
      for (std::string* one : {&text, &plain}) one->erase(0, 7);
    std::error_code error;
    for (const fs::path& folder : {folder_, goalFolder_})
      for (const fs::path& path : {(folder / plain).lexically_normal(), (folder / text).lexically_normal(),
                                   folder / fs::path(text).filename()})
        if (fs::exists(path, error)) return path;
    return (folder_ / text).lexically_normal();
  }

  void SetCamera(BaseObject& made, const FileCamera& camera) {
    if (camera.isParallel) Put(made.data, id::kCameraProjection, Value::Int32(1));
    if (camera.angle > 0.01f && camera.angle < 3.1f)
      Put(made.data, id::kCameraFocus, Value::Float(id::kAperture / 2 / std::tan(double(camera.angle) / 2)));
    if (camera.nearest >= 0 && std::isfinite(camera.nearest))
      Put(made.data, id::kCameraNear, Value::Float(camera.nearest));
    if (camera.farthest > 0 && std::isfinite(camera.farthest))
      Put(made.data, id::kCameraFar, Value::Float(camera.farthest));
  }

  // The brightness is what the colour has above 1.
  void SetLight(BaseObject& made, const FileLight& light) {
    Put(made.data, id::kLightType, Value::Int32(std::clamp<int32_t>(light.type, kLightOmni, kLightArea)));
    Vector color = {light.color.x, light.color.y, light.color.z};
    const double brightness = std::max({1.0, color.x, color.y, color.z});
    if (std::isfinite(brightness) && std::isfinite(color.x + color.y + color.z)) {
      Put(made.data, id::kLightColor, Value::Of(color * (1 / brightness)));
      Put(made.data, id::kLightBrightness, Value::Float(brightness));
    }
    if (light.type != kLightSpot) return;
    if (light.inner >= 0 && light.inner <= 3) Put(made.data, id::kLightInner, Value::Float(light.inner));
    if (light.outer >= 0 && light.outer <= 3) Put(made.data, id::kLightOuter, Value::Float(light.outer));
  }

  const FileScene& scene_;
  const fs::path folder_;
  fs::path goalFolder_;
  const std::string stem_;
  Progress* const progress_;
  std::vector<BaseMaterial*> materials_;
};

struct Destroy {
  void operator()(BaseDocument* document) const { DestroyNow(document); }
};

}  // namespace

BaseDocument* MakeDocument(const FileScene& scene, const fs::path& file, int32_t loadFlags,
                           Progress* progress) {
  std::unique_ptr<BaseDocument, Destroy> document(
      static_cast<BaseDocument*>(NewNode(*FindType(kTypeDocument))));
  document->name = Clean(file.filename().native());
  Importer importer(scene, file, progress);
  if (loadFlags & kFilterMaterials) importer.AddMaterials(*document);
  if (loadFlags & kFilterObjects) importer.AddObjects(*document);
  return document.release();
}

BaseDocument* ImportScene(const fs::path& file, int32_t loadFlags, Progress* progress) {
  try {
    const SceneFormat& format = CheckFile(file);
    const fs::path whole = fs::absolute(file);
    const FileRequest request{.path = whole.native(), .loader = format.extension, .seconds = kSeconds};
    const FileScene scene = RunWorker(request, progress, "reading");
    CheckScene(scene);
    return MakeDocument(scene, whole, loadFlags, progress);
  } catch (const Stopped&) {
    throw;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    throw FaultOf(file, Clean(ReasonOf(error)));
  }
}

}  // namespace host
