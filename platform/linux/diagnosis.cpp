// SPDX-License-Identifier: MIT
#include "platform/linux/diagnosis.h"

#include "platform/linux/files/module.h"
#include "platform/linux/http/http_module.h"
#include "platform/linux/keychain/keychain_thread.h"
#include "platform/linux/settings/plist_settings.h"
#include "zarn/product_constants.h"

#include <QtGlobal>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <random>

#include <sys/stat.h>
#include <unistd.h>

namespace zarn::linux_backend {

namespace {

/// A person may be typing the keyring's password.
constexpr CallContext::Limits keychainLimits{std::chrono::seconds(9), std::chrono::minutes(1)};

/// Prints what is found, line by line, and counts what is wrong.
class Diagnosis {
public:
    explicit Diagnosis(const Paths& paths)
        : m_paths(paths)
    {
    }

    void places();
    void settings();
    void keychain(KeychainOptions options);
    void http();
    bool conclude() const;

private:
    void line(const std::string& what, const std::string& text) const
    {
        std::printf("%-16s %s\n", what.c_str(), text.c_str());
    }
    void problem(const std::string& what, const std::string& text)
    {
        ++m_problems;
        line(what, "PROBLEM: " + text);
    }
    void place(const std::string& what, const std::string& path);
    static std::string keychainProbe(KeychainStore& store, CallContext& call);

    const Paths& m_paths;
    int m_problems = 0;
};

std::string randomText()
{
    constexpr std::string_view digits = "0123456789abcdef";
    std::random_device source;
    std::string text;
    std::generate_n(std::back_inserter(text), 32, [&] { return digits[source() % digits.size()]; });
    return text;
}

void Diagnosis::place(const std::string& what, const std::string& path)
{
    struct stat status { };
    if (path.empty() || ::lstat(path.c_str(), &status) != 0) {
        line(what, path + " (not there yet)");
        return;
    }
    std::array<char, 8> mode{};
    std::snprintf(mode.data(), mode.size(), "%04o", static_cast<unsigned>(status.st_mode & 07777));
    const auto text = path + " (" + mode.data() + ")";
    if (S_ISLNK(status.st_mode))
        problem(what, text + " is a link");
    else if (status.st_uid != ::getuid())
        problem(what, text + " belongs to another user");
    else if (!S_ISDIR(status.st_mode) && (status.st_mode & 077) != 0)
        problem(what, text + " can be read by other users");
    else if (S_ISDIR(status.st_mode) && (status.st_mode & 022) != 0)
        problem(what, text + " can be changed by other users");
    else
        line(what, text);
}

void Diagnosis::places()
{
    line("home", m_paths.home);
    place("settings", m_paths.config);
    std::vector<std::string> files;
    std::error_code error;
    for (std::filesystem::directory_iterator it(m_paths.config, error), end; !error && it != end;
         it.increment(error)) {
        if (it->path().extension() == ".plist")
            files.push_back(it->path());
    }
    std::sort(files.begin(), files.end());
    for (const auto& file : files)
        place("settings file", file);
    place("log", m_paths.home + "/Library/Logs");
    place("keychain file", m_paths.data + "/keychain");
    place("keychain key", m_paths.state + "/keychain.key");
}

void Diagnosis::settings()
{
    constexpr const char* probe = "com.zarn.ZarnActions.probe";
    const auto expected = randomText();
    PlistSettings settings(m_paths.config, {}, nullptr);
    auto& written = *settings.domain(probe);
    auto status = written.trySet("probe", expected);
    if (status) {
        PlistSettings again(m_paths.config, {}, nullptr);
        if (again.domain(probe)->string("probe") != expected)
            status = Error{ErrorCode::Io, "what was written is not what is read"};
        else if (const auto removed = written.tryRemove("probe"); !removed)
            status = removed.error();
        else if (again.domain(probe)->object("probe"))
            status = Error{ErrorCode::Io, "what was deleted can still be read"};
    }
    for (const char* suffix : {"", ".tmp", ".lock"})
        ::unlink((written.path() + suffix).c_str());
    if (status)
        line("settings probe", "written, read and deleted");
    else
        problem("settings probe", status.error().message);
}

/// Empty when all went well.
std::string Diagnosis::keychainProbe(KeychainStore& store, CallContext& call)
{
    const auto secret = randomText();
    const KeychainItem item{std::string(keychainAccessGroup), "com.zarn.ZarnActions.probe",
        "probe-" + randomText(), Data(secret.begin(), secret.end())};
    const KeychainQuery query{item.accessGroup, item.service, item.account, true};
    const auto failure = [](const char* step, KeychainStatus status) {
        return std::string(step) + ": " + keychainMessageText(status).value_or("") + " ("
            + std::to_string(status) + ")";
    };
    call.begin(keychainLimits);
    if (const auto status = store.add(item); status != keychain_status::success)
        return failure("not written", status);
    call.begin(keychainLimits);
    const auto match = store.copyMatching(query);
    call.begin(keychainLimits);
    const auto erased = store.erase(query);
    call.begin(keychainLimits);
    if (match.status != keychain_status::success)
        return failure("not read", match.status);
    if (match.item->secret != item.secret)
        return "what was written is not what is read";
    if (erased != keychain_status::success)
        return failure("not deleted", erased);
    if (store.copyMatching(query).status != keychain_status::itemNotFound)
        return "what was deleted can still be read";
    return "";
}

void Diagnosis::keychain(KeychainOptions options)
{
    options.moveItems = false;
    CallContext call([this](const std::string& text) { line("keychain", text); });
    call.begin(keychainLimits);
    const auto store = moduleStore(options)(call);
    const auto trouble = keychainProbe(*store, call);
    if (trouble.empty())
        line("keychain probe", "written, read and deleted");
    else
        problem("keychain probe", trouble);
}

void Diagnosis::http()
{
    moduleFunction(httpModuleFile, makeUrlSessionsSymbol);
    line("network", "its module can be loaded");
}

bool Diagnosis::conclude() const
{
    line("result", m_problems == 0 ? "all is well" : std::to_string(m_problems) + " problem(s)");
    return std::fflush(stdout) == 0 && m_problems == 0;
}

} // namespace

std::string programVersion()
{
    return std::string("Zarn Actions ") + product::shortVersion + " (" + product::buildNumber + ")";
}

bool printDiagnosis(const Paths& paths, KeychainOptions keychain)
{
    std::printf("%s, Qt %s\n", programVersion().c_str(), qVersion());
    Diagnosis diagnosis(paths);
    if (paths.home.empty() || paths.config.empty()) {
        std::printf("there is no home directory: set HOME\n");
        return false;
    }
    diagnosis.places();
    diagnosis.settings();
    diagnosis.http();
    diagnosis.keychain(std::move(keychain));
    return diagnosis.conclude();
}

} // namespace zarn::linux_backend
