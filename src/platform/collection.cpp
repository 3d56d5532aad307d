#include "platform/collection.h"

#include <algorithm>
#include <memory>

namespace orx {

bool RWCollection::contains(const RWCollectable* probe) const {
  return find(probe) != nullptr;
}
bool RWCollection::isEmpty() const {
  return entries() == 0;
}
void RWCollection::removeAndDestroy(const RWCollectable* probe) {
  delete remove(probe);
}

RWHashTable* RWHashTable::newSpecies() const {
  return new RWHashTable;
}
RWHashTable* RWHashTable::copy() const {
  auto shared = std::make_unique<RWHashTable>();
  shared->table_ = table_;
  return shared.release();
}

void RWHashTable::apply(const Visit& visit) {
  for (const auto& [hash, entry] : table_) visit(*entry);
}

void RWHashTable::clear() {
  table_.clear();
}

void RWHashTable::clearAndDestroy() {
  Table taken;
  taken.swap(table_);
  for (const auto& [hash, entry] : taken) delete entry;
}

RWCollectable* RWHashTable::find(const RWCollectable* probe) const {
  const auto found = position(probe);
  return found == table_.end() ? nullptr : found->second;
}

RWCollectable* RWHashTable::insert(RWCollectable* entry) {
  if (entry == nullptr) return nullptr;
  const auto [first, last] = table_.equal_range(place(*entry));
  const bool held = std::any_of(first, last, [&](const auto& row) { return row.second == entry; });
  if (held) return nullptr;
  insertFresh(*entry);
  return entry;
}

std::size_t RWHashTable::occurrencesOf(const RWCollectable* probe) const {
  if (probe == nullptr) return 0;
  const auto [first, last] = table_.equal_range(place(*probe));
  return static_cast<std::size_t>(
      std::count_if(first, last, [&](const auto& row) { return row.second->isEqual(probe); }));
}

RWCollectable* RWHashTable::remove(const RWCollectable* probe) {
  const auto found = position(probe);
  if (found == table_.end()) return nullptr;
  RWCollectable* entry = found->second;
  table_.erase(found);
  return entry;
}

void RWHashTable::insertFresh(RWCollectable& entry) {
  table_.emplace(place(entry), &entry);
}

std::int32_t RWHashTable::place(const RWCollectable& entry) {
  return static_cast<std::int32_t>(entry.hash());
}

RWHashTable::Table::const_iterator RWHashTable::position(const RWCollectable* probe) const {
  if (probe == nullptr) return table_.end();
  const auto [first, last] = table_.equal_range(place(*probe));
  const auto found =
      std::find_if(first, last, [&](const auto& row) { return row.second->isEqual(probe); });
  return found == last ? table_.end() : found;
}

RWHashTableIterator::RWHashTableIterator(const RWHashTable& table)
    : table_(&table), next_(table.table_.begin()) {}

RWCollectable* RWHashTableIterator::findNext(const RWCollectable* probe) {
  if (probe == nullptr) return nullptr;
  while ((*this)() != nullptr) {
    if (current_->isEqual(probe)) break;
  }
  return current_;
}

RWCollectable* RWHashTableIterator::key() const {
  return current_;
}

RWCollectable* RWHashTableIterator::operator()() {
  current_ = next_ == table_->table_.end() ? nullptr : (next_++)->second;
  return current_;
}

void RWHashTableIterator::reset() {
  next_ = table_->table_.begin();
  current_ = nullptr;
}

}  // namespace orx
