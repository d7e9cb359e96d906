// SPDX-License-Identifier: MIT
#include "platform/linux/files/posix_services.h"
#include "tests/contract/clock_contract.h"

#include <ctime>

namespace zarn {

INSTANTIATE_TEST_SUITE_P(Linux, ClockContract,
    testing::Values(
        ClockBackend{"linux", [] { return std::make_unique<linux_backend::SystemClock>(); }}));

TEST(SystemClock, IsTheSystemsClock)
{
    const auto before = std::time(nullptr);
    const auto now = linux_backend::SystemClock().now().secondsSince1970;
    EXPECT_GE(now, static_cast<double>(before) - 1);
    EXPECT_LE(now, static_cast<double>(std::time(nullptr)) + 1);
}

} // namespace zarn
