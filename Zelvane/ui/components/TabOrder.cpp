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
        return;
    }
    for (QWidget* child : widget.findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        if (!child->isWindow()) {
            collect(*child, controls);
        }
    }
}

} // namespace

void tabInReadingOrder(QWidget& root)
{
    QWidgetList controls;
    collect(root, controls);
    if (controls.isEmpty()) {
        return;
    }
    // The chain is a ring: without its beginning it might begin anywhere.
    const Qt::FocusPolicy policy = root.focusPolicy();
    root.setFocusPolicy(Qt::TabFocus); // Qt moves nothing behind what can't have the focus
    QWidget::setTabOrder(&root, controls.first());
    root.setFocusPolicy(policy);
    for (qsizetype i = 1; i < controls.size(); ++i) {
        QWidget::setTabOrder(controls[i - 1], controls[i]);
    }
}

} // namespace zelvane
