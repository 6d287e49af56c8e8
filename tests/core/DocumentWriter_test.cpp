#include "OrdovanCore/platform/DocumentWriter.h"

#include "tests/support/Flushes.h"
#include "tests/support/Results.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Unprivileged.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <string>

using ordovan::writeDocument;
using ordovan::test::error;
using ordovan::test::Flushes;
using ordovan::test::TempFolder;

namespace {

unsigned modeOf(const std::string& path) {
    struct ::stat facts{};
    EXPECT_EQ(::stat(path.c_str(), &facts), 0) << path;
    return facts.st_mode & 07777;
}

TEST(DocumentWriter, WritesANewFileThatOthersMayReadAsTheUmaskAllows) {
    const TempFolder t;
    const ::mode_t before = ::umask(027);
    EXPECT_TRUE(writeDocument(t.url("plan.md"), "text"));
    ::umask(before);
    EXPECT_EQ(t.read("plan.md"), "text");
    EXPECT_EQ(modeOf(t.path("plan.md")), 0640u);
    EXPECT_EQ(t.count(), 1u);
}

TEST(DocumentWriter, ReplacesAFileAndKeepsItsPermissions) {
    const TempFolder t;
    t.write("plan.md", "a much longer text than the new one");
    ::chmod(t.path("plan.md").c_str(), 0604);
    EXPECT_TRUE(writeDocument(t.url("plan.md"), "text"));
    EXPECT_EQ(t.read("plan.md"), "text");
    EXPECT_EQ(modeOf(t.path("plan.md")), 0604u);
}

TEST(DocumentWriter, ReplacesTheFileThatALinkLeadsTo) {
    const TempFolder t;
    t.write("elsewhere/real.md", "old");
    t.makeLink("plan.md", "elsewhere/real.md");
    EXPECT_TRUE(writeDocument(t.url("plan.md"), "text"));
    EXPECT_EQ(t.read("elsewhere/real.md"), "text");
    EXPECT_EQ(t.read("plan.md"), "text");
    EXPECT_EQ(t.count("elsewhere"), 1u);
}

TEST(DocumentWriter, TakesANameThatIsNotUtf8) {
    const TempFolder t;
    EXPECT_TRUE(writeDocument(t.url("caf\xe9.csv"), "text"));
    EXPECT_EQ(t.read("caf\xe9.csv"), "text");
}

TEST(DocumentWriter, RefusesWhatIsNoFile) {
    const TempFolder t;
    t.makeFolder("folder");
    ASSERT_EQ(::mkfifo(t.path("fifo").c_str(), 0600), 0);
    t.makeLink("to-fifo", "fifo");
    t.makeLink("dangling", "nowhere");
    EXPECT_EQ(error(writeDocument(t.url("folder"), "text")), EISDIR);
    EXPECT_EQ(error(writeDocument(t.url("fifo"), "text")), EINVAL);
    EXPECT_EQ(error(writeDocument(t.url("to-fifo"), "text")), EINVAL);
    EXPECT_EQ(error(writeDocument(t.url("dangling"), "text")), EINVAL);
    EXPECT_EQ(t.count(), 4u);
}

TEST(DocumentWriter, MakesNoFolders) {
    const TempFolder t;
    t.write("file", "");
    EXPECT_EQ(error(writeDocument(t.url("missing/plan.md"), "text")), ENOENT);
    EXPECT_EQ(error(writeDocument(t.url("file/plan.md"), "text")), ENOTDIR);
    EXPECT_EQ(error(writeDocument(Url::file("plan.md"), "text")), EINVAL);
    EXPECT_EQ(t.count(), 1u);
}

TEST(DocumentWriter, LeavesAProtectedFileAlone) {
    const TempFolder t;
    t.write("plan.md", "old");
    ::chmod(t.path("plan.md").c_str(), 0444);
    ordovan::test::giveToUnprivileged(t.path());
    EXPECT_EQ(ordovan::test::errorUnprivileged([&] { return writeDocument(t.url("plan.md"), "text"); }), EACCES);
    EXPECT_EQ(t.read("plan.md"), "old");
    EXPECT_EQ(t.count(), 1u);
}

TEST(DocumentWriter, LeavesTheOldFileAndNoHalfOneWhenTheDiskIsFull) {
    const TempFolder t;
    t.write("plan.md", "old");
    ordovan::test::giveToUnprivileged(t.path());
    const int code = ordovan::test::errorUnprivileged([&] {
        const ::rlimit tiny = {.rlim_cur = 4096, .rlim_max = 4096};
        ::setrlimit(RLIMIT_FSIZE, &tiny);
        ::signal(SIGXFSZ, SIG_IGN);
        return writeDocument(t.url("plan.md"), std::string(100'000, 'x'));
    });
    EXPECT_EQ(code, EFBIG);
    EXPECT_EQ(t.read("plan.md"), "old");
    EXPECT_EQ(t.count(), 1u);
}

TEST(DocumentWriter, FlushesTheFileAndItsFolder) {
    const TempFolder t;
    Flushes::reset();
    EXPECT_TRUE(writeDocument(t.url("plan.md"), "text"));
    ASSERT_EQ(Flushes::paths.size(), 2u);
    EXPECT_EQ(Flushes::paths[1], t.path());
    Flushes::failing = [](const std::string&) { return EIO; };
    EXPECT_EQ(error(writeDocument(t.url("plan.md"), "other")), EIO);
    Flushes::reset();
    EXPECT_EQ(t.read("plan.md"), "text");
    EXPECT_EQ(t.count(), 1u);
}

}  // namespace
