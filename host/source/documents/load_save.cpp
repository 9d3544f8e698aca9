// Scenes from files and into files, and from one document into another.

#include <fmt/format.h>
#include <unistd.h>

#include <chrono>
#include <set>
#include <string>

#include "boundary/host.h"
#include "documents/documents.h"
#include "evaluate/evaluate.h"
#include "files/files.h"
#include "files/scene_files.h"
#include "scene/aliastrans.h"
#include "scene/links.h"
#include "tables/tables.h"

namespace host {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr auto kBetweenLooks = std::chrono::milliseconds(20);
constexpr auto kBeforeFirstLine = std::chrono::milliseconds(500);

// Whether the caller of a long work gives it up; asked now and then only.
class Stopper {
 public:
  Stopper(HostStop stop, void* user) : stop_(stop), user_(user) {}

  bool IsStopped() {
    if (isStopped_ || !stop_ || Clock::now() < next_) return isStopped_;
    isStopped_ = stop_(user_);
    next_ = Clock::now() + kBetweenLooks;
    return isStopped_;
  }

 private:
  const HostStop stop_;
  void* const user_;
  bool isStopped_ = false;
  Clock::time_point next_{};
};

// Of documents that no other thread has seen.
struct Destroy {
  void operator()(BaseDocument* document) const { DestroyNow(document); }
};
using OwnedDocument = std::unique_ptr<BaseDocument, Destroy>;

// How far a file is, as a line of the terminal that is drawn anew, and is gone at the end.
class ConsoleProgress final : public Progress {
 public:
  ConsoleProgress(Stopper& stopper, const fs::path& file)
      : stopper_(stopper), file_(Escaped(file.filename().native())) {}
  ConsoleProgress(const ConsoleProgress&) = delete;
  ConsoleProgress& operator=(const ConsoleProgress&) = delete;
  ~ConsoleProgress() {
    if (isShown_) WriteStream(STDERR_FILENO, "\r\033[K");
  }

  bool Report(double fraction, const char* what) override {
    if (stopper_.IsStopped()) return false;
    if (!isTerminal_ || Clock::now() < next_) return true;
    next_ = Clock::now() + 5 * kBetweenLooks;
    isShown_ = true;
    WriteStream(STDERR_FILENO, fmt::format("\r{}: {} {:.0f} %\033[K", file_, what, 100 * fraction));
    return true;
  }

 private:
  Stopper& stopper_;
  const std::string file_;
  const bool isTerminal_ = isatty(STDERR_FILENO) == 1;
  bool isShown_ = false;
  Clock::time_point next_ = Clock::now() + kBeforeFirstLine;
};

void Name(BaseDocument& document, const fs::path& file) {
  document.name = Text(file.filename().native());
  document.folder = Text(fs::absolute(file).parent_path().native());
}

// The document is nobody's yet, and no other thread's.
OwnedDocument Load(const fs::path& file, int32_t flags, Stopper& stopper) {
  const PrivateScene isPrivate;
  ConsoleProgress progress(stopper, file);
  OwnedDocument document(ImportScene(file, flags, &progress));
  Name(*document, file);
  return document;
}

// What the exception in hand says of a file, for the console.
std::string DescribeFault(const char* action, const fs::path& file) {
  try {
    throw;
  } catch (const FileFault& fault) {
    return fmt::format("{} {}", action, fault.what());
  } catch (const Stopped&) {
    return fmt::format("{} {}: stopped", action, file.native());
  } catch (const std::bad_alloc&) {
    return fmt::format("{} {}: not enough memory", action, file.native());
  } catch (const std::exception& error) {
    return fmt::format("{} {}: {}", action, file.native(), ReasonOf(error));
  }
}

// The result of `body`; nothing and a line on the console where it can't read or write the file.
template <class Body>
auto Told(const char* action, const fs::path& file, Body body) -> decltype(body()) {
  try {
    return body();
  } catch (const std::exception&) {
    Complain(DescribeFault(action, file));
    return {};
  }
}

OwnedDocument CopyOf(const BaseDocument& document) {
  AliasTrans trans;
  OwnedDocument copy(static_cast<BaseDocument*>(atom::GetClone(&document, 0, &trans)));
  if (copy) aliastrans::Translate(&trans, false);
  return copy;
}

// As the document is now, and in no other one's way.
OwnedDocument Snapshot(const BaseDocument& document) {
  const SceneTurn turn;
  if (document.IsDead()) throw std::runtime_error("the document was destroyed");
  OwnedDocument copy = CopyOf(document);
  if (!copy) throw std::bad_alloc();
  return copy;
}

void Write(BaseDocument& document, const fs::path& file, int32_t flags, int32_t format, Stopper& stopper) {
  const PrivateScene isPrivate;
  ConsoleProgress progress(stopper, file);
  Passes passes;
  passes.animation = false;  // it is saved as it stands
  if (!Evaluate(document, passes, [&] { return stopper.IsStopped(); })) throw Stopped("evaluation");
  ExportScene(document, file, format, flags, &progress);
}

// The copy ends in a turn, since expressions may have shown it to scripts. Not by a destructor: a thread that
// the interpreter's end unwinds gets no turn any more.
void WriteCopy(BaseDocument& document, const fs::path& file, int32_t flags, int32_t format, Stopper& stopper) {
  BaseDocument* copy = Snapshot(document).release();
  const auto end = [&] {
    const SceneTurn turn;
    DestroyNow(copy);
  };
  try {
    Write(*copy, file, flags, format, stopper);
  } catch (const std::exception&) {
    end();
    throw;
  }
  end();
}

bool Save(BaseDocument& document, const fs::path& file, int32_t flags, int32_t format, Stopper& stopper) {
  WriteCopy(document, file, flags, format, stopper);
  const SceneFormat* named = FindFormat(file.extension().native());
  if (named && named->id != format)
    Complain(fmt::format("saved {} in the format .{}, which its name does not tell", file.native(),
                         FindFormat(format)->extension));
  const SceneTurn turn;
  if (document.IsDead()) return true;
  document.isChanged = false;
  if (flags & SAVEDOCUMENTFLAGS_SAVEAS) Name(document, file);
  return true;
}

// Moves all that `from` holds behind what `to` holds.
void Move(BaseDocument& from, BaseDocument& to) {
  for (const int32_t branch : {kTypeObject, kTypeMaterial, kTypeLayer, kTypeRenderData}) {
    GeListHead* source = FindBranch(from, branch);
    GeListHead* target = Branch(to, branch);
    while (source && target && source->down && Place(*source->down, *target, target->downLast)) {
    }
  }
}

// The objects of the document in the list, without those that come with another one.
std::vector<BaseObject*> OutermostOf(const BaseDocument& document, const AtomArray* array) {
  std::set<const GeListNode*> listed;
  std::vector<BaseObject*> objects;
  for (int32_t i = 0; i < atomarray::GetCount(array); ++i) {
    auto* object = As<BaseObject>(atomarray::GetIndex(array, i));
    if (object && IsIn(*object, document, kTypeObject) && listed.insert(object).second)
      objects.push_back(object);
  }
  std::erase_if(objects, [&](const BaseObject* object) {
    for (const GeListNode* up = object->up; up; up = up->up)
      if (listed.contains(up)) return true;
    return false;
  });
  return objects;
}

// The materials of the document that are linked from below a node.
void CollectMaterials(GeListNode& root, const BaseDocument& document, std::set<const void*>& materials) {
  Walk(root, [&](GeListNode& node) {
    if (IsHead(node)) return;
    MapLinks(static_cast<BaseList2D&>(node).data, [&](HostLink to) {
      auto* material = As<BaseMaterial>(static_cast<QLXAtom*>(link::GetLink(to)));
      if (material && IsIn(*material, document, kTypeMaterial)) materials.insert(material);
      return to;
    });
  });
}

// Copies run the code of plug-ins, which may destroy what is to be copied next.
OwnedDocument Isolate(const BaseDocument& document, const std::vector<BaseObject*>& objects) {
  const Hold hold(const_cast<BaseDocument&>(document));
  OwnedDocument made(MakeDocument());
  made->data = document.data;
  made->settings = document.settings;
  AliasTrans trans;
  std::set<const void*> used;
  std::vector<HostLink> links(objects.size());
  for (size_t i = 0; i < objects.size(); ++i) objects[i]->Link(links[i]);
  const auto add = [&](HostLink link, int32_t branch) {
    auto* original = static_cast<BaseList2D*>(link::GetLink(link));
    auto* copy = original ? static_cast<BaseList2D*>(atom::GetClone(original, 0, &trans)) : nullptr;
    if (!copy) return;
    Append(*copy, *Branch(*made, branch));
    auto* from = As<BaseObject>(static_cast<QLXAtom*>(link::GetLink(link)));
    if (!from) return;
    const Matrix matrix = GlobalMatrix(*from);
    object::SetMl(static_cast<BaseObject*>(copy), &matrix);
    CollectMaterials(*copy, document, used);
  };
  for (const HostLink& link : links) add(link, kTypeObject);
  if (!hold.IsAlive()) return {};
  std::vector<HostLink> materials;
  const GeListHead* head = FindBranch(document, kTypeMaterial);
  for (GeListNode* node = head ? head->down : nullptr; node; node = node->next)
    if (used.contains(As<BaseMaterial>(node))) node->Link(materials.emplace_back());
  for (const HostLink& link : materials) add(link, kTypeMaterial);
  aliastrans::Translate(&trans, false);
  return made;
}

void Open(OwnedDocument loaded) {
  const SceneTurn turn;
  BaseDocument* document = loaded.release();
  OpenDocument(*document);
}

}  // namespace

void OpenScene(const fs::path& file) {
  Stopper nobody(nullptr, nullptr);
  try {
    Open(Load(file, kFilterObjects | kFilterMaterials, nobody));
  } catch (const std::exception&) {
    throw std::runtime_error(DescribeFault("can't open", file));
  }
}

}  // namespace host

namespace host::document {

HostBool LoadFile(const HostFilename* name, HostStop stop, void* user) {
  const fs::path file(View(name));
  return Told("can't open", file, [&] {
    Stopper stopper(stop, user);
    Open(Load(file, kFilterObjects | kFilterMaterials, stopper));
    return true;
  });
}

BaseDocument* LoadDocument(const HostFilename* name, int32_t flags, HostStop stop, void* user) {
  const fs::path file(View(name));
  return Told("can't load", file, [&] {
    Stopper stopper(stop, user);
    return Load(file, flags, stopper).release();
  });
}

HostBool MergeDocument(BaseDocument* self, const HostFilename* name, int32_t flags, HostStop stop, void* user) {
  if (!As<BaseDocument>(self)) return 0;
  const Hold hold(*self);
  const fs::path file(View(name));
  return Told("can't merge", file, [&] {
    Stopper stopper(stop, user);
    const OwnedDocument loaded = Load(file, flags, stopper);
    const SceneTurn turn;
    if (!hold.IsAlive()) return false;
    Move(*loaded, *self);
    return true;
  });
}

HostBool SaveDocument(BaseDocument* self, const HostFilename* name, int32_t flags, int32_t format,
                      HostStop stop, void* user) {
  if (!As<BaseDocument>(self)) return 0;
  const Hold hold(*self);
  const fs::path file(View(name));
  return Told("can't save", file, [&] {
    Stopper stopper(stop, user);
    return Save(*self, file, flags, format, stopper);
  });
}

BaseDocument* IsolateObjects(const BaseDocument* self, const AtomArray* array) {
  if (!As<BaseDocument>(self)) return nullptr;
  const std::vector<BaseObject*> objects = OutermostOf(*self, array);
  return objects.empty() ? nullptr : Isolate(*self, objects).release();
}

BaseDocument* Polygonize(BaseDocument* self, HostBool keepanimation) {
  return As<BaseDocument>(self) ? host::Polygonize(*self, keepanimation) : nullptr;
}

HostBool ExecutePasses(BaseDocument* self, HostBool animation, HostBool expressions, HostBool caches,
                       int32_t /*flags*/, HostStop stop, void* user) {
  if (!As<BaseDocument>(self)) return 0;
  const Hold hold(*self);
  Stopper stopper(stop, user);
  Passes passes;
  passes.animation = animation;
  passes.expressions = expressions;
  passes.caches = caches;
  return Evaluate(*self, passes, [&] { return stopper.IsStopped() || !hold.IsAlive(); });
}

}  // namespace host::document
