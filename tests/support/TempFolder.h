#pragma once

#include "OrdovanCore/Url.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace ordovan::test {

/// A fresh, empty folder on the real disk (below TMPDIR, else /tmp; mode 0755), removed with all it holds at the end,
/// folders that nobody may read or enter included.
class TempFolder {
public:
    TempFolder() : TempFolder(usualPlace()) {}
    /// Below another folder.
    explicit TempFolder(const std::string& base) : path_(base + "/ordovan-test-XXXXXX") {
        if (::mkdtemp(path_.data()) == nullptr) throw std::system_error(errno, std::generic_category(), path_);
        ::chmod(path_.c_str(), 0755);
    }
    ~TempFolder() {
        namespace fs = std::filesystem;
        std::error_code ignored;
        fs::remove_all(path_, ignored);
        if (!fs::exists(fs::symlink_status(path_, ignored))) return;
        openUp(path_);
        fs::remove_all(path_, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] std::string path(std::string_view name) const { return path_ + "/" + std::string(name); }
    [[nodiscard]] Url url() const { return Url::file(path_); }
    [[nodiscard]] Url url(std::string_view name) const { return Url::file(path(name)); }

    /// Writes a file, making the folders above it; returns its location.
    Url write(std::string_view name, std::string_view content) const {
        const std::string file = path(name);
        std::filesystem::create_directories(std::filesystem::path(file).parent_path());
        std::ofstream out(file, std::ios::binary | std::ios::trunc);
        out.write(content.data(), static_cast<std::streamsize>(content.size()));
        out.close();
        if (!out) throw std::runtime_error("can not write " + file);
        return Url::file(file);
    }

    /// The whole content of a file.
    [[nodiscard]] std::string read(std::string_view name) const {
        std::ifstream in(path(name), std::ios::binary);
        if (!in) throw std::runtime_error("can not read " + path(name));
        return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    }

    /// Makes a folder with all folders above it; returns its location.
    Url makeFolder(std::string_view name) const {
        std::filesystem::create_directories(path(name));
        return url(name);
    }

    /// Makes a symbolic link; returns its location.
    Url makeLink(std::string_view name, const std::string& target) const {
        std::filesystem::create_symlink(target, path(name));
        return url(name);
    }

    /// True when anything bears that name, a dangling link too.
    [[nodiscard]] bool has(std::string_view name) const {
        struct ::stat facts;
        return ::lstat(path(name).c_str(), &facts) == 0;
    }

    /// How many entries a folder of the tree has, hidden ones included.
    [[nodiscard]] std::size_t count(std::string_view name = ".") const {
        const std::filesystem::directory_iterator begin(path(name));
        return static_cast<std::size_t>(std::distance(begin, std::filesystem::directory_iterator()));
    }

private:
    static std::string usualPlace() {
        const char* base = std::getenv("TMPDIR");
        return base != nullptr && *base == '/' ? base : "/tmp";
    }
    static void openUp(const std::filesystem::path& folder) {
        ::chmod(folder.c_str(), 0700);
        std::error_code ignored;
        for (const auto& entry : std::filesystem::directory_iterator(folder, ignored)) {
            if (!entry.is_symlink(ignored) && entry.is_directory(ignored)) openUp(entry.path());
        }
    }

    std::string path_;
};

}  // namespace ordovan::test
