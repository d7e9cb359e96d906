// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/files/paths.h"
#include "platform/linux/keychain/keychain_store.h"

#include <string>

namespace zarn::linux_backend {

/// "Zarn Actions 1.0.0 (1)".
std::string programVersion();

/// Prints on standard output, without secrets: versions, places, file modes, and whether settings
/// and keychain can be written, read and deleted. True only if all is well. Needs no display; may
/// take as long as a keyring that does not answer.
bool printDiagnosis(const Paths& paths, KeychainOptions keychain);

} // namespace zarn::linux_backend
