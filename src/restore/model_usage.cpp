#include "restore/model_usage.h"

#include <memory>
#include <utility>

#include "messages/trace_unit.h"
#include "restore/known_attributes.h"

namespace orx {

namespace {

constexpr int group = 0;  // of both

std::unique_ptr<CMAttribute> takeSignatures(const HandleBytes& model, ReferenceIndex& references,
                                            UseCountObserver& observer) {
  auto signatures = std::make_unique<CMAttribute>(short{known_attribute::signatures}, short{group});
  references.take(model, [&](const CMConfigHandle& object) {
    observer.foundReference(object);
    signatures->setValue(object.exportText().view());
  });
  return signatures;
}

void removeSignatures(CMAttributeSet& attributes) {
  const CMAttribute* old = attributes.findAttrKey(known_attribute::signatures, group);
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
  CMAttribute* useCount = attributes.findAttrKey(known_attribute::useCount, group);
  if (useCount == nullptr) return;
  removeSignatures(attributes);
  observer.changedUsage(*useCount, *signatures);
  useCount->clearValues();
  useCount->setValue(long{signatures->attrCount()});
  insertSignatures(attributes, std::move(signatures));
}

}  // namespace orx
