#include "restore/verbose_use_count.h"

#include <cstdint>
#include <cstdio>

#include "model/attribute.h"
#include "model/config_handle.h"
#include "restore/verbose_object.h"

namespace orx {

void VerboseUseCount::takenModel(const CMConfigHandle& model) {
  (void)std::printf("model handler: %d\n", static_cast<std::int32_t>(model));
}

void VerboseUseCount::foundReference(const CMConfigHandle& object) {
  (void)std::printf("found one: %s\n", object.exportText().c_str());
}

void VerboseUseCount::changedUsage(const CMAttribute& useCount, const CMAttribute& signatures) {
  int isNumeric = 0;
  (void)std::printf("old UseCount=%d, new UseCount=%d, Signatures: '%s'\n",
                    useCount.getValue(&isNumeric, 0), signatures.attrCount(),
                    signatures.text().c_str());
}

void VerboseUseCount::rebuiltModel(const DataBuffer& head, const std::string& text) {
  printObject(head, text);
}

}  // namespace orx
