// What files say and the library doesn't.

#include <assimp/DefaultLogger.hpp>
#include <assimp/LogStream.hpp>
#include <charconv>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>

#include "files/worker/worker.h"

namespace host {
namespace {

bool hasDroppedFaces = false;

struct Warnings : Assimp::LogStream {
  void write(const char* message) override {
    hasDroppedFaces = hasDroppedFaces || std::strstr(message, "faces were dropped");
  }
};

// Whether a number is one that the library makes a 0 of.
bool IsNoIndex(std::string_view word) {
  int32_t number = 0;
  const std::errc error = std::from_chars(word.data(), word.data() + word.size(), number).ec;
  return error == std::errc::result_out_of_range || (error == std::errc() && number < 0);
}

}  // namespace

void ListenForDroppedFaces() {
  Assimp::DefaultLogger::create("", Assimp::Logger::NORMAL, 0);
  Assimp::DefaultLogger::get()->attachStream(new Warnings, Assimp::Logger::Warn);
}

bool HasDroppedFaces() { return hasDroppedFaces; }

bool HasColladaWrongCorners(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  bool isComment = false;
  for (std::string tag; std::getline(stream, tag, '<');) {
    isComment = isComment || tag.starts_with("!--");
    if (isComment) {
      isComment = tag.find("-->") == tag.npos;
    } else if (tag.starts_with('p') && tag.find_first_of("> \t\r\n") == 1) {
      std::string_view words = tag;
      for (size_t end = tag.find('>'); end < words.size(); end = words.find_first_of(" \t\r\n")) {
        words.remove_prefix(end + 1);
        if (IsNoIndex(words)) return true;
      }
    }
  }
  return false;
}

bool HasPlyManyPictures(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  int count = 0;
  for (std::string line, first, second; std::getline(stream, line); first.clear(), second.clear()) {
    std::istringstream(line) >> first >> second;
    if (first == "end_header") break;
    if (first == "comment" && second == "TextureFile") ++count;
  }
  return count > 1;
}

}  // namespace host
