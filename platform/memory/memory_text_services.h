// SPDX-License-Identifier: MIT
#pragma once

#include "platform/text_services.h"

namespace zarn::memory {

/// ASCII letters by the alphabet, lower case before upper case on a tie; everything else by its
/// bytes. Of regular expressions it supports `(?<=literal)[^characters]+`, with "\/" for "/".
class MemoryTextServices final : public TextServices {
public:
    int localizedCompare(std::string_view a, std::string_view b) const override;
    void sortLocalized(std::vector<std::string>& texts) const override;
    int numericCompare(std::string_view a, std::string_view b) const override;
    std::optional<std::string> firstMatch(
        std::string_view pattern, std::string_view text) const override;
};

} // namespace zarn::memory
