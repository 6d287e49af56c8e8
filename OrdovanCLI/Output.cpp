#include "OrdovanCLI/Output.h"

#include <cerrno>
#include <string_view>

#include <poll.h>
#include <unistd.h>

namespace ordovan::cli {

void Output::flush() {
    std::string_view rest = buffer_;
    while (!rest.empty() && !error_ && !readerIsGone_) {
        const ssize_t written = ::write(descriptor_, rest.data(), rest.size());
        if (written >= 0) {
            rest.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EAGAIN) {
            // The descriptor is shared with a program that made it non-blocking.
            pollfd waiting{descriptor_, POLLOUT, 0};
            static_cast<void>(::poll(&waiting, 1, -1));
        } else if (errno == EPIPE) {
            readerIsGone_ = true;
        } else if (errno != EINTR) {
            error_ = errno;
        }
    }
    buffer_.clear();
}

}  // namespace ordovan::cli
