// SPDX-License-Identifier: Apache-2.0
#include "session/cards_directory.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace quarbel::session {

namespace fs = std::filesystem;

std::variant<CardsDirectory, std::string> prepareCardsDirectory(const std::string& option,
                                                                const std::string& argument) {
    if (argument.empty()) return option + " needs a directory";
    const std::string prefix = option + " " + argument + ": ";
    std::error_code error;
    const fs::path path = fs::absolute(argument, error).lexically_normal();
    if (error) return prefix + error.message();

    struct stat status {};
    if (::stat(path.c_str(), &status) == 0) {
        if (!S_ISDIR(status.st_mode)) return option + " " + argument + " exists and is not a directory";
    } else if (errno == ENOENT || errno == ENOTDIR) {
        fs::create_directories(path, error);
        if (error) return prefix + "cannot create the directory (" + error.message() + ")";
    } else {
        return prefix + std::strerror(errno);
    }

    // Every card is written through a temporary file beside it: prove that works.
    std::string probe = (path / ".quarbel-XXXXXX").string();
    const int fd = ::mkostemp(probe.data(), O_CLOEXEC);
    if (fd < 0) return prefix + "cannot create a file in it (" + std::strerror(errno) + ")";
    ::close(fd);
    ::unlink(probe.c_str());
    std::string text = path.string();
    if (text.size() > 1 && text.back() == '/') text.pop_back();
    return CardsDirectory{text};
}

} // namespace quarbel::session
