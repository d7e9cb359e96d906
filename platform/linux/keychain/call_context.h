// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <set>
#include <stop_token>
#include <string>

namespace zarn::linux_backend {

/// What the parts of a store have to know about the call that they are working on: when it ends and
/// where to report trouble. Shared by all of them, begun anew for each call. The store's thread.
class CallContext {
public:
    using Deadline = std::chrono::steady_clock::time_point;
    using Report = std::function<void(const std::string& line)>;

    /// Without a `report`, lines go to standard error.
    explicit CallContext(Report report = {});

    /// Begins a call that has to end by `deadline`, and before as soon as `stop` is requested:
    /// nobody waits for it then.
    void begin(Deadline deadline, std::stop_token stop = {});
    void begin(std::chrono::milliseconds limit) { begin(std::chrono::steady_clock::now() + limit); }
    /// Never negative.
    std::chrono::milliseconds timeLeft() const;
    const std::stop_token& stopToken() const { return m_stop; }
    bool isOver() const;

    /// Reports what is wrong with the place where items are kept, each text once in a run. `detail`
    /// (a path or an error name) is added in brackets. Never given a secret.
    void report(const std::string& text, const std::string& detail = {});

private:
    const Report m_report;
    std::set<std::string> m_reported;
    Deadline m_deadline = Deadline::min();
    std::stop_token m_stop;
};

} // namespace zarn::linux_backend
