// The handle-valued attributes of objects, and what a merge does with those of an object that comes
// from another database.
#pragma once

#include <algorithm>
#include <array>

#include "model/attribute_key.h"
#include "model/attribute_set.h"
#include "records/merge_tables.h"
#include "restore/known_attributes.h"
#include "restore/merge_observer.h"

namespace orx {

struct HandleAttribute {
  int attrId;
  int attrGroup;
};
// In the order in which a merge looks for them.
inline constexpr std::array<HandleAttribute, 8> handleAttributes{{{known_attribute::signatures, 0},
                                                                  {94, 0},
                                                                  {6897, 0},
                                                                  {3811, 1},
                                                                  {3276, 1},
                                                                  {3262, 1},
                                                                  {7050, 1},
                                                                  {7059, 1}}};

// Whether the values of the attribute of that key number are handles.
[[nodiscard]] constexpr bool isHandleAttribute(int keyNumber) {
  return std::ranges::any_of(handleAttributes, [keyNumber](const HandleAttribute& attribute) {
    return attribute.attrGroup * CMAttributeKey::groupSize + attribute.attrId == keyNumber;
  });
}

// Gives every value of these attributes its new identifier, in order and in the exported form, in
// which values that keep theirs come out as well. Leaves `nextId` alone: it has been raised for the
// objects themselves. A value that is no handle comes out as the handle that reading makes of it.
void renumberHandles(CMAttributeSet& attributes, const MergeTables& tables,
                     MergeObserver& observer);

// Tells the observer what renumberHandles does of an object that has none of them.
void searchInVain(MergeObserver& observer);

}  // namespace orx
