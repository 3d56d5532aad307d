// AttributeValues: the values of an attribute as a range of string views, in order:
//
//   for (std::string_view value : attribute.values()) ...
//
// The views are good until the attribute changes.
#pragma once

#include <cstddef>
#include <iterator>
#include <string_view>

namespace orx {

class AttributeValues {
 public:
  class iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using iterator_concept = std::forward_iterator_tag;
    using value_type = std::string_view;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = std::string_view;

    iterator() = default;
    explicit iterator(std::string_view rest) : rest_(rest) {}

    std::string_view operator*() const { return rest_.substr(0, rest_.find('\t')); }
    iterator& operator++() {
      rest_.remove_prefix((**this).size() + 1);
      return *this;
    }
    iterator operator++(int) {
      const iterator before = *this;
      ++*this;
      return before;
    }
    // Iterators of one range: equal when as much is left of it.
    bool operator==(const iterator& other) const { return rest_.size() == other.rest_.size(); }

   private:
    std::string_view rest_;
  };

  // `stored`: values, each followed by one TAB.
  explicit AttributeValues(std::string_view stored) : stored_(stored) {}

  [[nodiscard]] iterator begin() const { return iterator(stored_); }
  [[nodiscard]] iterator end() const { return iterator(stored_.substr(stored_.size())); }

 private:
  std::string_view stored_;
};

}  // namespace orx
