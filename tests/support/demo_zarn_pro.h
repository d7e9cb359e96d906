// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/demo_fault.h"
#include "tests/support/demo_http.h"

#include <cstdio>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace zarn::demo {

struct ZarnProOptions {
    std::string user = "demo";
    std::string password = "zarn-demo-password";
    std::string clientId = "demo-client";
    std::string clientSecret = "demo-client-secret";
    std::string version = "11.40.0-t1712";
    /// Where the update page is and what it offers.
    std::string updatePagePath = "/releases";
    std::string publishedVersion = "1.0.0";
};

/// A stand-in for a Zarn Pro server: token and version endpoints, token invalidation, an update
/// page, scripted faults, and a record of what was asked. Any thread.
///
/// Its own control paths, never recorded: POST /demo/fault adds a fault, POST /demo/reset drops all
/// faults and the record, POST /demo/page (path=...&body=...) sets a page, GET /demo/requests
/// answers the record, one JSON line a request.
class ZarnPro {
public:
    explicit ZarnPro(ZarnProOptions options);
    ~ZarnPro();
    ZarnPro(const ZarnPro&) = delete;
    ZarnPro& operator=(const ZarnPro&) = delete;

    Reply handle(const Request& request);

    void addFault(Fault fault);
    void setPage(const std::string& path, std::string body);
    /// Appends each request to `file` from now on; false when it cannot be opened.
    bool recordTo(const std::string& file);
    std::vector<Request> requests() const;
    /// Drops faults and record.
    void reset();

private:
    Reply ordinaryReply(const Request& request);
    Reply control(const Request& request);
    Reply basicToken(const Request& request);
    Reply clientToken(const Request& request);
    bool bearsToken(const Request& request) const;
    std::string newToken();

    const ZarnProOptions m_options;
    mutable std::mutex m_mutex;
    std::vector<Fault> m_faults;
    std::map<std::string, std::string> m_pages;
    std::vector<Request> m_requests;
    std::set<std::string> m_tokens;
    unsigned m_tokensMade = 0;
    std::FILE* m_record = nullptr;
};

} // namespace zarn::demo
