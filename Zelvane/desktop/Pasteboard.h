#pragma once

#include "foundation/DescribedError.h"

#include <QByteArray>
#include <QCoroTask>
#include <QList>
#include <QMap>
#include <QString>

#include <optional>

namespace zelvane {

/// The saved clipboard: one map from type to bytes for each item, in the clipboard's order.
///
/// A type is the platform's own name for a format: an X11 target, a uniform type identifier.
struct PasteboardSnapshot
{
    QList<QMap<QString, QByteArray>> items;

    friend bool operator==(const PasteboardSnapshot&, const PasteboardSnapshot&) = default;
};

/// The clipboard's owner did not answer. An unread clipboard must not be taken for an empty one.
class PasteboardError final : public DescribedError
{
public:
    [[nodiscard]] QString description() const override;
};

/// The clipboard that programs share.
///
/// Main thread; no call blocks it. What the program puts there is marked as not meant for clipboard
/// histories.
class Pasteboard
{
public:
    Pasteboard() = default;
    virtual ~Pasteboard() = default;
    Q_DISABLE_COPY_MOVE(Pasteboard)

    /// Every format of every item, as bytes. A format without data is left out. Throws
    /// `PasteboardError` if the owner can't be asked, with the clipboard as it was.
    [[nodiscard]] virtual QCoro::Task<PasteboardSnapshot> snapshot() = 0;

    /// Empties the clipboard.
    virtual void clear() = 0;

    /// The plain text, or none. Text that cannot be fetched in time counts as none.
    [[nodiscard]] virtual QCoro::Task<std::optional<QString>> string() = 0;

    /// Puts plain text on the cleared clipboard.
    virtual void setString(const QString& text) = 0;

    /// Puts the items of `snapshot` back in place of what is there. An adapter whose clipboard is
    /// served on demand may go on serving a pasted text to a slow program for a moment before.
    virtual void restore(const PasteboardSnapshot& snapshot) = 0;
};

} // namespace zelvane
