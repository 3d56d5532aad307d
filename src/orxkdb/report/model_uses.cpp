#include "orxkdb/report/model_uses.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace orx::orxkdb {

UsedModel& ModelUses::modelOf(HandleNumber handle) {
  if (const std::uint32_t* const number = numbers_.valueOf(handle)) return models_[*number];
  numbers_.insert(handle, static_cast<std::uint32_t>(models_.size()));
  return models_.emplace_back(UsedModel{.handle = handle});
}

void ModelUses::addModel(HandleNumber handle, std::int32_t recType, std::string label) {
  UsedModel& model = modelOf(handle);
  if (model.isThere) return;
  model.isThere = true;
  model.recType = recType;
  model.label = std::move(label);
}

void ModelUses::addReference(Referrer referrer) {
  UsedModel& model = modelOf(referrer.model);
  ++model.uses;
  ++model.usesByType[referrer.recType];
  ++references_;
  if (referrers_.size() < mostReferrers) referrers_.push_back(std::move(referrer));
}

std::vector<UsedModel> ModelUses::ranked() const {
  std::vector<UsedModel> models = models_;
  std::ranges::sort(models, [](const UsedModel& a, const UsedModel& b) {
    return std::tuple(!a.isThere, b.uses, a.handle) < std::tuple(!b.isThere, a.uses, b.handle);
  });
  return models;
}

}  // namespace orx::orxkdb
