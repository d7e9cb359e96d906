// SPDX-License-Identifier: MIT
#pragma once

#include "log/write_to_log.h"
#include "platform/memory/memory_clock.h"
#include "platform/memory/memory_file_manager.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace zarn {

/// A log in files in memory: a fresh process for each test.
class LogTest : public testing::Test {
protected:
    /// Puts files with names from "20240101_000000.log" on into the folder.
    void fill(int count)
    {
        for (int i = 0; i < count; ++i)
            files.files[folder + "20240101_0000" + (i < 10 ? "0" : "") + std::to_string(i) + ".log"]
                = "old";
    }
    std::vector<std::string> removed() const
    {
        std::vector<std::string> paths;
        for (const auto& event : events) {
            if (event.starts_with("remove "))
                paths.push_back(event.substr(7));
        }
        return paths;
    }

    const std::string folder = "/home/test/Library/Logs/";
    const std::string firstName = "20250301_101500_zarn-shortcuts.log";
    std::vector<std::string> events;
    memory::MemoryFileManager files{events};
    memory::MemoryClock clock;
    memory::MemoryDateFormatter dates;
    LogFile file{{files, clock, dates}};
    WriteToLog log{file};
};

} // namespace zarn
