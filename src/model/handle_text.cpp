// The two text forms of CMConfigHandle.
//
// Exported form: "<", decimal numbers each followed by ";", ">". The numbers are the form version,
// a kind code, the type, the three flags, and the identifier values that the kind code calls for:
//
//   1  bytes 0-3                     7 numbers in all
//   2  bytes 4-5, 2-3                8
//   3  bytes 0-3, 4-5                8
//   4  bytes 4-5, 2-3, 0-1           9
#include <algorithm>
#include <charconv>
#include <optional>

#include "model/config_handle.h"
#include "model/decimal.h"
#include "model/handle_layout.h"
#include "platform/bytes.h"

namespace orx {

namespace {

constexpr const TraceUnit& traceUnit = configHandleTraceUnit;

constexpr std::uint32_t formVersion = 1;
constexpr std::int32_t traceConversions = 0x10;
constexpr int identifierBits = 48;

enum class KindCode : std::uint32_t {
  plain = 1,
  inheritedGroup = 2,
  resourceInGroup = 3,
  resourceInInherited = 4,
};

// Room for nine numbers of ten digits, whatever the handle.
using WorkText = std::array<char, 100>;

// An old-format handle that claims to be inherited although its type cannot be.
bool needsConversion(const HandleBytes& bytes) {
  if (handle_layout::isNewFormat(bytes)) return false;
  const std::uint8_t type = handle_layout::type(bytes);
  return (handle_layout::flags(bytes) & handle_layout::modelInherited) != 0 &&
         type != handle_type::resourceGroup && type != handle_type::resource;
}

KindCode kindCode(const HandleBytes& bytes) {
  if ((handle_layout::flags(bytes) & handle_layout::modelInherited) == 0) return KindCode::plain;
  const std::uint8_t type = handle_layout::type(bytes);
  if (type == handle_type::resourceGroup) return KindCode::inheritedGroup;
  if (type == handle_type::resource) {
    return (bytes[6] & 0x80) != 0 ? KindCode::resourceInInherited : KindCode::resourceInGroup;
  }
  // A new-format handle of another type: the shortest list that carries its whole identifier area.
  return loadLE16(bytes.data() + 4) == 0 ? KindCode::plain : KindCode::resourceInGroup;
}

char* putNumber(char* p, std::uint32_t number) {
  p = std::to_chars(p, p + 10, number).ptr;
  *p++ = ';';
  return p;
}

char* putIdentifiers(char* p, KindCode kind, const HandleBytes& bytes) {
  const std::uint8_t* const b = bytes.data();
  switch (kind) {
    case KindCode::plain:
      return putNumber(p, loadLE32(b));
    case KindCode::inheritedGroup:
      return putNumber(putNumber(p, loadLE16(b + 4)), loadLE16(b + 2));
    case KindCode::resourceInGroup:
      return putNumber(putNumber(p, loadLE32(b)), loadLE16(b + 4));
    case KindCode::resourceInInherited:
      return putNumber(putNumber(putNumber(p, loadLE16(b + 4)), loadLE16(b + 2)), loadLE16(b));
  }
  return p;
}

// Returns the length; the text is not terminated.
std::size_t writeExported(const HandleBytes& bytes, WorkText& text) {
  const KindCode kind = kindCode(bytes);
  const unsigned flags = handle_layout::flags(bytes);
  char* p = text.data();
  *p++ = '<';
  p = putNumber(p, formVersion);
  p = putNumber(p, static_cast<std::uint32_t>(kind));
  p = putNumber(p, handle_layout::type(bytes));
  for (int flag = 0; flag < 3; ++flag) p = putNumber(p, flags >> flag & 1);
  p = putIdentifiers(p, kind, bytes);
  *p++ = '>';
  return static_cast<std::size_t>(p - text.data());
}

struct Numbers {
  static constexpr std::size_t limit = 10;  // one more than any form has

  std::array<std::uint32_t, limit> values;
  std::size_t count;
};

// Reads what nearly every handle is: digits, each number with one ";" behind it, up to the ">".
// False for any other text.
bool readPlainNumbers(std::string_view text, Numbers& numbers) {
  std::uint32_t value = 0;
  bool inNumber = false;
  std::size_t count = 0;
  if (!text.starts_with('<')) return false;
  for (const char c : text.substr(1)) {
    const auto digit = static_cast<std::uint32_t>(c - '0');
    if (digit <= 9) {
      value = value * 10 + digit;
      inNumber = true;
    } else if (!inNumber) {
      numbers.count = count;
      return c == '>';
    } else if (c == ';' && count < Numbers::limit) {
      numbers.values[count++] = value;
      value = 0;
      inNumber = false;
    } else {
      return false;
    }
  }
  return false;
}

// Reads the fields between "<" and ">"; empty ones are skipped, more than the limit are not read.
// False when the text has no "<" at its start or ends before a ">".
bool readNumbers(std::string_view text, Numbers& numbers) {
  const char* p = text.data();
  const char* const end = p + text.size();
  numbers.count = 0;
  if (p == end || *p++ != '<') return false;
  while (p != end && *p != '\0' && numbers.count < Numbers::limit) {
    if (*p == '>') return true;
    if (*p == ';') {
      ++p;
      continue;
    }
    numbers.values[numbers.count++] = static_cast<std::uint32_t>(readDecimal(p, end));
    while (p != end && *p != ';' && *p != '>' && *p != '\0') ++p;
  }
  return false;
}

bool isHeader(const Numbers& numbers) {
  return numbers.count >= 7 && numbers.count <= 9 && numbers.values[0] <= formVersion;
}

// Bytes 6 and 7.
std::uint16_t typeAndFlags(const Numbers& numbers) {
  const auto& values = numbers.values;
  const unsigned flags = (values[3] & 1) | (values[4] & 1) << 1 | (values[5] & 1) << 2;
  return handle_layout::typeAndFlags(static_cast<std::int32_t>(values[2]), flags);
}

std::uint64_t identifierArea(std::uint32_t bytes01, std::uint32_t bytes23, std::uint32_t bytes45) {
  return std::uint64_t{bytes01 & 0xFFFF} | std::uint64_t{bytes23 & 0xFFFF} << 16 |
         std::uint64_t{bytes45 & 0xFFFF} << 32;
}

// Bytes 0-5; none when the kind code does not go with the count of numbers.
std::optional<std::uint64_t> identifierArea(const Numbers& numbers) {
  const auto& values = numbers.values;
  const auto kind = static_cast<KindCode>(values[1]);
  if (kind == KindCode::plain && numbers.count == 7) return values[6];
  if (kind == KindCode::inheritedGroup && numbers.count == 8) {
    return identifierArea(0, values[7], values[6]);
  }
  if (kind == KindCode::resourceInGroup && numbers.count == 8) {
    return identifierArea(values[6], values[6] >> 16, values[7]);
  }
  if (kind == KindCode::resourceInInherited && numbers.count == 9) {
    return identifierArea(values[8], values[7], values[6]);
  }
  return std::nullopt;
}

std::uint8_t digitValue(char digit) {
  if (digit >= '0' && digit <= '9') return static_cast<std::uint8_t>(digit - '0');
  if (digit >= 'A' && digit <= 'F') return static_cast<std::uint8_t>(digit - 'A' + 10);
  return 0;
}

std::string_view viewOf(const char* text) {
  return text == nullptr ? std::string_view() : std::string_view(text);
}

}  // namespace

void CMConfigHandle::exportChr(char* output, std::size_t size) const {
  ORX_TRACE_VALUE("exportChr");
  if (output == nullptr || size == 0) return;
  HandleBytes bytes = bytes_;
  const bool converted = needsConversion(bytes);
  if (converted) bytes[7] |= handle_layout::newFormat;
  WorkText text;
  const std::size_t length = std::min(writeExported(bytes, text), size - 1);
  std::copy_n(text.begin(), length, output);
  output[length] = '\0';
  if (converted && trace.on(traceConversions)) {
    DIAG_Printf(trace.anchor(), __LINE__, "Found an invalid handle to export - converted to %s",
                output);
  }
}

HandleText CMConfigHandle::exportText() const {
  ORX_TRACE_VALUE("exportText");
  HandleText text;
  exportChr(text.chars.data(), text.chars.size());
  return trace.exit(text);
}

int CMConfigHandle::importHndl(std::string_view text) {
  ORX_TRACE_VALUE("importHndl");
  bytes_ = {};
  Numbers numbers;
  const bool isRead = readPlainNumbers(text, numbers) || readNumbers(text, numbers);
  if (!isRead || !isHeader(numbers)) return trace.exit(0);
  const auto identifiers = identifierArea(numbers);
  // At once: whoever loads the 8 bytes next would wait for single ones to reach the cache.
  storeLE64(bytes_.data(),
            identifiers.value_or(0) | std::uint64_t{typeAndFlags(numbers)} << identifierBits);
  return trace.exit(identifiers.has_value() ? 1 : 0);
}

int CMConfigHandle::importHndl(const char* text) {
  return importHndl(viewOf(text));
}

char* CMConfigHandle::getExternChar(char* output, std::size_t size) const {
  ORX_TRACE_VALUE("getExternChar");
  constexpr char digits[] = "0123456789ABCDEF";
  if (output == nullptr || size == 0) return trace.exit(output);
  char* p = output;
  if (size > 2 * handleSize) {
    for (const std::uint8_t byte : bytes_) {
      *p++ = digits[byte >> 4];
      *p++ = digits[byte & 0xF];
    }
  }
  *p = '\0';
  return trace.exit(output);
}

HandleText CMConfigHandle::externText() const {
  ORX_TRACE_VALUE("externText");
  HandleText text;
  (void)getExternChar(text.chars.data(), text.chars.size());
  return trace.exit(text);
}

void CMConfigHandle::setFromExternChar(std::string_view text) {
  ORX_TRACE_VALUE("setFromExternChar");
  text = text.substr(0, text.find('\0'));
  const auto digit = [text](std::size_t i) { return i < text.size() ? digitValue(text[i]) : 0; };
  for (std::size_t i = 0; i < handleSize; ++i) {
    bytes_[i] = static_cast<std::uint8_t>(digit(2 * i) << 4 | digit(2 * i + 1));
  }
}

void CMConfigHandle::setFromExternChar(const char* text) {
  setFromExternChar(viewOf(text));
}

bool CMConfigHandle::isExportedFormat(std::string_view text) {
  ORX_TRACE_VALUE("CMConfigHandle::isExportedFormat");
  return trace.exit(text.starts_with('<'));
}

bool CMConfigHandle::isExportedFormat(const char* text) {
  return isExportedFormat(viewOf(text));
}

}  // namespace orx
