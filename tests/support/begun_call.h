// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/keychain/call_context.h"

namespace zarn::linux_backend {

/// A context for as many calls as a test makes, with time enough for all of them.
class BegunCall final : public CallContext {
public:
    explicit BegunCall(Report report = {})
        : CallContext(std::move(report))
    {
        begin({std::chrono::minutes(10)});
    }
};

} // namespace zarn::linux_backend
