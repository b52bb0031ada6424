#include "ui/components/OptionList.h"

#include "ui/components/ListRow.h"
#include "ui/components/SlimScrollBar.h"
#include "ui/components/Styling.h"
#include "ui/style/ViewStyles.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyledItemDelegate>

namespace zelvane {

namespace {

constexpr int rowPadding = 11;

} // namespace

class OptionList::Options final : public QAbstractListModel
{
public:
    using QAbstractListModel::QAbstractListModel;

    void reset(const QList<ListOption>& options)
    {
        beginResetModel();
        m_options = options;
        endResetModel();
    }

    [[nodiscard]] const ListOption& at(int row) const { return m_options[row]; }

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override
    {
        return parent.isValid() ? 0 : int(m_options.size());
    }

    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override
    {
        const bool isText = role == Qt::DisplayRole || role == Qt::AccessibleTextRole;
        return isText ? QVariant(m_options[index.row()].text) : QVariant();
    }

private:
    QList<ListOption> m_options;
};

class OptionList::Painter final : public QStyledItemDelegate
{
public:
    Painter(const Theme& theme, OptionList& list)
        : QStyledItemDelegate(&list)
        , m_theme(theme)
        , m_list(list)
    {
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& item,
               const QModelIndex& index) const override
    {
        const ThemeColors& colors = m_theme.colors();
        const bool hovered = item.state.testFlag(QStyle::State_MouseOver);
        const bool current = index.row() == m_list.currentRow();
        TranslatorListRowButtonStyle{.isSelected = current,
                                     .hovering = hovered && !current,
                                     .tweaker = m_theme.tokens(),
                                     .reduceMotion = true}
            .paint(*painter, item.rect, colors);
        const ListOption& option = m_list.m_options->at(index.row());
        painter->setFont(m_list.font());
        paintRowContent(*painter, item.rect,
                        {.symbol = option.symbol,
                         .text = option.text,
                         .trailing = {},
                         .trailingSymbol = option.trailingSymbol,
                         .color = colors.text,
                         .trailingColor = colors.link},
                        item.direction);
    }

    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const override
    {
        return {60, m_list.fontMetrics().height() + rowPadding};
    }

private:
    const Theme& m_theme;
    OptionList& m_list;
};

OptionList::OptionList(const Theme& theme, QWidget* parent)
    : QListView(parent)
    , m_theme(theme)
    , m_options(new Options(this))
    , m_bar(new SlimScrollBar(theme, this))
{
    setModel(m_options);
    setItemDelegate(new Painter(theme, *this));
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setUniformItemSizes(true);
    setMouseTracking(true);
    viewport()->setAutoFillBackground(false);
    m_bar->follow(*verticalScrollBar());
    connect(this, &QListView::clicked, this,
            [this](const QModelIndex& index) { Q_EMIT chosen(index.row()); });
    keepStyled(*this, theme, [this] {
        setFont(m_theme.font(StyleFontRole::body));
        verticalScrollBar()->setSingleStep(fontMetrics().height() + rowPadding);
        viewport()->update();
    });
}

OptionList::~OptionList() = default;

void OptionList::setOptions(const QList<ListOption>& options)
{
    m_options->reset(options);
}

int OptionList::count() const
{
    return m_options->rowCount();
}

void OptionList::setCurrentRow(int row)
{
    const bool wasOutside = currentRow() < 0;
    const QModelIndex index = m_options->index(row);
    setCurrentIndex(index);
    scrollTo(index,
             wasOutside ? QAbstractItemView::PositionAtCenter : QAbstractItemView::EnsureVisible);
    viewport()->update();
}

void OptionList::resizeEvent(QResizeEvent* event)
{
    QListView::resizeEvent(event);
    const int barWidth = m_bar->sizeHint().width();
    m_bar->setGeometry(QStyle::visualRect(layoutDirection(), rect(),
                                          QRect(width() - barWidth, 0, barWidth, height())));
}

void OptionList::keyPressEvent(QKeyEvent* event)
{
    const bool chooses = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (chooses && currentRow() >= 0) {
        Q_EMIT chosen(currentRow());
        return;
    }
    if (event->key() == Qt::Key_Escape) {
        event->ignore(); // the popover around it
        return;
    }
    QListView::keyPressEvent(event);
}

} // namespace zelvane
