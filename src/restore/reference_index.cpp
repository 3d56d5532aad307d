#include "restore/reference_index.h"

#include <utility>

#include "messages/trace_unit.h"
#include "platform/bytes.h"

namespace orx {

namespace {
constexpr std::uint32_t noPosition = 0xFFFFFFFF;
}

ReferenceIndex::ReferenceIndex(ReferenceList references)
    : references_(std::move(references)), next_(references_.size(), noPosition) {
  ORX_TRACE("ReferenceIndex::ReferenceIndex");
  for (std::size_t at = 0; at < references_.size(); ++at) add(static_cast<std::uint32_t>(at));
}

void ReferenceIndex::add(std::uint32_t position) {
  const std::uint64_t model = loadLE64(references_[position].model.data());
  const auto [found, isFirst] = chains_.try_emplace(model, Chain{position, position});
  if (isFirst) return;
  Chain& chain = found->second;
  next_[chain.last] = position;
  chain.last = position;
}

void ReferenceIndex::take(const HandleBytes& model,
                          const std::function<void(const CMConfigHandle&)>& visit) {
  ORX_TRACE("ReferenceIndex::take");
  const auto found = chains_.find(loadLE64(model.data()));
  if (found == chains_.end()) return;
  for (std::uint32_t at = found->second.first; at != noPosition; at = next_[at]) {
    visit(CMConfigHandle(references_[at].object));
  }
  chains_.erase(found);
}

}  // namespace orx
