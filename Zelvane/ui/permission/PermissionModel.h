#pragma once

#include "desktop/AccessibilityPermission.h"
#include "desktop/SessionInspector.h"
#include "foundation/Clock.h"
#include "foundation/TaskScope.h"

#include <QList>
#include <QObject>
#include <QProperty>
#include <QString>

#include <functional>

namespace zelvane {

/// One thing that the program can use of a session, in the interface language.
struct CapabilityRow
{
    QString title;
    /// What it is good for where it is there, and what to do where it isn't.
    QString advice;
    /// The state in a word.
    QString state;
    Availability availability = Availability::unknown;

    friend bool operator==(const CapabilityRow&, const CapabilityRow&) = default;
};

/// State and intent of the page that says what this session lets the program do. Needs no display.
class PermissionModel final : public QObject
{
    Q_OBJECT

public:
    struct Actions
    {
        std::function<void()> relaunch;
        /// Puts a text on the clipboard on the user's behalf.
        std::function<void(const QString&)> copy;
        /// Asks for the permission once more.
        std::function<void()> request = [] {};
    };

    /// All must outlive this object.
    PermissionModel(QBindable<AccessibilityPermission::State> state, SessionInspector& inspector,
                    Clock& clock, Actions actions);
    ~PermissionModel() override;

    [[nodiscard]] AccessibilityPermission::State state() const { return m_state.value(); }

    /// While the page is on the screen what it says is kept up to date.
    void setShown(bool shown);

    /// "Permission granted", or that it isn't.
    [[nodiscard]] QString headline() const;
    /// What is to be known of the state beyond that.
    [[nodiscard]] QString explanation() const;
    [[nodiscard]] QList<CapabilityRow> rows() const;

    /// Whether a key bound in the desktop's own settings helps where shortcuts don't work.
    [[nodiscard]] bool offersCommand() const;
    [[nodiscard]] static QString command();
    [[nodiscard]] bool copied() const { return m_copied; }
    void copyCommand();

    [[nodiscard]] bool offersRequest() const;
    /// Asks for the permission, and looks at once whether it has come.
    void request();

    /// Whether a new start of the program may help.
    [[nodiscard]] bool offersRelaunch() const;
    void relaunch() { m_actions.relaunch(); }

Q_SIGNALS:
    /// Something of the above has changed.
    void changed();

private:
    [[nodiscard]] QCoro::Task<void> look(std::stop_token stop);
    void refresh();

    QBindable<AccessibilityPermission::State> m_state;
    SessionInspector& m_inspector;
    Clock& m_clock;
    Actions m_actions;
    SessionCapabilities m_capabilities;
    bool m_copied = false;
    QPropertyNotifier m_stateChange;
    std::unique_ptr<Timer> m_timer;
    TaskScope m_tasks;
};

} // namespace zelvane
