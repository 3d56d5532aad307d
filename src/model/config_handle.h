// CMConfigHandle: the identity of an object in the configuration database.
//
// The value is 8 raw bytes, kept, compared and stored as they are; numbers in it are little-endian.
// Bit 0 of byte 7 tells the layout:
//
//   bytes  old format (bit clear)                new format (bit set)
//   0-5    identifier area                       identifier area
//   6      bits 0-4 type, bit 5 model-inherited, type (0 to 255)
//          bit 6 flag 2, bit 7 flag 3
//   7      0                                     bit 0 set, bit 1 model-inherited, bit 2 flag 2,
//                                                bit 3 flag 3, bit 4 temporary
//
// The kind decides how the identifier area is read:
//
//   kind                 bytes 0-1           bytes 2-3        bytes 4-5
//   none                 identifier (32 bits)                 0
//   inheritedGroup       0                   group reference  managed system
//   resourceInInherited  resource reference  group reference  managed system
//   resourceInGroup      group reference (32 bits)            resource reference
//
// Flag 3 of an inherited resource says that its parent is an inherited group as well. The null
// handle is 8 zero bytes.
//
// Texts: the 16 hexadecimal digits of the bytes, and the exported form
// "<1;KIND;TYPE;F;F;F;ID;...>", decimal numbers with a ";" behind each. F are the three flags. KIND
// is a number of its own, which tells what identifiers follow:
//
//   1  none                 bytes 0-3
//   2  inheritedGroup       bytes 4-5, 2-3
//   3  resourceInGroup      bytes 0-3, 4-5
//   4  resourceInInherited  bytes 4-5, 2-3, 0-1
//
// Both writers and both readers work in place, without allocation. A null text is an empty one, and
// nothing is written to a null buffer.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "model/collectable.h"
#include "model/handle_layout.h"
#include "model/handle_type.h"

namespace orx {

enum class ModelInheritedKind : std::int32_t {
  none = 0,
  inheritedGroup = 1,
  resourceInInherited = 2,
  resourceInGroup = 3,
};

// Either text form of a handle, by value and terminated; the longest has 34 characters.
struct HandleText {
  std::array<char, 48> chars{};

  [[nodiscard]] const char* c_str() const { return chars.data(); }
  [[nodiscard]] std::string_view view() const { return chars.data(); }
};

class CMConfigHandle : public CMCollectable {
 public:
  CMConfigHandle();
  // New format for a positive type, of which the low 8 bits are kept; otherwise old format with
  // its low 5 bits.
  CMConfigHandle(CMHandleType type, std::uint32_t id);
  // Copies 8 bytes; a null pointer gives the null handle.
  explicit CMConfigHandle(const std::uint8_t* bytes);
  explicit CMConfigHandle(const HandleBytes& bytes);
  // A group inherited from a prototype, in the old format.
  CMConfigHandle(const CMConfigHandle& managedSystem, const CMConfigHandle& group);
  // A resource inherited from a prototype, in the old format; its parent is a normal group when
  // `managedSystem` is null.
  CMConfigHandle(const CMConfigHandle& managedSystem, const CMConfigHandle& group,
                 const CMConfigHandle& resource);
  CMConfigHandle(const CMConfigHandle& other);
  CMConfigHandle& operator=(const CMConfigHandle& other);
  ~CMConfigHandle() override;

  // Replaces the value by 8 bytes; a null pointer makes it the null handle.
  void set(const std::uint8_t* bytes);

  [[nodiscard]] static CMConfigHandle createPermanentHandle(CMHandleType type, std::uint32_t id);
  // New format whatever the sign of `type`.
  [[nodiscard]] static CMConfigHandle createTemporaryHandle(CMHandleType type, std::uint32_t id);
  [[nodiscard]] static CMConfigHandle createPrototypeInheritedGroupHandle(
      const CMConfigHandle& managedSystem, const CMConfigHandle& group);
  [[nodiscard]] static CMConfigHandle createPrototypeInheritedResourceHandle(
      const CMConfigHandle& managedSystem, const CMConfigHandle& group,
      const CMConfigHandle& resource);

  [[nodiscard]] bool isNewFormat() const;
  [[nodiscard]] CMHandleType getType() const;
  // Bytes 0-3: the identifier of a handle of kind `none`.
  [[nodiscard]] explicit operator std::int32_t() const;
  [[nodiscard]] bool isModelInherited() const;
  [[nodiscard]] bool isTemporary() const;
  [[nodiscard]] ModelInheritedKind getModelInheritedKind() const;
  // What an inherited handle refers to, as a permanent handle; null where its kind has no such
  // reference.
  [[nodiscard]] CMConfigHandle getManagedSystemHandle() const;
  [[nodiscard]] CMConfigHandle getGroupRefId() const;
  [[nodiscard]] CMConfigHandle getResourceRefId() const;
  [[nodiscard]] bool isNull() const;
  // The 8 bytes; they live as long as the handle.
  [[nodiscard]] const std::uint8_t* getHandleBytes() const;
  [[nodiscard]] const HandleBytes& bytes() const { return bytes_; }

  [[nodiscard]] bool operator==(const CMConfigHandle& other) const;
  // Against 8 bytes; a null pointer stands for the null handle.
  [[nodiscard]] bool operator==(const std::uint8_t* bytes) const;
  [[nodiscard]] bool operator!=(const std::uint8_t* bytes) const;

  [[nodiscard]] ClassId isA() const override;
  // Byte by byte, up to the first difference; a zero byte in both at one position ends the
  // comparison with 0. 1 when `other` is no handle.
  [[nodiscard]] int compareTo(const RWCollectable* other) const override;
  [[nodiscard]] std::uint32_t hash() const override;
  [[nodiscard]] bool isEqual(const RWCollectable* other) const override;

  // Writes the exported form, cut to size - 1 characters, and a terminating zero. Nothing is
  // written for size 0. Trace flag 0x10 tells of old-format handles that had to be converted.
  void exportChr(char* output, std::size_t size) const;
  [[nodiscard]] HandleText exportText() const;
  // Reads an exported form; the text ends at its first zero byte, and what follows the ">" is
  // ignored. 1 when it was complete; else 0, and the handle is null or has only its type and flags
  // (bytes 6 and 7).
  int importHndl(std::string_view text);
  int importHndl(const char* text);
  // Writes the 16 digits and a terminating zero, or an empty text when size is below 17. Returns
  // `output`.
  char* getExternChar(char* output, std::size_t size) const;
  [[nodiscard]] HandleText externText() const;
  // Takes 16 digits; only "0"-"9" and "A"-"F" count, anything else and what is missing is a 0.
  void setFromExternChar(std::string_view text);
  void setFromExternChar(const char* text);
  // Whether a text is to be read by importHndl rather than by setFromExternChar.
  [[nodiscard]] static bool isExportedFormat(std::string_view text);
  [[nodiscard]] static bool isExportedFormat(const char* text);

  // Sends what the handle means to the trace, line by line; nothing for the null handle. `label`
  // names it in the first line and may be null.
  void dump(const char* label = nullptr) const;

 private:
  // A permanent handle of what bytes `at` and `at + 1` identify.
  [[nodiscard]] CMConfigHandle reference(CMHandleType type, std::size_t at) const;

  HandleBytes bytes_{};
};

}  // namespace orx
