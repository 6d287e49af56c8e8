#include "OrdovanCore/platform/Sha256.h"

#include "OrdovanCore/Hex.h"

#include <openssl/evp.h>

#include <array>
#include <cerrno>

namespace ordovan {

namespace {

/// Looking an algorithm up by name takes longer than hashing a small file, so it is done once and never undone.
const EVP_MD* algorithm() {
    static const EVP_MD* const fetched = ::EVP_MD_fetch(nullptr, "SHA256", nullptr);
    return fetched;
}

struct FreeContext {
    void operator()(EVP_MD_CTX* context) const { ::EVP_MD_CTX_free(context); }
};

}  // namespace

struct Sha256::State {
    std::unique_ptr<EVP_MD_CTX, FreeContext> context{::EVP_MD_CTX_new()};
};

Sha256::Sha256() : state_(std::make_unique<State>()) {}
Sha256::~Sha256() = default;

bool Sha256::begin() {
    EVP_MD_CTX* const context = state_->context.get();
    return context != nullptr && algorithm() != nullptr && ::EVP_DigestInit_ex2(context, algorithm(), nullptr) == 1;
}

bool Sha256::beginAt(const Sha256& other) {
    EVP_MD_CTX* const context = state_->context.get();
    return context != nullptr && ::EVP_MD_CTX_copy_ex(context, other.state_->context.get()) == 1;
}

bool Sha256::add(const void* bytes, std::size_t size) {
    return ::EVP_DigestUpdate(state_->context.get(), bytes, size) == 1;
}

std::string Sha256::finish() {
    std::array<unsigned char, 32> digest{};
    if (::EVP_DigestFinal_ex(state_->context.get(), digest.data(), nullptr) != 1) return {};
    std::string text;
    text.reserve(2 * digest.size());
    for (const unsigned char byte : digest) appendHex(text, byte, 2);
    return text;
}

OrdovanResult<std::string> sha256(std::string_view bytes) {
    thread_local Sha256 digest;
    std::string text;
    if (digest.begin() && digest.add(bytes.data(), bytes.size())) text = digest.finish();
    if (text.empty()) return std::unexpected(OrdovanSystemError::posix(ENOTSUP));
    return text;
}

}  // namespace ordovan
