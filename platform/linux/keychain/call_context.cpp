// SPDX-License-Identifier: MIT
#include "platform/linux/keychain/call_context.h"

#include "base/warn.h"

#include <algorithm>

namespace zarn::linux_backend {

using std::chrono::steady_clock;

CallContext::CallContext(Report report)
    : m_report(report ? std::move(report) : Report(warn))
{
}

void CallContext::begin(Deadline deadline, std::stop_token stop)
{
    m_deadline = deadline;
    m_stop = std::move(stop);
}

std::chrono::milliseconds CallContext::timeLeft() const
{
    using std::chrono::milliseconds;
    return std::max(
        std::chrono::ceil<milliseconds>(m_deadline - steady_clock::now()), milliseconds(0));
}

bool CallContext::isOver() const
{
    return m_stop.stop_requested() || steady_clock::now() >= m_deadline;
}

void CallContext::report(const std::string& text, const std::string& detail)
{
    if (m_reported.insert(text).second)
        m_report("keychain: " + text + (detail.empty() ? "" : " (" + detail + ")"));
}

} // namespace zarn::linux_backend
