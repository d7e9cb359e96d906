// SPDX-License-Identifier: MIT
// bench-files FOLDER: log lines, settings writes and 100,000 stored profiles against bare system
// calls, in a folder on a real disk.
#include "bench/interleaved.h"
#include "log/write_to_log.h"
#include "platform/linux/files/posix_services.h"
#include "platform/linux/settings/plist_settings.h"
#include "platform/linux/text/icu_text.h"
#include "profiles/profile_store.h"
#include "profiles/settings_domains.h"

#include <plist/plist.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include <fcntl.h>
#include <unistd.h>

namespace {

using namespace zarn;
using namespace zarn::linux_backend;

[[noreturn]] void stop(const std::string& reason)
{
    std::fprintf(stderr, "bench-files: %s\n", reason.c_str());
    std::exit(2);
}

bool logLine(const std::string& folder)
{
    PosixFileManager files(folder);
    const SystemClock clock;
    const IcuDateFormatter dates;
    LogFile file({files, clock, dates});
    WriteToLog log(file);
    const std::string message
        = "[Zpapi.action] Attempting GET on https://zarn.example/api/v1/zarn-pro-version.";
    log.writeEntry(message);
    const auto path = file.currentPath();
    const auto line = "Sat Mar 01 10:15:00 " + message + "\n";
    constexpr int lines = 2000;
    const auto ours = [&] {
        return bench::secondsOf([&] {
            for (int i = 0; i < lines; ++i)
                log.writeEntry(message);
        }) / lines;
    };
    const auto bare = [&] {
        return bench::secondsOf([&] {
            for (int i = 0; i < lines; ++i) {
                const int descriptor = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
                ::lseek(descriptor, 0, SEEK_END);
                if (::write(descriptor, line.data(), line.size()) < 0)
                    stop("cannot write");
                ::close(descriptor);
            }
        }) / lines;
    };
    return bench::report(
        "log line / open, seek, write, close", bench::interleave(31, ours, bare), 1.3, "us", 1e6);
}

void bareReplace(const std::string& folder, const std::string& contents)
{
    const auto temporary = folder + "/bare.tmp";
    const int file = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (::write(file, contents.data(), contents.size()) < 0 || ::fsync(file) != 0)
        stop("cannot write");
    ::close(file);
    if (::rename(temporary.c_str(), (folder + "/bare").c_str()) != 0)
        stop("cannot rename");
    const int directory = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ::fsync(directory);
    ::close(directory);
}

bool settingsWrite(const std::string& folder)
{
    PlistSettings settings(folder, {}, nullptr);
    auto* domain = settings.domain("bench.settings");
    domain->set("currentServer", "Production");
    std::ostringstream contents;
    contents << std::ifstream(domain->path()).rdbuf();
    std::int64_t number = 0;
    const auto ours
        = [&] { return bench::secondsOf([&] { domain->set("useUsername", ++number); }); };
    const auto bare
        = [&] { return bench::secondsOf([&] { bareReplace(folder, contents.str()); }); };
    return bench::report(
        "settings write / write, fsync, rename, fsync", bench::interleave(101, ours, bare), 1.3);
}

bool manyProfiles(const std::string& folder)
{
    ProfileMap profiles;
    for (int i = 0; i < 100000; ++i)
        profiles["Server " + std::to_string(i)]
            = Value::Dictionary{{"server", "https://server" + std::to_string(i) + ".example:8443"},
                {"date", Date{1.7e9 + i}}};
    {
        PlistSettings settings(folder, {}, nullptr);
        settings.suite(sharedProfileSuite)->set("serversDict", profiles);
    }
    const auto path = folder + "/" + std::string(sharedProfileSuite) + ".plist";
    const auto ours = [&] {
        return bench::secondsOf([&] {
            PlistSettings settings(folder, {}, nullptr);
            SettingsDomains domains(settings);
            const SystemClock clock;
            ProfileStore store(domains, clock);
            auto loaded = store.loadProfiles();
            if (loaded.size() != 100000)
                stop("the profiles were not read");
            store.pickMostRecentProfile(loaded);
            store.trimProfiles(loaded);
            std::vector<std::string> names;
            for (const auto& entry : loaded)
                names.push_back(entry.first);
            IcuTextServices().sortLocalized(names);
        });
    };
    const auto parse = [&] {
        return bench::secondsOf([&] {
            std::ostringstream contents;
            contents << std::ifstream(path).rdbuf();
            const auto xml = contents.str();
            plist_t node = nullptr;
            plist_from_xml(xml.data(), static_cast<std::uint32_t>(xml.size()), &node);
            plist_free(node);
        });
    };
    return bench::report(
        "start with 100,000 profiles / parsing the file", bench::interleave(7, ours, parse), 1.5);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
        stop("usage: bench-files FOLDER");
    const std::string folder = argv[1];
    bool within = logLine(folder);
    within = settingsWrite(folder) && within;
    within = manyProfiles(folder) && within;
    return within ? 0 : 1;
}
