// How a table that a host offers becomes the table that the module calls.
#ifndef BOUNDARY_RESOLVE_H
#define BOUNDARY_RESOLVE_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>

#include "../../../core.framework/source/tavor/tables/t_tavor.h"

extern "C" TavorRecord g_tavor;

namespace boundary {

struct Required {
  size_t offset;
  const char* name;
};

// Lays the words of an offered table over the stand-ins; null words leave the stand-in.
template <class Table>
void Overlay(Table& table, const void* offered, size_t offeredBytes, size_t headBytes) {
  const size_t bytes = offeredBytes < sizeof(Table) ? offeredBytes : sizeof(Table);
  for (size_t offset = headBytes; offset + sizeof(void*) <= bytes; offset += sizeof(void*)) {
    void* word;
    std::memcpy(&word, static_cast<const char*>(offered) + offset, sizeof word);
    if (word) std::memcpy(reinterpret_cast<char*>(&table) + offset, &word, sizeof word);
  }
}

template <class Table>
Table ResolveGroup(const HostTables* host, int32_t number, const char* name, const Table& standIns,
                   std::initializer_list<Required> required, std::string& missing) {
  Table table = standIns;
  const HostGroup* offered = number < host->groupCount ? host->group[number] : nullptr;
  if (offered) Overlay(table, offered, offered->size, sizeof(HostGroup));
  for (const Required& entry : required) {
    void* found = nullptr;
    if (offered && offered->size >= entry.offset + sizeof(void*))
      std::memcpy(&found, reinterpret_cast<const char*>(offered) + entry.offset, sizeof found);
    if (found) continue;
    missing += missing.empty() ? "" : "; ";
    missing += "wanted '" + std::string(entry.name) + "' at byte " + std::to_string(entry.offset) +
               " of group " + std::to_string(number) + " (" + name + "), offered ";
    missing += !offered ? "no such group"
               : offered->size < entry.offset + sizeof(void*)
                   ? "a group of " + std::to_string(offered->size) + " bytes"
                   : "a null word";
  }
  return table;
}

// A service table, looked up through g_tavor until the host has it. Threads that come first
// together each make the same copy; one of them stays.
template <class Table>
class Service {
 public:
  Service(const char* identity, const Table& standIns) : identity_(identity), standIns_(standIns) {}

  const Table& Get() {
    if (const Table* table = resolved_.load(std::memory_order_acquire)) return *table;
    const TavorHead* offered = g_tavor.ResolveService ? g_tavor.ResolveService(identity_) : nullptr;
    if (!offered) return standIns_;
    auto* table = new Table(standIns_);
    Overlay(*table, offered, offered->size, sizeof(TavorHead));
    const Table* expected = nullptr;
    if (resolved_.compare_exchange_strong(expected, table, std::memory_order_acq_rel)) return *table;
    delete table;
    return *expected;
  }

 private:
  const char* identity_;
  const Table& standIns_;
  std::atomic<const Table*> resolved_{nullptr};
};

}  // namespace boundary

#endif
