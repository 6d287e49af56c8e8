#include "OrdovanApp/screens/QuickLook.h"

#include "OrdovanCore/testing/MemoryContentReader.h"
#include "tests/support/ScreenWorld.h"
#include "tests/support/WidgetTestMain.h"

#include <gmock/gmock.h>

#include <QBuffer>
#include <QLabel>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QTest>

using namespace ordovan::test;
using namespace Qt::StringLiterals;
using ::testing::Contains;
using ::testing::IsSupersetOf;

namespace {

using Kind = FilePreview::Kind;
constexpr QSize room(400, 400);

std::string png(int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::red);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes.toStdString();
}

FilePreview previewOf(std::string bytes, bool isWhole = true) {
    return FilePreview::of({.bytes = std::move(bytes), .isWhole = isWhole, .couldRead = true}, room);
}

class QuickLookWindow : public ScreenWorld {
protected:
    void SetUp() override {
        contents = &reader;
        model = make();
        look = std::make_unique<QuickLook>(context(), nullptr);
    }
    void show(const std::string& path, std::int64_t size = 0, std::optional<double> modified = {}) {
        look->showFile({.url = Url::file(path), .byteSize = size, .modifiedEpoch = modified}, Url::file("/r"));
    }
    QString message() {
        const auto* label = look->findChild<QLabel*>(u"quickLookMessage"_s);
        return label->isVisible() ? label->text() : QString();
    }
    QPlainTextEdit& text() { return *look->findChild<QPlainTextEdit*>(u"quickLookText"_s); }
    QWidget& picture() { return *look->findChild<QWidget*>(u"quickLookPicture"_s); }

    ordovan::testing::MemoryContentReader reader;
    std::unique_ptr<QuickLook> look;
};

}  // namespace

// The inside of files.

TEST(FilePreview, ScalesAPictureDownToItsRoomAndNeverUp) {
    EXPECT_EQ(previewOf(png(1000, 500)).picture.size(), QSize(400, 200));
    EXPECT_EQ(previewOf(png(20, 10)).picture.size(), QSize(20, 10));
    EXPECT_EQ(previewOf(png(2000, 1)).picture.size(), QSize(400, 1));
}

TEST(FilePreview, ReadsTextOfAnyEncodingThatTellsWhichItIs) {
    EXPECT_EQ(previewOf("na\xc3\xafve\n").text, u"naïve\n"_s);
    EXPECT_EQ(previewOf(std::string("\xff\xfe"
                                    "h\0i\0",
                                    6))
                  .text,
              u"hi"_s);
    EXPECT_EQ(previewOf("na\xefve").text, u"naïve"_s);
}

TEST(FilePreview, LeavesOutACharacterThatIsCutOff) {
    const FilePreview preview = previewOf("abc\xc3", false);
    EXPECT_EQ(preview.kind, Kind::text);
    EXPECT_EQ(preview.text, u"abc"_s);
    EXPECT_FALSE(preview.isWhole);
}

TEST(FilePreview, TakesBytesThatAreNoTextForNone) {
    EXPECT_EQ(previewOf(std::string("PK\3\4\0\0", 6)).kind, Kind::none);
    EXPECT_EQ(previewOf("\x89PNG but not really").kind, Kind::text);
    EXPECT_EQ(previewOf(png(10, 10).substr(0, 30)).kind, Kind::none);
}

TEST(FilePreview, ShowsADrawingThatCouldReferToOtherFilesAsText) {
    EXPECT_EQ(previewOf("<svg xmlns='http://www.w3.org/2000/svg'><image href='/dev/zero'/></svg>").kind, Kind::text);
}

TEST(FilePreview, TellsEmptyAndUnreadableFilesApart) {
    EXPECT_EQ(previewOf("").kind, Kind::empty);
    EXPECT_EQ(FilePreview::of({}, room).kind, Kind::unreadable);
}

TEST(FilePreview, WantsAllOfAPictureButLittleOfAnythingElse) {
    EXPECT_EQ(FilePreview::bytesWanted(Url::file("/r/a.JPG")), std::size_t{64} << 20);
    EXPECT_EQ(FilePreview::bytesWanted(Url::file("/r/a.txt")), std::size_t{64} << 10);
    EXPECT_EQ(FilePreview::bytesWanted(Url::file("/r/a.mov")), std::size_t{64} << 10);
}

// The window.

TEST_F(QuickLookWindow, TellsTheFactsBeforeTheFileIsRead) {
    show("/r/sub/holiday.mov", 8'200'000'000, 1'763'725'000);
    EXPECT_TRUE(look->isVisible());
    EXPECT_EQ(look->windowTitle(), u"holiday.mov"_s);
    EXPECT_THAT(texts(*look), IsSupersetOf({u"holiday.mov"_s, u"Kind"_s, u"Videos"_s, u"Size"_s, u"8.2 GB"_s,
                                            u"Last changed"_s, u"Where"_s, u"r / sub"_s}));
    EXPECT_EQ(message(), QString());
    EXPECT_EQ(reader.opens(), 0U);
}

TEST_F(QuickLookWindow, ShowsAPicture) {
    reader.write("/r/a.png", png(30, 20));
    show("/r/a.png");
    tasks.finish();
    EXPECT_TRUE(picture().isVisible());
    EXPECT_EQ(picture().accessibleName(), u"Picture: a.png"_s);
}

TEST_F(QuickLookWindow, ShowsTheBeginningOfAText) {
    reader.write("/r/a.log", std::string(100'000, 'x'));
    show("/r/a.log");
    tasks.finish();
    EXPECT_TRUE(text().isVisible());
    EXPECT_EQ(text().toPlainText().size(), 64 * 1024);
    EXPECT_THAT(texts(*look), Contains(u"Only the beginning of this file is shown."_s));
    EXPECT_LE(reader.bytesRead(), 64U * 1024 + 1);
}

TEST_F(QuickLookWindow, SaysWhatCanNotBeShown) {
    reader.write("/r/empty", "");
    reader.write("/r/binary", std::string(10, '\0'));
    reader.failOpening("/r/pipe", EINVAL);
    show("/r/empty");
    tasks.finish();
    EXPECT_EQ(message(), u"This file is empty."_s);
    show("/r/binary");
    tasks.finish();
    EXPECT_EQ(message(), u"There is no preview for this kind of file."_s);
    show("/r/pipe");
    tasks.finish();
    EXPECT_EQ(message(), u"This file can't be read right now."_s);
}

TEST_F(QuickLookWindow, ShowsOnlyTheLastFileItWasTurnedTo) {
    reader.write("/r/a.txt", "first");
    reader.write("/r/b.txt", "second");
    reader.write("/r/c.txt", "third");
    show("/r/a.txt");
    show("/r/b.txt");
    show("/r/c.txt");
    EXPECT_EQ(tasks.waiting(), 1U);
    tasks.finish();
    EXPECT_EQ(text().toPlainText(), u"third"_s);
    EXPECT_EQ(reader.opens(), 1U);
}

TEST_F(QuickLookWindow, ClosesWithSpaceAndEscape) {
    reader.write("/r/a.txt", "first");
    for (const auto key : {Qt::Key_Space, Qt::Key_Escape}) {
        show("/r/a.txt");
        QTest::keyClick(look.get(), key);
        EXPECT_FALSE(look->isVisible());
        tasks.finish();
        EXPECT_EQ(reader.opens(), 0U);
    }
}

TEST_F(QuickLookWindow, HandsOnTheKeysThatMoveThroughAList) {
    show("/r/a.txt");
    QSignalSpy steered(look.get(), &QuickLook::steered);
    for (const auto key : {Qt::Key_Up, Qt::Key_Down, Qt::Key_Home, Qt::Key_End, Qt::Key_A}) {
        QTest::keyClick(look.get(), key);
    }
    ASSERT_EQ(steered.size(), 4);
    EXPECT_EQ(steered[1][0].toInt(), Qt::Key_Down);
}

TEST_F(QuickLookWindow, MayGoBeforeItsFileIsRead) {
    reader.write("/r/a.txt", "first");
    show("/r/a.txt");
    look.reset();
    tasks.finish();
    EXPECT_EQ(tasks.waiting(), 0U);
}
