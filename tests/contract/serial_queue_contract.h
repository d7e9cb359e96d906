// SPDX-License-Identifier: MIT
#pragma once

#include "platform/serial_queue.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

namespace zarn {

struct SerialQueueBackend {
    std::string name;
    std::function<std::unique_ptr<SerialQueues>()> make;
};

/// What every serial queue has to do.
class SerialQueueContract : public testing::TestWithParam<SerialQueueBackend> {
protected:
    std::unique_ptr<SerialQueues> queues = GetParam().make();
    std::unique_ptr<SerialQueue> queue = queues->make("com.zarn.zarn-shortcuts");
};

} // namespace zarn
