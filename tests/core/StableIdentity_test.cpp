#include "OrdovanCore/platform/StableIdentity.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>

#include <cerrno>

using ordovan::keepsIdentities;
using ordovan::keepsInodes;

namespace {

/// The volume of every item.
struct Volume {
    long type = 0;
    unsigned major = 0;
};
Volume volume;

}  // namespace

// Takes the place of the C library's.
extern "C" int statfs(const char*, struct statfs* facts) noexcept {
    *facts = {};
    facts->f_type = volume.type;
    return 0;
}
extern "C" int stat(const char*, struct stat* facts) noexcept {
    *facts = {};
    facts->st_dev = makedev(volume.major, 41);
    return 0;
}

namespace {

bool isKeptOn(long type, unsigned major) {
    volume = {type, major};
    return keepsIdentities(Url::file("/x"));
}

TEST(StableIdentity, IsOfVolumesOnDisks) {
    for (const long type : {0xef53L, 0x58465342L, 0xf2f52010L}) {  // ext4, XFS, F2FS
        EXPECT_TRUE(isKeptOn(type, 8)) << type;
        EXPECT_TRUE(keepsInodes(Url::file("/x"))) << type;
    }
}

TEST(StableIdentity, IsNotOfVolumesWhoseDeviceNumbersAreMadeUpAtEachMount) {
    for (const long type : {0x9123683eL, 0x6969L, 0x2fc12fc1L, 0xca451a4eL}) {  // btrfs, NFS, ZFS, bcachefs
        EXPECT_FALSE(isKeptOn(type, 0)) << type;
        EXPECT_TRUE(keepsInodes(Url::file("/x"))) << type;
    }
}

TEST(StableIdentity, IsOfVolumesThatDoNotOutliveTheirMountAndOfOverlays) {
    for (const long type : {0x01021994L, 0x858458f6L, 0x794c7630L}) EXPECT_TRUE(isKeptOn(type, 0)) << type;
}

TEST(StableIdentity, IsNotOfVolumesWhoseInodesAreMadeUp) {
    for (const long type : {0x4d44L, 0x2011bab0L, 0x65735546L, 0x517bL, 0xff534d42L, 0xfe534d42L}) {
        EXPECT_FALSE(isKeptOn(type, 8)) << type;
        EXPECT_FALSE(keepsInodes(Url::file("/x"))) << type;
    }
}

}  // namespace
