// Types of elements that plug-ins register, and messages.

#include <functional>
#include <utility>

#include "kelvar.framework/source/tables/t_messages.h"
#include "scene_support.h"

namespace {

using host::listnode::InsertUnderLast;
namespace atom = host::atom;
namespace baselist = host::baselist;
namespace listhead = host::listhead;
namespace plugin = host::plugin;

constexpr int32_t kType = 2000001, kQuietType = 2000002;

// What was called, and what the next calls do.
struct Calls {
  std::string told;
  std::function<void(GeListNode*)> onInit, onMessage, onCopy, onFree;
  bool makes = true, inits = true, copies = true;
  BaseDocument* document = nullptr;
  int alive = 0, next = 0;
};
Calls g_calls;

void Tell(const char* what, void* data) {
  g_calls.told += what + std::to_string(*static_cast<int*>(data)) + " ";
}

// By value: an action may put another in its place.
void Act(std::function<void(GeListNode*)> action, GeListNode* node) {
  if (action) action(node);
}

NodeRecord MakeRecord(int32_t id, HostString* name) {
  NodeRecord record{};
  record.base = {sizeof record, PLUGIN_KIND_OBJECT, id, 77, name, nullptr, nullptr, nullptr};
  record.baseType = 5155;
  return record;
}

class PluginScene : public Scene {
 protected:
  PluginScene() {
    g_calls = {};
    if (plugin::FindPlugin(kType, 0)) return;
    Text name(Word("Scripted")), quiet(Word("Quiet"));
    NodeRecord record = MakeRecord(kQuietType, &quiet);
    EXPECT_NE(plugin::RegisterNode(&record), nullptr);
    record = MakeRecord(kType, &name);
    record.Create = [](void*) -> void* {
      if (!g_calls.makes) return nullptr;
      ++g_calls.alive;
      return new int(g_calls.next++);
    };
    record.Destroy = [](void* data) {
      Tell("destroy", data);
      --g_calls.alive;
      delete static_cast<int*>(data);
    };
    record.Init = [](void* data, GeListNode* node) {
      Tell("init", data);
      Act(g_calls.onInit, node);
      return HostBool(g_calls.inits);
    };
    record.Free = [](void* data, GeListNode* node) {
      Tell("free", data);
      EXPECT_NE(host::link::GetLink(LinkTo(node)), nullptr);
      Act(g_calls.onFree, node);
    };
    record.CopyTo = [](void* data, void* dst, const GeListNode*, GeListNode* copy, int32_t, AliasTrans*) {
      Tell("copy", data);
      Tell("to", dst);
      Act(g_calls.onCopy, copy);
      return HostBool(g_calls.copies);
    };
    record.Message = [](void* data, GeListNode* node, int32_t id, void* message) {
      Tell(("message" + std::to_string(id) + ":").c_str(), data);
      if (id == HOST_MSG_EVENT_NOTIFICATION) {
        const auto* event = static_cast<HostEventNotification*>(message);
        g_calls.told += "event" + std::to_string(event->event) + "," + std::to_string(event->flags) + " ";
      }
      Act(g_calls.onMessage, node);
      Tell("end", data);  // still there
      return HostBool(id != 99);
    };
    record.GetBubbleHelp = [](void*, const GeListNode*, HostString* text) {
      *text = host::MakeString("help");
      return HostBool(1);
    };
    record.IsInstanceOf = [](void*, const GeListNode*, int32_t type) { return HostBool(type == 110059); };
    record.GetDocument = [](void*, const GeListNode*) { return g_calls.document; };
    record.IsDocumentRelated = [](void*, const GeListNode*, HostBool* isRelated) {
      *isRelated = 0;
      return HostBool(1);
    };
    EXPECT_NE(plugin::RegisterNode(&record), nullptr);
  }
  ~PluginScene() override { EXPECT_EQ(g_calls.alive, 0); }
  static void TearDownTestSuite() { host::FreePlugins(); }

  static std::string Told() { return std::exchange(g_calls.told, ""); }
};

TEST_F(PluginScene, TypesThatCannotBeAreRefused) {
  const struct {
    int32_t id, base;
    const char* name;
  } cases[] = {{2000003, 5155, ""},  {kType, 5155, "X"}, {kCube, 5155, "X"},
               {2000003, 4711, "X"}, {2000003, 0, "X"},  {2000003, 110063, "X"}};
  for (const auto& c : cases) {
    Text name(Word(c.name));
    NodeRecord record = MakeRecord(c.id, &name);
    record.baseType = c.base;
    EXPECT_EQ(plugin::RegisterNode(&record), nullptr) << c.id << " " << c.base;
  }
  EXPECT_EQ(plugin::FindPlugin(2000003, 0), nullptr);
  EXPECT_EQ(plugin::RegisterNode(nullptr), nullptr);
}

TEST_F(PluginScene, ElementsOfPluginTypesAreAsOthers) {
  const Element owned(New(kType));
  BaseList2D* self = owned.get();
  EXPECT_EQ(Told(), "init0 ");
  EXPECT_EQ(atom::GetClassification(self), 5155);
  EXPECT_EQ(Text(baselist::GetName(self)).Text(), "Scripted");
  EXPECT_EQ(Text(baselist::GetTypeName(self)).Text(), "Scripted");
  EXPECT_EQ(Text(baselist::GetBubbleHelp(self)).Text(), "help");
  EXPECT_EQ(baselist::GetInfo(self), 77);
  EXPECT_TRUE(atom::IsInstanceOf(self, 5155) && atom::IsInstanceOf(self, 110059));
  EXPECT_FALSE(atom::IsInstanceOf(self, 5702) || host::listnode::IsDocumentRelated(self));
  EXPECT_EQ(host::document::GetActiveObject(reinterpret_cast<BaseDocument*>(self)), nullptr);
  EXPECT_EQ(host::listnode::GetDocument(self), nullptr);
  const Element document(New(host::kTypeDocument));
  g_calls.document = static_cast<BaseDocument*>(document.get());
  EXPECT_EQ(host::listnode::GetDocument(self), g_calls.document);
  EXPECT_TRUE(atom::Message(self, 3, nullptr));
  EXPECT_FALSE(atom::Message(self, 99, nullptr));
  EXPECT_EQ(Told(), "message3:0 end0 message99:0 end0 ");
  const Element quiet(New(kQuietType)), builtIn(New());
  EXPECT_TRUE(atom::Message(quiet.get(), 99, nullptr));
  EXPECT_EQ(Text(baselist::GetBubbleHelp(quiet.get())).Text(), "Quiet");
  EXPECT_FALSE(atom::Message(builtIn.get(), 99, nullptr));

  const Element copy(static_cast<BaseList2D*>(atom::GetClone(self, 0, nullptr)));
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(Told(), "init1 copy0 to1 ");
  EXPECT_TRUE(atom::CopyTo(self, copy.get(), 0, nullptr));
  EXPECT_EQ(Told(), "copy0 to1 ");
  g_calls.copies = false;
  EXPECT_EQ(atom::GetClone(self, 0, nullptr), nullptr);
  EXPECT_EQ(Told(), "init2 copy0 to2 free2 destroy2 ");
  g_calls.inits = false;
  EXPECT_EQ(baselist::Alloc(kType), nullptr);
  EXPECT_EQ(host::object::Alloc(kType), nullptr);
  EXPECT_EQ(atom::GetClone(self, 0, nullptr), nullptr);
  EXPECT_EQ(Told(), "init3 destroy3 init4 destroy4 init5 destroy5 ");
  g_calls.makes = false;
  EXPECT_EQ(baselist::Alloc(kType), nullptr);
  EXPECT_EQ(atom::GetClone(self, 0, nullptr), nullptr);
}

TEST_F(PluginScene, TheEndOfATreeIsToldOncePerElement) {
  BaseList2D *root = New(), *a = New(kType), *b = New(kType), *c = New(kType);
  InsertUnderLast(a, root);
  InsertUnderLast(b, a);
  listhead::InsertLast(HeadFor(b, host::kTypeNLA), c);
  Told();
  baselist::Free(root);
  EXPECT_EQ(Told(), "free0 free1 free2 destroy0 destroy1 destroy2 ");
}

// Whatever a plug-in destroys, moves or makes while one of its elements is made, copied, told or ended.
TEST_F(PluginScene, CallbacksMayDestroyEverything) {
  g_calls.onInit = [](GeListNode* node) { baselist::Free(static_cast<BaseList2D*>(node)); };
  EXPECT_EQ(baselist::Alloc(kType), nullptr);
  g_calls.onInit = nullptr;

  for (const bool above : {false, true}) {
    BaseList2D *root = New(), *self = New(kType);
    InsertUnderLast(self, root);
    baselist::AddEventNotification(root, self, 3, 0, nullptr);
    g_calls.onMessage = [&](GeListNode*) {
      g_calls.onMessage = nullptr;
      baselist::Free(above ? root : self);
    };
    EXPECT_TRUE(atom::Message(self, 3, nullptr));
    if (!above) baselist::Free(root);

    root = New(kType);
    for (int i = 0; i < 3; ++i) InsertUnderLast(New(kType), root);
    g_calls.onMessage = [&](GeListNode* node) {
      baselist::Free(above ? root : static_cast<BaseList2D*>(node));
    };
    EXPECT_TRUE(atom::MultiMessage(root, MULTIMSG_DOWN | MULTIMSG_BRANCHES, 3, nullptr));
    g_calls.onMessage = nullptr;

    // In the copy: the original, or the copy itself.
    root = New(kType);
    InsertUnderLast(New(kType), root);
    g_calls.onCopy = [&](GeListNode* copy) {
      g_calls.onCopy = nullptr;
      baselist::Free(above ? root : static_cast<BaseList2D*>(copy));
    };
    const Element copy(static_cast<BaseList2D*>(atom::GetClone(root, 0, nullptr)));
    EXPECT_EQ(copy == nullptr, !above);
    if (!above) baselist::Free(root);
    g_calls.onCopy = nullptr;

    // In its own end: itself again, the tree around it, or what comes next.
    root = New();
    self = New(kType);
    InsertUnderLast(self, root);
    InsertUnderLast(New(kType), self);
    g_calls.onFree = [&](GeListNode* node) {
      g_calls.onFree = nullptr;
      if (self->down) baselist::Free(static_cast<BaseList2D*>(self->down));
      InsertUnderLast(New(kType), self);
      baselist::Free(above ? root : static_cast<BaseList2D*>(node));
    };
    baselist::Free(self);
    if (!above) baselist::Free(root);
  }

  // What leaves the tree in time stays.
  const Element outside(New());
  BaseList2D *root = New(kType), *child = New(kType);
  InsertUnderLast(child, root);
  g_calls.onFree = [&](GeListNode*) { InsertUnderLast(child, outside.get()); };
  Told();
  baselist::Free(root);
  EXPECT_EQ(Told().find("free", 1), std::string::npos);
  EXPECT_EQ(outside->down, child);
  g_calls.onFree = nullptr;
}

TEST_F(PluginScene, MessagesReachWhatTheFlagsName) {
  const Element root(New(kType));
  BaseList2D *self = New(kType), *child = New(kType), *tag = New(kType), *below = New(kType),
             *childTag = New(kType);
  InsertUnderLast(self, root.get());
  InsertUnderLast(child, self);
  listhead::InsertLast(HeadFor(self, host::kTypeNLA), tag);
  InsertUnderLast(below, tag);
  listhead::InsertLast(HeadFor(child, host::kTypeNLA), childTag);
  const struct {
    int32_t flags;
    const char* reached;
  } cases[] = {{0, "1"}, {1, "10"}, {2, "12"}, {3, "120"}, {4, "134"}, {6, "12534"}, {7, "125340"}};
  for (const auto& c : cases) {
    std::string reached;
    g_calls.onMessage = [&](GeListNode* node) {
      reached += std::to_string(*static_cast<int*>(host::PluginData(*node)));
    };
    atom::MultiMessage(self, c.flags, 3, nullptr);
    EXPECT_EQ(reached, c.reached) << c.flags;
  }
  g_calls.onMessage = nullptr;
}

TEST_F(PluginScene, EventsAreNotified) {
  const Element node(New()), receiver(New(kType));
  BaseList2D* gone = New(kType);
  BaseContainer data(5);
  EXPECT_FALSE(baselist::FindEventNotification(receiver.get(), nullptr, node.get(), 3));
  for (BaseList2D* one : {receiver.get(), gone})
    EXPECT_TRUE(baselist::AddEventNotification(one, node.get(), 3, 1, &data));
  EXPECT_TRUE(baselist::AddEventNotification(receiver.get(), node.get(), 3, 2, &data));
  EXPECT_FALSE(baselist::AddEventNotification(receiver.get(), node.get(), 1001077, 2, &data));
  EXPECT_TRUE(baselist::FindEventNotification(receiver.get(), nullptr, node.get(), 3));
  EXPECT_FALSE(baselist::FindEventNotification(receiver.get(), nullptr, node.get(), 4));
  baselist::Free(gone);
  Told();
  EXPECT_FALSE(atom::Message(node.get(), 3, nullptr));
  atom::MultiMessage(node.get(), MULTIMSG_DOWN, 3, nullptr);
  atom::Message(node.get(), 4, nullptr);
  EXPECT_EQ(Told(), "message1001077:0 event3,2 end0 message1001077:0 event3,2 end0 ");
  EXPECT_TRUE(baselist::RemoveEventNotification(receiver.get(), nullptr, node.get(), 3));
  EXPECT_FALSE(baselist::RemoveEventNotification(receiver.get(), nullptr, node.get(), 3));
  atom::Message(node.get(), 3, nullptr);
  EXPECT_EQ(Told(), "");
}

TEST_F(PluginScene, PluginsAreElementsThatTheHostKeeps) {
  BasePlugin* self = plugin::FindPlugin(kType, PLUGIN_KIND_OBJECT);
  ASSERT_NE(self, nullptr);
  auto* element = reinterpret_cast<BaseList2D*>(self);
  EXPECT_EQ(atom::GetType(element), PLUGIN_KIND_OBJECT);
  EXPECT_EQ(Text(baselist::GetName(element)).Text(), "Scripted");
  EXPECT_FALSE(host::listnode::IsDocumentRelated(element));
  const Element node(New());
  EXPECT_FALSE(InsertUnderLast(element, node.get()));
  baselist::Free(element);
  EXPECT_EQ(plugin::FindPlugin(kType, 0), self);
  EXPECT_EQ(atom::GetClone(element, 0, nullptr), nullptr);
  EXPECT_FALSE(atom::Message(element, 3, nullptr));
}

}  // namespace
