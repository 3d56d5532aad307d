#include "restore/verbose_object.h"

#include <cstdio>

#include "messages/trace_unit.h"

namespace orx {

namespace {

void printRule() {
  constexpr std::size_t ruleWidth = 71;
  (void)std::printf("%s\n", std::string(ruleWidth, '+').c_str());
}

}  // namespace

void printObject(const DataBuffer& head, const std::string& text) {
  ORX_TRACE("printObject");
  printRule();
  (void)std::printf("%s\n%s\n%d\n%s\n%d\n%s\n%d\n", head.parentHandle().exportText().c_str(),
                    head.objectHandle().exportText().c_str(), head.recType(),
                    head.modelHandle().exportText().c_str(), head.auxValue1(), text.c_str(),
                    head.auxValue2());
  printRule();
}

}  // namespace orx
