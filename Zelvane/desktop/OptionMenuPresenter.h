#pragma once

#include <QList>
#include <QPoint>
#include <QString>
#include <QUuid>

#include <functional>

namespace zelvane {

/// What an entry of the menu at Option + right click stands for.
struct MenuChoice
{
    QUuid pairID;
    /// "auto" or "window".
    QString modeRaw;

    friend bool operator==(const MenuChoice&, const MenuChoice&) = default;
};

/// The menu at Option + right click, as it is to be shown.
struct OptionMenuContent
{
    struct Item
    {
        QString title;
        MenuChoice choice;

        friend bool operator==(const Item&, const Item&) = default;
    };

    QString title;
    /// With a separator between each two.
    QList<QList<Item>> groups;

    friend bool operator==(const OptionMenuContent&, const OptionMenuContent&) = default;
};

/// Shows the menu. Main thread.
class OptionMenuPresenter
{
public:
    OptionMenuPresenter() = default;
    virtual ~OptionMenuPresenter() = default;
    Q_DISABLE_COPY_MOVE(OptionMenuPresenter)

    /// Opens the menu at a place that a tap has told of, in place of one that is open, and returns
    /// at once. The program in front keeps the keyboard focus in the eyes of the desktop, so that a
    /// choice finds its selection. `onChosen` is called at most once.
    virtual void popUp(const OptionMenuContent& content, QPoint location,
                       std::function<void(const MenuChoice&)> onChosen) = 0;
};

} // namespace zelvane
