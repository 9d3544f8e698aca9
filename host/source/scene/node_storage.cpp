// Elements in files of tagged values, alone or with all that is below them and in their branches.

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <unordered_map>

#include "boundary/host.h"
#include "files/hyperfile.h"
#include "scene/kinds.h"
#include "scene/tree.h"

namespace host {
namespace {

constexpr int32_t kLevel = 1;

// The chunks in that of an element; no type has such an id.
enum Part : int32_t { kElement = -1, kPluginData = -2, kOwn = -3 };

// Elements are, but neither heads nor plug-ins.
bool IsStored(const QLXAtom& atom) { return !IsHead(atom) && FindType(atom.type.id) == &atom.type; }

bool IsLoaded(const NodeType* type) { return type && type->isElement && !type->isAbstract; }

bool IsKnownBranch(int32_t id) { return id == kTypeNLA || KindOfBranch(id) != Kind::kNone; }

// What every element has.

bool WriteDynamic(HyperFile& file, const BaseList2D& element) {
  if (!element.dynamic) return file.WriteInt32(0);
  if (!file.WriteInt32(int32_t(element.dynamic->entries->size()))) return false;
  return std::all_of(element.dynamic->entries->begin(), element.dynamic->entries->end(),
                     [&](const Parameter& entry) {
                       return file.WriteInt32(entry.Number()) && file.WriteContainer(entry.settings);
                     });
}

bool ReadDynamic(HyperFile& file, BaseList2D& element) {
  int32_t count;
  if (!file.ReadInt32(count)) return false;
  auto made = std::make_unique<DynamicDescription>();
  for (int32_t i = 0; i < count; ++i) {
    int32_t number;
    BaseContainer settings;
    if (!file.ReadInt32(number) || !file.ReadContainer(settings)) return false;
    MapLinks(settings, [](HostLink) { return HostLink{}; });
    try {
      made->entries->emplace_back(std::initializer_list<DescLevel>{kUserData, {number, 0, 0}}, kUserData,
                                  settings);
    } catch (const std::invalid_argument&) {
      return file.Fail(HYPERFILE_ERROR_FORMAT);
    }
  }
  if (count > 0) element.dynamic = std::move(made);
  return true;
}

bool WriteMarks(HyperFile& file, const Extras& extras) {
  if (!file.WriteInt32(int32_t(extras.marks.size()))) return false;
  return std::all_of(extras.marks.begin(), extras.marks.end(), [&](const Mark& mark) {
    return file.WriteInt32(mark.application) &&
           file.WriteSized(HYPERFILE_VALUE_MEMORY, {mark.memory.get(), size_t(mark.bytes)});
  });
}

bool ReadMarks(HyperFile& file, BaseList2D& element) {
  int32_t count;
  if (!file.ReadInt32(count)) return false;
  for (int32_t i = 0; i < count; ++i) {
    int32_t application;
    uint64_t bytes;
    if (!file.ReadInt32(application) || !file.PeekSized(HYPERFILE_VALUE_MEMORY, bytes)) return false;
    Mark mark{application, int64_t(bytes), std::make_unique<char[]>(bytes + 1)};
    if (!file.ReadSizedInto(HYPERFILE_VALUE_MEMORY, mark.memory.get(), bytes)) return false;
    element.Extra().marks.push_back(std::move(mark));
  }
  return true;
}

bool WriteKeyframes(HyperFile& file, const Extras& extras) {
  return file.WriteInt32(int32_t(extras.keyframes.size())) &&
         std::all_of(extras.keyframes.begin(), extras.keyframes.end(),
                     [&](const std::vector<int32_t>& ids) { return file.WriteArray(ids); });
}

bool ReadKeyframes(HyperFile& file, BaseList2D& element) {
  int32_t count;
  if (!file.ReadInt32(count)) return false;
  for (int32_t i = 0; i < count; ++i) {
    std::vector<int32_t> ids;
    if (!file.ReadArray(ids)) return false;
    element.Extra().keyframes.insert(std::move(ids));
  }
  return true;
}

bool WriteElement(HyperFile& file, const BaseList2D& element) {
  static const Extras kNone;
  const Extras& extras = element.extras ? *element.extras : kNone;
  return file.WriteInt32(element.type.id) && file.WriteSized(HYPERFILE_VALUE_STRING, element.name) &&
         file.WriteInt32(element.bits) && file.WriteUInt64(extras.nbits) &&
         file.WriteUInt64(file.numberOf(extras.layer)) && file.WriteContainer(element.data) &&
         WriteDynamic(file, element) && WriteMarks(file, extras) && WriteKeyframes(file, extras) &&
         file.BeginChunk(kOwn, kLevel) && element.WriteOwn(file) && file.EndChunk();
}

// Behind the type.
bool ReadElement(HyperFile& file, BaseList2D& element) {
  std::string name;
  uint64_t nbits, layer;
  int32_t part, level;
  if (!file.ReadSized(HYPERFILE_VALUE_STRING, name) || !file.ReadInt32(element.bits) ||
      !file.ReadUInt64(nbits) || !file.ReadUInt64(layer) || !file.ReadContainer(element.data) ||
      !ReadDynamic(file, element) || !ReadMarks(file, element) || !ReadKeyframes(file, element))
    return false;
  element.name = std::string_view(name);
  if (nbits || layer) {
    element.Extra().nbits = nbits;
    element.Extra().layer = {nullptr, layer};
  }
  return file.EnterChunk(part, level) && element.ReadOwn(file) && file.LeaveChunk(true);
}

// Writing.

class Writer {
 public:
  explicit Writer(HyperFile& file) : file_(file), outer_(std::move(file.numberOf)) {}
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;
  ~Writer() { file_.numberOf = std::move(outer_); }

  bool Write(const BaseList2D& root, bool below) {
    Number(root, below);
    file_.numberOf = [this](HostLink link) {
      const auto found = numbers_.find(link::GetLink(link));
      return found == numbers_.end() ? 0 : found->second;
    };
    return file_.BeginChunk(root.type.id, kLevel) &&
           std::all_of(elements_.begin(), elements_.end(),
                       [&](const BaseList2D* element) { return WriteNode(*element); }) &&
           std::all_of(plugins_.begin(), plugins_.end(),
                       [&](const auto& plugin) { return WritePluginData(plugin.first, plugin.second); }) &&
           file_.EndChunk();
  }

 private:
  // Numbers from 1 on, parents first.
  void Number(const BaseList2D& root, bool below) {
    const auto add = [&](GeListNode& node) {
      if (IsHead(node) || (node.isFixed && node.kind == Kind::kTag)) return;  // its object writes that itself
      elements_.push_back(&static_cast<BaseList2D&>(node));
      numbers_[&node] = elements_.size();
      if (node.isPlugin) node.Link(plugins_.emplace_back(HostLink{}, elements_.size()).first);
    };
    auto& node = const_cast<BaseList2D&>(root);
    below ? Walk(node, add) : add(node);
  }

  bool WriteNode(const BaseList2D& element) {
    uint64_t parent = 0;
    int32_t branch = 0;
    if (&element != elements_.front()) {
      const GeListNode* above = ParentOf(element);
      if (IsHead(*above)) {
        const auto& head = static_cast<const GeListHead&>(*above);
        branch = head.branch;
        above = head.owner;
      }
      parent = numbers_.at(above);
    }
    return file_.BeginChunk(kElement, kLevel) && file_.WriteUInt64(parent) && file_.WriteInt32(branch) &&
           WriteElement(file_, element) && file_.EndChunk();
  }

  // Runs the code of the plug-in, which may destroy any element.
  bool WritePluginData(HostLink link, uint64_t number) {
    const Hold hold(link);
    const auto* element = static_cast<const GeListNode*>(hold.Object());
    const NodeRecord* plugin = element ? PluginOf(*element) : nullptr;
    if (!plugin || !plugin->Write) return true;
    if (!file_.BeginChunk(kPluginData, plugin->level) || !file_.WriteUInt64(number)) return false;
    const size_t depth = file_.Depth();
    {
      const HyperFile::Fence fence(file_);
      if (!plugin->Write(PluginData(*element), element, &file_)) return file_.Fail(HYPERFILE_ERROR_NODE);
    }
    return file_.Depth() == depth ? file_.EndChunk() : file_.Fail(HYPERFILE_ERROR_USE);
  }

  HyperFile& file_;
  std::function<uint64_t(HostLink)> outer_;  // of who writes an element whose plug-in writes this one
  std::vector<const BaseList2D*> elements_;
  std::unordered_map<const void*, uint64_t> numbers_;
  std::vector<std::pair<HostLink, uint64_t>> plugins_;
};

bool Store(const QLXAtom* self, HyperFile* file, bool below) {
  if (!self || !file) return false;
  const std::lock_guard guard(file->turn);
  if (!file->CanWrite()) return false;
  if (!IsStored(*self)) return file->Fail(HYPERFILE_ERROR_NODE);
  HyperFile::Draft draft(*file);
  {
    const SceneTurn turn;
    const Hold hold(const_cast<QLXAtom&>(*self));
    if (!hold.IsAlive()) return file->Fail(HYPERFILE_ERROR_NODE);
    const HyperFile::InDocument document(*file, listnode::GetDocument(&NodeOf(*self)));
    if (!Writer(*file).Write(static_cast<const BaseList2D&>(*self), below)) return false;
  }
  return draft.Accept();
}

// Reading.

class Reader {
 public:
  explicit Reader(HyperFile& file) : file_(file) {}
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;
  ~Reader() {
    file_.keepsNumbers = false;
    if (elements_.empty()) return;
    const SceneTurn turn;
    DestroyNow(elements_.front());
  }

  // Makes elements of all that the chunk holds. They are in no scene, and no code of others runs.
  bool Read(const NodeType& type) {
    file_.keepsNumbers = true;
    int32_t part, level;
    while (file_.EnterChunk(part, level)) {
      if ((part == kElement && !ReadNode(type)) || (part == kPluginData && !NoteData(level))) return false;
      file_.LeaveChunk(true);
    }
    file_.keepsNumbers = false;
    return file_.IsAtEnd() && (!elements_.empty() || file_.Fail(HYPERFILE_ERROR_FORMAT));
  }

  // Puts them where `self` is, which becomes the first one. In the scene's turn.
  void Place(BaseList2D& self, bool below) {
    if (below)
      for (size_t i = 1; i < elements_.size(); ++i)
        if (elements_[i] && elements_[i]->type.record) elements_[i]->Link(LinkOf(i + 1));
    self.Link(LinkOf(1));
    Connect(self);
    TakeOver(*elements_.front(), self, below);
  }

  // Lets plug-ins make theirs ready, and read what they wrote. Runs their code.
  bool Finish() {
    for (const auto& [number, link] : links_) {
      const Hold hold(link);
      auto* node = static_cast<GeListNode*>(hold.Object());
      if (!node) continue;
      if (!node->isPlugin && node->type.record && !MakeReady(*node)) return file_.Fail(HYPERFILE_ERROR_NODE);
      const auto found = data_.find(number);
      const NodeRecord* plugin = hold.IsAlive() ? PluginOf(*node) : nullptr;
      if (found == data_.end() || !plugin || !plugin->Read) continue;
      file_.GoTo(found->second.place);
      const HyperFile::Fence fence(file_);
      if (!plugin->Read(PluginData(*node), node, &file_, found->second.level))
        return file_.Fail(HYPERFILE_ERROR_NODE);
    }
    return true;
  }

 private:
  struct Data {
    HyperFile::Place place;
    int32_t level;
  };

  bool ReadNode(const NodeType& rootType) {
    uint64_t parent;
    int32_t branch, id;
    if (!file_.ReadUInt64(parent) || !file_.ReadInt32(branch) || !file_.ReadInt32(id)) return false;
    if (elements_.empty()) {
      if (id != rootType.id) return file_.Fail(HYPERFILE_ERROR_NODE);
      return ReadElement(file_, Add(rootType, nullptr));
    }
    if (parent < 1 || parent > elements_.size()) return file_.Fail(HYPERFILE_ERROR_FORMAT);
    GeListNode* above = elements_[size_t(parent - 1)];
    if (above && branch) above = IsKnownBranch(branch) ? Branch(*above, branch) : nullptr;
    const NodeType* type = FindType(id);
    // What can't be made, or stand there, is left out, and what stands below it.
    if (above && IsLoaded(type) && MayStand(*type, *above)) return ReadElement(file_, Add(*type, above));
    elements_.push_back(nullptr);
    return true;
  }

  BaseList2D& Add(const NodeType& type, GeListNode* above) {
    if (elements_.size() == elements_.capacity()) elements_.reserve(2 * elements_.size() + 16);
    auto* made = static_cast<BaseList2D*>(NewNode(type));
    if (above) Append(*made, *above);
    elements_.push_back(made);
    return *made;
  }

  bool NoteData(int32_t level) {
    uint64_t number;
    if (!file_.ReadUInt64(number)) return false;
    data_.try_emplace(number, Data{file_.Here(), level});
    return true;
  }

  HostLink& LinkOf(uint64_t number) { return links_.emplace_back(number, HostLink{}).second; }

  // The numbers in links become links.
  void Connect(BaseList2D& self) {
    const auto map = [&](HostLink number) {
      HostLink link{};
      if (number.generation == 1) {
        self.Link(link);
      } else if (number.generation > 1 && number.generation <= elements_.size()) {
        BaseList2D* goal = elements_[size_t(number.generation - 1)];
        if (goal) goal->Link(link);
      }
      return link;
    };
    for (BaseList2D* element : elements_) {
      if (!element) continue;
      if (HoldsLinks(element->data)) MapLinks(element->data, map);
      if (element->extras) element->extras->layer = map(element->extras->layer);
    }
  }

  HyperFile& file_;
  std::vector<BaseList2D*> elements_;  // by their numbers less 1; null for what is left out
  std::unordered_map<uint64_t, Data> data_;
  std::vector<std::pair<uint64_t, HostLink>> links_;  // of those that plug-ins may take part in
};

enum class Header { kIsRead, kIsAhead, kMayBeAhead };

// Whether the chunk of an element of that type is the next one.
bool IsAhead(HyperFile& file, int32_t type) {
  const HyperFile::Place place = file.Here();
  int32_t id, level;
  const bool isAhead =
      file.NextTag() == HYPERFILE_VALUE_CHUNK_START && file.EnterChunk(id, level) && id == type;
  file.GoTo(place);
  return isAhead;
}

bool LoadEntered(BaseList2D& self, HyperFile& file, bool below) {
  Reader reader(file);
  if (!reader.Read(self.type)) return false;
  const HyperFile::Place end = file.Here();
  const SceneTurn turn;
  const Hold hold(self);
  if (!hold.IsAlive()) return file.Fail(HYPERFILE_ERROR_NODE);
  const HyperFile::InDocument document(file, listnode::GetDocument(&self));
  reader.Place(self, below);
  const bool isFinished = reader.Finish();
  file.GoTo(end);
  return isFinished && hold.IsAlive();
}

// Puts a file back to its place, unless all went well.
struct Return {
  ~Return() {
    if (!isLoaded) file.GoTo(std::move(place));
  }
  HyperFile& file;
  HyperFile::Place place = file.Here();
  bool isLoaded = false;
};

bool Load(QLXAtom* self, HyperFile* file, bool below, Header header) {
  if (!self || !file) return false;
  const std::lock_guard guard(file->turn);
  if (!file->CanRead()) return false;
  // What belongs to an object for good is read with it, and caches are not read.
  const bool isBlock = self->isFixed && self->kind == Kind::kTag;
  if (!IsStored(*self) || isBlock || IsMade(static_cast<const GeListNode&>(*self)))
    return file->Fail(HYPERFILE_ERROR_NODE);
  Return back{*file};
  const bool isAhead = header != Header::kIsRead && IsAhead(*file, self->type.id);
  if (header == Header::kIsAhead && !isAhead)
    return file->Fail(file->IsAtEnd() ? HYPERFILE_ERROR_END : HYPERFILE_ERROR_NODE);
  int32_t id, level;
  if (isAhead && !file->EnterChunk(id, level)) return false;
  back.isLoaded =
      LoadEntered(static_cast<BaseList2D&>(*self), *file, below) && (!isAhead || file->LeaveChunk(true));
  return back.isLoaded;
}

}  // namespace
}  // namespace host

bool QLXAtom::WriteOwn(HyperFile&) const { return true; }
bool QLXAtom::ReadOwn(HyperFile&) { return true; }

namespace host::atom {

HostBool Read(QLXAtom* self, HyperFile* file, int32_t id, int32_t /*level*/) {
  if (self && file && id && id != self->type.id) return file->Fail(HYPERFILE_ERROR_NODE);
  return Load(self, file, false, Header::kMayBeAhead);
}

HostBool Write(const QLXAtom* self, HyperFile* file) { return Store(self, file, false); }

HostBool ReadObject(QLXAtom* self, HyperFile* file, HostBool readHeader) {
  return Load(self, file, true, readHeader ? Header::kIsAhead : Header::kIsRead);
}

HostBool WriteObject(const QLXAtom* self, HyperFile* file) { return Store(self, file, true); }

}  // namespace host::atom
