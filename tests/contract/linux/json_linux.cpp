// SPDX-License-Identifier: MIT
#include "platform/linux/text/qt_json.h"
#include "tests/contract/json_contract.h"

namespace zarn {

INSTANTIATE_TEST_SUITE_P(Linux, JsonContract,
    testing::Values(
        JsonBackend{"linux", [] { return std::make_unique<linux_backend::QtJson>(); }}));

} // namespace zarn
