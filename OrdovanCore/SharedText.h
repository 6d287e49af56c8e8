#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

namespace ordovan {

/// Immutable bytes shared by all their copies.
///
/// One pointer wide; a copy costs one atomic increment and no memory, which is what makes fifty thousand paths that
/// stand in an inventory, in a plan and in a selection at once affordable. The empty text owns nothing. Copies may be
/// used and destroyed on different threads.
class SharedText {
public:
    SharedText() noexcept = default;
    SharedText(std::string_view text) : SharedText(joined({text})) {}
    SharedText(const char* text) : SharedText(std::string_view(text)) {}
    SharedText(const std::string& text) : SharedText(std::string_view(text)) {}
    SharedText(const SharedText& other) noexcept : block_(other.block_) {
        if (block_ != nullptr) block_->owners.fetch_add(1, std::memory_order_relaxed);
    }
    SharedText(SharedText&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
    SharedText& operator=(SharedText other) noexcept {
        std::swap(block_, other.block_);
        return *this;
    }
    ~SharedText() { release(); }

    /// The pieces one after the other, made in one allocation.
    /// The process ends when together they are longer than 4 GiB - 1 bytes.
    static SharedText joined(std::initializer_list<std::string_view> pieces);

    [[nodiscard]] std::string_view view() const noexcept {
        return block_ == nullptr ? std::string_view() : std::string_view(bytesOf(block_), block_->size);
    }
    operator std::string_view() const noexcept { return view(); }
    [[nodiscard]] std::string str() const { return std::string(view()); }
    [[nodiscard]] std::size_t size() const noexcept { return block_ == nullptr ? 0 : block_->size; }
    [[nodiscard]] bool empty() const noexcept { return size() == 0; }

    /// True when both are copies of one text, which is quicker to tell than equality and never wrong when true.
    [[nodiscard]] bool sharesStorageWith(const SharedText& other) const noexcept { return block_ == other.block_; }

    friend bool operator==(const SharedText& a, const SharedText& b) noexcept {
        return a.block_ == b.block_ || a.view() == b.view();
    }
    friend bool operator==(const SharedText& a, std::string_view b) noexcept { return a.view() == b; }
    friend bool operator==(const SharedText& a, const char* b) noexcept { return a.view() == b; }
    friend bool operator==(const SharedText& a, const std::string& b) noexcept { return a.view() == b; }
    friend std::ostream& operator<<(std::ostream& out, const SharedText& text) { return out << text.view(); }

private:
    struct Block {
        std::atomic<std::uint32_t> owners;
        std::uint32_t size;
    };
    static char* bytesOf(Block* block) noexcept { return reinterpret_cast<char*>(block + 1); }
    void release() noexcept;

    Block* block_ = nullptr;
};

}  // namespace ordovan
