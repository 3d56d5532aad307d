#include "descriptions/description_field.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "encoding/code_pages.h"
#include "encoding/text_trace.h"
#include "model/attribute.h"
#include "model/attribute_set.h"

namespace orx {

namespace {

constexpr const TraceUnit& traceUnit = textTraceUnit;

constexpr std::size_t prefixCapacity = 64;
constexpr std::size_t valueCapacity = 512;
constexpr std::size_t limitedLength = 64;

std::string prefixOf(const CMAttribute& attribute) {
  return std::to_string(attribute.key().number()) + ';';
}

// Where the blanks begin in a field whose text, `length` bytes long, starts with a prefix. Only the
// value is ever blanked.
int fillStart(const char* field, int prefix, int length) {
  if (isValidUTF8String(field + prefix) != 0) return length;
  return std::max(prefix, myfindUTF8Len(field, length - 1));
}

// `field` is zeroed and has room for the prefix and one byte more.
void writeField(const CMAttribute& attribute, const char* prefix, char* field, int width) {
  const auto length = static_cast<int>(std::strlen(prefix));
  std::memcpy(field, prefix, static_cast<std::size_t>(length));
  attribute.getValue2(field + length, width - length, 0);
  const int start = fillStart(field, length, static_cast<int>(std::strlen(field)));
  std::memset(field + start, ' ', static_cast<std::size_t>(width - start));
}

bool isNumber(std::string_view digits) {
  return digits.find_first_not_of("0123456789") == std::string_view::npos;
}

// Reads the digits of a key, which are UTF-8. Nothing at all is key 0.
bool readKey(std::string_view digits, int& key) {
  char local[prefixCapacity] = {};
  if (ConvertStringToUTF8(1, local, sizeof local, digits.data(), static_cast<int>(digits.size()),
                          ccsid::local) != 0) {
    return false;
  }
  const auto [end, error] = std::from_chars(local, local + std::strlen(local), key);
  return error != std::errc::result_out_of_range;
}

bool isUtf8(int ccsid) {
  return (ccsid == ccsid::local ? UTF8GetLocaleDefaultCodePageID() : ccsid) == ccsid::utf8;
}

// The length that a text of `length` bytes, more than the limit, is cut to.
std::size_t cutLength(const char* text, bool utf8) {
  if (!utf8) return limitedLength;
  const int start = myfindUTF8Len(text, static_cast<int>(limitedLength));
  return static_cast<std::size_t>(std::max(start, 0));
}

}  // namespace

int createUTF8Desc(const CMAttribute& attribute, char* field, int width) {
  ORX_TRACE("createUTF8Desc");
  if (field == nullptr || width < 1) return trace.exit(0);
  std::memset(field, 0, static_cast<std::size_t>(width));
  const std::string local = prefixOf(attribute);
  char prefix[prefixCapacity] = {};
  if (ConvertStringToUTF8(0, prefix, sizeof prefix, local.data(), static_cast<int>(local.size()),
                          ccsid::local) != 0) {
    return trace.exit(0);
  }
  if (std::strlen(prefix) >= static_cast<std::size_t>(width)) {
    DIAG_Printf(trace.anchor(), __LINE__, "The destination buffer is too small");
    return trace.exit(0);
  }
  writeField(attribute, prefix, field, width);
  return trace.exit(1);
}

int getUTF8Desc(const char* text, CMAttribute* attribute, int translate, int ccsid) {
  ORX_TRACE("getUTF8Desc");
  if (text == nullptr || attribute == nullptr) return trace.exit(0);
  const std::string_view bytes(text);
  const auto length = static_cast<std::int64_t>(bytes.size());
  if (trace.on(TraceScope::detail)) {
    DIAG_Dump(trace.anchor(), __LINE__, text, length, "dump of source");
  }
  const std::size_t semicolon = bytes.find(';');
  if (semicolon == std::string_view::npos) return trace.exit(0);
  if (!isNumber(bytes.substr(0, semicolon))) {
    DIAG_Printf(trace.anchor(), __LINE__, "The String contain invalid number");
    DIAG_Dump(trace.anchor(), __LINE__, text, length, "dump of original string");
    return trace.exit(0);
  }
  int key = 0;
  if (!readKey(bytes.substr(0, semicolon), key)) return trace.exit(0);
  const std::string value(bytes.substr(semicolon + 1));  // the text may lie in the attribute
  attribute->setKey(CMAttributeKey(key));
  attribute->clearValues();
  attribute->setValue(value);
  if (translate != 0) (void)TranslateAttrValue(attribute, 0, ccsid, 1);
  return trace.exit(1);
}

int TranslateAttrValue(CMAttribute* attribute, int toUTF8, int ccsid, int limit64) {
  ORX_TRACE("TranslateAttrValue");
  if (attribute == nullptr) return trace.exit(0);
  char source[valueCapacity] = {};
  attribute->getValue2(source, sizeof source - 1, 0);
  char target[valueCapacity] = {};
  if (ConvertStringToUTF8(toUTF8 != 0 ? 0 : 1, target, sizeof target, source,
                          static_cast<int>(std::strlen(source)) + 1, ccsid) != 0) {
    return trace.exit(0);
  }
  attribute->clearValues();
  const std::size_t length = std::strlen(target);
  if (limit64 != 0 && length > limitedLength) {
    DIAG_Dump(trace.anchor(), __LINE__, target, static_cast<std::int64_t>(length),
              "The DESCR is too long and is truncated to 64 bytes");
    target[cutLength(target, toUTF8 != 0 || isUtf8(ccsid))] = '\0';
  }
  attribute->setValue(target);
  return trace.exit(1);
}

CMAttribute* findDescAttr(CMAttributeSet* set, int detach) {
  ORX_TRACE("findDescAttr");
  if (set == nullptr) return trace.exit(static_cast<CMAttribute*>(nullptr));
  int count = 0;
  const int* keys = CMAttribute::getUTF8DescAttrID(&count);
  CMAttribute* found = nullptr;
  for (int i = 0; i < count && found == nullptr; ++i) {
    found = set->findAttrKey(CMAttributeKey(keys[i]));
  }
  if (found != nullptr && detach != 0) (void)set->remove(found);
  return trace.exit(found);
}

}  // namespace orx
