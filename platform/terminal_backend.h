// SPDX-License-Identifier: MIT
#pragma once

#include "platform/keychain.h"
#include "platform/product_texts.h"
#include "platform/terminal_services.h"

#include <memory>
#include <span>
#include <string>

namespace zarn {

/// What the process entry of a program without a window needs of a backend: the adapters, lent out
/// as services; what only a window needs is not among them. Each backend defines the members, and
/// the program links the one that the build chose. One per process. Main thread only.
class TerminalBackend {
public:
    /// Guards the process; called first of all.
    static void prepareProcess();
    /// The keychains that can be forced.
    static std::span<const KeychainKind> keychainKinds();
    /// "1.0.0 (1)".
    static std::string versionText();

    /// `keychain` is the name of one of keychainKinds(), or empty when nothing is forced.
    explicit TerminalBackend(const std::string& keychain);
    ~TerminalBackend();
    TerminalBackend(const TerminalBackend&) = delete;
    TerminalBackend& operator=(const TerminalBackend&) = delete;

    /// False without a home directory: there is no place to keep anything.
    bool hasHome() const;
    TerminalServices services();
    ProductTexts productTexts() const;
    /// From now on all that the keychain still has to do is bounded as a whole.
    void announceEnding();
    /// A server is going to be asked: what that needs may be made ready in the background.
    void expectServer();
    /// After an interruption, once no object of this class is left: ends the process by the signal.
    static void endBySignal();

private:
    struct Adapters;
    std::unique_ptr<Adapters> m_adapters;
};

} // namespace zarn
