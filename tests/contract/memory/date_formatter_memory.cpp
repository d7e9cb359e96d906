// SPDX-License-Identifier: MIT
#include "platform/memory/memory_clock.h"
#include "tests/contract/date_formatter_contract.h"

namespace zarn {
namespace {

class MemoryFixture final : public DateFormatterFixture {
public:
    DateFormatter& formatter() override { return m_formatter; }
    void setHoursFromUtc(int hours) override { m_formatter.secondsFromUtc = hours * 3600.0; }

private:
    memory::MemoryDateFormatter m_formatter;
};

INSTANTIATE_TEST_SUITE_P(Memory, DateFormatterContract,
    testing::Values(
        DateFormatterBackend{"memory", [] { return std::make_unique<MemoryFixture>(); }}));

} // namespace
} // namespace zarn
