// SPDX-License-Identifier: MIT
#pragma once

#include "base/value.h"

namespace zarn {

/// The program's own bundle. Any thread.
class Bundle {
public:
    virtual ~Bundle() = default;

    /// The information dictionary; nullptr when there is none.
    virtual const Value::Dictionary* infoDictionary() const = 0;
};

} // namespace zarn
