// Prints the seconds that the library alone takes for a file: the median of so many runs in one process.

#include <assimp/postprocess.h>

#include <algorithm>
#include <assimp/Importer.hpp>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  std::vector<double> seconds;
  for (int run = 0; run < std::atoi(argv[2]); ++run) {
    Assimp::Importer importer;
    const auto start = std::chrono::steady_clock::now();
    if (!importer.ReadFile(argv[1], 0)) return 1;
    seconds.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  }
  std::sort(seconds.begin(), seconds.end());
  std::printf("%.6f\n", seconds[seconds.size() / 2]);
}
