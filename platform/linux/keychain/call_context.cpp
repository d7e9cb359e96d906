// SPDX-License-Identifier: MIT
#include "platform/linux/keychain/call_context.h"

#include "base/warn.h"

#include <algorithm>

namespace zarn::linux_backend {

using std::chrono::milliseconds;

CallContext::CallContext(Report report, PromptObserver observer)
    : m_report(report ? std::move(report) : Report(warn))
    , m_observer(std::move(observer))
{
}

void CallContext::begin(Limits limits, std::stop_token stop)
{
    m_limits = limits;
    m_deadline = Clock::now() + limits.silence;
    m_stop = std::move(stop);
}

milliseconds CallContext::timeLeft() const
{
    return std::max(std::chrono::ceil<milliseconds>(m_deadline - Clock::now()), milliseconds(0));
}

bool CallContext::isOver() const
{
    return m_stop.stop_requested() || Clock::now() >= m_deadline;
}

CallContext::PromptWait::PromptWait(CallContext& call, Clock::time_point promptOpened)
    : m_call(call)
    , m_silenceLeft(call.m_deadline - m_began)
{
    m_call.m_deadline
        = std::min(m_began + m_call.m_limits.prompt, promptOpened + m_call.m_limits.promptAge);
    if (m_call.m_observer)
        m_call.m_observer(true);
}

CallContext::PromptWait::~PromptWait()
{
    const auto now = Clock::now();
    m_call.m_limits.prompt -= std::chrono::ceil<milliseconds>(now - m_began);
    m_call.m_deadline = now + m_silenceLeft;
    if (m_call.m_observer)
        m_call.m_observer(false);
}

void CallContext::report(const std::string& text, const std::string& detail)
{
    if (m_reported.insert(text).second)
        m_report("keychain: " + text + (detail.empty() ? "" : " (" + detail + ")"));
}

} // namespace zarn::linux_backend
