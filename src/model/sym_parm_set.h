// CMSymParmSet: the system parameters of one database, in order and without two of one name.
//
// Text form: the parameters in order, separated by ","; each is "NAME=VALUE" or
// "NAME=VALUE= DESCRIPTION". In all three "," and "=" are doubled; an empty value is written as one
// blank. Reading strips blanks at both ends of values and descriptions, skips entries without a
// name, keeps the first of two entries of one name, and ends at the first empty entry. The
// parameters A with the value 1 and B with the value "x,y" and the description "temp" are
// "A=1,B=x,,y= temp". The text is kept as value 0 of the attribute with key 1.
//
// The set owns its parameters; what it hands out lives until it is removed. A look-up by name takes
// constant time, at() walks to its position. Nothing reports an error: attributes of another key
// leave the set as it is. Texts are not null.
#pragma once

#include <cstddef>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "model/attribute.h"
#include "model/sym_parm.h"
#include "platform/memory_manager.h"

namespace orx {

class CMAttributeSet;

class CMSymParmSet : public CMMemoryManager {
 public:
  static constexpr int attributeKey = 1;

  CMSymParmSet();
  CMSymParmSet(const CMSymParmSet& other);
  ~CMSymParmSet() override;
  // Replaces the contents by copies of the other set's parameters.
  void AssignCMSymParmSet(const CMSymParmSet& other);
  CMSymParmSet& operator=(const CMSymParmSet&) = delete;
  // Both read the text of the attribute with key 1; without one the set stays as it is, and an
  // attribute without a value empties it.
  void operator=(const CMAttributeSet& attributes);
  void operator=(const CMAttribute& attribute);

  // Null when there is no such parameter. Names are compared byte by byte.
  [[nodiscard]] const CMSymParm* findSymbolName1(const char* name) const;
  [[nodiscard]] CMSymParm* findSymbolName2(const char* name);

  [[nodiscard]] std::size_t entries() const { return parameters_.size(); }
  // Null for a position behind the last one.
  [[nodiscard]] const CMSymParm* at(std::size_t position) const;
  // Visits the parameters in order.
  void forEach(const std::function<void(const CMSymParm&)>& visit) const;
  // Whether there is a parameter of that name.
  [[nodiscard]] bool contains(const CMSymParm& parameter) const;
  // Takes the parameter over, at the end, and returns 1; returns 0 and leaves it to the caller when
  // its name is taken or the pointer is null.
  [[nodiscard]] int insertUniqueParm(std::unique_ptr<CMSymParm>& parameter);
  // Takes the parameter of that name out; null when there is none.
  [[nodiscard]] std::unique_ptr<CMSymParm> remove(const CMSymParm& parameter);
  void clearAndDestroy();

  // Adds copies of the other set's parameters whose name is not in this set yet.
  void merge(const CMSymParmSet& other);

  // The attribute of key 1 that holds the set's text.
  [[nodiscard]] CMAttribute ConstructFromSymParmSet() const;

  // Reads one token, in which a doubled delimiter stands for a single one; returns the position
  // behind its delimiter, or that of the NUL. The flag has no effect.
  static const char* getToken(const char* position, char delimiter, std::string& token, int flag);

  // A new attribute with the same key, its values being those of `attribute` with every symbol
  // resolved against this set, which stays as it is. Values of description attributes are UTF-8.
  // Null for null.
  [[nodiscard]] std::unique_ptr<CMAttribute> resolveSymbols(const CMAttribute* attribute) const;

  // Sends name and value of each parameter to the trace.
  void dump() const;

 private:
  using Parameters = std::list<std::unique_ptr<CMSymParm>>;

  [[nodiscard]] CMSymParm* lookUp(std::string_view name) const;
  void readText(const char* text);
  void readEntry(const std::string& entry);
  [[nodiscard]] std::string text() const;

  Parameters parameters_;
  std::unordered_map<std::string_view, Parameters::iterator> byName_;  // views of the names
};

}  // namespace orx
