// Where the library's files come from and go to.
#ifndef HOST_FILES_WORKER_STREAMS_H
#define HOST_FILES_WORKER_STREAMS_H

#include <assimp/IOSystem.hpp>
#include <assimp/ProgressHandler.hpp>
#include <filesystem>
#include <string>
#include <string_view>

namespace host {

// Opens the scene's file and, to read, what lies in its folder or below, or in that of the file that it is a
// link to; nothing else, whatever a file names.
class FileFolder : public Assimp::IOSystem {
 public:
  FileFolder(std::filesystem::path file, bool writes);

  bool Exists(const char* file) const override;
  char getOsSeparator() const override { return '/'; }
  Assimp::IOStream* Open(const char* file, const char* mode) override;
  void Close(Assimp::IOStream* stream) override;
  bool ComparePaths(const char* one, const char* second) const override;

  // Why something could not be written; empty: all was.
  const std::string& Fault() const { return fault_; }
  // The same, from a stream.
  void Fail(int error);

 private:
  // Empty for a file that is not to be opened, or is not there to be read.
  std::filesystem::path Find(const char* file) const;
  std::filesystem::path FindAs(const std::filesystem::path& file) const;
  std::filesystem::path FindAt(const std::filesystem::path& file) const;

  std::filesystem::path file_, folder_, goalFolder_;
  bool writes_;
  std::string fault_;
};

// A path of a URI: %20 is a space.
std::string Unescaped(std::string_view uri);
std::string Escaped(std::string_view path);

// Hands on what the library says of its progress.
struct Handler : Assimp::ProgressHandler {
  bool Update(float fraction) override;
};

}  // namespace host

#endif
