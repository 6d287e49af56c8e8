#pragma once

#include "OrdovanCore/ExecutionScope.h"
#include "OrdovanCore/Reconcile.h"
#include "OrdovanCore/Relocator.h"
#include "OrdovanCore/RunProgress.h"
#include "OrdovanCore/TrashMove.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace ordovan {

/// The inode's number of a file identity: what stands behind its colon.
[[nodiscard]] std::string_view inodeOf(std::string_view identity);

/// What became of one file of an interrupted run.
struct Settled {
    enum class End { untouched, finished, putRight, unsettled };
    End end = End::untouched;
    std::string sentence = {};  ///< for the user; empty where there is nothing to say
    /// Where the file lies and what it is, when it is not where it was: the records have to tell of it.
    struct Place {
        Url place;
        Fingerprint what;
        bool sameVolume = false;
        bool isSeen = true;     ///< false when it is only known to have come there
        bool isVacated = true;  ///< nothing stands where it was
    };
    std::optional<Place> lies = std::nullopt;
    bool isCertain = true;  ///< false when something could not be looked at or changed
    bool isTouched = true;  ///< false when neither the run nor this has changed anything of it
};

/// Settles the items of one interrupted run, each once and the last first.
class ItemReconciler {
public:
    /// Both outlive this object.
    ItemReconciler(const OrdovanUnfinishedRun& run, const ReconcilePorts& ports);

    /// Whether a file is in sight, before or behind its move, that is proved to be one of the run's. `progress` is
    /// asked before each; once it says stop, none is.
    [[nodiscard]] bool seesAnything(RunProgress& progress) const;
    [[nodiscard]] Settled settle(std::size_t index);
    /// What can be said of an item while its folder is not in sight.
    [[nodiscard]] static Settled leftAlone();

private:
    /// What the record says about one item.
    struct Item {
        const OrdovanRunItem& intended;
        Url from, to;
        const OrdovanRunNote* begun = nullptr;  ///< what the file was when its turn came, as last told
        const OrdovanRunNote* done = nullptr;
        bool isClaimed = false;  ///< its new place was about to be taken by a second name or an empty file
        std::vector<const OrdovanRunNote*> copies;  ///< the notes of partial copies
        std::vector<const OrdovanRunNote*> hidden;  ///< the notes of hidden names by which it may have been left
        [[nodiscard]] bool isNoted() const { return begun != nullptr || done != nullptr; }
    };
    /// What is seen at a place.
    struct Sight {
        enum class Case { absent, regular, other, unknown };
        Case kind = Case::absent;
        FileFacts facts = {};
        [[nodiscard]] bool isThere() const { return kind == Case::regular || kind == Case::other; }
        [[nodiscard]] bool isRegular() const { return kind == Case::regular; }
        [[nodiscard]] bool isKnown() const { return kind != Case::unknown; }
    };
    enum class Proof { proved, refuted, unknown };

    [[nodiscard]] Item itemOf(std::size_t index) const;
    [[nodiscard]] Sight look(const Url& url) const;
    [[nodiscard]] std::optional<Settled> refusal(const Item& item) const;
    [[nodiscard]] bool isBelowRoot(const Item& item) const;
    void keepNoted(const Item& item, Settled& settled) const;
    [[nodiscard]] Proof hasContent(const Url& url, const Sight& sight, std::int64_t byteSize,
                                   const std::string& contentHash) const;
    [[nodiscard]] Proof isTheFile(const Item& item, const Url& url, const Sight& sight) const;
    [[nodiscard]] static bool looksLikeTheFile(const Item& item, const Sight& sight);
    [[nodiscard]] static bool wasNeverThere(const Item& item);
    [[nodiscard]] bool hasArrivedAs(const Item& item, const Sight& sight) const;
    [[nodiscard]] bool hasOneNameMore(const Item& item, const Sight& from) const;
    [[nodiscard]] bool remove(const Url& url) const;
    [[nodiscard]] bool removeCopy(const Item& item, const Sight& seen) const;

    [[nodiscard]] Proof isPlaceholder(const Item& item, const Url& url, const Sight& sight) const;

    [[nodiscard]] std::optional<Settled> settleHidden(const Item& item, const Url& hidden) const;
    [[nodiscard]] std::optional<Settled> settleAside(const Item& item, const OrdovanRunNote& copy) const;
    [[nodiscard]] Settled settleMove(const Item& item) const;
    [[nodiscard]] Settled settleStanding(const Item& item, const Sight& from, const Sight& to) const;
    [[nodiscard]] Proof isOurCopy(const Item& item, const Sight& from, const Sight& to) const;
    [[nodiscard]] Proof isWhole(const Item& item, const Sight& from, const OrdovanRunNote& copy) const;
    [[nodiscard]] Settled settlePartial(const Item& item, const OrdovanRunNote& copy, const Sight& from,
                                        const Sight& to) const;
    [[nodiscard]] Settled settleGone(const Item& item, const Sight& from, const Sight& to) const;
    [[nodiscard]] Settled settleCopies(const Item& item, const Sight& from, const Sight& to) const;
    [[nodiscard]] Settled settleLost(const Item& item, const Sight& from, const Sight& to) const;
    [[nodiscard]] Settled arrived(const Item& item, const Sight& to) const;
    [[nodiscard]] Settled moved(const Item& item, Settled::End end, Fingerprint what, bool sameVolume) const;

    void searchTrash();
    [[nodiscard]] std::vector<const TrashedFile*> inTrash(const Item& item) const;
    [[nodiscard]] Settled settleTrash(const Item& item) const;
    [[nodiscard]] Settled settleNotTrashed(const Item& item, const Sight& from) const;
    [[nodiscard]] Settled trashed(const Item& item, const Url& place, Fingerprint what) const;
    [[nodiscard]] Settled trashedAsFound(const Item& item, const Url& place, const Sight& there) const;

    const OrdovanUnfinishedRun& run_;
    const ReconcilePorts& ports_;
    std::vector<ExecutionScope> scopes_;
    TrashScope trashScope_;
    std::vector<const OrdovanRunNote*> notes_;      // by item, each item's in their order
    std::unordered_set<std::string_view> movedOn_;  // places from which a later item was moved
    bool isTrashKnown_ = true;
    std::vector<TrashedFile> inTrash_;  // by original place
};

}  // namespace ordovan
