// The handle-valued attributes of an object that comes from another database.
#pragma once

#include "model/attribute_set.h"
#include "records/merge_tables.h"
#include "restore/merge_observer.h"

namespace orx {

// Gives every value of the attributes in handleAttributes (restore/merge_types.h) its new
// identifier, in order and in the exported form, in which values that keep theirs come out as well.
// Leaves `nextId` alone: it has been raised for the objects themselves. A value that is no handle
// comes out as the handle that reading makes of it.
void renumberHandles(CMAttributeSet& attributes, const MergeTables& tables,
                     MergeObserver& observer);

// Whether the attribute of that key number is one of handleAttributes.
[[nodiscard]] bool isHandleAttribute(int keyNumber);
// Tells the observer what renumberHandles does of an object that has none of them.
void searchInVain(MergeObserver& observer);

}  // namespace orx
