#include "ui/onboarding/HeroDrawing.h"

#include "settings/Localization.h"
#include "ui/UiFixture.h"
#include "ui/style/Symbols.h"

#include <gmock/gmock.h>

#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainter>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;

/// Notes what is drawn on it.
class Notebook final : public QPaintDevice
{
    class Engine final : public QPaintEngine
    {
    public:
        explicit Engine(Notebook& notebook)
            : QPaintEngine(AllFeatures)
            , m_notebook(notebook)
        {
        }

        bool begin(QPaintDevice*) override { return true; }
        bool end() override { return true; }
        void updateState(const QPaintEngineState&) override {}
        [[nodiscard]] Type type() const override { return User; }
        void drawPath(const QPainterPath&) override {}
        void drawPolygon(const QPointF*, int, PolygonDrawMode) override {}
        void drawPixmap(const QRectF&, const QPixmap& pixmap, const QRectF&) override
        {
            m_notebook.pictures.append(pixmap.toImage());
        }
        void drawTextItem(const QPointF& place, const QTextItem& item) override
        {
            // A line comes in pieces where its typeface lacks letters.
            if (!m_notebook.words.isEmpty() && (place - m_end).manhattanLength() < 1) {
                m_notebook.words.last() += item.text();
            } else {
                m_notebook.words += item.text();
            }
            m_end = place + QPointF(item.width(), 0);
        }

    private:
        QPointF m_end;
        Notebook& m_notebook;
    };

public:
    [[nodiscard]] QPaintEngine* paintEngine() const override { return &m_engine; }

    QStringList words;
    QList<QImage> pictures;

protected:
    [[nodiscard]] int metric(PaintDeviceMetric metric) const override
    {
        switch (metric) {
        case PdmWidth:
        case PdmHeight:
        case PdmWidthMM:
        case PdmHeightMM:
            return 500;
        case PdmDpiX:
        case PdmDpiY:
        case PdmPhysicalDpiX:
        case PdmPhysicalDpiY:
            return 96;
        case PdmDepth:
            return 32;
        case PdmDevicePixelRatio:
            return 1;
        case PdmDevicePixelRatioScaled:
            return int(devicePixelRatioFScale());
        default:
            return 0;
        }
    }

private:
    mutable Engine m_engine{*this};
};

/// What is drawn where there is more than nothing, whatever its colour.
QImage shapeOf(const QImage& picture)
{
    return picture.convertToFormat(QImage::Format_ARGB32_Premultiplied)
        .convertToFormat(QImage::Format_Alpha8);
}

/// Whether two pictures have the same shape, as strong as they may be.
bool sameShape(const QImage& left, const QImage& right)
{
    const QImage one = shapeOf(left);
    const QImage other = shapeOf(right);
    if (one.size() != other.size()) {
        return false;
    }
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            if ((one.pixelColor(x, y).alpha() > 0) != (other.pixelColor(x, y).alpha() > 0)) {
                return false;
            }
        }
    }
    return true;
}

class HeroDrawing : public ::testing::Test
{
protected:
    void draw(OnboardingIllustration illustration)
    {
        QPainter painter(&notebook);
        drawHero(painter, illustration, 1);
    }

    /// The symbols among these that were drawn.
    QStringList symbols() const
    {
        QStringList found;
        for (const char* name : {"globe", "sparkles", "brain.head.profile", "wifi.slash",
                                 "arrow.down", "doc.on.doc", "arrow.down.circle.fill", "applelogo",
                                 "wifi", "battery.100", "arrow.up", "accessibility"}) {
            const QString symbol = QString::fromLatin1(name);
            for (const QImage& picture : notebook.pictures) {
                const QImage expected =
                    symbolPixmap(symbol, Qt::white, picture.width(), 1).toImage();
                if (sameShape(picture, expected)) {
                    found += symbol;
                }
            }
        }
        return found;
    }

    Notebook notebook;
};

TEST_F(HeroDrawing, aConversationAroundTheModel)
{
    draw(OnboardingIllustration::aiOnline);
    EXPECT_THAT(notebook.words, ElementsAre(QStringLiteral("Hello"), QStringLiteral("Bonjour")));
    EXPECT_THAT(symbols(), UnorderedElementsAre(QStringLiteral("globe"), QStringLiteral("sparkles"),
                                                QStringLiteral("brain.head.profile")));
}

TEST_F(HeroDrawing, theEnginesWithoutANetwork)
{
    draw(OnboardingIllustration::offline);
    EXPECT_THAT(notebook.words, ElementsAre(QStringLiteral("Smart"), QStringLiteral("Balanced"),
                                            QStringLiteral("Fast")));
    EXPECT_THAT(symbols(), ElementsAre(QStringLiteral("wifi.slash")));
}

TEST_F(HeroDrawing, aSelectionAndItsReplacement)
{
    draw(OnboardingIllustration::replaceSelection);
    EXPECT_THAT(notebook.words, ElementsAre(QStringLiteral("Selecciona esto"),
                                            QStringLiteral("Replace with this")));
    EXPECT_THAT(symbols(), ElementsAre(QStringLiteral("arrow.down")));
}

TEST_F(HeroDrawing, aResultThatCanBeCopied)
{
    draw(OnboardingIllustration::resultWindow);
    EXPECT_THAT(notebook.words,
                ElementsAre(QStringLiteral("Translation"), QStringLiteral("The quick brown fox…")));
    EXPECT_THAT(symbols(), ElementsAre(QStringLiteral("doc.on.doc")));
}

TEST_F(HeroDrawing, aTextAndItsTranslation)
{
    draw(OnboardingIllustration::classicTranslator);
    EXPECT_THAT(notebook.words,
                ElementsAre(QStringLiteral("Text to translate"), QStringLiteral("Translation")));
    EXPECT_THAT(symbols(), ElementsAre(QStringLiteral("arrow.down.circle.fill")));
}

TEST_F(HeroDrawing, aBarWithTheProgramsIcon)
{
    draw(OnboardingIllustration::menuBar);
    EXPECT_THAT(notebook.words, ElementsAre(QStringLiteral("File"), QStringLiteral("Edit"),
                                            QStringLiteral("Menu bar")));
    EXPECT_THAT(symbols(),
                UnorderedElementsAre(QStringLiteral("applelogo"), QStringLiteral("wifi"),
                                     QStringLiteral("battery.100"), QStringLiteral("arrow.up")));
    EXPECT_EQ(notebook.pictures.size(), 5); // and the program's own
}

TEST_F(HeroDrawing, wherePermissionIsGiven)
{
    draw(OnboardingIllustration::accessibility);
    EXPECT_THAT(notebook.words, ElementsAre(QStringLiteral("Privacy & Security → Accessibility")));
    EXPECT_THAT(symbols(), ElementsAre(QStringLiteral("accessibility")));
}

TEST_F(HeroDrawing, speaksTheLanguageOfTheInterface)
{
    OverlayUserDefaults defaults;
    defaults.setValue(QStringLiteral("zv.appLanguage"), QStringLiteral("de"));
    installLocalization(&defaults, {});
    draw(OnboardingIllustration::classicTranslator);
    EXPECT_THAT(notebook.words, ElementsAre(QStringLiteral("Zu übersetzender Text"),
                                            QStringLiteral("Übersetzung")));
    installLocalization(nullptr);
}

} // namespace
} // namespace zelvane::test
