#include "restore/model_usage.h"

#include <cstdio>
#include <memory>
#include <utility>

#include "messages/trace_unit.h"
#include "restore/restore_settings.h"

namespace orx {

namespace {

constexpr int useCountId = 17;
constexpr int signaturesId = 84;
constexpr int group = 0;

bool isVerbose() {
  return restoreSettings().verbose != 0;
}

std::unique_ptr<CMAttribute> takeSignatures(const HandleBytes& model, ReferenceIndex& references) {
  auto signatures = std::make_unique<CMAttribute>(short{signaturesId}, short{group});
  references.take(model, [&](const CMConfigHandle& object) {
    const HandleText text = object.exportText();
    if (isVerbose()) (void)std::printf("found one: %s\n", text.c_str());
    signatures->setValue(text.view());
  });
  return signatures;
}

void removeSignatures(CMAttributeSet& attributes) {
  const CMAttribute* old = attributes.findAttrKey(signaturesId, group);
  if (old != nullptr) attributes.removeAndDestroy(old);
}

void printChange(const CMAttribute& useCount, const CMAttribute& signatures) {
  int isNumeric = 0;
  (void)std::printf("old UseCount=%d, new UseCount=%d, Signatures: '%s'\n",
                    useCount.getValue(&isNumeric, 0), signatures.attrCount(),
                    signatures.text().c_str());
}

void insertSignatures(CMAttributeSet& attributes, std::unique_ptr<CMAttribute> signatures) {
  if (signatures->attrCount() == 0) return;
  if (attributes.insertIfUnique(signatures.get())) (void)signatures.release();
}

}  // namespace

void rebuildUsage(CMAttributeSet& attributes, const HandleBytes& model,
                  ReferenceIndex& references) {
  ORX_TRACE("rebuildUsage");
  std::unique_ptr<CMAttribute> signatures = takeSignatures(model, references);
  CMAttribute* useCount = attributes.findAttrKey(useCountId, group);
  if (useCount == nullptr) return;
  removeSignatures(attributes);
  if (isVerbose()) printChange(*useCount, *signatures);
  useCount->clearValues();
  useCount->setValue(long{signatures->attrCount()});
  insertSignatures(attributes, std::move(signatures));
}

}  // namespace orx
