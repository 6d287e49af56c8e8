// The least that organizing could cost: SHA-256 of every file on one thread, then a bare no-replace rename of each.
//   organize_yardstick PAIRS [back]
// PAIRS holds source and destination paths, each ended by a NUL. "back" swaps them. Prints one JSON line.

#include <openssl/evp.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

namespace {

double seconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

[[noreturn]] void fail(const std::string& what) {
    std::perror(what.c_str());
    std::exit(1);
}

std::size_t hashFile(const std::string& path, EVP_MD_CTX* context, const EVP_MD* sha256, std::vector<char>& piece) {
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) fail(path);
    EVP_DigestInit_ex(context, sha256, nullptr);
    std::size_t total = 0;
    for (;;) {
        const ssize_t got = ::read(file, piece.data(), piece.size());
        if (got < 0) fail(path);
        if (got == 0) break;
        EVP_DigestUpdate(context, piece.data(), static_cast<std::size_t>(got));
        total += static_cast<std::size_t>(got);
    }
    ::close(file);
    unsigned char digest[EVP_MAX_MD_SIZE];
    EVP_DigestFinal_ex(context, digest, nullptr);
    return total;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fputs("usage: organize_yardstick PAIRS [back]\n", stderr);
        return 2;
    }
    std::ifstream in(argv[1], std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(in), {}};
    std::vector<std::string> paths;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = text.find('\0', begin);
        paths.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    const bool back = argc > 2 && std::strcmp(argv[2], "back") == 0;
    const std::size_t from = back ? 1 : 0, to = back ? 0 : 1;

    const double start = seconds();
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    const std::unique_ptr<EVP_MD, decltype(&EVP_MD_free)> sha256(EVP_MD_fetch(nullptr, "SHA256", nullptr), EVP_MD_free);
    std::vector<char> piece(1 << 20);
    std::size_t bytes = 0;
    for (std::size_t i = 0; i < paths.size(); i += 2)
        bytes += hashFile(paths[i + from], context.get(), sha256.get(), piece);
    const double hashed = seconds();
    std::unordered_set<std::string> made;
    for (std::size_t i = 0; i < paths.size(); i += 2) {
        const std::string& target = paths[i + to];
        const std::string folder = target.substr(0, target.rfind('/'));
        if (made.insert(folder).second) {
            for (std::size_t slash = folder.find('/', 1);; slash = folder.find('/', slash + 1)) {
                ::mkdir(folder.substr(0, slash).c_str(), 0777);
                if (slash == std::string::npos) break;
            }
        }
        if (::renameat2(AT_FDCWD, paths[i + from].c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) != 0)
            fail(target);
    }
    const double renamed = seconds();
    std::printf("{\"files\": %zu, \"bytes\": %zu, \"hash\": %.4f, \"rename\": %.4f, \"seconds\": %.4f}\n",
                paths.size() / 2, bytes, hashed - start, renamed - hashed, renamed - start);
    return 0;
}
