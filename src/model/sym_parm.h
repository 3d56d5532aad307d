// CMSymParm: one symbolic parameter, a named value of the configuration.
//
// Parameters are equal when their names are, byte by byte. Values of up to 12 characters stay
// inside the object, longer ones live in counted memory.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "model/collectable.h"
#include "platform/memory_manager.h"

namespace orx {

namespace sym_parm_kind {
inline constexpr std::uint32_t fromText = 2;       // read from a system-parameter text
inline constexpr std::uint32_t productOption = 4;  // a product option variable
}  // namespace sym_parm_kind

class CMSymParm : public CMCollectable {
 public:
  static constexpr std::size_t nameCapacity = 49;  // with the NUL
  static constexpr std::size_t localCapacity = 13;

  // Texts are copied. A name is cut to 48 characters; `description` may be null, the others not. A
  // parameter of kind fromText with the name of a product option gets kind productOption.
  // `descriptionId` is the number of a standard description, 0 for none.
  CMSymParm(const char* name, const char* value, std::uint32_t kind, std::uint32_t descriptionId,
            const char* description);
  // Takes as little memory as the value needs; the kind stays as it is.
  CMSymParm(const CMSymParm& other);
  CMSymParm& operator=(const CMSymParm&) = delete;
  ~CMSymParm() override;

  [[nodiscard]] ClassId isA() const override;
  [[nodiscard]] bool isEqual(const RWCollectable* other) const override;
  [[nodiscard]] bool operator==(const CMSymParm& other) const;

  // The text may lie in this parameter's own value. Null clears the value and gives counted memory
  // back; a shorter value keeps it.
  void setValue(const char* value);

  // Whether it is of kind productOption, or of kind fromText with the name of a product option.
  [[nodiscard]] bool isProductOptionVarName() const;
  // The number of the text resource that holds the standard description; 0 when there is none.
  [[nodiscard]] std::uint32_t getDescriptionResid() const;

  [[nodiscard]] const char* name() const { return name_; }
  // A NUL follows the value; good until the value changes.
  [[nodiscard]] std::string_view value() const {
    return {heap_.size() > 0 ? heap_.data() : valueBuffer_, valueLength_};
  }
  // Whether the value holds "&", and so may refer to other parameters.
  [[nodiscard]] bool symbolicRefs() const { return symbolicRefs_; }
  // Bytes that the value may take without another allocation, with its NUL.
  [[nodiscard]] std::size_t valueSize() const {
    return heap_.size() > 0 ? heap_.size() : localCapacity;
  }
  [[nodiscard]] std::uint32_t kind() const { return kind_; }
  [[nodiscard]] std::uint32_t descriptionId() const { return descriptionId_; }
  [[nodiscard]] const std::string& description() const { return description_; }

 private:
  void storeValue(std::string_view value);

  char name_[nameCapacity] = {};
  char valueBuffer_[localCapacity] = {};
  CountedBuffer heap_;  // the value's place as soon as it is not empty
  std::size_t valueLength_ = 0;
  bool symbolicRefs_ = false;
  std::uint32_t kind_;
  std::uint32_t descriptionId_;
  std::string description_;
};

}  // namespace orx
