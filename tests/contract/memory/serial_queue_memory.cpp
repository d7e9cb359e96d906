// SPDX-License-Identifier: MIT
#include "platform/memory/memory_serial_queue.h"
#include "tests/contract/serial_queue_contract.h"

namespace zarn {

INSTANTIATE_TEST_SUITE_P(Memory, SerialQueueContract,
    testing::Values(SerialQueueBackend{
        "memory", [] { return std::make_unique<memory::MemorySerialQueues>(); }}),
    [](const auto& backend) { return backend.param.name; });

} // namespace zarn
