#include "restore/model_usage.h"

#include <memory>
#include <utility>

#include "messages/trace_unit.h"

namespace orx {

namespace {

constexpr int useCountId = 17;
constexpr int signaturesId = 84;
constexpr int group = 0;

std::unique_ptr<CMAttribute> takeSignatures(const HandleBytes& model, ReferenceIndex& references,
                                            UseCountObserver& observer) {
  auto signatures = std::make_unique<CMAttribute>(short{signaturesId}, short{group});
  references.take(model, [&](const CMConfigHandle& object) {
    observer.foundReference(object);
    signatures->setValue(object.exportText().view());
  });
  return signatures;
}

void removeSignatures(CMAttributeSet& attributes) {
  const CMAttribute* old = attributes.findAttrKey(signaturesId, group);
  if (old != nullptr) attributes.removeAndDestroy(old);
}

void insertSignatures(CMAttributeSet& attributes, std::unique_ptr<CMAttribute> signatures) {
  if (signatures->attrCount() == 0) return;
  if (attributes.insertIfUnique(signatures.get())) (void)signatures.release();
}

}  // namespace

void rebuildUsage(CMAttributeSet& attributes, const HandleBytes& model, ReferenceIndex& references,
                  UseCountObserver& observer) {
  ORX_TRACE("rebuildUsage");
  std::unique_ptr<CMAttribute> signatures = takeSignatures(model, references, observer);
  CMAttribute* useCount = attributes.findAttrKey(useCountId, group);
  if (useCount == nullptr) return;
  removeSignatures(attributes);
  observer.changedUsage(*useCount, *signatures);
  useCount->clearValues();
  useCount->setValue(long{signatures->attrCount()});
  insertSignatures(attributes, std::move(signatures));
}

}  // namespace orx
