// SPDX-License-Identifier: MIT
#include "tests/contract/memory/memory_alerts.h"

namespace zarn {
namespace {

struct Owned {
    std::vector<std::string> events;
    memory::MemoryAlertRunner alerts{events};
};

class OwningAlertFixture final : Owned, public MemoryAlertFixture {
public:
    OwningAlertFixture()
        : MemoryAlertFixture(alerts)
    {
    }
};

INSTANTIATE_TEST_SUITE_P(Memory, AlertContract,
    testing::Values(AlertBackend{"memory", [] { return std::make_unique<OwningAlertFixture>(); }}),
    [](const auto& backend) { return backend.param.name; });

} // namespace
} // namespace zarn
