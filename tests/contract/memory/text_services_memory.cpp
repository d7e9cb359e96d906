// SPDX-License-Identifier: MIT
#include "platform/memory/memory_text_services.h"
#include "tests/contract/text_services_contract.h"

namespace zarn {

INSTANTIATE_TEST_SUITE_P(Memory, TextServicesContract,
    testing::Values(TextServicesBackend{
        "memory", [] { return std::make_unique<memory::MemoryTextServices>(); }}));

} // namespace zarn
