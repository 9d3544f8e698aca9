// The types and parameters that scene files have values for; their declarations are in resources/nodes.
#ifndef HOST_FILES_SCENE_IDS_H
#define HOST_FILES_SCENE_IDS_H

#include <cstdint>

namespace host::id {

enum Type : int32_t {
  kNull = 5140,
  kLight = 5102,
  kCamera = 5103,
  kTexture = 5616,
  kPolygonSelection = 5673,
  kMaterial = 5703,
  kBitmap = 5833
};

enum TextureParameter : int32_t { kTextureMaterial = 1000, kTextureRestriction = 1001 };

enum BitmapParameter : int32_t { kBitmapFile = 1000 };

enum MaterialParameter : int32_t {
  kMaterialColor = 1001,
  kMaterialUseLuminance = 1010,
  kMaterialLuminanceColor = 1011,
  kMaterialUseTransparency = 1020,
  kMaterialTransparencyBrightness = 1022,
  kMaterialRefraction = 1026,
  kMaterialUseReflection = 1030,
  kMaterialReflectionBrightness = 1032,
  kMaterialUseSpecular = 1070,
  kMaterialSpecularColor = 1071,
  kMaterialSpecularWidth = 1076
};

// By TextureSlot.
struct MaterialSlot {
  int32_t use, shader;
};
constexpr MaterialSlot kMaterialSlots[] = {{1000, 1003}, {1010, 1013}, {1070, 1073},
                                           {1060, 1063}, {1040, 1043}, {1050, 1053}};

enum CameraParameter : int32_t {
  kCameraProjection = 1000,
  kCameraFocus = 1001,
  kCameraSensor = 1002,
  kCameraNear = 1009,
  kCameraFar = 1011
};
constexpr double kAperture = 36;  // of a camera's sensor, as long as nobody sets another one

enum LightParameter : int32_t {
  kLightType = 1000,
  kLightColor = 1001,
  kLightBrightness = 1002,
  kLightInner = 1010,
  kLightOuter = 1011
};

enum VertexColorParameter : int32_t { kColorOfPoints = 1000 };

}  // namespace host::id

#endif
