// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace zarn {

/// The publisher's own texts and addresses, fixed when the program is built.
struct ProductTexts {
    /// The https address of the page that lists the published version.
    std::string updateCheckPageURL;
    /// Without a scheme; the link adds "https://".
    std::string feedbackAddress;
    std::string agreementTitle;
    std::string agreementUrl;
    std::string publisherName;
};

} // namespace zarn
