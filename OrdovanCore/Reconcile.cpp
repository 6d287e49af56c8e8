#include "OrdovanCore/Reconcile.h"

#include "OrdovanCore/ReconcileItem.h"
#include "OrdovanCore/RunProgress.h"

#include <algorithm>
#include <cerrno>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using ordovan::ItemReconciler;
using ordovan::ReconcilePorts;
using ordovan::Settled;
using Status = OrdovanExecutionStatus;
using Kind = OrdovanRunRecord::Kind;

namespace {

/// Whether a folder is the one in which the run worked, by its identity. The tops of volumes are alike in their inodes,
/// and a device number may be given out again, so that such a folder is told by what lies in it only.
bool isSameFolder(const OrdovanRunIntent& intent, const ReconcilePorts& ports) {
    const auto root = ports.facts(intent.root);
    if (!root || intent.rootIdentity.empty() || root->identity != intent.rootIdentity) return false;
    const auto above = ports.facts(intent.root.deletingLastPathComponent());
    return above && ordovan::deviceOf(above->identity) == ordovan::deviceOf(root->identity);
}

/// Whether another volume is mounted at a folder than above it.
bool isMounted(const Url& volume, const ordovan::FactsFunction& factsOf) {
    const auto top = factsOf(volume), above = factsOf(volume.deletingLastPathComponent());
    return top && above && ordovan::deviceOf(top->identity) != ordovan::deviceOf(above->identity);
}

/// The volumes of a run that are not there now.
std::vector<std::string> volumesAway(const OrdovanRunIntent& intent, const ordovan::FactsFunction& factsOf) {
    std::vector<std::string> away;
    for (const Url& volume : intent.volumes) {
        if (!isMounted(volume, factsOf)) away.emplace_back(volume.path());
    }
    return away;
}

/// Looks at items. What is on a volume that is away is not gone: it can not be looked at.
ordovan::FactsFunction lookingAtVolumes(const std::vector<std::string>& away, const ordovan::FactsFunction& factsOf) {
    if (away.empty()) return factsOf;
    return [factsOf, away](const Url& item) -> OrdovanResult<ordovan::FileFacts> {
        const bool isAway = std::ranges::any_of(away, [&](const std::string& volume) {
            return item.path() == volume || item.path().starts_with(volume + "/");
        });
        if (isAway) return std::unexpected(OrdovanSystemError::posix(ENODEV));
        return factsOf(item);
    };
}

/// Whether the folder can not be told to be the one in which the run worked. Volumes that are mounted at the same
/// places inside tell that it is.
bool isElsewhere(const OrdovanUnfinishedRun& run, const ReconcilePorts& ports, const ItemReconciler& reconciler,
                 bool isVolumeAway, ordovan::RunProgress& progress) {
    if (run.intent.items.empty() || isSameFolder(run.intent, ports)) return false;
    const bool hasItsVolumes = !run.intent.volumes.empty() && !isVolumeAway;
    return !hasItsVolumes && !reconciler.seesAnything(progress);
}

/// Records what became of one item.
void record(const OrdovanRunIntent& intent, const OrdovanRunItem& item, Settled settled,
            OrdovanReconciliation& result) {
    OrdovanInterruptedRun& run = result.run;
    if (settled.lies && intent.kind == Kind::organize) {
        result.journal.entries.emplace_back(item.source, item.destination, settled.lies->sameVolume,
                                            settled.lies->what.byteSize, settled.lies->what.contentHash,
                                            settled.lies->what.identity);
    } else if (settled.lies && intent.kind == Kind::trash) {
        result.trashed.entries.emplace_back(ordovan::recordedPath(Url::file(item.source)), settled.lies->place.path(),
                                            settled.lies->what.byteSize, settled.lies->what.contentHash);
    } else if (settled.lies && intent.kind == Kind::undo) {
        // An entry too many is refused safely; the entry of another file that has come there must not go.
        if (settled.lies->isVacated) result.restored.emplace_back(item.source);
    } else if (settled.lies && settled.lies->isVacated) {
        result.putBack.emplace_back(item.source);
    }
    if (settled.lies && !settled.lies->isSeen) {
        result.unseen.emplace(intent.kind == Kind::trash ? result.trashed.entries.back().original()
                                                         : item.destination.view());
    }
    result.isComplete = result.isComplete && settled.isCertain;
    switch (settled.end) {
        case Settled::End::untouched:
            ++run.untouched;
            break;
        case Settled::End::finished:
            ++run.finished;
            break;
        case Settled::End::putRight:
            ++run.putRight;
            break;
        case Settled::End::unsettled:
            ++run.unsettled;
            break;
    }
    if (settled.sentence.empty()) return;
    const bool isMoved = settled.lies && settled.end != Settled::End::unsettled;
    const Status status = isMoved                                  ? Status::moved
                          : settled.end == Settled::End::unsettled ? Status::failed
                                                                   : Status::skippedRevalidation;
    const Url source = Url::file(item.source);
    const Url place = settled.lies               ? settled.lies->place
                      : item.destination.empty() ? source
                                                 : Url::file(item.destination);
    run.outcomes.push_back({source, place, status, std::move(settled.sentence)});
}

/// "3 files were", or "1 was" where the files were named before.
std::string counted(std::size_t count, bool namesFiles) {
    std::string text = std::to_string(count);
    if (namesFiles) text += count == 1 ? " file" : " files";
    return text;
}

}  // namespace

std::string OrdovanInterruptedRun::summary() const {
    struct Part {
        std::size_t count;
        const char* one;
        const char* many;
    };
    std::vector<std::string> parts;
    for (const auto& [count, one, many] :
         {Part{finished, " was finished", " were finished"},
          Part{untouched, " was left untouched", " were left untouched"},
          Part{putRight, " was put right", " were put right"}, Part{unsettled, " needs a look", " need a look"}}) {
        if (count > 0) parts.push_back(counted(count, parts.empty()) + (count == 1 ? one : many));
    }
    if (isUnreadable) return "An earlier run was interrupted, and its record could not be read. It was set aside.";
    std::string text = "An earlier run was interrupted.";
    for (std::size_t i = 0; i < parts.size(); ++i) {
        text += i == 0 ? " " : i + 1 == parts.size() ? " and " : ", ";
        text += parts[i];
    }
    if (!parts.empty()) text += '.';
    if (!isRecorded) text += " It could not be recorded yet and will be looked at again.";
    return text;
}

OrdovanRunRecord OrdovanReconciliation::historyRecord(const OrdovanRunIntent& intent) const {
    const auto moved =
        static_cast<std::size_t>(std::ranges::count(run.outcomes, Status::moved, &OrdovanExecutionOutcome::status));
    const std::size_t failed = run.unsettled;
    const std::size_t all = intent.items.size();
    return {.id = intent.id,
            .kind = intent.kind,
            .epoch = intent.startedAtEpoch,
            .folderName = std::string(intent.root.lastPathComponent()),
            .moved = static_cast<std::int64_t>(moved),
            .skipped = static_cast<std::int64_t>(all - std::min(all, moved + failed)),
            .failed = static_cast<std::int64_t>(failed)};
}

OrdovanReconciliation OrdovanReconciler::reconcile(const OrdovanUnfinishedRun& run, const ReconcilePorts& ports,
                                                   const OrdovanRunControl& control) {
    OrdovanReconciliation result;
    result.run.id = run.intent.id;
    result.run.kind = run.intent.kind;
    result.run.startedAtEpoch = run.intent.startedAtEpoch;
    result.run.root = run.intent.root;
    result.journal.createdAtEpoch = run.intent.startedAtEpoch;
    ordovan::RunProgress progress(control, run.intent.items.size());
    const std::vector<std::string> away = volumesAway(run.intent, ports.facts);
    ReconcilePorts looking = ports;
    looking.facts = lookingAtVolumes(away, ports.facts);
    ItemReconciler reconciler(run, looking);
    const bool isOutOfSight = isElsewhere(run, ports, reconciler, !away.empty(), progress);
    // A record that waits for a volume is told of.
    result.isElsewhere = isOutOfSight && away.empty();
    std::vector<Settled> settled(result.isElsewhere ? 0 : run.intent.items.size());
    // Backwards: where a file was to be moved twice, the second move tells of the first.
    for (std::size_t i = settled.size(); i > 0 && progress.mayContinue(); --i) {
        settled[i - 1] = isOutOfSight ? ItemReconciler::leftAlone() : reconciler.settle(i - 1);
        progress.fileDone();
    }
    // What could not be looked at may only have been given up.
    result.isStopped = !progress.mayContinue();
    if (result.isStopped) result.isElsewhere = false;
    if (result.isStopped || result.isElsewhere) {
        result.isComplete = false;
        return result;
    }
    for (std::size_t i = 0; i < settled.size(); ++i) {
        if (!settled[i].isCertain) result.uncertain.push_back(i);
        if (settled[i].isTouched) result.touched.push_back(i);
        record(run.intent, run.intent.items[i], std::move(settled[i]), result);
    }
    return result;
}
