#pragma once

#include "Services/EngineState.h"
#include "Services/SmartOfflineVariant.h"
#include "desktop/AccessibilityPermission.h"
#include "settings/AppSettings.h"
#include "ui/permission/PermissionModel.h"
#include "ui/settings/ModelListModel.h"

#include <QBindable>

#include <QCoroTask>

#include <functional>
#include <stop_token>

namespace zelvane {

class GlossaryManager;

/// An engine on this machine, as the settings show and command it.
struct EngineControls
{
    const EngineState* state = nullptr;
    std::function<void()> install;
    std::function<void()> cancelInstall;
    std::function<void()> deleteEngine;
    std::function<qint64()> displaySizeBytes;
    /// Looks on the disk for what is installed.
    std::function<void()> refresh = [] {};
};

/// What the settings reach of the rest of the program. All must outlive the window.
struct SettingsServices
{
    AppSettings& settings;
    UserDefaults& defaults;
    ModelListModel::Fetch fetchModels;
    /// See `ModelListModel`.
    QString keyOfThisRun = {}; // NOLINT(readability-redundant-member-init)
    std::function<EngineControls(SmartOfflineVariant)> engine;
    /// The user has picked a provider: its model is loaded, or those of the others are unloaded.
    std::function<void(AIProvider)> providerPicked;
    GlossaryManager& glossaries;
    std::function<void()> reloadHotKeys;
    /// Gives up the program's shortcuts for as long as a new one is being captured.
    std::function<void()> suspendHotKeys;
    /// Whether another program holds a chord; may be empty.
    std::function<bool(const KeyChord&)> isHeldElsewhere;
    /// Tells the option menu of its switch.
    std::function<void()> optionMenuChanged;
    QBindable<AccessibilityPermission::State> permissionState;
    PermissionModel& permission;
    /// Forgets where the windows were, and moves those that are open to the middle.
    std::function<void()> resetWindowLocations;
    std::function<QCoro::Task<QString>(std::stop_token)> installId;
    std::function<void(const QString&)> writeToClipboard;
    /// The user has chosen another language of the interface, which is stored already.
    std::function<void()> languageChosen = [] {};
    /// Tells builds of one version apart; empty if nobody counts them.
    QString buildNumber = {}; // NOLINT(readability-redundant-member-init)
};

} // namespace zelvane
