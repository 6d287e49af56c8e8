#include "OrdovanCore/platform/LibrarySha256.h"

#include <dlfcn.h>
#include <openssl/evp.h>

namespace ordovan {

namespace {

/// What is needed of the library, see EVP_DigestInit(3). Nothing in it where one function is missing.
struct Library {
    decltype(&::EVP_MD_fetch) fetch = nullptr;
    decltype(&::EVP_MD_CTX_new) newContext = nullptr;
    decltype(&::EVP_MD_CTX_free) freeContext = nullptr;
    decltype(&::EVP_MD_CTX_copy_ex) copyContext = nullptr;
    decltype(&::EVP_DigestInit_ex2) init = nullptr;
    decltype(&::EVP_DigestUpdate) update = nullptr;
    decltype(&::EVP_DigestFinal_ex) final = nullptr;
    /// Looking an algorithm up by name takes longer than hashing a small file, so it is done once and never undone.
    const EVP_MD* algorithm = nullptr;

    Library() {
        void* const loaded = ::dlopen("libcrypto.so.3", RTLD_NOW | RTLD_LOCAL);
        if (loaded == nullptr) return;
        const bool isWhole = find(loaded, "EVP_MD_fetch", fetch) && find(loaded, "EVP_MD_CTX_new", newContext) &&
                             find(loaded, "EVP_MD_CTX_free", freeContext) &&
                             find(loaded, "EVP_MD_CTX_copy_ex", copyContext) &&
                             find(loaded, "EVP_DigestInit_ex2", init) && find(loaded, "EVP_DigestUpdate", update) &&
                             find(loaded, "EVP_DigestFinal_ex", final);
        if (isWhole) algorithm = fetch(nullptr, "SHA256", nullptr);
    }

    template <class Function>
    static bool find(void* loaded, const char* name, Function& function) {
        function = reinterpret_cast<Function>(::dlsym(loaded, name));
        return function != nullptr;
    }
};

const Library& library() {
    static const Library loaded;
    return loaded;
}

}  // namespace

// NOLINTBEGIN(clang-analyzer-core.CallAndMessage): there is a context only where all functions were found.
struct LibrarySha256::State {
    EVP_MD_CTX* context = nullptr;

    State() = default;
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    ~State() {
        if (context != nullptr) library().freeContext(context);
    }

    /// False when there is none and none can be made.
    bool hasContext() {
        if (context == nullptr && library().algorithm != nullptr) context = library().newContext();
        return context != nullptr;
    }
};

LibrarySha256::LibrarySha256() : state_(std::make_unique<State>()) {}
LibrarySha256::~LibrarySha256() = default;

bool LibrarySha256::begin() {
    return state_->hasContext() && library().init(state_->context, library().algorithm, nullptr) == 1;
}

bool LibrarySha256::beginAt(const LibrarySha256& other) {
    return state_->hasContext() && library().copyContext(state_->context, other.state_->context) == 1;
}

bool LibrarySha256::add(const void* bytes, std::size_t size) {
    return library().update(state_->context, bytes, size) == 1;
}

std::optional<std::array<unsigned char, 32>> LibrarySha256::finish() {
    std::array<unsigned char, 32> digest{};
    if (library().final(state_->context, digest.data(), nullptr) != 1) return std::nullopt;
    return digest;
}
// NOLINTEND(clang-analyzer-core.CallAndMessage)

}  // namespace ordovan
