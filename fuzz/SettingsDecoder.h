#pragma once

#include "OrdovanApp/stores/AppSettings.h"
#include "OrdovanApp/stores/RecentFoldersStore.h"
#include "OrdovanApp/stores/RuleStore.h"
#include "OrdovanApp/stores/SettingsFileStore.h"

#include <QMetaType>
#include <QVariant>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace ordovan::fuzz {

/// Whether a value is of a kind that is stored.
inline bool isPlain(const QVariant& value) {
    if (value.typeId() == QMetaType::QVariantList) {
        const QVariantList items = value.toList();
        return std::all_of(items.begin(), items.end(), isPlain);
    }
    constexpr std::array plain = {int{QMetaType::UnknownType}, int{QMetaType::QString}, int{QMetaType::QStringList},
                                  int{QMetaType::QByteArray}};
    return std::find(plain.begin(), plain.end(), value.typeId()) != plain.end();
}

/// What must hold for every content of the settings file: it is written to a file of a folder of its own, below TMPDIR.
/// Returns what is wrong with the stores that read it, or an empty text.
inline std::string settings(std::string_view input) {
    namespace fs = std::filesystem;
    const struct Folder {
        Folder() {
            path = fs::temp_directory_path() / "ordovan-settings-XXXXXX";
            if (::mkdtemp(path.data()) == nullptr) throw std::runtime_error("no temporary folder");
        }
        ~Folder() { fs::remove_all(path); }
        std::string path;
    } folder;
    const std::string file = folder.path + "/ordovan.conf";
    std::ofstream(file, std::ios::binary).write(input.data(), static_cast<std::streamsize>(input.size()));

    SettingsFileStore store(Url::file(file));
    AppSettings read(store);
    RuleStore rules(store);
    const RecentFoldersStore recent(store, [](const Url&) { return true; }, [](const Url& url) { return url; });
    if (recent.load().size() > RecentFoldersStore::maxFolders) return "there are too many recent folders";
    const OrdovanRuleSet before = rules.ruleSet();
    if (before.rules.size() > OrdovanRuleSet::maxRules) return "there are too many rules";

    bool allPlain = true;
    const bool looked = store.update([&](KeyValueStore::Values& values) {
        for (const auto& [key, value] : values) allPlain = allPlain && isPlain(value);
    });
    if (!looked) return "the values could not be looked at";
    if (!allPlain) return "a value of a type that is never stored was read";

    // A change keeps what could be read, and a file that could not be is set aside, not lost.
    const bool month = !read.groupByMonth();
    if (!read.setGroupByMonth(month)) return "a change could not be stored";
    SettingsFileStore anew(Url::file(file));
    if (AppSettings(anew).groupByMonth() != month) return "a change was lost";
    if (RuleStore(anew).ruleSet() != before) return "a change of a setting changed the rules";
    if (AppSettings(anew).theme() != read.theme()) return "a change of a setting changed another";
    return "";
}

}  // namespace ordovan::fuzz
