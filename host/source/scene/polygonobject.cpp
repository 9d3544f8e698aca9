#include <algorithm>
#include <cstring>

#include "boundary/host.h"
#include "scene/geometry.h"

namespace host {

Neighbor NeighborOf(const PolygonObject& object) { return {object.Polygons(), object.Points().size()}; }

uint8_t InnerEdges(const PolygonObject& object, int32_t polygon) {
  return size_t(polygon) < object.ngonEdges.size() ? object.ngonEdges[size_t(polygon)] : 0;
}

namespace {

// The n-gons in the order of their first polygons, a polygon of its own being one too.
struct Ngons {
  explicit Ngons(const PolygonObject& object) {
    const auto polygons = int32_t(object.Polygons().size());
    of.resize(size_t(polygons));
    if (std::all_of(object.ngonEdges.begin(), object.ngonEdges.end(), [](uint8_t edges) { return !edges; })) {
      for (int32_t i = 0; i < polygons; ++i) of[size_t(i)] = i;
      sizes.assign(size_t(polygons), 1);
      return;
    }
    const Neighbor neighbor = NeighborOf(object);
    Groups groups(of.size());
    for (int32_t i = 0; i < polygons; ++i)
      for (int32_t k = 0; k < 4; ++k) {
        const int32_t edge = InnerEdges(object, i) >> k & 1 ? neighbor.edgeOf[size_t(4 * i + k)] : -1;
        const int32_t other = edge < 0 ? -1 : neighbor.Across(edge, i);
        if (other >= 0) groups.Join(i, other);
      }
    for (int32_t i = 0; i < polygons; ++i) {
      const int32_t first = groups.Find(i);
      of[size_t(i)] = first == i ? int32_t(sizes.size()) : of[size_t(first)];
      if (first == i) sizes.push_back(0);
      ++sizes[size_t(of[size_t(i)])];
    }
  }

  std::vector<int32_t> of;     // the n-gon of each polygon
  std::vector<int32_t> sizes;  // how many polygons each has
};

// Those of which all polygons are selected.
HostBool SelectNgons(const PolygonObject& object, const BaseSelect& polygons, BaseSelect& ngons) {
  const Ngons all(object);
  std::vector<int32_t> missing = all.sizes;
  ForEach(polygons, int32_t(all.of.size()), [&](int32_t i) { --missing[size_t(all.of[size_t(i)])]; });
  std::vector<Run> runs;
  for (size_t i = 0; i < missing.size(); ++i)
    if (missing[i] == 0) Append(runs, int32_t(i), int32_t(i));
  Replace(ngons, std::move(runs));
  return 1;
}

BaseSelect* Own(PolygonObject* self, BaseSelect PolygonObject::*selection) {
  auto* object = As<PolygonObject>(self);
  return object ? &(object->*selection) : nullptr;
}

}  // namespace
}  // namespace host

namespace host::polygonobject {

PolygonObject* Alloc(int32_t pcnt, int32_t vcnt) {
  return pcnt < 0 || vcnt < 0 || vcnt > kMaxPolygons ? nullptr : NewPolygonObject(pcnt, vcnt);
}

int32_t GetPolygonCount(const PolygonObject* self) {
  const auto* object = As<PolygonObject>(self);
  return object ? object->polygons.Count() : 0;
}

BaseSelect* GetPolygonS(PolygonObject* self) { return Own(self, &PolygonObject::selectedPolygons); }
BaseSelect* GetPolygonH(PolygonObject* self) { return Own(self, &PolygonObject::hiddenPolygons); }
BaseSelect* GetEdgeS(PolygonObject* self) { return Own(self, &PolygonObject::selectedEdges); }
BaseSelect* GetEdgeH(PolygonObject* self) { return Own(self, &PolygonObject::hiddenEdges); }
BaseSelect* GetPhongBreak(PolygonObject* self) { return Own(self, &PolygonObject::phongBreak); }

HostBool ResizeObject(PolygonObject* self, int32_t pcnt) { return pointobject::ResizeObject(self, pcnt); }

HostBool ResizePolygons(PolygonObject* self, int32_t pcnt, int32_t vcnt) {
  return ResizeNgons(self, pcnt, vcnt, 0, 0);
}

// There is always room. With any n-gons at all those that the object has stay, as far as their polygons do.
HostBool ResizeNgons(PolygonObject* self, int32_t pcnt, int32_t vcnt, int32_t nvcnt, int32_t) {
  auto* object = As<PolygonObject>(self);
  if (!object || pcnt < 0 || vcnt < 0 || vcnt > kMaxPolygons || nvcnt < 0) return 0;
  if (!ResizeBlocks(*object, {.points = pcnt, .polygons = vcnt})) return 0;
  if (nvcnt == 0)
    object->ngonEdges.clear();
  else if (!object->ngonEdges.empty())
    object->ngonEdges.resize(size_t(vcnt));
  return 1;
}

int32_t* GetPolygonTranslationMap(const PolygonObject* self, int32_t* ngons) {
  const auto* object = As<PolygonObject>(self);
  if (!object || !ngons) return nullptr;
  const Ngons all(*object);
  auto* map = AllocItems<int32_t>(all.of.size());
  std::copy(all.of.begin(), all.of.end(), map);
  *ngons = int32_t(all.sizes.size());
  return map;
}

int32_t* GetNGonTranslationMap(const PolygonObject* self, int32_t ngons, const int32_t* polymap,
                               int32_t* words) {
  const auto* object = As<PolygonObject>(self);
  if (!object || !words) return nullptr;
  const auto polygons = object->Polygons().size();
  if (ngons < 0 || size_t(ngons) > polygons || (polygons > 0 && !polymap)) return nullptr;
  const auto isNgon = [&](size_t i) { return polymap[i] >= 0 && polymap[i] < ngons; };
  std::vector<int32_t> sizes(static_cast<size_t>(ngons));
  size_t total = sizes.size();
  for (size_t i = 0; i < polygons; ++i)
    if (isNgon(i)) ++sizes[size_t(polymap[i])], ++total;
  std::vector<int32_t*> next;
  next.reserve(sizes.size());
  auto* map = AllocItems<int32_t>(total);
  int32_t* at = map;
  for (int32_t size : sizes) {
    *at++ = size;
    next.push_back(at);
    at += size;
  }
  for (size_t i = 0; i < polygons; ++i)
    if (isNgon(i)) *next[size_t(polymap[i])]++ = int32_t(i);
  *words = int32_t(total);
  return map;
}

int32_t GetNgonCount(const PolygonObject* self) {
  const auto* object = As<PolygonObject>(self);
  if (!object) return 0;
  const Ngons all(*object);
  return int32_t(std::count_if(all.sizes.begin(), all.sizes.end(), [](int32_t size) { return size > 1; }));
}

HostBool GetSelectedNgons(const PolygonObject* self, BaseSelect* sel) {
  const auto* object = As<PolygonObject>(self);
  return object && sel ? SelectNgons(*object, object->selectedPolygons, *sel) : 0;
}

HostBool GetHiddenNgons(const PolygonObject* self, BaseSelect* sel) {
  const auto* object = As<PolygonObject>(self);
  return object && sel ? SelectNgons(*object, object->hiddenPolygons, *sel) : 0;
}

uint8_t* GetNgonEdgesCompact(const PolygonObject* self) {
  const auto* object = As<PolygonObject>(self);
  if (!object) return nullptr;
  const auto polygons = object->polygons.Count();
  auto* edges = AllocItems<uint8_t>(size_t(polygons));
  for (int32_t i = 0; i < polygons; ++i) edges[i] = InnerEdges(*object, i);
  return edges;
}

HostBool SetNgonEdges(PolygonObject* self, const uint8_t* edges, int32_t count) {
  auto* object = As<PolygonObject>(self);
  if (!object || count != object->polygons.Count() || (count > 0 && !edges)) return 0;
  std::vector<uint8_t> own(edges, edges + count);
  for (uint8_t& bits : own) bits &= 15;
  object->ngonEdges.swap(own);
  Touch(*object, DIRTYFLAGS_DATA);
  return 1;
}

}  // namespace host::polygonobject
