// Pools of freed records.

#include "kit/i_pool.h"

#include <vector>

namespace qlx {
namespace {

// A function, because pools register while other files' objects are still being made.
std::vector<RecordList*>& Lists() {
  static auto& lists = *new std::vector<RecordList*>;
  return lists;
}

}  // namespace

RecordList::RecordList() { Lists().push_back(this); }

void RecordList::Release() {
  while (void* record = Take()) PyObject_Free(record);
}

void ReleaseRecordPools() {
  for (RecordList* list : Lists()) list->Release();
}

}  // namespace qlx
