// SPDX-License-Identifier: MIT
#pragma once

#include "api/connection_state.h"
#include "base/wipe.h"

namespace zarn {

/// A connection state whose secrets are overwritten at its end.
struct WipedConnection : ConnectionState {
    WipedConnection() = default;
    ~WipedConnection()
    {
        wipe(password);
        wipe(base64Creds);
        wipe(token);
    }
    WipedConnection(const WipedConnection&) = delete;
    WipedConnection& operator=(const WipedConnection&) = delete;
};

} // namespace zarn
