// What a verbose run prints of an object that it is about to store.
#pragma once

#include <string>

#include "records/data_buffer.h"

namespace orx {

// The fields of the head record around the whole attribute text, between lines of "+", on standard
// output. `text` ends at its first zero.
void printObject(const DataBuffer& head, const std::string& text);

}  // namespace orx
