// SPDX-License-Identifier: MIT
// Prints the version of the current Zarn Pro server.
//   server-version
// Needs zarn-profile. Exit status: that of zarn-profile; 1 when the server refuses, 3 when it
// cannot be reached.
#include <curl/curl.h>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>

#include <sys/wait.h>

namespace {

enum ExitCode { Refused = 1, Unreachable = 3, NotStarted = 127 };

struct Failure {
    int status = 0;
    std::string message;
};

/// What a command prints. zarn-profile reports its failures on standard error itself.
std::string outputOf(const char* command)
{
    std::FILE* pipe = popen(command, "r");
    if (!pipe)
        throw Failure{NotStarted, "zarn-profile cannot be started"};
    std::string output;
    char buffer[4096];
    while (const auto size = std::fread(buffer, 1, sizeof buffer, pipe))
        output.append(buffer, size);
    const int status = pclose(pipe);
    if (status != 0)
        throw Failure{WIFEXITED(status) ? WEXITSTATUS(status) : NotStarted, ""};
    return output;
}

size_t append(char* data, size_t size, size_t count, void* text)
{
    static_cast<std::string*>(text)->append(data, size * count);
    return size * count;
}

/// The reply of an endpoint. Redirects are not followed, so the token goes to this server only.
std::string get(const std::string& url, const std::string& token)
{
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> handle(
        curl_easy_init(), curl_easy_cleanup);
    curl_slist* list = curl_slist_append(nullptr, ("Authorization: Bearer " + token).c_str());
    list = curl_slist_append(list, "Accept: application/json");
    const std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)> headers(
        list, curl_slist_free_all);
    std::string body;
    curl_easy_setopt(handle.get(), CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle.get(), CURLOPT_HTTPHEADER, headers.get());
    curl_easy_setopt(handle.get(), CURLOPT_WRITEFUNCTION, append);
    curl_easy_setopt(handle.get(), CURLOPT_WRITEDATA, &body);
    curl_easy_setopt(handle.get(), CURLOPT_TIMEOUT, 60L);
    // Where servers have certificates of their own authority; the library does not look here
    // itself.
    if (const char* authorities = std::getenv("SSL_CERT_FILE"))
        curl_easy_setopt(handle.get(), CURLOPT_CAINFO, authorities);
    const CURLcode result = curl_easy_perform(handle.get());
    if (result != CURLE_OK)
        throw Failure{Unreachable,
            std::string("the server cannot be reached: ") + curl_easy_strerror(result)};
    long status = 0;
    curl_easy_getinfo(handle.get(), CURLINFO_RESPONSE_CODE, &status);
    if (status != 200)
        throw Failure{Refused, "the server refuses: HTTP status " + std::to_string(status)};
    return body;
}

void printVersion()
{
    const auto profile = nlohmann::json::parse(outputOf("zarn-profile show --json"));
    auto token = outputOf("zarn-profile token");
    token.erase(token.find_last_not_of('\n') + 1);
    auto server = profile.at("server").get<std::string>();
    if (!server.empty() && server.back() == '/')
        server.pop_back();
    const auto reply
        = nlohmann::json::parse(get(server + "/api/v1/zarn-pro-version", token), nullptr, false);
    if (!reply.is_object() || !reply.contains("version") || !reply["version"].is_string())
        throw Failure{Refused, "the server's reply has no version"};
    std::cout << reply["version"].get<std::string>() << '\n';
}

} // namespace

int main()
{
    curl_global_init(CURL_GLOBAL_DEFAULT);
    try {
        printVersion();
    } catch (const Failure& failure) {
        if (!failure.message.empty())
            std::cerr << "server-version: " << failure.message << '\n';
        return failure.status;
    }
    return 0;
}
