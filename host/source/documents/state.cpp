// The settings of a document. Most are parameters of it, so that copies and files have them.

#include <algorithm>
#include <cmath>

#include "app/event_queue.h"
#include "boundary/host.h"
#include "documents/documents.h"
#include "kelvar/basetime.h"

// What it links, such as the target, is among its parameters.
void BaseDocument::CopyOwn(BaseList2D& to) const {
  auto& copy = static_cast<BaseDocument&>(to);
  copy.folder = folder;
  copy.settings = settings;
  copy.isChanged = isChanged;
}

namespace host {
namespace {

enum Parameter : int32_t {
  kMinTime = 1000,
  kMaxTime,
  kLoopMinTime,
  kLoopMaxTime,
  kTime,
  kFps,
  kLevelOfDetail = 1011,
  kRenderLevelOfDetail,
  kMode,
  kAction,
  kTarget,
  kSplinePlane
};

constexpr int32_t kMostFps = 2500;

// What is missing, or was replaced by a value of another type, is the default; null for no document.
const HostGeData* Find(const BaseDocument* document, int32_t id, int32_t type) {
  if (!As<BaseDocument>(document)) return nullptr;
  const HostGeData* data = container::FindData(&document->data, id);
  if (!data || data->type != type) data = container::FindData(&document->type.defaults, id);
  return data && data->type == type ? data : nullptr;
}

void Store(BaseDocument* document, int32_t id, const HostGeData& value) {
  if (As<BaseDocument>(document)) container::SetData(&document->data, id, &value);
}

int32_t Integer(const BaseDocument* document, int32_t id, int32_t fallback) {
  const HostGeData* data = Find(document, id, HOST_DATA_INT32);
  return data ? int32_t(data->value.integer) : fallback;
}

void StoreInteger(BaseDocument* document, int32_t id, int32_t value) {
  Store(document, id, {HOST_DATA_INT32, 0, {.integer = value}});
}

double Fraction(const BaseDocument* document, int32_t id) {
  const HostGeData* data = Find(document, id, HOST_DATA_FLOAT);
  return data ? data->value.real : 1;
}

void StoreFraction(BaseDocument* document, int32_t id, double value) {
  Store(document, id, {HOST_DATA_FLOAT, 0, {.real = std::isnan(value) ? 1 : std::clamp(value, 0.0, 1.0)}});
}

// What is no number is at the start.
BaseTime NumberOf(const BaseTime& time) { return std::isnan(kelvar::Seconds(time)) ? BaseTime{0, 1} : time; }

BaseTime TimeOf(const BaseDocument* document, int32_t id) {
  const HostGeData* data = Find(document, id, HOST_DATA_TIME);
  return data ? NumberOf(data->value.time) : BaseTime{0, 1};
}

void StoreTime(BaseDocument* document, int32_t id, const BaseTime* time) {
  if (time) Store(document, id, {HOST_DATA_TIME, 0, {.time = NumberOf(*time)}});
}

// They are there from when they are asked for. Null for an unknown type.
BaseContainer* SettingsOf(BaseDocument* document, int32_t type) {
  if (!As<BaseDocument>(document)) return nullptr;
  if (type == DOCUMENTSETTINGS_GENERAL) return &document->data;
  if (type < DOCUMENTSETTINGS_MODELING || type > DOCUMENTSETTINGS_TOOLS) return nullptr;
  return &document->settings.try_emplace(type, type).first->second;
}

// Puts the settings in place of those that are there; who looks at them is told by their count of changes.
void Replace(BaseContainer& settings, const BaseContainer& by) {
  if (&settings != &by) container::CopyTo(&by, &settings, 0);
}

}  // namespace
}  // namespace host

namespace host::document {

int32_t GetFps(const BaseDocument* self) {
  return std::clamp(Integer(self, kFps, 30), 1, kMostFps);  // settings take any number
}
void SetFps(BaseDocument* self, int32_t value) { StoreInteger(self, kFps, std::clamp(value, 1, kMostFps)); }

double GetLOD(const BaseDocument* self) { return Fraction(self, kLevelOfDetail); }
void SetLOD(BaseDocument* self, double value) { StoreFraction(self, kLevelOfDetail, value); }

double GetRenderLod(const BaseDocument* self) { return Fraction(self, kRenderLevelOfDetail); }
void SetRenderLod(BaseDocument* self, double value) { StoreFraction(self, kRenderLevelOfDetail, value); }

int32_t GetMode(const BaseDocument* self) { return Integer(self, kMode, MODE_OBJECT); }
void SetMode(BaseDocument* self, int32_t value) { StoreInteger(self, kMode, value); }

int32_t GetAction(const BaseDocument* self) { return Integer(self, kAction, 0); }
void SetAction(BaseDocument* self, int32_t value) { StoreInteger(self, kAction, value); }

BaseTime GetTime(const BaseDocument* self) { return TimeOf(self, kTime); }
void SetTime(BaseDocument* self, const BaseTime* time) { StoreTime(self, kTime, time); }

BaseTime GetMinTime(const BaseDocument* self) { return TimeOf(self, kMinTime); }
void SetMinTime(BaseDocument* self, const BaseTime* time) { StoreTime(self, kMinTime, time); }

BaseTime GetMaxTime(const BaseDocument* self) { return TimeOf(self, kMaxTime); }
void SetMaxTime(BaseDocument* self, const BaseTime* time) { StoreTime(self, kMaxTime, time); }

BaseTime GetLoopMinTime(const BaseDocument* self) { return TimeOf(self, kLoopMinTime); }
void SetLoopMinTime(BaseDocument* self, const BaseTime* time) { StoreTime(self, kLoopMinTime, time); }

BaseTime GetLoopMaxTime(const BaseDocument* self) { return TimeOf(self, kLoopMaxTime); }
void SetLoopMaxTime(BaseDocument* self, const BaseTime* time) { StoreTime(self, kLoopMaxTime, time); }

int32_t GetSplinePlane(const BaseDocument* self) { return Integer(self, kSplinePlane, 0); }

void SetRewind(BaseDocument* self, int32_t /*flags*/) {
  const BaseTime start = GetMinTime(self);
  SetTime(self, &start);
}

void SetDocumentTime(BaseDocument* self, const BaseTime* time) {
  SetTime(self, time);
  GetEventQueue().AddRefresh(0);
}

HostBool GetChanged(const BaseDocument* self) { return As<BaseDocument>(self) && self->isChanged; }
void SetChanged(BaseDocument* self) {
  if (As<BaseDocument>(self)) self->isChanged = true;
}

HostBool IsEditMode(const BaseDocument* self) {
  const int32_t mode = GetMode(self);
  return mode == MODE_POINTS || mode == MODE_EDGES || mode == MODE_POLYGONS;
}

HostBool IsAxisEnabled(const BaseDocument* self) { return GetMode(self) == MODE_AXIS; }

HostFilename GetDocumentName(const BaseDocument* self) {
  return As<BaseDocument>(self) ? MakeFilename(self->name) : HostFilename{};
}
void SetDocumentName(BaseDocument* self, const HostFilename* name) {
  if (!As<BaseDocument>(self)) return;
  self->name = Text(View(name));
  Touch(*self, DIRTYFLAGS_DATA);
}

HostFilename GetDocumentPath(const BaseDocument* self) {
  return As<BaseDocument>(self) ? MakeFilename(self->folder) : HostFilename{};
}
void SetDocumentPath(BaseDocument* self, const HostFilename* path) {
  if (As<BaseDocument>(self)) self->folder = Text(View(path));
}

BaseContainer* GetDocumentData(const BaseDocument* self, int32_t type) {
  if (!As<BaseDocument>(self)) return nullptr;
  const auto* settings = SettingsOf(const_cast<BaseDocument*>(self), type == -1 ? 0 : type);
  auto data = std::make_unique<BaseContainer>(settings ? *settings : BaseContainer());
  if (type == DOCUMENTSETTINGS_ALL)
    for (const auto& [id, part] : self->settings)
      container::SetData(data.get(), id, &Value(std::make_unique<BaseContainer>(part)).Data());
  return data.release();
}

void SetDocumentData(BaseDocument* self, int32_t type, const BaseContainer* data) {
  if (!As<BaseDocument>(self) || !data) return;
  if (type != DOCUMENTSETTINGS_ALL) {
    if (BaseContainer* settings = SettingsOf(self, type)) Replace(*settings, *data);
    return;
  }
  BaseContainer general = *data;
  for (int32_t id = DOCUMENTSETTINGS_MODELING; id <= DOCUMENTSETTINGS_TOOLS; ++id) {
    const HostGeData* part = container::FindData(data, id);
    const BaseContainer* settings = part ? ContainerOf(*part) : nullptr;
    Replace(*SettingsOf(self, id), settings ? *settings : BaseContainer(id));
    container::RemoveData(&general, id);
  }
  Replace(self->data, general);
}

BaseContainer* GetSettingsInstance(BaseDocument* self, int32_t type) { return SettingsOf(self, type); }

BaseObject* GetTargetObject(const BaseDocument* self) {
  const HostGeData* data = Find(self, kTarget, HOST_DATA_LINK);
  auto* target = data ? As<BaseObject>(static_cast<QLXAtom*>(link::GetLink(data->value.link))) : nullptr;
  return target && IsInside(*target, *self) ? target : nullptr;
}

void SetTargetObject(BaseDocument* self, BaseObject* op) {
  HostGeData value{HOST_DATA_LINK, 0, {}};
  value.value.link = {};
  if (op) op->Link(value.value.link);
  Store(self, kTarget, value);
}

}  // namespace host::document
