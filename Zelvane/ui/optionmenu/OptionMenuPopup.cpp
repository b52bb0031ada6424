#include "ui/optionmenu/OptionMenuPopup.h"

#include <utility>

namespace zelvane {

namespace {

/// A language may be called anything; no letter of it is meant as a key.
QString withoutMnemonics(QString text)
{
    return text.replace(u'&', QStringLiteral("&&"));
}

} // namespace

OptionMenuPopup::OptionMenuPopup(std::function<QPoint(QPoint)> toInterface)
    : m_toInterface(std::move(toInterface))
{
}

OptionMenuPopup::~OptionMenuPopup() = default;

void OptionMenuPopup::popUp(const OptionMenuContent& content, QPoint location,
                            std::function<void(const MenuChoice&)> onChosen)
{
    if (!m_menu) {
        m_menu = std::make_unique<QMenu>();
    }
    m_menu->close();
    m_onChosen = std::move(onChosen);
    fill(content);
    m_menu->popup(m_toInterface(location));
}

void OptionMenuPopup::fill(const OptionMenuContent& content)
{
    m_menu->clear();
    m_menu->setTitle(content.title);
    m_menu->setWindowTitle(content.title);
    m_menu->setAccessibleName(content.title);
    for (const QList<OptionMenuContent::Item>& group : content.groups) {
        if (!m_menu->isEmpty()) {
            m_menu->addSeparator();
        }
        for (const OptionMenuContent::Item& item : group) {
            addItem(item);
        }
    }
}

void OptionMenuPopup::addItem(const OptionMenuContent::Item& item)
{
    const QAction* action = m_menu->addAction(withoutMnemonics(item.title));
    QObject::connect(action, &QAction::triggered, m_menu.get(), [this, choice = item.choice] {
        if (const auto onChosen = std::exchange(m_onChosen, {})) {
            onChosen(choice);
        }
    });
}

} // namespace zelvane
