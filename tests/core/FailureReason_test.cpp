#include "OrdovanCore/Executor.h"

#include <gtest/gtest.h>

#include <cerrno>

using Error = OrdovanSystemError;
using OrdovanExecutor::failureReason;

namespace {

constexpr const char* noPermission =
    "ordovan+ doesn't have permission to change this folder. Choose the folder again with Choose Folder…, or check its "
    "permissions in Finder.";
constexpr const char* diskFull = "The disk is full. Free up some space and try again.";
constexpr const char* readOnly = "This disk is read-only.";
constexpr const char* gone = "The file was moved or deleted while organizing.";
constexpr const char* inUse = "The file is in use by another app.";

}  // namespace

TEST(FailureReason, ExplainsMissingPermission) {
    EXPECT_EQ(failureReason(Error::cocoa(257)), noPermission);
    EXPECT_EQ(failureReason(Error::cocoa(513)), noPermission);
    EXPECT_EQ(failureReason(Error::posix(EACCES)), noPermission);
    EXPECT_EQ(failureReason(Error::posix(EPERM)), noPermission);
}

TEST(FailureReason, ExplainsAFullDisk) {
    EXPECT_EQ(failureReason(Error::cocoa(640)), diskFull);
    EXPECT_EQ(failureReason(Error::posix(ENOSPC)), diskFull);
}

TEST(FailureReason, ExplainsAReadOnlyDisk) {
    EXPECT_EQ(failureReason(Error::cocoa(642)), readOnly);
    EXPECT_EQ(failureReason(Error::posix(EROFS)), readOnly);
}

TEST(FailureReason, ExplainsAFileThatIsGone) {
    EXPECT_EQ(failureReason(Error::cocoa(260)), gone);
    EXPECT_EQ(failureReason(Error::posix(ENOENT)), gone);
}

TEST(FailureReason, ExplainsAFileInUse) {
    EXPECT_EQ(failureReason(Error::posix(ETXTBSY)), inUse);
    EXPECT_EQ(failureReason(Error::posix(EBUSY)), inUse);
}

TEST(FailureReason, GivesTheCodeOfAnythingElse) {
    EXPECT_EQ(failureReason(Error::posix(EIO)), "The system reported an error (code 5).");
    EXPECT_EQ(failureReason(Error::cocoa(512)), "The system reported an error (code 512).");
    EXPECT_EQ(failureReason({Error::Domain::other, -7, std::nullopt}), "The system reported an error (code -7).");
}

TEST(FailureReason, GivesTheOuterCodeWhenTheUnderlyingOneIsUnknownToo) {
    EXPECT_EQ(failureReason(Error::cocoa(512, EIO)), "The system reported an error (code 512).");
}

TEST(FailureReason, ReadsTheUnderlyingPosixNumber) {
    EXPECT_EQ(failureReason(Error::cocoa(512, ENOSPC)), diskFull);
    EXPECT_EQ(failureReason({Error::Domain::other, 9, EBUSY}), inUse);
}

TEST(FailureReason, TakesTheFirstRowThatMatches) {
    EXPECT_EQ(failureReason(Error::cocoa(640, EACCES)), noPermission);
    EXPECT_EQ(failureReason(Error::cocoa(260, EROFS)), readOnly);
}

TEST(FailureReason, NeverTakesANumberOfOneDomainForTheOther) {
    EXPECT_EQ(failureReason(Error::posix(640)), "The system reported an error (code 640).");
    EXPECT_EQ(failureReason(Error::cocoa(13)), "The system reported an error (code 13).");
    EXPECT_EQ(failureReason({Error::Domain::other, 28, std::nullopt}), "The system reported an error (code 28).");
}
