#pragma once

#include "settings/LanguagePair.h"

#include <QString>

#include <functional>

namespace zelvane {

enum class TranslateOutputMode;

/// The menu at Option (Alt) + right click, as the controller sees it. Main thread.
class OptionClickMenu
{
public:
    OptionClickMenu() = default;
    virtual ~OptionClickMenu() = default;
    Q_DISABLE_COPY_MOVE(OptionClickMenu)

    /// Called when the user chooses an entry.
    virtual void setOnSelect(std::function<void(LanguagePair, TranslateOutputMode)> onSelect) = 0;
    /// Called when the menu has begun to listen.
    virtual void setOnActivated(std::function<void()> onActivated) = 0;

    /// Whether the user wants the menu.
    virtual void setWanted(bool wanted) = 0;
    /// Starts or stops listening after a change of the permission.
    virtual void reconcile() = 0;

    [[nodiscard]] virtual bool isListening() const = 0;
    /// Why it doesn't listen though it is wanted; empty if nothing is wrong.
    [[nodiscard]] virtual QString lastError() const = 0;
};

} // namespace zelvane
