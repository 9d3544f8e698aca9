// What the host's tests share: values that end themselves, a folder of the test's own.
#ifndef TESTS_UNIT_HOST_SUPPORT_H
#define TESTS_UNIT_HOST_SUPPORT_H

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "boundary/host.h"
#include "tables/tables.h"
#include "tables/values.h"

// A HostString or HostFilename that ends with the test.
template <class Value>
class Owned {
 public:
  Owned(Value value = {}) : value_(value) {}
  Owned(const Owned&) = delete;
  Owned& operator=(const Owned&) = delete;
  ~Owned() { host::Drop(value_); }

  Value* operator&() { return &value_; }
  std::string Text() const { return std::string(host::View(&value_)); }

 private:
  Value value_;
};

using Text = Owned<HostString>;
using Path = Owned<HostFilename>;

inline HostString Word(std::string_view text) { return host::MakeString(text); }
inline HostFilename PathWord(const std::filesystem::path& path) { return host::MakeFilename(path.native()); }

// The code of a result; its text goes to `text`.
inline int32_t Take(HostResult result, std::string* text = nullptr) {
  const Text owned(result.text);
  if (text) *text = owned.Text();
  return result.code;
}

class TempFolder {
 public:
  explicit TempFolder(const std::filesystem::path& below = std::filesystem::temp_directory_path()) {
    std::string name = (below / "host_test_XXXXXX").string();
    path_ = mkdtemp(name.data());
  }
  ~TempFolder() { std::filesystem::remove_all(path_); }

  const std::filesystem::path& Path() const { return path_; }
  // Writes a file with the folders above it; answers its path.
  std::filesystem::path Write(const std::string& name, std::string_view content = "") const {
    std::filesystem::create_directories((path_ / name).parent_path());
    std::ofstream(path_ / name) << content;
    return path_ / name;
  }

 private:
  std::filesystem::path path_;
};

// Sets a variable for the time of the scope; null removes it.
class Environment {
 public:
  Environment(const char* name, const char* value) : name_(name) {
    if (const char* old = getenv(name)) old_ = old, had_ = true;
    value ? setenv(name, value, 1) : unsetenv(name);
  }
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;
  ~Environment() { had_ ? setenv(name_, old_.c_str(), 1) : unsetenv(name_); }

 private:
  const char* name_;
  std::string old_;
  bool had_ = false;
};

#endif
