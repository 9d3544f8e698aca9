// qlxpy: Python with the package ready, without a window.

#include <csignal>
#include <exception>

#include "app/application.h"
#include "files/files.h"

int main(int argc, char** argv) {
  try {
    const int code = host::Application(argc, argv).Run();
    if (code >= 0) return code;
    // Whoever started the process is to see what ended it.
    std::signal(-code, SIG_DFL);
    std::raise(-code);
    return 128 - code;
  } catch (const std::exception& error) {
    host::Complain(error.what());
  }
  return 2;
}
