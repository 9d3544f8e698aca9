// What scripts send to elements: dictionaries and objects as the host's message structures.

#include "scene/messages.h"

#include <cstddef>
#include <deque>
#include <span>
#include <utility>
#include <vector>

#include "bitmaps/bitmaps.h"
#include "kelvar.framework/source/tables/t_messages.h"
#include "kelvar/descid.h"
#include "kit/i_conversion.h"
#include "kit/i_row.h"
#include "scene/scene.h"
#include "values/values.h"

namespace qlx {
namespace {

constexpr const char* kFunction = "QLXAtom.Message";

// What a key of the dictionary is in the structure.
enum class Kind { kInt, kBool, kFloat, kDescID, kNode, kDocument, kContainer, kFilename };

enum Use { kIn = 1, kOut = 2, kBoth = 3 };

struct Field {
  const char* key;
  Kind kind;
  size_t offset;
  Use use;
};

// Keeps what a structure points at until the message is over, also where a script's code ends it meanwhile.
class Kept {
 public:
  Kept() = default;
  Kept(const Kept&) = delete;
  Kept& operator=(const Kept&) = delete;
  ~Kept() {
    for (HostLink& link : pins_) {
      kelvar::UnpinLink(link);
      kelvar::FreeLink(&link);
    }
    for (PyObject* object : objects_) Py_DECREF(object);
  }

  // Null with an exception when the element has gone.
  template <class Host>
  Host* Pin(PyObject* wrapper) {
    Host* host;
    if (!Present<Host>::Get(wrapper, host)) return nullptr;
    HostLink link{};
    pins_.reserve(pins_.size() + 1);
    if (!host->SetLink(&link) || !kelvar::PinLink(link)) {
      kelvar::FreeLink(&link);
      PyErr_NoMemory();
      return nullptr;
    }
    pins_.push_back(link);
    return host;
  }

  void Hold(PyObject* object) {
    objects_.push_back(object);
    Py_INCREF(object);
  }

  std::deque<DescID> ids;
  std::deque<Filename> names;
  std::vector<int32_t> map;

 private:
  std::vector<HostLink> pins_;
  std::vector<PyObject*> objects_;
};

template <class Member>
Member& At(std::byte* data, size_t offset) {
  return *reinterpret_cast<Member*>(data + offset);
}

bool Refuse(const char* expected, PyObject* value) {
  RaiseExpectedTypeFor(kFunction, expected, value);
  return false;
}

bool ReadDescIDItem(PyObject* value, HostDescID& word, Kept& kept) {
  if (!IsDescID(value)) return Refuse(g_DescIDType.tp_name, value);
  kept.ids.push_back(ValueOf<DescID>(value));
  word = kept.ids.back().Word();
  return true;
}

template <class Host>
bool ReadHost(PyObject* value, Host*& host, Kept& kept) {
  if (value == Py_None) return true;
  if (!PyObject_TypeCheck(value, &Present<Host>::Type())) return Refuse(Present<Host>::Type().tp_name, value);
  return (host = kept.Pin<Host>(value)) != nullptr;
}

bool ReadFloat(PyObject* value, double& number) {
  if (!PyFloat_Check(value) && !PyLong_Check(value)) return Refuse("float", value);
  number = PyFloat_AsDouble(value);
  return number != -1 || !PyErr_Occurred();
}

bool ReadItem(PyObject* value, const Field& field, std::byte* data, Kept& kept) {
  switch (field.kind) {
    case Kind::kInt:
      return PyLong_Check(value) ? ReadInt32(value, At<int32_t>(data, field.offset)) : Refuse("int", value);
    case Kind::kBool:
      if (!PyLong_Check(value)) return Refuse("bool", value);
      At<HostBool>(data, field.offset) =
          value != Py_False && !(PyLong_CheckExact(value) && _PyLong_Sign(value) == 0);
      return true;
    case Kind::kFloat:
      return ReadFloat(value, At<double>(data, field.offset));
    case Kind::kDescID:
      return ReadDescIDItem(value, At<HostDescID>(data, field.offset), kept);
    case Kind::kNode:
      return ReadHost(value, At<BaseList2D*>(data, field.offset), kept);
    case Kind::kDocument:
      return ReadHost(value, At<BaseDocument*>(data, field.offset), kept);
    case Kind::kContainer: {
      if (value == Py_None) return true;
      if (!IsBaseContainer(value)) return Refuse(g_BaseContainerType.tp_name, value);
      kept.Hold(value);
      return (At<BaseContainer*>(data, field.offset) = BaseContainerOf(value)) != nullptr;
    }
    case Kind::kFilename:
      if (!PyUnicode_Check(value)) return Refuse("str", value);
      kept.names.push_back(Filename::FromString(StringFromPython(value)));
      At<HostFilename>(data, field.offset) = *kept.names.back().Word();
      return true;
  }
  return false;
}

PyObject* NodeOrNone(QLXAtom* host) { return host ? WrapHostObject(host, false) : NewNone(); }

PyObject* ItemToPython(const Field& field, std::byte* data) {
  switch (field.kind) {
    case Kind::kInt:
      return ToPython(At<int32_t>(data, field.offset));
    case Kind::kBool:
      return ToPython(At<HostBool>(data, field.offset) != 0);
    case Kind::kFloat:
      return ToPython(At<double>(data, field.offset));
    case Kind::kDescID:
      return NewDescID(DescID::Copy(At<HostDescID>(data, field.offset)));
    case Kind::kNode:
      return NodeOrNone(At<BaseList2D*>(data, field.offset));
    case Kind::kDocument:
      return NodeOrNone(At<BaseDocument*>(data, field.offset));
    case Kind::kContainer: {
      const BaseContainer* container = At<BaseContainer*>(data, field.offset);
      return container ? NewContainerCopy(*container) : NewNone();
    }
    case Kind::kFilename:
      return ToPython(Filename::Adopt(tables::filename.Copy(&At<HostFilename>(data, field.offset))));
  }
  return nullptr;
}

bool Store(PyObject* dictionary, const char* key, PyObject* value) {
  const bool stored = value && PyDict_SetItemString(dictionary, key, value) == 0;
  Py_XDECREF(value);
  return stored;
}

// What a message does beside its fields, ahead of the call and behind it; false with an exception.
using Step = bool (*)(PyObject* dictionary, std::byte* data, Kept& kept);

bool ReadPointMap(PyObject* dictionary, std::byte* data, Kept& kept) {
  PyObject* map = PyDict_GetItemString(dictionary, "map");
  if (!map) return true;
  if (!PyList_Check(map)) return Refuse("list", map);
  for (Py_ssize_t i = 0; i < PyList_GET_SIZE(map); ++i) {
    PyObject* item = PyList_GET_ITEM(map, i);
    if (!PyLong_Check(item)) return Refuse("int", item);
    if (!ReadInt32(item, kept.map.emplace_back())) return false;
  }
  auto& message = At<HostPointsChanged>(data, 0);
  message.map = kept.map.data();
  message.mapCount = int32_t(kept.map.size());
  return true;
}

template <class Item>
bool StoreList(PyObject* dictionary, const char* key, const Item* items, int32_t count) {
  PyObject* list = PyList_New(0);
  for (int32_t i = 0; list && items && i < count; ++i) {
    PyObject* item = ToPython(items[i]);
    if (!item || PyList_Append(list, item) < 0) Py_CLEAR(list);
    Py_XDECREF(item);
  }
  return Store(dictionary, key, list);
}

bool StorePointMap(PyObject* dictionary, std::byte* data, Kept&) {
  const auto& message = At<HostPointsChanged>(data, 0);
  return StoreList(dictionary, "map", message.map, message.mapCount);
}

bool StoreWeights(PyObject* dictionary, std::byte* data, Kept&) {
  const auto& message = At<HostWeights>(data, 0);
  return StoreList(dictionary, "_weight", message.weight, message.count);
}

bool ReadBitmapID(PyObject* dictionary, std::byte* data, Kept& kept) {
  PyObject* id = PyDict_GetItemString(dictionary, "id");
  if (!id) return true;
  auto& word = At<HostDescriptionBitmap>(data, 0).id;
  if (!PyLong_Check(id)) return ReadDescIDItem(id, word, kept);
  DescLevel level{};
  if (!ReadInt32(id, level.id)) return false;
  kept.ids.emplace_back().PushId(level);
  word = kept.ids.back().Word();
  return true;
}

bool StoreBitmap(PyObject* dictionary, std::byte* data, Kept&) {
  BaseBitmap* bmp = At<HostDescriptionBitmap>(data, 0).bmp;
  return Store(dictionary, "bmp", bmp ? Present<BaseBitmap>::Wrap(bmp, true) : NewNone());  // the script's
}

// The picture that the receiver is to draw upon: 32 by 32 pixels of 24 bits.
bool MakeIcon(PyObject* dictionary, std::byte* data, Kept& kept) {
  BaseBitmap* bmp = BaseBitmap::Alloc();
  if (!bmp || bmp->Init(32, 32, 24, 0) != 1) {
    if (bmp) bmp->Free();
    PyErr_NoMemory();
    return false;
  }
  PyObject* wrapper = Present<BaseBitmap>::Wrap(bmp, true);  // the dictionary's
  if (!wrapper) return false;
  kept.Hold(wrapper);
  At<HostCustomIcon>(data, 0).icon = {bmp, 0, 0, 32, 32};
  return Store(dictionary, "bmp", wrapper);
}

bool StoreIcon(PyObject* dictionary, std::byte* data, Kept&) {
  const HostIcon& icon = At<HostCustomIcon>(data, 0).icon;
  PyObject* known = PyDict_GetItemString(dictionary, "bmp");
  BaseBitmap* own = nullptr;
  if (known && PyObject_TypeCheck(known, &g_BaseBitmapType))
    own = static_cast<BaseBitmap*>(LookUp(reinterpret_cast<AtomWrapper*>(known)->link));
  if (icon.bmp != own &&
      !Store(dictionary, "bmp", icon.bmp ? Present<BaseBitmap>::Wrap(icon.bmp, false) : NewNone()))
    return false;
  return Store(dictionary, "x", ToPython(icon.x)) && Store(dictionary, "y", ToPython(icon.y)) &&
         Store(dictionary, "w", ToPython(icon.w)) && Store(dictionary, "h", ToPython(icon.h));
}

bool PresetScale(PyObject*, std::byte* data, Kept&) {
  At<HostScaleFactor>(data, 0).scale = 1;
  return true;
}

constexpr Field kPointsChanged[] = {
    {"old_cnt", Kind::kInt, offsetof(HostPointsChanged, oldCount), kBoth},
    {"new_cnt", Kind::kInt, offsetof(HostPointsChanged, newCount), kBoth},
    {"vc_flags", Kind::kInt, offsetof(HostPointsChanged, flags), kBoth},
};
constexpr Field kDrag[] = {
    {"doc", Kind::kDocument, offsetof(HostDescriptionDrag, document), kIn},
    {"drawflags", Kind::kInt, offsetof(HostDescriptionDrag, flags), kIn},
    {"descid", Kind::kDescID, offsetof(HostDescriptionDrag, id), kIn},
};
constexpr Field kDescription[] = {{"id", Kind::kDescID, offsetof(HostDescriptionMessage, id), kBoth}};
constexpr Field kPrivateData[] = {{"imexporter", Kind::kNode, offsetof(HostPrivateData, node), kOut}};
constexpr Field kBitmap[] = {{"bmpflags", Kind::kInt, offsetof(HostDescriptionBitmap, flags), kIn}};
constexpr Field kTextureInfo[] = {
    {"external", Kind::kBool, offsetof(HostTextureInfo, external), kBoth},
    {"start", Kind::kFloat, offsetof(HostTextureInfo, start), kBoth},
    {"animated", Kind::kBool, offsetof(HostTextureInfo, animated), kBoth},
};
constexpr Field kFileFormat[] = {
    {"type", Kind::kInt, offsetof(HostFileFormat, type), kBoth},
    {"fileformat", Kind::kInt, offsetof(HostFileFormat, format), kBoth},
    {"filename", Kind::kFilename, offsetof(HostFileFormat, name), kBoth},
};
constexpr Field kIcon[] = {{"filled", Kind::kBool, offsetof(HostCustomIcon, filled), kOut}};
constexpr Field kAnswer[] = {{"res", Kind::kNode, offsetof(HostObjectAnswer, object), kOut}};
constexpr Field kManagerCommand[] = {
    {"command_id", Kind::kInt, offsetof(HostManagerCommand, command), kBoth},
    {"managergroup", Kind::kInt, offsetof(HostManagerCommand, group), kBoth},
    {"parentid", Kind::kInt, offsetof(HostManagerCommand, parent), kBoth},
};
constexpr Field kPopup[] = {
    {"id", Kind::kDescID, offsetof(HostDescriptionPopup, id), kBoth},
    {"chosen", Kind::kInt, offsetof(HostDescriptionPopup, chosen), kBoth},
    {"popup", Kind::kContainer, offsetof(HostDescriptionPopup, popup), kBoth},
};
constexpr Field kScale[] = {{"scale", Kind::kFloat, offsetof(HostScaleFactor, scale), kBoth}};
constexpr Field kTakeOverride[] = {
    {"_overrideTake", Kind::kNode, offsetof(HostTakeOverride, overrideTake), kIn},
    {"_descId", Kind::kDescID, offsetof(HostTakeOverride, id), kIn},
    {"_parent", Kind::kNode, offsetof(HostTakeOverride, parent), kBoth},
    {"_parentId", Kind::kDescID, offsetof(HostTakeOverride, parentId), kOut},
    {"_allow", Kind::kBool, offsetof(HostTakeOverride, allow), kOut},
    {"_overrideEnabled", Kind::kBool, offsetof(HostTakeOverride, overrideEnabled), kOut},
};

struct Form {
  int32_t id;
  std::span<const Field> fields;
  Step before = nullptr;
  Step after = nullptr;
};

const Form kForms[] = {
    {HOST_MSG_POINTS_CHANGED, kPointsChanged, ReadPointMap, StorePointMap},
    {HOST_MSG_DRAG, kDrag},
    {HOST_MSG_DESCRIPTION_CHECKUPDATE, kDescription},
    {HOST_MSG_DESCRIPTION_VALIDATE, kDescription},
    {HOST_MSG_DESCRIPTION_COMMAND, kDescription},
    {HOST_MSG_RETRIEVE_PRIVATE_DATA, kPrivateData},
    {HOST_MSG_DESCRIPTION_BITMAP, kBitmap, ReadBitmapID, StoreBitmap},
    {HOST_MSG_RENAME_TEXTURES, kTextureInfo},
    {HOST_MSG_FILE_FORMAT, kFileFormat},
    {HOST_MSG_GET_CUSTOM_ICON, kIcon, MakeIcon, StoreIcon},
    {HOST_MSG_GET_REAL_OBJECT, kAnswer},
    {HOST_MSG_GET_VISIBLE_OBJECT, kAnswer},
    {HOST_MSG_MANAGER_COMMAND, kManagerCommand},
    {HOST_MSG_DESCRIPTION_POPUP, kPopup},
    {HOST_MSG_SCALE_FACTOR, kScale, PresetScale},
    {HOST_MSG_TAKE_OVERRIDE, kTakeOverride},
    {HOST_MSG_WEIGHTS, {}, nullptr, StoreWeights},
};

// One message to one element: to it alone, or by `flags` to others too.
struct Call {
  AtomWrapper* self;
  int32_t type;
  bool isMulti;
  int32_t flags;

  // What the data's own code may have destroyed is looked up again.
  bool Send(int32_t id, const void* data, bool& answered) const {
    QLXAtom* host;
    if (!ResolveAtom(self, host)) return false;
    void* words = const_cast<void*>(data);
    answered = isMulti ? host->MultiMessage(flags, id, words) : host->Message(id, words);
    return true;
  }

  PyObject* Answer(const void* data) const {
    bool answered = false;
    return Send(type, data, answered) ? ToPython(answered) : nullptr;
  }
};

PyObject* SendForm(const Call& call, const Form& form, PyObject* dictionary) {
  if (!PyDict_Check(dictionary)) return Refuse("dict", dictionary), nullptr;
  alignas(std::max_align_t) std::byte data[128] = {};
  static_assert(sizeof(HostTakeOverride) <= sizeof data && sizeof(HostDescriptionPopup) <= sizeof data);
  Kept kept;
  if (form.before && !form.before(dictionary, data, kept)) return nullptr;
  for (const Field& field : form.fields) {
    PyObject* item = field.use & kIn ? PyDict_GetItemString(dictionary, field.key) : nullptr;
    if (!item) continue;
    kept.Hold(item);
    if (!ReadItem(item, field, data, kept)) return nullptr;
  }
  // A drag is one of a parameter.
  if (form.id == HOST_MSG_DRAG && At<HostDescriptionDrag>(data, 0).id.depth == 0) return ToPython(false);
  bool answered = false;
  if (!call.Send(form.id, data, answered)) return nullptr;
  for (const Field& field : form.fields)
    if (field.use & kOut && !Store(dictionary, field.key, ItemToPython(field, data))) return nullptr;
  if (form.after && !form.after(dictionary, data, kept)) return nullptr;
  return ToPython(answered);
}

PyObject* SendDocument(const Call& call, PyObject* document) {
  BaseDocument* host = nullptr;
  Kept kept;
  if (document != Py_None) {
    if (!PyObject_TypeCheck(document, &g_BaseDocumentType)) {
      RaiseExpectedTypeFor(kFunction, "qlx.documents.BaseDocument or None", document);
      return nullptr;
    }
    host = kept.Pin<BaseDocument>(document);
    if (!host) return nullptr;
  }
  return call.Answer(host);
}

PyObject* SendContainer(const Call& call, PyObject* container) {
  if (!IsBaseContainer(container)) return Refuse(g_BaseContainerType.tp_name, container), nullptr;
  BaseContainer* host = BaseContainerOf(container);
  return host ? call.Answer(host) : nullptr;
}

// A value of the host's where there is one, else the object itself, which the element is told ahead.
PyObject* SendAny(const Call& call, PyObject* object) {
  GeData data;
  if (GeDataFromPython(object, data)) return call.Answer(data.Data());
  PyErr_Clear();
  const HostBool isObject = 1;
  bool ignored;
  return call.Send(HOST_MSG_PYTHON_DATA, &isObject, ignored) ? call.Answer(object) : nullptr;
}

// Messages whose structures hold what has no Python type yet.
bool HasNoForm(int32_t type) { return type == 1021339 || type == 1041699; }

PyObject* Send(const Call& call, PyObject* data) {
  if (!data) return call.Answer(nullptr);
  if (call.type == HOST_MSG_EDIT) return SendContainer(call, data);
  if (call.type == HOST_MSG_DOCUMENT_INFO) return SendDocument(call, data);
  if (HasNoForm(call.type)) return ToPython(false);
  for (const Form& form : kForms) {
    if (form.id != call.type) continue;
    if (form.id == HOST_MSG_RETRIEVE_PRIVATE_DATA) {
      const int32_t kind = static_cast<QLXAtom*>(LookUp(call.self->link))->GetType();
      if (kind != PLUGIN_KIND_SCENE_LOADER && kind != PLUGIN_KIND_SCENE_SAVER) return ToPython(true);
    }
    return SendForm(call, form, data);
  }
  return SendAny(call, data);
}

}  // namespace

PyObject* Message(AtomWrapper* self, int32_t type, PyObject* data) {
  return Send({self, type, false, 0}, data);
}

PyObject* MultiMessage(AtomWrapper* self, int32_t flags, int32_t type, PyObject* data) {
  return Send({self, type, true, flags}, data);
}

}  // namespace qlx
