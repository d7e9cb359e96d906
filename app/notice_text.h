// SPDX-License-Identifier: MIT
#pragma once

#include "platform/attributed_text.h"
#include "platform/product_texts.h"

namespace zarn {

/// The key of the standard settings domain that says whether the terms of use were accepted.
inline constexpr const char* agreedToTermsKey = "agreedToTermsOfUse";

/// Disclaimer, feedback line, warning and licence: what the terms of use and the About panel show.
AttributedText noticeText(const ProductTexts& texts, TextColor color);

} // namespace zarn
