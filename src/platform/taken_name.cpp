#include "platform/taken_name.h"

#include <sys/stat.h>

namespace orx {

bool isTaken(const std::string& name) {
  struct stat file {};
  return ::lstat(name.c_str(), &file) == 0;
}

std::string freeTextName(const std::string& name) {
  std::string found = name + ".txt";
  for (int number = 2; isTaken(found); ++number) {
    found = name + "." + std::to_string(number) + ".txt";
  }
  return found;
}

}  // namespace orx
