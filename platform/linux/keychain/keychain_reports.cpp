// SPDX-License-Identifier: MIT
#include "platform/linux/keychain/keychain_reports.h"

#include "platform/linux/files/durable_file.h"

namespace zarn::linux_backend {

namespace {

const char* textOf(KeychainState state)
{
    switch (state) {
    case KeychainState::FileChosen:
        return "no keyring service is used: items are kept in an encrypted file that is protected "
               "by file permissions";
    case KeychainState::Absent:
        return "there is no keyring service; items are neither read nor stored "
               "(--keychain=file keeps them in an encrypted file)";
    case KeychainState::Unreachable:
        return "the session bus cannot be reached, so neither can the keyring service; items are "
               "neither read nor stored (--keychain=file keeps them in an encrypted file)";
    case KeychainState::NoDefaultCollection:
        return "the keyring service has no default collection; make one with the desktop's "
               "keyring program";
    case KeychainState::Locked:
        return "the keyring is locked; waiting for its unlock prompt";
    case KeychainState::PromptDismissed:
        return "the keyring's unlock prompt was dismissed";
    case KeychainState::NotAnswering:
        return "the keyring service does not answer";
    case KeychainState::ItemGone:
        return "an item disappeared from the keyring while it was being read";
    case KeychainState::Refused:
        return "the keyring service refused";
    case KeychainState::ReadOnly:
        return "the keyring service does not let items be changed";
    case KeychainState::FileDamaged:
        return "the keychain file is damaged and reads as empty";
    case KeychainState::FileUnknownVersion:
        return "the keychain file was written by a newer program; it is left untouched";
    case KeychainState::FileRefused:
        return "the keychain file was changed by someone else or belongs to another key; it is "
               "left untouched";
    case KeychainState::FileKeyLost:
        return "the key of the keychain file is missing; the file is left untouched";
    case KeychainState::FileUnreadable:
        return "the keychain file cannot be read";
    case KeychainState::FileUnwritable:
        return "the keychain file cannot be written";
    case KeychainState::Moved:
        return "items were moved from the keychain file to the keyring";
    case KeychainState::MoveConflict:
        return "the keyring holds newer items than the keychain file; the older ones stay there";
    }
    return "unknown state";
}

} // namespace

KeychainReports::KeychainReports(Sink sink)
    : m_sink(std::move(sink))
{
}

void KeychainReports::tell(KeychainState state, const std::string& detail)
{
    {
        const std::lock_guard lock(m_mutex);
        if (!m_told.insert(state).second)
            return;
    }
    auto line = std::string("keychain: ") + textOf(state);
    if (!detail.empty())
        line += " (" + detail + ")";
    m_sink ? m_sink(line) : warn(line);
}

} // namespace zarn::linux_backend
