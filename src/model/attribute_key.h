// CMAttributeKey: the number that names an attribute, made of two parts:
//   number = attrGroup * 4096 + attrId
#pragma once

#include "platform/memory_manager.h"

namespace orx {

class CMAttributeKey : public CMMemoryManager {
 public:
  static constexpr int groupSize = 4096;

  CMAttributeKey();
  explicit CMAttributeKey(int number);
  CMAttributeKey(short attrId, short attrGroup);
  CMAttributeKey(const CMAttributeKey& other);
  CMAttributeKey& operator=(const CMAttributeKey& other);
  ~CMAttributeKey() override;

  [[nodiscard]] int number() const;
  // The remainder, with the sign of the number; the quotient, cut toward zero.
  [[nodiscard]] int attrId() const;
  [[nodiscard]] int attrGroup() const;
  [[nodiscard]] bool operator==(const CMAttributeKey& other) const;

 private:
  int number_ = 0;
};

}  // namespace orx
