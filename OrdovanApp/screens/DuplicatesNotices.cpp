#include "OrdovanApp/screens/DuplicatesNotices.h"

#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/models/Language.h"

using namespace Qt::StringLiterals;

DuplicatesNotices::DuplicatesNotices(const AppContext& context, QWidget* parent)
    : TrashNotices(context, What::extras, parent), unread_(addBanner(Banner::Kind::info, u"unreadFiles"_s)) {
    unread_->setDetailsTexts(tr("Files that could not be read"), tr("Show Files"), tr("Hide Files"));
}

void DuplicatesNotices::showUnread(const std::vector<Url>& files, const Url& root) {
    if (files == told_) return;
    told_ = files;
    if (files.empty()) return dismiss(unread_);
    QStringList lines;
    for (const Url& file : files) lines += Formats::fileName(file) + u" — "_s + Formats::folderOf(file, root);
    unread_->setDetails(lines);
    const auto count = static_cast<qint64>(files.size());
    tell(unread_,
         tr("%1 files could not be read and were left out.", nullptr, pluralOf(count)).arg(Formats::count(count)));
}
