// SPDX-License-Identifier: MIT
#include "platform/linux/http/http_module.h"

#include "platform/linux/http/connection_probe.h"
#include "platform/linux/http/curl_url_sessions.h"

extern "C" __attribute__((visibility("default"))) zarn::UrlSessions* zarnMakeUrlSessions(
    zarn::linux_backend::MainQueue* mainQueue)
{
    return new zarn::linux_backend::CurlUrlSessions(*mainQueue);
}

extern "C" __attribute__((visibility("default"))) void zarnProbeConnection(
    const zarn::Url* url, zarn::ConnectionFacts* facts)
{
    *facts = zarn::linux_backend::probeConnection(*url);
}
