#include <assimp/material.h>
#include <assimp/scene.h>

#include <assimp/Exporter.hpp>
#include <cmath>
#include <cstring>
#include <stdexcept>

#include "files/worker/streams.h"
#include "files/worker/worker.h"

namespace host {
namespace {

template <class Theirs, class Item>
Theirs* Copied(const Rows<Item>& items) {
  static_assert(sizeof(Item) == sizeof(Theirs));
  if (items.empty()) return nullptr;
  auto* copy = new Theirs[items.size()];
  std::memcpy(static_cast<void*>(copy), items.data(), items.size() * sizeof(Item));
  return copy;
}

aiVector3D VectorOf(const Vector32& vector) { return {vector.x, vector.y, vector.z}; }
aiColor3D ColorOf(const Vector32& color) { return {color.x, color.y, color.z}; }

aiMatrix4x4 MatrixOf(const Matrix32& m) {
  return {m.v1[0], m.v2[0], m.v3[0], m.off[0],  //
          m.v1[1], m.v2[1], m.v3[1], m.off[1],  //
          m.v1[2], m.v2[2], m.v3[2], m.off[2],  //
          0,       0,       0,       1};
}

// Ahead of glTF the library joins vertices that are close together, however small the mesh is, unless they are
// told `apart` by what its writer leaves out.
aiMesh* MakeMesh(const FileMesh& mesh, int32_t withoutMaterial, bool apart) {
  auto* made = new aiMesh;
  made->mName = mesh.name;
  made->mMaterialIndex = unsigned(mesh.material < 0 ? withoutMaterial : mesh.material);
  made->mNumVertices = unsigned(mesh.points.size());
  made->mVertices = Copied<aiVector3D>(mesh.points);
  made->mNormals = Copied<aiVector3D>(mesh.normals);
  made->mTextureCoords[0] = Copied<aiVector3D>(mesh.uvw);
  if (!mesh.uvw.empty()) made->mNumUVComponents[0] = 2;
  made->mColors[0] = Copied<aiColor4D>(mesh.colors);
  if (apart) {
    made->mTangents = new aiVector3D[made->mNumVertices];
    made->mBitangents = new aiVector3D[made->mNumVertices];
    for (unsigned i = 0; i < made->mNumVertices; ++i)
      made->mTangents[i] = {float(i & 0xffff), float(i >> 16), 0};
  }
  made->mNumFaces = unsigned(mesh.FaceCount());
  made->mFaces = new aiFace[made->mNumFaces];
  const uint32_t* corner = mesh.corners.data();
  for (unsigned i = 0; i < made->mNumFaces; ++i) {
    aiFace& face = made->mFaces[i];
    face.mNumIndices = mesh.sizes.empty() ? mesh.faceSize : mesh.sizes[i];
    face.mIndices = new unsigned[face.mNumIndices];
    std::copy_n(corner, face.mNumIndices, face.mIndices);
    corner += face.mNumIndices;
    made->mPrimitiveTypes |= face.mNumIndices > 3 ? aiPrimitiveType_POLYGON : aiPrimitiveType_TRIANGLE;
  }
  return made;
}

// `asUris`: the library writes them as they are where URIs are wanted.
void AddTexture(aiMaterial& made, const FileMaterial& material, TextureSlot slot, aiTextureType type,
                bool asUris) {
  const std::string& texture = material.textures[slot];
  if (texture.empty()) return;
  const aiString path(asUris ? Escaped(texture) : texture);
  made.AddProperty(&path, AI_MATKEY_TEXTURE(type, 0));
}

aiMaterial* MakeMaterial(const FileMaterial& material, bool asUris) {
  auto* made = new aiMaterial;
  const aiString name(material.name);
  made->AddProperty(&name, AI_MATKEY_NAME);
  const aiColor3D color = ColorOf(material.color), specular = ColorOf(material.specular),
                  emissive = ColorOf(material.emissive), ambient(0, 0, 0);
  const aiColor4D base(color.r, color.g, color.b, 1);  // glTF's is multiplied by the opacity
  made->AddProperty(&color, 1, AI_MATKEY_COLOR_DIFFUSE);
  made->AddProperty(&base, 1, AI_MATKEY_BASE_COLOR);
  made->AddProperty(&ambient, 1, AI_MATKEY_COLOR_AMBIENT);
  made->AddProperty(&specular, 1, AI_MATKEY_COLOR_SPECULAR);
  made->AddProperty(&emissive, 1, AI_MATKEY_COLOR_EMISSIVE);
  made->AddProperty(&material.opacity, 1, AI_MATKEY_OPACITY);
  made->AddProperty(&material.refraction, 1, AI_MATKEY_REFRACTI);
  made->AddProperty(&material.metallic, 1, AI_MATKEY_METALLIC_FACTOR);
  const int shading = aiShadingMode_Phong;
  made->AddProperty(&shading, 1, AI_MATKEY_SHADING_MODEL);
  if (material.roughness >= 0) {
    const float width = std::max(material.roughness, 0.01f);
    const float shininess = 2 / (width * width) - 2, strength = 1;
    made->AddProperty(&material.roughness, 1, AI_MATKEY_ROUGHNESS_FACTOR);
    made->AddProperty(&shininess, 1, AI_MATKEY_SHININESS);
    made->AddProperty(&strength, 1, AI_MATKEY_SHININESS_STRENGTH);
  }
  if (material.opacity < 1) {
    const aiString blends("BLEND");
    made->AddProperty(&blends, "$mat.gltf.alphaMode", 0, 0);
  }
  AddTexture(*made, material, kTextureColor, aiTextureType_DIFFUSE, asUris);
  AddTexture(*made, material, kTextureColor, aiTextureType_BASE_COLOR, asUris);
  AddTexture(*made, material, kTextureLuminance, aiTextureType_EMISSIVE, asUris);
  AddTexture(*made, material, kTextureSpecular, aiTextureType_SPECULAR, asUris);
  AddTexture(*made, material, kTextureAlpha, aiTextureType_OPACITY, asUris);
  AddTexture(*made, material, kTextureBump, aiTextureType_HEIGHT, asUris);
  AddTexture(*made, material, kTextureNormal, aiTextureType_NORMALS, asUris);
  return made;
}

aiMaterial* MakeDefaultMaterial() {
  FileMaterial material;
  material.name = AI_DEFAULT_MATERIAL_NAME;
  return MakeMaterial(material, false);
}

// The root is the library's own kind: the files of its exporters have it too, and its importers leave it out.
aiNode* MakeNodes(const FileScene& scene) {
  auto* root = new aiNode("ROOT");
  std::vector<aiNode*> made;
  std::vector<std::vector<aiNode*>> children(scene.nodes.size() + 1);
  for (const FileNode& node : scene.nodes) {
    auto* one = made.emplace_back(new aiNode(node.name));
    one->mTransformation = MatrixOf(node.matrix);
    one->mNumMeshes = unsigned(node.meshes.size());
    one->mMeshes = new unsigned[node.meshes.size()];
    std::copy(node.meshes.begin(), node.meshes.end(), one->mMeshes);
    children[size_t(node.parent + 1)].push_back(one);
  }
  for (size_t i = 0; i < children.size(); ++i)
    (i ? made[i - 1] : root)->addChildren(unsigned(children[i].size()), children[i].data());
  return root;
}

template <class Theirs>
Theirs* Named(const FileScene& scene, int32_t node, const FileView&) {
  auto* made = new Theirs;
  made->mName = scene.nodes[size_t(node)].name;
  return made;
}

aiCamera* MakeCamera(const FileScene& scene, const FileCamera& camera) {
  auto* made = Named<aiCamera>(scene, camera.node, camera.view);
  made->mPosition = VectorOf(camera.view.position);
  made->mLookAt = VectorOf(camera.view.direction);
  made->mUp = VectorOf(camera.view.up);
  made->mHorizontalFOV = camera.angle;
  made->mClipPlaneNear = camera.nearest;
  made->mClipPlaneFar = camera.farthest;
  return made;
}

// Collada has no area lights: they are points there.
aiLight* MakeLight(const FileScene& scene, const FileLight& light, bool hasAreas) {
  auto* made = Named<aiLight>(scene, light.node, light.view);
  made->mType = light.type == kLightSpot               ? aiLightSource_SPOT
                : light.type == kLightDistant          ? aiLightSource_DIRECTIONAL
                : light.type == kLightArea && hasAreas ? aiLightSource_AREA
                                                       : aiLightSource_POINT;
  made->mPosition = VectorOf(light.view.position);
  made->mDirection = VectorOf(light.view.direction);
  made->mUp = VectorOf(light.view.up);
  made->mColorDiffuse = made->mColorSpecular = ColorOf(light.color);
  made->mAngleInnerCone = light.inner;
  made->mAngleOuterCone = light.outer;
  return made;
}

template <class Theirs, class Make>
void Fill(unsigned& count, Theirs**& items, size_t wanted, Make make) {
  count = unsigned(wanted);
  items = wanted ? new Theirs*[wanted] : nullptr;
  for (size_t i = 0; i < wanted; ++i) items[i] = make(i);
}

}  // namespace

void WriteScene(const FileRequest& request) {
  const FileScene& scene = request.scene;
  auto& made = *new aiScene;
  made.mRootNode = MakeNodes(scene);
  const size_t materials = scene.materials.size();
  const bool isGltf = request.exporter == "glb2";
  Fill(made.mNumMaterials, made.mMaterials, materials + 1, [&](size_t i) {
    return i < materials ? MakeMaterial(scene.materials[i], isGltf) : MakeDefaultMaterial();
  });
  Fill(made.mNumMeshes, made.mMeshes, scene.meshes.size(),
       [&](size_t i) { return MakeMesh(scene.meshes[i], int32_t(materials), isGltf); });
  Fill(made.mNumCameras, made.mCameras, scene.cameras.size(),
       [&](size_t i) { return MakeCamera(scene, scene.cameras[i]); });
  Fill(made.mNumLights, made.mLights, scene.lights.size(),
       [&](size_t i) { return MakeLight(scene, scene.lights[i], request.exporter != "collada"); });

  auto& exporter = *new Assimp::Exporter;
  auto* folder = new FileFolder(request.path, true);
  exporter.SetIOHandler(folder);
  exporter.SetProgressHandler(new Handler);
  if (exporter.Export(&made, request.exporter, request.path, 0u) != aiReturn_SUCCESS) {
    const std::string reason = exporter.GetErrorString();
    throw std::runtime_error(!folder->Fault().empty() ? folder->Fault()
                             : reason.empty()         ? "the format has no place for it"
                                                      : reason);
  }
  if (!folder->Fault().empty()) throw std::runtime_error(folder->Fault());
}

}  // namespace host
