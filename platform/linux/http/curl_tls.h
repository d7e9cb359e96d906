// SPDX-License-Identifier: MIT
#pragma once

#include "platform/url_session.h"

#include <curl/curl.h>

namespace zarn::linux_backend {

/// Sets up a handle's TLS: 1.2 or newer, the system's store (SSL_CERT_FILE and SSL_CERT_DIR take
/// the place of its file and folder) or any certificate, no session reuse, no key log. A name must
/// stand in the certificate's subject alternative name. False when libcurl refuses a setting.
bool setUpTls(CURL* handle, ServerTrust trust);

} // namespace zarn::linux_backend
