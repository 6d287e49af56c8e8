#pragma once

#include "OrdovanCore/RecordStorage.h"
#include "OrdovanCore/testing/MemoryFileSystem.h"

#include <cerrno>
#include <cstddef>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ordovan::test {

/// Records as files of a `MemoryFileSystem`, failing as told.
class MemoryRecords final : public RecordStorage {
public:
    explicit MemoryRecords(testing::MemoryFileSystem& fs) : fs_(fs) {}

    /// Makes the n-th call from now on fail with this errno before it has an effect.
    void failCall(std::size_t number, int errnoValue) {
        failing_ = calls_ + number;
        error_ = errnoValue;
    }
    /// Makes every call of one kind ("read", "write", "flush": after the writing, "openNotes", "append", "sync",
    /// "remove", "setAside") fail; the empty text ends that.
    void failAll(std::string_view kind, int errnoValue) {
        failingKind_ = kind;
        error_ = errnoValue;
    }
    /// Calls so far.
    [[nodiscard]] std::size_t calls() const { return calls_; }
    /// Told of every call: "write /records/history.json".
    std::function<void(const std::string& call)> observer = [](const std::string&) {};

    OrdovanResult<void> read(const Url& file, const Sink& sink) override {
        if (fails("read", file)) return refusal(error_);
        if (const auto item = fs_.item(file.path()); item && item->type != testing::ItemType::file) {
            return refusal(EINVAL);
        }
        const auto content = fs_.read(file.path());
        if (!content) return refusal(ENOENT);
        // In two pieces, as a reader of pieces must be able to take them.
        const std::string_view all = *content;
        const bool taken = sink(all.substr(0, all.size() / 2)) && sink(all.substr(all.size() / 2));
        return taken ? OrdovanResult<void>() : refusal(ECANCELED);
    }

    OrdovanResult<void> write(const Url& file, const Producer& producer) override {
        if (fails("write", file)) return refusal(error_);
        std::string content;
        const bool produced = producer([&](std::string_view piece) {
            content += piece;
            return true;
        });
        if (!produced) return refusal(ECANCELED);
        fs_.write(file.path(), content);
        if (failingKind_ == "flush") return refusal(error_);
        return {};
    }

    OrdovanResult<std::unique_ptr<RunNotes>> openNotes(const Url& file) override {
        if (fails("openNotes", file)) return std::unexpected(OrdovanSystemError::posix(error_));
        if (!fs_.read(file.path())) return std::unexpected(OrdovanSystemError::posix(ENOENT));
        if (!held_->insert(std::string(file.path())).second) {
            return std::unexpected(OrdovanSystemError::posix(EWOULDBLOCK));
        }
        return std::make_unique<Notes>(*this, file);
    }

    OrdovanResult<void> remove(const Url& file) override {
        if (fails("remove", file)) return refusal(error_);
        if (fs_.item(file.path())) fs_.removeTree(file.path());
        return {};
    }

    OrdovanResult<void> setAside(const Url& file, const Url& to) override {
        if (fails("setAside", file)) return refusal(error_);
        return fs_.move(file, to);
    }

private:
    class Notes final : public RunNotes {
    public:
        Notes(MemoryRecords& records, Url file) : records_(records), file_(std::move(file)), held_(records.held_) {}
        ~Notes() override { held_->erase(std::string(file_.path())); }
        Notes(const Notes&) = delete;
        Notes& operator=(const Notes&) = delete;
        OrdovanResult<void> append(std::string_view text) override {
            if (records_.fails("append", file_)) return refusal(records_.error_);
            records_.fs_.write(file_.path(), records_.fs_.read(file_.path()).value_or("") + std::string(text));
            return {};
        }
        OrdovanResult<void> sync() override {
            return records_.fails("sync", file_) ? refusal(records_.error_) : OrdovanResult<void>();
        }

    private:
        MemoryRecords& records_;
        Url file_;
        std::shared_ptr<std::set<std::string>> held_;
    };

    static OrdovanResult<void> refusal(int errnoValue) {
        return std::unexpected(OrdovanSystemError::posix(errnoValue));
    }
    bool fails(std::string_view kind, const Url& file) {
        ++calls_;
        observer(std::string(kind) + " " + std::string(file.path()));
        return calls_ == failing_ || (!failingKind_.empty() && kind == failingKind_);
    }

    testing::MemoryFileSystem& fs_;
    std::shared_ptr<std::set<std::string>> held_ = std::make_shared<std::set<std::string>>();  // that take notes
    std::size_t calls_ = 0;
    std::size_t failing_ = 0;
    std::string failingKind_;
    int error_ = 0;
};

}  // namespace ordovan::test
