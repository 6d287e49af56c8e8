#include "OrdovanCore/FileSystem.h"
#include "OrdovanCore/Text.h"

#include <gtest/gtest.h>

#include <string>

namespace {

const std::string uuid = "9D2B1A5E-3C4F-4E6A-8B7C-0123456789AB";

std::string besideName(const std::string& name) {
    return std::string(OrdovanPartialName::beside(Url::file("/folder/" + name)).lastPathComponent());
}

/// The piece of a partial name that comes from the final name.
std::string pieceOf(const std::string& partial) {
    return partial.substr(1, partial.find(".ordovan-partial-") - 1);
}

TEST(PartialName, IsADotTheNameTheMarkAndAUuidInTheSameFolder) {
    const Url partial = OrdovanPartialName::beside(Url::file("/folder/report.pdf"));
    const std::string start = "/folder/.report.pdf.ordovan-partial-";
    EXPECT_EQ(partial.path().substr(0, start.size()), start);
    EXPECT_EQ(partial.path().size(), start.size() + 36);
    EXPECT_TRUE(OrdovanPartialName::isPartial(partial.path()));
}

TEST(PartialName, IsAnotherOneEachTime) {
    EXPECT_NE(besideName("a"), besideName("a"));
}

TEST(PartialName, StandsInTheRootForAFileInTheRoot) {
    EXPECT_TRUE(OrdovanPartialName::beside(Url::file("/a")).path().starts_with("/.a.ordovan-partial-"));
}

TEST(PartialName, KeepsANameThatJustFits) {
    const std::string name(201, 'n');
    EXPECT_EQ(besideName(name).size(), 255u);
    EXPECT_EQ(pieceOf(besideName(name)), name);
}

TEST(PartialName, ShortensALongNameTo255Bytes) {
    EXPECT_EQ(pieceOf(besideName(std::string(202, 'n'))), std::string(201, 'n'));
    EXPECT_EQ(besideName(std::string(255, 'n')).size(), 255u);
    EXPECT_TRUE(OrdovanPartialName::isPartial(besideName(std::string(255, 'n'))));
}

TEST(PartialName, ShortensAtACharacterBoundary) {
    for (const std::string character : {"\u00e9", "\u20ac", "\U0001f600"}) {
        for (std::size_t shift = 0; shift < character.size(); ++shift) {
            std::string name(shift, 'n');
            while (name.size() + character.size() <= 255) name += character;
            const std::string piece = pieceOf(besideName(name));
            EXPECT_TRUE(ordovan::text::isUtf8(piece)) << character << " shifted by " << shift;
            EXPECT_TRUE(name.starts_with(piece));
            EXPECT_GT(piece.size() + character.size(), 201u) << "shortened more than needed";
        }
    }
}

TEST(PartialName, ShortensWhatIsNotUtf8WhereItMust) {
    EXPECT_EQ(pieceOf(besideName(std::string(255, '\xbf'))), std::string(201, '\xbf'));
    EXPECT_EQ(pieceOf(besideName(std::string(255, '\xff'))), std::string(201, '\xff'));
}

TEST(PartialName, IsKnownByItsWholeForm) {
    EXPECT_TRUE(OrdovanPartialName::isPartial("/f/.a.ordovan-partial-" + uuid));
    EXPECT_TRUE(OrdovanPartialName::isPartial(".a.ordovan-partial-" + uuid));
    EXPECT_TRUE(OrdovanPartialName::isPartial("/f/.a\n.ordovan-partial-" + uuid));
}

TEST(PartialName, IsNotAnythingElse) {
    for (const std::string& path :
         {"/f/a.ordovan-partial-" + uuid, "/f/.ordovan-partial-" + uuid, "/f/..ordovan-partial-" + uuid.substr(1),
          "/f/.a.ordovan-partial-" + uuid + "0", "/f/.a.ordovan-partial-" + uuid + "/a",
          std::string("/f/.a.ordovan-partial-"), "/f/.a.ordovan-partial-Z" + uuid.substr(1),
          "/f/.a.ordovan_partial-" + uuid, std::string("/f/.a"), std::string("/"), std::string()}) {
        EXPECT_FALSE(OrdovanPartialName::isPartial(path)) << path;
    }
}

}  // namespace
