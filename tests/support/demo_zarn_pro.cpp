// SPDX-License-Identifier: MIT
#include "tests/support/demo_zarn_pro.h"

#include <fcntl.h>
#include <unistd.h>

#include <ctime>

namespace zarn::demo {

namespace {

// In memory; the record file goes on.
constexpr std::size_t maximumRecord = 10'000;

Reply jsonReply(int status, std::string body)
{
    Reply reply;
    reply.status = status;
    reply.headers = {{"Content-Type", "application/json"}};
    reply.body = std::move(body);
    return reply;
}

Reply errorReply(int status, const std::string& what)
{
    return jsonReply(status,
        "{\"httpStatus\":" + std::to_string(status)
            + ",\"errors\":[{\"description\":" + jsonString(what) + "}]}");
}

std::string inHalfAnHour()
{
    const std::time_t when = std::time(nullptr) + 1800;
    std::tm parts{};
    gmtime_r(&when, &parts);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S.000Z", &parts);
    return text;
}

} // namespace

ZarnPro::ZarnPro(ZarnProOptions options)
    : m_options(std::move(options))
{
    m_pages[m_options.updatePagePath]
        = "<!DOCTYPE html>\n<html><head><title>Releases</title></head><body><table>\n"
          "<tr><td>Current Version</td><td>"
        + m_options.publishedVersion + "</td></tr>\n</table></body></html>\n";
}

ZarnPro::~ZarnPro()
{
    if (m_record)
        std::fclose(m_record);
}

Reply ZarnPro::handle(const Request& request)
{
    const std::lock_guard lock(m_mutex);
    if (request.target.starts_with("/demo/"))
        return control(request);
    if (m_requests.size() < maximumRecord)
        m_requests.push_back(request);
    if (m_record) {
        const std::string line = toJsonLine(request);
        std::fwrite(line.data(), 1, line.size(), m_record);
        std::fflush(m_record);
    }
    Reply reply = ordinaryReply(request);
    for (Fault& fault : m_faults) {
        if (!fault.matches(request) || fault.times == 0)
            continue;
        if (fault.skip > 0) {
            --fault.skip;
            continue;
        }
        if (fault.times)
            --*fault.times;
        fault.apply(reply);
        break;
    }
    return reply;
}

Reply ZarnPro::control(const Request& request)
{
    const std::string path = request.path();
    std::string error;
    if (path == "/demo/requests" && request.method == "GET") {
        Reply reply;
        reply.headers = {{"Content-Type", "application/x-ndjson"}};
        for (const auto& recorded : m_requests)
            reply.body += toJsonLine(recorded);
        return reply;
    }
    if (request.method != "POST")
        return errorReply(405, "POST");
    if (path == "/demo/fault") {
        const auto fault = parseFault(request.body, error);
        if (!fault)
            return errorReply(400, error);
        m_faults.push_back(*fault);
        return jsonReply(200, "{}");
    }
    if (path == "/demo/reset") {
        m_faults.clear();
        m_requests.clear();
        return jsonReply(200, "{}");
    }
    if (path == "/demo/page") {
        const auto form = parseForm(request.body);
        m_pages[formValue(form, "path").value_or(m_options.updatePagePath)]
            = formValue(form, "body").value_or("");
        return jsonReply(200, "{}");
    }
    return errorReply(404, "no such control path");
}

Reply ZarnPro::ordinaryReply(const Request& request)
{
    const std::string path = request.path();
    if (const auto page = m_pages.find(path); page != m_pages.end()) {
        Reply reply;
        reply.headers = {{"Content-Type", "text/html; charset=utf-8"}};
        reply.body = page->second;
        return reply;
    }
    const bool post = request.method == "POST";
    if (path == "/api/v1/auth/token")
        return post ? basicToken(request) : errorReply(405, "POST");
    if (path == "/api/oauth/token")
        return post ? clientToken(request) : errorReply(405, "POST");
    if (path == "/api/v1/zarn-pro-version") {
        if (request.method != "GET")
            return errorReply(405, "GET");
        if (!bearsToken(request))
            return errorReply(401, "no valid token");
        return jsonReply(200, "{\"version\":" + jsonString(m_options.version) + "}");
    }
    if (path == "/api/v1/auth/invalidate-token") {
        if (!post)
            return errorReply(405, "POST");
        if (!bearsToken(request))
            return errorReply(401, "no valid token");
        m_tokens.erase(request.header("Authorization").substr(7));
        Reply reply;
        reply.status = 204;
        return reply;
    }
    return errorReply(404, "not found");
}

Reply ZarnPro::basicToken(const Request& request)
{
    const std::string value = request.header("Authorization");
    if (!value.starts_with("Basic ")
        || base64Decoded(std::string_view(value).substr(6))
            != m_options.user + ":" + m_options.password)
        return errorReply(401, "wrong credentials");
    return jsonReply(200,
        "{\"token\":" + jsonString(newToken()) + ",\"expires\":" + jsonString(inHalfAnHour())
            + "}");
}

// Credentials with characters that a form would escape arrive as they are; both readings count.
Reply ZarnPro::clientToken(const Request& request)
{
    const std::string verbatim = "grant_type=client_credentials&client_id=" + m_options.clientId
        + "&client_secret=" + m_options.clientSecret;
    const auto form = parseForm(request.body);
    const bool decoded = formValue(form, "grant_type") == "client_credentials"
        && formValue(form, "client_id") == m_options.clientId
        && formValue(form, "client_secret") == m_options.clientSecret;
    if (request.header("Content-Type") != "application/x-www-form-urlencoded")
        return errorReply(415, "a form is wanted");
    if (request.body != verbatim && !decoded)
        return errorReply(401, "wrong credentials");
    return jsonReply(200,
        "{\"access_token\":" + jsonString(newToken())
            + ",\"scope\":\"api-role:1\",\"token_type\":\"Bearer\",\"expires_in\":1199}");
}

bool ZarnPro::bearsToken(const Request& request) const
{
    const std::string value = request.header("Authorization");
    return value.starts_with("Bearer ") && m_tokens.contains(value.substr(7));
}

std::string ZarnPro::newToken()
{
    std::string token = "demo-token-" + std::to_string(++m_tokensMade);
    m_tokens.insert(token);
    return token;
}

void ZarnPro::addFault(Fault fault)
{
    const std::lock_guard lock(m_mutex);
    m_faults.push_back(std::move(fault));
}

void ZarnPro::setPage(const std::string& path, std::string body)
{
    const std::lock_guard lock(m_mutex);
    m_pages[path] = std::move(body);
}

bool ZarnPro::recordTo(const std::string& file)
{
    const std::lock_guard lock(m_mutex);
    const int descriptor
        = open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOFOLLOW, 0600);
    m_record = descriptor < 0 ? nullptr : fdopen(descriptor, "a");
    return m_record != nullptr;
}

std::vector<Request> ZarnPro::requests() const
{
    const std::lock_guard lock(m_mutex);
    return m_requests;
}

void ZarnPro::reset()
{
    const std::lock_guard lock(m_mutex);
    m_faults.clear();
    m_requests.clear();
}

} // namespace zarn::demo
