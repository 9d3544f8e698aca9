// Scenes from files and to files.
#ifndef HOST_FILES_SCENE_FILES_H
#define HOST_FILES_SCENE_FILES_H

#include <cstdint>
#include <filesystem>
#include <span>
#include <stdexcept>
#include <string_view>

struct BaseDocument;

namespace host {

// What of a file is wanted.
enum SceneFilter : int32_t { kFilterObjects = 1, kFilterMaterials = 2 };

struct Progress {
  // The fraction done, 0 to 1 in each of several parts, and which part; false asks to stop. Called on the
  // thread of the import or export.
  virtual bool Report(double fraction, const char* what) = 0;

 protected:
  ~Progress() = default;
};

// Names the file and the reason.
struct FileFault : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// A Progress asked to stop.
struct Stopped : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct SceneFormat {
  int32_t id;             // for SaveDocument
  const char* symbol;     // the constant of the id, in resources/symbols/formats.toml; null: no saving
  const char* extension;  // without the dot, in lower case
  const char* assimpId;   // what the library calls the exporter
  bool imports, exports;
};

std::span<const SceneFormat> SceneFormats();
// Null for an unknown one. The extension may have a dot and any case.
const SceneFormat* FindFormat(int32_t id);
const SceneFormat* FindFormat(std::string_view extension);

// A new document of the file, in no list; the caller owns it. `loadFlags` are of SceneFilter. `progress` may be
// null. Throws FileFault, Stopped or std::bad_alloc, and leaves nothing behind. Nobody else's scene is touched.
BaseDocument* ImportScene(const std::filesystem::path& file, int32_t loadFlags, Progress* progress);

// Writes the file anew: what was there stays until all is written. Of generators goes what they made when the
// document was evaluated last. The document changes for nobody meanwhile. Throws as ImportScene.
void ExportScene(const BaseDocument& document, const std::filesystem::path& file, int32_t format,
                 int32_t saveFlags, Progress* progress);

}  // namespace host

#endif
