// SPDX-License-Identifier: MIT
#pragma once

#include "platform/bundle.h"
#include "platform/product_texts.h"

#include <mutex>
#include <optional>

namespace zarn::linux_backend {

/// The information dictionary that was compiled in. Any thread.
class CompiledBundle final : public Bundle {
public:
    const Value::Dictionary* infoDictionary() const override;

private:
    mutable std::once_flag m_once;
    mutable std::optional<Value::Dictionary> m_info;
};

/// The publisher's texts that were compiled in.
ProductTexts compiledProductTexts();

} // namespace zarn::linux_backend
