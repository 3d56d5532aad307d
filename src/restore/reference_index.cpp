#include "restore/reference_index.h"

#include <utility>

#include "platform/bytes.h"
#include "restore/trace_unit.h"

namespace orx {

namespace {
constexpr std::uint32_t noPosition = 0xFFFFFFFF;
}

ReferenceIndex::ReferenceIndex(RecordList& references) {
  ORX_TRACE("ReferenceIndex::ReferenceIndex");
  records_.reserve(references.entries());
  next_.reserve(references.entries());
  while (!references.isEmpty()) add(references.get());
}

void ReferenceIndex::add(std::unique_ptr<DataRecord> record) {
  const auto position = static_cast<std::uint32_t>(records_.size());
  const std::uint64_t model = loadLE64(record->data.modelBytes().data());
  records_.push_back(std::move(record));
  next_.push_back(noPosition);
  const auto [found, isFirst] = chains_.try_emplace(model, Chain{position, position});
  if (isFirst) return;
  Chain& chain = found->second;
  next_[chain.last] = position;
  chain.last = position;
}

void ReferenceIndex::take(const HandleBytes& model,
                          const std::function<void(const DataBuffer&)>& visit) {
  ORX_TRACE("ReferenceIndex::take");
  const auto found = chains_.find(loadLE64(model.data()));
  if (found == chains_.end()) return;
  for (std::uint32_t at = found->second.first; at != noPosition; at = next_[at]) {
    visit(records_[at]->data);
    records_[at].reset();
  }
  chains_.erase(found);
}

}  // namespace orx
