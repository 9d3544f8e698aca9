// Resource files of any content give texts or nothing, never a crash.

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "boundary/host.h"

namespace {

// The folder of this process, gone with it.
struct Folder {
  std::filesystem::path path =
      std::filesystem::temp_directory_path() / ("qlx_fuzz_" + std::to_string(getpid()));
  Folder() { std::filesystem::create_directories(path / "strings"); }
  ~Folder() { std::filesystem::remove_all(path); }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const Folder folder;
  FILE* file = std::fopen((folder.path / "strings/en-US.toml").c_str(), "wb");
  if (!file || std::fwrite(data, 1, size, file) != size || std::fclose(file) != 0) std::abort();

  const std::string name = folder.path.string();
  HostString text = host::boundary_tables::string.FromUtf8(name.data(), int64_t(name.size()));
  HostFilename path = host::boundary_tables::filename.FromString(&text);
  if (GeResource* resource = host::boundary_tables::resource.Open(&path)) {
    for (int32_t id : {0, 1, 1000, -1, INT32_MAX}) {
      HostString loaded = host::boundary_tables::resource.LoadText(resource, id);
      host::boundary_tables::string.Destroy(&loaded);
    }
    host::boundary_tables::resource.Close(resource);
  }
  host::boundary_tables::filename.Destroy(&path);
  host::boundary_tables::string.Destroy(&text);
  return 0;
}
