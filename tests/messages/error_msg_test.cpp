#include "messages/error_msg.h"

#include <gtest/gtest.h>

#include <limits>

namespace orx {
namespace {

TEST(ErrorMsg, NamesCodeAndReason) {
  constexpr auto lowest = std::numeric_limits<std::int32_t>::min();
  const std::tuple<std::int32_t, std::int32_t, const char*> cases[] = {
      {6, 28, "%d, RC=6(ProtocolError), RSN=28(NotFound)\n"},
      {0, 0, "%d, RC=0(Success), RSN=0(NoError)\n"},
      {11, 64, "%d, RC=11(Authority), RSN=64(User)\n"},
      {8, 17, "%d, RC=8(SystemError), RSN=17(Format)\n"},
      {12, 65, "%d, RC=12(Unknown), RSN=65(Unknown)\n"},
      {-1, lowest, "%d, RC=-1(Unknown), RSN=-2147483648(Unknown)\n"},
  };
  for (const auto& [code, reason, line] : cases) {
    testing::internal::CaptureStdout();
    ErrorMsg(code, reason, "%d");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), line);
  }
}

}  // namespace
}  // namespace orx
