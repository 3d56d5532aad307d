// CMAttribute: one property of a configuration object, a key and an ordered list of text values.
//
// Storage: the values in order, each followed by one TAB, and one NUL behind the last TAB. A stored
// value holds no TAB or NUL and, TABs at its end aside, ends in no blank. Up to 10 bytes stay
// inside the object, more live in counted memory that at least doubles when it grows.
//
// Text form: "ID;GROUP;COUNT;" and each value followed by ";". In values ";" and ">" are doubled;
// an empty value behind another value is written as one blank. Key 4100 with the values "a;b", ""
// and "c>" is "4;1;3;a;;b; ;c>>;". Two kinds of value do not read back as they were: one that
// begins with ";" behind another value, since its mark pairs up with the end of the value before
// it, and one with a TAB at its end, which loses the blank that it became.
//
// Values are text; numbers are kept in decimal and handles as 16 hexadecimal digits or, when they
// were added so, in the exported form. Indices count from 0. Reading with an index costs a walk up
// to it, and removing moves all that follows: to go through many values use CMAttributeIterator or
// values(). Nothing reports an error, except that storage or text beyond INT_MAX bytes throws
// std::bad_alloc and leaves the attribute as it was.
#pragma once

#include <string>
#include <string_view>

#include "model/attribute_key.h"
#include "model/attribute_values.h"
#include "model/collectable.h"
#include "model/config_handle.h"
#include "platform/memory_manager.h"

namespace orx {

class CMAttribute : public CMCollectable {
 public:
  static constexpr int localCapacity = 10;

  CMAttribute();
  CMAttribute(short attrId, short attrGroup);
  explicit CMAttribute(const CMAttributeKey& key);
  // Reads the text form, up to its NUL; null is an empty text. `unescape` other than 0 turns
  // doubled marks into single ones; with 0 only ";;" is known, and stays doubled. Reading stops at
  // the first fault: a header field without its ";" or of 256 characters and more, a value without
  // its ";". What was read before stays; the key needs two header fields. A negative count reads
  // values until the text runs out.
  CMAttribute(const char* text, int unescape);
  CMAttribute(std::string_view text, int unescape);
  // Copies have the source's capacity.
  CMAttribute(const CMAttribute& other);
  CMAttribute& operator=(const CMAttribute& other);
  ~CMAttribute() override;

  [[nodiscard]] ClassId isA() const override;
  // The key number; attributes are equal to a collection when their keys are.
  [[nodiscard]] std::uint32_t hash() const override;
  [[nodiscard]] bool isEqual(const RWCollectable* other) const override;

  [[nodiscard]] const CMAttributeKey& key() const { return key_; }
  // The values stay. Not for an attribute that a set holds: take it out, change it, insert it
  // again. The set would keep and write it at its old place, where no look-up finds it.
  void setKey(const CMAttributeKey& key);

  // Adds a value at the end: up to the first NUL, without its trailing blanks, and with TABs turned
  // into blanks after that. A null pointer adds the empty value. The text may lie in this
  // attribute's own storage.
  void setValue(std::string_view value);
  void setValue(const char* value);
  // The same with the decimal text of a number, with the 16 digits of a handle.
  void setValue(long number);
  void setValue3(const CMConfigHandle& handle);

  [[nodiscard]] int attrCount() const { return attrCount_; }
  // Bytes that values, their TABs and the NUL can still take without growing.
  [[nodiscard]] int storageFree() const { return storageFree_; }
  // Whether a value with "&" was added since the values were last cleared.
  [[nodiscard]] bool symbolicRefs() const { return symbolicRefs_; }
  [[nodiscard]] AttributeValues values() const { return AttributeValues(stored()); }

  // Length of a value plus 1; 1 when there is no such value.
  [[nodiscard]] int getValueLength(int index) const;
  // Copies a value, cut to size - 1 bytes, and a NUL; "" when there is no such value. Nothing is
  // written for a size below 1.
  void getValue2(char* buffer, int size, int index) const;
  void getValue3(std::string& out, int index) const;
  // A value read as a handle; the null handle when there is no such value. Returns `out`.
  CMConfigHandle& getValue3(CMConfigHandle& out, int index) const;
  // A value read as a number, as CMAttributeIterator::getValueInt does; `isNumeric` may be null.
  int getValue(int* isNumeric, int index) const;

  // Size in bytes of a buffer that takes the text form and its NUL.
  [[nodiscard]] int getCharAttributeSize() const;
  // Fills `size` bytes with the text form, cut to size - 1, and zeros.
  void getCharAttribute(char* buffer, int size) const;
  [[nodiscard]] std::string text() const;
  // Writes the text form without a NUL to a place that has room for getCharAttributeSize() bytes;
  // returns the end of it.
  [[nodiscard]] char* writeText(char* out) const;

  // Whether every value, if there is any, is empty.
  [[nodiscard]] bool isNull() const;
  // The same key and the same values in the same order.
  [[nodiscard]] bool operator==(const CMAttribute& other) const;
  // Whether a value reads as this number, is this text byte by byte, or reads as this handle.
  [[nodiscard]] bool doesValueExist(long number) const;
  [[nodiscard]] bool doesValueExist2(const char* value) const;
  [[nodiscard]] bool doesHandleExist(const CMConfigHandle& handle) const;

  // Removes one value; none when there is no such value.
  void removeValue(int index);
  // Removes all values; the capacity stays. reset() gives counted memory back as well.
  void clearValues();
  void reset();

  // Sends the attribute to the trace, line by line.
  void print() const;

  // Whether an attribute of that key number holds a description; the table of those numbers, which
  // lives as long as the process, with its length in *count, unless that is null.
  [[nodiscard]] static bool isUTF8DescAttr(int keyNumber);
  [[nodiscard]] static const int* getUTF8DescAttrID(int* count);
  // The text with every "," and "=" doubled, as fields of a system-parameter text are written.
  [[nodiscard]] static std::string getSymparmString(const char* text);

 private:
  friend class CMAttributeIterator;

  [[nodiscard]] std::string_view stored() const {
    return {storage(), static_cast<std::size_t>(nextAvail_)};
  }
  [[nodiscard]] const char* storage() const {
    return heap_.size() > 0 ? heap_.data() : localValue_;
  }
  [[nodiscard]] char* storage() { return heap_.size() > 0 ? heap_.data() : localValue_; }
  [[nodiscard]] CountedBuffer makeRoom(std::size_t length);
  void append(std::string_view value);
  // Removes `length` bytes of a value and its TAB from the storage.
  void removeAt(int offset, int length);
  void clearState();
  void readText(std::string_view text, bool unescape);
  [[nodiscard]] int measureText() const;
  char* writeHeader(char* out) const;

  char localValue_[localCapacity] = {};
  CountedBuffer heap_;  // the storage as soon as it is not empty
  int allocated_ = 0;
  CMAttributeKey key_;
  int attrCount_ = 0;
  int storageFree_ = localCapacity;
  int nextAvail_ = 0;
  mutable int sizeOfCharAttr_ = -1;  // -1: not known
  bool symbolicRefs_ = false;
};

}  // namespace orx
