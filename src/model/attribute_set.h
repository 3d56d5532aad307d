// CMAttributeSet: all attributes of one configuration object, found by key.
//
// Attributes are met and written in ascending order of their key number, attributes of equal key in
// the order in which they were read or inserted; a look-up finds the first of them. A look-up takes
// logarithmic time, and reading and writing a whole set grow with its text.
//
// Text form: "<" attribute text ">" for each attribute, back to back. Reading stops at the first
// fault (an element without its end, anything but "<" between elements) and keeps what it has read.
//
// The set owns its attributes, from the insertion on. What findAttrKey and getFirst hand out stays
// the set's and may be changed in place, except for its key. The inherited remove() and clear()
// give ownership back to the caller; the inherited copy() makes a plain table that shares the
// entries.
//
// The set's own virtual operations stand in this order. The access hooks enclose every iteration
// and comparison, and do nothing: sets are used by one thread.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "model/attribute.h"
#include "platform/collection.h"
#include "platform/memory_manager.h"

namespace orx {

class CMAttributeSet : public RWHashTable, public CMMemoryManager {
 public:
  CMAttributeSet();
  // Reads a text, up to its NUL; null is an empty text. `unescape` is handed to the attributes.
  CMAttributeSet(const char* text, int unescape);
  CMAttributeSet(const CMAttributeSet& other);
  [[nodiscard]] ClassId isA() const override;
  ~CMAttributeSet() override;

  // Parts beyond 16 bits are cut to them. Null when there is no such attribute.
  [[nodiscard]] virtual CMAttribute* findAttrKey(int attrId, int attrGroup);
  [[nodiscard]] virtual CMAttribute* findAttrKey(short attrId, short attrGroup);
  [[nodiscard]] virtual CMAttribute* findAttrKey(const CMAttributeKey& key);
  [[nodiscard]] virtual const CMAttribute* findAttrKey(const CMAttributeKey& key) const;
  // Size in bytes of a buffer that takes the text form and its NUL. Sets whose text needs more than
  // INT_MAX bytes throw std::bad_alloc.
  [[nodiscard]] virtual int getCharAttributeSize() const;
  // Fills `size` bytes with the text form, cut to size - 1, and zeros.
  virtual void getCharAttribute(char* buffer, int size) const;
  // True: the attribute is in the set, which owns it now. False: it is null or its key is taken,
  // and it stays the caller's, as it does when std::bad_alloc is thrown.
  [[nodiscard]] virtual bool insertIfUnique(CMAttribute* attribute);
  // Both replace the contents only once the new contents are complete. The text may lie in this
  // set's own attributes; it is read with the mode that the set was made with (1 by default).
  virtual CMAttributeSet& operator=(const char* text);
  // Keeps the first of the other set's attributes of one key. A set assigned to itself stays as it
  // is.
  virtual void operator=(const CMAttributeSet& other);
  // The same number of attributes, and for each of this set's an equal one of that key.
  [[nodiscard]] virtual bool operator==(const CMAttributeSet& other) const;
  // Adds copies of the attributes whose key is not in this set yet.
  virtual void copyInto(const CMAttributeSet& other);
  // Null for an empty set.
  [[nodiscard]] virtual CMAttribute* getFirst();
  [[nodiscard]] virtual const CMAttribute* getFirst() const;
  // The access hooks. They return 0; their arguments have no effect.
  virtual int beginAccess(int, int) const;
  virtual int beginIteration(int mode, int) const;
  virtual void endAccess(int) const;
  virtual void endIteration(int mode) const;
  // Value 0 of an attribute, as a text or as a number; "" and 0 when there is none.
  [[nodiscard]] virtual std::string getAttributeValue(const CMAttributeKey& key) const;
  [[nodiscard]] virtual int getNumericAttributeValue(const CMAttributeKey& key) const;

  // Sends the set and its attributes to the trace.
  void print() const;

  [[nodiscard]] std::string text() const;
  // Writes the text form without a NUL to a place that has room for getCharAttributeSize() bytes;
  // returns the end of it.
  [[nodiscard]] char* writeText(char* out) const;
  // Visits the attributes in order; `visit` must not change the set.
  void forEach(const std::function<void(const CMAttribute&)>& visit) const;

 private:
  [[nodiscard]] CMAttribute* lookUp(const CMAttributeKey& key) const;
  [[nodiscard]] CMAttribute* first() const;
  void readText(std::string_view text);
  void walk(const std::function<bool(const CMAttribute&)>& visit) const;

  int unescape_ = 1;
};

}  // namespace orx
