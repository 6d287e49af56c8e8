#include "OrdovanCore/platform/TrashInfo.h"

#include "OrdovanCore/TrashPlace.h"
#include "OrdovanCore/platform/RegularFile.h"
#include "OrdovanCore/platform/TrashNaming.h"

#include <algorithm>
#include <array>
#include <string>

namespace ordovan {

namespace {

bool isMissing(const std::string& path) {
    struct ::stat facts{};
    return ::lstat(path.c_str(), &facts) != 0 && errno == ENOENT;
}

bool isInfo(const RegularFile& file) {
    std::array<char, trashInfoHead.size()> start{};
    const ::ssize_t got = ::pread(file.descriptor.get(), start.data(), start.size(), 0);
    return got == 0 || (got == static_cast<::ssize_t>(start.size()) && std::ranges::equal(start, trashInfoHead));
}

}  // namespace

void forgetTrashInfo(std::string_view item) {
    const auto path = trashInfoPath(item);
    if (!path || !isMissing(std::string(item))) return;
    RegularFile info;
    if (info.open(path->c_str()) == 0 && isInfo(info)) ::unlink(path->c_str());
}

}  // namespace ordovan
