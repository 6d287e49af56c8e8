#pragma once

#include "OrdovanCLI/Console.h"
#include "OrdovanCLI/JsonOutput.h"
#include "OrdovanCLI/Options.h"
#include "OrdovanCLI/Output.h"
#include "OrdovanCLI/Session.h"
#include "OrdovanCLI/TextOutput.h"
#include "OrdovanCore/Url.h"

#include <expected>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace ordovan::cli {

inline constexpr std::string_view partialScanSentence = "Scan reached its limit; results are partial.";

/// How a command ended.
struct Outcome {
    enum class Kind {
        done,
        usage,       ///< it was told something that makes no sense; nothing was changed
        impossible,  ///< it could not do what it was told
        interrupted,
    };
    Kind kind = Kind::done;
    bool isFlawed = false;   ///< done, but a file was skipped or failed, or a record could not be read or saved
    bool didChange = false;  ///< files were moved, or something was stored that was asked for
    std::string sentence;    ///< what went wrong; empty when nothing is to be said beside the result

    static Outcome usage(std::string sentence) { return {Kind::usage, false, false, std::move(sentence)}; }
    static Outcome impossible(std::string sentence) { return {Kind::impossible, false, false, std::move(sentence)}; }
    /// Stopped before anything was changed.
    static Outcome interrupted() { return {Kind::interrupted, false, false, "Interrupted; nothing was changed."}; }
    /// Done what was asked for.
    static Outcome changed() { return {Kind::done, false, true, {}}; }
};

/// What every command works with.
struct Context {
    const Invocation& invocation;
    Console& console;
    Output& output;
    Session& session;
    bool isFlawed = false;  ///< something was found on the way that makes the outcome so

    [[nodiscard]] bool wantsJson() const { return invocation.has(Option::json); }
    [[nodiscard]] TextStyle textStyle() { return {console.colorsResults(), session.ports().timeZone()}; }

    /// Puts a result out in the form asked for.
    template <class Result>
    void put(const Result& result) {
        wantsJson() ? writeJson(output, result) : writeText(output, result, textStyle());
    }

    /// How to call the program with a command ("undo") in the folder of this session, in quotes.
    [[nodiscard]] std::string callOf(std::string_view command) const;

    /// Explains what was put out so far, which is shown first.
    void explain(std::string_view sentence) {
        output.flush();
        console.remark(sentence);
    }

    /// The refusal of an act ("organize") that nobody agreed to and nobody can be asked about; nothing when it may go
    /// on to `consent`.
    [[nodiscard]] std::optional<Outcome> refusal(std::string_view act) const;
    /// The user's answer, or yes where `--yes` gave it already. What was put out so far is shown first; where it can
    /// not be, the answer is no.
    [[nodiscard]] Console::Answer consent(std::string_view question);
    /// How the command ends where the record of a run of this kind could not be saved; nothing where it could.
    [[nodiscard]] std::optional<Outcome> unrecordable(OrdovanRunRecord::Kind kind) const;
    /// Asks before a run, and before that sees whether its record could be saved: what is in memory only can not be
    /// taken back once the program has ended. Nothing when the run may start; else how the command ends.
    /// `intended`: the run's report as far as it is known.
    [[nodiscard]] std::optional<Outcome> declined(const RunReport& intended, std::string_view question);

    /// Previews a folder. Nothing when that is done; else how the command ends.
    [[nodiscard]] std::optional<Outcome> preview(const Url& folder, const TidyViewModel::SettingOverrides& overrides,
                                                 PreviewDepth depth);
    /// The stored records that a command can rely on.
    enum class Record { journal, trash, history, settings };
    /// The first of these that is there and could not be read, as a sentence; nothing when all could be.
    [[nodiscard]] std::optional<std::string> unreadable(std::initializer_list<Record> records);
    /// Warns of these records as above, and remembers that the command is done but not whole.
    void warnOfRecords(std::initializer_list<Record> records);

    /// What the last preview could not look at.
    [[nodiscard]] Unseen unseen() const;
    /// Warns of it, naming some of it.
    void warnOf(const Unseen& unseen);
    /// Starts a run, waits for its end and puts out what it did. `intended` as above; `start` as for `Session::run`.
    [[nodiscard]] Outcome run(RunReport intended, const std::function<bool(TidyViewModel&)>& start);
    /// Puts out that there was nothing to do for a run.
    [[nodiscard]] Outcome runOfNothing(const RunReport& intended);
};

/// The folder a command was given, or the user's Downloads: an existing folder that is not too broad, as an absolute
/// path.
[[nodiscard]] std::expected<Url, Outcome> chosenFolder(const Invocation& invocation);

/// For commands that change nothing but records, each of which is stored whole or not at all: from here on a request to
/// stop ends the program at once, also while it waits for a lock. How the command ends when one has come already.
[[nodiscard]] std::optional<Outcome> interruptibleFromHere();

[[nodiscard]] Outcome runPreview(Context& context);
[[nodiscard]] Outcome runOrganize(Context& context);
[[nodiscard]] Outcome runUndo(Context& context);
[[nodiscard]] Outcome runDuplicates(Context& context);
[[nodiscard]] Outcome runBig(Context& context);
[[nodiscard]] Outcome runRecovery(Context& context);
[[nodiscard]] Outcome runRestore(Context& context);
[[nodiscard]] Outcome runRules(Context& context);
[[nodiscard]] Outcome runHistory(Context& context);
[[nodiscard]] Outcome runSettings(Context& context);

/// Runs the command of an invocation.
[[nodiscard]] Outcome runCommand(Context& context);

}  // namespace ordovan::cli
