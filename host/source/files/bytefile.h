// Files of bytes: one that is read at any place, and one that takes the place of another when it is whole.
#ifndef HOST_FILES_BYTEFILE_H
#define HOST_FILES_BYTEFILE_H

#include <array>
#include <cstdint>
#include <string>

namespace host {

// More than half of the machine's memory at once is refused: the system promises it, and ends the process
// later.
bool IsTooLarge(uint64_t bytes);

class FileReader {
 public:
  FileReader() = default;
  FileReader(const FileReader&) = delete;
  FileReader& operator=(const FileReader&) = delete;
  ~FileReader() { Close(); }

  // False for what can't be read at any place, too, such as a folder or a pipe.
  bool Open(const std::string& path);
  void Close();
  uint64_t Size() const { return size_; }
  // False at the end of the file, also where it has become shorter.
  bool Read(uint64_t at, void* to, uint64_t bytes);

 private:
  int descriptor_ = -1;
  uint64_t size_ = 0;
  std::array<char, 1 << 14> near_{};  // what was read last
  uint64_t nearAt_ = 0;
  uint64_t nearBytes_ = 0;
};

class FileWriter {
 public:
  FileWriter() = default;
  FileWriter(const FileWriter&) = delete;
  FileWriter& operator=(const FileWriter&) = delete;
  ~FileWriter() { Discard(); }

  // Begins a file beside that of the path.
  bool Create(const std::string& path);
  // After a failure of these nothing else can be written.
  bool Append(const void* data, uint64_t bytes);
  // Overwrites a number.
  bool Patch(uint64_t at, uint64_t number);
  bool HasFailed() const { return hasFailed_; }
  uint64_t Size() const { return written_ + buffer_.size(); }

  // While it is kept, nothing goes to the medium, and can be taken back to a size that it had.
  // Answers what was before.
  bool Keep(bool isKept);
  void Cut(uint64_t size);
  // Puts the file into its place. False where it could not be written: what was there stays.
  bool Finish();
  void Discard();

 private:
  bool Flush();
  bool Put(uint64_t at, const char* data, uint64_t bytes);

  int descriptor_ = -1;
  bool hasFailed_ = false;
  bool isKept_ = false;
  std::string target_, beside_;
  std::string buffer_;
  uint64_t written_ = 0;
};

}  // namespace host

#endif
