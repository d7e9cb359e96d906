// SPDX-License-Identifier: MIT
#include "platform/linux/files/module.h"

#include <dlfcn.h>

#include <filesystem>

namespace zarn::linux_backend {

Result<void*> loadModuleFunction(const std::string& fileName, const char* symbol)
{
    std::error_code error;
    const auto executable = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error)
        return Error{ErrorCode::Io, "the program's own path cannot be read: " + error.message()};
    const auto folder = executable.parent_path();
    for (const auto& path :
        {folder / fileName, folder.parent_path() / "lib/zarn-actions/modules" / fileName}) {
        if (!std::filesystem::exists(path, error))
            continue;
        void* module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        void* function = module ? dlsym(module, symbol) : nullptr;
        if (function)
            return function;
        const char* reason = dlerror();
        return Error{ErrorCode::Unavailable, reason ? reason : "no such function in " + fileName};
    }
    return Error{ErrorCode::NotFound, fileName + " is not beside the program"};
}

} // namespace zarn::linux_backend
