#include "files/scene_check.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fstream>
#include <span>

#include "files/scene_names.h"

namespace host {
namespace fs = std::filesystem;
namespace {

constexpr uint64_t kLargestFile = uint64_t(2) << 30;
constexpr uint64_t kMostCorners = 200'000'000;  // of all objects together

[[noreturn]] void Refuse(const std::string& reason) { throw std::runtime_error(reason); }

std::string Supported() {
  std::string all;
  for (const SceneFormat& format : SceneFormats())
    all += fmt::format("{}.{}", all.empty() ? "" : ", ", format.extension);
  return all;
}

uint32_t NumberAt(std::string_view bytes, size_t at) {
  uint32_t number;
  std::memcpy(&number, bytes.data() + at, sizeof number);
  return number;
}

// Whether all lines are a header's up to its end: the library looks for that for ever.
bool HasPlyHeader(std::string_view head) {
  constexpr std::string_view kWords[] = {"ply", "format ", "comment", "obj_info", "element ", "property "};
  if (!head.starts_with("ply")) return false;
  for (size_t end; (end = head.find_first_of("\r\n")) != head.npos; head.remove_prefix(end + 1)) {
    const std::string_view line = head.substr(0, head.find_last_not_of(" \t\r\n", end) + 1);
    if (line == "end_header") return true;
    const auto begins = [&](std::string_view word) { return line.starts_with(word); };
    if (!line.empty() && std::ranges::none_of(kWords, begins)) return false;
  }
  return false;
}

// Whether a file with these first bytes, of that size, may be of the format. Text is told by what is in no
// text.
bool Begins(std::string_view extension, std::string_view head, uint64_t size) {
  const bool isText = head.find('\0') == head.npos;
  if (extension == "glb")
    return head.size() >= 20 && head.starts_with("glTF") && NumberAt(head, 8) <= size &&
           20 + uint64_t(NumberAt(head, 12)) <= size;
  if (extension == "3ds") {
    if (head.size() < 6) return false;
    const uint32_t length = NumberAt(head, 2);
    return head.starts_with("MM") && length >= 6 && length <= size;
  }
  if (extension == "fbx") return head.starts_with("Kaydara FBX Binary  ") || isText;
  if (extension == "ply") return HasPlyHeader(head);
  if (extension == "stl") {
    if (isText) return head.find("solid") != head.npos;
    return size >= 84 && head.size() >= 84 && 84 + uint64_t(50) * NumberAt(head, 80) <= size;
  }
  if (extension == "gltf" || extension == "dae")
    return isText && head.find(extension == "dae" ? '<' : '{') != head.npos;
  return isText;
}

std::string_view TakeWord(std::string_view& line) {
  constexpr std::string_view kSpaces = " \t\r";
  line.remove_prefix(std::min(line.find_first_not_of(kSpaces), line.size()));
  const std::string_view word = line.substr(0, line.find_first_of(kSpaces));
  line.remove_prefix(word.size());
  return word;
}

uint64_t NumberIn(std::string_view word) {
  uint64_t number = 0;
  std::from_chars(word.data(), word.data() + word.size(), number);
  return number;
}

// Of a number in a binary PLY; 0 for an unknown one.
uint64_t PlySize(std::string_view type) {
  constexpr std::pair<std::string_view, uint64_t> kSizes[] = {
      {"char", 1},  {"uchar", 1},  {"short", 2},   {"ushort", 2},  {"int", 4},     {"uint", 4},
      {"float", 4}, {"double", 8}, {"int8", 1},    {"uint8", 1},   {"int16", 2},   {"uint16", 2},
      {"int32", 4}, {"uint32", 4}, {"float32", 4}, {"float64", 8}, {"double64", 8}};
  const auto* at = std::ranges::find(kSizes, type, [](const auto& one) { return one.first; });
  return at == std::end(kSizes) ? 0 : at->second;
}

struct PlyProperty {
  bool isList, hasCorners;           // points of faces
  uint64_t countLimit, cornerLimit;  // what their types hold no more
};

struct PlyElement {
  uint64_t count;
  std::vector<PlyProperty> properties;
};

// Whether a line of a PLY text has all that its element has; the library takes other words for a number, too.
bool IsPlyRowWhole(std::string_view line, const PlyElement& element) {
  const auto takeNumber = [&](uint64_t& number, uint64_t limit) {
    const std::string_view word = TakeWord(line);
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    return error == std::errc() && end == word.data() + word.size() && number < limit;
  };
  for (const PlyProperty& property : element.properties) {
    uint64_t left = 1, corner = 0;
    if (property.isList && !takeNumber(left, property.countLimit)) return false;
    for (; left > 0; --left)
      if (property.hasCorners ? !takeNumber(corner, property.cornerLimit) : TakeWord(line).empty())
        return false;
  }
  return true;
}

// Whether a PLY text has a whole line for each of its elements, or a binary one room for them, with lists of
// nothing: the library makes up what is missing. Refused is also what it leaves out in silence.
bool IsPlyWhole(std::istream& stream, uint64_t size) {
  uint64_t bytes = 0;
  bool isBinary = false;
  std::vector<PlyElement> elements;
  std::string text;
  char head[256] = {};
  stream.read(head, sizeof head - 1);
  stream.clear();
  stream.seekg(0);
  const size_t at = std::strcspn(head, "\r\n");
  const char end = head[at] == '\r' && head[at + 1] != '\n' ? '\r' : '\n';
  while (std::getline(stream, text, end)) {
    std::string_view line = text;
    const std::string_view word = TakeWord(line);
    if (word == "end_header") break;
    if (word == "format") isBinary = TakeWord(line) != "ascii";
    if (word == "element") {
      const bool areStrips = TakeWord(line) == "tristrips";
      elements.push_back({std::min<uint64_t>(NumberIn(TakeWord(line)), kLargestFile), {}});
      if (areStrips && elements.back().count > 0) Refuse("its triangle strips can't be read");
    } else if (word == "property" && !elements.empty()) {
      const auto limit = [](std::string_view type) {
        const uint64_t size = PlySize(type);
        if (size == 0) Refuse(fmt::format("its numbers of type '{}' can't be read", type));
        return uint64_t(1) << (size == 1 ? 8 : size == 2 ? 16 : 32);
      };
      std::string_view type = TakeWord(line);
      const bool isList = type == "list";
      if (isList) type = TakeWord(line);
      bytes += elements.back().count * PlySize(type);
      PlyProperty& property =
          elements.back().properties.emplace_back(PlyProperty{isList, false, limit(type), 0});
      if (!isList) continue;
      type = TakeWord(line);
      property.cornerLimit = limit(type);
      property.hasCorners =
          !type.starts_with("float") && !type.starts_with("double") && TakeWord(line).starts_with("vertex_ind");
    }
  }
  if (isBinary) return stream.good() && uint64_t(stream.tellg()) + bytes <= size;
  std::erase_if(elements, [](const PlyElement& element) { return element.count == 0; });
  for (const PlyElement& element : elements) {
    for (uint64_t left = element.count; left > 0;) {
      if (!std::getline(stream, text, end)) return false;
      std::string_view line = text;
      if (TakeWord(line).empty()) continue;
      --left;
      if (!IsPlyRowWhole(text, element)) return false;
    }
  }
  return true;
}

// Whether an STL text ends as it should, with nothing begun.
bool IsStlWhole(std::istream& stream, uint64_t size) {
  std::string end(size_t(std::min<uint64_t>(size, 4096)), '\0');
  stream.seekg(std::streamoff(size - end.size()));
  stream.read(end.data(), std::streamsize(end.size()));
  std::ranges::transform(end, end.begin(), [](unsigned char c) { return std::tolower(c); });
  const size_t at = end.rfind("endsolid");
  return at != end.npos && end.find("facet normal", at) == end.npos;
}

bool IsFinite(const Vector32& vector) {
  return std::isfinite(vector.x) && std::isfinite(vector.y) && std::isfinite(vector.z);
}

bool IsFinite(const Matrix32& matrix) {
  const auto& numbers = reinterpret_cast<const float(&)[12]>(matrix);
  return std::ranges::all_of(numbers, [](float number) { return std::isfinite(number); });
}

// Without a way out, so that the compiler takes several at once.
bool AreFinite(const Rows<Vector32>& points) {
  bool areFinite = true;
  const auto* numbers = reinterpret_cast<const float*>(points.data());
  for (size_t i = 0; i < 3 * points.size(); ++i) areFinite &= std::abs(numbers[i]) < INFINITY;
  return areFinite;
}

void CheckMesh(const FileMesh& mesh, size_t materials) {
  const size_t points = mesh.points.size();
  for (const size_t count : {mesh.normals.size(), mesh.uvw.size(), mesh.colors.size()})
    if (count != 0 && count != points)
      Refuse("a mesh lacks normals, colours or texture coordinates for some points");
  if (mesh.material < -1 || mesh.material >= int64_t(materials))
    Refuse("a mesh has a material that is not there");
  if (!AreFinite(mesh.points))
    Refuse(fmt::format("the mesh '{}' has a point at a place that is no number", mesh.name));
  uint32_t last = 0;
  for (const uint32_t corner : mesh.corners) last = std::max(last, corner);
  if (!mesh.corners.empty() && last >= points)
    Refuse(fmt::format("the mesh '{}' has a face with a corner that is no point", mesh.name));
  uint64_t corners = 0;
  for (const uint32_t size : mesh.sizes) corners += size;
  if (mesh.faceSize == 0 ||
      (mesh.sizes.empty() ? mesh.CornerCount() % mesh.faceSize != 0 : corners != mesh.CornerCount()))
    Refuse(fmt::format("the mesh '{}' has faces without corners", mesh.name));
}

}  // namespace

FileFault FaultOf(const fs::path& file, std::string_view reason) {
  constexpr size_t kLongest = 200;
  return FileFault(file.empty() ? "a file without a name"
                                : fmt::format("{}: {}{}", file.native(), FirstOf(reason, kLongest),
                                              reason.size() > kLongest ? "..." : ""));
}

void CheckName(const fs::path& file) {
  if (!file.has_filename()) Refuse("its name ends in a slash");
}

const SceneFormat& CheckFile(const fs::path& file) {
  CheckName(file);
  std::error_code error;
  const fs::file_status status = fs::status(file, error);
  if (status.type() == fs::file_type::not_found) Refuse("there is no such file");
  if (error) Refuse(error.message());
  if (!fs::is_regular_file(status)) Refuse("it is no file");
  const SceneFormat* format = FindFormat(file.extension().native());
  if (!format || !format->imports) Refuse(fmt::format("its format is not known; these are: {}", Supported()));
  const uint64_t size = fs::file_size(file, error);
  if (error) Refuse(error.message());
  if (size == 0) Refuse("it is empty");
  if (size > kLargestFile) Refuse("it is larger than 2 GiB");
  std::string head(1 << 16, '\0');
  std::ifstream stream(file, std::ios::binary);
  stream.read(head.data(), std::streamsize(head.size()));
  if (!stream.is_open() || stream.bad()) Refuse("it can't be read");
  head.resize(size_t(stream.gcount()));
  stream.clear();
  stream.seekg(0);
  const std::string_view extension = format->extension;
  const bool isText = head.find('\0') == head.npos;
  if (!Begins(extension, head, size) || (extension == "ply" && !IsPlyWhole(stream, size)) ||
      (extension == "stl" && isText && !IsStlWhole(stream, size)))
    Refuse(fmt::format("it is no whole .{} file", extension));
  return *format;
}

void CheckScene(const FileScene& scene) {
  // A null is something, also without a name.
  const auto isEmpty = [&](const FileNode& node) {
    const auto has = [&](int32_t mesh) {
      return mesh < 0 || size_t(mesh) >= scene.meshes.size() || !scene.meshes[size_t(mesh)].points.empty();
    };
    return !node.meshes.empty() && std::ranges::none_of(node.meshes, has);
  };
  if (scene.nodes.empty() || (scene.materials.empty() && std::ranges::all_of(scene.nodes, isEmpty)))
    Refuse("there is nothing in it");
  for (const FileMaterial& material : scene.materials)
    if (material.textures.size() != kTextureSlots || material.embedded.size() != kTextureSlots)
      Refuse("a material is damaged");
  for (const FileMesh& mesh : scene.meshes) CheckMesh(mesh, scene.materials.size());
  uint64_t corners = 0;
  std::vector<uint32_t> depths;
  depths.reserve(scene.nodes.size());
  for (const FileNode& node : scene.nodes) {
    if (node.parent < -1 || node.parent >= int64_t(depths.size())) Refuse("its hierarchy is damaged");
    depths.push_back(node.parent < 0 ? 1 : depths[size_t(node.parent)] + 1);
    if (depths.back() > kDeepest) Refuse("its hierarchy is too deep");
    if (!IsFinite(node.matrix)) Refuse(fmt::format("'{}' stands at a place that is no number", node.name));
    for (const int32_t mesh : node.meshes) {
      if (mesh < 0 || mesh >= int64_t(scene.meshes.size()))
        Refuse(fmt::format("'{}' has a mesh that is not there", node.name));
      corners += scene.meshes[size_t(mesh)].CornerCount() + scene.meshes[size_t(mesh)].points.size();
    }
    if (corners > kMostCorners) Refuse("its objects are too large");
  }
  const auto checkView = [&](int32_t node, const FileView& view) {
    if (node < 0 || node >= int64_t(scene.nodes.size())) Refuse("a camera or a light stands nowhere");
    if (!IsFinite(view.position) || !IsFinite(view.direction) || !IsFinite(view.up))
      Refuse("a camera or a light stands at a place that is no number");
  };
  for (const FileCamera& camera : scene.cameras) checkView(camera.node, camera.view);
  for (const FileLight& light : scene.lights) checkView(light.node, light.view);
}

}  // namespace host
