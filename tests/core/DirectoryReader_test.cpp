#include "OrdovanCore/platform/DirectoryReader.h"
#include "OrdovanCore/Proposals.h"
#include "OrdovanCore/testing/TreeBuilder.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Unprivileged.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <set>
#include <string>
#include <vector>

using ordovan::test::TempFolder;
using ordovan::testing::buildOnDisk;

namespace {

OrdovanInventory scan(const TempFolder& folder, const OrdovanInventoryLimits& limits = {}) {
    FileManagerDirectoryReader reader;
    return OrdovanInventoryScanner::scan(folder.url(), reader, limits, {}, [] { return true; });
}

std::vector<std::string> names(const std::vector<OrdovanInventoryEntry>& entries) {
    std::vector<std::string> list;
    for (const auto& entry : entries) list.emplace_back(entry.url.lastPathComponent());
    return list;
}

}  // namespace

TEST(DirectoryReader, ReportsEachKindWithSizeAndTimeInByteOrder) {
    const TempFolder folder;
    buildOnDisk(folder.path(), {"b.txt = hello", "a/", ".h = x", "l -> b.txt", "Tool.app/x", "f|"});
    const timespec times[2] = {{1'600'000'000, 0}, {1'600'000'000, 500'000'000}};
    ASSERT_EQ(::utimensat(AT_FDCWD, folder.path("b.txt").c_str(), times, 0), 0);

    FileManagerDirectoryReader reader;
    const auto children = reader.children(folder.url()).value();
    EXPECT_EQ(names(children), (std::vector<std::string>{".h", "Tool.app", "a", "b.txt", "f", "l"}));
    EXPECT_TRUE(children[0].isHidden && children[0].isRegularFile());
    EXPECT_TRUE(children[1].isPackage && children[1].isDirectory);
    EXPECT_TRUE(children[2].isDirectory && !children[2].isPackage);
    EXPECT_EQ(children[3].byteSize, 5);
    EXPECT_EQ(children[3].modifiedEpoch, 1'600'000'000.5);
    EXPECT_TRUE(children[5].isSymbolicLink && !children[5].isDirectory);
}

TEST(DirectoryReader, TakesTheRootAndWhatEndsInSlashes) {
    FileManagerDirectoryReader reader;
    EXPECT_EQ(reader.resolvedPath(Url::file("/")), "/");
    EXPECT_THAT(names(reader.children(Url::file("/")).value()), ::testing::Contains("tmp"));
    EXPECT_EQ(reader.resolvedPath(Url::file("/")), "/");
    EXPECT_TRUE(reader.children(Url::file("/tmp")));
    EXPECT_EQ(reader.resolvedPath(Url::file("/tmp/")), "/tmp");

    const TempFolder folder;
    folder.write("sub/a", "");
    EXPECT_EQ(reader.children(Url::file(folder.path() + "//")).value()[0].url.lastPathComponent(), "sub");
    const auto found = reader.children(Url::file(folder.path("sub/"))).value();
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].url, folder.url("sub/a"));
}

TEST(DirectoryReader, KeepsNamesByteForByte) {
    const TempFolder folder;
    const std::vector<std::string> odd = {" ", "\n", "\"quoted\"", "-rf", std::string(255, 'x'), "\xff\xfe"};
    for (const std::string& name : odd) folder.write(name, "");
    FileManagerDirectoryReader reader;
    auto found = names(reader.children(folder.url()).value());
    std::ranges::sort(found);
    auto expected = odd;
    std::ranges::sort(expected);
    EXPECT_EQ(found, expected);
}

TEST(DirectoryReader, RefusesWhatIsNoDirectory) {
    const TempFolder folder;
    folder.write("file", "");
    FileManagerDirectoryReader reader;
    EXPECT_EQ(reader.children(folder.url("file")).error(), OrdovanSystemError::posix(ENOTDIR));
    EXPECT_EQ(reader.children(folder.url("missing")).error(), OrdovanSystemError::posix(ENOENT));
}

TEST(DirectoryReader, FollowsALinkForTheRootOfAWalkOnly) {
    const TempFolder folder;
    buildOnDisk(folder.path(), {"real/sub/x", "link -> real", "real/again -> sub"});
    FileManagerDirectoryReader reader;
    EXPECT_EQ(reader.children(folder.url("link")).value().size(), 2U);
    EXPECT_FALSE(reader.children(folder.url("link/again")).has_value());
}

TEST(DirectoryReader, ResolvesTheDirectoriesOfAWalkWithoutTheirLinks) {
    const TempFolder folder;
    buildOnDisk(folder.path(), {"real/sub/x", "link -> real"});
    const std::string real = OrdovanProposalPlanner::resolveExisting(folder.url("real")).sharedPath().str();
    FileManagerDirectoryReader reader;
    EXPECT_EQ(reader.resolvedPath(folder.url("link")), real);
    static_cast<void>(reader.children(folder.url("link")));
    EXPECT_EQ(reader.resolvedPath(folder.url("link/sub")), real + "/sub");
    EXPECT_EQ(reader.resolvedPath(folder.url("missing/..")), folder.path());
}

TEST(DirectoryReader, WalksTreesDeeperThanItKeepsDescriptors) {
    const TempFolder folder;
    std::string path = folder.path();
    constexpr int depth = 300;
    for (int i = 0; i < depth; ++i) {
        ASSERT_EQ(::mkdir((path + "/z").c_str(), 0755), 0);  // visited after everything below "d"
        path += "/d";
        ASSERT_EQ(::mkdir(path.c_str(), 0755), 0);
    }
    const OrdovanInventory inventory = scan(folder, {.maxDepth = 1000});
    EXPECT_EQ(inventory.directories.size(), 2U * depth);
    EXPECT_TRUE(inventory.skipped.empty());
}

namespace {

/// Makes 200 nested folders "d" and lists each, which is more than the reader keeps open.
void walkDown(const TempFolder& folder, FileManagerDirectoryReader& reader) {
    std::string path = folder.path();
    ASSERT_TRUE(reader.children(Url::file(path)));
    for (int i = 0; i < 200; ++i) {
        path += "/d";
        ASSERT_EQ(::mkdir(path.c_str(), 0755), 0);
        ASSERT_TRUE(reader.children(Url::file(path)));
    }
}

}  // namespace

TEST(DirectoryReader, RefusesAFolderWhoseWayWasReplacedWhileItWasDeepBelow) {
    const TempFolder folder;
    FileManagerDirectoryReader reader;
    walkDown(folder, reader);
    ASSERT_EQ(::rename(folder.path("d").c_str(), folder.path("was").c_str()), 0);
    buildOnDisk(folder.path(), {"d/d/d/planted/x"});
    EXPECT_EQ(reader.children(folder.url("d/d/d/planted")).error(), OrdovanSystemError::posix(ESTALE));
}

TEST(DirectoryReader, RefusesAFolderWhoseWayBecameALinkWhileItWasDeepBelow) {
    const TempFolder folder;
    FileManagerDirectoryReader reader;
    walkDown(folder, reader);
    buildOnDisk(folder.path(), {"d/d/d/sibling/x"});
    ASSERT_EQ(::rename(folder.path("d/d").c_str(), folder.path("was").c_str()), 0);
    folder.makeLink("d/d", "../was");
    EXPECT_EQ(reader.children(folder.url("d/d/d/sibling")).error(), OrdovanSystemError::posix(ENOTDIR));
}

TEST(DirectoryReader, ComesBackUpAWayThatIsWhatItWas) {
    const TempFolder folder;
    FileManagerDirectoryReader reader;
    walkDown(folder, reader);
    buildOnDisk(folder.path(), {"d/d/d/sibling/x"});
    EXPECT_EQ(names(reader.children(folder.url("d/d/d/sibling")).value()), std::vector<std::string>{"x"});
}

TEST(DirectoryReader, KeepsNoMoreDescriptorsThanItSays) {
    const TempFolder folder;
    FileManagerDirectoryReader reader;
    const auto openDescriptors = [] { return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}); };
    const auto before = openDescriptors();
    walkDown(folder, reader);
    EXPECT_EQ(openDescriptors() - before, 128);
}

TEST(DirectoryReader, RefusesAPathWithANul) {
    const TempFolder folder;
    folder.makeFolder("a");
    FileManagerDirectoryReader reader;
    const std::string path = folder.path("a") + std::string("\0b", 2);
    EXPECT_EQ(reader.children(Url::file(path)).error(), OrdovanSystemError::posix(EINVAL));
}

TEST(DirectoryReader, ReportsAFolderThatMayNotBeReadAndGoesOn) {
    const TempFolder folder;
    buildOnDisk(folder.path(), {"closed/x", "open/y"});
    ::chmod(folder.path("closed").c_str(), 0);
    const std::string seen = ordovan::test::unprivileged([&] {
        const OrdovanInventory inventory = scan(folder);
        return std::to_string(inventory.files.size()) + " " + std::string(rawValue(inventory.skipped.at(0).reason)) +
               " " + std::string(inventory.skipped.at(0).url.lastPathComponent());
    });
    EXPECT_EQ(seen, "1 unreadableDirectory closed");
}

TEST(DirectoryReader, TakesItemsWhoseAttributesMayNotBeReadForPlainFiles) {
    const TempFolder folder;
    buildOnDisk(folder.path(), {"listed/sub/x"});
    ::chmod(folder.path("listed").c_str(), 0444);  // names may be listed, nothing may be asked about them
    const std::string seen = ordovan::test::unprivileged([&] {
        FileManagerDirectoryReader reader;
        const auto children = reader.children(folder.url("listed")).value();
        return std::to_string(children.size()) + (children.at(0).isRegularFile() ? " plain" : " not plain");
    });
    EXPECT_EQ(seen, "1 plain");
}

TEST(PackageNames, HaveEachOfTheseExtensions) {
    const std::set<std::string> packages = {
        "app",       "appex",        "bundle",      "framework",     "plugin",        "kext",
        "prefpane",  "qlgenerator",  "mdimporter",  "component",     "saver",         "wdgt",
        "xpc",       "dsym",         "mpkg",        "pkg",           "photoslibrary", "photolibrary",
        "aplibrary", "musiclibrary", "tvlibrary",   "imovielibrary", "fcpbundle",     "logicx",
        "band",      "rtfd",         "pages",       "numbers",       "key",           "scptd",
        "workflow",  "xcodeproj",    "xcworkspace", "playground",    "sparsebundle",  "graffle",
    };
    EXPECT_EQ(packages.size(), 36U);
    for (const std::string& extension : packages) EXPECT_TRUE(ordovan::isPackageName("x." + extension)) << extension;
}

TEST(PackageNames, AreKnownByExtensionInAnyCase) {
    EXPECT_TRUE(ordovan::isPackageName("Mail.app"));
    EXPECT_TRUE(ordovan::isPackageName("My Photos.PhotosLibrary"));
    EXPECT_FALSE(ordovan::isPackageName("app"));
    EXPECT_FALSE(ordovan::isPackageName(".app"));
    EXPECT_FALSE(ordovan::isPackageName("folder.d"));
}
