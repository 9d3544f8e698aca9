// Files of any content become documents or are refused. The first byte tells the format; beyond the formats the
// rest is what the program that reads files hands over, so that the host's own work is tried without it.

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <new>

#include "app/settings.h"
#include "boundary/host.h"
#include "files/scene_check.h"
#include "files/scene_mesh.h"
#include "scene/tree.h"

namespace {

namespace fs = std::filesystem;

constexpr size_t kMostCorners = 1 << 20;  // so that memory is no limit

struct Folder {
  fs::path path = fs::temp_directory_path() / ("qlx_fuzz_" + std::to_string(getpid()));
  Folder() {
    fs::create_directories(path);
    host::GetSettings().startup = HOST_STARTUP;
  }
  ~Folder() { fs::remove_all(path); }
};

struct EndDocument {
  void operator()(BaseDocument* document) const { host::DestroyNow(document); }
};
using Document = std::unique_ptr<BaseDocument, EndDocument>;

// Writes all meshes, as far as that is the host's.
void Use(BaseDocument& document) {
  host::Walk(document, [&](GeListNode& node) {
    const auto* object = host::As<PolygonObject>(&node);
    if (!object) return;
    for (const bool triangles : {false, true}) host::MakeMeshes(*object, {}, {triangles, true});
  });
}

size_t Size(const host::FileScene& scene) {
  size_t size = 0;
  for (const host::FileNode& node : scene.nodes)
    for (const int32_t mesh : node.meshes)
      size += scene.meshes[size_t(mesh)].points.size() + scene.meshes[size_t(mesh)].CornerCount();
  return size;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const Folder folder;
  if (size == 0) return 0;
  const auto formats = host::SceneFormats();
  try {
    Document document;
    if (data[0] % 16 < formats.size()) {
      const fs::path file = folder.path / (std::string("a.") + formats[data[0] % 16].extension);
      std::ofstream(file, std::ios::binary).write(reinterpret_cast<const char*>(data) + 1, ptrdiff_t(size - 1));
      document.reset(host::ImportScene(file, 3, nullptr));
    } else {
      // Rows in it begin as a double may.
      const std::unique_ptr<char[]> bytes(new char[size]);
      std::memcpy(bytes.get(), data + 1, size - 1);
      const host::FileScene scene = host::UnpackScene({bytes.get(), size - 1});
      host::CheckScene(scene);
      if (Size(scene) > kMostCorners) return 0;
      document.reset(host::MakeDocument(scene, folder.path / "a.obj", 3, nullptr));
    }
    Use(*document);
  } catch (const std::runtime_error&) {
  } catch (const std::bad_alloc&) {
  }
  return 0;
}
