#include "OrdovanApp/screens/StartOptions.h"

#include <gtest/gtest.h>

#include "tests/support/WidgetTestMain.h"

namespace {

std::expected<StartOptions, std::string> parse(std::vector<const char*> arguments) {
    return StartOptions::parse(arguments, "/home/ada");
}
std::string folder(const char* argument) {
    const auto options = parse({argument});
    return options && options->folder ? std::string(options->folder->path()) : "none";
}

TEST(StartOptions, OpenTheWindowWithoutAFolder) {
    const auto options = parse({});
    ASSERT_TRUE(options);
    EXPECT_EQ(options->action, StartOptions::Action::open);
    EXPECT_FALSE(options->folder);
}

TEST(StartOptions, ResolveARelativeFolder) {
    EXPECT_EQ(folder("Downloads"), "/home/ada/Downloads");
    EXPECT_EQ(folder("../bob/./x/"), "/home/bob/x");
    EXPECT_EQ(folder("."), "/home/ada");
}

TEST(StartOptions, TakeAnAbsoluteFolderByteForByte) {
    EXPECT_EQ(folder("/mnt/caf\xE9"), "/mnt/caf\xE9");
}

TEST(StartOptions, TakeAFileAddress) {
    EXPECT_EQ(folder("file:///home/ada/My%20Files"), "/home/ada/My Files");
    EXPECT_EQ(folder("file://localhost/a%FF"), "/a\xFF");
}

TEST(StartOptions, TakeAFolderThatLooksLikeAnOptionBehindTwoDashes) {
    const auto options = parse({"--", "--help"});
    ASSERT_TRUE(options && options->folder);
    EXPECT_EQ(options->folder->path(), "/home/ada/--help");
}

TEST(StartOptions, ShowHelpAndVersion) {
    EXPECT_EQ(parse({"--help"})->action, StartOptions::Action::showHelp);
    EXPECT_EQ(parse({"--version"})->action, StartOptions::Action::showVersion);
}

TEST(StartOptions, RefuseWhatTheyDoNotKnowWithASentence) {
    EXPECT_EQ(parse({"--fast"}).error(), "There is no option --fast. See ordovan --help.");
    EXPECT_EQ(parse({"a", "b"}).error(), "One folder can be previewed at a time. See ordovan --help.");
    EXPECT_EQ(parse({""}).error(), "The folder's name is empty. See ordovan --help.");
    EXPECT_EQ(parse({"https://example.org/x"}).error(),
              "Only a folder on this computer can be previewed, not \"https://example.org/x\". See ordovan --help.");
}

}  // namespace
