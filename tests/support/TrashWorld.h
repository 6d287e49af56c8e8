#pragma once

#include "tests/support/TidyWorld.h"

#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ordovan::test {

/// What runs that trash files and put them back have to do with.
class TrashWorld : public TidyWorld {
protected:
    /// A controller that has found the duplicates of "/r".
    std::unique_ptr<TidyViewModel> searched(TidyViewModel::Options options = {}) {
        auto model = previewed(options);
        model->findDuplicates();
        tasks.finish();
        return model;
    }
    bool finished(bool started) {
        tasks.finish();
        return started;
    }
    /// The items of these files of "/r", with the sizes they have now.
    std::vector<OrdovanFileTrasher::Item> items(std::initializer_list<std::string_view> names) {
        std::vector<OrdovanFileTrasher::Item> result;
        for (const std::string_view name : names) {
            const Url url = Url::file("/r").appending(name);
            result.push_back({url, memory.fileSize(url).value_or(0)});
        }
        return result;
    }
    /// A controller that has trashed these files of "/r".
    std::unique_ptr<TidyViewModel> trashed(std::initializer_list<std::string_view> names,
                                           TidyViewModel::Options options = {}) {
        auto model = previewed(options);
        finished(model->trashBigFiles(items(names)));
        return model;
    }
    [[nodiscard]] bool exists(const std::string& path) const { return memory.item(path).has_value(); }
    static std::vector<std::string> summaries(const TidyViewModel& model) {
        std::vector<std::string> lines;
        for (const auto& run : model.history().records) lines.push_back(run.summary());
        return lines;
    }
};

}  // namespace ordovan::test
