// SPDX-License-Identifier: MIT
#pragma once

#include "platform/url_session.h"

#include <string>
#include <string_view>

/// Why a request failed, each in one sentence that helps a person. No sentence holds a user name,
/// path or query of the server URL, or anything of a request's headers and body.
namespace zarn {

/// The host of a server URL for people: without the user name, port and path; a long one is cut in
/// its middle.
std::string peerName(std::string_view serverUrl);

/// The URL cannot be formed; `endpoint` is what was made of it.
std::string causeOfMalformedUrl(std::string_view endpoint);
/// There was no response.
std::string causeOfError(const UrlError& error, std::string_view serverUrl);
/// A response with a status outside 200 to 299, to a request for a token.
std::string causeOfTokenStatus(const HttpResponse& response, std::string_view serverUrl);
/// Such a response to another request.
std::string causeOfStatus(const HttpResponse& response, std::string_view serverUrl);
std::string causeOfBadJson(std::string_view serverUrl);
std::string causeOfMissingVersion(std::string_view serverUrl);
/// `version` has fewer than three parts, or is empty.
std::string causeOfBadVersion(std::string_view version, std::string_view serverUrl);

} // namespace zarn
