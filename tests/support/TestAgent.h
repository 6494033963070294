#pragma once

#include "catalogue/BrowserCatalogue.h"
#include "core/AppDelegate.h"
#include "platform/fake/FakeWorkspace.h"
#include "platform/fake/FixedSystemVersion.h"
#include "platform/fake/LocalDistributedNotificationCenter.h"
#include "platform/fake/ManualFolderWatch.h"
#include "platform/fake/MemoryKeyValueStore.h"
#include "platform/fake/RecordingLoginItems.h"
#include "platform/fake/RecordingNotificationCenter.h"
#include "platform/fake/ScriptedOpenPanel.h"
#include "platform/linux/InodeBookmarks.h"
#include "sandbox/HelperScripts.h"
#include "sandbox/Sandbox.h"
#include "support/RecordingCleaners.h"
#include "support/TestDefaults.h"

// The controller over fakes of every platform service, on the given settings.
struct TestAgent
{
    explicit TestAgent(TestDefaults& t, const QString& runLockPath = QString())
        : sandbox({t.defaults, bookmarks, panel, t.log}), catalogue(workspace, t.defaults, sandbox),
          scripts(sandbox, t.log), app({t.defaults, t.log, workspace, folderWatch, notifications, bookmarks,
                                        panel, catalogue, cleaners, scripts, sandbox, systemVersion,
                                        loginItems, distributedNotifications, cloudStore, runLockPath})
    {}

    InodeBookmarks bookmarks;
    ScriptedOpenPanel panel;
    Sandbox sandbox;
    FakeWorkspace workspace;
    ManualFolderWatch folderWatch;
    RecordingNotificationCenter notifications;
    BrowserCatalogue catalogue;
    RecordingCleaners cleaners;
    HelperScripts scripts;
    FixedSystemVersion systemVersion;
    RecordingLoginItems loginItems;
    LocalDistributedNotificationCenter distributedNotifications;
    MemoryKeyValueStore cloudStore;
    AppDelegate app;
};
