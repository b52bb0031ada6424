#include "desktop/linux/SelectionReader.h"

#include "ForeignClipboard.h"
#include "foundation/SystemClock.h"
#include "support/Await.h"
#include "support/DesktopSession.h"
#include "support/QtPrinters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using Delivery = ForeignValue::Delivery;
using Failure = SelectionReader::Failure;

constexpr qsizetype largest = 300'000;

ForeignValue value(qsizetype size, Delivery delivery)
{
    return {"data", 8, QByteArray(size, 'x'), delivery};
}

/// A reader that takes little, on this thread, and an owner with more than that.
class SelectionReaderTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        auto opened = XcbConnection::open(desktop.display(), {});
        ASSERT_TRUE(opened);
        connection = std::move(*opened);
        reader = std::make_unique<SelectionReader>(*connection, clock,
                                                   connection->atom("CLIPBOARD"), largest);
        events = std::make_unique<XcbEvents>(
            *connection, [this](const xcb_generic_event_t& event) { reader->handle(event); },
            [this] { reader->abandonAll(); });
        owner = std::make_unique<ForeignOwner>(
            desktop.display(),
            ForeignOwner::Content{{"fits/pieces", value(largest, Delivery::inPieces)},
                                  {"fits/whole", value(largest, Delivery::atOnce)},
                                  {"huge/pieces", value(2 * largest, Delivery::inPieces)},
                                  {"huge/whole", value(largest + 4, Delivery::atOnce)},
                                  {"never", value(1, Delivery::never)}});
    }

    SelectionReader::Result read(const QByteArray& target)
    {
        return await(reader->read(target, 500ms));
    }

    DesktopSession desktop{{.windowManager = false}};
    SystemClock clock;
    std::unique_ptr<XcbConnection> connection;
    std::unique_ptr<SelectionReader> reader;
    std::unique_ptr<XcbEvents> events;
    std::unique_ptr<ForeignOwner> owner;
};

TEST_F(SelectionReaderTest, aFormatUpToTheLimitIsRead)
{
    EXPECT_EQ(read("fits/whole")->bytes.size(), largest);
    EXPECT_EQ(read("fits/pieces")->bytes.size(), largest);
}

TEST_F(SelectionReaderTest, aFormatBeyondTheLimitIsLeftAlone)
{
    EXPECT_EQ(read("huge/whole").error(), Failure::tooLarge);
    EXPECT_EQ(read("huge/pieces").error(), Failure::tooLarge);
    // The pieces that still come don't get into what is read next.
    EXPECT_EQ(read("fits/whole")->bytes, QByteArray(largest, 'x'));
}

TEST_F(SelectionReaderTest, theOtherFormatsAreKeptBesideOneThatIsTooLarge)
{
    const auto content = await(reader->readAll());
    ASSERT_TRUE(content);
    EXPECT_THAT(content->keys(), ElementsAre("fits/pieces", "fits/whole"));
}

TEST_F(SelectionReaderTest, anUnknownFormatIsRefusedAndAPromisedOneIsSilent)
{
    EXPECT_EQ(read("unknown").error(), Failure::refused);
    EXPECT_EQ(read("never").error(), Failure::silent);
}

TEST_F(SelectionReaderTest, aLateAnswerIsNotTakenForThatToALaterQuestion)
{
    owner->freeze();
    EXPECT_EQ(await(reader->read("huge/pieces", 50ms)).error(), Failure::silent);
    owner->thaw();
    EXPECT_EQ(read("fits/pieces")->bytes.size(), largest);
    EXPECT_EQ(read("fits/whole")->bytes.size(), largest);
}

TEST_F(SelectionReaderTest, aClipboardWithoutAnOwnerRefuses)
{
    owner.reset();
    EXPECT_EQ(read("fits/whole").error(), Failure::refused);
}

TEST_F(SelectionReaderTest, aServerThatEndsEndsTheWait)
{
    const auto end = clock.callLater(50ms, [this] { desktop.killServer(); });
    EXPECT_EQ(await(reader->read("never", 5s), 2s).error(), Failure::silent);
    EXPECT_EQ(read("fits/whole").error(), Failure::silent);
}

} // namespace
} // namespace zelvane::test
