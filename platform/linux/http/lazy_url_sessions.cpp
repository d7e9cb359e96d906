// SPDX-License-Identifier: MIT
#include "platform/linux/http/lazy_url_sessions.h"

#include "platform/linux/files/module.h"
#include "platform/linux/http/http_module.h"

namespace zarn::linux_backend {

void LazyUrlSessions::preload()
{
    std::call_once(m_loaded, [this] {
        auto* make = reinterpret_cast<MakeUrlSessions*>(
            moduleFunction(httpModuleFile, makeUrlSessionsSymbol));
        m_sessions.reset(make(&m_mainQueue));
    });
}

std::shared_ptr<UrlSession> LazyUrlSessions::makeSession(
    const UrlSessionConfiguration& configuration, UrlSessionDelegate& delegate)
{
    preload();
    return m_sessions->makeSession(configuration, delegate);
}

} // namespace zarn::linux_backend
