#include "OrdovanCLI/JsonOutput.h"

#include "OrdovanCLI/Format.h"
#include "OrdovanCore/Json.h"
#include "OrdovanCore/Text.h"

#include <algorithm>
#include <initializer_list>

namespace ordovan::cli {
namespace {

using json::appendNumber;
using json::appendText;

/// The members of one object, one after the other. Keys are written as they are: they hold nothing to escape.
class Object {
public:
    explicit Object(std::string& out) : out_(out) { out_.push_back('{'); }

    void text(std::string_view key, std::string_view value) {
        this->key(key);
        appendText(out_, value);
    }
    /// A path that may be anything the file system allows.
    void path(std::string_view key, std::string_view value, std::string_view exactKey = "pathBase64") {
        text(key, value);
        if (text::isUtf8(value)) return;
        this->key(exactKey);
        base64(value);
    }
    void paths(std::string_view key, std::span<const Url> values) {
        this->key(key);
        array(values, [&](const Url& url) { appendText(out_, url.path()); });
        if (std::ranges::all_of(values, [](const Url& url) { return text::isUtf8(url.path()); })) return;
        this->key("pathBase64");
        array(values, [&](const Url& url) {
            if (text::isUtf8(url.path()))
                out_ += "null";
            else
                base64(url.path());
        });
    }
    void integer(std::string_view key, std::int64_t value) {
        this->key(key);
        appendInteger(out_, value);
    }
    void number(std::string_view key, double value) {
        this->key(key);
        appendNumber(out_, value);
    }
    void boolean(std::string_view key, bool value) {
        this->key(key);
        out_ += value ? "true" : "false";
    }
    void null(std::string_view key) {
        this->key(key);
        out_ += "null";
    }
    void textOrNull(std::string_view key, std::optional<std::string_view> value) {
        value ? text(key, *value) : null(key);
    }
    void texts(std::string_view key, std::span<const std::string> values) {
        this->key(key);
        array(values, [&](const std::string& value) { appendText(out_, value); });
    }
    /// A value that is JSON already, in pieces.
    void literal(std::string_view key, std::initializer_list<std::string_view> pieces) {
        this->key(key);
        for (const std::string_view piece : pieces) out_ += piece;
    }
    /// Begins a member whose value the caller writes.
    void key(std::string_view key) {
        if (!isFirst_) out_ += ", ";
        isFirst_ = false;
        out_.push_back('"');
        out_ += key;
        out_ += "\": ";
    }
    void end() { out_.push_back('}'); }

private:
    template <class T, class WriteValue>
    void array(std::span<const T> values, WriteValue writeValue) {
        out_.push_back('[');
        for (const T& value : values) {
            if (&value != &values.front()) out_ += ", ";
            writeValue(value);
        }
        out_.push_back(']');
    }
    void base64(std::string_view bytes) {
        out_.push_back('"');
        appendBase64(out_, bytes);
        out_.push_back('"');
    }

    std::string& out_;
    bool isFirst_ = true;
};

/// The result's object: it begins with the schema's number and ends with a line end.
class Document {
public:
    explicit Document(Output& output) : output_(output), object_(output.buffer()) { object_.integer("schema", 1); }

    Object& object() { return object_; }

    /// A member holding a list with one object a line; `writeRecord` writes the members of each.
    template <class Records, class WriteRecord>
    void list(std::string_view key, const Records& records, WriteRecord writeRecord) {
        object_.key(key);
        list(records, writeRecord);
    }
    template <class Records, class WriteRecord>
    void list(const Records& records, WriteRecord writeRecord) {
        std::string& out = output_.buffer();
        out.push_back('[');
        bool isFirst = true;
        for (const auto& record : records) {
            out += isFirst ? "\n" : ",\n";
            isFirst = false;
            Object object(out);
            writeRecord(object, record);
            object.end();
            output_.rowDone();
        }
        if (!isFirst) out.push_back('\n');
        out.push_back(']');
    }

    void end() {
        object_.end();
        output_.buffer().push_back('\n');
    }

private:
    Output& output_;
    Object object_;
};

void writeScan(Document& document, const OrdovanInventory& inventory, std::string& out) {
    document.object().key("scan");
    Object scan(out);
    scan.integer("files", static_cast<std::int64_t>(inventory.fileCount()));
    scan.integer("directories", static_cast<std::int64_t>(inventory.directories.size()));
    scan.integer("totalByteSize", inventory.totalByteSize());
    scan.key("skipped");
    document.list(inventory.skipped, [](Object& object, const OrdovanInventorySkip& skip) {
        object.path("path", skip.url.path());
        object.text("reason", rawValue(skip.reason));
    });
    scan.end();
}

/// Proposals only name files whose path is UTF-8; the planner skips the others.
void writeProposals(Document& document, const PlanView& view) {
    std::size_t index = 0;
    std::string source, destination;  // as JSON strings, for each stands in a record twice
    document.list("proposals", view.plan->proposals, [&](Object& object, const OrdovanFileProposal& proposal) {
        const PlanView::Facts& facts = view.facts[index];
        source.clear();
        destination.clear();
        appendText(source, proposal.source.path());
        appendText(destination, proposal.destination.path());
        object.literal("id", {std::string_view(source).substr(0, source.size() - 1), " -> ",
                              std::string_view(destination).substr(1)});
        object.literal("source", {source});
        object.literal("destination", {destination});
        object.text("category", rawValue(proposal.category));
        object.textOrNull("ruleFolder",
                          proposal.ruleFolder ? std::optional(proposal.ruleFolder->view()) : std::nullopt);
        object.text("folderName", proposal.folderName());
        object.text("explanation", proposal.explanation);
        object.integer("byteSize", facts.byteSize);
        facts.modifiedEpoch ? object.number("modifiedEpoch", *facts.modifiedEpoch) : object.null("modifiedEpoch");
        object.boolean("selected", !view.isLeftOut[index]);
        ++index;
    });
}

}  // namespace

void writeJson(Output& output, const PlanView& view) {
    Document document(output);
    Object& object = document.object();
    object.path("root", view.root.path());
    object.path("outputRoot", view.outputRoot.path(), "outputRootBase64");
    object.boolean("caseInsensitive", view.caseInsensitive);
    object.boolean("partialScan", view.partialScan);
    object.text("status", view.status);
    writeScan(document, *view.inventory, output.buffer());
    writeProposals(document, view);
    document.list("conflicts", view.plan->conflicts, [](Object& record, const OrdovanPlanConflict& conflict) {
        record.text("id", conflict.id());
        record.path("source", conflict.source.path());
        record.text("destination", conflict.destination.path());
        record.text("kind", rawValue(conflict.kind));
        record.text("message", message(conflict.kind));
    });
    document.list("skipped", view.plan->skipped, [](Object& record, const OrdovanPlanSkip& skip) {
        record.path("source", skip.source.path());
        record.text("reason", skip.reason);
    });
    document.end();
}

void writeJson(Output& output, const RunReport& result) {
    static const OrdovanExecutionReport nothing;
    const OrdovanExecutionReport& report = result.report ? *result.report : nothing;
    Document document(output);
    document.list("outcomes", report.outcomes, [](Object& record, const OrdovanExecutionOutcome& outcome) {
        record.path("source", outcome.source.path());
        record.path("destination", outcome.destination.path(), "destinationBase64");
        record.text("status", rawValue(outcome.status));
        record.text("message", outcome.message);
    });
    Object& object = document.object();
    object.integer("moved", static_cast<std::int64_t>(report.movedCount()));
    object.integer("skipped", static_cast<std::int64_t>(report.skippedCount()));
    object.integer("failed", static_cast<std::int64_t>(report.failedCount()));
    object.textOrNull("warning", result.warning);
    if (result.plan) {
        object.integer("needReview", static_cast<std::int64_t>(result.needReview()));
        object.integer("notEvaluated", static_cast<std::int64_t>(result.notEvaluated()));
    }
    if (result.unseen) {
        object.boolean("partialScan", result.unseen->isPartialScan);
        object.integer("foldersLeftOut", static_cast<std::int64_t>(result.unseen->folders.size()));
    }
    if (result.unseen && result.kind == OrdovanRunRecord::Kind::trash) {
        object.integer("filesNotRead", static_cast<std::int64_t>(result.unseen->files.size()));
    }
    document.end();
}

void writeJson(Output& output, const RecoveryResult& result) {
    static const OrdovanJournal nothing;
    const OrdovanJournal& journal = result.found.journal ? *result.found.journal : nothing;
    Document document(output);
    std::size_t index = 0;
    document.list("organized", journal.entries, [&](Object& record, const OrdovanJournalEntry& entry) {
        record.text("source", entry.source());
        record.text("destination", entry.destination());
        record.boolean("present", result.found.organized[index++] == RecoverySurvey::State::present);
    });
    index = 0;
    document.list("trashed", result.found.trash->entries, [&](Object& record, const OrdovanTrashEntry& entry) {
        record.text("original", entry.original());
        record.text("trashed", entry.trashed());
        record.boolean("present", result.found.trashed[index++] == RecoverySurvey::State::present);
    });
    document.end();
}

void writeJson(Output& output, const DuplicatesResult& result) {
    Document document(output);
    std::size_t index = 0;
    document.list("groups", result.report->groups, [&](Object& record, const OrdovanDuplicateGroup& group) {
        record.text("id", group.id());
        record.text("contentHash", group.contentHash);
        record.integer("byteSize", group.byteSize);
        record.paths("files", group.files);
        record.path("keep", group.files[result.keep[index++]].path(), "keepBase64");
        record.integer("reclaimableBytes", group.reclaimableBytes());
    });
    document.object().integer("reclaimableBytes", result.report->reclaimableBytes());
    document.object().integer("duplicateFileCount", result.report->duplicateFileCount());
    document.object().boolean("partialScan", result.unseen.isPartialScan);
    writeScan(document, *result.inventory, output.buffer());
    document.list("filesNotRead", result.unseen.files,
                  [](Object& record, const Url& file) { record.path("path", file.path()); });
    document.end();
}

void writeJson(Output& output, const LargeFilesResult& result) {
    Document document(output);
    document.list("files", result.files, [](Object& record, const OrdovanInventoryEntry& entry) {
        record.path("path", entry.url.path());
        record.integer("byteSize", entry.byteSize);
        entry.modifiedEpoch ? record.number("modifiedEpoch", *entry.modifiedEpoch) : record.null("modifiedEpoch");
    });
    document.object().boolean("partialScan", result.unseen.isPartialScan);
    writeScan(document, *result.inventory, output.buffer());
    document.end();
}

void writeJson(Output& output, std::span<const OrdovanRunRecord> history) {
    Document document(output);
    document.list("records", history, [](Object& record, const OrdovanRunRecord& run) {
        record.number("epoch", run.epoch);
        record.integer("failed", run.failed);
        record.text("folderName", run.folderName);
        record.text("id", run.id.text());
        record.text("kind", rawValue(run.kind));
        record.integer("moved", run.moved);
        record.integer("skipped", run.skipped);
        record.text("summary", run.summary());
    });
    document.end();
}

void writeJson(Output& output, const OrdovanRuleSet& rules) {
    Document document(output);
    document.list("rules", rules.rules, [](Object& record, const OrdovanRule& rule) {
        record.texts("extensions", rule.extensions);
        record.text("folderName", rule.folderName);
        record.text("id", rule.id.text());
    });
    document.end();
}

void writeJson(Output& output, const SettingsResult& settings) {
    Document document(output);
    for (const SettingsResult::Value& value : settings.values) {
        if (value.isBoolean)
            document.object().boolean(value.key, value.text == "true");
        else
            document.object().text(value.key, value.text);
    }
    document.end();
}

void writeJsonText(Output& output, std::string_view key, std::string_view text) {
    Document document(output);
    document.object().text(key, text);
    document.end();
}

}  // namespace ordovan::cli
