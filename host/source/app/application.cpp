#include "app/application.h"

#include <fmt/format.h>

#include <cstdio>
#include <exception>
#include <string>

#include "app/event_queue.h"
#include "app/settings.h"
#include "boundary/host.h"
#include "documents/documents.h"
#include "files/files.h"
#include "scene/links.h"
#include "tables/tables.h"
#include "tables/values.h"

namespace host {
namespace {

constexpr int32_t kHostVersion = HOST_VERSION_MINIMUM;
constexpr int kStartFailed = 2;

constexpr int32_t kStartMessages[] = {HOST_MESSAGE_ALL_LOADED, HOST_MESSAGE_LOAD_PLUGINS};
constexpr int32_t kEndMessages[] = {HOST_MESSAGE_END_1, HOST_MESSAGE_END_2, HOST_MESSAGE_END_3};

// The text of an error that the module answered; frees it.
std::string TakeText(HostResult result) {
  std::string text(View(&result.text));
  Drop(result.text);
  return text.empty() ? fmt::format("the module failed with code {}", result.code) : text;
}

}  // namespace

Application::Application(int argc, char** argv) {
  InitSettings(argc, argv);
  OfferLinkLayout();
  boundary_tables::Fill(tables_, kHostVersion);
}

int Application::Run() {
  CreateHome();
  try {
    const Module module(FindModule());
    if (Open(module)) RunOpened(module);
  } catch (const std::exception& error) {
    Fail(error.what());
  }
  std::fflush(nullptr);
  return ExitCode();
}

// A user without a writable folder can still work.
void Application::CreateHome() const {
  const auto& home = GetSettings().home;
  if (home.empty()) return Complain("no folder for the user's files: HOME is not set");
  if (const auto error = CreateFolders(home))
    Complain(fmt::format("can't create the folder '{}': {}", home.string(), error.message()));
}

bool Application::Open(const Module& module) {
  HostFilename file = MakeFilename(module.File().native());
  const int32_t result = module.Call(QLX_ACTION_OPEN, &tables_, nullptr, &file);
  Drop(file);
  if (result == 1) return true;
  Fail(fmt::format("the module '{}' refused this host, version {}", module.File().string(), kHostVersion));
  return false;
}

// What was opened is closed, whatever happens in between.
void Application::RunOpened(const Module& module) {
  try {
    if (Start(module)) Work(module);
  } catch (const std::exception& error) {
    Fail(error.what());
  }
  End(module);
}

bool Application::Start(const Module& module) {
  if (!BringUp()) return false;
  if (!module.Message(HOST_MESSAGE_INIT)) {
    Fail("the module could not be initialised");
    return false;
  }
  // The module has said what did not start; what did is of use.
  module.Call(QLX_ACTION_PLUGIN_START);
  for (const int32_t id : kStartMessages) module.Message(id);
  return true;
}

bool Application::BringUp() {
  const ModuleInitialization pair = GetModuleInitialization();
  const HostResult result = pair.BringUp ? pair.BringUp() : HostResult{};
  if (result.code == HOST_RESULT_OK) return true;
  Fail(TakeText(result));
  return false;
}

// What the work makes of the command line is told by the exit code that the module sets.
void Application::Work(const Module& module) {
  DrainEvents();
  if (const auto& scene = GetSettings().scene; !quit_ && !scene.empty()) OpenScene(scene);
  if (!quit_) module.Message(HOST_MESSAGE_RUN_APPLICATION);
}

// No window shows a scene and nothing else listens to events yet: only the end is acted on.
void Application::DrainEvents() {
  while (const PendingEvents pending = GetEventQueue().Take())
    for (const Event& event : pending.events) quit_ = quit_ || event.id == HOST_EVENT_QUIT;
  ReclaimDestroyed();
}

void Application::End(const Module& module) {
  DrainEvents();
  for (const int32_t id : kEndMessages) {
    module.Message(id);
    // The first one stops the threads of scripts, and their classes can still end.
    if (id == HOST_MESSAGE_END_1) CloseDocuments();
  }
  if (const auto shutdown = GetModuleInitialization().Shutdown) shutdown();
  FreePlugins();
  module.Call(QLX_ACTION_CLOSE);
}

void Application::Fail(std::string_view what) {
  failed_ = true;
  Complain(what);
}

int Application::ExitCode() const {
  const int code = GetSettings().exitCode;
  return code == 0 && failed_ ? kStartFailed : code;
}

}  // namespace host
