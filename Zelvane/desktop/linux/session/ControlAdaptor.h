#pragma once

#include "desktop/ProgramControl.h"

#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QVariantMap>

namespace zelvane {

/// The control of the program on the bus.
class ControlAdaptor final : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.zelvane.desk.Control")

public:
    /// `control` must outlive the adaptor. `version` is that of the program.
    ControlAdaptor(QObject* object, ProgramControl& control, const QDBusConnection& bus,
                   QString version);

public Q_SLOTS: // NOLINT(readability-redundant-access-specifiers)
    // The names are those on the bus.
    /// The program was started again.
    void Activate();
    /// `pair` is a place in the list, from 1, or an identifier.
    void TriggerPair(const QString& pair, const QDBusMessage& call);
    void ShowTranslationWindow();
    void ShowSettings();
    /// Status (text), Busy (Boolean), LastError (text), Version (text), Pairs and PairIDs (lists of
    /// texts).
    QVariantMap Status();

private:
    ProgramControl& m_control;
    QDBusConnection m_bus;
    QString m_version;
};

} // namespace zelvane
