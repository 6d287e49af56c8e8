#include "OrdovanCore/Proposals.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

using namespace OrdovanProposalPlanner;
using enum OrdovanProposalError;

namespace {

const Url root = Url::file("/x");
const Url output = root.appending(OrdovanOutput::folderName);

auto propose(std::string_view path, const OrdovanRuleSet& rules = {}, std::optional<std::string_view> subfolder = {}) {
    return preview(Url::file(path), root, output, rules, subfolder);
}

OrdovanRuleSet rule(std::vector<std::string> extensions, std::string folder) {
    return {{{ordovan::Uuid{}, std::move(extensions), std::move(folder)}}};
}

}  // namespace

TEST(CanonicalPath, DropsDotsEmptyPiecesAndTrailingSlashes) {
    EXPECT_EQ(canonicalPath("/a/./b/../c/"), "/a/c");
    EXPECT_EQ(canonicalPath("/.."), "/");
    EXPECT_EQ(canonicalPath("/a//b"), "/a/b");
    EXPECT_EQ(canonicalPath(""), "/");
    EXPECT_EQ(canonicalPath("a/b"), "/a/b");
    EXPECT_EQ(canonicalPath("/../../a"), "/a");
}

TEST(CanonicalPath, IsComposedAndKeepsCase) {
    EXPECT_EQ(canonicalPath("/E\u0301te\u0301"), "/\u00c9t\u00e9");
    EXPECT_EQ(canonicalPath("/A"), "/A");
}

TEST(CanonicalPath, LeavesBytesThatAreNotUtf8) {
    EXPECT_EQ(canonicalPath("/a/\xff/./b"), "/a/\xff/b");
}

TEST(Containment, EndsAtAPieceOfThePath) {
    EXPECT_TRUE(containsCanonical("/a/b/c", "/a/b"));
    EXPECT_TRUE(containsCanonical("/a/b", "/a/b"));
    EXPECT_FALSE(containsCanonical("/a/bc", "/a/b"));
    EXPECT_FALSE(containsCanonical("/a", "/a/b"));
    EXPECT_TRUE(containsCanonical("/anything", "/"));
}

TEST(Containment, TakesComposedAndDecomposedNamesForOne) {
    EXPECT_TRUE(contains(Url::file("/e\u0301/x"), Url::file("/\u00e9")));
}

TEST(TooBroad, AreTheTopFoldersOfASystem) {
    for (const char* path : {"/",
                             "/System",
                             "/Users",
                             "/Volumes",
                             "/private",
                             "/Library",
                             "/Network",
                             "/bin",
                             "/sbin",
                             "/usr",
                             "/etc",
                             "/var",
                             "/cores",
                             "/opt",
                             "/Applications",
                             "/mnt",
                             "/System/Volumes/Data",
                             "/private/var",
                             "/private/tmp",
                             "/home",
                             "/boot",
                             "/dev",
                             "/lib",
                             "/lib32",
                             "/lib64",
                             "/media",
                             "/proc",
                             "/run",
                             "/srv",
                             "/sys",
                             "/snap",
                             "/usr/",
                             "/x/../home"}) {
        EXPECT_TRUE(isTooBroad(Url::file(path))) << path;
    }
}

TEST(TooBroad, AreNeitherHomesNorVolumesNorWhatLiesBelow) {
    for (const char* path :
         {"/Users/name", "/Volumes/Disk", "/usr/local", "/home/name", "/users", "/Homes", "/x", "/private/x"}) {
        EXPECT_FALSE(isTooBroad(Url::file(path))) << path;
    }
}

TEST(TooBroad, IsALinkToATopFolder) {
    const ordovan::test::TempFolder folder;
    EXPECT_TRUE(isTooBroad(folder.makeLink("innocent", "/usr")));
}

TEST(ResolveExisting, FollowsLinksAndLeavesWhatDoesNotExist) {
    const ordovan::test::TempFolder folder;
    const Url real = resolveExisting(folder.makeFolder("real"));
    EXPECT_EQ(resolveExisting(folder.makeLink("link", "real")), real);
    EXPECT_EQ(resolveExisting(folder.url("missing/..")), folder.url("missing/.."));
}

TEST(Proposal, NeedsTheFileInsideTheRoot) {
    EXPECT_TRUE(propose("/x/y").has_value());
    EXPECT_EQ(propose("/xy/z").error(), sourceOutsideAuthorizedRoot);
    EXPECT_EQ(propose("/x/../y").error(), sourceOutsideAuthorizedRoot);
    EXPECT_EQ(propose("/x").error(), sourceIsRoot);
    EXPECT_EQ(propose("/x/a/..").error(), sourceIsRoot);
}

TEST(Proposal, OfAFileWithoutExtensionGoesToOther) {
    const auto proposal = propose("/x/README").value();
    EXPECT_EQ(proposal.destination.path(), "/x/ordovan+/Other/README");
    EXPECT_EQ(proposal.explanation, "File type . grouped as Other. Preview only.");
    EXPECT_EQ(proposal.folderName(), "Other");
    EXPECT_EQ(proposal.ruleFolder, std::nullopt);
}

TEST(Proposal, FollowsARuleAndKeepsTheCategory) {
    const auto proposal = propose("/x/Setup.DMG", rule({"dmg"}, "Apps")).value();
    EXPECT_EQ(proposal.destination.path(), "/x/ordovan+/Apps/Setup.DMG");
    EXPECT_EQ(proposal.ruleFolder.value(), "Apps");
    EXPECT_EQ(proposal.category, OrdovanFileCategory::installers);
    EXPECT_EQ(proposal.explanation, "Your rule: .dmg → Apps. Preview only.");
    EXPECT_EQ(proposal.folderName(), "Apps");
    EXPECT_EQ(proposal.id(), "/x/Setup.DMG -> /x/ordovan+/Apps/Setup.DMG");
}

TEST(Proposal, ExplainsTheCategory) {
    EXPECT_EQ(propose("/x/a.PDF").value().explanation, "File type .pdf grouped as Documents. Preview only.");
}

TEST(Proposal, IsRefusedWhereTheFileIsAlready) {
    EXPECT_EQ(propose("/x/ordovan+/Documents/a.pdf").error(), sourceEqualsDestination);
    EXPECT_TRUE(propose("/x/ordovan+/Images/a.pdf").has_value());
}

TEST(Proposal, GoesOneFolderDeeperForAValidSubfolderOnly) {
    EXPECT_EQ(propose("/x/a.pdf", {}, "2024-03").value().destination.path(), "/x/ordovan+/Documents/2024-03/a.pdf");
    EXPECT_EQ(propose("/x/a.pdf", {}, ".hidden").value().destination.path(), "/x/ordovan+/Documents/a.pdf");
    EXPECT_EQ(propose("/x/a.pdf", {}, "../..").value().destination.path(), "/x/ordovan+/Documents/a.pdf");
    EXPECT_EQ(propose("/x/a.pdf", {}, " 2024 ").value().destination.path(), "/x/ordovan+/Documents/2024/a.pdf");
}

TEST(Proposal, IsRefusedWhenAStoredRuleLeadsOutOfTheOutputFolder) {
    EXPECT_EQ(propose("/x/a.pdf", rule({"pdf"}, "../../etc")).error(), destinationOutsideOutputRoot);
    EXPECT_EQ(propose("/x/a.pdf", rule({"pdf"}, "..")).error(), destinationOutsideOutputRoot);
}

TEST(Proposal, IsRefusedForEverythingBelowATooBroadRoot) {
    const Url broad = Url::file("/home");
    const auto refusal = [&](std::string_view file) {
        return preview(Url::file(file), broad, broad.appending("ordovan+"), {}, {}).error();
    };
    EXPECT_EQ(refusal("/home/name/a.pdf"), authorizedRootTooBroad);
    EXPECT_EQ(refusal("/elsewhere/a.pdf"), authorizedRootTooBroad);
}

TEST(Proposal, NeedsFileUrls) {
    const Url web = Url::parse("https://example.org/x");
    EXPECT_EQ(preview(web, root, output, {}, {}).error(), nonFileURL);
    EXPECT_EQ(preview(Url::file("/x/a"), web, output, {}, {}).error(), nonFileURL);
    EXPECT_EQ(preview(Url::file("/x/a"), root, web, {}, {}).error(), nonFileURL);
}

TEST(Proposal, KeepsTheBytesOfTheFoldersOwnName) {
    const Url decomposed = Url::file("/e\u0301");
    const auto proposal =
        preview(decomposed.appending("o\u0308.pdf"), decomposed, decomposed.appending("ordovan+"), {}, {});
    EXPECT_EQ(proposal.value().destination.path(), "/e\u0301/ordovan+/Documents/o\u0308.pdf");
}

TEST(Proposal, KeepsTheSourceAsItWasGiven) {
    EXPECT_EQ(propose("/x/./b//a.pdf").value().source.path(), "/x/./b//a.pdf");
    EXPECT_EQ(propose("/x/./b//a.pdf").value().destination.path(), "/x/ordovan+/Documents/a.pdf");
}

TEST(ProposalErrors, HaveTheirSentences) {
    EXPECT_EQ(message(nonFileURL), "Not a local file.");
    EXPECT_EQ(message(sourceOutsideAuthorizedRoot), "Outside the folder you authorized.");
    EXPECT_EQ(message(destinationOutsideOutputRoot), "Would land outside the organized folder.");
    EXPECT_EQ(message(sourceEqualsDestination), "Already in the right place.");
    EXPECT_EQ(message(sourceIsRoot), "This is the folder itself.");
    EXPECT_EQ(message(authorizedRootTooBroad), "The chosen folder is too broad to organize safely.");
}
