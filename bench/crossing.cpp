// One crossing from the host into Python and out again: the scope of the module and the word
// of its library table, against the bare functions of the interpreter.

#include <Python.h>
#include <benchmark/benchmark.h>

#include "interpreter/lib_python_lock.h"
#include "interpreter/lib_python_machine.h"

namespace {

// The peer: what a host would write by hand.
void BareCrossing(benchmark::State& state) {
  for (auto _ : state) {
    const PyGILState_STATE held = PyGILState_Ensure();
    benchmark::ClobberMemory();
    PyGILState_Release(held);
  }
}

void ScopeCrossing(benchmark::State& state) {
  for (auto _ : state) {
    qlx::GilScope lock;
    benchmark::ClobberMemory();
  }
}

void TableCrossing(benchmark::State& state) {
  CPythonLibrary* library = qlx::CPythonLibraryObject();
  for (auto _ : state) {
    const int32_t held = library->CPyGilState_Ensure();
    benchmark::ClobberMemory();
    library->CPyGilState_Release(held);
  }
}

// A window for other threads around a blocking call, against the bare functions.
void BareWindow(benchmark::State& state) {
  qlx::GilScope lock;
  for (auto _ : state) {
    PyThreadState* thread = PyEval_SaveThread();
    benchmark::ClobberMemory();
    PyEval_RestoreThread(thread);
  }
}

void ScopeWindow(benchmark::State& state) {
  qlx::GilScope lock;
  for (auto _ : state) {
    qlx::HostBlockingScope window;
    benchmark::ClobberMemory();
  }
}

BENCHMARK(BareCrossing);
BENCHMARK(ScopeCrossing);
BENCHMARK(TableCrossing);
BENCHMARK(BareWindow);
BENCHMARK(ScopeWindow);

}  // namespace

int main(int argc, char** argv) {
  if (qlx::BindInterpreterLibrary()) return 2;
  Py_InitializeEx(0);
  qlx::FreeLockOfStart();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  qlx::TakeLockForEnd();
  return Py_FinalizeEx();
}
