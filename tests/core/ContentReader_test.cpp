#include "OrdovanCore/platform/ContentReader.h"

#include "OrdovanCore/Duplicates.h"
#include "OrdovanCore/platform/SystemFileSystem.h"
#include "tests/support/FailingCalls.h"
#include "tests/support/Results.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Unprivileged.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <string>

using ordovan::test::error;
using ordovan::test::FailingCall;
using ordovan::test::TempFolder;

// NOLINTBEGIN: the C library's names and signatures
ORDOVAN_FAILING(ssize_t, pread, (int file, void* bytes, size_t count, off_t at), file, bytes, count, at)
ORDOVAN_FAILING(ssize_t, preadv2, (int file, const iovec* pieces, int count, off_t at, int flags), file, pieces, count,
                at, flags)
ORDOVAN_FAILING(int, posix_fadvise, (int file, off_t at, off_t size, int advice) noexcept, file, at, size, advice)
// NOLINTEND

namespace {

/// The real disk, with the bytes read counted.
class CountingReader final : public OrdovanContentReading {
public:
    std::atomic<std::uint64_t> bytesRead = 0;

    OrdovanResult<std::unique_ptr<OrdovanOpenContent>> open(const Url& url) override {
        auto content = reader_.open(url);
        if (!content) return std::unexpected(content.error());
        return std::make_unique<Open>(std::move(*content), bytesRead);
    }

private:
    class Open final : public OrdovanOpenContent {
    public:
        Open(std::unique_ptr<OrdovanOpenContent> content, std::atomic<std::uint64_t>& bytesRead)
            : content_(std::move(content)), bytesRead_(bytesRead) {}
        [[nodiscard]] Identity identity() const override { return content_->identity(); }
        [[nodiscard]] std::uint64_t linkCount() const override { return content_->linkCount(); }
        OrdovanResult<std::size_t> read(std::int64_t offset, std::span<char> into) override {
            const auto got = content_->read(offset, into);
            if (got) bytesRead_ += *got;
            return got;
        }

    private:
        std::unique_ptr<OrdovanOpenContent> content_;
        std::atomic<std::uint64_t>& bytesRead_;
    };

    SystemContentReader reader_;
};

/// A file of zeros without extents, but for what it begins and ends with.
OrdovanInventoryEntry sparseFile(const TempFolder& folder, const std::string& name, std::int64_t size,
                                 const std::string& end) {
    const Url url = folder.write(name, "begin");
    const std::string path(url.path());
    EXPECT_EQ(::truncate(path.c_str(), size - static_cast<std::int64_t>(end.size())), 0);
    std::ofstream(path, std::ios::binary | std::ios::app) << end;
    return {.url = url, .byteSize = size};
}

}  // namespace

TEST(ContentReader, ReadsFromAnywhereInAFile) {
    const TempFolder folder;
    const auto content = SystemContentReader().open(folder.write("a", "0123456789")).value();
    std::string bytes(4, '\0');
    EXPECT_EQ(content->read(3, bytes), 4U);
    EXPECT_EQ(bytes, "3456");
    EXPECT_EQ(content->read(8, bytes), 2U);
    EXPECT_EQ(bytes, "8956");
    EXPECT_EQ(content->read(10, bytes), 0U);
    EXPECT_EQ(content->read(1000, bytes), 0U);
    EXPECT_EQ(error(content->read(-1, bytes)), EINVAL);
}

TEST(ContentReader, ReadsWithoutWaitingWhatIsAtHand) {
    const TempFolder folder;
    const auto content = SystemContentReader().open(folder.write("a", "0123456789")).value();
    std::string bytes(4, '\0');
    EXPECT_EQ(content->readAtHand(3, bytes), 4U);
    EXPECT_EQ(bytes, "3456");
    EXPECT_EQ(content->readAtHand(10, bytes), 0U);
    EXPECT_EQ(error(content->readAtHand(-1, bytes)), EINVAL);
}

TEST(ContentReader, HasWhatIsNotAtHandBroughtThereAndSaysSo) {
    const TempFolder folder;
    const auto content = SystemContentReader().open(folder.write("a", "0123456789")).value();
    std::string bytes(4, '\0');
    const FailingCall away("preadv2", EAGAIN);
    const FailingCall none("posix_fadvise", 0, 1000);
    EXPECT_EQ(error(content->readAtHand(3, bytes)), EAGAIN);
    EXPECT_EQ(none.calls(), 1);
    EXPECT_EQ(content->readAtHand(3, bytes), 4U);
    EXPECT_EQ(none.calls(), 1);
}

TEST(ContentReader, WaitsForWhatAFileSystemCanNotGiveWithoutWaiting) {
    const TempFolder folder;
    const auto content = SystemContentReader().open(folder.write("a", "0123456789")).value();
    std::string bytes(4, '\0');
    const FailingCall unknown("preadv2", EOPNOTSUPP);
    const FailingCall interrupted("pread", EINTR);
    EXPECT_EQ(content->readAtHand(3, bytes), 4U);
    EXPECT_EQ(bytes, "3456");
    EXPECT_EQ(interrupted.calls(), 2);
    const FailingCall failing("pread", EIO);
    EXPECT_EQ(error(content->read(3, bytes)), EIO);
}

TEST(ContentReader, TellsFilesApartAndHardLinksNot) {
    const TempFolder folder;
    const Url a = folder.write("a", ""), b = folder.write("b", ""), link = folder.url("link");
    ASSERT_EQ(::link(folder.path("a").c_str(), folder.path("link").c_str()), 0);
    SystemContentReader reader;
    EXPECT_EQ(reader.open(a).value()->identity(), reader.open(link).value()->identity());
    EXPECT_FALSE(reader.open(a).value()->identity() == reader.open(b).value()->identity());
    EXPECT_EQ(reader.open(a).value()->linkCount(), 2U);
    EXPECT_EQ(reader.open(b).value()->linkCount(), 1U);
}

TEST(ContentReader, RefusesWhatContentHashRefusesWithTheSameError) {
    const TempFolder folder;
    folder.write("file", "x");
    ASSERT_EQ(::mkfifo(folder.path("fifo").c_str(), 0644), 0);
    const Url items[] = {folder.makeLink("link", folder.path("file")),
                         folder.makeFolder("folder"),
                         folder.url("fifo"),
                         folder.url("missing"),
                         Url::file("relative"),
                         Url::file(std::string(5000, 'x'))};
    SystemContentReader reader;
    SystemFileSystem fs;
    for (const Url& item : items) {
        EXPECT_NE(error(reader.open(item)), 0) << item;
        EXPECT_EQ(error(reader.open(item)), error(fs.contentHash(item))) << item;
    }
}

TEST(ContentReader, RefusesAFileThatMayNotBeRead) {
    const TempFolder folder;
    const Url secret = folder.write("secret", "x");
    ASSERT_EQ(::chmod(folder.path("secret").c_str(), 0000), 0);
    ordovan::test::giveToUnprivileged(folder.path());
    const int refused = ordovan::test::unprivileged([&]() -> int { return error(SystemContentReader().open(secret)); });
    EXPECT_EQ(refused, EACCES);
}

TEST(ContentReader, FindsDuplicatesOfOver4GiBThatPartInTheirLastByteWithoutReadingThem) {
    const TempFolder folder;
    constexpr std::int64_t size = (std::int64_t{1} << 32) + 12'345;
    const std::vector<OrdovanInventoryEntry> files = {sparseFile(folder, "a", size, "1"),
                                                      sparseFile(folder, "b", size, "2")};
    ASSERT_EQ(std::filesystem::file_size(folder.path("a")), static_cast<std::uintmax_t>(size));
    CountingReader reader;
    EXPECT_EQ(OrdovanDuplicateFinder::find(files, reader, {}).value().groups.size(), 0U);
    EXPECT_EQ(reader.bytesRead, 2 * 8192U);
}

TEST(ContentReader, FindsEqualSparseFiles) {
    const TempFolder folder;
    std::vector<OrdovanInventoryEntry> files;
    for (const char* name : {"a", "b", "c"}) files.push_back(sparseFile(folder, name, 30'000'001, "end"));
    SystemContentReader reader;
    SystemFileSystem fs;
    const OrdovanDuplicateReport report = OrdovanDuplicateFinder::find(files, reader, {}).value();
    EXPECT_EQ(report.duplicateFileCount(), 3);
    EXPECT_EQ(report, OrdovanDuplicateFinder::find(files, fs));
}

TEST(ContentReader, FindsEqualSparseFilesOfOver4GiB) {
    // A file system in memory gives what was never written at once; any other fills the page cache with it.
    const TempFolder folder = ::access("/dev/shm", W_OK) == 0 ? TempFolder("/dev/shm") : TempFolder();
    constexpr std::int64_t size = (std::int64_t{1} << 32) + 12'345;
    const std::vector<OrdovanInventoryEntry> files = {sparseFile(folder, "a", size, "end"),
                                                      sparseFile(folder, "b", size, "end")};
    SystemContentReader reader;
    const OrdovanDuplicateReport report = OrdovanDuplicateFinder::find(files, reader, {}).value();
    ASSERT_EQ(report.groups.size(), 1U);
    // (printf begin; head -c 4294979633 /dev/zero; printf end) | sha256sum
    EXPECT_EQ(report.groups[0].contentHash, "aa85f29920ec539a21a10288507c09f3fd550449f65640a70c9d7991ca7056f8");
    EXPECT_EQ(report.reclaimableBytes(), size);
}

TEST(ContentReader, LeavesOutOfASearchWhatIsNoRegularFileAnyMore) {
    const TempFolder folder;
    std::vector<OrdovanInventoryEntry> files;
    for (const char* name : {"a", "b"}) files.push_back({.url = folder.write(name, "same"), .byteSize = 4});
    files.push_back({.url = folder.makeLink("link", folder.path("a")), .byteSize = 4});
    ASSERT_EQ(::mkfifo(folder.path("fifo").c_str(), 0644), 0);
    files.push_back({.url = folder.url("fifo"), .byteSize = 4});
    SystemContentReader reader;
    const OrdovanDuplicateReport report = OrdovanDuplicateFinder::find(files, reader, {}).value();
    ASSERT_EQ(report.groups.size(), 1U);
    EXPECT_EQ(report.groups[0].files, (std::vector{files[0].url, files[1].url}));
}
