// SPDX-License-Identifier: MIT
#pragma once

#include "platform/memory/memory_application.h"
#include "platform/memory/memory_clock.h"
#include "platform/memory/memory_desktop.h"
#include "platform/memory/memory_file_manager.h"
#include "platform/memory/memory_keychain.h"
#include "platform/memory/memory_serial_queue.h"
#include "platform/memory/memory_settings.h"
#include "platform/memory/memory_storyboard.h"
#include "platform/memory/memory_text_services.h"
#include "platform/memory/memory_url_sessions.h"
#include "platform/services.h"

#include <string>
#include <vector>

namespace zarn::memory {

/// Every double of the in-memory backend, with one record of events in the order they happened.
struct MemoryPlatform {
    MemoryPlatform()
    {
        storyboards.main.onLastWindowClosed = [this] { application.lastWindowClosed(); };
    }
    // The doubles refer to each other.
    MemoryPlatform(const MemoryPlatform&) = delete;
    MemoryPlatform& operator=(const MemoryPlatform&) = delete;

    std::vector<std::string> events;
    MemoryAlertRunner alertRunner{events, [this] { return application.isEnding(); }};
    MemoryApplication application{events,
        {[this] {
             auto& main = storyboards.main;
             main.showWindow(main.instantiateInitialController());
         },
            [this] { return storyboards.main.windows(); },
            [this] { storyboards.main.closeAll(); }}};
    MemoryBundle bundle;
    MemoryClock clock;
    MemoryConsole console;
    MemoryDateFormatter dateFormatter;
    MemoryNotificationCenter notificationCenter;
    MemoryFileManager fileManager{events};
    MemoryKeychain keychain{events};
    MemorySerialQueues serialQueues;
    MemorySettings settings{events};
    MemoryStoryboards storyboards{events};
    MemoryTextServices textServices;
    MemoryUrlSessions urlSessions{events};
    MemoryWindowList windowList;
    MemoryWorkspace workspace;

    Services services()
    {
        return {.alertRunner = alertRunner,
            .application = application,
            .bundle = bundle,
            .clock = clock,
            .console = console,
            .dateFormatter = dateFormatter,
            .notificationCenter = notificationCenter,
            .fileManager = fileManager,
            .keychain = keychain,
            .serialQueues = serialQueues,
            .settings = settings,
            .storyboards = storyboards,
            .textServices = textServices,
            .urlSessions = urlSessions,
            .windowList = windowList,
            .workspace = workspace};
    }
};

} // namespace zarn::memory
