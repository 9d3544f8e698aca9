// What objects, blocks and selections keep in files.

#include "files/hyperfile.h"
#include "scene/object.h"

namespace host {
namespace {

bool WriteSelection(HyperFile& file, const BaseSelect& selection) { return file.WriteArray(selection.runs); }

bool ReadSelection(HyperFile& file, BaseSelect& selection) {
  std::vector<Run> runs;
  if (!file.ReadArray(runs)) return false;
  int64_t next = 0;
  for (const Run& run : runs) {
    if (run.first < next || run.last < run.first) return file.Fail(HYPERFILE_ERROR_FORMAT);
    next = int64_t(run.last) + 2;  // with a gap between them
  }
  selection = BaseSelect(std::move(runs));
  return true;
}

bool WriteBlock(HyperFile& file, const VariableTag& block) {
  return file.WriteSized(HYPERFILE_VALUE_MEMORY,
                         {reinterpret_cast<const char*>(block.bytes.data()), block.bytes.size()});
}

bool ReadBlock(HyperFile& file, VariableTag& block) {
  uint64_t bytes;
  if (!file.PeekSized(HYPERFILE_VALUE_MEMORY, bytes)) return false;
  if (bytes % block.elementSize || bytes / block.elementSize > INT32_MAX)
    return file.Fail(HYPERFILE_ERROR_FORMAT);
  std::vector<std::byte> read(bytes);
  if (!file.ReadSizedInto(HYPERFILE_VALUE_MEMORY, read.data(), bytes)) return false;
  block.bytes = std::move(read);
  return true;
}

}  // namespace
}  // namespace host

using namespace host;

bool VariableTag::WriteOwn(HyperFile& file) const { return WriteBlock(file, *this); }
bool VariableTag::ReadOwn(HyperFile& file) { return ReadBlock(file, *this); }

bool SelectionTag::WriteOwn(HyperFile& file) const { return WriteSelection(file, selection); }
bool SelectionTag::ReadOwn(HyperFile& file) { return ReadSelection(file, selection); }

bool BaseObject::WriteOwn(HyperFile& file) const {
  return file.WriteArray(place.Numbers()) && file.WriteInt32(int32_t(uniqueIP)) &&
         file.WriteInt32(turnsShortest);
}

bool BaseObject::ReadOwn(HyperFile& file) {
  std::vector<double> numbers;
  int32_t ip, turns;
  if (!file.ReadArray(numbers) || !file.ReadInt32(ip) || !file.ReadInt32(turns)) return false;
  if (!place.SetNumbers(numbers)) return file.Fail(HYPERFILE_ERROR_FORMAT);
  uniqueIP = uint32_t(ip);
  turnsShortest = turns != 0;
  return true;
}

bool PointObject::WriteOwn(HyperFile& file) const {
  return BaseObject::WriteOwn(file) && WriteBlock(file, points) && WriteSelection(file, selected) &&
         WriteSelection(file, hidden);
}

bool PointObject::ReadOwn(HyperFile& file) {
  return BaseObject::ReadOwn(file) && ReadBlock(file, points) && ReadSelection(file, selected) &&
         ReadSelection(file, hidden);
}

bool PolygonObject::WriteOwn(HyperFile& file) const {
  if (!PointObject::WriteOwn(file) || !WriteBlock(file, polygons)) return false;
  for (const BaseSelect* one : {&selectedPolygons, &hiddenPolygons, &selectedEdges, &hiddenEdges, &phongBreak})
    if (!WriteSelection(file, *one)) return false;
  return file.WriteArray(ngonEdges);
}

bool PolygonObject::ReadOwn(HyperFile& file) {
  if (!PointObject::ReadOwn(file) || !ReadBlock(file, polygons)) return false;
  for (BaseSelect* one : {&selectedPolygons, &hiddenPolygons, &selectedEdges, &hiddenEdges, &phongBreak})
    if (!ReadSelection(file, *one)) return false;
  std::vector<uint8_t> edges;
  if (!file.ReadArray(edges)) return false;
  if (edges.size() > Polygons().size()) return file.Fail(HYPERFILE_ERROR_FORMAT);
  if (!edges.empty()) edges.resize(Polygons().size());  // files of earlier versions leave out what has none
  ngonEdges = std::move(edges);
  return true;
}

bool SplineObject::WriteOwn(HyperFile& file) const {
  return PointObject::WriteOwn(file) && WriteBlock(file, segments);
}
bool SplineObject::ReadOwn(HyperFile& file) { return PointObject::ReadOwn(file) && ReadBlock(file, segments); }

bool LineObject::WriteOwn(HyperFile& file) const {
  return PointObject::WriteOwn(file) && WriteBlock(file, segments);
}
bool LineObject::ReadOwn(HyperFile& file) { return PointObject::ReadOwn(file) && ReadBlock(file, segments); }
