#pragma once

#include "ui/style/Theme.h"

#include <QAbstractButton>
#include <QList>
#include <QMenu>
#include <QString>

namespace zelvane {

/// The closed form of a choice out of many: the present value and a symbol that there are others.
/// Screen readers take it for a combo box. A click, Space, Return and the vertical arrow keys open
/// it.
class PickerButton : public QAbstractButton
{
    Q_OBJECT

public:
    /// `theme` must outlive the button.
    explicit PickerButton(const Theme& theme, QWidget* parent = nullptr);

    /// Gives up the size of the longest value for this one. 0 takes it back.
    void setPreferredWidth(int width);

    /// What is shown, and what a screen reader tells as the value.
    [[nodiscard]] virtual QString valueText() const = 0;
    /// Opens the choice, or closes it again.
    virtual void togglePopup() = 0;
    /// The open choice; null while it is closed.
    [[nodiscard]] virtual QWidget* popup() const = 0;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    /// The width that no value exceeds, in device-independent pixels.
    [[nodiscard]] virtual int widestText() const = 0;
    /// To be called when `valueText` has changed.
    void valueChanged();
    [[nodiscard]] const Theme& theme() const { return m_theme; }

    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    const Theme& m_theme;
    int m_preferredWidth = 0;
};

/// A choice out of a list that opens as a menu.
class Picker final : public PickerButton
{
    Q_OBJECT

public:
    /// `theme` must outlive the picker.
    explicit Picker(const Theme& theme, QWidget* parent = nullptr);

    /// Replaces what can be chosen; nothing is chosen then.
    void setItems(const QStringList& texts);
    [[nodiscard]] QStringList items() const { return m_items; }

    /// -1 for none.
    [[nodiscard]] int currentIndex() const { return m_current; }
    void setCurrentIndex(int index);

    /// Shown while nothing is chosen.
    void setPlaceholder(const QString& text);

    [[nodiscard]] QString valueText() const override;
    void togglePopup() override;
    [[nodiscard]] QWidget* popup() const override { return m_menu; }
    /// Null while it is closed.
    [[nodiscard]] QMenu* menu() const { return m_menu; }

Q_SIGNALS:
    /// The user has chosen, be it what was chosen before.
    void activated(int index);

protected:
    [[nodiscard]] int widestText() const override;

private:
    QStringList m_items;
    QString m_placeholder;
    int m_current = -1;
    QPointer<QMenu> m_menu;
};

} // namespace zelvane
