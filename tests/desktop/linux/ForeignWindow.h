#pragma once

#include "ForeignClipboard.h"

#include <QString>
#include <QStringList>

namespace zelvane::test {

/// A window of another program that notes the keys and clicks it gets.
class ForeignWindow : public ForeignProgram
{
public:
    /// Visible when the constructor returns.
    ForeignWindow(const QByteArray& display, const QByteArray& title);

    /// Takes the keyboard without asking a window manager.
    void focus() const;
    void close() const;

    /// The keys that have arrived since the last call: "+" for a press or "-" for a release, the
    /// key code, and after a colon the modifier bits that were set at that moment.
    [[nodiscard]] QStringList keys() const;
    /// The same for the buttons of the pointer. Each of the two forgets what is for the other.
    [[nodiscard]] QStringList clicks() const;

private:
    [[nodiscard]] QStringList arrived(int pressKind, int releaseKind) const;
};

} // namespace zelvane::test
