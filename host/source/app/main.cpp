// qlxpy: Python with the package ready, without a window.

#include <exception>

#include "app/application.h"
#include "files/files.h"

int main(int argc, char** argv) {
  try {
    return host::Application(argc, argv).Run();
  } catch (const std::exception& error) {
    host::Complain(error.what());
  }
  return 2;
}
