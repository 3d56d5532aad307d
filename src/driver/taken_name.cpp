#include "driver/taken_name.h"

#include <filesystem>
#include <system_error>

namespace orx {

bool isTaken(const std::string& name) {
  std::error_code error;
  return std::filesystem::exists(std::filesystem::symlink_status(name, error));
}

std::string freeTextName(const std::string& name) {
  std::string found = name + ".txt";
  for (int number = 2; isTaken(found); ++number) {
    found = name + "." + std::to_string(number) + ".txt";
  }
  return found;
}

}  // namespace orx
