// The collection classes that the object model's sets are built on. Entries are pointers; a
// collection finds, compares and hashes them through RWCollectable and owns none of them: only
// the operations with Destroy in their name delete entries.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>

#include "platform/collectable.h"

namespace orx {

// Twelve virtual operations, in this order. A null entry or probe is never inserted or found.
class RWCollection : public RWCollectable {
 public:
  using Visit = std::function<void(RWCollectable&)>;

  // Visits every entry; `visit` neither inserts nor removes any.
  virtual void apply(const Visit& visit) = 0;
  // Takes every entry out; clearAndDestroy deletes them as well.
  virtual void clear() = 0;
  virtual void clearAndDestroy() = 0;
  [[nodiscard]] virtual bool contains(const RWCollectable* probe) const;
  [[nodiscard]] virtual std::size_t entries() const = 0;
  // The first entry equal to the probe, or null.
  [[nodiscard]] virtual RWCollectable* find(const RWCollectable* probe) const = 0;
  // Returns the entry, or null when it was not taken; throws std::bad_alloc, and then has not
  // taken it either.
  virtual RWCollectable* insert(RWCollectable* entry) = 0;
  [[nodiscard]] virtual bool isEmpty() const;
  [[nodiscard]] virtual std::size_t occurrencesOf(const RWCollectable* probe) const = 0;
  // Takes the first entry equal to the probe out and returns it, or null; removeAndDestroy deletes
  // it.
  virtual RWCollectable* remove(const RWCollectable* probe) = 0;
  virtual void removeAndDestroy(const RWCollectable* probe);
  // A hint how many entries to prepare for.
  virtual void resize(std::size_t entries) = 0;
};

// A collection that finds entries by hash() and then isEqual(), in logarithmic time. Entries are
// met in ascending order of their hash read as a signed number, entries of equal hash in the order
// of insertion, so that a walk meets them in the same order on every run and machine.
//
// An entry's hash must not change while it is held: it would stay at its old place, where no
// look-up finds it. Copies share their entries.
class RWHashTable : public RWCollection {
 public:
  [[nodiscard]] RWHashTable* newSpecies() const override;
  [[nodiscard]] RWHashTable* copy() const override;

  void apply(const Visit& visit) override;
  void clear() override;
  void clearAndDestroy() override;
  [[nodiscard]] std::size_t entries() const override { return table_.size(); }
  [[nodiscard]] RWCollectable* find(const RWCollectable* probe) const override;
  // A pointer that is already held is not taken again. Equal entries are.
  RWCollectable* insert(RWCollectable* entry) override;
  [[nodiscard]] std::size_t occurrencesOf(const RWCollectable* probe) const override;
  RWCollectable* remove(const RWCollectable* probe) override;
  void resize(std::size_t) override {}  // the container grows entry by entry

 protected:
  // insert() for an object that was just created, however many entries of its hash there are.
  void insertFresh(RWCollectable& entry);
  void swapEntries(RWHashTable& other) noexcept { table_.swap(other.table_); }

 private:
  friend class RWHashTableIterator;
  using Table = std::multimap<std::int32_t, RWCollectable*>;

  static std::int32_t place(const RWCollectable& entry);
  [[nodiscard]] Table::const_iterator position(const RWCollectable* probe) const;

  Table table_;
};

// Walks a table. The entry that was returned last may be taken out of the table meanwhile, and
// entries may be added; the iterator must not outlive the table.
class RWHashTableIterator {
 public:
  explicit RWHashTableIterator(const RWHashTable& table);
  RWHashTableIterator(const RWHashTableIterator&) = default;
  RWHashTableIterator& operator=(const RWHashTableIterator&) = default;
  virtual ~RWHashTableIterator() = default;

  // Steps to the next entry that equals the probe; null, behind the last entry, when there is none.
  // A null probe steps nowhere.
  virtual RWCollectable* findNext(const RWCollectable* probe);
  // The entry returned last; null before the first step and after the last entry.
  [[nodiscard]] virtual RWCollectable* key() const;
  // Steps to the next entry; null after the last.
  virtual RWCollectable* operator()();
  virtual void reset();

 private:
  const RWHashTable* table_;
  RWHashTable::Table::const_iterator next_;
  RWCollectable* current_ = nullptr;
};

}  // namespace orx
