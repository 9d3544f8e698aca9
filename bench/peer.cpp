// The interpreter's own command line on the library that the module loads: what a distribution
// installs as `python` may be built in another way.

#include <cstdio>

// Each library has one of the two, under a name of its time.
extern "C" {
__attribute__((weak)) int Py_BytesMain(int argc, char** argv);
__attribute__((weak)) int _Py_UnixMain(int argc, char** argv);
}

int main(int argc, char** argv) {
  if (Py_BytesMain) return Py_BytesMain(argc, argv);
  if (_Py_UnixMain) return _Py_UnixMain(argc, argv);
  std::fputs("the interpreter's library has no command line\n", stderr);
  return 1;
}
