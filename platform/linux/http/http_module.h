// SPDX-License-Identifier: MIT
#pragma once

namespace zarn {
class Url;
class UrlSessions;
struct ConnectionFacts;
} // namespace zarn

namespace zarn::linux_backend {

class MainQueue;

/// What the module "zarn-http.so" exports: makes the sessions, which the caller owns. `mainQueue`
/// outlives them. Any thread.
using MakeUrlSessions = UrlSessions*(MainQueue* mainQueue);
inline constexpr const char* httpModuleFile = "zarn-http.so";
inline constexpr const char* makeUrlSessionsSymbol = "zarnMakeUrlSessions";
/// And this: probeConnection() of an address, into `facts`. Any thread.
using ProbeConnection = void(const Url* url, ConnectionFacts* facts);
inline constexpr const char* probeConnectionSymbol = "zarnProbeConnection";

} // namespace zarn::linux_backend
