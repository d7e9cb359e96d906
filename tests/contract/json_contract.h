// SPDX-License-Identifier: MIT
#pragma once

#include "platform/json.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

namespace zarn {

struct JsonBackend {
    std::string name;
    std::function<std::unique_ptr<JsonSerialization>()> make;
};

/// What every JSON serialization has to do.
class JsonContract : public testing::TestWithParam<JsonBackend> {
protected:
    /// The value, or nothing when the text is malformed.
    std::optional<Value> parsed(std::string_view text) const
    {
        const auto result = json->parse(text);
        if (!result) {
            EXPECT_EQ(result.error().code, ErrorCode::Malformed);
            EXPECT_NE(result.error().message, "");
            return std::nullopt;
        }
        return result.value();
    }

    const std::unique_ptr<JsonSerialization> json = GetParam().make();
};

} // namespace zarn
