// Scratch directories for tests.
#pragma once

#include <stdlib.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace orx::test {

// A new directory, removed with everything in it at the end.
class TempDir {
 public:
  TempDir() {
    std::string name = std::filesystem::temp_directory_path() / "orx.XXXXXX";
    if (mkdtemp(name.data()) == nullptr) throw std::filesystem::filesystem_error("mkdtemp", {});
    path_ = name;
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  ~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }
  [[nodiscard]] std::string file(std::string_view name) const { return (path_ / name).string(); }
  // The names of what is in it, sorted.
  [[nodiscard]] std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) {
      names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
  }
  [[nodiscard]] std::filesystem::path operator/(std::string_view name) const {
    return path_ / name;
  }

 private:
  std::filesystem::path path_;
};

// Makes `directory` the current one as long as it lives.
class WorkingDirectory {
 public:
  explicit WorkingDirectory(const std::filesystem::path& directory)
      : before_(std::filesystem::current_path()) {
    std::filesystem::current_path(directory);
  }
  WorkingDirectory(const WorkingDirectory&) = delete;
  WorkingDirectory& operator=(const WorkingDirectory&) = delete;
  ~WorkingDirectory() {
    std::error_code ignored;
    std::filesystem::current_path(before_, ignored);
  }

 private:
  std::filesystem::path before_;
};

inline void writeFile(const std::filesystem::path& file, std::string_view bytes) {
  std::ofstream(file, std::ios::binary) << bytes;
}

inline std::string readFile(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  std::string content;
  std::array<char, 65536> piece;  // byte by byte takes a second for some inputs
  while (in.read(piece.data(), piece.size()) || in.gcount() > 0) {
    content.append(piece.data(), static_cast<std::size_t>(in.gcount()));
  }
  return content;
}

}  // namespace orx::test
