#include "OrdovanCore/SharedText.h"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

namespace ordovan {

SharedText SharedText::joined(std::initializer_list<std::string_view> pieces) {
    std::size_t size = 0;
    for (const std::string_view piece : pieces) size += piece.size();
    SharedText text;
    if (size == 0) return text;
    if (size > std::numeric_limits<std::uint32_t>::max()) std::abort();
    text.block_ = new (::operator new(sizeof(Block) + size)) Block{{1}, static_cast<std::uint32_t>(size)};
    char* to = bytesOf(text.block_);
    for (const std::string_view piece : pieces) {
        if (!piece.empty()) std::memcpy(to, piece.data(), piece.size());
        to += piece.size();
    }
    return text;
}

void SharedText::release() noexcept {
    if (block_ == nullptr || block_->owners.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    block_->~Block();
    ::operator delete(block_);
}

}  // namespace ordovan
