// The constants that the host offers to scripts, from declarative files.
#ifndef HOST_APP_SYMBOLS_H
#define HOST_APP_SYMBOLS_H

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace host {

struct Symbol {
  std::string name;
  int32_t value;
};

struct SymbolTable {
  std::vector<Symbol> symbols;      // by file name, then in the order of the file
  std::vector<std::string> faults;  // what could not be taken, a line each
};

// Reads every *.toml of a folder. A name that comes twice keeps its first value.
SymbolTable ReadSymbols(const std::filesystem::path& folder);

}  // namespace host

#endif
