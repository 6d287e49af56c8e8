// On a file system in user space everything works as on a disk, and at once: what the kernel remembers of a file that
// was just renamed there is no sign that somebody changed it.

#include "tests/cli/CommandLine.h"
#include "tests/support/FuseVolume.h"

using namespace ordovan::test;

namespace {

struct Mounting {
    const char* name;
    const char* options;
    bool holdsRecords;  ///< else they, and with them the home Trash, are on another volume

    friend void PrintTo(const Mounting& mounting, std::ostream* out) { *out << mounting.name; }
};

class FuseHome : public ::testing::TestWithParam<Mounting> {
protected:
    void SetUp() override {
        const std::string missing = FuseVolume::missing();
        if (!missing.empty()) GTEST_SKIP() << missing;
        std::filesystem::remove(home.downloads());  // bindfs covers no folder that holds something
        mounted.emplace(home.folder.path(), GetParam().options);
        home.folder.makeFolder("Downloads");
        if (!GetParam().holdsRecords) {
            other.emplace();
            home.environment["XDG_DATA_HOME"] = other->path();
        }
        // Should the file system not answer, the program does not wait for it for ever.
        home.prepare = [] { ::alarm(60); };
        for (int i = 0; i < 8; ++i) {
            const std::string number = std::to_string(i);
            save("report " + number + ".pdf", "report " + number);
            save("pictures/" + number + "/picture.png", "picture " + number);
            save("notes/" + number + ".txt", i % 2 == 0 ? "even" : "odd");
        }
        before = home.tree();
    }

    /// Writes a file as programs do that replace it whole.
    void save(const std::string& name, const std::string& content) const {
        home.write(name + ".new", content);
        std::filesystem::rename(home.download(name + ".new"), home.download(name));
    }

    void expectDone(const Home::Arguments& arguments, const std::string& told) const {
        const Finished run = home.run(arguments);
        EXPECT_EQ(run.status, 0) << arguments.front();
        EXPECT_THAT(run.out, ::testing::HasSubstr(told));
        EXPECT_EQ(run.err, "");
    }

    Home home;
    std::optional<SecondVolume> other;
    std::optional<FuseVolume> mounted;
    std::map<std::string, std::string> before;
};

INSTANTIATE_TEST_SUITE_P(Mounted, FuseHome,
                         testing::Values(Mounting{"AsUsual", "", true}, Mounting{"RecordsElsewhere", "", false},
                                         Mounting{"RememberingLong", "attr_timeout=30,entry_timeout=30", true},
                                         Mounting{"RememberingBriefly", "attr_timeout=0.002", true}),
                         [](const auto& each) { return each.param.name; });

TEST_P(FuseHome, IsOrganizedAndPutBackAtOnce) {
    for (int i = 0; i < 2; ++i) {
        expectDone({"organize", "--yes"}, "Organized 16 files in Downloads\n");
        EXPECT_FALSE(home.has("report 0.pdf"));
        expectDone({"undo", "--yes"}, "Restored 16 files in Downloads\n");
        EXPECT_TRUE(home.tree() == before);
    }
}

TEST_P(FuseHome, IsRidOfDuplicatesThatComeBackAtOnce) {
    for (int i = 0; i < 2; ++i) {
        expectDone({"duplicates", "--trash", "--yes"}, "6 files moved to the Trash");
        EXPECT_EQ(home.folder.count("Downloads/notes"), 2U);
        expectDone({"restore", "--yes"}, "Put back 6 files from the Trash in Downloads\n");
        auto after = home.tree();
        std::erase_if(after, [](const auto& item) { return item.first.starts_with(".Trash-"); });
        EXPECT_TRUE(after == before);
    }
}

}  // namespace
