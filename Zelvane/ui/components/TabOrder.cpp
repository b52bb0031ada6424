#include "ui/components/TabOrder.h"

#include <QLayout>
#include <QWidget>

namespace zelvane {

namespace {

void collect(QWidget& widget, QWidgetList& controls);

void collect(const QLayout& layout, QWidgetList& controls)
{
    for (int i = 0; i < layout.count(); ++i) {
        QLayoutItem* item = layout.itemAt(i);
        if (QWidget* widget = item->widget()) {
            collect(*widget, controls);
        } else if (const QLayout* inner = item->layout()) {
            collect(*inner, controls);
        }
    }
}

void collect(QWidget& widget, QWidgetList& controls)
{
    if (widget.focusPolicy() & Qt::TabFocus) {
        controls += &widget;
    }
    if (const QLayout* layout = widget.layout()) {
        collect(*layout, controls);
    }
}

} // namespace

void tabInReadingOrder(QWidget& root)
{
    QWidgetList controls;
    collect(root, controls);
    for (qsizetype i = 1; i < controls.size(); ++i) {
        QWidget::setTabOrder(controls[i - 1], controls[i]);
    }
}

} // namespace zelvane
