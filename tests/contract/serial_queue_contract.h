// SPDX-License-Identifier: MIT
#pragma once

#include "platform/serial_queue.h"

#include <gtest/gtest.h>

#include <memory>

namespace zarn {

/// Made by the backend that this is linked with.
std::unique_ptr<SerialQueues> makeSerialQueues();

/// What every serial queue has to do.
class SerialQueueContract : public testing::Test {
protected:
    std::unique_ptr<SerialQueues> queues = makeSerialQueues();
    std::unique_ptr<SerialQueue> queue = queues->make("com.zarn.zarn-shortcuts");
};

} // namespace zarn
