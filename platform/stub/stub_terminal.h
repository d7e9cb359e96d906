// SPDX-License-Identifier: MIT
#pragma once

#include "platform/instance_lock.h"
#include "platform/run_loop.h"
#include "platform/terminal.h"

namespace zarn::stub {

class StubTerminal : public Terminal {
public:
    bool isInputTerminal() const override { return false; }
    bool isOutputTerminal() const override { return false; }
    bool isErrorTerminal() const override { return false; }
    std::optional<std::string> readLine(std::string_view, Echo) override { return std::nullopt; }
    Result<std::string> readAll(const std::string& path) override
    {
        return Error{ErrorCode::NotFound, path};
    }
    bool write(std::string_view) override { return true; }
    void writeErrorLine(std::string_view) override { }
};

class StubRunLoop : public RunLoop {
public:
    void performOnMainThread(std::function<void()>) override { }
    bool runUntil(const std::function<bool()>& done) override { return done(); }
    void runSubmitted() override { }
    bool isInterrupted() const override { return false; }
};

class StubInstanceLock : public InstanceLock {
public:
    Outcome take() override { return Outcome::Failed; }
    void release() override { }
};

} // namespace zarn::stub
