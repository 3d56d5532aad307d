// Backup lines for tests, written column by column.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace orx::test {

struct Line {
  std::string parent = "<1;1;0;0;0;0;0;>";
  std::string object = "<1;1;0;0;0;0;0;>";
  std::int32_t recn = 0;
  std::int32_t recType = 0;
  std::string model = "<1;1;0;0;0;0;0;>";
  std::int32_t auxValue1 = 0;
  std::string data = "";
  std::int32_t auxValue2 = 0;

  // 440 columns without a line end.
  [[nodiscard]] std::string text() const {
    const auto left = [](std::string value, std::size_t width) {
      value.resize(width, ' ');
      return value;
    };
    const auto number = [](std::int64_t value) {
      const std::string digits = std::to_string(value);
      return std::string(8 - digits.size(), ' ') + digits;
    };
    return left(parent, 48) + left(object, 48) + number(recn) + number(recType) + left(model, 48) +
           number(auxValue1) + number(static_cast<std::int64_t>(data.size())) + left(data, 256) +
           number(auxValue2);
  }
};

// The lines of a backup file, filled up to 445 bytes: the rules of the reader in their plainest
// form.
inline std::vector<std::string> plainLines(const std::string& path) {
  std::vector<std::string> lines;
  std::FILE* file = std::fopen(path.c_str(), "rb");
  for (;;) {
    char line[445]{};
    (void)!std::fgets(line, sizeof line, file);
    std::size_t length = std::strlen(line);
    if (length == 0) break;
    if (line[length - 1] == '\n') {
      line[--length] = '\0';
      if (length > 0 && line[length - 1] == '\r') line[--length] = '\0';
    }
    lines.emplace_back(line, sizeof line);
  }
  (void)std::fclose(file);
  return lines;
}

inline std::string handleText(int type, std::uint32_t id) {
  return "<1;1;" + std::to_string(type) + ";0;0;0;" + std::to_string(id) + ";>";
}

// `count` lines of resources with ascending identifiers.
inline std::string resourceLines(std::uint32_t count, const std::string& lineEnd = "\n") {
  std::string text;
  for (std::uint32_t id = 1; id <= count; ++id) {
    text += Line{.object = handleText(4, id), .recType = 4, .data = "<2;0;1;r;>"}.text() + lineEnd;
  }
  return text;
}

}  // namespace orx::test
