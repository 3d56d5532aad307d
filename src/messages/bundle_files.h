// The message bundle as the programs bring it along: the compiled texts of every language, to be
// written as files into a directory called bundleName beside a database.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace orx {

inline constexpr const char* bundleName = "PRESTORE_restore";

struct BundleFile {
  std::string_view name;  // file name without directory: "root.res", "de.res", ...
  std::span<const std::uint8_t> bytes;
};

// All of them; the bytes live as long as the process.
[[nodiscard]] std::span<const BundleFile> bundleFiles();

}  // namespace orx
