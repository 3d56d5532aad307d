// The two attributes of a model that tell who refers to it:
//   17  the use count: one value, the number of referring objects
//   84  the signatures: the handle of each referring object in exported form; none without any
#pragma once

#include "model/attribute_set.h"
#include "model/config_handle.h"
#include "restore/reference_index.h"
#include "restore/use_count_observer.h"

namespace orx {

// Takes the references to `model` out of the index and rebuilds both attributes of `attributes`,
// its own, from them. A model without attribute 17 has no use count: its attributes stay as they
// are, but the references are taken all the same.
void rebuildUsage(CMAttributeSet& attributes, const HandleBytes& model, ReferenceIndex& references,
                  UseCountObserver& observer);

}  // namespace orx
