// SPDX-License-Identifier: MIT
// From the click on "Add" to the painted result alert, against the two requests alone: a token and
// the server's version, over TLS on loopback, with libcurl and nothing else.
//   bench-add-profile PAIRS FOLDER
// Each figure is that of a fresh process. Needs a display and a folder for what they store.
#include "app/zarn_actions_app.h"
#include "bench/interleaved.h"
#include "platform/backend.h"
#include "tests/support/demo_certificates.h"
#include "tests/support/demo_server.h"
#include "tests/support/demo_zarn_pro.h"

#include <QAbstractButton>
#include <QApplication>
#include <QEvent>
#include <QLineEdit>
#include <QTimer>

#include <curl/curl.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <sys/wait.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

[[noreturn]] void stop(const std::string& reason)
{
    std::fprintf(stderr, "bench-add-profile: %s\n", reason.c_str());
    std::exit(2);
}

[[noreturn]] void tell(Clock::time_point start)
{
    std::printf("seconds %.9f\n", std::chrono::duration<double>(Clock::now() - start).count());
    std::fflush(stdout);
    ::_exit(0);
}

/// Fills in the form like a person who types fast, presses "Add", and sees the alert.
class Hand final : public QObject {
public:
    explicit Hand(QObject* application)
        : QObject(application)
    {
        application->installEventFilter(this);
    }

    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (event->type() != QEvent::Paint || !object->isWidgetType())
            return false;
        auto* window = static_cast<QWidget*>(object)->window();
        if (!m_isWaiting) {
            m_isWaiting = true;
            // Whatever follows the first paint is over by then.
            QTimer::singleShot(1000, this, [this, window] { press(window); });
        } else if (m_isPressed && window == QApplication::activeModalWidget() && object == window) {
            QTimer::singleShot(0, this, [this] { tell(m_pressed); });
            m_isPressed = false;
        }
        return false;
    }

private:
    void press(QWidget* window)
    {
        const auto type = [window](const char* name, const QString& text) {
            auto* field = window->findChild<QLineEdit*>(name);
            if (!field)
                stop(std::string("no ") + name);
            field->setText(text);
        };
        type("displayName_TextField", "Production");
        type("zarnProServer_textfield", qEnvironmentVariable("BENCH_SERVER"));
        type("zarnProUsername_textfield", "demo-client");
        type("zarnProPassword_textfield", "demo-client-secret");
        auto* button = window->findChild<QAbstractButton*>("updateServerInfo_Button");
        // The text marks the letter that presses the button.
        if (!button || button->text().remove('&') != "Add")
            stop("the window is not ready to add");
        m_isPressed = true;
        m_pressed = Clock::now();
        button->click();
    }

    bool m_isWaiting = false;
    bool m_isPressed = false;
    Clock::time_point m_pressed;
};

int addInWindow()
{
    zarn::Backend::prepareProcess();
    const auto start = zarn::Backend::start({"file", {"-agreedToTermsOfUse", "1"}});
    if (!start.backend)
        stop("no window: " + start.reason);
    const Hand hand(qApp);
    zarn::ZarnActionsApp app(start.backend->services(), start.backend->productTexts());
    app.run();
    return 1;
}

std::size_t append(char* data, std::size_t size, std::size_t count, void* body)
{
    static_cast<std::string*>(body)->append(data, size * count);
    return size * count;
}

std::string request(const std::string& url, const char* form, const std::string& authorization)
{
    std::string body;
    CURL* handle = curl_easy_init();
    curl_slist* headers
        = authorization.empty() ? nullptr : curl_slist_append(nullptr, authorization.c_str());
    curl_easy_setopt(handle, CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle, CURLOPT_CAINFO, std::getenv("SSL_CERT_FILE"));
    curl_easy_setopt(handle, CURLOPT_HTTPHEADER, headers);
    curl_easy_setopt(handle, CURLOPT_POSTFIELDS, form);
    if (!form)
        curl_easy_setopt(handle, CURLOPT_HTTPGET, 1L);
    curl_easy_setopt(handle, CURLOPT_FAILONERROR, 1L);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, append);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, &body);
    if (const auto result = curl_easy_perform(handle); result != CURLE_OK)
        stop(url + ": " + curl_easy_strerror(result));
    curl_slist_free_all(headers);
    curl_easy_cleanup(handle);
    return body;
}

int requestAlone(const std::string& server)
{
    curl_global_init(CURL_GLOBAL_DEFAULT);
    const auto start = Clock::now();
    const auto reply = request(server + "/api/oauth/token",
        "grant_type=client_credentials&client_id=demo-client&client_secret=demo-client-secret", "");
    const std::string before = R"("access_token":")";
    const auto from = reply.find(before);
    if (from == std::string::npos)
        stop("no token in " + reply);
    const auto token = reply.substr(
        from + before.size(), reply.find('"', from + before.size()) - from - before.size());
    request(server + "/api/v1/zarn-pro-version", nullptr, "Authorization: Bearer " + token);
    tell(start);
}

/// What this program prints when it is started with `mode`, in a home of its own.
double measure(const char* mode, const std::string& home)
{
    std::filesystem::remove_all(home);
    std::filesystem::create_directories(home);
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0)
        stop("no pipe");
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(ends[1], STDOUT_FILENO);
        ::close(ends[0]);
        for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME"})
            ::setenv(name, home.c_str(), 1);
        ::execl("/proc/self/exe", "bench-add-profile", mode, nullptr);
        ::_exit(127);
    }
    ::close(ends[1]);
    double seconds = 0;
    auto* output = ::fdopen(ends[0], "r");
    bool isTold = false;
    // The program writes lines of its own before.
    for (std::array<char, 256> line; std::fgets(line.data(), line.size(), output);)
        isTold = std::sscanf(line.data(), "seconds %lf", &seconds) == 1;
    std::fclose(output);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (!isTold)
        stop(std::string(mode) + " failed");
    return seconds;
}

bool compare(int pairs, const std::string& folder)
{
    using namespace zarn::demo;
    const auto authority = makeCertificate(authorityOptions("benchmark authority"));
    CertificateOptions names;
    names.names = {"127.0.0.1"};
    const auto certificate = makeCertificate(names, &authority);
    std::filesystem::create_directories(folder);
    // Beside the authorities that every machine trusts: to read them is a part of each request.
    std::ifstream system("/etc/ssl/certs/ca-certificates.crt");
    if (!(std::ofstream(folder + "/ca.pem") << system.rdbuf() << authority.certificatePem))
        stop("no authorities in /etc/ssl/certs/ca-certificates.crt");
    ::setenv("SSL_CERT_FILE", (folder + "/ca.pem").c_str(), 1);

    ServerOptions options;
    options.http = false;
    options.certificateChainPem = certificate.certificatePem;
    options.keyPem = certificate.keyPem;
    ZarnPro zarnPro({});
    std::string error;
    const auto server = Server::start(
        options, [&](const Request& received) { return zarnPro.handle(received); }, error);
    if (!server)
        stop(error);
    const auto url = "https://127.0.0.1:" + std::to_string(server->httpsPort());
    ::setenv("BENCH_SERVER", url.c_str(), 1);
    return zarn::bench::report("\"Add\" to result alert / its two requests",
        zarn::bench::interleave(
            pairs, [&] { return measure("--window", folder + "/home"); },
            [&] { return measure("--bare", folder + "/home"); }),
        1.5);
}

} // namespace

int main(int argc, char** argv)
{
    const std::string mode = argc > 1 ? argv[1] : "";
    if (mode == "--window")
        return addInWindow();
    const char* const server = std::getenv("BENCH_SERVER");
    if (mode == "--bare" && server)
        return requestAlone(server);
    if (argc != 3)
        stop("usage: bench-add-profile PAIRS FOLDER");
    return compare(std::atoi(argv[1]), argv[2]) ? 0 : 1;
}
