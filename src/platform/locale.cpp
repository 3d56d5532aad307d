#include "platform/locale.h"

#include <langinfo.h>
#include <locale.h>
#include <unicode/uclean.h>
#include <unicode/ucnv.h>

#include <cstdlib>
#include <memory>
#include <new>
#include <string_view>
#include <type_traits>

namespace orx {

namespace {

// Identifiers whose table in use is not the one that ICU keeps under the bare number: there 943 has
// the yen sign at 5C, and the Windows pages lack the euro sign.
struct ConverterName {
  int ccsid;
  const char* name;
};
constexpr ConverterName converterNames[] = {
    {943, "ibm-943_P15A-2003"}, {1250, "windows-1250"}, {1251, "windows-1251"},
    {1252, "windows-1252"},     {1253, "windows-1253"}, {1254, "windows-1254"},
    {1255, "windows-1255"},     {1256, "windows-1256"}, {1257, "windows-1257"},
    {1258, "windows-1258"},
};

// Codesets whose converter has no CCSID of its own, and the one of the nearest table.
struct CodesetCcsid {
  std::string_view codeset;
  int ccsid;
};
constexpr CodesetCcsid codesetCcsids[] = {
    {"BIG5", 950}, {"EUC-JP", 954}, {"EUC-TW", 964}, {"GBK", 1386}, {"TIS-620", 874},
};

struct FreeLocale {
  void operator()(locale_t locale) const { freelocale(locale); }
};
using OwnedLocale = std::unique_ptr<std::remove_pointer_t<locale_t>, FreeLocale>;

// Leaves the error as it is set. ICU's own callback of this kind drops invisible characters.
void stopAtUnmappable(const void*, UConverterFromUnicodeArgs*, const UChar*, std::int32_t, UChar32,
                      UConverterCallbackReason, UErrorCode*) {}

UConverter* openByCcsid(int ccsid, UErrorCode& status) {
  for (const ConverterName& row : converterNames) {
    if (row.ccsid == ccsid) return ucnv_open(row.name, &status);
  }
  return ucnv_openCCSID(ccsid, UCNV_IBM, &status);
}

icu::LocalUConverterPointer openStrict(int ccsid) {
  if (ccsid <= 0) return icu::LocalUConverterPointer();
  UErrorCode status = U_ZERO_ERROR;
  icu::LocalUConverterPointer converter(openByCcsid(ccsid, status));
  if (U_FAILURE(status)) return icu::LocalUConverterPointer();
  ucnv_setToUCallBack(converter.getAlias(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                      &status);
  ucnv_setFromUCallBack(converter.getAlias(), stopAtUnmappable, nullptr, nullptr, nullptr, &status);
  if (U_FAILURE(status)) return icu::LocalUConverterPointer();
  return converter;
}

// 0 when the codeset is not known.
int ccsidOfCodeset(const char* codeset) {
  for (const CodesetCcsid& row : codesetCcsids) {
    if (row.codeset == codeset) return row.ccsid;
  }
  UErrorCode status = U_ZERO_ERROR;
  const icu::LocalUConverterPointer converter(ucnv_open(codeset, &status));
  if (U_FAILURE(status)) return 0;
  return ucnv_getCCSID(converter.getAlias(), &status);
}

int ccsidOfEnvironment() {
  const OwnedLocale locale(newlocale(LC_CTYPE_MASK, "", nullptr));
  return locale == nullptr ? 0 : ccsidOfCodeset(nl_langinfo_l(CODESET, locale.get()));
}

int errorOf(UErrorCode status) {
  if (U_SUCCESS(status)) return locale_error::none;
  switch (status) {
    case U_BUFFER_OVERFLOW_ERROR:
      return locale_error::targetFull;
    case U_INVALID_CHAR_FOUND:
    case U_TRUNCATED_CHAR_FOUND:
    case U_ILLEGAL_CHAR_FOUND:
    case U_ILLEGAL_ESCAPE_SEQUENCE:
    case U_UNSUPPORTED_ESCAPE_SEQUENCE:
      return locale_error::badText;
    default:
      return locale_error::libraryFailed;
  }
}

int convert(UConverter* to, char*& target, const char* targetLimit, UConverter* from,
            const char* source, const char* sourceLimit) {
  UErrorCode status = U_ZERO_ERROR;
  ucnv_convertEx(to, from, &target, targetLimit, &source, sourceLimit, nullptr, nullptr, nullptr,
                 nullptr, true, true, &status);
  return errorOf(status);
}

OutOfMemory* outOfMemoryCall = nullptr;

void* orEnd(void* memory) {
  if (memory == nullptr) outOfMemoryCall();
  return memory;
}

extern "C" {
void* allocateForLibrary(const void*, std::size_t size) {
  return orEnd(std::malloc(size));
}
void* reallocateForLibrary(const void*, void* memory, std::size_t size) {
  return orEnd(std::realloc(memory, size));
}
void freeForLibrary(const void*, void* memory) {
  std::free(memory);
}
}

}  // namespace

void prepareLocale(OutOfMemory& outOfMemory) {
  outOfMemoryCall = &outOfMemory;
  UErrorCode status = U_ZERO_ERROR;
  u_setMemoryFunctions(nullptr, allocateForLibrary, reallocateForLibrary, freeForLibrary, &status);
}

LocaleObject* LOCX_GetLocale(int, int, int, int* error) {
  const int ccsid = ccsidOfEnvironment();
  auto* locale = ccsid == 0 ? nullptr : new (std::nothrow) LocaleObject{0, ccsid};
  *error = locale == nullptr ? locale_error::noLocale : locale_error::none;
  return locale;
}

void LOCX_ReleaseLocale(LocaleObject* locale) {
  delete locale;
}

void LOCX_TranslateString(int targetCcsid, char* target, int targetSize, int sourceCcsid,
                          const char* source, int sourceLength, int* written, int, int* error) {
  *written = 0;
  *error = locale_error::badArgument;
  if (target == nullptr || targetSize < 1 || source == nullptr || sourceLength < 0) return;
  const icu::LocalUConverterPointer to = openStrict(targetCcsid);
  const icu::LocalUConverterPointer from = openStrict(sourceCcsid);
  *error = locale_error::noConverter;
  if (to.isNull() || from.isNull()) return;
  char* end = target;
  *error = convert(to.getAlias(), end, target + targetSize - 1, from.getAlias(), source,
                   source + sourceLength);
  *written = static_cast<int>(end - target);
}

}  // namespace orx
