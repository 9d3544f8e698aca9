// Pools of freed records.

#include "kit/i_pool.h"

#include <vector>

#include "interpreter/lib_python_leaks.h"

namespace qlx {
namespace {

// A function, because pools register while other files' objects are still being made.
std::vector<RecordList*>& Lists() {
  static auto& lists = *new std::vector<RecordList*>;
  return lists;
}

}  // namespace

RecordList::RecordList() { Lists().push_back(this); }

void RecordList::Restart(bool keeps) {
  while (void* record = Take()) PyObject_Free(record);
  room_ = keeps ? kMost : 0;
}

void ReleaseRecordPools() {
  for (RecordList* list : Lists()) list->Restart(!LeakTracker::IsOn());
}

}  // namespace qlx
