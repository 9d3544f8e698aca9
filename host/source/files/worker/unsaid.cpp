// What files say and the library doesn't.

#include <algorithm>
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

// Whether all words are numbers of points as the library takes them: it finds no end of others.
bool AreCorners(std::string_view text) {
  constexpr std::string_view kSpaces = " \t\r\n";
  for (size_t at; (at = text.find_first_not_of(kSpaces)) != text.npos;) {
    text.remove_prefix(at);
    const std::string_view word = text.substr(0, text.find_first_of(kSpaces));
    int32_t number = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (word.starts_with('-') || error != std::errc() || end != word.data() + word.size()) return false;
    text.remove_prefix(word.size());
  }
  return true;
}

// The length of a tag up to its end, which lies outside of quotes.
size_t TagLength(std::string_view tag) {
  size_t length = 0;
  for (char quote = 0; length < tag.size() && (quote || tag[length] != '>'); ++length)
    if (const char c = tag[length]; quote ? c == quote : c == '"' || c == '\'') quote = quote ? '\0' : c;
  return length;
}

}  // namespace

void ListenForDroppedFaces() {
  Assimp::DefaultLogger::create("", Assimp::Logger::NORMAL, 0);
  Assimp::DefaultLogger::get()->attachStream(new Warnings, Assimp::Logger::Warn);
}

bool HasDroppedFaces() { return hasDroppedFaces; }

bool HasColladaWrongCorners(const std::string& path) {
  std::ostringstream file;
  file << std::ifstream(path, std::ios::binary).rdbuf();
  std::string_view left = file.view();
  // What is left up to `end`, which goes as well.
  const auto take = [&](std::string_view end) {
    const std::string_view taken = left.substr(0, left.find(end));
    left.remove_prefix(std::min(taken.size() + end.size(), left.size()));
    return taken;
  };
  bool isInCorners = false;
  size_t extras = 0;  // what other programs have for themselves
  for (;;) {
    if (const std::string_view text = take("<"); isInCorners && !AreCorners(text)) return true;
    if (left.empty()) return false;
    if (left.starts_with("!--")) {
      take("--");
      take("-->");
    } else if (left.starts_with("![CDATA[")) {
      take("A[");
      if (const std::string_view text = take("]]>"); isInCorners && !AreCorners(text)) return true;
    } else if (left.starts_with('?') || left.starts_with('!')) {
      take(left.starts_with('?') ? "?>" : ">");
    } else {
      const std::string_view tag = left.substr(0, TagLength(left));
      left.remove_prefix(std::min(tag.size() + 1, left.size()));
      const std::string_view name = tag.substr(0, tag.find_first_of("/ \t\r\n", 1));
      const bool isBegun = !tag.ends_with('/');
      if (name == "extra") extras += isBegun;
      if (name == "/extra" && extras > 0) --extras;
      if (name == "p") isInCorners = isBegun && extras == 0;
      if (name == "/p") isInCorners = false;
    }
  }
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
