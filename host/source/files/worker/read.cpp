#include <assimp/config.h>
#include <assimp/importerdesc.h>
#include <assimp/material.h>
#include <assimp/scene.h>

#include <algorithm>
#include <assimp/Importer.hpp>
#include <cmath>
#include <cstring>
#include <memory>
#include <span>
#include <stdexcept>
#include <unordered_map>

#include "files/worker/streams.h"
#include "files/worker/worker.h"

namespace host {
namespace {

std::string TextOf(const aiString& text) {
  return {text.data, std::min<size_t>(text.length, sizeof text.data - 1)};
}

Vector32 VectorOf(const aiVector3D& vector) { return {vector.x, vector.y, vector.z}; }

// Vectors and colours lie as ours do.
template <class Item, class Theirs>
Rows<Item> RowsOf(const Theirs* items, size_t count) {
  static_assert(sizeof(Item) == sizeof(Theirs));
  return Rows<Item>(std::span(reinterpret_cast<const Item*>(items), items ? count : 0));
}

void ReadFaces(std::span<const aiFace> faces, FileMesh& made) {
  size_t corners = 0;
  const unsigned first = faces.empty() ? 3 : faces.front().mNumIndices;
  bool areAlike = first > 0, isInOrder = true;
  for (const aiFace& face : faces) {
    areAlike = areAlike && face.mNumIndices == first;
    for (unsigned i = 0; isInOrder && i < face.mNumIndices; ++i) isInOrder = face.mIndices[i] == corners + i;
    corners += face.mNumIndices;
  }
  made.isInOrder = isInOrder && corners == made.points.size();
  if (areAlike) {
    made.faceSize = first;
  } else {
    std::vector<uint32_t> sizes(faces.size());
    std::ranges::transform(faces, sizes.begin(), &aiFace::mNumIndices);
    made.sizes = std::move(sizes);
  }
  if (made.isInOrder) return;
  std::vector<uint32_t> flat;
  flat.reserve(corners);
  for (const aiFace& face : faces) flat.insert(flat.end(), face.mIndices, face.mIndices + face.mNumIndices);
  made.corners = std::move(flat);
}

FileMesh ReadMesh(const aiMesh& mesh) {
  FileMesh made;
  made.name = TextOf(mesh.mName);
  made.points = RowsOf<Vector32>(mesh.mVertices, mesh.mNumVertices);
  made.normals = RowsOf<Vector32>(mesh.mNormals, mesh.mNumVertices);
  made.uvw = RowsOf<Vector32>(mesh.mTextureCoords[0], mesh.mNumVertices);
  made.colors = RowsOf<ColorA32>(mesh.mColors[0], mesh.mNumVertices);
  ReadFaces({mesh.mFaces, mesh.mNumFaces}, made);
  return made;
}

// The first of the types that has a picture.
void ReadTexture(const aiScene& scene, const aiMaterial& material, std::initializer_list<aiTextureType> types,
                 TextureSlot slot, FileMaterial& made) {
  for (const aiTextureType type : types) {
    aiString path;
    if (material.GetTexture(type, 0, &path) != aiReturn_SUCCESS || path.length == 0) continue;
    made.textures[slot] = TextOf(path);
    if (const aiTexture* embedded = scene.GetEmbeddedTexture(path.C_Str())) {
      made.embedded[slot] = 1;
      if (embedded->mFilename.length > 0)
        made.textures[slot] = TextOf(embedded->mFilename);
      else
        made.textures[slot].replace(0, 1, "picture ");  // "*0" is the first
    }
    return;
  }
}

// These name pictures by URIs that the library hands on.
bool HasUris(std::string_view loader) { return loader == "gltf" || loader == "glb"; }

Vector32 ReadColor(const aiMaterial& material, const char* key, Vector32 otherwise) {
  aiColor3D color;
  if (material.Get(key, 0, 0, color) != aiReturn_SUCCESS) return otherwise;
  return {color.r, color.g, color.b};
}

FileMaterial ReadMaterial(const aiScene& scene, const aiMaterial& material) {
  FileMaterial made;
  aiString name;
  if (material.Get(AI_MATKEY_NAME, name) == aiReturn_SUCCESS) made.name = TextOf(name);
  made.color = ReadColor(material, "$clr.base", ReadColor(material, "$clr.diffuse", made.color));
  made.specular = ReadColor(material, "$clr.specular", made.specular);
  made.emissive = ReadColor(material, "$clr.emissive", made.emissive);
  material.Get(AI_MATKEY_OPACITY, made.opacity);
  material.Get(AI_MATKEY_REFRACTI, made.refraction);
  material.Get(AI_MATKEY_METALLIC_FACTOR, made.metallic);
  float shininess = 0;
  // The exponent of a highlight is as wide as that roughness.
  if (material.Get(AI_MATKEY_ROUGHNESS_FACTOR, made.roughness) != aiReturn_SUCCESS &&
      material.Get(AI_MATKEY_SHININESS, shininess) == aiReturn_SUCCESS && shininess >= 0)
    made.roughness = std::sqrt(2 / (shininess + 2));
  ReadTexture(scene, material, {aiTextureType_BASE_COLOR, aiTextureType_DIFFUSE}, kTextureColor, made);
  ReadTexture(scene, material, {aiTextureType_EMISSIVE, aiTextureType_EMISSION_COLOR}, kTextureLuminance, made);
  ReadTexture(scene, material, {aiTextureType_SPECULAR}, kTextureSpecular, made);
  ReadTexture(scene, material, {aiTextureType_OPACITY}, kTextureAlpha, made);
  ReadTexture(scene, material, {aiTextureType_HEIGHT}, kTextureBump, made);
  ReadTexture(scene, material, {aiTextureType_NORMALS, aiTextureType_NORMAL_CAMERA}, kTextureNormal, made);
  return made;
}

// What the library makes up for a mesh that has no material.
bool IsMadeUp(const aiMaterial& material, bool withoutName) {
  aiString name;
  material.Get(AI_MATKEY_NAME, name);
  if (!(withoutName && name.length == 0) && std::strcmp(name.C_Str(), AI_DEFAULT_MATERIAL_NAME) != 0)
    return false;
  for (unsigned type = 1; type <= AI_TEXTURE_TYPE_MAX; ++type)
    if (material.GetTextureCount(aiTextureType(type)) > 0) return false;
  return true;
}

Matrix32 MatrixOf(const aiMatrix4x4& matrix) {
  return {{matrix.a4, matrix.b4, matrix.c4},
          {matrix.a1, matrix.b1, matrix.c1},
          {matrix.a2, matrix.b2, matrix.c2},
          {matrix.a3, matrix.b3, matrix.c3}};
}

// Whether the root is one that the library put above those of the file.
bool IsRootMadeUp(const aiNode& root, const std::string& loader) {
  if (root.mNumMeshes > 0) return false;
  return (loader != "glb" && loader != "gltf") || std::strcmp(root.mName.C_Str(), "ROOT") == 0;
}

bool IsNumbered(std::string_view name, std::string_view before, std::string_view behind) {
  if (!name.starts_with(before) || !name.ends_with(behind) || name.size() <= before.size() + behind.size())
    return false;
  name.remove_prefix(before.size());
  name.remove_suffix(behind.size());
  return name.find_first_not_of("0123456789") == name.npos;
}

// What the library calls a node that has no name; an OBJ's root, which holds what is in no object, as the file.
bool IsNameMadeUp(std::string_view name, bool isRoot, const std::string& loader) {
  if (loader == "obj") return isRoot || name == "defaultobject";
  if (loader == "dae") return IsNumbered(name, "$ColladaAutoName$_", "");
  return (loader == "glb" || loader == "gltf") && IsNumbered(name, "nodes[", "]");
}

// What a made-up root says of the system of the file. In Collada it scales to metres too; numbers stay as they
// are.
aiMatrix4x4 SystemOf(aiMatrix4x4 matrix, const std::string& loader) {
  if (loader != "dae") return matrix;
  for (unsigned row = 0; row < 3; ++row)
    for (unsigned column = 0; column < 3; ++column) {
      float& number = matrix[row][column];
      number = float((number > 0) - (number < 0));
    }
  return matrix.Determinant() == 0 ? aiMatrix4x4() : matrix;
}

using NodeNumbers = std::unordered_map<std::string, int32_t>;

NodeNumbers ReadNodes(const aiScene& scene, const std::string& loader, FileScene& made) {
  struct Pending {
    const aiNode* node;
    int32_t parent;
    aiMatrix4x4 above;  // of a root that was left out
  };
  NodeNumbers numbers;
  std::vector<Pending> pending{{scene.mRootNode, -1, {}}};
  while (!pending.empty()) {
    const auto [node, parent, above] = pending.back();
    pending.pop_back();
    int32_t number = -1;
    aiMatrix4x4 below;
    if (node == scene.mRootNode && IsRootMadeUp(*node, loader)) {
      below = SystemOf(node->mTransformation, loader);
    } else {
      number = int32_t(made.nodes.size());
      FileNode& one = made.nodes.emplace_back();
      one.name = TextOf(node->mName);
      one.parent = parent;
      one.matrix = MatrixOf(above * node->mTransformation);
      one.meshes.assign(node->mMeshes, node->mMeshes + node->mNumMeshes);
      numbers.emplace(one.name, number);
      if (IsNameMadeUp(one.name, node == scene.mRootNode, loader)) one.name.clear();
    }
    for (unsigned i = node->mNumChildren; i-- > 0;) pending.push_back({node->mChildren[i], number, below});
  }
  return numbers;
}

void ReadCameras(const aiScene& scene, const NodeNumbers& numbers, FileScene& made) {
  for (unsigned i = 0; i < scene.mNumCameras; ++i) {
    const aiCamera& camera = *scene.mCameras[i];
    const auto node = numbers.find(TextOf(camera.mName));
    if (node == numbers.end()) continue;
    made.cameras.push_back(
        {.node = node->second,
         .view = {VectorOf(camera.mPosition), VectorOf(camera.mLookAt), VectorOf(camera.mUp)},
         .angle = camera.mHorizontalFOV,
         .nearest = camera.mClipPlaneNear,
         .farthest = camera.mClipPlaneFar,
         .isParallel = camera.mOrthographicWidth > 0});
  }
}

void ReadLights(const aiScene& scene, const NodeNumbers& numbers, FileScene& made) {
  for (unsigned i = 0; i < scene.mNumLights; ++i) {
    const aiLight& light = *scene.mLights[i];
    const auto node = numbers.find(TextOf(light.mName));
    if (node == numbers.end() || light.mType == aiLightSource_AMBIENT) continue;
    FileLight& one = made.lights.emplace_back();
    one.node = node->second;
    one.type = light.mType == aiLightSource_SPOT          ? kLightSpot
               : light.mType == aiLightSource_DIRECTIONAL ? kLightDistant
               : light.mType == aiLightSource_AREA        ? kLightArea
                                                          : kLightOmni;
    one.view.position = VectorOf(light.mPosition);
    if (light.mType != aiLightSource_POINT) one.view.direction = VectorOf(light.mDirection);
    one.color = {light.mColorDiffuse.r, light.mColorDiffuse.g, light.mColorDiffuse.b};
    one.inner = light.mAngleInnerCone;
    one.outer = light.mAngleOuterCone;
  }
}

// Leaves the importers of the extension.
void KeepLoader(Assimp::Importer& importer, const std::string& extension) {
  for (size_t i = importer.GetImporterCount(); i-- > 0;) {
    const std::string all = std::string(" ") + importer.GetImporterInfo(i)->mFileExtensions + " ";
    if (all.find(" " + extension + " ") == all.npos) importer.UnregisterLoader(importer.GetImporter(i));
  }
}

}  // namespace

FileScene ReadScene(const FileRequest& request) {
  // All of it stays for the end of the process.
  auto& importer = *new Assimp::Importer;
  KeepLoader(importer, request.loader);
  auto* folder = new FileFolder(request.path, false);
  importer.SetIOHandler(folder);
  importer.SetProgressHandler(new Handler);
  importer.SetPropertyBool(AI_CONFIG_IMPORT_FBX_PRESERVE_PIVOTS, false);
  importer.SetPropertyBool(AI_CONFIG_IMPORT_FBX_READ_ANIMATIONS, false);
  importer.SetPropertyBool(AI_CONFIG_IMPORT_FBX_READ_WEIGHTS, false);
  importer.SetPropertyBool(AI_CONFIG_IMPORT_COLLADA_USE_COLLADA_NAMES, true);
  importer.SetPropertyBool(AI_CONFIG_IMPORT_NO_SKELETON_MESHES, true);
  if (HasUris(request.loader)) ListenForDroppedFaces();

  const std::runtime_error wrongCorners("there is a face with a corner that is no point");
  if (request.loader == "dae" && HasColladaWrongCorners(request.path)) throw wrongCorners;
  const aiScene* scene = importer.ReadFile(std::filesystem::absolute(request.path).string(), 0);
  if (!scene || !scene->mRootNode) {
    const std::string reason = importer.GetErrorString();
    throw std::runtime_error(reason.starts_with("No suitable reader")
                                 ? "it is no whole ." + request.loader + " file, or of another version"
                                 : reason);
  }
  if (HasDroppedFaces()) throw wrongCorners;
  // The library keeps points without faces only where there are no names of objects.
  if (request.loader == "obj" && scene->mNumMeshes == 0 && scene->mRootNode->mNumChildren > 0)
    throw std::runtime_error("none of its objects has a face");

  FileScene made;
  std::vector<int32_t> materials;
  for (unsigned i = 0; i < scene->mNumMaterials; ++i) {
    // That of glTF comes last and has no name, as have all of formats without materials.
    const bool isNameless = request.loader.starts_with("gl")
                                ? i + 1 == scene->mNumMaterials
                                : request.loader == "ply" || request.loader == "stl";
    const bool isTheirs = !IsMadeUp(*scene->mMaterials[i], isNameless);
    materials.push_back(isTheirs ? int32_t(made.materials.size()) : -1);
    if (!isTheirs) continue;
    FileMaterial& material = made.materials.emplace_back(ReadMaterial(*scene, *scene->mMaterials[i]));
    if (HasUris(request.loader))
      for (std::string& texture : material.textures) texture = Unescaped(texture);
  }
  if (request.loader == "ply" && HasPlyManyPictures(request.path))
    for (FileMaterial& material : made.materials) material.textures.assign(kTextureSlots, {});
  for (unsigned i = 0; i < scene->mNumMeshes; ++i) {
    FileMesh& mesh = made.meshes.emplace_back(ReadMesh(*scene->mMeshes[i]));
    if (const unsigned material = scene->mMeshes[i]->mMaterialIndex; material < materials.size())
      mesh.material = materials[material];
    ReportProgress(0.5 + 0.5 * i / scene->mNumMeshes);
  }
  const NodeNumbers numbers = ReadNodes(*scene, request.loader, made);
  ReadCameras(*scene, numbers, made);
  ReadLights(*scene, numbers, made);
  return made;
}

}  // namespace host
