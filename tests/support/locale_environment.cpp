// The tests run in a UTF-8 locale, whatever the one of the person who runs them.
#include <gtest/gtest.h>

#include <cstdlib>

namespace orx {
namespace {

class LocaleEnvironment : public testing::Environment {
 public:
  void SetUp() override { (void)setenv("LC_ALL", "C.UTF-8", 1); }
};

const testing::Environment* const environment =
    testing::AddGlobalTestEnvironment(new LocaleEnvironment);

}  // namespace
}  // namespace orx
