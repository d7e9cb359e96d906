// SPDX-License-Identifier: MIT
#include "platform/memory/memory_desktop.h"
#include "tests/contract/bundle_contract.h"

namespace zarn {

INSTANTIATE_TEST_SUITE_P(Memory, BundleContract,
    testing::Values(
        BundleBackend{"memory", [] { return std::make_unique<memory::MemoryBundle>(); }}));

} // namespace zarn
