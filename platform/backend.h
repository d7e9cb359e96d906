// SPDX-License-Identifier: MIT
#pragma once

#include "platform/connection_facts.h"
#include "platform/keychain.h"
#include "platform/product_texts.h"
#include "platform/services.h"

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace zarn {

/// What the process entry needs of a backend: creates and owns every adapter, and lends them out as
/// services. Each backend defines the members, and the program links the one that the build chose.
/// One per process. Main thread only.
class Backend {
public:
    struct Options {
        /// The name of one of keychainKinds(), or empty when nothing is forced.
        std::string keychain;
        /// "-key", "value" ... for the standard settings domain.
        std::vector<std::string> launchArguments;
    };
    struct Start {
        /// Absent when the program has to end at once with `exitCode`.
        std::unique_ptr<Backend> backend;
        int exitCode = 0;
        /// Why it ends, for the user; empty when there is a backend.
        std::string reason;
    };

    /// Hardens the process (no core dumps, for one). Called before anything else.
    static void prepareProcess();
    /// The keychains that can be forced.
    static std::span<const KeychainKind> keychainKinds();
    /// "Zarn Actions 1.0.0 (1)" and a line break.
    static std::string versionLine();
    /// Checks settings, keychain and folders and prints the results. Returns the exit code of the
    /// process.
    static int diagnose(const Options& options);
    /// Connects to a server as a request would, without sending one.
    static ConnectionFacts probeConnection(const Url& url);

    /// Makes sure that this is the only running copy, then opens the display. If another copy runs,
    /// its window is raised and nothing is started.
    static Start start(const Options& options);
    ~Backend();
    Backend(const Backend&) = delete;
    Backend& operator=(const Backend&) = delete;

    Services services();
    const ProductTexts& productTexts() const;
    /// `work` ends the process when the display goes away, as it does at the end of a session. Any
    /// thread; no event loop runs any more then.
    void setDisplayLost(std::function<void()> work);
    /// To be called when the event loop has ended: another start then waits for the end of this
    /// process.
    void announceEnding();

private:
    struct Adapters;
    explicit Backend(std::unique_ptr<Adapters> adapters);

    std::unique_ptr<Adapters> m_adapters;
};

} // namespace zarn
