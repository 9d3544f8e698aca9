// Bindings, each with one fault. misuse.py compiles the cases one by one; the case 0 has no fault.
//
// CASE number: the template that the compiler's message names, and the method.

#include "bitmaps/bitmaps.h"
#include "kit/i_row.h"
#include "scene/scene.h"
#include "values/values.h"

#ifndef CASE
#define CASE 0
#endif

namespace qlx {

struct Unknown {};

Unknown GetUnknown(BaseList2D*) { return {}; }
void SetContainer(BaseList2D*, BaseContainer*) {}
void SetWritable(BaseList2D*, String&) {}
BaseContainer* GetCurrent() { return nullptr; }
int32_t GetCount(BaseList2D*, int32_t, int32_t) { return 0; }

PyMethodDef g_methods[] = {
#if CASE == 0
    Method<&BaseList2D::SetName, "$", "name">("", ""),
    Method<&GetCount, "i|i", "a", "b=-3">("", ""),
    Method<&GetCount, "(ii)", "pair">("", ""),
    Method<&SetContainer, "C", "data">("", ""),
    Method<Row<Waits, Takes<"dst">>, &BaseBitmap::CopyTo, "P!", "dst">("", ""),
#elif CASE == 1   // LetterDoesNotFitParameter SetName
    Method<&BaseList2D::SetName, "i", "name">("", ""),
#elif CASE == 2   // LetterDoesNotFitParameter SetWritable
    Method<&SetWritable, "$", "name">("", ""),
#elif CASE == 3   // LetterDoesNotFitParameter IsInstanceOf
    Method<&QLXAtom::IsInstanceOf, "l", "id">("", ""),
#elif CASE == 4   // FormatHasAnotherNumberOfLetters GetCount
    Method<&GetCount, "i", "a">("", ""),
#elif CASE == 5   // FormatHasAnotherNumberOfKeywords GetCount
    Method<&GetCount, "ii", "a">("", ""),
#elif CASE == 6   // FormatIsWrong GetCount
    Method<&GetCount, "i|i|", "a", "b">("", ""),
#elif CASE == 7   // FormatIsWrong GetCount
    Method<&GetCount, "(ii", "pair">("", ""),
#elif CASE == 8   // FormatIsWrong GetCount
    Method<&GetCount, "iz", "a", "b">("", ""),
#elif CASE == 9   // FormatIsWrong CopyTo
    Method<&BaseBitmap::CopyTo, "(P!)", "dst">("", ""),
#elif CASE == 10  // PresetIsNoNumberOfThisLetter GetCount
    Method<&GetCount, "i|i", "a", "b=2.5">("", ""),
#elif CASE == 11  // PresetIsNoNumberOfThisLetter GetCount
    Method<&GetCount, "ii", "a", "b=2">("", ""),
#elif CASE == 12  // PresetIsNoNumberOfThisLetter SetName
    Method<&BaseList2D::SetName, "|$", "name=x">("", ""),
#elif CASE == 13  // KeywordStandsTwice GetCount
    Method<&GetCount, "i|i", "a", "a=2">("", ""),
#elif CASE == 14  // RowNamesNoSuchKeyword CopyTo
    Method<Row<Takes<"src">>, &BaseBitmap::CopyTo, "P!", "dst">("", ""),
#elif CASE == 15  // RowNamesNoSuchKeyword IsInstanceOf
    Method<Row<InRange<"index", &QLXAtom::GetType>>, &QLXAtom::IsInstanceOf, "i", "id">("", ""),
#elif CASE == 16  // WaitingRowCantHoldParameter SetContainer
    Method<Row<Waits>, &SetContainer, "C", "data">("", ""),
#elif CASE == 17  // ResultHasNoPythonForm GetUnknown
    Method<&GetUnknown>("", ""),
#elif CASE == 18  // RowTakesWhatHasNoOwner IsInstanceOf
    Method<Row<Takes<"id">>, &QLXAtom::IsInstanceOf, "i", "id">("", ""),
#elif CASE == 19  // FormatHasAnotherNumberOfLetters SetName
    Method<&BaseList2D::SetName>("", ""),
#elif CASE == 20  // RowOwnsWhatHasNoOwner GetId
    Method<Row<TakesSelf>, &BaseContainer::GetId>("", ""),
#elif CASE == 21  // WaitingRowCantHoldParameter GetId
    Method<Row<Waits>, &BaseContainer::GetId>("", ""),
#elif CASE == 22  // WaitingRowCantLendResult GetDataInstance
    Method<Row<Waits, PartOfSelf>, &BaseList2D::GetDataInstance>("", ""),
#elif CASE == 23  // WaitingRowCantCheckRange IsInstanceOf
    Method<Row<Waits, InRange<"id", &QLXAtom::GetType>>, &QLXAtom::IsInstanceOf, "i", "id">("", ""),
#elif CASE == 24  // ResultHasNoOwner GetDataInstance
    Method<&BaseList2D::GetDataInstance>("", ""),
#elif CASE == 25  // PresetIsNoNumberOfThisLetter GetCount
    Method<&GetCount, "i|i", "a", "b=4294967301">("", ""),
#elif CASE == 26  // RowOwnsWhatHasNoOwner GetCurrent
    StaticMethod<Row<PartOfSelf>, &GetCurrent>("", ""),
#endif
    {},
};

}  // namespace qlx
