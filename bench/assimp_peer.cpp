// Prints the seconds that the library alone takes for a file, in a program that has not read another one
// before.

#include <assimp/scene.h>

#include <assimp/Importer.hpp>
#include <chrono>
#include <cstdio>

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  Assimp::Importer importer;
  const auto start = std::chrono::steady_clock::now();
  if (!importer.ReadFile(argv[1], 0)) return 1;
  std::printf("%.6f\n", std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
}
