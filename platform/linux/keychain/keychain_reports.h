// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <mutex>
#include <set>
#include <string>

namespace zarn::linux_backend {

/// What can be wrong with the place where items are kept.
enum class KeychainState {
    FileChosen,
    Absent,
    Unreachable,
    NoDefaultCollection,
    Locked,
    PromptDismissed,
    NotAnswering,
    ItemGone,
    Refused,
    ReadOnly,
    FileDamaged,
    FileUnknownVersion,
    FileRefused,
    FileKeyLost,
    FileUnreadable,
    FileUnwritable,
    Moved,
    MoveConflict,
};

/// Tells each state once in a run, in one line. Never given a secret. Any thread.
class KeychainReports {
public:
    using Sink = std::function<void(const std::string&)>;
    /// Without a sink, lines go to standard error.
    explicit KeychainReports(Sink sink);

    /// `detail` (a path or an error name) is added in brackets.
    void tell(KeychainState state, const std::string& detail = {});

private:
    const Sink m_sink;
    std::mutex m_mutex;
    std::set<KeychainState> m_told;
};

} // namespace zarn::linux_backend
