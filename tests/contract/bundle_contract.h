// SPDX-License-Identifier: MIT
#pragma once

#include "platform/bundle.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

namespace zarn {

struct BundleBackend {
    std::string name;
    std::function<std::unique_ptr<Bundle>()> make;
};

/// What every bundle has to have.
class BundleContract : public testing::TestWithParam<BundleBackend> {
protected:
    const std::unique_ptr<Bundle> bundle = GetParam().make();
};

} // namespace zarn
