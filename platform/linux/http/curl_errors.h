// SPDX-License-Identifier: MIT
#pragma once

#include "platform/url_session.h"

#include <curl/curl.h>

namespace zarn::linux_backend {

/// What libcurl reports about a transfer that failed, in the terms of platform/url_session.h.
/// `detail` is the text of its error buffer, or "".
UrlError urlErrorOf(CURL* handle, CURLcode result, const char* detail);

/// The kind of a reason for which OpenSSL refuses a certificate (X509_V_ERR_...).
UrlErrorCode certificateErrorOf(long reason);

} // namespace zarn::linux_backend
