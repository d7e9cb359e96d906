// SPDX-License-Identifier: MIT
#include "app/connection_report.h"

#include "api/endpoint_url.h"
#include "api/failure_cause.h"
#include "profiles/status_line.h"

#include <algorithm>

namespace zarn {

namespace {

std::string line(const std::string& what, std::string_view text)
{
    constexpr std::size_t column = 17;
    return what + std::string(column - std::min(column - 1, what.size()), ' ') + plainLine(text)
        + "\n";
}

std::string problem(std::string_view cause)
{
    return line("result", "PROBLEM: " + std::string(cause));
}

} // namespace

ConnectionReport reportConnection(const std::string& serverUrl, const ConnectionProbe& probe)
{
    const auto endpoint = collapseApiSlashes(serverUrl + "/api/oauth/token");
    const auto url = Url::fromText(endpoint);
    if (!url)
        return {problem(causeOfMalformedUrl(endpoint)), false};
    const auto facts = probe(*url);
    std::string text;
    for (const auto& [what, found] : facts.found)
        text += line(what, found);
    if (!facts.refusal)
        return {text + line("result", "the server is reached and trusted"), true};
    text += line("reason", facts.refusal->text);
    return {text + problem(causeOfError(*facts.refusal, serverUrl)), false};
}

} // namespace zarn
