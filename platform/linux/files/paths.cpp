// SPDX-License-Identifier: MIT
#include "platform/linux/files/paths.h"

#include <cstdlib>
#include <vector>

#include <pwd.h>
#include <unistd.h>

namespace zarn::linux_backend {

namespace {

std::string absoluteFromEnvironment(const char* name)
{
    const char* value = std::getenv(name);
    return value && value[0] == '/' ? value : "";
}

std::string withoutTrailingSlashes(std::string path)
{
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

std::string homeOfPasswordDatabase()
{
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || !found)
        return "";
    return found->pw_dir && found->pw_dir[0] == '/' ? found->pw_dir : "";
}

} // namespace

Paths Paths::fromEnvironment()
{
    Paths paths;
    paths.home = absoluteFromEnvironment("HOME");
    if (paths.home.empty())
        paths.home = homeOfPasswordDatabase();
    paths.home = withoutTrailingSlashes(paths.home);
    const auto folder = [&](const char* variable, const char* fallback) -> std::string {
        const auto base = withoutTrailingSlashes(absoluteFromEnvironment(variable));
        if (!base.empty())
            return base + "/zarn-actions";
        return paths.home.empty() ? "" : paths.home + fallback + "/zarn-actions";
    };
    paths.config = folder("XDG_CONFIG_HOME", "/.config");
    paths.data = folder("XDG_DATA_HOME", "/.local/share");
    paths.state = folder("XDG_STATE_HOME", "/.local/state");
    return paths;
}

} // namespace zarn::linux_backend
