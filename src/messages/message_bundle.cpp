#include "messages/message_bundle.h"

#include <unicode/localpointer.h>
#include <unicode/ucnv.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "messages/resource_file.h"

namespace orx {

bool MessageBundle::locate(const char* bundleName) {
  std::error_code failure;
  const auto directory = std::filesystem::current_path(failure);
  if (failure) return false;
  (void)std::snprintf(path_.data(), path_.size(), "%s/%s", directory.c_str(), bundleName);
  locale_ = icu::Locale::getDefault();
  (void)std::snprintf(localeName_.data(), localeName_.size(), "%s_%s", locale_->getLanguage(),
                      locale_->getCountry());
  return true;
}

int MessageBundle::open(const char* bundleName) {
  if (bundleName == nullptr) return -1;
  close();
  if (locate(bundleName) && resourceFilesAreSound(path_.data())) {
    bundle_.adoptInstead(ures_open(path_.data(), localeName_.data(), &status_));
  }
  if (bundle_.isValid()) return 0;
  close();
  return -2;
}

const char* MessageBundle::getMessage(const char* key) {
  if (key == nullptr) return nullptr;
  status_ = U_ZERO_ERROR;
  const icu::LocalUResourceBundlePointer item(
      ures_getByKey(bundle_.getAlias(), key, nullptr, &status_));
  if (item.isNull() || ures_getType(item.getAlias()) != URES_STRING) return nullptr;

  std::int32_t units = 0;
  const UChar* text = ures_getString(item.getAlias(), &units, &status_);
  const icu::LocalUConverterPointer converter(ucnv_open(nullptr, &status_));

  UErrorCode outcome = U_ZERO_ERROR;
  const auto length = ucnv_fromUChars(converter.getAlias(), nullptr, 0, text, -1, &outcome);
  if (length == 0) {
    status_ = outcome;
    return nullptr;
  }
  reserve(length);
  outcome = U_ZERO_ERROR;
  (void)ucnv_fromUChars(converter.getAlias(), buffer_.get(), length + 1, text, -1, &outcome);
  status_ = outcome;
  return buffer_.get();
}

// Keeps the larger of two buffers; what stays of an older text is zeroed.
void MessageBundle::reserve(std::int32_t length) {
  if (length > capacity_) {
    buffer_.reset();
    capacity_ = 0;
    buffer_ = std::make_unique<char[]>(static_cast<std::size_t>(length) + 1);
    capacity_ = length;
  }
  std::fill_n(buffer_.get(), capacity_, '\0');
}

void MessageBundle::close() {
  bundle_.adoptInstead(nullptr);
  locale_.reset();
  buffer_.reset();
  capacity_ = 0;
  path_.fill('\0');
  localeName_.fill('\0');
  status_ = U_ZERO_ERROR;
}

}  // namespace orx
