// What a verbose use-count rebuild prints on standard output.
#pragma once

#include "restore/use_count_observer.h"
#include "restore/verbose_lists.h"

namespace orx {

class VerboseUseCount : public VerboseLists<UseCountObserver> {
 public:
  void takenModel(const CMConfigHandle& model) override;
  void foundReference(const CMConfigHandle& object) override;
  void changedUsage(const CMAttribute& useCount, const CMAttribute& signatures) override;
  void rebuiltModel(const DataBuffer& head, const std::string& text) override;
};

}  // namespace orx
