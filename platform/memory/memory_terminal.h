// SPDX-License-Identifier: MIT
#pragma once

#include "platform/instance_lock.h"
#include "platform/run_loop.h"
#include "platform/terminal.h"

#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

/// What a program without a window stands on, in memory.
namespace zarn::memory {

/// Standard streams that remember. Reads from `input`, a line each.
class MemoryTerminal final : public Terminal {
public:
    bool isInputTerminal() const override { return inputIsTerminal; }
    bool isOutputTerminal() const override { return outputIsTerminal; }
    bool isErrorTerminal() const override { return errorIsTerminal; }
    std::optional<std::string> readLine(std::string_view prompt, Echo echo) override
    {
        if (inputIsTerminal)
            prompts.emplace_back(std::string(prompt) + (echo == Echo::Off ? "(unseen)" : ""));
        if (onRead)
            onRead();
        if (input.empty())
            return std::nullopt;
        auto line = std::move(input.front());
        input.pop_front();
        return line;
    }
    Result<std::string> readAll(const std::string& path) override
    {
        if (const auto it = files.find(path); it != files.end())
            return it->second;
        return Error{ErrorCode::NotFound, "cannot open " + path};
    }
    bool write(std::string_view text) override
    {
        output += text;
        return !writingFails;
    }
    void writeErrorLine(std::string_view line) override { errors.emplace_back(line); }

    bool inputIsTerminal = false;
    bool outputIsTerminal = false;
    bool errorIsTerminal = false;
    bool writingFails = false;
    std::deque<std::string> input;
    std::function<void()> onRead;
    /// "-" is standard input.
    std::map<std::string, std::string> files;
    std::vector<std::string> prompts;
    std::string output;
    std::vector<std::string> errors;
};

/// A main thread on which time stands still: while it waits, `whileWaiting` makes something happen.
class MemoryRunLoop final : public RunLoop {
public:
    void performOnMainThread(std::function<void()> work) override
    {
        const std::lock_guard lock(m_mutex);
        m_submitted.push_back(std::move(work));
    }
    bool runUntil(const std::function<bool()>& done) override
    {
        while (!done()) {
            if (interrupted)
                return false;
            if (const auto work = takeSubmitted())
                work();
            else if (!whileWaiting || !whileWaiting())
                interrupted = true; // Nothing will ever happen: the user gives up.
        }
        return true;
    }
    void runSubmitted() override
    {
        while (const auto work = takeSubmitted())
            work();
    }
    bool isInterrupted() const override { return interrupted; }

    bool interrupted = false;
    /// False when nothing is left that could happen.
    std::function<bool()> whileWaiting;

private:
    std::function<void()> takeSubmitted()
    {
        const std::lock_guard lock(m_mutex);
        if (m_submitted.empty())
            return nullptr;
        auto work = std::move(m_submitted.front());
        m_submitted.pop_front();
        return work;
    }

    std::mutex m_mutex;
    std::deque<std::function<void()>> m_submitted;
};

/// Records "lock" and "unlock".
class MemoryInstanceLock final : public InstanceLock {
public:
    explicit MemoryInstanceLock(std::vector<std::string>& events)
        : m_events(events)
    {
    }
    Outcome take() override
    {
        m_events.emplace_back("lock");
        return outcome;
    }
    void release() override { m_events.emplace_back("unlock"); }

    Outcome outcome = Outcome::Taken;

private:
    std::vector<std::string>& m_events;
};

} // namespace zarn::memory
