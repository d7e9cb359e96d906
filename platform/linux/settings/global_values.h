// SPDX-License-Identifier: MIT
#pragma once

#include "base/value.h"

#include <optional>
#include <string_view>

namespace zarn::linux_backend {

/// Values that the desktop provides to every program, such as "AppleInterfaceStyle". Main thread
/// only.
class GlobalValues {
public:
    virtual ~GlobalValues() = default;
    virtual std::optional<Value> object(std::string_view key) const = 0;
};

} // namespace zarn::linux_backend
