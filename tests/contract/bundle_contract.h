// SPDX-License-Identifier: MIT
#pragma once

#include "platform/bundle.h"

#include <gtest/gtest.h>

#include <memory>

namespace zarn {

/// Made by the backend that this is linked with.
std::unique_ptr<Bundle> makeBundle();

/// What every bundle has to have.
class BundleContract : public testing::Test {
protected:
    const std::unique_ptr<Bundle> bundle = makeBundle();
};

} // namespace zarn
