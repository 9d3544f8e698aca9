// What the binding kit costs, on the reference host: calls through the interpreter, wrappers, links.

#include <Python.h>
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>

#include "app/settings.h"
#include "bitmaps/bitmaps.h"
#include "boundary/host.h"
#include "boundary/tables.h"
#include "interpreter/lib_python_lock.h"
#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "peer_c.h"
#include "scene/links.h"
#include "scene/scene.h"

namespace {

constexpr int32_t kCube = 5159;

double Weigh(const QLXAtom& self, int32_t a, double b) {
  benchmark::DoNotOptimize(&self);
  return 1.0 + a * b;
}

PyMethodDef g_methods[] = {
    qlx::Method<&Weigh, "id", "a", "b">("Weigh", ""),
    {},
};

// An element with a method of two arguments.
PyTypeObject g_weighedType = qlx::MakeType<qlx::AtomWrapper>({
    .name = "bench.Weighed",
    .doc = "",
    .methods = g_methods,
    .destroy = qlx::FreeElement,
});

// A measurement of something that failed would be none.
PyObject* Need(PyObject* object) {
  if (object) return object;
  if (PyErr_Occurred()) PyErr_Print();
  std::fputs("kit_bench: the set-up failed\n", stderr);
  std::exit(2);
}

QLXAtom* Element() {
  static QLXAtom* const element = BaseList2D::Alloc(kCube);
  if (!element) Need(nullptr);
  return element;
}

// What is called on our side, and on a peer's.
PyObject* Picture() {
  PyObject* picture = Need(PyObject_CallObject(reinterpret_cast<PyObject*>(&qlx::g_BaseBitmapType), nullptr));
  Py_DECREF(Need(PyObject_CallMethod(picture, "Init", "ii", 64, 64)));
  return picture;
}
PyObject* Weighed() { return Need(qlx::WrapAtom(&g_weighedType, Element(), false)); }

PyObject* PeerThing(const char* module) {
  PyObject* imported = Need(PyImport_ImportModule(module));
  PyObject* thing = Need(PyObject_CallMethod(imported, "Thing", nullptr));
  Py_DECREF(imported);
  return thing;
}

// Calls of a method of `self`, which is consumed. A null `args` stands for no arguments.
void Call(benchmark::State& state, PyObject* self, const char* name, PyObject* args, PyObject* keywords) {
  PyObject* method = Need(PyObject_GetAttrString(self, name));
  const auto call = [&] {
    return args ? PyObject_Call(method, args, keywords) : PyObject_CallObject(method, nullptr);
  };
  Py_DECREF(Need(call()));
  for (auto _ : state) {
    PyObject* result = call();
    benchmark::DoNotOptimize(result);
    Py_XDECREF(result);
  }
  Py_XDECREF(keywords);
  Py_XDECREF(args);
  Py_DECREF(method);
  Py_DECREF(self);
}

void Plain(benchmark::State& state, PyObject* self, const char* name) {
  Call(state, self, name, nullptr, nullptr);
}
void ByPosition(benchmark::State& state, PyObject* self) {
  Call(state, self, "Weigh", Need(Py_BuildValue("(id)", 3, 2.5)), nullptr);
}
void ByKeyword(benchmark::State& state, PyObject* self) {
  Call(state, self, "Weigh", Need(PyTuple_New(0)), Need(Py_BuildValue("{sisd}", "a", 3, "b", 2.5)));
}

// Objects that are made and dropped.
template <class Make>
void Drop(benchmark::State& state, Make make) {
  Py_DECREF(Need(make()));
  for (auto _ : state) {
    PyObject* object = make();
    benchmark::DoNotOptimize(object);
    Py_XDECREF(object);
  }
}

// What resolving a link is compared with: nothing but the call through a pointer.
__attribute__((noinline)) bool Nothing(qlx::AtomWrapper* wrapper, QLXAtom*& host) {
  host = static_cast<QLXAtom*>(wrapper->link.slot);
  return host;
}

// Every round waits for the one before, as the call behind a gate waits for its object.
void Resolve(benchmark::State& state, bool (*resolve)(qlx::AtomWrapper*, QLXAtom*&)) {
  PyObject* object = Weighed();
  auto* wrapper = reinterpret_cast<qlx::AtomWrapper*>(object);
  for (auto _ : state) {
    benchmark::DoNotOptimize(resolve);
    QLXAtom* host = nullptr;
    bool alive = resolve(wrapper, host);
    benchmark::DoNotOptimize(alive);
    benchmark::DoNotOptimize(host);
  }
  Py_DECREF(object);
}

void Register() {
  using benchmark::RegisterBenchmark;
  using benchmark::State;
  RegisterBenchmark("LinkKit", [](State& state) { Resolve(state, qlx::ResolveAtom); });
  RegisterBenchmark("LinkBare", [](State& state) { Resolve(state, Nothing); });
  RegisterBenchmark("PlainKit", [](State& state) { Plain(state, Picture(), "GetBw"); });
  RegisterBenchmark("PlainC", [](State& state) { Plain(state, PeerThing("peer_c"), "GetWidth"); });
  RegisterBenchmark("PositionKit", [](State& state) { ByPosition(state, Weighed()); });
  RegisterBenchmark("PositionC", [](State& state) { ByPosition(state, PeerThing("peer_c")); });
  RegisterBenchmark("KeywordKit", [](State& state) { ByKeyword(state, Weighed()); });
  RegisterBenchmark("KeywordC", [](State& state) { ByKeyword(state, PeerThing("peer_c")); });
#ifdef PEER_PYBIND11
  RegisterBenchmark("PlainPybind11",
                    [](State& state) { Plain(state, PeerThing("peer_pybind11"), "GetWidth"); });
  RegisterBenchmark("PositionPybind11", [](State& state) { ByPosition(state, PeerThing("peer_pybind11")); });
  RegisterBenchmark("KeywordPybind11", [](State& state) { ByKeyword(state, PeerThing("peer_pybind11")); });
#endif
  RegisterBenchmark("WrapKit", [](State& state) {
    Drop(state, [] { return qlx::WrapAtom(&qlx::g_BaseList2DType, Element(), false); });
  });
  RegisterBenchmark("ChooseKit",
                    [](State& state) { Drop(state, [] { return qlx::WrapHostObject(Element(), false); }); });
  RegisterBenchmark("WrapC", [](State& state) { Drop(state, [] { return PeerMakeRecord(Element(), 1); }); });
}

void TakeTables() {
  static HostTables tables{};
  host::OfferLinkLayout();
  host::boundary_tables::Fill(tables, HOST_VERSION_MINIMUM);
  const std::string missing = tables::Resolve(&tables);
  if (missing.empty()) return;
  std::fprintf(stderr, "kit_bench: %s\n", missing.c_str());
  std::exit(2);
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (qlx::BindInterpreterLibrary()) return 2;
  host::InitSettings(1, argv);
  TakeTables();
  PyImport_AppendInittab("peer_c", PyInit_peer_c);
#ifdef PEER_PYBIND11
  PyImport_AppendInittab("peer_pybind11", PyInit_peer_pybind11);
#endif
  Py_InitializeEx(0);
  if (!qlx::ReadyTypeQueue().empty() || PyType_Ready(&g_weighedType) < 0) Need(nullptr);
  Register();
  benchmark::RunSpecifiedBenchmarks();
  qlx::ReleaseRecordPools();
  return Py_FinalizeEx();
}
