// SPDX-License-Identifier: MIT
// The demonstration server as a program of its own.
#include "tests/support/demo_certificates.h"
#include "tests/support/demo_server.h"
#include "tests/support/demo_zarn_pro.h"

#include <pthread.h>
#include <unistd.h>

#include <charconv>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zarn::demo {

namespace {

const char* const usage
    = "Usage: zarn-pro-demo [OPTION...]\n"
      "A stand-in for a Zarn Pro server. Listens on loopback only.\n"
      "\n"
      "  --https-port N           port for https; 0, the default, takes any free one\n"
      "  --http-port N            the same for http\n"
      "  --no-https, --no-http    leave one out\n"
      "  --name NAME              one more DNS name or address in the certificate (127.0.0.1, ::1\n"
      "                           and localhost are always there)\n"
      "  --certificate KIND       good (default), self-signed, expired, not-yet-valid, wrong-name\n"
      "  --lowest-tls, --highest-tls VERSION\n"
      "                           1.0, 1.1, 1.2 or 1.3; the defaults are 1.2 and 1.3\n"
      "  --ca-file FILE           write the certificate of the authority, for SSL_CERT_FILE\n"
      "  --user, --password, --client-id, --client-secret TEXT\n"
      "                           the credentials it accepts\n"
      "  --server-version TEXT    what the version endpoint answers\n"
      "  --update-page PATH       where the update page is\n"
      "  --published-version TEXT what the update page offers\n"
      "  --page PATH=FILE         one more page\n"
      "  --fault FIELDS           change replies, see below; may be repeated, the first match "
      "wins\n"
      "  --record FILE            append each request as one JSON line\n"
      "  --lifetime SECONDS       end by itself (default 3600)\n"
      "  --print-json             print what it listens on as one JSON line\n"
      "  --help                   this text\n"
      "\n"
      "While it runs: POST /demo/fault with the FIELDS of one more fault, POST /demo/reset drops\n"
      "faults and record, POST /demo/page with path=...&body=..., GET /demo/requests.\n"
      "\n"
      "FIELDS are joined with & and percent-encoded like a form:\n";

struct Arguments {
    ServerOptions server;
    ZarnProOptions zarnPro;
    std::vector<std::string> names;
    std::vector<std::pair<std::string, std::string>> pages;
    std::vector<Fault> faults;
    std::string certificate = "good";
    std::string caFile;
    std::string record;
    long lifetime = 3600;
    bool printJson = false;
    bool help = false;
};

template <typename Number> bool readNumber(std::string_view text, Number& value)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size();
}

bool readTls(std::string_view text, int& value)
{
    if (text.size() != 3 || !text.starts_with("1.") || text[2] < '0' || text[2] > '3')
        return false;
    value = 10 + (text[2] - '0');
    return true;
}

bool readFlag(std::string_view name, Arguments& arguments)
{
    if (name == "--no-https")
        arguments.server.https = false;
    else if (name == "--no-http")
        arguments.server.http = false;
    else if (name == "--print-json")
        arguments.printJson = true;
    else if (name == "--help" || name == "-h")
        arguments.help = true;
    else
        return false;
    return true;
}

std::string* textOption(std::string_view name, Arguments& arguments)
{
    const std::pair<std::string_view, std::string*> table[] = {
        {"--certificate", &arguments.certificate}, {"--ca-file", &arguments.caFile},
        {"--record", &arguments.record}, {"--user", &arguments.zarnPro.user},
        {"--password", &arguments.zarnPro.password}, {"--client-id", &arguments.zarnPro.clientId},
        {"--client-secret", &arguments.zarnPro.clientSecret},
        {"--server-version", &arguments.zarnPro.version},
        {"--update-page", &arguments.zarnPro.updatePagePath},
        {"--published-version", &arguments.zarnPro.publishedVersion}};
    for (const auto& [option, target] : table) {
        if (name == option)
            return target;
    }
    return nullptr;
}

bool readPage(const std::string& value, Arguments& arguments)
{
    const auto equals = value.find('=');
    if (equals == std::string::npos)
        return false;
    std::ifstream file(value.substr(equals + 1), std::ios::binary);
    if (!file)
        return false;
    arguments.pages.emplace_back(
        value.substr(0, equals), std::string(std::istreambuf_iterator<char>(file), {}));
    return true;
}

bool readOption(std::string_view name, const std::string& value, Arguments& arguments)
{
    if (std::string* text = textOption(name, arguments)) {
        *text = value;
        return true;
    }
    if (name == "--https-port")
        return readNumber(value, arguments.server.httpsPort);
    if (name == "--http-port")
        return readNumber(value, arguments.server.httpPort);
    if (name == "--lowest-tls")
        return readTls(value, arguments.server.lowestTls);
    if (name == "--highest-tls")
        return readTls(value, arguments.server.highestTls);
    if (name == "--lifetime")
        return readNumber(value, arguments.lifetime);
    if (name == "--page")
        return readPage(value, arguments);
    if (name == "--name") {
        arguments.names.push_back(value);
        return true;
    }
    std::string error;
    const auto fault = name == "--fault" ? parseFault(value, error) : std::nullopt;
    if (fault)
        arguments.faults.push_back(*fault);
    if (!error.empty())
        std::fprintf(stderr, "zarn-pro-demo: %s\n", error.c_str());
    return fault.has_value();
}

std::optional<Arguments> readArguments(int count, char** texts)
{
    Arguments arguments;
    for (int i = 1; i < count; ++i) {
        if (readFlag(texts[i], arguments))
            continue;
        if (i + 1 >= count || !readOption(texts[i], texts[i + 1], arguments)) {
            std::fprintf(
                stderr, "zarn-pro-demo: %s is unknown or its value cannot be used\n", texts[i]);
            return std::nullopt;
        }
        ++i;
    }
    return arguments;
}

bool prepareCertificates(Arguments& arguments)
{
    const std::string& kind = arguments.certificate;
    CertificateOptions options;
    options.names = {"127.0.0.1", "::1", "localhost"};
    options.names.insert(options.names.end(), arguments.names.begin(), arguments.names.end());
    if (kind == "expired") {
        options.notBefore = -std::chrono::hours(48);
        options.notAfter = -std::chrono::hours(24);
    } else if (kind == "not-yet-valid") {
        options.notBefore = std::chrono::hours(24);
    } else if (kind == "wrong-name") {
        options.names = {"other.example"};
    } else if (kind != "good" && kind != "self-signed") {
        std::fprintf(stderr, "zarn-pro-demo: unknown kind of certificate\n");
        return false;
    }
    const Certificate authority = makeCertificate(authorityOptions("Zarn demonstration authority"));
    const Certificate leaf = makeCertificate(options, kind == "self-signed" ? nullptr : &authority);
    arguments.server.certificateChainPem = leaf.certificatePem;
    arguments.server.keyPem = leaf.keyPem;
    if (arguments.caFile.empty())
        return true;
    std::ofstream file(arguments.caFile, std::ios::binary | std::ios::trunc);
    file << authority.certificatePem << std::flush;
    if (!file)
        std::fprintf(stderr, "zarn-pro-demo: cannot write %s\n", arguments.caFile.c_str());
    return static_cast<bool>(file);
}

std::string baseUrl(const char* scheme, std::uint16_t port)
{
    return port == 0 ? "" : scheme + std::string("://127.0.0.1:") + std::to_string(port);
}

std::string describeAsJson(const Arguments& arguments, const Server& server)
{
    const auto& options = arguments.zarnPro;
    return "{\"https_port\":" + std::to_string(server.httpsPort())
        + ",\"http_port\":" + std::to_string(server.httpPort())
        + ",\"https_url\":" + jsonString(baseUrl("https", server.httpsPort()))
        + ",\"http_url\":" + jsonString(baseUrl("http", server.httpPort())) + ",\"ca_file\":"
        + jsonString(arguments.caFile) + ",\"user\":" + jsonString(options.user) + ",\"password\":"
        + jsonString(options.password) + ",\"client_id\":" + jsonString(options.clientId)
        + ",\"client_secret\":" + jsonString(options.clientSecret) + ",\"update_page\":"
        + jsonString(options.updatePagePath) + ",\"pid\":" + std::to_string(getpid()) + "}\n";
}

std::string describe(const Arguments& arguments, const Server& server)
{
    const auto& options = arguments.zarnPro;
    const std::string https = baseUrl("https", server.httpsPort());
    const std::string http = baseUrl("http", server.httpPort());
    std::string text = "Demonstration Zarn Pro server. Type in the window:\n";
    text += "  Server URL:              " + (https.empty() ? http : https) + "\n";
    text += "  Username, Password:      " + options.user + ", " + options.password + "\n";
    text += "  or Client ID, Secret:    " + options.clientId + ", " + options.clientSecret + "\n";
    if (!https.empty() && !http.empty())
        text += "It also answers at         " + http + "\n";
    text += "Update page:               " + (https.empty() ? http : https) + options.updatePagePath
        + "\n";
    if (!arguments.caFile.empty())
        text += "To trust its certificate:  SSL_CERT_FILE=" + arguments.caFile + "\n";
    return text + "It ends after " + std::to_string(arguments.lifetime) + " s, or with Ctrl+C.\n";
}

void waitForTheEnd(const sigset_t& ends, long lifetime)
{
    const timespec limit{lifetime, 0};
    sigtimedwait(&ends, nullptr, &limit);
}

int run(int count, char** texts)
{
    auto arguments = readArguments(count, texts);
    if (!arguments)
        return 2;
    if (arguments->help) {
        std::printf("%s%s", usage, faultHelp);
        return 0;
    }
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGTERM);
    sigaddset(&ends, SIGINT);
    pthread_sigmask(SIG_BLOCK, &ends, nullptr);
    std::signal(SIGPIPE, SIG_IGN);

    if (!prepareCertificates(*arguments))
        return 1;
    ZarnPro zarnPro(arguments->zarnPro);
    for (const auto& [path, body] : arguments->pages)
        zarnPro.setPage(path, body);
    for (const auto& fault : arguments->faults)
        zarnPro.addFault(fault);
    if (!arguments->record.empty() && !zarnPro.recordTo(arguments->record)) {
        std::fprintf(stderr, "zarn-pro-demo: cannot write %s\n", arguments->record.c_str());
        return 1;
    }
    std::string error;
    const auto server = Server::start(
        arguments->server, [&zarnPro](const Request& request) { return zarnPro.handle(request); },
        error);
    if (!server) {
        std::fprintf(stderr, "zarn-pro-demo: %s\n", error.c_str());
        return 1;
    }
    const std::string text = arguments->printJson ? describeAsJson(*arguments, *server)
                                                  : describe(*arguments, *server);
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
    waitForTheEnd(ends, arguments->lifetime);
    return 0;
}

} // namespace

} // namespace zarn::demo

int main(int count, char** texts)
{
    return zarn::demo::run(count, texts);
}
