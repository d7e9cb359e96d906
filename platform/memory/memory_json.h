// SPDX-License-Identifier: MIT
#pragma once

#include "platform/json.h"

namespace zarn::memory {

/// A strict parser and printer without any library.
class MemoryJson final : public JsonSerialization {
public:
    Result<Value> parse(std::string_view utf8) const override;
    Result<std::string> prettyPrinted(const Value& value) const override;
};

} // namespace zarn::memory
