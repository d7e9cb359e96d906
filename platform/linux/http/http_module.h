// SPDX-License-Identifier: MIT
#pragma once

namespace zarn {
class UrlSessions;
}

namespace zarn::linux_backend {

class MainQueue;

/// What the module "zarn-http.so" exports: makes the sessions, which the caller owns. `mainQueue`
/// outlives them. Any thread.
using MakeUrlSessions = UrlSessions*(MainQueue* mainQueue);
inline constexpr const char* httpModuleFile = "zarn-http.so";
inline constexpr const char* makeUrlSessionsSymbol = "zarnMakeUrlSessions";

} // namespace zarn::linux_backend
