#include "desktop/linux/SelectionContent.h"

#include <QSet>

namespace zelvane {

namespace {

constexpr QChar separator(0x1f);

QString nameOf(const QByteArray& target, const SelectionValue& value)
{
    const QString plain = QString::fromLatin1(target);
    if (value.type == target && value.unit == 8 && !plain.contains(separator)) {
        return plain;
    }
    return plain + separator + QString::fromLatin1(value.type) + separator +
           QString::number(value.unit);
}

void putNamed(SelectionContent& content, const QString& name, const QByteArray& bytes)
{
    const qsizetype unitAt = name.lastIndexOf(separator);
    const qsizetype typeAt = unitAt > 0 ? name.lastIndexOf(separator, unitAt - 1) : -1;
    if (typeAt < 0) {
        const QByteArray target = name.toLatin1();
        content.insert(target, {target, 8, bytes});
        return;
    }
    const QByteArray target = name.first(typeAt).toLatin1();
    const QByteArray type = name.sliced(typeAt + 1, unitAt - typeAt - 1).toLatin1();
    const int unit = name.sliced(unitAt + 1).toInt();
    content.insert(target, {type, quint8(unit == 16 || unit == 32 ? unit : 8), bytes});
}

const QByteArray& secretHint()
{
    static const QByteArray target("x-kde-passwordManagerHint");
    return target;
}

} // namespace

PasteboardSnapshot snapshotOf(const SelectionContent& content)
{
    if (content.isEmpty()) {
        return {};
    }
    QMap<QString, QByteArray> item;
    for (auto value = content.cbegin(); value != content.cend(); ++value) {
        item.insert(nameOf(value.key(), value.value()), value->bytes);
    }
    return {{item}};
}

SelectionContent contentOf(const PasteboardSnapshot& snapshot)
{
    SelectionContent content;
    for (const QMap<QString, QByteArray>& item : snapshot.items) {
        SelectionContent ofItem;
        for (auto value = item.cbegin(); value != item.cend(); ++value) {
            putNamed(ofItem, value.key(), value.value());
        }
        ofItem.insert(content);
        content = ofItem;
    }
    return content;
}

SelectionContent emptiedContent()
{
    return {{secretHint(), {secretHint(), 8, "secret"}}};
}

SelectionContent contentOfText(const QString& text)
{
    SelectionContent content = emptiedContent();
    const QByteArray utf8 = text.toUtf8();
    for (const char* target : {"UTF8_STRING", "text/plain;charset=utf-8", "text/plain"}) {
        content.insert(target, {target, 8, utf8});
    }
    content.insert("TEXT", {"UTF8_STRING", 8, utf8});
    content.insert("STRING", {"STRING", 8, text.toLatin1()});
    return content;
}

const QList<QByteArray>& textTargets()
{
    static const QList<QByteArray> targets{"UTF8_STRING", "text/plain;charset=utf-8", "STRING"};
    return targets;
}

QString textOf(const QByteArray& target, const QByteArray& bytes)
{
    QByteArray content = bytes;
    while (content.endsWith('\0')) {
        content.chop(1);
    }
    QString text = target == "STRING" ? QString::fromLatin1(content) : QString::fromUtf8(content);
    return text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
}

std::optional<QString> textOf(const SelectionContent& content)
{
    for (const QByteArray& target : textTargets()) {
        if (const auto value = content.constFind(target); value != content.constEnd()) {
            return textOf(target, value->bytes);
        }
    }
    return std::nullopt;
}

bool isData(const QByteArray& target)
{
    static const QSet<QByteArray> others{
        // Questions about the selection and its owner.
        "TARGETS",
        "MULTIPLE",
        "TIMESTAMP",
        "SAVE_TARGETS",
        "LENGTH",
        "CLIENT_WINDOW",
        "PROCESS",
        "TASK",
        "HOST_NAME",
        "USER",
        "CLASS",
        "NAME",
        "OWNER_OS",
        "MODULE",
        // Asking for these changes the document.
        "DELETE",
        "INSERT_SELECTION",
        "INSERT_PROPERTY",
        // Numbers of resources in the server, which end with the program that made them.
        "PIXMAP",
        "BITMAP",
        "DRAWABLE",
        "COLORMAP",
        "WINDOW",
    };
    return !target.isEmpty() && !others.contains(target);
}

} // namespace zelvane
