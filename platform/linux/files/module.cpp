// SPDX-License-Identifier: MIT
#include "platform/linux/files/module.h"

#include "base/warn.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace zarn::linux_backend {

namespace {

[[noreturn]] void endBroken(const std::string& reason)
{
    warn("the installation is broken: " + reason);
    std::fflush(stdout);
    // Other threads are running, so no destructor may run.
    std::_Exit(EXIT_FAILURE);
}

} // namespace

void* moduleFunction(const std::string& fileName, const char* symbol)
{
    std::error_code error;
    const auto executable = std::filesystem::read_symlink("/proc/self/exe", error);
    const auto folder = executable.parent_path();
    for (const auto& path :
        {folder / fileName, folder.parent_path() / "lib/zarn-actions/modules" / fileName}) {
        if (!std::filesystem::exists(path, error))
            continue;
        void* module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        void* function = module ? dlsym(module, symbol) : nullptr;
        if (!function)
            endBroken(dlerror());
        return function;
    }
    endBroken(fileName + " is not beside the program");
}

} // namespace zarn::linux_backend
