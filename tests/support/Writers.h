#pragma once

#include "OrdovanCore/platform/Descriptor.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace ordovan::test {

inline constexpr const char* withoutLeases =
    "NOT TESTED: no leases here (file system or sandbox), by which a file that is being written could be told";

/// True when the kernel gives leases on files of this folder.
inline bool hasLeases(const std::string& folder) {
    const std::string path = folder + "/lease";
    const Descriptor made = Descriptor::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0600);
    const Descriptor reader = Descriptor::open(path.c_str(), O_RDONLY);
    const bool refused = ::fcntl(reader.get(), F_SETLEASE, F_RDLCK) != 0 && errno == EAGAIN;
    ::unlink(path.c_str());
    return refused;
}

/// The first page of a file, mapped for writing, with no descriptor left open.
class SharedMapping {
public:
    static constexpr std::size_t size = 4096;

    explicit SharedMapping(Descriptor file)
        : bytes_(::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0)) {
        if (bytes_ == MAP_FAILED) throw std::runtime_error("can not map the file");
    }
    ~SharedMapping() { ::munmap(bytes_, size); }
    SharedMapping(const SharedMapping&) = delete;
    SharedMapping& operator=(const SharedMapping&) = delete;

    void write(std::string_view text) { std::memcpy(bytes_, text.data(), text.size()); }

private:
    void* bytes_;
};

}  // namespace ordovan::test
