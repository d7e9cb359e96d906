// SPDX-License-Identifier: MIT
#include "platform/memory/memory_json.h"
#include "tests/contract/json_contract.h"

namespace zarn {

INSTANTIATE_TEST_SUITE_P(Memory, JsonContract,
    testing::Values(JsonBackend{"memory", [] { return std::make_unique<memory::MemoryJson>(); }}));

} // namespace zarn
