#include "orxkdb/words/head_fields.h"

#include <array>

namespace orx::orxkdb {

namespace {

constexpr std::array<HeadFieldName, 4> headFields{{{HeadField::recType, "recType"},
                                                   {HeadField::modelHandle, "modelHandle"},
                                                   {HeadField::auxValue1, "auxValue1"},
                                                   {HeadField::auxValue2, "auxValue2"}}};

bool sameField(HeadField field, const DataBuffer& a, const DataBuffer& b) {
  switch (field) {
    case HeadField::recType:
      return a.recType() == b.recType();
    case HeadField::modelHandle:
      return a.modelBytes() == b.modelBytes();
    case HeadField::auxValue1:
      return a.auxValue1() == b.auxValue1();
    case HeadField::auxValue2:
      return a.auxValue2() == b.auxValue2();
  }
  return true;
}

}  // namespace

std::vector<HeadFieldName> differingFields(const DataBuffer& a, const DataBuffer& b) {
  std::vector<HeadFieldName> differing;
  for (const HeadFieldName& field : headFields) {
    if (!sameField(field.field, a, b)) differing.push_back(field);
  }
  return differing;
}

}  // namespace orx::orxkdb
