// A tool of the build: writes the constants of the node types in a folder into one file of constants.

#include <cstdio>
#include <fstream>

#include "scene/nodetypes.h"

int main(int count, char** arguments) {
  if (count != 3) return 2;
  const host::NodeTypes types(arguments[1]);
  for (const std::string& fault : types.Faults()) std::fprintf(stderr, "%s\n", fault.c_str());
  if (!types.Faults().empty()) return 1;
  std::ofstream file(arguments[2]);
  file << "# The constants of the types, groups and parameters in the folder nodes. Made by the build.\n\n";
  for (const host::Symbol& symbol : types.Symbols()) file << symbol.name << " = " << symbol.value << "\n";
  return file.flush() ? 0 : 1;
}
