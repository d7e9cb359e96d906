// SPDX-License-Identifier: MIT
#pragma once

#include "platform/text_services.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

namespace zarn {

struct TextServicesBackend {
    std::string name;
    std::function<std::unique_ptr<TextServices>()> make;
};

/// What every backend has to do with texts, in a locale whose order of letters is that of English.
class TextServicesContract : public testing::TestWithParam<TextServicesBackend> {
protected:
    std::vector<std::string> sorted(std::vector<std::string> words) const
    {
        texts->sortLocalized(words);
        return words;
    }

    const std::unique_ptr<TextServices> texts = GetParam().make();
};

} // namespace zarn
