// CMAttributeSetIterator: walks the attributes of a set in ascending order of their keys. It must
// not outlive the set. What it returns stays the set's; the attribute returned last may be taken
// out of the set meanwhile.
#pragma once

#include "model/attribute_set.h"

namespace orx {

class CMAttributeSetIterator : public RWHashTableIterator, public CMMemoryManager {
 public:
  // `mode` is handed to the set's beginIteration and endIteration.
  CMAttributeSetIterator(CMAttributeSet& set, int mode);
  CMAttributeSetIterator(const CMAttributeSetIterator&) = delete;
  CMAttributeSetIterator& operator=(const CMAttributeSetIterator&) = delete;
  ~CMAttributeSetIterator() override;

  // The next attribute; null after the last.
  CMAttribute* operator()() override;

 private:
  CMAttributeSet* attributeSet_;
  int mode_;
};

}  // namespace orx
