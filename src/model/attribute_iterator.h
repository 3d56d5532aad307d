// CMAttributeIterator: walks the values of one attribute, each step in constant time plus the
// length of the value. Past the last value it is done() and reads as "", as the null handle and as
// no number.
//
// It must not outlive its attribute, and stands on an undefined value once the attribute is changed
// by anything but its own remove().
#pragma once

#include <string_view>

#include "model/attribute.h"

namespace orx {

class CMAttributeIterator : public CMMemoryManager {
 public:
  explicit CMAttributeIterator(const CMAttribute& attribute);
  explicit CMAttributeIterator(CMAttribute& attribute);
  CMAttributeIterator(const CMAttributeIterator& other);
  CMAttributeIterator& operator=(const CMAttributeIterator& other);
  ~CMAttributeIterator() override;

  // On the same value of the same attribute.
  [[nodiscard]] bool operator==(const CMAttributeIterator& other) const;

  void reset();
  [[nodiscard]] bool done() const;
  // Whether there was a value to step over; true as well when the step leads past the last one.
  bool next();
  // Goes to value n. False, and done, when there are fewer values than n or n is negative.
  bool set(int n);
  [[nodiscard]] CMAttributeIterator operator+(int n) const;
  // Steps, and returns a copy of the iterator as it is after the step.
  CMAttributeIterator operator++(int);

  // Length of the value plus 1; 1 when done.
  [[nodiscard]] int getValueLength() const;
  // The value itself; good until the attribute changes.
  [[nodiscard]] std::string_view value() const;
  // Copies the value, cut to size - 1 bytes, and a NUL; nothing is written for a size below 1.
  void getValue(char* buffer, int size) const;
  // The same with every ">" and ";" doubled; a cut never parts the two.
  void getCharValue(char* buffer, int size) const;
  // The value as a number. Its first 19 characters count: digits and "-" alone, or none at all,
  // make it numeric (*isNumeric 1), and the result is the number that it begins with; else both are
  // 0. `isNumeric` may be null.
  int getValueInt(int* isNumeric) const;
  // The value's first 47 characters read as a handle in either form; the null handle when done.
  // Returns `out`.
  CMConfigHandle& getValueHandle(CMConfigHandle& out) const;

  // Takes the value out of the attribute and stands on the one that followed it. Nothing happens
  // when done, or when the iterator was made for a const attribute.
  void remove();

 private:
  const CMAttribute* attribute_;
  CMAttribute* changeable_;  // the same attribute; null when it is const
  int index_ = 0;
  int cursor_ = 0;  // offset of the value in the storage
};

}  // namespace orx
