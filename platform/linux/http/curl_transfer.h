// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/http/http_limits.h"
#include "platform/linux/http/http_rules.h"
#include "platform/url_session.h"

#include <atomic>
#include <chrono>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace zarn::linux_backend {

/// Stops a transfer from another thread.
class CurlCancellation {
public:
    /// Any thread. The transfer ends soon after.
    void cancel();
    bool isCancelled() const { return m_cancelled; }
    /// The multi handle to wake, or null. The transfer's thread.
    void watch(void* multi);

private:
    std::mutex m_mutex;
    std::atomic<bool> m_cancelled{false};
    void* m_multi = nullptr;
};

/// What a task has to do, including its redirects. Plain values: it is handed to the worker thread.
struct CurlJob {
    HttpHop first;
    HttpHeaders headers;
    ServerTrust trust = ServerTrust::Evaluate;
    HttpLimits limits;
};

/// Carries the job out on the calling thread, following redirects.
UrlReply performHttp(const CurlJob& job, CurlCancellation& cancellation);

} // namespace zarn::linux_backend
