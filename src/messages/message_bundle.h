// MessageBundle: one opened ICU resource bundle with the operator's texts in one language.
//
//   MessageBundle bundle;
//   if (bundle.open(bundleName) == 0) { const char* text = bundle.getMessage("IDS_MAIN_FIRST"); }
//
// The bundle is a directory of compiled resource files, one for each language (root.res, de.res,
// ...), in the current directory. The language is that of ICU's default locale; a language that
// the directory lacks falls back to root.res. Files that are damaged are not opened
// (resource_file.h). Throws std::bad_alloc.
#pragma once

#include <unicode/locid.h>
#include <unicode/ures.h>

#include <array>
#include <cstdint>
#include <memory>
#include <optional>

namespace orx {

class MessageBundle {
 public:
  MessageBundle() = default;
  MessageBundle(const MessageBundle&) = delete;
  MessageBundle& operator=(const MessageBundle&) = delete;
  ~MessageBundle() = default;

  // Releases what is open and opens `bundleName` below the current directory. 0: open. -1: no
  // name, nothing changed. -2: no such bundle, one with a damaged file, or no current directory;
  // the object is then as new.
  [[nodiscard]] int open(const char* bundleName);

  // The text of `key` in ICU's default code page, exactly as the bundle holds it, or nullptr: no
  // open bundle, no such key, an item that is no string, or an empty text. The text belongs to the
  // object and lives until its next getMessage, open or close.
  [[nodiscard]] const char* getMessage(const char* key);

  // Releases everything; the object is as new.
  void close();

  // ICU's code for the last call made for this object.
  [[nodiscard]] std::int32_t status() const { return status_; }
  // "<current directory>/<bundle name>", cut to 1023 bytes; empty while nothing is open.
  [[nodiscard]] const char* path() const { return path_.data(); }
  // "<language>_<country>", either may be empty; empty while nothing is open.
  [[nodiscard]] const char* localeName() const { return localeName_.data(); }
  // Length of the longest text so far; the buffer is one byte longer.
  [[nodiscard]] std::int32_t capacity() const { return capacity_; }

 private:
  [[nodiscard]] bool locate(const char* bundleName);
  void reserve(std::int32_t length);

  icu::LocalUResourceBundlePointer bundle_;
  std::array<char, 1024> path_{};
  UErrorCode status_ = U_ZERO_ERROR;
  std::array<char, 100> localeName_{};
  std::optional<icu::Locale> locale_;
  std::unique_ptr<char[]> buffer_;
  std::int32_t capacity_ = 0;
};

}  // namespace orx
