#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

// Preloaded into the preparer, this lets one kind of its calls go wrong with EIO: FAILING_OUTPUT is "rename", or
// "close" for every close of a regular file that was open for writing. The file is closed then, as the system does it.

namespace {

bool is_asked(const char* call) {
    const char* asked = std::getenv("FAILING_OUTPUT");
    return asked != nullptr && std::strcmp(asked, call) == 0;
}

bool is_written(int descriptor) {
    struct stat status {};
    const int flags = ::fcntl(descriptor, F_GETFL);
    return flags >= 0 && (flags & O_ACCMODE) != O_RDONLY && ::fstat(descriptor, &status) == 0 &&
           S_ISREG(status.st_mode);
}

}  // namespace

extern "C" int close(int descriptor) {
    const bool fails = is_asked("close") && is_written(descriptor);
    const long result = ::syscall(SYS_close, descriptor);
    if (fails) {
        errno = EIO;
        return -1;
    }
    return static_cast<int>(result);
}

extern "C" int rename(const char* from, const char* to) noexcept {
    if (is_asked("rename")) {
        errno = EIO;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
}
