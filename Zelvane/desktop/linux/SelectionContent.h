#pragma once

#include "desktop/Pasteboard.h"

#include <QByteArray>
#include <QMap>

#include <optional>

namespace zelvane {

/// One format of a selection as it goes over X: the type and the unit (8, 16 or 32 bits) of the
/// property that carries it, and its bytes.
struct SelectionValue
{
    QByteArray type;
    quint8 unit = 8;
    QByteArray bytes;

    friend bool operator==(const SelectionValue&, const SelectionValue&) = default;
};

/// The formats of a selection by target, the name under which programs ask for them.
using SelectionContent = QMap<QByteArray, SelectionValue>;

/// The content as a snapshot of one item, or of none if there is nothing.
///
/// A format's name there is its target. Where the property's type isn't the target itself, or the
/// unit isn't 8 bits, both follow after a U+001F each, so that nothing is lost on the way back.
[[nodiscard]] PasteboardSnapshot snapshotOf(const SelectionContent& content);

/// The opposite of `snapshotOf`. X knows one item: of several, the first with a format gives it.
[[nodiscard]] SelectionContent contentOf(const PasteboardSnapshot& snapshot);

/// What an emptied clipboard consists of: nothing but a mark that keeps clipboard managers from
/// filling it with something old.
[[nodiscard]] SelectionContent emptiedContent();

/// Plain text in all formats that programs ask for, marked as not meant for clipboard histories.
[[nodiscard]] SelectionContent contentOfText(const QString& text);

/// The targets that hold plain text, the best first.
[[nodiscard]] const QList<QByteArray>& textTargets();

/// The text in a value of one of `textTargets`. CR LF becomes LF, what isn't valid becomes U+FFFD,
/// and the zero bytes that some programs add at the end go.
[[nodiscard]] QString textOf(const QByteArray& target, const QByteArray& bytes);

/// The text among the content, none if it has no plain text.
[[nodiscard]] std::optional<QString> textOf(const SelectionContent& content);

/// Whether a target is data that can be kept: not a question about the selection or its owner, not
/// a request to do something, and not a resource that dies with its owner.
[[nodiscard]] bool isData(const QByteArray& target);

} // namespace zelvane
