#include "restore/reference_index.h"

#include "messages/trace_unit.h"
#include "platform/bytes.h"

namespace orx {

namespace {
constexpr std::uint32_t noPosition = 0xFFFFFFFF;
}

ReferenceIndex::ReferenceIndex(RecordList& references) {
  ORX_TRACE("ReferenceIndex::ReferenceIndex");
  references_.reserve(references.entries());
  while (!references.isEmpty()) add(references.get()->data);
}

void ReferenceIndex::add(const DataBuffer& record) {
  const auto position = static_cast<std::uint32_t>(references_.size());
  references_.push_back({record.objectBytes(), noPosition});
  const auto [found, isFirst] =
      chains_.try_emplace(loadLE64(record.modelBytes().data()), Chain{position, position});
  if (isFirst) return;
  Chain& chain = found->second;
  references_[chain.last].next = position;
  chain.last = position;
}

void ReferenceIndex::take(const HandleBytes& model,
                          const std::function<void(const CMConfigHandle&)>& visit) {
  ORX_TRACE("ReferenceIndex::take");
  const auto found = chains_.find(loadLE64(model.data()));
  if (found == chains_.end()) return;
  for (std::uint32_t at = found->second.first; at != noPosition; at = references_[at].next) {
    visit(CMConfigHandle(references_[at].object));
  }
  chains_.erase(found);
}

}  // namespace orx
