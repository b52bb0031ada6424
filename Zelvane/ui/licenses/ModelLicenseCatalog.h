#pragma once

#include <QList>
#include <QString>
#include <QUrl>

namespace zelvane {

/// The licences of the models, tools and data that the program downloads and runs.
class ModelLicenseCatalog
{
public:
    struct Entry
    {
        QString id;
        QString name;
        QString copyright;
        QString licenseName;
        QUrl licenseURL;
        QUrl sourceURL;
    };

    /// In the order in which they are shown.
    [[nodiscard]] static const QList<Entry>& entries();
};

} // namespace zelvane
