// The list of all thread objects of scripts, each under a node of its own, and their end.

#include "threading/threads.h"

#include <atomic>
#include <new>
#include <string>

#include "interpreter/lib_python.h"
#include "kelvar/baselist.h"
#include "kelvar/listhead.h"
#include "kelvar/plugin.h"
#include "kelvar/text.h"
#include "kit/i_row.h"

namespace qlx {
namespace {

constexpr int32_t kSetMember = 1026946;

GeListHead* g_keepers = nullptr;
bool g_mayStart = false;
std::atomic<ScriptThread*> g_ended{nullptr};

// A message whose data is this very place asks for what the others have set. A script may send one of its own
// to a node of its own, which is in no list.
ScriptThread* g_asked = nullptr;

HostBool Answer(void* data, GeListNode*, int32_t id, void* message) {
  if (id != kSetMember) return 1;
  auto*& member = *static_cast<ScriptThread**>(data);
  if (message == &g_asked)
    g_asked = member;
  else
    member = static_cast<ScriptThread*>(message);
  return 1;
}

template <class Visit>
void ForEachThread(Visit visit) {
  for (GeListNode* node = g_keepers->GetFirst(); node; node = node->GetNext()) {
    g_asked = nullptr;
    node->Message(kSetMember, &g_asked);
    auto* host = g_asked ? static_cast<BaseThread*>(LookUp(g_asked->host)) : nullptr;
    if (host) visit(*g_asked, *host);
  }
}

BaseThread* FirstRunning() {
  BaseThread* running = nullptr;
  ForEachThread([&](ScriptThread&, BaseThread& host) {
    if (!running && host.IsRunning()) running = &host;
  });
  return running;
}

// Threads may end, and their objects go, whenever the lock is free. Only a signal ends the wait for one that
// doesn't listen.
void WaitForAll() {
  while (BaseThread* host = FirstRunning()) {
    const Pin<BaseThread> pin(host);
    if (!pin.held || !WaitFor([&](int32_t limit) { return host->Wait(false, limit); })) break;
  }
  PyErr_Clear();
}

void ReportLeftBehind() {
  std::string names;
  ForEachThread([&](ScriptThread& thread, BaseThread& host) {
    if (!host.IsRunning()) return;
    names += names.empty() ? "'" : ", '";
    names += thread.self ? Py_TYPE(thread.self)->tp_name : g_QLXThreadType.tp_name;
    names += "'";
  });
  if (!names.empty())
    LogError(tavor::Error("threads of scripts that still run at the end are left behind: " + names));
}

}  // namespace

void RegisterThreadNode() {
  const String name = kelvar::Text("Python Thread Node");
  NodeRecord record{};
  record.base = {sizeof record, PLUGIN_KIND_NODE, kThreadNode, 0, name.Word(), nullptr, nullptr, nullptr};
  record.Create = [](void*) -> void* { return new (std::nothrow) ScriptThread* {}; };
  record.Destroy = [](void* data) { delete static_cast<ScriptThread**>(data); };
  record.Message = Answer;
  if (!BasePlugin::RegisterNode(&record)) return;
  g_keepers = GeListHead::Alloc();
  g_mayStart = g_keepers != nullptr;
}

void StopPythonThreads() {
  g_mayStart = false;
  if (!g_keepers) return;
  ForEachThread([](ScriptThread&, BaseThread& host) { host.End(false); });
  WaitForAll();
  ReportLeftBehind();
  g_keepers->FlushAll();
  FreeEnded();
}

void FreeThreadList() {
  if (g_keepers) g_keepers->Free();
  g_keepers = nullptr;
}

bool MayThreadsStart() { return g_mayStart; }

bool KeepThread(ScriptThread& thread) {
  BaseList2D* node = g_mayStart ? BaseList2D::Alloc(kThreadNode) : nullptr;
  if (!node) return false;
  if (!SetLink(node, thread.keeper)) {
    node->Free();
    return false;
  }
  node->Message(kSetMember, &thread);
  g_keepers->InsertLast(node);
  return true;
}

void HandOverEnded(ScriptThread& thread) {
  thread.next = g_ended;
  while (!g_ended.compare_exchange_weak(thread.next, &thread)) {
  }
}

void FreeEnded() {
  for (ScriptThread *thread = g_ended.exchange(nullptr), *next; thread; thread = next) {
    next = thread->next;
    if (auto* node = static_cast<BaseList2D*>(LookUp(thread->keeper))) {
      node->Remove();
      node->Free();
    }
    FreeLink(thread->keeper);
    FreeLink(thread->host);
    delete thread;
  }
}

}  // namespace qlx
