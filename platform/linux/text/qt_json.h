// SPDX-License-Identifier: MIT
#pragma once

#include "platform/json.h"

namespace zarn::linux_backend {

/// JSON by Qt Core's parser.
class QtJson final : public JsonSerialization {
public:
    Result<Value> parse(std::string_view utf8) const override;
    Result<std::string> prettyPrinted(const Value& value) const override;
};

} // namespace zarn::linux_backend
