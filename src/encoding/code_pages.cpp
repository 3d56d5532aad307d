#include "encoding/code_pages.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <cstring>
#include <memory>

#include "encoding/text_trace.h"
#include "platform/locale.h"
#include "platform/memory_manager.h"

namespace orx {

constexpr TraceUnit textTraceUnit = makeTraceUnit("orxutf8.cpp", "ORXUTF8", __DATE__, __TIME__);

namespace {

constexpr const TraceUnit& traceUnit = textTraceUnit;

struct ReleaseLocale {
  void operator()(LocaleObject* locale) const { LOCX_ReleaseLocale(locale); }
};

int usedCcsid(int ccsid) {
  if (ccsid == ccsid::local) ccsid = UTF8GetLocaleDefaultCodePageID();
  return ccsid == ccsid::gb18030Growing ? ccsid::gb18030 : ccsid;
}

int translate(int flagUTF8, char* target, int targetSize, const char* source, int sourceLength,
              int ccsid) {
  const int to = flagUTF8 != 0 ? ccsid : ccsid::utf8;
  const int from = flagUTF8 != 0 ? ccsid::utf8 : ccsid;
  int written = 0;
  int error = 0;
  LOCX_TranslateString(to, target, targetSize, from, source, sourceLength, &written, 0, &error);
  return error;
}

int convertIntoHeap(int flagUTF8, std::string& text, int ccsid) {
  const auto length = static_cast<int>(text.size());
  if (length > INT_MAX / 6) return locale_error::targetFull;
  const CountedBuffer target(text.size() * 6 + 1);
  const int error =
      ConvertStringToUTF8(flagUTF8, target.data(), length * 6, text.data(), length, ccsid);
  if (error == 0) text = target.data();
  return error;
}

int convertInPlace(int flagUTF8, std::string& text, int ccsid) {
  if (text.empty()) return 0;
  if (text.size() > INT_MAX) return locale_error::targetFull;
  char target[1024] = {};
  const int error = ConvertStringToUTF8(flagUTF8, target, sizeof target - 1, text.data(),
                                        static_cast<int>(text.size()), ccsid);
  if (error == locale_error::targetFull) return convertIntoHeap(flagUTF8, text, ccsid);
  if (error == 0) text = target;
  return error;
}

constexpr std::size_t asciiCount = 128;

// The EBCDIC form of each ASCII character, and a NUL; null while the conversion fails.
const char* ebcdicTable() {
  static char table[asciiCount + 1] = {};
  static bool built = false;
  if (!built) {
    char ascii[asciiCount];
    for (std::size_t i = 0; i < asciiCount; ++i) ascii[i] = static_cast<char>(i);
    std::memset(table, 0, sizeof table);
    built = ConvertStringToUTF8(1, table, sizeof table, ascii, asciiCount,
                                ccsid::openSystemsLatin1) == 0;
  }
  return built ? table : nullptr;
}

}  // namespace

int UTF8GetLocaleDefaultCodePageID() {
  ORX_TRACE("UTF8GetLocaleDefaultCodePageID");
  static int localCcsid = 0;
  if (localCcsid != 0) return trace.exit(localCcsid);
  int error = 0;
  const std::unique_ptr<LocaleObject, ReleaseLocale> locale(LOCX_GetLocale(0, 0, 0, &error));
  if (error != 0 || locale == nullptr) {
    DIAG_Printf(trace.anchor(), __LINE__, "Error: Unable to get locale object\n");
    return trace.exit(0);
  }
  localCcsid = locale->ccsid;
  return trace.exit(localCcsid);
}

int ConvertStringToUTF8(int flagUTF8, char* target, int targetSize, const char* source,
                        int sourceLength, int ccsid) {
  ORX_TRACE("ConvertStringToUTF8");
  const int used = usedCcsid(ccsid);
  const int error = translate(flagUTF8, target, targetSize, source, sourceLength, used);
  if (error != 0) {
    DIAG_Printf(trace.anchor(), __LINE__, "Convert Error, the error id is %d", error);
  }
  if (trace.on(TraceScope::detail)) {
    DIAG_Printf(trace.anchor(), __LINE__, "Input Codepage ID is [%d], flagUTF8 is [%d]", used,
                flagUTF8);
    DIAG_Dump(trace.anchor(), __LINE__, source, sourceLength, "Dump of srcBuf");
    DIAG_Dump(trace.anchor(), __LINE__, target, targetSize, "Dump of dstBuf");
  }
  return trace.exit(error);
}

int ConvertStringToUTF8_RWCString(int flagUTF8, std::string& text, int ccsid) {
  ORX_TRACE("ConvertStringToUTF8_RWCString");
  return trace.exit(convertInPlace(flagUTF8 != 0 ? 1 : 0, text, ccsid));
}

int isValidEBCDICEnglishString(const char* text) {
  ORX_TRACE("isValidEBCDICEnglishString");
  const char* table = ebcdicTable();
  const std::string_view bytes(text);
  const bool valid = std::all_of(bytes.begin(), bytes.end(), [table](char byte) {
    return table != nullptr && std::memchr(table, byte, asciiCount) != nullptr;
  });
  return trace.exit(valid ? 1 : 0);
}

void UTF8StrNCopy(char* field, const char* text, int width) {
  ORX_TRACE("UTF8StrNCopy");
  const std::size_t room = width > 0 ? static_cast<std::size_t>(width) : 0;
  const std::size_t length = std::strlen(text);
  const std::size_t copied = std::min(length, room);
  std::memmove(field, text, copied);
  std::memset(field + copied, ' ', room - copied);
  if (trace.on(TraceScope::detail)) {
    DIAG_Dump(trace.anchor(), __LINE__, field, width, "dump of output");
    DIAG_Dump(trace.anchor(), __LINE__, text, static_cast<std::int64_t>(length), "dump of input");
  }
}

void UTF8FillTail(char* field, int width) {
  ORX_TRACE("UTF8FillTail");
  if (width < 1) return;
  const auto room = static_cast<std::size_t>(width);
  const std::size_t length = strnlen(field, room);
  std::memset(field + length, ' ', room - length);
}

}  // namespace orx
