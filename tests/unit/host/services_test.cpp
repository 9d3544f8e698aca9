#include <thread>

#include "app/event_queue.h"
#include "app/settings.h"
#include "support.h"

namespace {

using ::testing::internal::CaptureStderr;
using ::testing::internal::CaptureStdout;
using ::testing::internal::GetCapturedStderr;
using ::testing::internal::GetCapturedStdout;

TEST(EventQueue, KeepsEachThreadsOrderAndMergesRefreshes) {
  constexpr int kThreads = 4, kEvents = 2000;
  std::vector<std::thread> threads;
  std::atomic<int> running{kThreads};
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([&, t] {
      for (int i = 0; i < kEvents; ++i) {
        host::general::SpecialEventAdd(t, uint64_t(i), uint64_t(t) << 40);
        host::general::EventAdd(1 << t);
      }
      --running;
    });
  std::vector<uint64_t> next(kThreads, 0);
  int32_t flags = 0;
  for (bool last = false; !last;) {
    last = running == 0;
    const host::PendingEvents pending = host::GetEventQueue().Take();
    flags |= pending.refreshFlags;
    for (const host::Event& event : pending.events) {
      ASSERT_EQ(event.p1, next[size_t(event.id)]++);
      ASSERT_EQ(event.p2, uint64_t(event.id) << 40);
    }
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(next, std::vector<uint64_t>(kThreads, kEvents));
  EXPECT_EQ(flags, 0b1111);
  EXPECT_FALSE(host::GetEventQueue().Take());
}

std::string freed;

struct Receiver {
  char name;
  int32_t answer;
  int messages = 0;

  PluginRecord Record(int32_t id, int32_t kind, const HostString* shown) {
    return {sizeof(PluginRecord),
            kind,
            id,
            0,
            shown,
            this,
            [](void* self, int32_t, void* data) {
              ++*static_cast<int*>(data);
              ++static_cast<Receiver*>(self)->messages;
              return static_cast<Receiver*>(self)->answer;
            },
            [](void* self) { freed += static_cast<Receiver*>(self)->name; }};
  }
};

TEST(Plugins, RegisterFindSendFree) {
  Receiver a{'a', 0}, b{'b', 0}, c{'c', 1}, refused{'!', 1};
  Text first(Word("First")), second(Word("Second")), none;
  const PluginRecord recordA = a.Record(70001, PLUGIN_KIND_TAG, &first);
  const PluginRecord recordB = b.Record(70002, PLUGIN_KIND_MESSAGE, &second);
  CommandRecord command{c.Record(70003, PLUGIN_KIND_COMMAND, &first), &second, nullptr, nullptr};
  command.base.size = sizeof command;
  BasePlugin* pluginA = host::plugin::RegisterPlugin(&recordA);
  ASSERT_TRUE(pluginA && host::plugin::RegisterPlugin(&recordB));

  int count = 0;
  EXPECT_EQ(host::general::GePluginMessage(1, &count), 0);
  BasePlugin* pluginC = host::plugin::RegisterCommand(&command);
  EXPECT_EQ(host::general::GePluginMessage(1, &count), 1);
  EXPECT_EQ(host::plugin::Message(pluginC, 1, &count), 1);
  EXPECT_EQ(host::plugin::Message(pluginA, 1, &count), 0);
  EXPECT_EQ(count, 7);
  EXPECT_EQ(a.messages, 3);

  CaptureStderr();
  const PluginRecord taken = refused.Record(70001, PLUGIN_KIND_TOOL, &second);
  const PluginRecord unnamed = refused.Record(70004, PLUGIN_KIND_TOOL, &none);
  EXPECT_EQ(host::plugin::RegisterPlugin(&taken), nullptr);
  EXPECT_EQ(host::plugin::RegisterPlugin(&unnamed), nullptr);
  EXPECT_EQ(GetCapturedStderr(),
            "the plug-in 'Second' with the id 70001 is not registered: the id belongs to 'First'\n"
            "the plug-in '' with the id 70004 is not registered: it has no name\n");

  EXPECT_EQ(host::plugin::FindPlugin(70001, 0), pluginA);
  EXPECT_EQ(host::plugin::FindPlugin(70001, PLUGIN_KIND_TAG), pluginA);
  EXPECT_EQ(host::plugin::FindPlugin(70001, PLUGIN_KIND_TOOL), nullptr);
  EXPECT_EQ(host::plugin::FindPlugin(70004, 0), nullptr);
  std::string order;
  for (BasePlugin* p = host::plugin::GetFirstPlugin(); p; p = host::plugin::GetNext(p))
    order += Text(host::plugin::GetName(p)).Text() + std::to_string(host::plugin::GetID(p)) + " ";
  EXPECT_EQ(order, "First70001 Second70002 First70003 ");
  EXPECT_EQ(host::plugin::GetPluginType(pluginC), PLUGIN_KIND_COMMAND);

  host::FreePlugins();
  EXPECT_EQ(freed, "cba");
  EXPECT_EQ(host::plugin::FindPlugin(70001, 0), nullptr);
  host::FreePlugins();
  EXPECT_EQ(freed, "cba");
}

TEST(Registry, IdsAreTakenOnceInEachRegistry) {
  int one = 0, two = 0;
  EXPECT_EQ(Take(host::registry::Insert("r", "id", &one)), HOST_RESULT_OK);
  EXPECT_EQ(Take(host::registry::Insert("s", "id", &two)), HOST_RESULT_OK);
  std::string error;
  EXPECT_EQ(Take(host::registry::Insert("r", "id", &two), &error), HOST_RESULT_ERROR);
  EXPECT_EQ(error, "'id' is taken in the registry 'r'");
  EXPECT_EQ(Take(host::registry::Insert("r", "null", nullptr)), HOST_RESULT_ILLEGAL_ARGUMENT);
  EXPECT_EQ(host::registry::Find("r", "id"), &one);
  EXPECT_EQ(host::registry::Erase("r", "id"), 1);
  EXPECT_EQ(host::registry::Erase("r", "id"), 0);
  EXPECT_EQ(host::registry::Find("r", "id"), nullptr);
  EXPECT_EQ(host::registry::Find("s", "id"), &two);
}

TEST(DataDictionary, ValuesKeepTheirKind) {
  DataDictionary* settings = host::datadictionary::Create();
  Text text(Word("text"));
  EXPECT_EQ(host::datadictionary::SetInt(settings, "a", int64_t(1) << 40), 1);
  EXPECT_EQ(host::datadictionary::SetString(settings, "b", &text), 1);
  EXPECT_EQ(host::datadictionary::GetInt(settings, "a", 7), int64_t(1) << 40);
  EXPECT_EQ(host::datadictionary::GetInt(settings, "b", 7), 7);
  EXPECT_EQ(host::datadictionary::GetInt(settings, "c", 7), 7);
  EXPECT_EQ(Text(host::datadictionary::GetString(settings, "a")).Text(), "");
  EXPECT_EQ(Text(host::datadictionary::GetString(settings, "b")).Text(), "text");
  EXPECT_EQ(host::datadictionary::SetInt(settings, "b", 3), 1);
  EXPECT_EQ(host::datadictionary::GetInt(settings, "b", 7), 3);
  host::datadictionary::Free(settings);
}

TEST(Libraries, VersionDecides) {
  const int old = 0, current = 0;
  EXPECT_EQ(host::general::FindLibrary(80001, 0), nullptr);
  EXPECT_EQ(host::general::InstallLibrary(80001, 1000, &old), 1);
  EXPECT_EQ(host::general::InstallLibrary(80001, 1001, &current), 1);
  EXPECT_EQ(host::general::FindLibrary(80001, 1001), &current);
  EXPECT_EQ(host::general::FindLibrary(80001, 1002), nullptr);
  EXPECT_EQ(host::general::InstallLibrary(80001, 0, nullptr), 1);
  EXPECT_EQ(host::general::FindLibrary(80001, 0), nullptr);
}

TEST(Application, ConfigurationAndModuleInfo) {
  EXPECT_EQ(host::application::GetConfigurationBool("g_console", 0), 1);
  EXPECT_EQ(host::application::GetConfigurationBool("g_encryptPypFile", 1), 0);
  EXPECT_EQ(host::application::GetConfigurationBool("g_unknown", 5), 5);
  host::application::SetConfigurationBool("g_unknown", 9);
  EXPECT_EQ(host::application::GetConfigurationBool("g_unknown", 5), 1);

  Text name(Word("n")), version(Word("3")), newer(Word("4"));
  EXPECT_EQ(Take(host::application::RegisterModuleInfo("id", &name, &name, &version)), HOST_RESULT_OK);
  EXPECT_EQ(Take(host::application::RegisterModuleInfo("id", &name, &name, &newer)), HOST_RESULT_OK);
  EXPECT_EQ(Take(host::application::RegisterModuleInfo("", &name, &name, &newer)),
            HOST_RESULT_ILLEGAL_ARGUMENT);
  ASSERT_EQ(host::GetModuleInfos().size(), 1u);
  EXPECT_EQ(host::GetModuleInfos()[0].version, "4");

  host::GetSettings().arguments = {"qlxpy", "a\xff"};
  EXPECT_EQ(host::application::GetArgumentCount(), 2);
  EXPECT_EQ(Text(host::application::GetArgument(1)).Text(), "a\xff");
  EXPECT_EQ(Text(host::application::GetArgument(2)).Text(), "");
  EXPECT_EQ(Text(host::application::GetArgument(-1)).Text(), "");
}

TEST(Logger, LevelsChooseOutputAndStream) {
  const struct {
    int32_t outputLevel, level;
    const char* stream;  // "o" or "e"; empty: not shown
  } cases[] = {
      {0, LOGGER_LEVEL_FATAL, ""},
      {LOGGER_LEVEL_ALL, LOGGER_LEVEL_FATAL, "e"},
      {LOGGER_LEVEL_ALL, LOGGER_LEVEL_WARNING, "e"},
      {LOGGER_LEVEL_ALL, LOGGER_LEVEL_OUTPUT, "o"},
      {LOGGER_LEVEL_ALL, LOGGER_LEVEL_STREAM_ERROR, "e"},
      {LOGGER_LEVEL_ALL, LOGGER_LEVEL_ALL, "e"},
      {LOGGER_LEVEL_ALL, LOGGER_LEVEL_ALL + 1, ""},
      {LOGGER_LEVEL_WARNING, LOGGER_LEVEL_ERROR, "e"},
      {LOGGER_LEVEL_WARNING, LOGGER_LEVEL_OUTPUT, ""},
  };
  Text name(Word("Test")), text(Word("{} no line end"));
  for (const auto& c : cases) {
    Logger* logger = host::logger::Create("net.tavor.logger.test", &name);
    EXPECT_EQ(logger, host::logger::Create("net.tavor.logger.test", &name));
    for (const int32_t output : {LOGGER_OUTPUT_DEFAULT, LOGGER_OUTPUT_APPLICATION}) {
      if (!c.outputLevel) continue;
      EXPECT_EQ(Take(host::logger::AddOutput(logger, output, c.outputLevel)), HOST_RESULT_OK);
    }
    EXPECT_EQ(Take(host::logger::AddOutput(logger, 3, LOGGER_LEVEL_ALL)), HOST_RESULT_ILLEGAL_ARGUMENT);
    CaptureStdout();
    CaptureStderr();
    host::logger::Write(logger, LOGGER_TARGET_USER, c.level, &text, nullptr, 0);
    EXPECT_EQ(GetCapturedStdout(), *c.stream == 'o' ? text.Text() : "") << c.level;
    EXPECT_EQ(GetCapturedStderr(), *c.stream == 'e' ? text.Text() : "") << c.level;
    host::logger::Remove(logger);
  }
}

TEST(General, FoldersMenusAndMemory) {
  host::Settings& settings = host::GetSettings();
  settings.startup = "/app/lib";
  settings.home = "/home/me";
  const struct {
    int32_t kind;
    const char* folder;
  } cases[] = {{3, "/app/lib/library"}, {4, "/home/me/library"}, {8, "/home/me"}, {1, ""}, {0, ""}};
  for (const auto& c : cases) EXPECT_EQ(Path(host::general::GeGetQLXPath(c.kind)).Text(), c.folder);
  EXPECT_EQ(host::general::GetPluginFolderCount(), 2);
  EXPECT_EQ(Path(host::general::GetPluginFolder(0)).Text(), "/app/lib/plugins");
  EXPECT_EQ(Path(host::general::GetPluginFolder(1)).Text(), "/home/me/plugins");
  EXPECT_EQ(Path(host::general::GetPluginFolder(2)).Text(), "");
  settings.home.clear();
  EXPECT_EQ(Path(host::general::GeGetQLXPath(HOST_PATH_USER_LIBRARY)).Text(), "");
  EXPECT_EQ(host::general::GetPluginFolderCount(), 1);

  Text python(Word("Python")), other(Word("Other")), none;
  HostMenuGroup* group = host::general::GetPluginMenuGroup(nullptr, &python);
  HostMenuGroup* inside = host::general::GetPluginMenuGroup(group, &python);
  EXPECT_NE(group, inside);
  EXPECT_NE(group, host::general::GetPluginMenuGroup(nullptr, &other));
  EXPECT_EQ(group, host::general::GetPluginMenuGroup(nullptr, &python));
  EXPECT_EQ(inside, host::general::GetPluginMenuGroup(group, &python));
  EXPECT_EQ(host::general::GetPluginMenuGroup(nullptr, &none), nullptr);

  EXPECT_EQ(host::general::Alloc(-1), nullptr);
  void* nothing = host::general::Alloc(0);
  EXPECT_NE(nothing, nullptr);
  host::general::Free(nothing);
  int32_t elsewhere = 1;
  std::thread([&] { elsewhere = host::general::GeIsMainThread(); }).join();
  EXPECT_EQ(elsewhere, 0);
}

}  // namespace
