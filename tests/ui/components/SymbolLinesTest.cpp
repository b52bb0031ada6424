#include "ui/components/SymbolLines.h"

#include "ui/UiFixture.h"

#include <gmock/gmock.h>

namespace zelvane::test {
namespace {

using ::testing::IsEmpty;

SymbolLine line(const QString& text)
{
    return {QStringLiteral("clock"), text};
}

class SymbolLinesTest : public UiTest
{
protected:
    void show(const QList<SymbolLine>& shown, int width = 480)
    {
        lines.setLines(shown);
        lines.resize(width, lines.heightForWidth(width));
        lines.show();
        QCoreApplication::processEvents();
        lines.resize(width, lines.heightForWidth(width));
        QCoreApplication::processEvents();
    }

    [[nodiscard]] QLabel* label(const QString& text) const
    {
        for (QLabel* each : lines.findChildren<QLabel*>()) {
            if (each->text() == text && each->isVisible()) {
                return each;
            }
        }
        return nullptr;
    }

    /// Where a text stands in the lines.
    [[nodiscard]] QRect place(const QString& text) const
    {
        const QLabel* found = label(text);
        return found ? QRect(found->mapTo(&lines, QPoint()), found->size()) : QRect();
    }

    /// The symbols that show, as places in the lines.
    [[nodiscard]] QList<QRect> symbols() const
    {
        QList<QRect> places;
        for (const QLabel* each : lines.findChildren<QLabel*>()) {
            if (each->isVisible() && !each->pixmap().isNull()) {
                places += QRect(each->mapTo(&lines, QPoint()), each->size());
            }
        }
        return places;
    }

    SymbolLines lines{theme};
    const QString amount = QStringLiteral("1.9 GB of 4.6 GB downloaded");
    const QString speed = QStringLiteral("11.5 MB/s");
    const QString rest = QStringLiteral("2.7 GB remaining");
    const QString silence = QStringLiteral("No network data for 0:42. Waiting to resume…");
};

TEST_F(SymbolLinesTest, standTwoBesideEachOtherInReadingOrder)
{
    show({line(amount), line(speed), line(rest)});
    EXPECT_EQ(place(amount).top(), place(speed).top());
    EXPECT_LT(place(amount).right(), place(speed).left());
    EXPECT_EQ(place(rest).left(), place(amount).left());
    EXPECT_GT(place(rest).top(), place(amount).bottom());
}

TEST_F(SymbolLinesTest, eachHasItsSymbolBeforeIt)
{
    show({line(amount), line(speed)});
    ASSERT_EQ(symbols().size(), 2);
    EXPECT_LT(symbols()[0].right(), place(amount).left());
    EXPECT_GT(symbols()[1].left(), place(amount).right());
    EXPECT_LT(symbols()[1].right(), place(speed).left());
}

TEST_F(SymbolLinesTest, aTextThatIsTooLongForAColumnHasARowToItself)
{
    show({line(amount), line(silence), line(speed)}, 400);
    EXPECT_EQ(place(silence).left(), place(amount).left());
    EXPECT_GT(place(silence).top(), place(amount).bottom());
    EXPECT_GT(place(speed).top(), place(silence).bottom());
    EXPECT_EQ(place(silence).height(), place(amount).height());
}

TEST_F(SymbolLinesTest, wrapWhereThereIsNoRoomAtAll)
{
    show({line(silence)}, 140);
    EXPECT_GT(place(silence).height(), 2 * lines.fontMetrics().height() - 2);
    EXPECT_LE(place(silence).right(), 140);
}

TEST_F(SymbolLinesTest, comeAndGo)
{
    show({line(amount), line(speed)});
    lines.setLines({line(rest)});
    EXPECT_EQ(label(speed), nullptr);
    EXPECT_NE(label(rest), nullptr);
    lines.setLines({});
    EXPECT_FALSE(lines.isVisible());
    EXPECT_THAT(symbols(), IsEmpty());
}

} // namespace
} // namespace zelvane::test
