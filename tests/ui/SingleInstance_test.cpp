#include "OrdovanApp/screens/SingleInstance.h"

#include "tests/support/TempFolder.h"
#include "tests/support/WidgetTestMain.h"

#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <memory>

namespace {

using namespace std::chrono_literals;
using ordovan::test::TempFolder;
using Outcome = SingleInstance::Outcome;
using Wish = SingleInstance::Wish;

const auto nothing = [] {};

class SingleInstances : public ::testing::Test {
protected:
    [[nodiscard]] QString base() const { return QString::fromStdString(temporary_.path()); }
    [[nodiscard]] std::optional<QString> meeting() const {
        return SingleInstance::meetingFolder(base(), base(), QStringLiteral(":0"));
    }
    /// A second start on a thread of its own, while this thread serves the first.
    Outcome startBeside(SingleInstance& first, const Wish& wish, std::vector<Wish>& heard) {
        QObject::connect(&first, &SingleInstance::wished, &first, [&](const Wish& each) { heard.push_back(each); });
        Outcome outcome = Outcome::first;
        QEventLoop loop;
        const std::unique_ptr<QThread> thread(QThread::create([&] {
            SingleInstance second(meeting());
            outcome = second.start(wish, 5s, nothing);
        }));
        QObject::connect(thread.get(), &QThread::finished, &loop, &QEventLoop::quit);
        thread->start();
        loop.exec();
        thread->wait();
        return outcome;
    }

private:
    TempFolder temporary_;
};

TEST_F(SingleInstances, TheFirstHasTheFolderToItself) {
    SingleInstance first(meeting());
    EXPECT_EQ(first.start({}, 0ms, nothing), Outcome::first);
    EXPECT_TRUE(first.listen());
}

TEST_F(SingleInstances, ASecondHandsItsFolderOverByteForByte) {
    SingleInstance first(meeting());
    ASSERT_EQ(first.start({}, 0ms, nothing), Outcome::first);
    ASSERT_TRUE(first.listen());
    std::vector<Wish> heard;
    EXPECT_EQ(startBeside(first, {Url::file("/mnt/caf\xE9 x"), "token"}, heard), Outcome::handedOver);
    ASSERT_EQ(heard.size(), 1U);
    EXPECT_EQ(heard[0].folder, Url::file("/mnt/caf\xE9 x"));
    EXPECT_EQ(heard[0].activationToken, "token");
}

TEST_F(SingleInstances, ASecondWithoutAFolderOnlyBringsTheWindowForward) {
    SingleInstance first(meeting());
    ASSERT_EQ(first.start({}, 0ms, nothing), Outcome::first);
    ASSERT_TRUE(first.listen());
    std::vector<Wish> heard;
    EXPECT_EQ(startBeside(first, {}, heard), Outcome::handedOver);
    ASSERT_EQ(heard.size(), 1U);
    EXPECT_FALSE(heard[0].folder);
}

TEST_F(SingleInstances, AFolderWaitsForAFirstThatIsBusy) {
    SingleInstance first(meeting());
    ASSERT_EQ(first.start({}, 0ms, nothing), Outcome::first);
    ASSERT_TRUE(first.listen());
    {
        // The first does not look at its events meanwhile, and the second gives up waiting and ends.
        SingleInstance second(meeting());
        ASSERT_EQ(second.start({Url::file("/late"), {}}, 20ms, nothing), Outcome::queued);
    }
    std::vector<Wish> heard;
    QEventLoop loop;
    QObject::connect(&first, &SingleInstance::wished, &loop, [&](const Wish& wish) {
        heard.push_back(wish);
        loop.quit();
    });
    loop.exec();
    ASSERT_EQ(heard.size(), 1U);
    EXPECT_EQ(heard[0].folder, Url::file("/late"));
}

TEST_F(SingleInstances, TheSocketOfACrashedOneBlocksNobody) {
    const QString socket = *meeting() + QStringLiteral("/window");
    QFile left(socket);
    ASSERT_TRUE(left.open(QFile::WriteOnly));
    left.close();
    SingleInstance first(meeting());
    EXPECT_EQ(first.start({}, 0ms, nothing), Outcome::first);
    EXPECT_TRUE(first.listen());
}

TEST_F(SingleInstances, TheNextIsFirstWhenTheFirstHasEnded) {
    auto first = std::make_unique<SingleInstance>(meeting());
    ASSERT_EQ(first->start({}, 0ms, nothing), Outcome::first);
    ASSERT_TRUE(first->listen());
    first.reset();
    SingleInstance next(meeting());
    EXPECT_EQ(next.start({}, 0ms, nothing), Outcome::first);
}

TEST_F(SingleInstances, ASecondTakesOverFromAFirstThatIsEnding) {
    auto first = std::make_unique<SingleInstance>(meeting());
    ASSERT_EQ(first->start({}, 0ms, nothing), Outcome::first);
    SingleInstance second(meeting());
    // Nobody listens; the lock is released between the second's first try and its next.
    EXPECT_EQ(second.start({}, 5s, [&] { first.reset(); }), Outcome::first);
}

TEST_F(SingleInstances, AFirstThatCanNotBeReachedIsReported) {
    SingleInstance first(meeting());
    ASSERT_EQ(first.start({}, 0ms, nothing), Outcome::first);
    SingleInstance second(meeting());
    EXPECT_EQ(second.start({}, 0ms, nothing), Outcome::unanswered);
}

TEST_F(SingleInstances, EveryoneStandsAloneWhereThereIsNoFolderToMeetIn) {
    SingleInstance first(std::nullopt);
    SingleInstance second(std::nullopt);
    EXPECT_EQ(first.start({}, 0ms, nothing), Outcome::first);
    EXPECT_EQ(second.start({}, 0ms, nothing), Outcome::first);
    EXPECT_FALSE(second.listen());
}

TEST_F(SingleInstances, MeetInAPrivateFolder) {
    const auto permissions = QFileInfo(*meeting()).permissions();
    EXPECT_FALSE(permissions & (QFile::ReadGroup | QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther));
}

TEST_F(SingleInstances, DoNotMeetAcrossDisplays) {
    EXPECT_NE(meeting(), SingleInstance::meetingFolder(base(), base(), QStringLiteral(":1")));
}

TEST_F(SingleInstances, MeetInTheTemporaryFolderWithoutARuntimeFolder) {
    const auto folder = SingleInstance::meetingFolder({}, base(), QStringLiteral(":0"));
    ASSERT_TRUE(folder);
    EXPECT_TRUE(folder->startsWith(base() + QStringLiteral("/ordovan-")));
}

TEST_F(SingleInstances, DoNotMeetInAFolderThatOthersCanEnter) {
    ASSERT_TRUE(QDir().mkdir(base() + QStringLiteral("/ordovan"),
                             QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ExeOther));
    EXPECT_EQ(SingleInstance::meetingFolder(base(), QStringLiteral("/no/such/folder"), QStringLiteral(":0")),
              std::nullopt);
}

TEST_F(SingleInstances, DoNotMeetBehindALink) {
    ASSERT_TRUE(
        QDir().mkdir(base() + QStringLiteral("/elsewhere"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    ASSERT_TRUE(QFile::link(base() + QStringLiteral("/elsewhere"), base() + QStringLiteral("/ordovan")));
    EXPECT_EQ(SingleInstance::meetingFolder(base(), QStringLiteral("/no/such/folder"), QStringLiteral(":0")),
              std::nullopt);
}

TEST_F(SingleInstances, MeetElsewhereWhereTheSocketsNameWouldBeTooLong) {
    const QString deep = base() + u'/' + QString(120, u'x');
    ASSERT_TRUE(QDir().mkdir(deep));
    const auto folder = SingleInstance::meetingFolder(deep, base(), QStringLiteral(":0"));
    ASSERT_TRUE(folder);
    EXPECT_TRUE(folder->startsWith(base() + QStringLiteral("/ordovan-")));
}

}  // namespace
