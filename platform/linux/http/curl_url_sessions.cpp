// SPDX-License-Identifier: MIT
#include "platform/linux/http/curl_url_sessions.h"

#include "base/warn.h"
#include "platform/linux/http/curl_transfer.h"
#include "platform/linux/http/http_rules.h"

#include <curl/curl.h>

#include <pthread.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <map>
#include <string>
#include <system_error>
#include <thread>

namespace zarn::linux_backend {

namespace {

// Signals are for the main thread; a write to a closed connection is an error code.
std::thread startWithoutSignals(std::function<void()> work)
{
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, &before);
    std::thread thread;
    try {
        thread = std::thread(std::move(work));
    } catch (const std::system_error&) {
        // Without a thread there is no response; the caller sees that it did not start.
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return thread;
}

} // namespace

/// The running tasks. Main thread only: a worker thread has values of its own and posts its reply.
class CurlUrlSessions::Tasks : public std::enable_shared_from_this<Tasks> {
public:
    Tasks(MainQueue& mainQueue, HttpLimits limits, Complain complain)
        : m_mainQueue(mainQueue)
        , m_limits(limits)
        , m_complain(complain ? std::move(complain) : warn)
    {
    }

    ~Tasks()
    {
        for (auto& [id, task] : m_running)
            task.cancellation->cancel();
        for (auto& [id, task] : m_running) {
            if (task.thread.joinable())
                task.thread.join();
        }
    }

    Tasks(const Tasks&) = delete;
    Tasks& operator=(const Tasks&) = delete;

    void start(const UrlSessionConfiguration& configuration, ServerTrust trust,
        const UrlRequest& request, DataTaskCompletion completion)
    {
        const auto id = m_nextId++;
        Task& task = m_running[id];
        task.completion = std::move(completion);
        task.cancellation = std::make_shared<CurlCancellation>();
        auto job = makeJob(configuration, trust, request);
        UrlError error{UrlErrorCode::Other, "no thread can be started"};
        if (job) {
            task.thread = startWithoutSignals(
                [job = std::move(job.value()), cancellation = task.cancellation, id,
                    weak = weak_from_this(), &queue = m_mainQueue] {
                    auto reply = performHttp(job, *cancellation);
                    queue.post([weak, id, reply = std::move(reply)] {
                        if (const auto tasks = weak.lock())
                            tasks->finish(id, reply);
                    });
                });
        } else {
            error = job.error();
        }
        if (task.thread.joinable())
            return;
        m_mainQueue.post([weak = weak_from_this(), id, error] {
            if (const auto tasks = weak.lock())
                tasks->finish(id, error);
        });
    }

private:
    struct Task {
        DataTaskCompletion completion;
        std::shared_ptr<CurlCancellation> cancellation;
        std::thread thread;
    };

    void finish(std::uint64_t id, const UrlReply& reply)
    {
        auto node = m_running.extract(id);
        if (node.empty())
            return;
        Task& task = node.mapped();
        if (task.thread.joinable())
            task.thread.join();
        task.completion(reply);
    }

    // The error of a request that must not be sent.
    Result<CurlJob, UrlError> makeJob(const UrlSessionConfiguration& configuration,
        ServerTrust trust, const UrlRequest& request) const
    {
        const auto url = allowedAddress(request.url);
        if (!url) {
            if (url.error().code == UrlErrorCode::InsecureHttp)
                m_complain(url.error().text);
            return url.error();
        }
        if (!isHttpToken(request.method) || !headersAreSafe(configuration.additionalHeaders))
            return UrlError{UrlErrorCode::BadRequest, "a header cannot be sent as it is"};
        if (trust == ServerTrust::AcceptAny
            && carriesCredentials(configuration.additionalHeaders, request.body)) {
            m_complain("nothing was sent to " + url.value().origin()
                + ": no credentials go to a server whose certificate is not verified");
            return UrlError{UrlErrorCode::CredentialsWithheld,
                "no credentials go to a server whose certificate is not verified"};
        }
        CurlJob job{{url.value(), request.method, request.body}, configuration.additionalHeaders,
            trust, m_limits};
        job.limits.connect = std::min<std::chrono::milliseconds>(m_limits.connect, request.timeout);
        job.limits.idle = std::min<std::chrono::milliseconds>(m_limits.idle, request.timeout);
        return job;
    }

    MainQueue& m_mainQueue;
    const HttpLimits m_limits;
    const Complain m_complain;
    std::map<std::uint64_t, Task> m_running;
    std::uint64_t m_nextId = 0;
};

class CurlUrlSessions::Session final : public UrlSession {
public:
    Session(std::weak_ptr<Tasks> tasks, UrlSessionConfiguration configuration, ServerTrust trust)
        : m_tasks(std::move(tasks))
        , m_configuration(std::move(configuration))
        , m_trust(trust)
    {
    }

    void dataTask(const UrlRequest& request, DataTaskCompletion completion) override
    {
        const auto tasks = m_tasks.lock();
        if (tasks && !m_invalidated)
            tasks->start(m_configuration, m_trust, request, std::move(completion));
    }

    void finishTasksAndInvalidate() override { m_invalidated = true; }

private:
    std::weak_ptr<Tasks> m_tasks;
    const UrlSessionConfiguration m_configuration;
    const ServerTrust m_trust;
    bool m_invalidated = false;
};

CurlUrlSessions::CurlUrlSessions(MainQueue& mainQueue, HttpLimits limits, Complain complain)
    : m_tasks(std::make_shared<Tasks>(mainQueue, limits, std::move(complain)))
{
    curl_global_init(CURL_GLOBAL_ALL);
}

CurlUrlSessions::~CurlUrlSessions() = default;

std::shared_ptr<UrlSession> CurlUrlSessions::makeSession(
    const UrlSessionConfiguration& configuration, UrlSessionDelegate& delegate)
{
    return std::make_shared<Session>(m_tasks, configuration, delegate.serverTrustDisposition());
}

} // namespace zarn::linux_backend
