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
#include "tables/tables.h"

namespace host {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr auto kBetweenLooks = std::chrono::milliseconds(20);
constexpr auto kBeforeFirstLine = std::chrono::milliseconds(500);

// Who called, for a call that may take long; null holds the lock and never stops it.
class Caller final {
 public:
  explicit Caller(const HostCaller* caller) : caller_(caller) {}

  bool IsDue() const { return caller_ && caller_->Stop && Clock::now() >= next_; }
  bool IsStopped() {
    if (isStopped_ || !IsDue()) return isStopped_;
    isStopped_ = caller_->Stop(caller_->user);
    next_ = Clock::now() + kBetweenLooks;
    return isStopped_;
  }
  void Enter() {
    if (caller_ && caller_->EnterScene) caller_->EnterScene(caller_->user);
  }
  void Leave() {
    if (caller_ && caller_->LeaveScene) caller_->LeaveScene(caller_->user);
  }

 private:
  const HostCaller* caller_;
  bool isStopped_ = false;
  Clock::time_point next_{};
};

// Scenes that others see may be touched inside.
class Visit {
 public:
  explicit Visit(Caller& caller) : caller_(caller) { caller_.Enter(); }
  Visit(const Visit&) = delete;
  Visit& operator=(const Visit&) = delete;
  ~Visit() noexcept(false) { caller_.Leave(); }

 private:
  Caller& caller_;
};

// How far a file is, as a line of the terminal that is drawn anew, and is gone at the end.
class ConsoleProgress final : public Progress {
 public:
  ConsoleProgress(Caller& caller, const fs::path& file) : caller_(caller), file_(file.filename()) {}
  ConsoleProgress(const ConsoleProgress&) = delete;
  ConsoleProgress& operator=(const ConsoleProgress&) = delete;
  ~ConsoleProgress() {
    if (isShown_) WriteStream(STDERR_FILENO, "\r\033[K");
  }

  bool Report(double fraction, const char* what) override {
    if (caller_.IsStopped()) return false;
    if (!isTerminal_ || Clock::now() < next_) return true;
    next_ = Clock::now() + 5 * kBetweenLooks;
    isShown_ = true;
    WriteStream(STDERR_FILENO, fmt::format("\r{}: {} {:.0f} %\033[K", file_.string(), what, 100 * fraction));
    return true;
  }

 private:
  Caller& caller_;
  const fs::path file_;
  const bool isTerminal_ = isatty(STDERR_FILENO) == 1;
  bool isShown_ = false;
  Clock::time_point next_ = Clock::now() + kBeforeFirstLine;
};

void Name(BaseDocument& document, const fs::path& file) {
  document.name = Text(file.filename().native());
  document.folder = Text(fs::absolute(file).parent_path().native());
}

// The document is nobody's yet, and no other thread's.
OwnedDocument Load(const fs::path& file, int32_t flags, Caller& caller) {
  const PrivateScene isPrivate;
  ConsoleProgress progress(caller, file);
  OwnedDocument document(ImportScene(file, flags, &progress));
  Name(*document, file);
  return document;
}

// Runs what reads or writes a file; a fault of it becomes a line on the console, and the result that `body`
// would have made of nothing.
template <class Body>
auto Told(const char* action, const fs::path& file, Body body) -> decltype(body()) {
  std::string fault;
  try {
    return body();
  } catch (const FileFault& error) {
    fault = error.what();
  } catch (const Stopped&) {
    fault = fmt::format("{} '{}': stopped", action, file.string());
  } catch (const std::bad_alloc&) {
    fault = fmt::format("{} '{}': not enough memory", action, file.string());
  } catch (const fs::filesystem_error& error) {
    fault = fmt::format("{} '{}': {}", action, file.string(), error.code().message());
  }
  Complain(fault);
  return {};
}

// A document that ends where others can't see a half of it.
class Temporary {
 public:
  Temporary(Caller& caller, OwnedDocument document) : document_(std::move(document)), caller_(caller) {}
  Temporary(const Temporary&) = delete;
  Temporary& operator=(const Temporary&) = delete;
  ~Temporary() noexcept(false) {
    const Visit visit(caller_);
    document_.reset();
  }
  BaseDocument& operator*() const { return *document_; }

 private:
  OwnedDocument document_;
  Caller& caller_;
};

OwnedDocument CopyOf(const BaseDocument& document) {
  AliasTrans trans;
  OwnedDocument copy(static_cast<BaseDocument*>(atom::GetClone(&document, 0, &trans)));
  if (copy) aliastrans::Translate(&trans, false);
  return copy;
}

// As the document is now, and in no other one's way.
OwnedDocument Snapshot(const BaseDocument& document, Caller& caller) {
  const Visit visit(caller);
  OwnedDocument copy = document.IsDead() ? nullptr : CopyOf(document);
  if (!copy) throw std::bad_alloc();
  return copy;
}

bool Save(BaseDocument& document, const fs::path& file, int32_t flags, int32_t format, Caller& caller) {
  {
    const Temporary copy(caller, Snapshot(document, caller));
    const PrivateScene isPrivate;
    ConsoleProgress progress(caller, file);
    Passes passes;
    passes.animation = false;  // it is saved as it stands
    if (!Evaluate(*copy, passes, [&] { return caller.IsStopped(); })) throw Stopped("evaluation");
    ExportScene(*copy, file, format, flags, &progress);
  }
  const Visit visit(caller);
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
  OwnedDocument made(NewDocument());
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

}  // namespace

void OpenScene(const fs::path& file) {
  Caller nobody(nullptr);
  OwnedDocument document = Load(file, kFilterObjects | kFilterMaterials, nobody);
  BaseDocument* opened = document.release();
  document::InsertBaseDocument(opened);
  document::SetActiveDocument(opened);
}

}  // namespace host

namespace host::document {

HostBool LoadFile(const HostFilename* name, const HostCaller* calledBy) {
  const fs::path file(View(name));
  return Told("can't open", file, [&] {
    Caller caller(calledBy);
    OwnedDocument document = Load(file, kFilterObjects | kFilterMaterials, caller);
    const Visit visit(caller);
    BaseDocument* opened = document.release();
    InsertBaseDocument(opened);
    SetActiveDocument(opened);
    return true;
  });
}

BaseDocument* LoadDocument(const HostFilename* name, int32_t flags, const HostCaller* calledBy) {
  const fs::path file(View(name));
  return Told("can't load", file, [&] {
    Caller caller(calledBy);
    return Load(file, flags, caller).release();
  });
}

HostBool MergeDocument(BaseDocument* self, const HostFilename* name, int32_t flags,
                       const HostCaller* calledBy) {
  if (!As<BaseDocument>(self)) return 0;
  const Hold hold(*self);
  const fs::path file(View(name));
  return Told("can't merge", file, [&] {
    Caller caller(calledBy);
    const Temporary loaded(caller, Load(file, flags, caller));
    const Visit visit(caller);
    if (!hold.IsAlive()) return false;
    Move(*loaded, *self);
    return true;
  });
}

HostBool SaveDocument(BaseDocument* self, const HostFilename* name, int32_t flags, int32_t format,
                      const HostCaller* calledBy) {
  if (!As<BaseDocument>(self)) return 0;
  const fs::path file(View(name));
  return Told("can't save", file, [&] {
    Caller caller(calledBy);
    return Save(*self, file, flags, format, caller);
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
                       int32_t /*flags*/, const HostCaller* calledBy) {
  if (!As<BaseDocument>(self)) return 0;
  Caller caller(calledBy);
  const Visit visit(caller);
  if (self->IsDead()) return 0;
  const Hold hold(*self);
  Passes passes;
  passes.animation = animation;
  passes.expressions = expressions;
  passes.caches = caches;
  return Evaluate(*self, passes, [&] {
    if (!caller.IsDue()) return false;
    caller.Leave();
    const bool isStopped = caller.IsStopped();
    caller.Enter();
    return isStopped || !hold.IsAlive();
  });
}

}  // namespace host::document
