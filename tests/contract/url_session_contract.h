// SPDX-License-Identifier: MIT
#pragma once

#include "platform/url_session.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace zarn {

/// A request as the far end saw it.
struct SeenRequest {
    std::string method;
    std::string url;
    /// The session's own headers, in the order sent.
    HttpHeaders headers;
    std::string body;
};

/// Sessions and a server for them.
class UrlSessionBackend {
public:
    virtual ~UrlSessionBackend() = default;

    virtual UrlSessions& sessions() = 0;
    virtual void destroySessions() = 0;
    /// An address whose requests get the scripted replies, in order; without one a 404.
    virtual Url url(const std::string& path) = 0;
    virtual void willReply(int status, const std::string& body) = 0;
    /// The next request ends without an HTTP response.
    virtual void willNotRespond() = 0;
    /// A request that fails so, with a time-out of a second; it holds "s3cret" wherever it can.
    virtual UrlRequest failing(UrlErrorCode code) = 0;
    /// A POST whose reply is a redirect that is not followed for this reason.
    virtual UrlRequest redirecting(UrlErrorCode code) = 0;
    virtual std::vector<SeenRequest> seen() = 0;
    /// Runs the main thread's work until `done` answers true or nothing more comes.
    virtual bool runUntil(const std::function<bool()>& done) = 0;
};

/// Made by the backend that this is linked with.
std::unique_ptr<UrlSessionBackend> makeUrlSessionBackend();

/// What every kind of URL session has to do.
class UrlSessionContract : public testing::Test {
protected:
    std::shared_ptr<UrlSession> makeSession(const HttpHeaders& headers = {});
    /// Sends and waits; nothing when no response came or the completion did not run.
    std::optional<HttpResponse> send(const UrlRequest& request, const HttpHeaders& headers = {});

    /// Why the last send() got no response.
    std::optional<UrlError> error;
    std::unique_ptr<UrlSessionBackend> backend = makeUrlSessionBackend();
    UrlSessionDelegate delegate;
};

} // namespace zarn
