// Files of any content are values, elements or an error, never a crash; what was read is written as it is.

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "app/settings.h"
#include "boundary/host.h"
#include "files/hyperfile.h"
#include "scene/kinds.h"

namespace {

constexpr int32_t kNull = 5140;
constexpr char kMagic[] = "\x89QLX\r\n\x1a\n";

struct Files {
  std::filesystem::path folder =
      std::filesystem::temp_directory_path() / ("qlx_fuzz_hyperfile_" + std::to_string(getpid()));
  std::string path = (folder / "file").string();
  Files() {
    host::GetSettings().startup = HOST_STARTUP;
    std::filesystem::create_directories(folder);
  }
  ~Files() { std::filesystem::remove_all(folder); }

  void Write(const std::string& bytes) const {
    std::filesystem::remove(path);  // truncating it would wait for the disk
    FILE* file = std::fopen(path.c_str(), "wb");
    if (!file || std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size() || std::fclose(file))
      std::abort();
  }
};

std::string WithHeader(const std::string& content) {
  const int32_t words[2] = {1, 0};
  const uint64_t size = content.size();
  return std::string(kMagic, 8).append(reinterpret_cast<const char*>(words), sizeof words) +
         std::string(reinterpret_cast<const char*>(&size), sizeof size) + content;
}

void Require(bool isTrue) {
  if (!isTrue) std::abort();
}

// Reads all that is there, and skips what can't be read. Each step goes on, or leaves a chunk.
void ReadValues(HyperFile& file) {
  for (;;) {
    const uint64_t before = file.Here().position;
    const int32_t tag = file.NextTag();
    std::string bytes;
    BaseContainer container;
    host::Value data;
    int32_t id, level;
    bool isRead = false;
    switch (tag) {
      case HYPERFILE_VALUE_CHUNK_START:
        isRead = file.EnterChunk(id, level);
        break;
      case HYPERFILE_VALUE_STRING:
      case HYPERFILE_VALUE_FILENAME:
      case HYPERFILE_VALUE_MEMORY:
        isRead = file.ReadSized(tag, bytes);
        break;
      case HYPERFILE_VALUE_CONTAINER:
        isRead = file.ReadContainer(container);
        if (isRead) Require(BaseContainer(container).id == container.id);
        break;
      case HYPERFILE_VALUE_DATA:
        isRead = file.ReadData(data);
        break;
    }
    Require(isRead || file.Here().position == before);
    if (!isRead && !file.Skip(tag) && !file.LeaveChunk(true)) return;
    Require(file.Here().position > before);
  }
}

void ReadElement(const Files& files, HyperFile& file) {
  BaseList2D* element = host::MakeElement(kNull);
  if (host::atom::ReadObject(element, &file, 1)) {
    Require(file.Close() && file.Open(0, files.path, HYPERFILE_WRITE));
    Require(host::atom::WriteObject(element, &file) && file.Close());
    BaseList2D* again = host::MakeElement(kNull);
    Require(file.Open(0, files.path, HYPERFILE_READ) && host::atom::ReadObject(again, &file, 1));
    host::baselist::Free(again);
  }
  host::baselist::Free(element);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const Files files;
  if (size == 0) return 0;
  const std::string content(reinterpret_cast<const char*>(data + 1), size - 1);
  files.Write(data[0] & 1 ? content : WithHeader(content));
  HyperFile file;
  if (!file.Open(0, files.path, HYPERFILE_READ)) {
    Require(data[0] & 1 && file.error != HYPERFILE_ERROR_NONE);
    return 0;
  }
  if (data[0] & 2) {
    ReadValues(file);
  } else {
    ReadElement(files, file);
  }
  return 0;
}
