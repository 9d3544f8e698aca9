// What scripts send to elements: dictionaries and objects as the host's message structures.

#include "scene/messages.h"

#include <deque>
#include <type_traits>
#include <utility>
#include <vector>

#include "kelvar.framework/source/tables/t_messages.h"
#include "kit/i_collections.h"
#include "kit/i_row.h"
#include "scene/geometry.h"

namespace qlx {
namespace {

constexpr const char* kFunction = "QLXAtom.Message";

// The items of a script's dictionary on their way into a message and back. They are fetched first, because a
// look-up may run the code of other keys; the message is made of what was fetched, and nothing of that runs
// code. The answers are made in a dictionary of their own, and stored when nothing of the message is needed.
class Items {
 public:
  enum Stage { kFetch, kRead, kWrite };

  explicit Items(PyObject* dictionary)
      : dictionary_(dictionary), fetched_(PyDict_New()), answers_(PyDict_New()) {
    ok_ = fetched_.Object() && answers_.Object();
  }
  Items(const Items&) = delete;
  Items& operator=(const Items&) = delete;
  ~Items() {
    for (HostLink& link : pins_) {
      kelvar::UnpinLink(link);
      kelvar::FreeLink(&link);
    }
    for (BaseContainer* copy : copies_) copy->Free();
    Py_XDECREF(fetched_.Object());
    Py_XDECREF(answers_.Object());
  }

  // False with an exception.
  template <class Message>
  bool Pass(Stage stage, Message& message) {
    stage_ = stage;
    if (ok_) Exchange(*this, message);
    return ok_;
  }
  bool StoreAnswers() { return PyDict_Update(dictionary_.Object(), answers_.Object()) == 0; }

  bool IsAt(Stage stage) const { return ok_ && stage_ == stage; }
  bool Has(const char* key) const { return PyDict_GetItemString(fetched_.Object(), key) != nullptr; }
  void Fail() { ok_ = false; }

  // What a script gives, what it is answered, and both.
  template <class T>
  void In(const char* key, T& value) {
    if (IsAt(kFetch)) ok_ = Fetch(key, std::is_pointer_v<T>);
    if (IsAt(kRead)) ok_ = Read(key, value);
  }
  template <class T>
  void Out(const char* key, const T& value) {
    if (IsAt(kWrite)) ok_ = answers_.Set(key, value);
  }
  template <class T>
  void Both(const char* key, T& value) {
    In(key, value);
    Out(key, value);
  }
  void Flag(const char* key, HostBool& word) {
    bool value = word;
    Both(key, value);
    word = value;
  }
  // An id that may be a number.
  void InIdOrNumber(const char* key, HostDescID& id) {
    if (IsAt(kFetch)) ok_ = Fetch(key, false);
    if (!IsAt(kRead)) return;
    PyObject* item = PyDict_GetItemString(fetched_.Object(), key);
    DescLevel level{};
    if (!item || !PyLong_Check(item)) {
      ok_ = Read(key, id);
    } else if ((ok_ = ReadInt32(item, level.id))) {
      ids_.emplace_back().PushId(level);
      id = ids_.back().Word();
    }
  }

 private:
  // A host object may be None.
  bool Fetch(const char* key, bool orNone) {
    PyObject* item;
    const Lookup found = dictionary_.Get(key, item);
    if (found != kFound) return found == kMissing;
    const bool stored = (orNone && item == Py_None) || fetched_.Set(key, item);
    Py_DECREF(item);
    return stored;
  }

  template <class T>
  bool Read(const char* key, T& value) const {
    return fetched_.Get(key, value) != kRefused;
  }
  bool Read(const char* key, HostDescID& word) {
    DescID id;
    const Lookup found = fetched_.Get(key, id);
    if (found == kFound) word = ids_.emplace_back(std::move(id)).Word();
    return found != kRefused;
  }
  bool Read(const char* key, HostFilename& word) const {
    Filename name;
    const Lookup found = fetched_.Get(key, name);
    if (found == kFound) word = tables::filename.Copy(name.Word());
    return found != kRefused;
  }
  // A script's own container stays with the dictionary, and that of an element with the element; the view of an
  // entry is copied, because the entry may go during the call.
  bool Read(const char* key, BaseContainer*& container) {
    const Lookup found = fetched_.Get(key, container);
    if (found != kFound) return found == kMissing;
    const auto* record = reinterpret_cast<ContainerRecord*>(PyDict_GetItemString(fetched_.Object(), key));
    if (record->owned) return true;
    auto* owner = static_cast<QLXAtom*>(LookUp(record->hostLink));
    return owner && !record->parent ? Pin(owner) : Copy(container);
  }
  bool Read(const char* key, BaseList2D*& node) { return ReadNode(key, node); }
  bool Read(const char* key, BaseDocument*& node) { return ReadNode(key, node); }

  template <class Host>
  bool ReadNode(const char* key, Host*& host) {
    const Lookup found = fetched_.Get(key, host);
    return found == kFound ? Pin(host) : found == kMissing;
  }

  // The memory of an element stays until the message is over, also where the receiver destroys it.
  bool Pin(QLXAtom* host) {
    HostLink link{};
    pins_.reserve(pins_.size() + 1);
    if (!host->SetLink(&link) || !kelvar::PinLink(link)) {
      kelvar::FreeLink(&link);
      PyErr_NoMemory();
      return false;
    }
    pins_.push_back(link);
    return true;
  }

  bool Copy(BaseContainer*& container) {
    copies_.reserve(copies_.size() + 1);
    container = container->GetClone();
    if (!container) return PyErr_NoMemory(), false;
    copies_.push_back(container);
    return true;
  }

  PyDictRef dictionary_, fetched_, answers_;
  Stage stage_ = kFetch;
  bool ok_;
  std::deque<DescID> ids_;
  std::vector<HostLink> pins_;
  std::vector<BaseContainer*> copies_;
};

// Each message: the items of its dictionary. Lists come last, since making one may run code.

struct PointsChanged : HostPointsChanged {
  std::vector<int32_t> read;
};

void Exchange(Items& items, PointsChanged& message) {
  items.Both("old_cnt", message.oldCount);
  items.Both("new_cnt", message.newCount);
  items.Both("vc_flags", message.flags);
  items.In("map", message.read);
  if (items.IsAt(Items::kRead)) {
    message.map = message.read.data();
    message.mapCount = int32_t(message.read.size());
  }
  if (items.IsAt(Items::kWrite))
    items.Out("map", std::vector<int32_t>(message.map, message.map + (message.map ? message.mapCount : 0)));
}

void Exchange(Items& items, HostDescriptionDrag& message) {
  items.In("doc", message.document);
  items.In("drawflags", message.flags);
  items.In("descid", message.id);
}

void Exchange(Items& items, HostDescriptionMessage& message) { items.Both("id", message.id); }

void Exchange(Items& items, HostPrivateData& message) { items.Out("imexporter", message.node); }

struct DescriptionBitmap : HostDescriptionBitmap {
  ~DescriptionBitmap() {
    if (bmp) bmp->Free();
  }
};

void Exchange(Items& items, DescriptionBitmap& message) {
  items.InIdOrNumber("id", message.id);
  items.In("bmpflags", message.flags);
  if (!items.IsAt(Items::kWrite)) return;
  BaseBitmap* bmp = std::exchange(message.bmp, nullptr);
  PyObject* wrapper = bmp ? Present<BaseBitmap>::Wrap(bmp, true) : NewNone();  // the script's
  if (!wrapper) return items.Fail();
  items.Out("bmp", wrapper);
  Py_DECREF(wrapper);
}

void Exchange(Items& items, HostTextureInfo& message) {
  items.Flag("external", message.external);
  items.Both("start", message.start);
  items.Flag("animated", message.animated);
}

// The receiver may have put another name there.
struct FileFormat : HostFileFormat {
  ~FileFormat() { tables::filename.Destroy(&name); }
};

void Exchange(Items& items, FileFormat& message) {
  items.Both("type", message.type);
  items.Both("fileformat", message.format);
  items.Both("filename", message.name);
}

struct CustomIcon : HostCustomIcon {
  PyObject* wrapper;  // of the picture that the receiver is to draw upon
  BaseBitmap* own;
  ~CustomIcon() { Py_XDECREF(wrapper); }
};

// 32 by 32 pixels of 24 bits; false with an exception.
bool MakeIcon(CustomIcon& message) {
  BaseBitmap* bmp = BaseBitmap::Alloc();
  if (!bmp || bmp->Init(32, 32, 24, 0) != 1) {
    if (bmp) bmp->Free();
    PyErr_NoMemory();
    return false;
  }
  message.icon = {bmp, 0, 0, 32, 32};
  message.own = bmp;
  return (message.wrapper = Present<BaseBitmap>::Wrap(bmp, true)) != nullptr;  // the wrapper frees it
}

void Exchange(Items& items, CustomIcon& message) {
  if (items.IsAt(Items::kRead) && !MakeIcon(message)) return items.Fail();
  const HostIcon& icon = message.icon;
  items.Out("filled", message.filled != 0);
  if (icon.bmp == message.own)
    items.Out("bmp", message.wrapper);
  else
    items.Out("bmp", icon.bmp);
  items.Out("x", icon.x);
  items.Out("y", icon.y);
  items.Out("w", icon.w);
  items.Out("h", icon.h);
}

struct SelectionAnswer : HostSelectionAnswer {
  ~SelectionAnswer() {
    if (sel) sel->Free();
  }
};

void Exchange(Items& items, SelectionAnswer& message) {
  if (!items.IsAt(Items::kWrite)) return;
  BaseSelect* sel = std::exchange(message.sel, nullptr);
  PyObject* wrapper = sel ? Present<BaseSelect>::Wrap(sel, true) : NewNone();  // the script's
  if (!wrapper) return items.Fail();
  items.Out("sel", wrapper);
  Py_DECREF(wrapper);
}

struct IconSettings : HostIconSettings {
  ~IconSettings() { Filename::Adopt(file); }  // ends it
};

void Exchange(Items& items, IconSettings& message) {
  if (!items.IsAt(Items::kWrite)) return;
  PyObject* wrapper = NewIconSettings(message);
  if (!wrapper) return items.Fail();
  items.Out("setting", wrapper);
  Py_DECREF(wrapper);
}

void Exchange(Items& items, HostObjectAnswer& message) { items.Out("res", message.object); }

void Exchange(Items& items, HostManagerCommand& message) {
  items.Both("command_id", message.command);
  items.Both("managergroup", message.group);
  items.Both("parentid", message.parent);
}

void Exchange(Items& items, HostDescriptionPopup& message) {
  items.Both("id", message.id);
  items.Both("chosen", message.chosen);
  items.Both("popup", message.popup);
}

struct ScaleFactor : HostScaleFactor {
  ScaleFactor() : HostScaleFactor{1} {}
};

void Exchange(Items& items, ScaleFactor& message) { items.Both("scale", message.scale); }

void Exchange(Items& items, HostTakeOverride& message) {
  items.In("_takeData", message.takeData);
  items.In("_overrideTake", message.overrideTake);
  items.In("_descId", message.id);
  items.Both("_parent", message.parent);
  items.Out("_parentId", message.parentId);
  items.Out("_allow", message.allow != 0);
  items.Out("_overrideEnabled", message.overrideEnabled != 0);
}

void Exchange(Items& items, HostWeights& message) {
  if (items.IsAt(Items::kWrite))
    items.Out("_weight",
              std::vector<double>(message.weight, message.weight + (message.weight ? message.count : 0)));
}

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

PyObject* Refuse(const char* expected, PyObject* value) {
  RaiseExpectedTypeFor(kFunction, expected, value);
  return nullptr;
}

template <class Message>
PyObject* SendItems(const Call& call, PyObject* dictionary) {
  if (!PyDict_Check(dictionary)) return Refuse("dict", dictionary);
  Message message{};
  Items items(dictionary);
  if (!items.Pass(Items::kFetch, message) || !items.Pass(Items::kRead, message)) return nullptr;
  // A drag is one of a parameter.
  if (std::is_same_v<Message, HostDescriptionDrag> && !items.Has("descid")) return ToPython(false);
  bool answered = false;
  if (!call.Send(call.type, &message, answered)) return nullptr;
  return items.Pass(Items::kWrite, message) && items.StoreAnswers() ? ToPython(answered) : nullptr;
}

// The argument by itself, as an item without a dictionary of the script's.
template <class Host>
struct Single {
  Host* host;
};
template <class Host>
void Exchange(Items& items, Single<Host>& message) {
  items.In("data", message.host);
}

template <class Host>
PyObject* SendSingle(const Call& call, PyObject* object) {
  PyDictRef dictionary(PyDict_New());
  Single<Host> message{};
  PyObject* answer = nullptr;
  if (dictionary.Object() && dictionary.Set("data", object)) {
    Items items(dictionary.Object());
    if (items.Pass(Items::kFetch, message) && items.Pass(Items::kRead, message))
      answer = call.Answer(message.host);
  }
  Py_XDECREF(dictionary.Object());
  return answer;
}

// The settings of loaders and savers; other elements have none to tell.
PyObject* SendPrivateData(const Call& call, PyObject* data) {
  QLXAtom* host;
  if (!ResolveAtom(call.self, host)) return nullptr;
  const int32_t kind = host->GetType();
  if (kind != PLUGIN_KIND_SCENE_LOADER && kind != PLUGIN_KIND_SCENE_SAVER) return ToPython(true);
  return SendItems<HostPrivateData>(call, data);
}

// Messages of the host's and of this module's own: receivers trust that their data is what they sent.
bool IsInternal(int32_t type) {
  return type == HOST_MSG_CHANGE || type == HOST_MSG_EVENT_NOTIFICATION || type == HOST_MSG_PYTHON_DATA ||
         type == HOST_MSG_PYTHON_INSTANCE;
}

// A value of the host's where there is one, else the object itself, a dead wrapper as well, which the element
// is told ahead.
PyObject* SendAny(const Call& call, PyObject* object) {
  if (IsInternal(call.type)) return call.Answer(nullptr);
  GeData data;
  if (GeDataFromPython(object, data)) return call.Answer(data.Data());
  PyErr_Clear();
  const HostBool isObject = 1;
  bool ignored;
  return call.Send(HOST_MSG_PYTHON_DATA, &isObject, ignored) ? call.Answer(object) : nullptr;
}

PyObject* Send(const Call& call, PyObject* data) {
  if (!data) return call.Answer(nullptr);
  switch (call.type) {
    case HOST_MSG_POINTS_CHANGED:
      return SendItems<PointsChanged>(call, data);
    case HOST_MSG_EDIT:
      if (!IsBaseContainer(data)) return Refuse(g_BaseContainerType.tp_name, data);
      return SendSingle<BaseContainer>(call, data);
    case HOST_MSG_DRAG:
      return SendItems<HostDescriptionDrag>(call, data);
    case HOST_MSG_DESCRIPTION_CHECKUPDATE:
    case HOST_MSG_DESCRIPTION_VALIDATE:
    case HOST_MSG_DESCRIPTION_COMMAND:
      return SendItems<HostDescriptionMessage>(call, data);
    case HOST_MSG_DOCUMENT_INFO:
      if (data != Py_None && !PyObject_TypeCheck(data, &g_BaseDocumentType))
        return Refuse("qlx.documents.BaseDocument or None", data);
      return SendSingle<BaseDocument>(call, data);
    case HOST_MSG_RETRIEVE_PRIVATE_DATA:
      return SendPrivateData(call, data);
    case HOST_MSG_DESCRIPTION_BITMAP:
      return SendItems<DescriptionBitmap>(call, data);
    case HOST_MSG_RENAME_TEXTURES:
      return SendItems<HostTextureInfo>(call, data);
    case HOST_MSG_FILE_FORMAT:
      return SendItems<FileFormat>(call, data);
    case HOST_MSG_GET_CUSTOM_ICON:
      return SendItems<CustomIcon>(call, data);
    case HOST_MSG_GET_REAL_OBJECT:
    case HOST_MSG_GET_VISIBLE_OBJECT:
      return SendItems<HostObjectAnswer>(call, data);
    case HOST_MSG_MANAGER_COMMAND:
      return SendItems<HostManagerCommand>(call, data);
    case HOST_MSG_DESCRIPTION_POPUP:
      return SendItems<HostDescriptionPopup>(call, data);
    case HOST_MSG_SCALE_FACTOR:
      return SendItems<ScaleFactor>(call, data);
    case HOST_MSG_TAKE_OVERRIDE:
      return SendItems<HostTakeOverride>(call, data);
    case HOST_MSG_WEIGHTS:
      return SendItems<HostWeights>(call, data);
    case HOST_MSG_GET_SELECTION:
      return SendItems<SelectionAnswer>(call, data);
    case HOST_MSG_GET_ICON_SETTINGS:
      return SendItems<IconSettings>(call, data);
    default:
      return SendAny(call, data);
  }
}

}  // namespace

PyObject* Message(AtomWrapper* self, int32_t type, PyObject* data) {
  return Send({self, type, false, 0}, data);
}

PyObject* MultiMessage(AtomWrapper* self, int32_t flags, int32_t type, PyObject* data) {
  return Send({self, type, true, flags}, data);
}

}  // namespace qlx
