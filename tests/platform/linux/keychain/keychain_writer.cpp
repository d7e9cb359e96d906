// SPDX-License-Identifier: MIT
// A program for keychain_faults.py: one operation on a file keychain, on one thread, so that every
// system call of it can be made to fail.
#include "platform/linux/keychain/file_keychain.h"
#include "tests/support/begun_call.h"

#include <cstdio>
#include <string>

namespace zarn::linux_backend {
namespace {

int run(const std::string& folder, const std::string& operation, const std::string& account,
    const std::string& secret)
{
    BegunCall call;
    FileKeychain keychain(folder + "/data", folder + "/state", call);
    const Data bytes(secret.begin(), secret.end());
    KeychainStatus status = keychain_status::success;
    if (operation == "list") {
        KeychainContents contents;
        status = keychain.read(contents);
        for (const auto& [item, created, modified] : contents.items)
            std::printf("%s=%s\n", item.account.c_str(),
                std::string(item.secret.begin(), item.secret.end()).c_str());
    } else if (operation == "add") {
        status = keychain.add({"group", "service", account, bytes});
    } else {
        status = keychain.update({"group", "service", account, true}, bytes);
    }
    std::printf("status %d\n", status);
    return 0;
}

} // namespace
} // namespace zarn::linux_backend

int main(int argc, char** argv)
{
    const auto word = [&](int index) { return std::string(index < argc ? argv[index] : ""); };
    return zarn::linux_backend::run(word(1), word(2), word(3), word(4));
}
