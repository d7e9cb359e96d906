// SPDX-License-Identifier: MIT
#include "platform/linux/settings/compiled_bundle.h"

#include "platform/linux/settings/plist_document.h"
#include "zarn/product_constants.h"

namespace zarn::linux_backend {

const Value::Dictionary* CompiledBundle::infoDictionary() const
{
    std::call_once(m_once, [this] {
        if (const auto parsed = PlistDocument::parse(product::infoDictionary))
            m_info = parsed.value().dictionary();
    });
    return m_info ? &*m_info : nullptr;
}

ProductTexts compiledProductTexts()
{
    return {product::updateCheckPageURL, product::feedbackAddress, product::agreementTitle,
        product::agreementUrl, product::publisherName};
}

} // namespace zarn::linux_backend
