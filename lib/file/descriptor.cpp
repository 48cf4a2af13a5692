#include "file/descriptor.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <system_error>

#include "base/text.hpp"

namespace displacement_generator::file {

namespace {

int open_descriptor(std::string_view fname, int flags, std::string& reason) {
    const std::string_view name = base::trimmed(fname);
    char path[PATH_MAX];
    if (name.size() >= sizeof path || name.find('\0') != std::string_view::npos) {  // the system would cut such a name
        reason = system_reason(name.size() >= sizeof path ? ENAMETOOLONG : ENOENT);
        return -1;
    }
    path[name.copy(path, name.size())] = '\0';
    constexpr mode_t everybody = 0666;  // less what the user's umask takes away
    int descriptor = -1;
    do {
        descriptor = ::open(path, flags | O_CLOEXEC, everybody);
    } while (descriptor < 0 && errno == EINTR);
    if (descriptor < 0) {
        reason = system_reason(errno);
    }
    return descriptor;
}

}  // namespace

int open_to_read(std::string_view fname, bool regular_only, std::string& reason) {
    // Without O_NONBLOCK the open of a pipe waits for a writer.
    const int descriptor = open_descriptor(fname, O_RDONLY | (regular_only ? O_NONBLOCK : 0), reason);
    struct stat status {};
    if (descriptor < 0 || !regular_only || (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode))) {
        return descriptor;
    }
    reason = S_ISDIR(status.st_mode) ? system_reason(EISDIR) : "Not a regular file";
    close_descriptor(descriptor);
    return -1;
}

int open_to_write(std::string_view fname, std::string& reason, bool emptied) {
    return open_descriptor(fname, O_WRONLY | O_CREAT | O_NONBLOCK | (emptied ? O_TRUNC : 0), reason);
}

bool lock_file(int descriptor) {
    struct flock whole_file {};
    whole_file.l_type = F_WRLCK;
    whole_file.l_whence = SEEK_SET;
    int result = 0;
    do {
        result = ::fcntl(descriptor, F_OFD_SETLK, &whole_file);
    } while (result != 0 && errno == EINTR);
    return result == 0 || (errno != EAGAIN && errno != EACCES);
}

int cut_file(int descriptor, std::size_t size) {
    int result = 0;
    do {
        result = ::ftruncate(descriptor, static_cast<off_t>(size));
    } while (result != 0 && errno == EINTR);
    return result == 0 ? 0 : errno;
}

long read_some(int descriptor, char* to, std::size_t size) {
    long count = 0;
    do {
        count = ::read(descriptor, to, size);
    } while (count < 0 && errno == EINTR);
    return count;
}

int write_all(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const long count = ::write(descriptor, bytes.data(), bytes.size());
        if (count > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        } else if (count == 0) {
            return EIO;
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

int close_descriptor(int descriptor) { return ::close(descriptor) == 0 ? 0 : errno; }

bool is_same_file(int descriptor, std::string_view fname) {
    struct stat opened {};
    struct stat named {};
    return ::fstat(descriptor, &opened) == 0 && ::stat(std::string(base::trimmed(fname)).c_str(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

std::string system_reason(int error) { return std::generic_category().message(error); }

}  // namespace displacement_generator::file
