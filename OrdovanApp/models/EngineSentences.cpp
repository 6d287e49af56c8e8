#include "OrdovanApp/models/EngineTexts.h"

#include <QCoreApplication>

namespace EngineTexts {
namespace {

constexpr const char* sentences[] = {
    // Why a file is not proposed, and why one is.
    QT_TRANSLATE_NOOP("Engine", "Not a local file."),
    QT_TRANSLATE_NOOP("Engine", "Outside the folder you authorized."),
    QT_TRANSLATE_NOOP("Engine", "Would land outside the organized folder."),
    QT_TRANSLATE_NOOP("Engine", "Already in the right place."),
    QT_TRANSLATE_NOOP("Engine", "This is the folder itself."),
    QT_TRANSLATE_NOOP("Engine", "The chosen folder is too broad to organize safely."),
    QT_TRANSLATE_NOOP("Engine", "Not a regular file."),
    QT_TRANSLATE_NOOP("Engine", "Could not evaluate this file."),
    QT_TRANSLATE_NOOP("Engine", "This folder could not be read; the files in it are left untouched."),
    QT_TRANSLATE_NOOP("Engine", "This folder lies too deep to be looked into; the files in it are left untouched."),
    QT_TRANSLATE_NOOP("Engine", "Your rule: .%1 → %2. Preview only."),
    QT_TRANSLATE_NOOP("Engine", "Your rule: .%1 → %2"),
    QT_TRANSLATE_NOOP("Engine", "File type .%1 grouped as %2. Preview only."),
    QT_TRANSLATE_NOOP("Engine", "This looks like an unfinished download"),
    QT_TRANSLATE_NOOP("Engine", "This looks like an unfinished download; it is left out unless you tick it."),
    QT_TRANSLATE_NOOP("Engine",
                      "Another file would be organized to the same location. Needs your decision; left untouched."),
    QT_TRANSLATE_NOOP("Engine", "A file already exists at the destination. Will not overwrite; left untouched."),
    // Previews.
    QT_TRANSLATE_NOOP("Engine", "We couldn't read that folder. Check permissions and try again."),
    // Organizing.
    QT_TRANSLATE_NOOP("Engine", "Moved."),
    QT_TRANSLATE_NOOP("Engine", "Copied, verified and moved."),
    QT_TRANSLATE_NOOP("Engine", "Source changed since preview; left untouched."),
    QT_TRANSLATE_NOOP("Engine", "Path no longer within the authorized scope."),
    QT_TRANSLATE_NOOP("Engine", "A parent folder is a symlink; skipped to stay in scope."),
    QT_TRANSLATE_NOOP("Engine", "A file already exists at the destination; left untouched."),
    QT_TRANSLATE_NOOP("Engine", "The run was stopped before this file; left untouched."),
    QT_TRANSLATE_NOOP("Engine", "Could not move this file; it was left in place."),
    QT_TRANSLATE_NOOP("Engine", "Move did not land at the destination."),
    QT_TRANSLATE_NOOP("Engine", "Copy verification failed; source kept, copy removed."),
    QT_TRANSLATE_NOOP("Engine",
                      // NOLINTNEXTLINE(bugprone-suspicious-missing-comma): one sentence
                      "Copied and verified, but the original could not be removed; copy discarded to "
                      "avoid a duplicate."),
    // Undoing it.
    QT_TRANSLATE_NOOP("Engine", "Restored."),
    QT_TRANSLATE_NOOP("Engine", "Journal entry is outside the authorized scope; undo refused."),
    QT_TRANSLATE_NOOP("Engine", "The organized file is missing or was changed since, so it was left as it is."),
    QT_TRANSLATE_NOOP("Engine", "A parent folder is a symlink; undo skipped to stay in scope."),
    QT_TRANSLATE_NOOP("Engine", "Original location is occupied; undo skipped."),
    QT_TRANSLATE_NOOP("Engine", "File was modified after organizing; undo skipped to avoid data loss."),
    QT_TRANSLATE_NOOP("Engine", "A different file now occupies that location; undo skipped."),
    QT_TRANSLATE_NOOP("Engine", "Could not restore this file."),
    QT_TRANSLATE_NOOP("Engine", "Restore verification failed; organized copy kept."),
    QT_TRANSLATE_NOOP("Engine", "Could not finish restoring; organized copy kept."),
    // Moving files to the Trash.
    QT_TRANSLATE_NOOP("Engine", "Moved to the Trash."),
    QT_TRANSLATE_NOOP("Engine", "Outside the folder you chose; left untouched."),
    QT_TRANSLATE_NOOP("Engine", "Missing or no longer a regular file; left untouched."),
    QT_TRANSLATE_NOOP("Engine", "Couldn't read the file to record it for Put Back; left untouched."),
    QT_TRANSLATE_NOOP("Engine", "The file changed since you looked at it; left untouched."),
    QT_TRANSLATE_NOOP("Engine", "The copy you chose to keep changed or is missing; nothing was moved."),
    QT_TRANSLATE_NOOP("Engine", "This is the same file as the one you're keeping; left untouched."),
    QT_TRANSLATE_NOOP("Engine", "No longer identical to the copy you're keeping; left untouched."),
    QT_TRANSLATE_NOOP("Engine", "Couldn't move this file to the Trash; it was left in place."),
    // Putting them back.
    QT_TRANSLATE_NOOP("Engine", "Put back."),
    QT_TRANSLATE_NOOP("Engine", "Couldn't put this file back; it is still in the Trash."),
    QT_TRANSLATE_NOOP("Engine", "Not a Trash item for this folder; restore refused."),
    QT_TRANSLATE_NOOP("Engine", "No longer in the Trash (emptied or moved)."),
    QT_TRANSLATE_NOOP("Engine", "The trashed file changed; restore skipped."),
    QT_TRANSLATE_NOOP("Engine", "Something now occupies the original location; restore skipped."),
    QT_TRANSLATE_NOOP("Engine", "Restore verification failed; the file is still in the Trash."),
    QT_TRANSLATE_NOOP("Engine", "Couldn't finish restoring; the file is still in the Trash."),
    // Why the system refused.
    QT_TRANSLATE_NOOP("Engine",
                      "ordovan+ doesn't have permission to change this folder. Choose the folder again "
                      "with Choose Folder…, or check its permissions in Finder."),
    QT_TRANSLATE_NOOP("Engine", "The disk is full. Free up some space and try again."),
    QT_TRANSLATE_NOOP("Engine", "This disk is read-only."),
    QT_TRANSLATE_NOOP("Engine", "The file was moved or deleted while organizing."),
    QT_TRANSLATE_NOOP("Engine", "The file is in use by another app."),
    QT_TRANSLATE_NOOP("Engine", "The system reported an error (code %1)."),
    // After an interruption.
    QT_TRANSLATE_NOOP("Engine", "The file was moved or deleted while organizing, and another is at its destination."),
    QT_TRANSLATE_NOOP("Engine", "The file could not be looked at after the interruption; left as it is."),
    QT_TRANSLATE_NOOP("Engine", "What the interrupted run left of this file could not be removed; the file is whole."),
    QT_TRANSLATE_NOOP("Engine", "Its second name was taken away again; the file is where it was."),
    QT_TRANSLATE_NOOP("Engine", "The file has another name at the destination; left untouched."),
    QT_TRANSLATE_NOOP("Engine", "The file has another name in the Trash; left untouched."),
    QT_TRANSLATE_NOOP("Engine", "Its verified copy was taken away again; the file is where it was."),
    QT_TRANSLATE_NOOP("Engine", "An unfinished copy of it was removed; the file is where it was."),
    QT_TRANSLATE_NOOP("Engine", "It had not reached the Trash; the file is where it was."),
    QT_TRANSLATE_NOOP("Engine", "The empty file that kept its place was removed; the file is where it was."),
    QT_TRANSLATE_NOOP("Engine", "Its verified copy was put in place."),
    QT_TRANSLATE_NOOP("Engine", "A verified copy of it lies at %1."),
    QT_TRANSLATE_NOOP("Engine", "An unfinished copy of it lies at %1."),
    QT_TRANSLATE_NOOP("Engine", "The file that was in its place lies at %1."),
    // Rules.
    QT_TRANSLATE_NOOP("Engine", "\"%1\" isn't a valid extension. Use letters and numbers only, like dmg."),
    QT_TRANSLATE_NOOP("Engine", "Give the folder a name."),
    QT_TRANSLATE_NOOP("Engine",
                      "Folder names can't contain / or :, start with a dot, or be longer than 64 characters."),
    QT_TRANSLATE_NOOP("Engine", "Add at least one file extension, like dmg or pkg."),
    QT_TRANSLATE_NOOP("Engine", "That rule couldn't be added."),
    QT_TRANSLATE_NOOP("Engine", "You can have up to %1 rules."),
    // Runs that can not begin, and what could not be saved.
    QT_TRANSLATE_NOOP("Engine", "Another ordovan+ run is working in this folder. Try again when it has finished."),
    QT_TRANSLATE_NOOP("Engine", "Another ordovan+ is saving its records. Try again in a moment."),
    QT_TRANSLATE_NOOP("Engine", "The plan couldn't be saved there. Try another folder."),
    QT_TRANSLATE_NOOP("Engine", "This run couldn't be added to the history on disk. It is listed until you quit."),
    QT_TRANSLATE_NOOP("Engine", "The history couldn't be cleared."),
    QT_TRANSLATE_NOOP("Engine",
                      "Files were organized, but the undo record could not be saved to disk. Undo is "
                      "available until you quit."),
    QT_TRANSLATE_NOOP("Engine",
                      "Files were organized, but the existing undo record could not be read or set aside, so "
                      "this run's undo record was not saved. Undo is available until you quit."),
    QT_TRANSLATE_NOOP("Engine",
                      "The undo record could not be updated. Files that were restored may be listed again; "
                      "restoring them again is refused safely."),
    QT_TRANSLATE_NOOP("Engine",
                      "Files were moved to the Trash, but the restore record couldn't be saved. Restore "
                      "works until you quit; after that, use Put Back in the Finder Trash."),
    QT_TRANSLATE_NOOP("Engine",
                      "The restore record couldn't be updated on disk. Files already put back may be listed "
                      "again; putting them back again is refused safely."),
};

}  // namespace

std::span<const char* const> known() {
    return sentences;
}

}  // namespace EngineTexts
